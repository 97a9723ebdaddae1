#include "math/vector.h"

#include <algorithm>
#include <cstring>

#include "math/matherror.h"

namespace nuvia {

namespace {

void subtract(NuVector& out, const NuVector& a, const NuVector& b) {
    for (size_t i = 0; i < out.size(); ++i) out[i] = a[i] - b[i];
}

}  // namespace

void Vector::setVecSubVec(const NuVector& a, const NuVector& b) {
    subtract(*this, a, b);
}

Vector& Vector::operator=(const double* p) {
    // memmove: p may point into this vector's own elements.
    if (m_count != 0 && m_data && p) std::memmove(m_data, p, m_count * sizeof(double));
    return *this;
}

Vector3::Vector3(const NuVector& source) {
    if (source.size() < 3) throwMathError("Vector3", "Source vector too small");
    if (source.size() > 3) throwMathError("Vector3", "Source vector too large");
    std::copy_n(source.data(), 3, data());
}

void Vector3::setVecSubVec(const NuVector& a, const NuVector& b) {
    subtract(*this, a, b);
}

}  // namespace nuvia
