#include <gtest/gtest.h>

#include <cmath>

#include "exportprobe.h"
#include "fbx/scene/fbxmarker.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxskeleton.h"
#include "nutypes/nuexception.h"
#include "synthetictake.h"

namespace {

QString parentName(const LocalProbe& probe, const char* name) {
    return QString::fromUtf8(probe.node(name)->GetParent()->GetName());
}

float key(const FbxAnimCurve* curve, int i) {
    return curve->KeyGetValue(i);
}

void expectNear(const FbxDouble3& a, const FbxDouble3& b) {
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], 1e-9) << i;
}

}  // namespace

TEST(SkeletonPreset, BuildsTheSkeletonInBothNamings) {
    struct Case {
        TakeShape shape;
        int naming;
        int segments;
        std::vector<std::pair<const char*, const char*>> parents;
    };
    const std::vector<Case> cases = {
        {{.frames = 2}, 0, 23, {{"Hips", "Reference"}, {"Spine2", "Spine1"}, {"Head", "Neck"}}},
        {{.frames = 2, .fingers = true, .props = 2},
         0,
         23 + 30 + 2,
         {{"LeftHandThumb1", "LeftHand"},
          {"RightHandPinky3", "RightHandPinky2"},
          {"Prop1", "RightHand"},
          {"Prop2", "LeftHand"}}},
        {{.frames = 2, .fingers = true, .props = 1},
         1,
         23 + 30 + 1,
         {{"spine_02_ignored", "Reference"},
          {"spine_02", "spine_01"},
          {"thumb_03_r_r", "thumb_02_r"},
          {"thumb_03_l_l", "thumb_02_l"},
          {"prop_01", "hand_r"}}},
    };
    for (const Case& c : cases) {
        FakeHost host;
        loadRigidTake(host, c.shape);
        host.settings.values["naming"] = c.naming;
        LocalProbe probe(host);
        probe.run();
        FbxNode* root = probe.node("Reference");
        ASSERT_EQ(root->GetParent(), probe.m_scene->GetRootNode());
        EXPECT_EQ(root->GetSkeleton()->GetSkeletonType(), FbxSkeleton::eRoot);
        EXPECT_EQ(root->GetChildCount(true), c.segments);
        EXPECT_EQ(probe.m_segmentNames.size(), c.segments);
        for (const auto& [child, parent] : c.parents) EXPECT_EQ(parentName(probe, child), parent);
        FbxNode* joint = probe.node(probe.m_segmentNames.last().toUtf8().constData());
        EXPECT_EQ(joint->GetSkeleton()->GetSkeletonType(), FbxSkeleton::eLimbNode);
        EXPECT_EQ(joint->InheritType.Get(), FbxTransform::eInheritRSrs);
        probe.finalize(true);
    }

    // A prop the joint list hangs from itself has no parent made before it: it joins the root.
    FakeHost host;
    loadRigidTake(host, {.frames = 2, .props = 1});
    host.joints.back().parentSegment = 23;
    LocalProbe probe(host);
    probe.run();
    const FbxNode* prop = probe.node("Prop1");
    ASSERT_TRUE(prop && prop->GetParent());
    EXPECT_STREQ(prop->GetParent()->GetName(), "Reference");
    EXPECT_EQ(probe.keyCount("Prop1"), 2);
    probe.finalize(true);
}

TEST(SkeletonPreset, StartsInTheCalibrationPoseAndKeysRotations) {
    FakeHost host;
    loadRigidTake(host, {.frames = 5});
    host.frames[2]->valid = false;
    host.settings.values = {{"walkOnTheSpot", true}, {"frameSkip", 1}};
    LocalProbe probe(host);
    probe.run();
    // Initial transforms: the T-pose in centimetres on FBX axes (the pelvis stands 95 cm high).
    expectNear(probe.node("Hips")->LclTranslation.Get(), FbxDouble3(0, 95, 0));
    expectNear(probe.node("RightUpLeg")->LclTranslation.Get(), FbxDouble3(-10, -5, 0));
    expectNear(probe.node("RightToeBase")->LclRotation.Get(), FbxDouble3(0, 0, 0));
    // Frames 0, 2, 4: the invalid frame 2 keeps the key time of frame 0 and replaces its key.
    EXPECT_EQ(probe.lastError(), "Received invalid pose data");
    EXPECT_EQ(probe.keyCount("Hips", true), 2);
    EXPECT_EQ(probe.keyCount("LeftToeBase"), 2);
    EXPECT_EQ(probe.keyCount("LeftToeBase", true), -1);
    EXPECT_EQ(probe.node("Reference")->LclRotation.GetCurveNode(probe.m_animLayer), nullptr);
    const FbxAnimCurve* x = probe.curve("Hips", true, "X");
    const FbxAnimCurve* y = probe.curve("Hips", true, "Y");
    const double height = host.frames[4]->positions[0][2] * 100;
    EXPECT_EQ(std::tuple(key(x, 1), key(y, 1)), std::tuple(0.0f, static_cast<float>(height)));
    EXPECT_EQ(x->KeyGetInterpolation(1), FbxAnimCurveDef::eInterpolationLinear);
    // The horizontal keys are differences: a position that is not a number shows through.
    host.frames[4]->positions[0] = NuVector3(NAN, 0, 1);
    probe.exportFrame(4);
    EXPECT_TRUE(std::isnan(key(probe.curve("Hips", true, "Z"), 1)));
    probe.finalize(true);
}

TEST(SkeletonPreset, InvalidFirstPoseOrMissingPelvis) {
    FakeHost host;
    loadRigidTake(host, {.frames = 3});
    host.frames[0]->valid = false;
    LocalProbe probe(host);
    probe.run();
    EXPECT_EQ(probe.node("Reference"), nullptr);
    EXPECT_TRUE(probe.m_segmentNames.isEmpty());
    probe.finalize(true);

    // A frame the host has no pose for (recorded at the epoch) ends that frame's export.
    host.frames[0]->valid = true;
    host.frames[2].reset();
    LocalProbe second(host);
    ASSERT_TRUE(second.initialize("/tmp/take.fbx"));
    EXPECT_TRUE(second.exportFrame(0));
    EXPECT_THROW(second.exportFrame(2), NuException);
    second.finalize(true);
}

TEST(NodesPreset, FlatNodesWithGlobalKeys) {
    FakeHost host;
    loadRigidTake(host, {.frames = 3, .fingers = true, .props = 2});
    host.props = std::set<int>{1, 24};
    host.settings.values = {{"walkOnTheSpot", true}, {"useCalibrationPose", false}};
    GlobalProbe probe(host);
    probe.run();
    FbxNode* root = probe.node("Reference");
    ASSERT_NE(root->GetNull(), nullptr);
    EXPECT_EQ(root->GetChildCount(), 25 + 30);
    EXPECT_EQ(root->GetChildCount(true), 25 + 30);
    EXPECT_EQ(probe.m_segmentNames.mid(0, 3), (QStringList{"Pelvis", "Prop1", "SpineMid"}));
    EXPECT_EQ(probe.m_segmentNames.mid(23, 3), (QStringList{"Object1", "Prop2", "LFinger1"}));
    EXPECT_EQ(probe.m_segmentNames.last(), "RFinger19");
    EXPECT_NE(probe.node("LFinger5")->GetNull(), nullptr);
    // Positions relative to the pelvis horizontally, in centimetres, host axes 1, 2, 0.
    const PoseData& pose = *host.frames[2];
    const auto expectKeys = [&](const char* name, const NuVector& g) {
        EXPECT_EQ(key(probe.curve(name, true, "X"), 2), float((g[1] - pose.positions[0][1]) * 100));
        EXPECT_EQ(key(probe.curve(name, true, "Y"), 2), float(g[2] * 100));
        EXPECT_EQ(key(probe.curve(name, true, "Z"), 2), float((g[0] - pose.positions[0][0]) * 100));
    };
    expectKeys("Pelvis", pose.positions[0]);
    expectKeys("RLowerArm", pose.positions[9]);
    expectKeys("RFinger2", (*pose.fingers)[1][2].position);
    nuvia::Vector3 e;
    const NuQuaternion& q = pose.orientations[9];
    nuvia::Quaternion(q.w, q.y, q.z, q.x).toEuler(e);
    EXPECT_EQ(key(probe.curve("RLowerArm", false, "Y"), 2), float(e[1]));
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
    EXPECT_EQ(invalid.m_scene->GetRootNode()->GetChildCount(), 0);
    invalid.finalize(true);

    host.frames[0]->valid = true;
    LocalProbe markers(host);
    markers.run();
    GlobalProbe nulls(host);
    nulls.run();
    EXPECT_EQ(nulls.node("Ball")->GetNull()->GetAttributeType(), FbxNodeAttribute::eNull);
    const FbxMarker* marker = markers.node("Ball")->GetMarker();
    ASSERT_NE(marker, nullptr);
    EXPECT_EQ(std::tuple(marker->GetType(), marker->Look.Get()),
              std::tuple(FbxMarker::eStandard, FbxMarker::eLightCross));
    FbxNode* ball = markers.node("Ball");
    EXPECT_EQ(ball->GetParent(), markers.m_scene->GetRootNode());
    EXPECT_EQ(ball->InheritType.Get(), FbxTransform::eInheritRrs);
    // Frame 0 shows the calibration pose; frame 1 the object at (1, 2, 3) m.
    EXPECT_EQ(std::tuple(key(markers.curve("Ball", true, "X"), 1),
                         key(markers.curve("Ball", true, "Y"), 1),
                         key(markers.curve("Ball", true, "Z"), 1)),
              std::tuple(200.0f, 300.0f, 100.0f));
    EXPECT_NE(key(markers.curve("Ball", true, "X"), 0), 200.0f);
    markers.finalize(true);
    nulls.finalize(true);
}
