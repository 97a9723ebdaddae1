#pragma once

#include <cstdint>
#include <utility>

#include "nutypes/nuquaternion.h"
#include "nutypes/nutimestamp.h"
#include "nutypes/nuvector.h"
#include "zavo/kexsegmentpose.h"
#include "zavo/nuhandid.h"
#include "zavo/posebase.h"
#include "zavo/zavoexport.h"

// The host's pose of one frame: global positions and orientations of the body segments
// (0 to 22) and props (23 to 26), finger-tracking data of both hands, and timing.
// Implemented by the host; a plug-in reads it through ZavoPoseObject.
class ZAVO_HOST_EXPORT ZavoPose {
public:
    virtual ~ZavoPose();

    // A deep copy, owned by the caller.
    virtual ZavoPose* clone() const = 0;

    virtual bool isValid() const = 0;
    virtual int segmentStateCount() const = 0;
    // Global position of a segment, in metres; an empty vector for an unknown segment.
    virtual NuVector pos_g(int segment) const = 0;
    // Orientation of a segment relative to `base`, scalar first.
    virtual NuQuaternion q_gb(int segment, PoseBase base) const = 0;
    // Host corrections in milliseconds; the second value shifts the pose in time.
    virtual std::pair<int32_t, int32_t> poseOffset() const = 0;
    // Milliseconds since the recording started.
    virtual int32_t frameTime() const = 0;
    // Milliseconds since 1970.
    virtual NuTimeStamp absoluteTime() const = 0;
    virtual bool hasFingerTrackingData() const = 0;
    // Finger joint `index` (0 to 19) of `hand`.
    virtual KexSegmentPose fingerTrackingData(NuHandId hand, int index) const = 0;
};
