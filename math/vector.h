#pragma once

#include "nutypes/nuvector.h"

namespace nuvia {

// A NuVector with the library's in-place operations; it adds no data.
class Vector : public NuVector {
public:
    using NuVector::NuVector;
    using NuVector::operator=;
    Vector() = default;
    Vector(const NuVector& other) : NuVector(other) {}

    // this[i] = a[i] - b[i] for every element of this vector. Neither size is checked and this
    // vector is never resized: a and b must hold at least size() elements.
    void setVecSubVec(const NuVector& a, const NuVector& b);
    // Copies size() doubles from p. Does nothing when this vector is empty or p is null.
    Vector& operator=(const double* p);
};

// A three-element vector stored inside the object; it adds no data to NuVector3.
class Vector3 : public NuVector3 {
public:
    Vector3() = default;  // (0, 0, 0)
    Vector3(double x, double y, double z) : NuVector3(x, y, z) {}
    // Copies the three elements of source. Throws NuException "Vector3 Source vector too small"
    // or "Vector3 Source vector too large" when source does not hold exactly three.
    Vector3(const NuVector& source);

    // this[i] = a[i] - b[i] for i = 0, 1, 2; a and b must hold at least three elements.
    void setVecSubVec(const NuVector& a, const NuVector& b);
};

}  // namespace nuvia
