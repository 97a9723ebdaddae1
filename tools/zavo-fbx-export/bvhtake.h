#pragma once

#include <array>
#include <string_view>

#include <zavo/bodymodel.h>

#include "bvhclip.h"
#include "take.h"

// Which BVH joint gives each host segment and finger joint its pose.
struct BvhBodyMap {
    // Joint whose pose segment s takes: its own match, else that of its nearest matched
    // ancestor segment. The root joint is always the pelvis.
    std::array<int, BodyModel::BodySegmentCount> segmentJoint{};
    // Whether segment s found a joint of its own name.
    std::array<bool, BodyModel::BodySegmentCount> matched{};
    // Per hand, the joint giving finger joint k its pose (same fallback, ending at the hand).
    std::array<std::array<int, BodyModel::FingerJointCount>, 2> fingerJoint{};
    // Whether any joint carries a finger name; without one the take has no finger data.
    bool hasFingers = false;
    std::string_view scheme;  // the joint-naming scheme the clip was read in
};

// Matches the clip's joints to the host's segments and fingers by name, ignoring case, in the
// naming scheme that knows most of them.
BvhBodyMap mapBvhJoints(const BvhClip& clip);

// Turns a BVH clip into a take: poses from the clip's own forward kinematics, turned from the
// file's Y-up axes into the host's Z-up axes and from file units into metres (`metresPerUnit`);
// the rest pose is the null pose; the frames follow each other at `frameRate`. The take keeps
// the clip and computes a frame's pose when asked for it.
Take takeFromBvh(BvhClip clip, double metresPerUnit, double frameRate);

// A BVH position in the host's axes and in metres.
takemath::Vec3 hostPositionFromBvh(takemath::Vec3 position, double metresPerUnit);
// A BVH orientation in the host's axes.
takemath::Quat hostOrientationFromBvh(takemath::Quat orientation);
