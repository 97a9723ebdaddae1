#pragma once

#include <cmath>

// The little vector and rotation algebra that building takes needs: forward kinematics of a
// BVH file or the demo skeleton. Quaternions are Hamilton quaternions, scalar first.
namespace takemath {

struct Vec3 {
    double x = 0.0, y = 0.0, z = 0.0;
};

struct Quat {
    double w = 1.0, x = 0.0, y = 0.0, z = 0.0;
};

inline Vec3 operator+(Vec3 a, Vec3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec3 operator-(Vec3 a, Vec3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec3 operator*(double s, Vec3 v) {
    return {s * v.x, s * v.y, s * v.z};
}

inline Quat operator*(Quat a, Quat b) {
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}

inline Quat conjugate(Quat q) {
    return {q.w, -q.x, -q.y, -q.z};
}

// Rotation by `radians` about the unit vector `axis`.
inline Quat axisAngle(Vec3 axis, double radians) {
    const double s = std::sin(radians / 2.0);
    return {std::cos(radians / 2.0), s * axis.x, s * axis.y, s * axis.z};
}

inline Vec3 rotate(Quat q, Vec3 v) {
    const Quat r = q * Quat{0.0, v.x, v.y, v.z} * conjugate(q);
    return {r.x, r.y, r.z};
}

}  // namespace takemath
