#pragma once

#include <cstdint>

#include <zavo/zavoposeobject.h>

#include "fbx/scene/fbxtime.h"

struct RunSettings;

// What frame selection makes of a frame handed to the run.
enum class FrameUse {
    Used,     // exported: a key is due
    Skipped,  // left out by the frame skip, or recorded before the recording started
    Lost,     // a key was due, but the host has no pose for the frame
};

// Which host frames a run exports and when their keys lie. Fixed at the run's start from its
// settings, the host's frame rate and the recording start; the first frame used fixes where
// the keys begin. Frames arrive in increasing order.
class KeyTiming {
public:
    KeyTiming() = default;
    // `recordStart` is the recording's start in milliseconds since 1970.
    KeyTiming(const RunSettings& settings, double hostRate, int64_t recordStart);

    // The file's frame rate, one key per exported frame, and its time mode: a standard mode
    // where one matches, else the custom mode at that rate.
    double exportRate() const { return m_exportRate; }
    FbxTime::EMode timeMode() const { return m_timeMode; }
    // The first frame used, or -1 before any.
    int32_t firstFrame() const { return m_firstFrame; }

    // Whether host frame `frame`, whose host pose is `pose`, is exported: not before the
    // recording started, and one frame in (frame skip + 1) counted from the first one used,
    // which the first call that uses a frame fixes.
    FrameUse select(int frame, const ZavoPoseObject& pose);
    // The key time of used frame `frame`, whose host pose is `pose`. The first frame's call fixes
    // the time of day the keys start at.
    FbxTime next(int frame, const ZavoPoseObject& pose);

private:
    bool isDue(int frame) const;
    // Fixes the time of day of the first key from its time `t` in milliseconds.
    void fixStart(int64_t t);

    double m_hostRate = 0.0;
    double m_exportRate = 0.0;
    FbxTime::EMode m_timeMode = FbxTime::eDefaultMode;
    int64_t m_recordStart = 0;  // milliseconds since 1970
    int64_t m_startOffset = 0;  // milliseconds since 1970, or 0 when keys start at zero
    int32_t m_frameSkip = 0;
    bool m_useCalibrationPose = true;
    bool m_dynamic = true;
    bool m_startAtZero = false;
    int32_t m_firstFrame = -1;
    int32_t m_firstFrameTime = 0;  // milliseconds
    // Time of day of the first key, which Fixed increments count frames from.
    int32_t m_startHours = 0;
    int32_t m_startMinutes = 0;
    int32_t m_startSeconds = 0;
    int32_t m_startFrames = 0;
};
