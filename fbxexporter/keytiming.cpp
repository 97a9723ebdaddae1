// Which host frames an export run keys, and when.
#include "nufbxexporter.h"

namespace {

constexpr int64_t MillisecondsPerDay = 86400000;

}  // namespace

bool NuFbxExporter::useThisFrame(int frame) {
    ++m_offeredFrames;
    // A frame without a pose counts as recorded in 1970, before any recording. Unlike a frame
    // truly recorded before the start, it is one the user expects in the file, so it is counted
    // as lost when it falls where a key was due.
    const ZavoPoseObject pose = m_host.pose(frame);
    if (m_host.recordStartTime().toMSecsSinceEpoch() > pose.absoluteTime()) {
        const bool due =
            m_firstFrame == -1 || (int64_t{frame} - m_firstFrame) % (int64_t{m_frameSkip} + 1) == 0;
        if (!pose.isValid() && due) ++m_poselessFrames;
        return false;
    }
    if (m_firstFrame == -1) {
        if (frame >= 0) m_firstFrame = frame;
        ++m_usedFrames;
        return true;
    }
    const bool used = (int64_t{frame} - m_firstFrame) % (int64_t{m_frameSkip} + 1) == 0;
    if (used) ++m_usedFrames;
    return used;
}

void NuFbxExporter::setKeyTime(int frame) {
    const bool firstFrame = frame == m_firstFrame;
    const bool calibrationFrame = m_useCalibrationPose && firstFrame;
    const ZavoPoseObject pose = m_host.pose(frame);
    const int32_t frameTime = pose.frameTime();
    const int32_t poseOffset = pose.poseOffset().second;

    // With the calibration pose the first key is the start; without it, times count from the
    // recording's start, so the first key lies at its own frame time.
    int64_t relative = int64_t{frameTime} - m_firstFrameTime;
    if (calibrationFrame) {
        m_firstFrameTime = frameTime;
        relative = 0;
    }
    if (firstFrame) {
        m_timeSet = true;
        const int64_t t = relative + m_startOffset;
        m_startHours = static_cast<int32_t>((t / 3600000) % 24);
        m_startMinutes = static_cast<int32_t>((t / 60000) % 60);
        m_startSeconds = static_cast<int32_t>((t / 1000) % 60);
        const auto subsecond = static_cast<double>(t - 1000 * (t / 1000));
        m_startFrames = static_cast<int32_t>(m_host.frameRate() * subsecond) / 1000;
    }
    if (!m_startAtZero) relative -= poseOffset;

    if (!isUsablePose(framePose(frame))) {
        m_lastError = tr("Received invalid pose data");
        return;
    }

    if (m_dynamic) {
        // Time of day: wraps at midnight.
        m_keyTime.SetMilliSeconds((relative + m_startOffset) % MillisecondsPerDay);
    } else if (m_timeMode != FbxTime::eDefaultMode) {
        // Every exported frame advances exactly one frame of the export rate.
        const int64_t exported = (int64_t{frame} - m_firstFrame) / (int64_t{m_frameSkip} + 1);
        m_keyTime.SetTime(m_startHours, m_startMinutes, m_startSeconds,
                          static_cast<int>(exported + m_startFrames), 0, m_timeMode, m_exportRate);
    } else {
        const auto rate = static_cast<uint64_t>(m_host.frameRate());
        const uint64_t elapsed =
            rate == 0 ? 0 : static_cast<uint64_t>((int64_t{frame} - m_firstFrame) * 1000) / rate;
        m_keyTime.SetMilliSeconds(
            static_cast<int64_t>((m_startOffset + elapsed) % MillisecondsPerDay));
    }

    if (firstFrame) m_animationStart = m_keyTime;
    m_animationStop = m_keyTime;
}
