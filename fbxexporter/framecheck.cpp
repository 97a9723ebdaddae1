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

bool NuFbxExporter::isUsablePose(const ZavoPoseObject& pose) const {
    PoseReading reading;
    return readUsablePose(pose, reading);
}

bool NuFbxExporter::readUsablePose(const ZavoPoseObject& pose, PoseReading& reading) const {
    if (!pose.isValid() || pose.segmentStateCount() <= 0) return false;
    // Finger joints always have a position; objects of a take without a body may lack one.
    const bool objects = !m_host.hasBody();
    const double scale = m_settings.outputScale;
    return reading.readWhile(
        pose, [objects, scale](const NuVector& position, const NuQuaternion& q, bool finger) {
            return isUsablePosition(position, scale, objects && !finger) &&
                   isUsableOrientation(q.w, q.x, q.y, q.z);
        });
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
    m_frameReading = {};
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
    if (!readUsablePose(pose, m_frameReading)) {
        m_counts.unusable();
        m_lastError = tr("Received invalid pose data");
        return std::nullopt;
    }
    if (frame == m_timing.firstFrame()) m_animationStart = time;
    m_animationStop = time;
    m_counts.keyed(time);
    return KeyedFrame{time, pose, m_frameReading};
}
