#include <gtest/gtest.h>

#include <cmath>

#include "bodytables.h"
#include "demotake.h"
#include "takemath.h"

namespace {

using Link = std::pair<const SegmentState*, const SegmentState*>;  // parent, child

// Every parent and child of the demo skeleton in `pose`: body segments, props, finger joints.
std::vector<Link> links(const Take& take, const TakePose& pose) {
    std::vector<Link> result;
    for (int s = 1; s < 23; ++s)
        result.emplace_back(&pose.segments[bodytables::segmentParents[s]], &pose.segments[s]);
    for (const TakeJoint& joint : take.joints)
        result.emplace_back(&pose.segments[joint.parent], &pose.segments[joint.child]);
    for (int hand = 0; hand < 2; ++hand)
        for (int k = 0; k < 20; ++k) {
            const int p = bodytables::fingerParents[k];
            result.emplace_back(p < 0 ? &pose.segments[hand == 0 ? 14 : 10] : &pose.finger(hand, p),
                                &pose.finger(hand, k));
        }
    return result;
}

// The child's offset in its parent's frame.
takemath::Vec3 offset(const Link& link) {
    const auto& q = link.first->orientation;
    const auto &a = link.first->position, &b = link.second->position;
    return takemath::rotate(takemath::conjugate({q[0], q[1], q[2], q[3]}),
                            {b[0] - a[0], b[1] - a[1], b[2] - a[2]});
}

}  // namespace

TEST(DemoTake, IsARigidSkeletonOverATPose) {
    const Take take = makeDemoTake({.frames = 120, .props = 4});
    EXPECT_EQ(takeProblem(take), "");
    ASSERT_EQ(take.segmentNames.size(), 27u);
    EXPECT_EQ(take.joints.size(), 26u);
    EXPECT_EQ(take.joints[22].parent, 10);  // the first prop is held in the right hand
    const std::vector<Link> rest = links(take, *take.nullPose);
    EXPECT_EQ(take.nullPose->segments[0].orientation, (std::array<double, 4>{1, 0, 0, 0}));
    for (const Link& link : rest)
        EXPECT_EQ(link.second->orientation, (std::array<double, 4>{1, 0, 0, 0}));
    for (int f : {1, 37, 119}) {
        const TakePose& pose = *take.frames[static_cast<size_t>(f)];
        EXPECT_EQ(pose.frameTime, std::lround(f * 1000.0 / 60.0));
        const std::vector<Link> moved = links(take, pose);
        for (size_t i = 0; i < rest.size(); ++i) {
            const takemath::Vec3 d = offset(moved[i]) - offset(rest[i]);
            EXPECT_LT(std::abs(d.x) + std::abs(d.y) + std::abs(d.z), 1e-12)
                << "link " << i << " frame " << f;
        }
    }
}

TEST(DemoTake, MovesAndFollowsItsOptions) {
    const Take take = makeDemoTake({});
    // The pelvis walks on and the waving left hand moves relative to the head.
    const auto& [x0, y0, z0] = take.frames[0]->segments[0].position;
    const auto& [x1, y1, z1] = take.frames[60]->segments[0].position;
    EXPECT_GT(std::hypot(x1 - x0, y1 - y0), 0.5);
    const auto height = [&](int f) {
        return take.frames[f]->segments[14].position[2] - take.frames[f]->segments[6].position[2];
    };
    EXPECT_GT(std::abs(height(0) - height(10)), 0.01);

    const Take bare = makeDemoTake({.frames = 3, .frameRate = 240, .fingers = false, .props = 0});
    EXPECT_EQ(bare.segmentNames.size(), 23u);
    EXPECT_FALSE(bare.frames[0]->hasFingers());
    EXPECT_TRUE(bare.fingerNames[0].empty());
    EXPECT_EQ(bare.frames[2]->frameTime, 8);
}
