#include "math/quaternion.h"

#include <cmath>
#include <numbers>

#include "math/matherror.h"

namespace nuvia {

namespace {

constexpr double DegreesPerRadian = 57.29577951308232;

// asin that saturates instead of returning NaN: a quaternion a little longer than one (or a
// NaN) must still give a valid pitch.
double asinClamped(double v) {
    if (!(v < 1.0)) return std::numbers::pi / 2;
    if (v > -1.0) return std::asin(v);
    return -std::numbers::pi / 2;
}

}  // namespace

Quaternion::Quaternion(double qw, double qx, double qy, double qz, bool normalize)
    : NuQuaternion{qw, qx, qy, qz} {
    if (!normalize) return;
    const double norm = std::sqrt(w * w + x * x + y * y + z * z);
    if (norm == 0.0) return;
    w /= norm;
    x /= norm;
    y /= norm;
    z /= norm;
}

void Quaternion::setIdentity() {
    *this = Quaternion();
}

void Quaternion::setInverseOf(const NuQuaternion& q) {
    *this = Quaternion(q.w, -q.x, -q.y, -q.z);
}

void Quaternion::setQuatMulQuat(const NuQuaternion& a, const NuQuaternion& b) {
    *this = Quaternion(a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
                       a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
                       a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
                       a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w);
}

void Quaternion::setRotateX(double radians) {
    *this = Quaternion(std::cos(radians / 2), std::sin(radians / 2), 0.0, 0.0);
}

void Quaternion::setRotateY(double radians) {
    *this = Quaternion(std::cos(radians / 2), 0.0, std::sin(radians / 2), 0.0);
}

void Quaternion::setRotateZ(double radians) {
    *this = Quaternion(std::cos(radians / 2), 0.0, 0.0, std::sin(radians / 2));
}

void Quaternion::toEuler(NuVector& out) const {
    if (out.size() < 3) throwMathError("toEuler", "Target vector too small");
    out[0] = DegreesPerRadian * std::atan2(2 * (y * z + w * x), 2 * (w * w + z * z) - 1);
    out[1] = -DegreesPerRadian * asinClamped(2 * (x * z - w * y));
    out[2] = DegreesPerRadian * std::atan2(2 * (x * y + w * z), 2 * (w * w + x * x) - 1);
}

}  // namespace nuvia
