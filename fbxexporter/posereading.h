#pragma once

#include <array>
#include <vector>

#include <zavo/kexsegmentpose.h>
#include <zavo/nuhandid.h>
#include <zavo/zavoposeobject.h>

#include "skeletondefinition.h"

// One frame's pose as the host gave it: each segment's global position and orientation and,
// when the pose has finger data, every finger joint of both hands. The host makes each value
// anew on every call, so a frame's export reads them once, here, and works from the copies.
class PoseReading {
public:
    // Reads every segment and finger joint of `pose`, in the host's order: positions and
    // orientations segment by segment, then the left hand's fingers, then the right's.
    void read(const ZavoPoseObject& pose);
    // The same, stopping at the first segment or finger joint `usable` refuses; false then,
    // with the reading incomplete.
    template <typename Usable>
    bool readWhile(const ZavoPoseObject& pose, Usable usable);

    int segmentCount() const { return static_cast<int>(m_positions.size()); }
    // The position of segment `i`, empty for a segment the pose does not have.
    const NuVector& position(int i) const;
    // The global orientation of segment `i`, which the pose has.
    const NuQuaternion& orientation(int i) const { return m_orientations[static_cast<size_t>(i)]; }
    // Finger joint `joint` (0 to 19) of `hand`; unrotated at the origin without finger data.
    const KexSegmentPose& finger(NuHandId hand, int joint) const;

private:
    static constexpr int FingerJoints = SkeletonDefinition::FingerJointCount;

    static size_t fingerSlot(NuHandId hand, int joint) {
        return static_cast<size_t>((hand == NuHand_Right ? FingerJoints : 0) + joint);
    }
    void resize(const ZavoPoseObject& pose);

    std::vector<NuVector> m_positions;
    std::vector<NuQuaternion> m_orientations;
    bool m_hasFingers = false;
    std::array<KexSegmentPose, 2 * FingerJoints> m_fingers;
};

template <typename Usable>
bool PoseReading::readWhile(const ZavoPoseObject& pose, Usable usable) {
    resize(pose);
    for (int i = 0; i < segmentCount(); ++i) {
        const auto s = static_cast<size_t>(i);
        m_positions[s] = pose.pos_g(i);
        m_orientations[s] = pose.q_gb(i, PoseBase_Global);
        if (!usable(m_positions[s], m_orientations[s], false)) return false;
    }
    m_hasFingers = pose.hasFingerTrackingData();
    if (!m_hasFingers) return true;
    for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
        for (int k = 0; k < FingerJoints; ++k) {
            KexSegmentPose& f = m_fingers[fingerSlot(hand, k)];
            f = pose.fingerTrackingData(hand, k);
            if (!usable(f.position, f.orientation, true)) return false;
        }
    }
    return true;
}
