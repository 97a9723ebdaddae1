#include "bvhtake.h"

#include <memory>

#include "bvhnaming.h"

namespace {

using BodyModel::BodySegmentCount;
using BodyModel::FingerJointCount;

SegmentState hostState(const BvhJointPose& pose, double metresPerUnit) {
    const takemath::Vec3 p = hostPositionFromBvh(pose.position, metresPerUnit);
    const takemath::Quat q = hostOrientationFromBvh(pose.orientation);
    return {{p.x, p.y, p.z}, {q.w, q.x, q.y, q.z}};
}

TakePose hostPose(const BvhClip& clip, const BvhBodyMap& map, int frame, double metresPerUnit) {
    // Poses are computed on the host's thread and on the look-ahead's: each keeps its own room
    // for the joints rather than asking for it anew every frame.
    thread_local std::vector<BvhJointPose> joints;
    bvhForwardKinematics(clip, frame, joints);
    TakePose pose;
    pose.segments.reserve(BodySegmentCount);
    for (int s = 0; s < BodySegmentCount; ++s)
        pose.segments.push_back(
            hostState(joints[static_cast<size_t>(map.segmentJoint[s])], metresPerUnit));
    if (map.hasFingers) {
        pose.fingers.reserve(2 * FingerJointCount);
        for (int hand = 0; hand < 2; ++hand)
            for (int k = 0; k < FingerJointCount; ++k)
                pose.fingers.push_back(hostState(
                    joints[static_cast<size_t>(map.fingerJoint[hand][k])], metresPerUnit));
    }
    return pose;
}

}  // namespace

takemath::Vec3 hostPositionFromBvh(takemath::Vec3 position, double metresPerUnit) {
    // BVH's Y-up axes are those of an FBX scene: host X is the file's Z, host Y its X and
    // host Z its Y, a proper rotation, so a file exported again shows the clip's own numbers.
    return metresPerUnit * takemath::Vec3{position.z, position.x, position.y};
}

takemath::Quat hostOrientationFromBvh(takemath::Quat orientation) {
    return {orientation.w, orientation.z, orientation.x, orientation.y};
}

BvhBodyMap mapBvhJoints(const BvhClip& clip) {
    BvhBodyMap map;
    map.segmentJoint.fill(-1);
    for (auto& hand : map.fingerJoint) hand.fill(-1);
    map.segmentJoint[0] = 0;  // the root is the pelvis whatever its name
    map.matched[0] = true;
    const BvhNamingScheme scheme = bvhNamingScheme(clip);
    map.scheme = scheme.name;
    for (size_t j = 1; j < clip.joints.size(); ++j) {
        const int target = scheme.targets[j];
        if (target >= 0 && target < BodySegmentCount && !map.matched[target]) {
            map.segmentJoint[target] = static_cast<int>(j);
            map.matched[target] = true;
        } else if (target >= 100) {
            const int hand = target / 100 - 1, finger = target % 100;
            if (map.fingerJoint[hand][finger] >= 0) continue;
            map.fingerJoint[hand][finger] = static_cast<int>(j);
            map.hasFingers = true;
        }
    }
    // Parents come before children in the tables, so an ancestor is resolved first.
    for (int s = 1; s < BodySegmentCount; ++s)
        if (!map.matched[s]) map.segmentJoint[s] = map.segmentJoint[BodyModel::Segments[s].parent];
    for (int hand = 0; hand < 2; ++hand) {
        const int handSegment = BodyModel::handSegment(NuHandId(hand));
        for (int k = 0; k < FingerJointCount; ++k) {
            if (map.fingerJoint[hand][k] >= 0) continue;
            const int parent = BodyModel::FingerJoints[k].parent;
            map.fingerJoint[hand][k] =
                parent < 0 ? map.segmentJoint[handSegment] : map.fingerJoint[hand][parent];
        }
    }
    return map;
}

Take takeFromBvh(BvhClip clip, double metresPerUnit, double frameRate) {
    const BvhBodyMap map = mapBvhJoints(clip);
    Take take;
    take.frameRate = frameRate;
    addDefaultBody(take, map.hasFingers);
    take.nullPose = hostPose(clip, map, -1, metresPerUnit);
    // Every frame's pose held at once would take several times the memory of the clip itself.
    take.computedFrames = clip.frameCount;
    take.computePose = [clip = std::make_shared<const BvhClip>(std::move(clip)), map, metresPerUnit,
                        frameRate, start = take.recordStartTime](int f) {
        TakePose pose = hostPose(*clip, map, f, metresPerUnit);
        pose.frameTime = defaultFrameTime(f, frameRate);
        pose.absoluteTime = start + pose.frameTime;
        return pose;
    };
    return take;
}
