#include "posereading.h"

#include <algorithm>

void PoseReading::resize(const ZavoPoseObject& pose) {
    // Keeps the storage of earlier frames: a long take reads its poses without allocating.
    const auto count = static_cast<size_t>(std::max(pose.segmentStateCount(), 0));
    m_positions.resize(count);
    m_orientations.resize(count);
    m_hasFingers = false;
}

void PoseReading::read(const ZavoPoseObject& pose) {
    readWhile(pose, [](const NuVector&, const NuQuaternion&, bool) { return true; });
}

const NuVector& PoseReading::position(int i) const {
    static const NuVector none;
    return i >= 0 && i < segmentCount() ? m_positions[static_cast<size_t>(i)] : none;
}

const KexSegmentPose& PoseReading::finger(NuHandId hand, int joint) const {
    static const KexSegmentPose unrotated;
    return m_hasFingers ? m_fingers[fingerSlot(hand, joint)] : unrotated;
}
