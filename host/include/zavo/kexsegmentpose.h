#pragma once

#include "nutypes/nuquaternion.h"
#include "nutypes/nuvector.h"

// The global pose of one tracked segment (a finger joint, say): orientation, then position.
struct KexSegmentPose {
    NuQuaternion orientation{1.0, 0.0, 0.0, 0.0};
    NuVector3 position;
};
