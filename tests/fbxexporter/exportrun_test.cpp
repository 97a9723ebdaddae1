#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <functional>

#include "exportprobe.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "nutypes/nuexception.h"
#include "synthetictake.h"

TEST(ExportRun, InitializeRefusesInvalidSettingsAndEmptyFileNames) {
    FakeHost host;
    LocalProbe probe(host);
    const std::vector<std::pair<QVariantMap, std::string>> invalid = {
        {{{"outputPreset", " Nodes"}}, "Invalid outputPreset:  Nodes"},
        {{{"outputPreset", "1"}, {"naming", 2}}, "Invalid naming convention: 2"}};
    for (const auto& [values, message] : invalid) {
        host.settings.values = values;
        try {
            probe.initialize("/tmp/take.fbx");
            ADD_FAILURE() << message;
        } catch (const NuException& e) {
            EXPECT_EQ(std::pair(e.code(), e.message()), std::pair(33, message));
        }
    }
    host.settings.values.clear();
    static QString warning;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext& c, const QString& text) {
            warning = QString("%1:%2 %3 ").arg(c.file).arg(c.line).arg(c.function) + text;
        });
    EXPECT_FALSE(probe.initialize(QString()));
    qInstallMessageHandler(previous);
    EXPECT_EQ(warning, "fbxexporter:94 initialize No valid filename retrieved");
    EXPECT_EQ(host.usageEvents, QStringList(3, "FileExportedFBX"));
    EXPECT_EQ(probe.scene(), nullptr);
    EXPECT_FALSE(probe.exportFrame(0));
    EXPECT_TRUE(probe.finalize(false));
}

// Values from the settings file and the command line arrive as text, and the reference host's
// settings matrix tries those end to end; the options page's arrive typed. A value a key does
// not accept ends the run at its start, whichever way it came, before any FBX object exists.
TEST(ExportRun, InitializeChecksEverySettingsValue) {
    const std::vector<std::pair<const char*, QVariant>> refused = {
        {"outputScale", 0.0},       {"frameSkip", -1},        {"useCalibrationPose", 2},
        {"walkOnTheSpot", " true"}, {"timeIncrementMode", 2}, {"timeStart", 5}};
    for (const auto& [key, value] : refused) {
        FakeHost host;
        loadRigidTake(host, {.frames = 2});
        host.settings.values = {{key, value}};
        LocalProbe probe(host);
        try {
            probe.initialize("/tmp/take.fbx");
            ADD_FAILURE() << key << " accepted " << value.toString().toStdString();
        } catch (const NuException& e) {
            EXPECT_EQ(e.code(), 33);
            const std::string quoted = "\"" + value.toString().toStdString() + "\"";
            EXPECT_EQ(e.message().rfind(std::string("Invalid ") + key + ": " + quoted, 0), 0)
                << e.message();
        }
        EXPECT_EQ(probe.scene(), nullptr);
        probe.finalize(true);
    }

    FakeHost host;
    loadRigidTake(host, {.frames = 2});
    host.settings.values = {{"outputScale", "1,5"}};
    try {
        LocalProbe(host).initialize("/tmp/take.fbx");
    } catch (const NuException& e) {
        EXPECT_EQ(
            e.message(),
            "Invalid outputScale: \"1,5\" (accepted: a number above 0, such as 100 or 0.001)");
    }
    host.settings.values = {{"outputScale", 3.2808399}, {"useCalibrationPose", 0},
                            {"walkOnTheSpot", true},    {"frameSkip", 1000000},
                            {"timeStart", 1},           {"exportFormat", "ASCII"}};
    LocalProbe probe(host);
    EXPECT_TRUE(probe.initialize("/tmp/take.fbx"));
    probe.finalize(true);
}

TEST(ExportRun, TakeNameCommentTimeModeAndCancel) {
    const std::vector<std::tuple<QString, QString, double, int, FbxTime::EMode>> cases = {
        {"C:/takes/walk#3.fbx", "walk", 240.0, 1, FbxTime::eFrames120},
        {"/tmp/walk.v2.fbx", "walk.v2", 60000.0 / 1001, 0, FbxTime::eFrames59dot94},
        {"/tmp/walk", "wal", 37.0, 0, FbxTime::eCustom}};
    for (const auto& [file, take, rate, skip, mode] : cases) {
        FakeHost host;
        loadRigidTake(host, {.frames = 2, .rate = rate});
        host.comment = QString::fromUtf8("Sprünge");
        host.settings.values["frameSkip"] = skip;
        LocalProbe probe(host);
        probe.run(file);
        EXPECT_STREQ(probe.scene()->GetMember<FbxAnimStack>(0)->GetName(),
                     take.toUtf8().constData());
        EXPECT_EQ(probe.scene()->GetSceneInfo()->mComment, "Sprünge");
        const FbxGlobalSettings& settings = probe.scene()->GetGlobalSettings();
        EXPECT_EQ(settings.GetTimeMode(), mode) << rate;
        EXPECT_EQ(settings.GetCustomFrameRate(), mode == FbxTime::eCustom ? rate : -1.0);
        EXPECT_TRUE(probe.finalize(true));
        EXPECT_FALSE(QFile::exists(file));
    }
}

// Key times of the pelvis over a take of `frames` frames recorded from `start`.
static std::vector<FbxLongLong> keyTimes(int frames, const char* start, const QVariantMap& settings,
                                         const std::function<void(FakeHost&)>& adjust = {}) {
    FakeHost host;
    host.recordStart = QDateTime::fromString(start, Qt::ISODateWithMs);
    loadRigidTake(host, {.frames = frames});
    if (adjust) adjust(host);
    host.settings.values = settings;
    LocalProbe probe(host);
    probe.run();
    std::vector<FbxLongLong> times;
    const FbxAnimCurve* curve = probe.curve("Hips", true, "X");
    for (int i = 0; curve && i < curve->KeyGetCount(); ++i)
        times.push_back(curve->KeyGetTime(i).Get());
    probe.finalize(true);
    return times;
}

TEST(ExportRun, KeyTimes) {
    using Times = std::vector<FbxLongLong>;
    const FbxLongLong ms = FBX_TC_MILLISECOND, frame20 = FBX_TC_SECOND / 20,
                      frame60 = FBX_TC_SECOND / 60;
    const char* epoch = "1970-01-01T00:00:00.000Z";
    // Dynamic from zero.
    EXPECT_EQ(keyTimes(4, epoch, {}), (Times{0, 17 * ms, 33 * ms, 50 * ms}));
    // Fixed, skip 2 from frame 10.
    EXPECT_EQ(keyTimes(17, epoch, {{"timeIncrementMode", 0}, {"frameSkip", 2}},
                       [](FakeHost& h) { h.first = 10; }),
              (Times{0, frame20, 2 * frame20}));
    // Without the calibration pose the first key lies at its frame time.
    EXPECT_EQ(keyTimes(4, epoch, {{"useCalibrationPose", false}}, [](FakeHost& h) { h.first = 2; }),
              (Times{33 * ms, 50 * ms}));
    // Real start wraps at midnight; the curve keeps its keys in time order, so the first
    // frame's key comes last.
    EXPECT_EQ(keyTimes(4, "2026-04-30T23:59:59.990Z", {{"timeStart", 1}}),
              (Times{7 * ms, 23 * ms, 40 * ms, 86399990 * ms}));
    // A fixed real start counts frames of the day.
    const FbxLongLong afternoon = (14 * 3600 + 3 * 60 + 12) * FBX_TC_SECOND + 15 * frame60;
    EXPECT_EQ(
        keyTimes(4, "2026-04-30T14:03:12.250Z", {{"timeStart", 1}, {"timeIncrementMode", 0}}),
        (Times{afternoon, afternoon + frame60, afternoon + 2 * frame60, afternoon + 3 * frame60}));
    // A pose offset shifts a real start; early and missing frames are skipped.
    EXPECT_EQ(keyTimes(4, "1970-01-01T00:00:01.000Z", {{"timeStart", 1}},
                       [](FakeHost& h) {
                           h.frames[0]->absolute = 999;
                           h.frames[2]->offset = {9, 5};
                           h.frames[3].reset();
                       }),
              (Times{1000 * ms, 1011 * ms}));
}

// Every finger joint of both hands is checked, exported or not, in either preset; a take
// without a body may leave an object without a position, a finger joint never.
TEST(ExportRun, FingerJointsAndObjectsInTheUsablePoseCheck) {
    // Keys of `node`'s translation after five frames, and the run's last error.
    const auto keysAndError = []<class Probe>(const char* node, auto adjust) {
        FakeHost host;
        loadRigidTake(host, {.frames = 5, .fingers = true});
        adjust(host);
        Probe probe(host);
        probe.run();
        const int keys = probe.keyCount(node, true);
        probe.finalize(true);
        return std::pair(keys, probe.lastError().toStdString());
    };
    const auto skeleton = [&](auto adjust) {
        return keysAndError.template operator()<LocalProbe>("Hips", adjust);
    };
    const auto nodes = [&](auto adjust) {
        return keysAndError.template operator()<GlobalProbe>("Seg0", adjust);
    };
    const auto refused = std::pair(4, std::string("Received invalid pose data"));
    const auto finger = [](FakeHost& h, int frame, NuHandId hand, int joint) -> KexSegmentPose& {
        return (*h.frames[frame]->fingers)[hand][joint];
    };
    // The carpus (joint 0) is not exported, yet a broken one makes the pose unusable.
    const auto carpus = [&](FakeHost& h) { finger(h, 2, NuHand_Left, 0).orientation = {}; };
    const auto notANumber = [&](FakeHost& h) {
        finger(h, 4, NuHand_Right, 19).position = NuVector3(0, NAN, 0);
    };
    const auto tooFar = [&](FakeHost& h) {
        finger(h, 1, NuHand_Right, 7).position = NuVector3(1e307, 0, 0);
    };
    // A frame without finger data is usable: its fingers sit unrotated at the origin.
    const auto noFingers = [](FakeHost& h) { h.frames[3]->fingers.reset(); };
    const auto usable = std::pair(5, std::string());
    EXPECT_EQ(skeleton(carpus), refused);
    EXPECT_EQ(nodes(carpus), refused);
    EXPECT_EQ(skeleton(notANumber), refused);
    EXPECT_EQ(nodes(tooFar), refused);
    EXPECT_EQ(skeleton(noFingers), usable);
    EXPECT_EQ(nodes(noFingers), usable);

    // An object without a position stands at the origin; a body segment without one is no pose.
    const auto emptyPosition = [](bool body) {
        return [body](FakeHost& h) {
            h.body = body;
            if (!body) h.names = QStringList{"Bat", "Ball"};
            h.frames[2]->positions[1] = NuVector();
        };
    };
    EXPECT_EQ(skeleton(emptyPosition(true)), refused);
    EXPECT_EQ(keysAndError.template operator()<LocalProbe>("Ball", emptyPosition(false)), usable);
}

// Hostile poses never reach a curve; a run that would write no node or no key writes nothing.
TEST(ExportRun, UnusablePosesAndRunsWithNothingToExport) {
    const auto outcome = [](const std::function<void(FakeHost&)>& adjust, int* hipsKeys = nullptr,
                            const QVariantMap& settings = {}) {
        QTemporaryDir dir;
        FakeHost host;
        loadRigidTake(host, {.frames = 5});
        adjust(host);
        host.settings.values = settings;
        LocalProbe probe(host);
        probe.run(dir.filePath("take.fbx"));
        if (hipsKeys) *hipsKeys = probe.scene() ? probe.keyCount("Hips", true) : -1;
        const bool written = probe.finalize(false);
        EXPECT_EQ(written, QFile::exists(dir.filePath("take.fbx")));
        return std::pair(written, probe.lastError().toStdString());
    };
    const std::string invalid = "1 of 5 frames have no usable pose and were left out";
    int keys = 0;
    // Orientations without a usable length, non-finite values, finger data included.
    for (const NuQuaternion& q :
         {NuQuaternion{1e300, 1e300, 0, 0}, NuQuaternion{0, 0, 0, 0}, NuQuaternion{NAN, 0, 0, 1}}) {
        EXPECT_EQ(outcome([&q](FakeHost& h) { h.frames[2]->orientations[5] = q; }, &keys),
                  std::pair(true, invalid));
        EXPECT_EQ(keys, 4);
    }
    EXPECT_EQ(
        outcome([](FakeHost& h) { h.frames[3]->positions[7] = NuVector3(0, INFINITY, 0); }, &keys),
        std::pair(true, invalid));
    EXPECT_EQ(keys, 4);
    // Without a calibration pose the first frame keys its own pose.
    EXPECT_EQ(outcome([](FakeHost& h) { h.calibrationPose = FakePose{}; }, &keys),
              std::pair(true, std::string()));
    EXPECT_EQ(keys, 5);
    // Frames at one time stamp: the file keeps the last, the host hears how many.
    EXPECT_EQ(outcome([](FakeHost& h) { h.frames[3]->time = h.frames[2]->time; }, &keys),
              std::pair(true, std::string("1 of 5 frames share a key time with an earlier "
                                          "frame; the file keeps the last of each")));
    EXPECT_EQ(keys, 4);
    // A frame without any pose leaves no key either; both losses are told in one line.
    EXPECT_EQ(outcome(
                  [](FakeHost& h) {
                      h.frames[1].reset();
                      h.frames[4]->time = h.frames[3]->time;
                  },
                  &keys),
              std::pair(true, std::string("1 of 5 frames have no usable pose and were left out; "
                                          "1 of 4 frames share a key time with an earlier frame; "
                                          "the file keeps the last of each")));
    EXPECT_EQ(keys, 3);

    EXPECT_EQ(outcome([](FakeHost& h) {
                  h.recordStart = QDateTime::fromMSecsSinceEpoch(1000000, Qt::UTC);
              }),
              std::pair(false, std::string("Nothing to export: no frame of the take has a key "
                                           "(every frame lies before the recording start)")));
    const std::string noPose =
        "Nothing to export: no frame of the take has a usable pose (valid, finite, and within "
        "range at output scale ";
    EXPECT_EQ(outcome([](FakeHost& h) {
                  for (auto& f : h.frames) f->valid = false;
              }),
              std::pair(false, noPose + "100)"));
    // A scale that overflows single precision keys is refused the same way.
    EXPECT_EQ(outcome([](FakeHost&) {}, nullptr, {{"outputScale", 1e308}}),
              std::pair(false, noPose + "1e+308)"));
}
