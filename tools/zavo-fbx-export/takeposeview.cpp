#include "takeposeview.h"

#include <memory>

#include <zavo/bodymodel.h>

namespace {

NuQuaternion toNu(const std::array<double, 4>& q) {
    return {q[0], q[1], q[2], q[3]};
}

NuQuaternion conjugateTimes(const NuQuaternion& a, const NuQuaternion& b) {
    const NuQuaternion c{a.w, -a.x, -a.y, -a.z};
    return {c.w * b.w - c.x * b.x - c.y * b.y - c.z * b.z,
            c.w * b.x + c.x * b.w + c.y * b.z - c.z * b.y,
            c.w * b.y - c.x * b.z + c.y * b.w + c.z * b.x,
            c.w * b.z + c.x * b.y - c.y * b.x + c.z * b.w};
}

}  // namespace

NuVector TakePoseView::pos_g(int segment) const {
    if (!hasSegment(segment)) return NuVector();
    const auto& p = m_pose.segments[static_cast<size_t>(segment)].position;
    return NuVector{p[0], p[1], p[2]};
}

int TakePoseView::parentSegment(int segment) const {
    if (m_take.hasBody && segment < BodyModel::BodySegmentCount)
        return BodyModel::Segments[static_cast<size_t>(segment)].parent;
    for (const TakeJoint& joint : m_take.joints)
        if (joint.child == segment) return joint.parent;
    return -1;
}

NuQuaternion TakePoseView::q_gb(int segment, PoseBase base) const {
    if (!hasSegment(segment)) return NuQuaternion{};
    const NuQuaternion global = toNu(m_pose.segments[static_cast<size_t>(segment)].orientation);
    const int parent = base == PoseBase_Parent ? parentSegment(segment) : -1;
    if (!hasSegment(parent)) return global;
    return conjugateTimes(toNu(m_pose.segments[static_cast<size_t>(parent)].orientation), global);
}

std::pair<int32_t, int32_t> TakePoseView::poseOffset() const {
    return {m_pose.poseOffset[0], m_pose.poseOffset[1]};
}

KexSegmentPose TakePoseView::fingerTrackingData(NuHandId hand, int index) const {
    KexSegmentPose result;
    if (!m_pose.hasFingers() || (hand != NuHand_Left && hand != NuHand_Right) || index < 0 ||
        index >= TakePose::FingersPerHand)
        return result;
    const SegmentState& state = m_pose.finger(hand, index);
    result.orientation = toNu(state.orientation);
    for (int i = 0; i < 3; ++i)
        result.position[static_cast<size_t>(i)] = state.position[static_cast<size_t>(i)];
    return result;
}

ZavoPoseObject makePoseObject(const Take& take, const TakePose* pose) {
    if (!pose) return ZavoPoseObject();
    return ZavoPoseObject(std::make_unique<TakePoseView>(take, *pose));
}

ZavoPoseObject makePoseObject(const Take& take, std::shared_ptr<const TakePose> pose) {
    return ZavoPoseObject(std::make_unique<TakePoseView>(take, std::move(pose)));
}
