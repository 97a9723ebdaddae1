#include "posetransformfbx.h"

#include <gtest/gtest.h>

#include <cmath>

#include "fakehost.h"
#include "nutypes/nuexception.h"

namespace {

// A pose of `segments` segments at the origin with identity orientations.
PoseData restPose(int segments, bool fingers = false) {
    PoseData pose;
    pose.positions.assign(segments, NuVector3());
    pose.orientations.assign(segments, NuQuaternion{1, 0, 0, 0});
    if (fingers) pose.fingers.emplace();
    return pose;
}

// (pose index, parent) of every export position.
std::vector<std::pair<int, int>> tree(const PoseTransformFbx& transform) {
    std::vector<std::pair<int, int>> result;
    for (int i = 0; i < transform.getSegmentCount(); ++i) {
        QString name;
        int index, parent;
        transform.getSegmentMeta(i, name, index, parent);
        result.emplace_back(index, parent);
    }
    return result;
}

void expectPose(const PoseTransformFbx& transform, int i, std::array<double, 6> expected) {
    nuvia::Vector3 t, r;
    transform.getSegmentPose(i, t, r);
    for (int a = 0; a < 3; ++a) {
        EXPECT_NEAR(t[a], expected[a], 1e-9) << i;
        EXPECT_NEAR(r[a], expected[3 + a], 1e-9) << i;
    }
}

}  // namespace

TEST(PoseTransformFbx, SegmentOrderFingersAndProps) {
    // Prop 25 has no joint and stays out; prop 26's holder is no segment, so it is a root.
    const PoseTransformFbx body(poseObject(restPose(27)),
                                KexJointArray({{10, 24}, {6, 23}, {99, 26}}), Naming_Default);
    std::vector<int> order;
    for (const auto& [index, parent] : tree(body)) order.push_back(index);
    EXPECT_EQ(order, (std::vector<int>{0,  15, 16, 17, 18, 19, 20, 21, 22, 1, 2,  3,  4,
                                       11, 12, 13, 14, 7,  8,  9,  10, 5,  6, 23, 24, 26}));
    EXPECT_EQ(tree(body)[24], std::pair(24, 10));
    EXPECT_EQ(tree(body)[25], std::pair(26, -1));

    // Left fingers follow the left hand, right fingers the right hand; S = 27.
    const auto fingers = tree(PoseTransformFbx(poseObject(restPose(27, true)), {}, Naming_Default));
    ASSERT_EQ(fingers.size(), 53u);
    EXPECT_EQ(fingers[16].first, 14);
    EXPECT_EQ(fingers[17], std::pair(27, 14));  // thumb 1 hangs from the hand
    EXPECT_EQ(fingers[18], std::pair(28, 27));  // thumb 2 from thumb 1
    EXPECT_EQ(fingers[31], std::pair(41, 40));  // pinky 3
    EXPECT_EQ(fingers[35].first, 10);
    EXPECT_EQ(fingers[36], std::pair(27 + 15, 10));  // right thumb 1

    // A prop hung from a prop the take does not hold: its parent is never posed, and the frame
    // must not read past the per-pose lists.
    PoseTransformFbx orphan(poseObject(restPose(27)), KexJointArray({{26, 23}}), Naming_Default);
    EXPECT_EQ(tree(orphan).back(), std::pair(23, 26));
    PoseData holder = restPose(27);
    holder.positions[23] = NuVector3(1, 2, 3);
    orphan.transform(poseObject(holder));
    nuvia::Vector3 t, r;
    orphan.getSegmentPose(orphan.getSegmentCount() - 1, t, r);
    EXPECT_EQ(std::tuple(t[0], t[1], t[2]), std::tuple(2.0, 3.0, 1.0));
}

TEST(PoseTransformFbx, LocalTransformsOnFbxAxes) {
    PoseTransformFbx transform(poseObject(restPose(23, true)), {}, Naming_Default);
    PoseData pose = restPose(23);  // this frame has no finger data
    const double h = std::sqrt(0.5);
    pose.positions[0] = NuVector3(1, 2, 3);
    pose.positions[15] = NuVector3(1, 1, 2);
    pose.orientations[1] = pose.orientations[2] = {h, 0, 0, h};  // 90 degrees about host Z
    pose.positions[14] = NuVector3(0.5, 0.25, 1.0);
    pose.orientations[14] = {h, h, 0, 0};  // 90 degrees about host X, which is FBX Z
    transform.transform(poseObject(pose));
    expectPose(transform, 0, {2, 3, 1, 0, 0, 0});      // pelvis: global position, FBX axes
    expectPose(transform, 1, {-1, -1, 0, 0, 0, 0});    // right thigh: offset from the pelvis
    expectPose(transform, 9, {-2, -3, -1, 0, 90, 0});  // spine: host Z is FBX Y
    expectPose(transform, 10, {0, 0, 0, 0, 0, 0});     // same orientation as its parent
    expectPose(transform, 11, {0, 0, 0, 0, -90, 0});
    // Fingers without data sit at the origin, unrotated: relative to the hand.
    expectPose(transform, 17, {-0.25, -1, -0.5, 0, 0, -90});
    expectPose(transform, 18, {0, 0, 0, 0, 0, 0});
}

TEST(PoseTransformFbx, MalformedPosesKeepOrFail) {
    PoseTransformFbx transform(poseObject(restPose(23)), {}, Naming_Default);
    PoseData pose = restPose(23);
    pose.positions[0] = NuVector3(1, 2, 3);
    transform.transform(poseObject(pose));
    transform.transform(ZavoPoseObject());  // covers no segment: all keep their values
    expectPose(transform, 0, {2, 3, 1, 0, 0, 0});
    pose.positions[0] = NuVector{1.0, 2.0};
    try {
        transform.transform(poseObject(pose));
        ADD_FAILURE() << "a two-element position was accepted";
    } catch (const NuException& e) {
        EXPECT_STREQ(e.what(), "Vector3 Source vector too small");
    }
    pose.positions[0] = NuVector3();
    pose.positions[1] = NuVector();  // a child's position, read for its offset
    EXPECT_THROW(transform.transform(poseObject(pose)), NuException);
}
