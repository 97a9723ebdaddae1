// A run stopped by SIGINT, SIGTERM or SIGHUP, while it keys frames or while it writes: exit
// status 128 + the signal, the earlier file untouched, nothing left beside it.
#include <gtest/gtest.h>

#include <signal.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

// The plug-in's line that opens each phase: the frames are keyed after it prints its
// version, the file is written after it names the file format.
constexpr const char* FramePhase = "FBX library version";
constexpr const char* WritePhase = "FBX file format version";

struct Stopped {
    int exitStatus = -1;
    QByteArray standardError;
};

// Exports a take long enough that each phase lasts a good fraction of a second, and sends
// `signal` (`times` times) as soon as `phase` begins.
Stopped stopAt(const QTemporaryDir& folder, const char* phase, int signal, int times) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(ZAVO_FBX_EXPORT_PROGRAM,
                  {"--settings", folder.filePath("settings.ini"), "--demo", "--demo-frames", "4000",
                   "--format", "ascii", "out.fbx"});
    QByteArray output;
    QElapsedTimer waited;
    waited.start();
    while (!output.contains(phase) && waited.elapsed() < 60000 && process.waitForReadyRead(60000))
        output += process.readAllStandardOutput();
    for (int i = 0; i < times; ++i) ::kill(static_cast<pid_t>(process.processId()), signal);
    process.waitForFinished(60000);
    Stopped stopped;
    if (process.exitStatus() == QProcess::NormalExit) stopped.exitStatus = process.exitCode();
    stopped.standardError = process.readAllStandardError();
    return stopped;
}

}  // namespace

TEST(SignalStop, EndsTheRunInEveryPhaseAndKeepsTheEarlierFile) {
    const std::vector<std::tuple<const char*, int, int>> cases = {
        {FramePhase, SIGINT, 1}, {FramePhase, SIGTERM, 1}, {FramePhase, SIGHUP, 2},
        {WritePhase, SIGINT, 2}, {WritePhase, SIGTERM, 1}, {WritePhase, SIGHUP, 1},
    };
    for (const auto& [phase, signal, times] : cases) {
        SCOPED_TRACE(std::string(phase) + ", signal " + std::to_string(signal) + " x" +
                     std::to_string(times));
        QTemporaryDir folder;
        QFile earlier(folder.filePath("out.fbx"));
        ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
        earlier.write("an earlier export");
        earlier.close();
        const Stopped stopped = stopAt(folder, phase, signal, times);
        EXPECT_EQ(stopped.exitStatus, 128 + signal);
        EXPECT_TRUE(stopped.standardError.endsWith("zavo-fbx-export: out.fbx: cancelled\n"))
            << stopped.standardError.toStdString();
        ASSERT_TRUE(earlier.open(QIODevice::ReadOnly));
        EXPECT_EQ(earlier.readAll(), "an earlier export");
        earlier.close();
        QStringList left =
            QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        left.removeAll("settings.ini");
        EXPECT_EQ(left, QStringList{"out.fbx"}) << left.join(' ').toStdString();
    }
}
