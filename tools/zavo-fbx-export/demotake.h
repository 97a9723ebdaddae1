#pragma once

#include "take.h"

// Size of the generated demo take.
struct DemoTakeOptions {
    int frames = 600;
    double frameRate = 60.0;
    bool fingers = true;
    int props = 1;  // 0 to 4: right hand, left hand, head, pelvis
};

// A person walking a circle and waving with the left hand, a prop in the right hand: all 23
// body segments, optionally finger data, a T-pose (every orientation the identity) as the null
// pose. Each segment keeps a fixed offset in its parent's frame, so the skeleton is rigid and
// a skeleton rebuilt from the null pose reproduces every frame's global positions.
Take makeDemoTake(const DemoTakeOptions& options);

// The same take with each frame's pose computed when the host is asked for it, so that memory
// does not grow with the length of the take.
Take makeComputedDemoTake(const DemoTakeOptions& options);
