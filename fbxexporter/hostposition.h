#pragma once

#include "math/vector.h"

// The first three elements of a host position. A shorter one fails as the checked conversion
// does (NuException "Vector3 Source vector too small") instead of being read past its end.
inline nuvia::Vector3 firstThree(const NuVector& position) {
    if (position.size() < 3) return nuvia::Vector3(position);
    return nuvia::Vector3(position[0], position[1], position[2]);
}
