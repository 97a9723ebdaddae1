#pragma once

// The frame a segment orientation is expressed in.
enum PoseBase : int {
    PoseBase_Global = 0,  // segment to world
    PoseBase_Parent = 1,  // segment to its parent segment
};
