#include "bvhfolding.h"

#include <cmath>

namespace {

using BodyModel::BodySegmentCount;
using BodyModel::FingerJointCount;

int handSegment(int hand) {
    return BodyModel::handSegment(NuHandId(hand));
}

// Per clip joint, the code of the first exported segment posed by it, or -1.
std::vector<int> ownSegments(const BvhClip& clip, const BvhBodyMap& map) {
    std::vector<int> own(clip.joints.size(), -1);
    for (int s = 0; s < BodySegmentCount; ++s)
        if (int& code = own[static_cast<size_t>(map.segmentJoint[s])]; code < 0) code = s;
    for (int hand = 0; map.hasFingers && hand < 2; ++hand)
        for (int k = 0; k < FingerJointCount; ++k) {
            int& code = own[static_cast<size_t>(map.fingerJoint[hand][k])];
            if (code < 0 && BodyModel::FingerJoints[k].tracked) code = 100 * (hand + 1) + k;
        }
    return own;
}

// World positions of the exported segments in one frame: the rest pose's bone between the
// joints of a segment and its parent, turned by the parent's joint.
class SkeletonPositions {
public:
    SkeletonPositions(const BvhClip& clip, const BvhBodyMap& map)
        : m_map(map), m_rest(bvhForwardKinematics(clip, -1)) {}

    void pose(const std::vector<BvhJointPose>& joints) {
        m_body[0] = joints[static_cast<size_t>(m_map.segmentJoint[0])].position;
        for (int s = 1; s < BodySegmentCount; ++s) {
            const int parent = BodyModel::Segments[s].parent;
            m_body[s] =
                place(joints, m_body[parent], m_map.segmentJoint[parent], m_map.segmentJoint[s]);
        }
        for (int hand = 0; hand < 2; ++hand)
            for (int k = 0; k < FingerJointCount; ++k) {
                const int parent = BodyModel::FingerJoints[k].parent;
                const takemath::Vec3 base =
                    parent < 0 ? m_body[handSegment(hand)] : m_fingers[hand][parent];
                const int baseJoint = parent < 0 ? m_map.segmentJoint[handSegment(hand)]
                                                 : m_map.fingerJoint[hand][parent];
                m_fingers[hand][k] = place(joints, base, baseJoint, m_map.fingerJoint[hand][k]);
            }
    }

    takemath::Vec3 position(int code) const {
        if (code < 100) return m_body[code];
        return m_fingers[code / 100 - 1][code % 100];
    }

private:
    takemath::Vec3 place(const std::vector<BvhJointPose>& joints, takemath::Vec3 base,
                         int baseJoint, int joint) const {
        const takemath::Vec3 bone = m_rest[static_cast<size_t>(joint)].position -
                                    m_rest[static_cast<size_t>(baseJoint)].position;
        return base + takemath::rotate(joints[static_cast<size_t>(baseJoint)].orientation, bone);
    }

    const BvhBodyMap& m_map;
    std::vector<BvhJointPose> m_rest;
    takemath::Vec3 m_body[BodySegmentCount];
    takemath::Vec3 m_fingers[2][FingerJointCount];
};

}  // namespace

BvhFolding measureBvhFolding(const BvhClip& clip, const BvhBodyMap& map, double metresPerUnit) {
    BvhFolding folding;
    folding.standIn = ownSegments(clip, map);
    for (size_t j = 0; j < clip.joints.size(); ++j)
        if (folding.standIn[j] < 0) {
            folding.foldedJoints.push_back(static_cast<int>(j));
            // Parents come first, so the parent's stand-in is known.
            folding.standIn[j] = folding.standIn[static_cast<size_t>(clip.joints[j].parent)];
        }
    SkeletonPositions skeleton(clip, map);
    std::vector<BvhJointPose> joints;
    for (int f = 0; f < clip.frameCount; ++f) {
        bvhForwardKinematics(clip, f, joints);
        skeleton.pose(joints);
        for (size_t j = 0; j < joints.size(); ++j) {
            const takemath::Vec3 d = joints[j].position - skeleton.position(folding.standIn[j]);
            const double error = metresPerUnit * std::hypot(d.x, d.y, d.z);
            if (error > folding.worstError) {
                folding.worstError = error;
                folding.worstJoint = static_cast<int>(j);
                folding.worstFrame = f;
            }
        }
    }
    return folding;
}

std::string bvhStandInName(int code) {
    if (code < 100) return std::string(BodyModel::Segments[static_cast<size_t>(code)].name);
    return BodyModel::fingerName(code < 200 ? NuHand_Left : NuHand_Right, code % 100);
}
