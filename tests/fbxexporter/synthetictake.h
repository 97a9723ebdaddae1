#pragma once

#include "fakehost.h"

struct TakeShape {
    int frames = 12;
    double rate = 60.0;
    bool fingers = false;  // finger data on every pose, finger names on the host
    int props = 0;         // 0 to 4, held by segments 10, 14, 6 and 0 through joints
};

// Fills `host` with a rigid take: the null pose is a T-pose with identity orientations (pelvis
// 0.95 m high), and in every frame each segment, finger joint and prop keeps its T-pose offset
// in its parent's frame while the joints turn and the pelvis walks. Host segment names differ
// from the exported ones; frame times are whole milliseconds from the record start.
void loadRigidTake(FakeHost& host, const TakeShape& shape);
