#include "keytiming.h"

#include "exportsettings.h"

namespace {

constexpr int64_t MillisecondsPerDay = 86400000;
constexpr double TimeModePrecision = 1e-8;

}  // namespace

KeyTiming::KeyTiming(const RunSettings& settings, double hostRate, int64_t recordStart)
    : m_hostRate(hostRate),
      // One key per exported frame: the scene plays at the host's rate divided by the skip. A
      // rate without a standard mode is the run's own custom rate, whatever it is.
      m_exportRate(hostRate / (settings.frameSkip + 1.0)),
      m_timeMode(FbxTime::ConvertFrameRateToTimeMode(m_exportRate, TimeModePrecision)),
      m_recordStart(recordStart),
      m_startOffset(settings.startAtZero ? 0 : recordStart),
      m_frameSkip(settings.frameSkip),
      m_useCalibrationPose(settings.useCalibrationPose),
      m_dynamic(settings.dynamic),
      m_startAtZero(settings.startAtZero) {
    if (m_timeMode == FbxTime::eDefaultMode) m_timeMode = FbxTime::eCustom;
}

bool KeyTiming::isDue(int frame) const {
    return m_firstFrame == -1 || (int64_t{frame} - m_firstFrame) % (int64_t{m_frameSkip} + 1) == 0;
}

FrameUse KeyTiming::select(int frame, const ZavoPoseObject& pose) {
    // A frame without a pose counts as recorded in 1970, before any recording. Unlike a frame
    // truly recorded before the start, it is one the user expects in the file, so it is lost
    // when it falls where a key was due.
    if (m_recordStart > pose.absoluteTime()) {
        return !pose.isValid() && isDue(frame) ? FrameUse::Lost : FrameUse::Skipped;
    }
    if (m_firstFrame == -1) {
        if (frame >= 0) m_firstFrame = frame;
        return FrameUse::Used;
    }
    return isDue(frame) ? FrameUse::Used : FrameUse::Skipped;
}

FbxTime KeyTiming::next(int frame, const ZavoPoseObject& pose) {
    const bool firstFrame = frame == m_firstFrame;
    const int32_t frameTime = pose.frameTime();
    // With the calibration pose the first key is the start; without it, times count from the
    // recording's start, so the first key lies at its own frame time.
    int64_t relative = int64_t{frameTime} - m_firstFrameTime;
    if (m_useCalibrationPose && firstFrame) {
        m_firstFrameTime = frameTime;
        relative = 0;
    }
    if (firstFrame) fixStart(relative + m_startOffset);
    if (!m_startAtZero) relative -= pose.poseOffset().second;

    FbxTime time;
    if (m_dynamic) {
        // Time of day: wraps at midnight.
        time.SetMilliSeconds((relative + m_startOffset) % MillisecondsPerDay);
    } else {
        // Every exported frame advances exactly one frame of the export rate.
        const int64_t exported = (int64_t{frame} - m_firstFrame) / (int64_t{m_frameSkip} + 1);
        time.SetTime(m_startHours, m_startMinutes, m_startSeconds,
                     static_cast<int>(exported + m_startFrames), 0, m_timeMode, m_exportRate);
    }
    return time;
}

void KeyTiming::fixStart(int64_t t) {
    m_startHours = static_cast<int32_t>((t / 3600000) % 24);
    m_startMinutes = static_cast<int32_t>((t / 60000) % 60);
    m_startSeconds = static_cast<int32_t>((t / 1000) % 60);
    const auto subsecond = static_cast<double>(t - 1000 * (t / 1000));
    m_startFrames = static_cast<int32_t>(m_hostRate * subsecond) / 1000;
}
