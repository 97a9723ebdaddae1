// Which frames an export run keys, at which time, and with which pose.
#include <QStringList>
#include <cmath>
#include <limits>

#include "nufbxexporter.h"

namespace {

// Key values are single precision; twice the margin leaves room for the differences the
// Skeleton preset forms between two positions.
constexpr double MaxScaledCoordinate = std::numeric_limits<float>::max() / 2.0;
// Host orientations are unit quaternions; far from that length they are no rotation at all.
constexpr double MinSquaredNorm = 1e-6;
constexpr double MaxSquaredNorm = 1e6;

bool isUsableOrientation(double w, double x, double y, double z) {
    const double norm = w * w + x * x + y * y + z * z;
    return norm > MinSquaredNorm && norm < MaxSquaredNorm;  // false for NaN and infinity
}

bool isUsablePosition(const NuVector& position, double scale, bool mayBeEmpty) {
    if (position.size() == 0) return mayBeEmpty;
    if (position.size() != 3) return false;
    for (int a = 0; a < 3; ++a) {
        if (!(std::abs(position[a] * scale) <= MaxScaledCoordinate)) return false;
    }
    return true;
}

}  // namespace

const NuVector& NuFbxExporter::KeyedFrame::position(int i) const {
    static const NuVector none;
    return i >= 0 && static_cast<size_t>(i) < positions.size() ? positions[static_cast<size_t>(i)]
                                                               : none;
}

bool NuFbxExporter::isUsablePose(const ZavoPoseObject& pose) const {
    std::vector<NuVector> positions;
    return readUsablePose(pose, positions);
}

bool NuFbxExporter::readUsablePose(const ZavoPoseObject& pose,
                                   std::vector<NuVector>& positions) const {
    if (!pose.isValid() || pose.segmentStateCount() <= 0) return false;
    const bool objects = !m_host.hasBody();
    positions.resize(static_cast<size_t>(pose.segmentStateCount()));
    for (int i = 0; i < pose.segmentStateCount(); ++i) {
        NuVector& position = positions[static_cast<size_t>(i)];
        position = pose.pos_g(i);
        const NuQuaternion q = pose.q_gb(i, PoseBase_Global);
        if (!isUsablePosition(position, m_settings.outputScale, objects) ||
            !isUsableOrientation(q.w, q.x, q.y, q.z)) {
            return false;
        }
    }
    if (!pose.hasFingerTrackingData()) return true;
    for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
        for (int k = 0; k < 20; ++k) {
            const KexSegmentPose f = pose.fingerTrackingData(hand, k);
            const NuQuaternion& q = f.orientation;
            if (!isUsablePosition(f.position, m_settings.outputScale, false) ||
                !isUsableOrientation(q.w, q.x, q.y, q.z)) {
                return false;
            }
        }
    }
    return true;
}

ZavoPoseObject NuFbxExporter::firstUsablePose() const {
    const int first = m_host.firstFrame();
    for (int f = first; f < first + m_host.frameCount(); ++f) {
        ZavoPoseObject pose = m_host.pose(f);
        if (isUsablePose(pose)) return pose;
    }
    return {};
}

const ZavoPoseObject& NuFbxExporter::hostPose(int frame) {
    if (m_hostPoseFrame != frame) {
        m_hostPose = m_host.pose(frame);
        m_hostPoseFrame = frame;
    }
    return m_hostPose;
}

const ZavoPoseObject& NuFbxExporter::framePose(int frame) {
    if (m_settings.useCalibrationPose && frame == m_timing.firstFrame()) {
        // A take recorded without a calibration pose keeps its first frame as it is.
        m_calibrationPose = m_host.nullPose();
        if (isUsablePose(m_calibrationPose)) return m_calibrationPose;
    }
    return hostPose(frame);
}

void NuFbxExporter::forgetPoses() {
    m_hostPoseFrame.reset();
    m_hostPose = {};
    m_calibrationPose = {};
    m_framePositions.clear();
}

bool NuFbxExporter::useThisFrame(int frame) {
    const FrameUse use = m_timing.select(frame, hostPose(frame));
    m_counts.offered(use);
    return use == FrameUse::Used;
}

std::optional<NuFbxExporter::KeyedFrame> NuFbxExporter::prepareFrame(int frame) {
    // Once keys went missing, later frames cannot make the file whole.
    if (m_keying) m_keying->rethrowFailure();
    // The first frame fixes the start of the keys, whether or not its pose is usable.
    const FbxTime time = m_timing.next(frame, hostPose(frame));
    const ZavoPoseObject& pose = framePose(frame);
    if (!readUsablePose(pose, m_framePositions)) {
        m_counts.unusable();
        m_lastError = tr("Received invalid pose data");
        return std::nullopt;
    }
    if (frame == m_timing.firstFrame()) m_animationStart = time;
    m_animationStop = time;
    m_counts.keyed(time);
    return KeyedFrame{time, pose, m_framePositions};
}
