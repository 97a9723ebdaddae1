#pragma once

#include "math/quaternion.h"
#include "math/vector.h"

// The host measures with Z up, FBX scenes with Y up: host axes 1, 2, 0 are FBX X, Y, Z. The
// swap is a cyclic permutation, so it applies alike to positions and to the vector part of
// orientations and keeps rotations proper.

// `v` holds at least three elements.
inline nuvia::Vector3 toFbxAxes(const NuVector& v) {
    return nuvia::Vector3(v[1], v[2], v[0]);
}

inline nuvia::Quaternion toFbxAxes(const NuQuaternion& q) {
    return nuvia::Quaternion(q.w, q.y, q.z, q.x);
}
