// Where a file can go besides a new regular file: standard output, a FIFO, a device, a
// symbolic link; what the program says about it, and that --quiet says nothing.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <thread>

#include "programrun.h"

namespace {

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const QStringList smallDemo = {"--demo",          "--demo-frames", "5",
                               "--deterministic", "--format",      "binary"};

}  // namespace

TEST(OutputKinds, PipesDevicesAndLinksAreWrittenAsTheyAre) {
    QTemporaryDir folder;
    QDir(folder.path()).mkpath("real");
    ASSERT_EQ(runProgram(folder, QStringList(smallDemo) << "real/out.fbx").exitStatus, 0);
    const QByteArray regular = fileBytes(folder.filePath("real/out.fbx"));
    ASSERT_TRUE(regular.startsWith("Kaydara FBX Binary"));

    // Standard output: the FBX data alone; the plug-in's lines and the summary on stderr.
    QProcess toStdout;
    toStdout.setWorkingDirectory(folder.path());
    toStdout.start(ZAVO_FBX_EXPORT_PROGRAM,
                   QStringList{"--settings", folder.filePath("settings.ini")} << smallDemo << "-");
    ASSERT_TRUE(toStdout.waitForFinished(60000));
    EXPECT_EQ(toStdout.exitCode(), 0);
    EXPECT_TRUE(toStdout.readAllStandardOutput().startsWith("Kaydara FBX Binary"));
    const QByteArray lines = toStdout.readAllStandardError();
    EXPECT_TRUE(lines.contains("Program Success!\n") && lines.contains("\n-: 5 frames, "))
        << lines.toStdString();

    // A FIFO receives the same bytes as a file of the same name and stays a FIFO.
    QDir(folder.path()).mkpath("fifo");
    const QString fifo = folder.filePath("fifo/out.fbx");
    ASSERT_EQ(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QByteArray received;
    std::thread reader([&] { received = fileBytes(fifo); });
    const ProgramRun piped = runProgram(folder, QStringList(smallDemo) << "fifo/out.fbx");
    reader.join();
    EXPECT_EQ(piped.exitStatus, 0) << piped.standardError.toStdString();
    EXPECT_EQ(received, regular);
    EXPECT_TRUE(QFileInfo(fifo).exists() && !QFileInfo(fifo).isFile());

    // A device, and the same device named as input: no "is the input file" for it.
    const ProgramRun null = runProgram(folder, QStringList(smallDemo) << "/dev/null");
    EXPECT_EQ(null.exitStatus, 0) << null.standardError.toStdString();
    EXPECT_EQ(runProgram(folder, {"/dev/null", "/dev/null"}).standardError.toStdString(),
              "zavo-fbx-export: /dev/null: expected '{' (a take is one JSON object) (line 1, "
              "column 1)\n");

    // Links are written through, an existing target and a dangling one alike.
    for (const char* target : {"real/out.fbx", "real/new.fbx"}) {
        SCOPED_TRACE(target);
        QFile::remove(folder.filePath("link.fbx"));
        ASSERT_TRUE(QFile::link(target, folder.filePath("link.fbx")));
        const ProgramRun linked = runProgram(folder, QStringList(smallDemo) << "link.fbx");
        EXPECT_EQ(linked.exitStatus, 0) << linked.standardError.toStdString();
        EXPECT_TRUE(QFileInfo(folder.filePath("link.fbx")).isSymLink());
        EXPECT_TRUE(fileBytes(folder.filePath(target)).startsWith("Kaydara FBX Binary"));
    }
}

TEST(OutputKinds, QuietSaysNothingOnSuccessAndAFailedSaveSaysWhy) {
    QTemporaryDir folder;
    const ProgramRun quiet = runProgram(folder, QStringList(smallDemo) << "-q"
                                                                       << "out.fbx");
    EXPECT_EQ(quiet.exitStatus, 0);
    EXPECT_EQ(quiet.standardOutput + quiet.standardError, "");

    const ProgramRun full = runProgram(folder, QStringList(smallDemo) << "/dev/full");
    EXPECT_EQ(full.exitStatus, 1);
    EXPECT_FALSE(full.standardOutput.contains("Program Success!"));
    EXPECT_TRUE(full.standardError.endsWith("No space left on device\n"))
        << full.standardError.toStdString();
}
