// Real takes at rates without a standard time mode, exported with Fixed increments: each key one
// frame of the take's own rate after the last, and runs in one process that never influence
// each other.
#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <memory>

#include "bvhclip.h"
#include "bvhframerate.h"
#include "bvhtake.h"
#include "demotake.h"
#include "fakehost.h"
#include "fbx/scene/fbxtime.h"
#include "fbxexporterlocal.h"
#include "fbxfile/fbxbinaryreader.h"
#include "settingsstore.h"
#include "takehost.h"

namespace {

const QStringList CmuClips = {"cmu_02_01_walk.bvh", "cmu_02_03_run.bvh",
                              "cmu_131_01_walk_alt_names.bvh"};
constexpr int DemoFrames = 240;
constexpr double StudioRate = 119.88;

Take cmuTake(const QString& clip) {
    const QString path = QStringLiteral(ZAVO_BVH_DATA_DIR "/") + clip;
    const BvhClip bvh = readBvhFile(path.toStdString());
    return takeFromBvh(bvh, 0.01, bvhFrameRate(bvh).rate);
}

Take studioTake() {
    return makeDemoTake({.frames = DemoFrames, .frameRate = StudioRate});
}

// Exports `take` in this process as the reference host would: Fixed increments, binary,
// deterministic output.
void exportInProcess(const Take& take, const QString& file) {
    QTemporaryDir storeDir;
    TakeHost host(take, std::make_shared<SettingsStore>(storeDir.filePath("settings.ini")));
    FakeSettings settings;
    settings.values = {{"timeIncrementMode", 0}, {"exportFormat", "binary"}};
    FbxExporterLocal exporter(host, &settings);
    qputenv("ZAVO_FBX_DETERMINISTIC", "1");
    ASSERT_TRUE(exporter.initialize(file));
    for (int f = take.firstFrame; f < take.firstFrame + take.frameCount(); ++f) {
        exporter.exportFrame(f);
    }
    EXPECT_TRUE(exporter.finalize(false));
    qunsetenv("ZAVO_FBX_DETERMINISTIC");
}

// The same export by the reference host, a process of its own.
void exportSeparately(const QStringList& input, const QString& file) {
    QTemporaryDir storeDir;
    QProcess program;
    program.start(ZAVO_FBX_EXPORT_PROGRAM,
                  QStringList{"--settings", storeDir.filePath("settings.ini"), "--deterministic",
                              "--quiet", "--time-increment", "fixed", "--format", "binary"} +
                      input + QStringList{file});
    ASSERT_TRUE(program.waitForFinished(60000));
    ASSERT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
}

fbxfile::File readFile(const QString& path) {
    fbxfile::File file;
    std::string error;
    EXPECT_TRUE(fbxfile::ReadBinaryFile(path.toStdString(), file, error)) << error;
    return file;
}

const fbxfile::Value* globalSetting(const fbxfile::File& file, const std::string& name) {
    const fbxfile::Record* properties = file.Find("GlobalSettings/Properties70");
    if (!properties) return nullptr;
    for (const fbxfile::Record& p : properties->children) {
        if (p.values.size() == 5 && p.values[0].String() == name) return &p.values[4];
    }
    return nullptr;
}

// Checks the file's time mode against `rate` and that every curve keys frame k at exactly
// k frames of that rate, in the file's legacy ticks.
void expectKeysOnTheRateGrid(const QString& path, double rate, int frames) {
    const fbxfile::File file = readFile(path);
    const FbxLongLong frame = static_cast<FbxLongLong>(141120000.0 / rate);
    const fbxfile::Value* mode = globalSetting(file, "TimeMode");
    const fbxfile::Value* custom = globalSetting(file, "CustomFrameRate");
    ASSERT_TRUE(mode && custom);
    if (mode->Int() == FbxTime::eCustom) {
        EXPECT_EQ(custom->reals.at(0), rate);
    } else {
        EXPECT_NEAR(FbxTime::GetFrameRate(static_cast<FbxTime::EMode>(mode->Int())), rate, 1e-6);
        EXPECT_EQ(FbxTime::GetOneFrameValue(static_cast<FbxTime::EMode>(mode->Int())), frame);
    }
    int curves = 0;
    for (const fbxfile::Record* curve : file.Find("Objects")->Children("AnimationCurve")) {
        const std::vector<int64_t>& times = curve->Child("KeyTime")->values.at(0).ints;
        ASSERT_EQ(times.size(), static_cast<size_t>(frames));
        for (int k = 0; k < frames; ++k) {
            ASSERT_EQ(times[k], FbxTCToLegacy(k * frame)) << "key " << k;
        }
        ++curves;
    }
    EXPECT_GT(curves, 3);
}

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

TEST(RunState, FixedKeysAdvanceOneFrameOfTheTakesOwnRate) {
    QTemporaryDir dir;
    const Take studio = studioTake();
    exportInProcess(studio, dir.filePath("studio.fbx"));
    expectKeysOnTheRateGrid(dir.filePath("studio.fbx"), StudioRate, DemoFrames);
    for (const QString& clip : CmuClips) {
        SCOPED_TRACE(clip.toStdString());
        const Take take = cmuTake(clip);
        const QString file = dir.filePath(clip + ".fbx");
        exportInProcess(take, file);
        expectKeysOnTheRateGrid(file, take.frameRate, take.frameCount());
    }
}

TEST(RunState, RunsInOneProcessMatchSeparateRuns) {
    QTemporaryDir inProcess, separate;
    const QString clip = CmuClips[0];
    const QString cmuPath = QStringLiteral(ZAVO_BVH_DATA_DIR "/") + clip;
    // Another rate in between, and another again, must leave no trace in either file.
    QDir(inProcess.path()).mkdir("first");
    exportInProcess(studioTake(), inProcess.filePath("first/studio.fbx"));
    exportInProcess(cmuTake(clip), inProcess.filePath("walk.fbx"));
    exportInProcess(studioTake(), inProcess.filePath("studio.fbx"));
    exportSeparately({"--demo", "--demo-frames", QString::number(DemoFrames), "--demo-rate",
                      QString::number(StudioRate)},
                     separate.filePath("studio.fbx"));
    exportSeparately({cmuPath}, separate.filePath("walk.fbx"));

    const QByteArray studio = bytesOf(separate.filePath("studio.fbx"));
    ASSERT_FALSE(studio.isEmpty());
    EXPECT_EQ(bytesOf(inProcess.filePath("first/studio.fbx")), studio);
    EXPECT_EQ(bytesOf(inProcess.filePath("studio.fbx")), studio);
    EXPECT_EQ(bytesOf(inProcess.filePath("walk.fbx")), bytesOf(separate.filePath("walk.fbx")));
}
