#include <gtest/gtest.h>

#include <cmath>

#include "axisconvention.h"
#include "exportprobe.h"
#include "fbx/scene/fbxmarker.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxskeleton.h"
#include "nutypes/nuexception.h"
#include "synthetictake.h"

using Keys = std::array<float, 3>;

TEST(SkeletonPreset, BuildsTheSkeletonInOrderInBothNamings) {
    // `joints`: "<keying position> <name> <parent>".
    const auto check = [](const TakeShape& shape, const QVariant& naming, int segments,
                          const QStringList& joints) {
        FakeHost host;
        loadRigidTake(host, shape);
        if (shape.props == 4) {
            // Prop1 hangs from Prop4, which has no joint and stays out, and Prop2 from no
            // segment at all: both join the root.
            host.joints.pop_back();
            host.joints[22].parentSegment = 26;
            host.joints[23].parentSegment = 99;
        }
        host.settings.values["naming"] = naming;
        LocalProbe probe(host);
        probe.run();
        FbxNode* root = probe.node("Reference");
        ASSERT_EQ(root->GetParent(), probe.scene()->GetRootNode());
        EXPECT_EQ(root->GetSkeleton()->GetSkeletonType(), FbxSkeleton::eRoot);
        EXPECT_EQ(root->GetChildCount(true), segments);
        ASSERT_EQ(probe.segmentNames().size(), segments);
        for (const QString& joint : joints) {
            const QStringList j = joint.split(' ');
            EXPECT_EQ(probe.segmentNames()[j[0].toInt()], j[1]);
            EXPECT_EQ(probe.node(qPrintable(j[1]))->GetParent()->GetName(), j[2])
                << qPrintable(joint);
        }
        const QByteArray last = probe.segmentNames().last().toUtf8();
        const FbxNode* joint = probe.node(last.constData());
        EXPECT_EQ(joint->GetSkeleton()->GetSkeletonType(), FbxSkeleton::eLimbNode);
        EXPECT_EQ(joint->InheritType.Get(), FbxTransform::eInheritRSrs);
        EXPECT_EQ(probe.keyCount(last.constData()), 2);
        probe.finalize(true);
    };
    check({.frames = 2}, 0, 23,
          {"0 Hips Reference", "1 RightUpLeg Hips", "11 Spine2 Spine1", "17 RightShoulder Spine3",
           "22 Head Neck"});
    check({.frames = 2, .fingers = true, .props = 2}, "Default", 23 + 30 + 2,
          {"16 LeftHand LeftForeArm", "17 LeftHandThumb1 LeftHand",
           "31 LeftHandPinky3 LeftHandPinky2", "36 RightHandThumb1 RightHand", "52 Head Neck",
           "53 Prop1 RightHand", "54 Prop2 LeftHand"});
    check({.frames = 2, .fingers = true, .props = 1}, "Unreal", 23 + 30 + 1,
          {"10 spine_02_ignored Reference", "11 spine_02 spine_01", "19 thumb_03_l_l thumb_02_l",
           "38 thumb_03_r_r thumb_02_r", "53 prop_01 hand_r"});
    check({.frames = 2, .props = 4}, 0, 23 + 3,
          {"23 Prop1 Reference", "24 Prop2 Reference", "25 Prop3 Head"});
}

TEST(SkeletonPreset, StartsInTheCalibrationPoseAndKeysRotations) {
    FakeHost host;
    loadRigidTake(host, {.frames = 5, .fingers = true});
    host.frames[2]->valid = false;
    host.frames[4]->fingers.reset();
    host.settings.values = {{"walkOnTheSpot", "true"}, {"frameSkip", 1}};
    LocalProbe probe(host);
    probe.run();
    // Initial transforms: the T-pose in centimetres on FBX axes (the pelvis stands 95 cm high).
    const auto initial = [&probe](const char* name, bool translation) {
        const FbxDouble3 v =
            (translation ? probe.node(name)->LclTranslation : probe.node(name)->LclRotation).Get();
        return Keys{float(v[0]), float(v[1]), float(v[2])};
    };
    EXPECT_EQ(initial("Hips", true), (Keys{0, 95, 0}));
    EXPECT_EQ(initial("RightUpLeg", true), (Keys{-10, -5, 0}));
    EXPECT_EQ(initial("RightToeBase", false), (Keys{0, 0, 0}));
    // Frames 0, 2, 4: the invalid frame 2 keeps the key time of frame 0 and replaces its key.
    EXPECT_EQ(probe.lastError(), "Received invalid pose data");
    EXPECT_EQ(probe.keyCount("Hips", true), 2);
    EXPECT_EQ(probe.keyCount("LeftToeBase"), 2);
    EXPECT_EQ(probe.keyCount("LeftToeBase", true), -1);
    EXPECT_EQ(probe.node("Reference")->LclRotation.GetCurveNode(probe.sceneUnderWay().layer()),
              nullptr);
    // Walking on the spot keeps the height and drops the horizontal travel; fingers without
    // data in a frame sit unrotated.
    const auto height = static_cast<float>(host.frames[4]->positions[0][2] * 100);
    EXPECT_EQ(probe.lastKeys("Hips", true), (Keys{0, height, 0}));
    EXPECT_EQ(probe.lastKeys("LeftHandThumb2", false), (Keys{0, 0, 0}));
    probe.finalize(true);
}

TEST(SkeletonPreset, InvalidFirstPoseAndShortPoses) {
    // The skeleton comes from the first usable pose; the calibration pose keys frame 0.
    FakeHost host;
    loadRigidTake(host, {.frames = 3});
    host.frames[0]->valid = false;
    LocalProbe probe(host);
    probe.run();
    EXPECT_EQ(probe.segmentNames().size(), 23);
    EXPECT_EQ(probe.keyCount("Hips", true), 3);
    probe.finalize(true);

    // Poses of fewer segments than the body: a joint past their end (RightUpLeg, host segment
    // 15) stands and is keyed unrotated, at angles of exactly +0; a -0 is another file.
    FakeHost shortPoses;
    loadRigidTake(shortPoses, {.frames = 2});
    for (FakePose* pose :
         {&shortPoses.calibrationPose, &*shortPoses.frames[0], &*shortPoses.frames[1]}) {
        pose->positions.resize(12);
        pose->orientations.resize(12);
    }
    LocalProbe partial(shortPoses);
    partial.run();
    ASSERT_EQ(partial.segmentNames().size(), 12);
    const FbxDouble3 standing = partial.node("RightUpLeg")->LclRotation.Get();
    const Keys keyed = partial.lastKeys("RightUpLeg", false);
    for (int a = 0; a < 3; ++a) {
        EXPECT_TRUE(standing[a] == 0 && !std::signbit(standing[a])) << a;
        EXPECT_TRUE(keyed[a] == 0 && !std::signbit(keyed[a])) << a;
    }
    partial.finalize(true);
}

TEST(NodesPreset, FlatNodesWithGlobalKeys) {
    FakeHost host;
    loadRigidTake(host, {.frames = 3, .fingers = true, .props = 2});
    host.props = std::set<int>{1, 24};
    host.settings.values = {
        {"walkOnTheSpot", true}, {"useCalibrationPose", false}, {"outputScale", "2.5"}};
    GlobalProbe probe(host);
    probe.run();
    FbxNode* root = probe.node("Reference");
    ASSERT_NE(root->GetNull(), nullptr);
    EXPECT_EQ(root->GetChildCount(), 25 + 30);
    EXPECT_EQ(root->GetChildCount(true), 25 + 30);
    EXPECT_EQ(probe.segmentNames().mid(0, 3), (QStringList{"Seg0", "Prop1", "Seg2"}));
    EXPECT_EQ(probe.segmentNames().mid(23, 3), (QStringList{"Object1", "Prop2", "LFinger1"}));
    EXPECT_EQ(probe.segmentNames().last(), "RFinger19");
    EXPECT_NE(probe.node("LFinger5")->GetNull(), nullptr);
    // Positions relative to the pelvis horizontally, scaled, on FBX axes.
    const FakePose& pose = *host.frames[2];
    const nuvia::Vector3 pelvis = toFbxAxes(pose.positions[0]);
    for (const auto& [name, onHostAxes] : {std::pair("Seg0", pose.positions[0]),
                                           {"Seg9", pose.positions[9]},
                                           {"RFinger2", (*pose.fingers)[1][2].position}}) {
        const nuvia::Vector3 g = toFbxAxes(onHostAxes);
        EXPECT_EQ(probe.lastKeys(name, true),
                  (Keys{float((g[0] - pelvis[0]) * 2.5), float(g[1] * 2.5),
                        float((g[2] - pelvis[2]) * 2.5)}));
    }
    nuvia::Vector3 e;
    toFbxAxes(pose.orientations[9]).toEuler(e);
    EXPECT_EQ(probe.lastKeys("Seg9", false)[1], float(e[1]));
    probe.finalize(true);
}

TEST(ObjectExport, TakesWithoutABody) {
    FakeHost host;
    loadRigidTake(host, {.frames = 2});
    host.body = false;
    host.names = QStringList{"Bat", "Ball"};
    for (auto& frame : host.frames) frame->positions[1] = NuVector3(1, 2, 3);
    host.frames[0]->valid = false;
    LocalProbe invalid(host);
    invalid.run();
    EXPECT_EQ(invalid.scene()->GetRootNode()->GetChildCount(), 2);  // from the second frame
    invalid.finalize(true);

    host.frames[0]->valid = true;
    LocalProbe markers(host);
    markers.run();
    GlobalProbe nulls(host);
    nulls.run();
    EXPECT_EQ(nulls.node("Ball")->GetNull()->GetAttributeType(), FbxNodeAttribute::eNull);
    FbxNode* ball = markers.node("Ball");
    const FbxMarker* marker = ball->GetMarker();
    ASSERT_NE(marker, nullptr);
    EXPECT_EQ(std::tuple(marker->GetType(), marker->Look.Get()),
              std::tuple(FbxMarker::eStandard, FbxMarker::eLightCross));
    EXPECT_EQ(ball->GetParent(), markers.scene()->GetRootNode());
    EXPECT_EQ(ball->InheritType.Get(), FbxTransform::eInheritRrs);
    // Frame 0 shows the calibration pose; frame 1 the object at (1, 2, 3) m.
    EXPECT_EQ(markers.lastKeys("Ball", true), (Keys{200, 300, 100}));
    EXPECT_NE(markers.curve("Ball", true, "X")->KeyGetValue(0), 200.0f);
    markers.finalize(true);
    nulls.finalize(true);
}
