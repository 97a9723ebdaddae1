// Signals at points spread over a whole run (loading, keying the frames, saving): a run either
// finishes with a readable file or stops with 128 + the signal, the earlier export untouched
// and nothing left beside it. SIGKILL cannot be handled, but must not leave anything either.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <csignal>
#include <thread>

#include "faultcheck.h"
#include "programrun.h"

namespace {

const QStringList longDemo = {"--demo", "--demo-frames", "1000", "--format", "binary"};

// A run ends by the signal when the program's handler exits with 128 + the signal, or when it
// dies of it (before the handler is in place, or for SIGKILL).
bool endedBy(const ProgramRun& run, int signal) {
    return run.exitStatus == -1 || run.exitStatus == 128 + signal;
}

std::string signalOutcome(const ProgramRun& run, int signal, const QString& folder,
                          const FolderState& before) {
    if (!endedBy(run, signal))
        return unclearOutcome(run, folder, "out.fbx", before, {Outcome::Written});
    if (run.standardError.count('\n') > 1)
        return "stopped with more than one line on standard error: " +
               run.standardError.toStdString();
    if (folderState(folder) == before) return {};
    // Killed once the new file was in place: the save was whole, so the replacement stands.
    ProgramRun finished;
    finished.exitStatus = 0;
    const std::string replaced =
        unclearOutcome(finished, folder, "out.fbx", before, {Outcome::Written});
    if (!replaced.empty())
        return "stopped, and the folder is neither as before nor saved: " + replaced;
    return signal == SIGKILL ? std::string()
                             : "stopped with " + std::to_string(run.exitStatus) +
                                   ", yet the earlier export was replaced by the new one";
}

}  // namespace

TEST(SignalFaultMatrix, EverySignalAtEveryPointEndsFinishedOrStoppedCleanly) {
    QTemporaryDir folder;
    QElapsedTimer clock;
    clock.start();
    ASSERT_EQ(runProgram(folder, longDemo + QStringList{"measure.fbx"}).exitStatus, 0);
    const qint64 runMs = clock.elapsed();

    MatrixTally tally("signals");
    int stopped = 0;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGKILL}) {
        for (const double share : {0.1, 0.5, 0.9}) {
            const QString caseFolder = QString("case%1-%2").arg(signal).arg(share * 10);
            QDir(folder.path()).mkdir(caseFolder);
            writeFile(folder.filePath(caseFolder + "/out.fbx"), "an earlier export");
            const FolderState before = folderState(folder.filePath(caseFolder));
            RunOptions options;
            options.whileRunning = [&](qint64 pid) {
                std::this_thread::sleep_for(std::chrono::milliseconds(
                    static_cast<qint64>(static_cast<double>(runMs) * share)));
                ::kill(static_cast<pid_t>(pid), signal);
            };
            const ProgramRun run =
                runProgram(folder, longDemo + QStringList{caseFolder + "/out.fbx"}, options);
            if (run.exitStatus != 0) ++stopped;
            const std::string problem =
                signalOutcome(run, signal, folder.filePath(caseFolder), before);
            tally.row(std::string("signal ") + strsignal(signal),
                      std::string(strsignal(signal)) + " at " + std::to_string(share) + " of a run",
                      problem);
        }
    }
    std::cout << "[ matrix   ] " << stopped << " runs stopped by the signal, the others had "
              << "finished; a run takes " << runMs << " ms\n";
    tally.finish();
}
