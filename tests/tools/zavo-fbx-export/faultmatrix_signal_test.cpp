// Signals at points spread over a whole run (loading, keying the frames, saving): a run either
// finishes with a readable file or stops with 128 + the signal, the earlier export untouched
// and nothing left beside it. SIGKILL cannot be handled, but must not leave anything either.
// A signal as keying or writing begins always stops the run, saying it was cancelled.
#include <gtest/gtest.h>

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

// The plug-in's line that opens each phase: the frames are keyed after it prints its
// version, the file is written after it names the file format.
struct Phase {
    const char* name;
    const char* line;
};
constexpr Phase keying{"keying", "FBX library version"},
    writing{"writing", "FBX file format version"};

}  // namespace

TEST(SignalFaultMatrix, EverySignalAtEveryPointEndsFinishedOrStoppedCleanly) {
    QTemporaryDir root;
    QElapsedTimer clock;
    clock.start();
    ASSERT_EQ(runProgram(root, longDemo + QStringList{"measure.fbx"}).exitStatus, 0);
    const qint64 runMs = clock.elapsed();

    MatrixTally tally("signals");
    size_t rows = 0;
    int stopped = 0;
    // Sends `signal` `times` times once the run is `delayMs` into `phase` (or into its start).
    const auto signalRow = [&](const QStringList& arguments, int signal, qint64 delayMs,
                               const char* phase, int times) {
        const QString folder = root.filePath(caseFolder(root, rows++));
        const FolderState before = folderState(folder);
        RunOptions options;
        options.waitForOutput = phase;
        options.whileRunning = [&](qint64 pid) {
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
            for (int i = 0; i < times; ++i) ::kill(static_cast<pid_t>(pid), signal);
        };
        const ProgramRun run =
            runProgram(root, arguments + QStringList{folder + "/out.fbx"}, options);
        if (run.exitStatus != 0) ++stopped;
        return std::pair(run, signalOutcome(run, signal, folder, before));
    };
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGKILL})
        for (const double share : {0.1, 0.5, 0.9}) {
            const auto delay = static_cast<qint64>(static_cast<double>(runMs) * share);
            tally.row(std::string("signal ") + strsignal(signal),
                      std::string(strsignal(signal)) + " at " + std::to_string(share) + " of a run",
                      signalRow(longDemo, signal, delay, "", 1).second);
        }
    // A take long enough that each phase lasts a good fraction of a second.
    const QStringList longerDemo = {"--demo", "--demo-frames", "4000", "--format", "ascii"};
    for (const auto& [phase, signal, times] : {std::tuple{keying, SIGINT, 1},
                                               {keying, SIGTERM, 1},
                                               {keying, SIGHUP, 2},
                                               {writing, SIGINT, 2},
                                               {writing, SIGTERM, 1},
                                               {writing, SIGHUP, 1}}) {
        auto [run, problem] = signalRow(longerDemo, signal, 0, phase.line, times);
        if (problem.empty() && (run.exitStatus != 128 + signal ||
                                !run.standardError.endsWith("/out.fbx: cancelled\n")))
            problem = "not cancelled: exit " + std::to_string(run.exitStatus) + ", \"" +
                      run.standardError.toStdString() + "\"";
        tally.row("signal as a phase begins",
                  std::string(strsignal(signal)) + " x" + std::to_string(times) + " as " +
                      phase.name + " begins",
                  problem);
    }
    std::cout << "[ matrix   ] " << stopped << " runs stopped by the signal, the others had "
              << "finished; a run takes " << runMs << " ms\n";
    tally.finish();
}
