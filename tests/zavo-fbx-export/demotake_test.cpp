#include <gtest/gtest.h>

#include <cmath>

#include "bodytables.h"
#include "demotake.h"
#include "takemath.h"

namespace {

takemath::Vec3 position(const SegmentState& s) {
    return {s.position[0], s.position[1], s.position[2]};
}
takemath::Quat orientation(const SegmentState& s) {
    return {s.orientation[0], s.orientation[1], s.orientation[2], s.orientation[3]};
}

// The child's offset in its parent's frame must be the same in every frame as in the T-pose.
void expectRigid(const SegmentState& parent, const SegmentState& child,
                 const SegmentState& restParent, const SegmentState& restChild,
                 const std::string& what) {
    const takemath::Vec3 offset = takemath::rotate(takemath::conjugate(orientation(parent)),
                                                   position(child) - position(parent));
    const takemath::Vec3 rest = position(restChild) - position(restParent);
    EXPECT_NEAR(offset.x, rest.x, 1e-12) << what;
    EXPECT_NEAR(offset.y, rest.y, 1e-12) << what;
    EXPECT_NEAR(offset.z, rest.z, 1e-12) << what;
}

}  // namespace

TEST(DemoTake, IsARigidSkeletonOverATPose) {
    DemoTakeOptions options;
    options.frames = 120;
    options.props = 4;
    const Take take = makeDemoTake(options);
    EXPECT_EQ(takeProblem(take), "");
    ASSERT_EQ(take.segmentNames.size(), 27u);
    EXPECT_EQ(take.segmentNames[23], "Prop1");
    EXPECT_EQ(take.joints.size(), 26u);
    EXPECT_EQ(take.joints[22].parent, 10);  // the first prop is held in the right hand
    const TakePose& rest = *take.nullPose;
    for (const SegmentState& s : rest.segments)
        EXPECT_EQ(s.orientation, (std::array<double, 4>{1, 0, 0, 0}));
    for (const SegmentState& s : rest.fingers)
        EXPECT_EQ(s.orientation, (std::array<double, 4>{1, 0, 0, 0}));
    for (int f : {1, 37, 119}) {
        const TakePose& pose = *take.frames[static_cast<size_t>(f)];
        EXPECT_EQ(pose.frameTime, std::lround(f * 1000.0 / 60.0));
        for (int s = 1; s < 23; ++s) {
            const int p = bodytables::segmentParents[s];
            expectRigid(pose.segments[p], pose.segments[s], rest.segments[p], rest.segments[s],
                        "segment " + std::to_string(s));
        }
        for (const TakeJoint& joint : take.joints)
            expectRigid(pose.segments[joint.parent], pose.segments[joint.child],
                        rest.segments[joint.parent], rest.segments[joint.child],
                        "joint to " + std::to_string(joint.child));
        for (int hand = 0; hand < 2; ++hand)
            for (int k = 0; k < 20; ++k) {
                const int parent = bodytables::fingerParents[k];
                const int handSegment = hand == 0 ? 14 : 10;
                expectRigid(parent < 0 ? pose.segments[handSegment] : pose.finger(hand, parent),
                            pose.finger(hand, k),
                            parent < 0 ? rest.segments[handSegment] : rest.finger(hand, parent),
                            rest.finger(hand, k), "finger " + std::to_string(k));
            }
    }
}

TEST(DemoTake, WalksACircleAndFollowsItsOptions) {
    DemoTakeOptions options;
    options.frames = 900;
    const Take take = makeDemoTake(options);
    double nearest = 1e9, farthest = 0;
    for (const auto& frame : take.frames) {
        const auto& p = frame->segments[0].position;
        const double r = std::hypot(p[0], p[1] - 2.5);
        nearest = std::min(nearest, r);
        farthest = std::max(farthest, r);
    }
    EXPECT_NEAR(nearest, 2.5, 1e-9);
    EXPECT_NEAR(farthest, 2.5, 1e-9);
    // The waving left hand moves relative to the head.
    const auto height = [&](int f) {
        return take.frames[f]->segments[14].position[2] - take.frames[f]->segments[6].position[2];
    };
    EXPECT_GT(std::abs(height(0) - height(10)), 0.01);

    options = {};
    options.frames = 3;
    options.frameRate = 240;
    options.fingers = false;
    options.props = 0;
    const Take bare = makeDemoTake(options);
    EXPECT_EQ(bare.segmentNames.size(), 23u);
    EXPECT_FALSE(bare.frames[0]->hasFingers());
    EXPECT_TRUE(bare.fingerNames[0].empty());
    EXPECT_EQ(bare.frames[2]->frameTime, 8);
}
