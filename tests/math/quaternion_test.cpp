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

namespace {

Quat4 parts(const NuQuaternion& q) {
    return {q.w, q.x, q.y, q.z};
}

// Largest component difference between two rotations; q and -q are the same rotation.
double rotationDistance(const NuQuaternion& a, const NuQuaternion& b) {
    double same = 0, opposite = 0;
    for (int i = 0; i < 4; ++i) {
        same = std::max(same, std::abs(a[i] - b[i]));
        opposite = std::max(opposite, std::abs(a[i] + b[i]));
    }
    return std::min(same, opposite);
}

// Rz(yaw) Ry(pitch) Rx(roll) from (roll, pitch, yaw) in degrees: roll is applied first.
Quaternion fromEuler(const double* degrees) {
    Quaternion rx, ry, rz;
    rx.setRotateX(degrees[0] * std::numbers::pi / 180);
    ry.setRotateY(degrees[1] * std::numbers::pi / 180);
    rz.setRotateZ(degrees[2] * std::numbers::pi / 180);
    ry.setQuatMulQuat(ry, rx);
    rz.setQuatMulQuat(rz, ry);
    return rz;
}

Vector euler(const Quaternion& q) {
    Vector out{0, 0, 0, 7};
    q.toEuler(out);
    EXPECT_EQ(out[3], 7);  // only the first three elements are written
    return out;
}

}  // namespace

TEST(Quaternion, ConstructorsAndSetters) {
    const double n = std::sqrt(30.0);
    EXPECT_EQ(parts(Quaternion(1, 2, 3, 4)), (Quat4{1, 2, 3, 4}));
    EXPECT_EQ(parts(Quaternion(1, 2, 3, 4, false)), (Quat4{1, 2, 3, 4}));
    EXPECT_EQ(parts(Quaternion(1, 2, 3, 4, true)), (Quat4{1 / n, 2 / n, 3 / n, 4 / n}));
    EXPECT_EQ(parts(Quaternion(0, 0, 0, 0, true)), (Quat4{0, 0, 0, 0}));
    Quaternion q(NuQuaternion{5, 6, 7, 8});
    q.setInverseOf(q);  // the conjugate, not divided by the squared norm
    EXPECT_EQ(parts(q), (Quat4{5, -6, -7, -8}));
    q.setIdentity();
    EXPECT_EQ(parts(q), (Quat4{1, 0, 0, 0}));
    EXPECT_EQ(parts(Quaternion()), parts(q));
    q.setRotateZ(std::numbers::pi);
    EXPECT_EQ(parts(q), (Quat4{std::cos(std::numbers::pi / 2), 0, 0, 1}));  // w is 6.1e-17
}

TEST(Quaternion, HamiltonProductAlsoIntoEitherFactor) {
    const struct {
        Quat4 a, b, product;
    } cases[] = {{{0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}},  // i j = k, j i = -k
                 {{0, 0, 1, 0}, {0, 1, 0, 0}, {0, 0, 0, -1}},
                 {{1, 2, 3, 4}, {5, 6, 7, 8}, {-60, 12, 30, 24}},
                 {{1, 2, 3, 4}, {1, -2, -3, -4}, {30, 0, 0, 0}}};
    for (const auto& t : cases) {
        Quaternion a(t.a[0], t.a[1], t.a[2], t.a[3]), b(t.b[0], t.b[1], t.b[2], t.b[3]), r;
        r.setQuatMulQuat(a, b);
        const Quaternion b0 = b;
        b.setQuatMulQuat(a, b);
        a.setQuatMulQuat(a, b0);
        for (const Quaternion* q : {&r, &a, &b})
            EXPECT_EQ(parts(*q), t.product)
                << testing::PrintToString(t.a) << " * " << testing::PrintToString(t.b);
    }
}

TEST(QuaternionToEuler, RebuildsEveryRotationOverAGridAndRandomSamples) {
    double worstRotation = 0, worstAngle = 0;
    auto check = [&](const Quaternion& q, const double* angles) {
        const Vector e = euler(q);
        ASSERT_TRUE(std::abs(e[0]) <= 180 && std::abs(e[1]) <= 90 && std::abs(e[2]) <= 180);
        worstRotation = std::max(worstRotation, rotationDistance(q, fromEuler(e.data())));
        for (int i = 0; angles && i < 3; ++i) {
            const double d = std::fmod(std::abs(e[i] - angles[i]), 360.0);
            worstAngle = std::max(worstAngle, std::min(d, 360 - d));
        }
    };
    for (double roll = -180; roll <= 180; roll += 15)
        for (double pitch : {-89.9, -89.0, -75.0, -45.0, -15.0, 0.0, 30.0, 60.0, 89.0, 89.9})
            for (double yaw = -180; yaw <= 180; yaw += 15) {
                const double angles[] = {roll, pitch, yaw};
                check(fromEuler(angles), angles);
            }
    std::mt19937 random(20260430);
    std::uniform_real_distribution<double> turn(-180, 180), tilt(-89.5, 89.5);
    std::normal_distribution<double> gauss;
    for (int i = 0; i < 10000; ++i) {
        const double angles[] = {turn(random), tilt(random), turn(random)};
        check(fromEuler(angles), angles);
        check(Quaternion(gauss(random), gauss(random), gauss(random), gauss(random), true),
              nullptr);
    }
    EXPECT_LT(worstRotation, 1e-12);
    EXPECT_LT(worstAngle, 1e-9);
}

TEST(QuaternionToEuler, PitchAtAndBeyondTheQuarterTurnAndInputOffTheUnitSphere) {
    const double c = std::cos(std::numbers::pi / 4), s = std::sin(std::numbers::pi / 4);
    EXPECT_NEAR(euler({c, 0, s, 0})[1], 90, 1e-6);  // asin near 1 keeps half the digits
    const double asStored = std::atan2(2, 1) * 180 / std::numbers::pi;  // not normalised first
    EXPECT_NEAR(euler({1, 1, 0, 0})[0], asStored, 1e-12);
    EXPECT_NEAR(euler({1, 0, 0, 1})[2], asStored, 1e-12);
    const double longer = 1 + 1e-9;  // the sine of the pitch leaves [-1, 1]
    EXPECT_EQ(euler({c * longer, 0, s * longer, 0})[1], 90);
    EXPECT_EQ(euler({c * longer, 0, -s * longer, 0})[1], -90);
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
