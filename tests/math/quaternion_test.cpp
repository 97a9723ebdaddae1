#include "math/quaternion.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "math/matherror.h"
#include "math/vector.h"
#include "nutypes/nuexception.h"

using namespace nuvia;
using Quat4 = std::array<double, 4>;
using Angles = std::array<double, 3>;

namespace {

Quat4 parts(const NuQuaternion& q) {
    return {q.w, q.x, q.y, q.z};
}

// Rz(yaw) Ry(pitch) Rx(roll) from (roll, pitch, yaw) in degrees: roll is applied first.
Quaternion fromEuler(const Angles& degrees) {
    Quaternion x, y, z;
    x.setRotateX(degrees[0] * std::numbers::pi / 180);
    y.setRotateY(degrees[1] * std::numbers::pi / 180);
    z.setRotateZ(degrees[2] * std::numbers::pi / 180);
    y.setQuatMulQuat(y, x);
    z.setQuatMulQuat(z, y);
    return z;
}

Angles euler(const Quaternion& q) {
    Vector out{0, 0, 0, 7};
    q.toEuler(out);
    EXPECT_EQ(out[3], 7);  // only the first three elements are written
    return {out[0], out[1], out[2]};
}

}  // namespace

TEST(Quaternion, NormalizesConjugatesTurnsAndMultipliesAlsoIntoEitherFactor) {
    const double n = std::sqrt(30.0);
    EXPECT_EQ(parts(Quaternion(1, 2, 3, 4, true)), (Quat4{1 / n, 2 / n, 3 / n, 4 / n}));
    EXPECT_EQ(parts(Quaternion(0, 0, 0, 0, true)), (Quat4{0, 0, 0, 0}));
    Quaternion a(1, 2, 3, 4), b(5, 6, 7, 8), r;
    r.setInverseOf(b);  // the conjugate, not divided by the squared norm
    EXPECT_EQ(parts(r), (Quat4{5, -6, -7, -8}));
    r.setRotateZ(std::numbers::pi);
    EXPECT_EQ(parts(r), (Quat4{std::cos(std::numbers::pi / 2), 0, 0, 1}));  // w is 6.1e-17
    r.setQuatMulQuat(a, b);
    const Quaternion b0 = b;
    b.setQuatMulQuat(a, b);
    a.setQuatMulQuat(a, b0);
    for (const Quaternion* q : {&r, &a, &b}) EXPECT_EQ(parts(*q), (Quat4{-60, 12, 30, 24}));
    r.setQuatMulQuat(Quaternion(0, 0, 1, 0), Quaternion(0, 1, 0, 0));
    EXPECT_EQ(parts(r), (Quat4{0, 0, 0, -1}));  // j i = -k
}

TEST(QuaternionToEuler, RecoversTheAnglesOverAGridAndRandomSamples) {
    double worst = 0;
    const auto check = [&worst](const Angles& angles) {
        const Angles e = euler(fromEuler(angles));
        for (int i = 0; i < 3; ++i) {
            const double d = std::fmod(std::abs(e[i] - angles[i]), 360.0);
            worst = std::max(worst, std::min(d, 360 - d));
        }
    };
    for (double roll = -180; roll <= 180; roll += 15)
        for (double pitch : {-89.9, -89.0, -75.0, -45.0, -15.0, 0.0, 30.0, 60.0, 89.0, 89.9})
            for (double yaw = -180; yaw <= 180; yaw += 15) check({roll, pitch, yaw});
    std::mt19937 random(20260430);
    std::uniform_real_distribution<double> turn(-180, 180), tilt(-89.5, 89.5);
    for (int i = 0; i < 10000; ++i) check({turn(random), tilt(random), turn(random)});
    EXPECT_LT(worst, 1e-9);
}

TEST(QuaternionToEuler, PitchSaturatesAndShortTargetsAreRefused) {
    const double c = std::cos(std::numbers::pi / 4) * (1 + 1e-9);  // sine of the pitch past 1
    EXPECT_EQ(euler({c, 0, c, 0})[1], 90);
    EXPECT_EQ(euler({c, 0, -c, 0})[1], -90);
    EXPECT_EQ(euler({NAN, 0, 0, 0})[1], -90);
    Vector shorter(2);
    try {
        Quaternion().toEuler(shorter);
        ADD_FAILURE() << "no exception";
    } catch (const NuException& e) {
        EXPECT_EQ(e.message(), "toEuler Target vector too small");
        EXPECT_EQ(e.code(), MathMisuseCode);
    }
}
