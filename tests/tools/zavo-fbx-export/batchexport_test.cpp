// Batch conversion: several inputs into one folder, runs side by side, each file the same as
// from a run of its own, and a bad input failing alone.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <signal.h>

#include "programrun.h"

namespace {

const QStringList clips = {"cmu_02_01_walk", "cmu_02_03_run", "cmu_131_01_walk_alt_names"};

QStringList runOptions() {
    return {"--deterministic", "--format", "binary", "--bvh-unit", "0.056444"};
}

}  // namespace

TEST(BatchExport, WritesEachFileAsItsOwnRunWouldAndFailsOnlyTheBadInput) {
    QTemporaryDir folder;
    QDir(folder.path()).mkdir("batch");
    QDir(folder.path()).mkdir("single");
    writeFile(folder.filePath("broken.json"), "{\"format\": ");

    QStringList arguments = runOptions() << "--jobs"
                                         << "2"
                                         << "--output-dir"
                                         << "batch";
    for (const QString& clip : clips) arguments << ZAVO_BVH_DATA_DIR "/" + clip + ".bvh";
    arguments << "broken.json";
    const ProgramRun batch = runProgram(folder, arguments);
    EXPECT_EQ(batch.exitStatus, 1);
    EXPECT_EQ(batch.standardError.toStdString(),
              "zavo-fbx-export: broken.json: format: expected a string (line 1, column 12)\n");
    EXPECT_FALSE(QFile::exists(folder.filePath("batch/broken.fbx")));
    for (const QString& clip : clips) {
        SCOPED_TRACE(clip.toStdString());
        // The take is named after the file, so the single run writes a file of the same name.
        const QString name = clip + ".fbx";
        const ProgramRun single =
            runProgram(folder, runOptions() << ZAVO_BVH_DATA_DIR "/" + clip + ".bvh"
                                            << "single/" + name);
        ASSERT_EQ(single.exitStatus, 0) << single.standardError.toStdString();
        EXPECT_EQ(fileBytes(folder.filePath("batch/" + name)),
                  fileBytes(folder.filePath("single/" + name)));
        EXPECT_TRUE(batch.standardOutput.contains(QRegularExpression(
            "^batch/" + clip + R"(\.fbx: \d+ frames, )", QRegularExpression::MultilineOption)));
    }
    EXPECT_TRUE(batch.standardOutput.contains(
        QRegularExpression(R"(\n3 of 4 files written, 1 failed, \d+\.\d [KM]B, \d+\.\d\d s\n$)")))
        << batch.standardOutput.toStdString();

    const ProgramRun good =
        runProgram(folder, runOptions() << "-q"
                                        << "-j"
                                        << "2"
                                        << "--output-dir"
                                        << "batch" << ZAVO_BVH_DATA_DIR "/cmu_02_03_run.bvh"
                                        << ZAVO_BVH_DATA_DIR "/cmu_02_01_walk.bvh");
    EXPECT_EQ(good.exitStatus, 0) << good.standardError.toStdString();
    EXPECT_EQ(good.standardOutput + good.standardError, "");
}

TEST(BatchExport, RefusesInputsThatWouldOverwriteEachOther) {
    QTemporaryDir folder;
    QDir(folder.path()).mkpath("a/b");
    const ProgramRun clash = runProgram(folder, {"--output-dir", "a", "walk.bvh", "b/walk.json"});
    EXPECT_EQ(clash.exitStatus, 2);
    EXPECT_EQ(clash.standardError.toStdString(),
              "zavo-fbx-export: walk.bvh and b/walk.json would both be written to a/walk.fbx\n");
    const ProgramRun missing = runProgram(folder, {"--output-dir", "nowhere", "walk.bvh"});
    EXPECT_EQ(missing.exitStatus, 1);
    EXPECT_EQ(missing.standardError.toStdString(), "zavo-fbx-export: nowhere: no such folder\n");
}

TEST(BatchExport, ASignalStopsTheRunsUnderWayAndStartsNoMore) {
    QTemporaryDir folder;
    QDir(folder.path()).mkdir("batch");
    QStringList arguments = {"--format", "ascii", "--jobs", "2", "--output-dir", "batch"};
    for (int copy = 0; copy < 4; ++copy)
        for (const QString& clip : clips) {
            const QString input = folder.filePath(QString("%1-%2.bvh").arg(copy).arg(clip));
            ASSERT_TRUE(QFile::copy(ZAVO_BVH_DATA_DIR "/" + clip + ".bvh", input));
            arguments << input;
        }
    // After the first file's summary the runs after it are under way or still to come.
    RunOptions options;
    options.waitForOutput = ".fbx: ";
    options.whileRunning = [](qint64 pid) { ::kill(static_cast<pid_t>(pid), SIGTERM); };
    EXPECT_EQ(runProgram(folder, arguments, options).exitStatus, 128 + SIGTERM);
    const QStringList written =
        QDir(folder.filePath("batch")).entryList(QDir::Files | QDir::Hidden);
    EXPECT_GE(written.size(), 1);
    EXPECT_LT(written.size(), 12);
    for (const QString& name : written)
        EXPECT_TRUE(name.endsWith(".fbx") &&
                    fileBytes(folder.filePath("batch/" + name)).startsWith("; FBX 7"))
            << name.toStdString();
}
