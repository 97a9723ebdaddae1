#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "exportprobe.h"
#include "synthetictake.h"

namespace {

// One whole run into `file`; what finalize() returned, lastError() and the glue's output.
struct SaveOutcome {
    bool finalized = false;
    QString error;
    std::string printed;
};

SaveOutcome saveTo(const QString& file) {
    FakeHost host;
    loadRigidTake(host, {.frames = 3});
    LocalProbe probe(host);
    testing::internal::CaptureStdout();
    probe.run(file);
    SaveOutcome outcome;
    outcome.finalized = probe.finalize(false);
    outcome.printed = testing::internal::GetCapturedStdout();
    outcome.error = probe.lastError();
    return outcome;
}

}  // namespace

TEST(ExportSave, FailureReachesTheHostWithTheSystemsReason) {
    QTemporaryDir dir;
    const QString missing = dir.filePath("gone/take.fbx");
    for (const auto& [file, reason] :
         {std::pair{QStringLiteral("/dev/full"), "No space left on device"},
          {missing, "No such file or directory"},
          {dir.path(), "Is a directory"}}) {
        const SaveOutcome outcome = saveTo(file);
        EXPECT_FALSE(outcome.finalized) << file.toStdString();
        EXPECT_EQ(outcome.error, QStringLiteral("Could not write %1: %2").arg(file, reason));
        EXPECT_EQ(outcome.printed.find("Program Success!"), std::string::npos) << outcome.printed;
        EXPECT_NE(outcome.printed.find(outcome.error.toStdString()), std::string::npos);
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());

    const SaveOutcome saved = saveTo(dir.filePath("take.fbx"));
    EXPECT_TRUE(saved.finalized);
    EXPECT_EQ(saved.error, QString());
    EXPECT_NE(saved.printed.find("Program Success!"), std::string::npos);
    EXPECT_GT(QFile(dir.filePath("take.fbx")).size(), 0);
}

// "-" is the host's standard output: the file goes there whole, the glue's lines go to
// standard error so as not to mix with it.
TEST(ExportSave, StandardOutputTakesTheFileAndNothingElse) {
    testing::internal::CaptureStderr();
    const SaveOutcome outcome = saveTo(QStringLiteral("-"));
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(outcome.finalized) << outcome.error.toStdString();
    const std::string head = outcome.printed.substr(0, 20);
    EXPECT_TRUE(head == "Kaydara FBX Binary  " || head == "; FBX 7.7.0 project ") << head;
    EXPECT_EQ(outcome.printed.find("Program Success!"), std::string::npos);
    EXPECT_NE(lines.find("Program Success!"), std::string::npos);
}
