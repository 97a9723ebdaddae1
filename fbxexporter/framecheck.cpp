// Which poses an export run keys, and what it says when it has nothing to key.
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
    if (!pose.isValid() || pose.segmentStateCount() <= 0) return false;
    const bool objects = !m_host.hasBody();
    for (int i = 0; i < pose.segmentStateCount(); ++i) {
        const NuQuaternion q = pose.q_gb(i, PoseBase_Global);
        if (!isUsablePosition(pose.pos_g(i), m_outputScale, objects) ||
            !isUsableOrientation(q.w, q.x, q.y, q.z)) {
            return false;
        }
    }
    if (!pose.hasFingerTrackingData()) return true;
    for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
        for (int k = 0; k < 20; ++k) {
            const KexSegmentPose f = pose.fingerTrackingData(hand, k);
            const NuQuaternion& q = f.orientation;
            if (!isUsablePosition(f.position, m_outputScale, false) ||
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

bool NuFbxExporter::prepareFrame(int frame, ZavoPoseObject& pose) {
    setKeyTime(frame);
    pose = framePose(frame);
    if (!isUsablePose(pose)) {
        ++m_invalidFrames;
        m_lastError = tr("Received invalid pose data");
        return false;
    }
    ++m_keyedFrames;
    // A key at an earlier frame's time replaces that frame's key.
    if (!m_keyTimes.insert(m_keyTime.Get()).second) ++m_collidingFrames;
    return true;
}

QString NuFbxExporter::nothingToExport() const {
    if (m_segmentNodeNames.empty()) {
        return tr("Nothing to export: no frame of the take has a usable pose (valid, finite, "
                  "and within range at output scale %1)")
            .arg(m_outputScale);
    }
    if (m_keyedFrames > 0) return {};
    if (m_offeredFrames == 0) return tr("Nothing to export: the take has no frame");
    if (m_usedFrames == 0) {
        return tr(
            "Nothing to export: no frame of the take has a key (every frame lies before "
            "the recording start)");
    }
    return tr(
        "Nothing to export: no frame of the take has a key (every exported frame has an "
        "invalid pose)");
}

QString NuFbxExporter::lostFramesWarning() const {
    QStringList sentences;
    const int leftOut = m_poselessFrames + m_invalidFrames;
    if (leftOut > 0) {
        sentences << tr("%1 of %2 frames have no usable pose and were left out")
                         .arg(leftOut)
                         .arg(m_usedFrames + m_poselessFrames);
    }
    if (m_collidingFrames > 0) {
        sentences << tr("%1 of %2 frames share a key time with an earlier frame; the file keeps "
                        "the last of each")
                         .arg(m_collidingFrames)
                         .arg(m_keyedFrames);
    }
    return sentences.join(QStringLiteral("; "));
}
