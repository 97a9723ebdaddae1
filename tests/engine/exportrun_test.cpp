#include <gtest/gtest.h>

#include <QFile>
#include <functional>

#include "exportprobe.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "nutypes/nuexception.h"
#include "synthetictake.h"

namespace {

constexpr FbxLongLong kMs = FBX_TC_MILLISECOND;

QDateTime utc(const char* iso) {
    return QDateTime::fromString(iso, Qt::ISODateWithMs);
}

std::vector<FbxLongLong> pelvisKeyTimes(const LocalProbe& probe) {
    std::vector<FbxLongLong> times;
    const FbxAnimCurve* curve = probe.curve("Hips", true, "X");
    for (int i = 0; curve && i < curve->KeyGetCount(); ++i)
        times.push_back(curve->KeyGetTime(i).Get());
    return times;
}

}  // namespace

TEST(ExportRun, LoadsSettings) {
    FakeHost host;
    LocalProbe probe(host);
    const auto settings = [&probe] {
        return std::tuple(probe.m_preset, probe.m_naming, probe.m_outputScale, probe.m_dynamic,
                          probe.m_startAtZero, probe.m_useCalibrationPose, probe.m_frameSkip,
                          probe.m_walkOnTheSpot, probe.m_exportFormat);
    };
    probe.loadSettings();
    EXPECT_EQ(settings(), std::tuple(1, 0, 100.0, true, true, true, 0, false, QString("ascii")));
    host.settings.values = {
        {"outputPreset", "NODES"}, {"naming", "Unreal"},      {"outputScale", "3.2808399"},
        {"timeIncrementMode", 2},  {"timeStart", 5},          {"useCalibrationPose", false},
        {"frameSkip", -1},         {"walkOnTheSpot", "true"}, {"exportFormat", "Binary"}};
    probe.loadSettings();
    EXPECT_EQ(settings(),
              std::tuple(0, 1, 3.2808399, false, false, false, 0, true, QString("Binary")));

    // An invalid preset or naming stops the run; what was read before it is kept.
    const std::vector<std::pair<QVariantMap, std::string>> invalid = {
        {{{"outputPreset", " Nodes"}}, "Invalid outputPreset:  Nodes"},
        {{{"outputPreset", "1"}, {"naming", 2}, {"outputScale", 7}},
         "Invalid naming convention: 2"}};
    for (const auto& [values, message] : invalid) {
        host.settings.values = values;
        try {
            probe.initialize("/tmp/take.fbx");
            ADD_FAILURE() << message;
        } catch (const NuException& e) {
            EXPECT_EQ(std::pair(e.code(), e.message()), std::pair(33, message));
        }
    }
    EXPECT_EQ(std::pair(probe.m_preset, probe.m_outputScale), std::pair(1, 3.2808399));
    EXPECT_TRUE(probe.finalize(false));
}

TEST(ExportRun, EmptyFileNameWarnsAndBuildsNothing) {
    FakeHost host;
    LocalProbe probe(host);
    static QString warning;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext& c, const QString& text) {
            warning = QString::fromUtf8(c.file) + ':' + QString::number(c.line) + ' ' +
                      QString::fromUtf8(c.function) + ' ' + text;
        });
    EXPECT_FALSE(probe.initialize(QString()));
    qInstallMessageHandler(previous);
    EXPECT_EQ(warning, "fbxexporter:94 initialize No valid filename retrieved");
    EXPECT_EQ(host.usageEvents, QStringList{"FileExportedFBX"});
    EXPECT_EQ(probe.m_scene, nullptr);
    EXPECT_FALSE(probe.exportFrame(0));
    EXPECT_TRUE(probe.finalize(false));
}

TEST(ExportRun, TakeNameDocumentInfoAndCancel) {
    const std::vector<std::pair<QString, QString>> names = {
        {"C:/takes/walk#3.fbx", "walk"}, {"/tmp/walk.v2.fbx", "walk.v2"}, {"/tmp/walk", "wal"}};
    for (const auto& [file, take] : names) {
        FakeHost host;
        loadRigidTake(host, {.frames = 2});
        host.comment = QString::fromUtf8("Sprünge");
        LocalProbe probe(host);
        probe.run(file);
        EXPECT_EQ(probe.m_takeName, take);
        EXPECT_STREQ(probe.m_scene->GetMember<FbxAnimStack>(0)->GetName(),
                     take.toUtf8().constData());
        const FbxDocumentInfo* info = probe.m_scene->GetSceneInfo();
        EXPECT_EQ(info->mTitle, "Nuvia ZAVO Exported Scene");
        EXPECT_EQ(info->mComment, "Sprünge");
        EXPECT_EQ(info->mRevision, "2026.4.0");
        EXPECT_TRUE(probe.finalize(true));
        EXPECT_FALSE(QFile::exists(file));
    }
}

TEST(ExportRun, TimeModeFollowsTheExportRate) {
    const std::vector<std::tuple<double, int, FbxTime::EMode, double>> cases = {
        {240.0, 1, FbxTime::eFrames120, -1.0},
        {60000.0 / 1001, 0, FbxTime::eFrames59dot94, -1.0},
        {37.0, 0, FbxTime::eCustom, 37.0}};
    for (const auto& [rate, skip, mode, custom] : cases) {
        FakeHost host;
        loadRigidTake(host, {.frames = 2, .rate = rate});
        host.settings.values["frameSkip"] = skip;
        LocalProbe probe(host);
        ASSERT_TRUE(probe.initialize("/tmp/take.fbx"));
        EXPECT_EQ(probe.m_scene->GetGlobalSettings().GetTimeMode(), mode) << rate;
        EXPECT_EQ(probe.m_scene->GetGlobalSettings().GetCustomFrameRate(), custom) << rate;
        probe.finalize(true);
    }
}

TEST(ExportRun, KeyTimes) {
    struct Case {
        const char* what;
        int frames = 4;
        QDateTime start = QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);
        QVariantMap settings = {};
        std::function<void(FakeHost&)> adjust = [](FakeHost&) {};
        std::vector<FbxLongLong> times = {};
    };
    const FbxLongLong frame20 = FBX_TC_SECOND / 20, frame60 = FBX_TC_SECOND / 60;
    const FbxLongLong afternoon = (14 * 3600 + 3 * 60 + 12) * FBX_TC_SECOND + 15 * frame60;
    const std::vector<Case> cases = {
        {.what = "dynamic from zero; a skip of -1 skips nothing",
         .settings = {{"frameSkip", -1}},
         .times = {0, 17 * kMs, 33 * kMs, 50 * kMs}},
        {.what = "fixed, skip 2 from frame 10",
         .frames = 17,
         .settings = {{"timeIncrementMode", 0}, {"frameSkip", 2}},
         .adjust = [](FakeHost& h) { h.first = 10; },
         .times = {0, frame20, 2 * frame20}},
        {.what = "no calibration pose: first key at its frame time",
         .settings = {{"useCalibrationPose", false}},
         .adjust = [](FakeHost& h) { h.first = 2; },
         .times = {33 * kMs, 50 * kMs}},
        {.what = "real start wraps at midnight",
         .start = utc("2026-04-30T23:59:59.990Z"),
         .settings = {{"timeStart", 1}},
         // The curve keeps its keys in time order: the first frame's key comes last.
         .times = {7 * kMs, 23 * kMs, 40 * kMs, 86399990 * kMs}},
        {.what = "fixed real start counts frames of the day",
         .start = utc("2026-04-30T14:03:12.250Z"),
         .settings = {{"timeStart", 1}, {"timeIncrementMode", 0}},
         .times = {afternoon, afternoon + frame60, afternoon + 2 * frame60,
                   afternoon + 3 * frame60}},
        {.what = "pose offset with real start; early and missing frames are skipped",
         .start = utc("1970-01-01T00:00:01.000Z"),
         .settings = {{"timeStart", 1}},
         .adjust =
             [](FakeHost& h) {
                 h.frames[0]->absoluteTime = 999;
                 h.frames[2]->poseOffset = {9, 5};
                 h.frames[3].reset();
             },
         .times = {1000 * kMs, 1011 * kMs}},
    };
    for (const Case& c : cases) {
        FakeHost host;
        host.recordStart = c.start;
        loadRigidTake(host, {.frames = c.frames});
        c.adjust(host);
        host.settings.values = c.settings;
        LocalProbe probe(host);
        probe.run();
        EXPECT_EQ(pelvisKeyTimes(probe), c.times) << c.what;
        probe.finalize(true);
    }
}
