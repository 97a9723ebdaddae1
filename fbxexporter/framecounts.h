#pragma once

#include <QCoreApplication>
#include <QString>
#include <unordered_set>
#include <vector>

#include "fbx/scene/fbxtime.h"
#include "keytiming.h"

// Frame counts of one export run, for what the run tells the host after the save.
class FrameCounts {
    Q_DECLARE_TR_FUNCTIONS(FrameCounts)

public:
    // A frame handed to the run, by what frame selection made of it.
    void offered(FrameUse use);
    // A used frame without a usable pose.
    void unusable() { ++m_invalid; }
    // A frame keyed at `time`.
    void keyed(FbxTime time);

    // Why the run keyed nothing, or empty when it keyed a frame.
    QString nothingKeyed() const;
    // Frames that left no key of their own: frames without a usable pose, frames at the time of
    // an earlier one. Empty when every frame keyed.
    QString lostFramesWarning() const;

private:
    int m_offered = 0;    // handed to exportFrame
    int m_used = 0;       // exported by frame selection
    int m_invalid = 0;    // used, but with an unusable pose
    int m_keyed = 0;      // keyed
    int m_colliding = 0;  // keyed at the time of an earlier keyed frame
    int m_poseless = 0;   // due for a key, but without a pose
    // Key times so far: those later than every earlier one in order, the others hashed. Keys
    // are mostly taken in time order, which makes the first list the long one.
    std::vector<FbxLongLong> m_risingKeyTimes;
    std::unordered_set<FbxLongLong> m_otherKeyTimes;
};
