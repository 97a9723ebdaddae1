#include "fbx/scene/fbxanimcurvefilterunroll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix AxisRotation(int axis, double degrees) {
    const double r = degrees * std::numbers::pi / 180.0;
    const int u = (axis + 1) % 3;
    const int v = (axis + 2) % 3;
    Matrix m{};
    m[axis][axis] = 1.0;
    m[u][u] = std::cos(r);
    m[u][v] = -std::sin(r);
    m[v][u] = std::sin(r);
    m[v][v] = std::cos(r);
    return m;
}

Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            for (int k = 0; k < 3; ++k) {
                m[r][c] += a[r][k] * b[k][c];
            }
        }
    }
    return m;
}

// The rotation an Euler triple stands for, the order's first axis applied first.
Matrix Rotation(const FbxDouble3& angles, FbxEuler::EOrder order) {
    int a = 0, b = 1, c = 2;
    FbxEuler::GetAxes(order, a, b, c);
    return Multiply(AxisRotation(c, angles[c]),
                    Multiply(AxisRotation(b, angles[b]), AxisRotation(a, angles[a])));
}

double MatrixDistance(const Matrix& x, const Matrix& y) {
    double worst = 0.0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            worst = std::max(worst, std::abs(x[r][c] - y[r][c]));
        }
    }
    return worst;
}

double Distance(const FbxDouble3& a, const FbxDouble3& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

constexpr FbxEuler::EOrder kOrders[] = {FbxEuler::eOrderXYZ, FbxEuler::eOrderXZY,
                                        FbxEuler::eOrderYZX, FbxEuler::eOrderYXZ,
                                        FbxEuler::eOrderZXY, FbxEuler::eOrderZYX};

// Seeded random triples and references: the answer is the same rotation, and
// no farther from the reference than the input moved by whole turns.
TEST(FbxUnrollV2VRefTest, KeepsTheRotationAndComesClosest) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angle(-400.0, 400.0);
    for (FbxEuler::EOrder order : kOrders) {
        double worstRotation = 0.0;
        double worstExcess = 0.0;
        for (int i = 0; i < 2000; ++i) {
            const FbxDouble3 in(angle(random), angle(random), angle(random));
            const FbxDouble3 ref(angle(random), angle(random), angle(random));
            FbxDouble3 out;
            FbxAnimCurveFilterUnroll::V2VRef(out, in, ref, order);
            worstRotation =
                std::max(worstRotation, MatrixDistance(Rotation(in, order), Rotation(out, order)));
            FbxDouble3 turned;
            for (int k = 0; k < 3; ++k) {
                turned[k] = in[k] + 360.0 * std::round((ref[k] - in[k]) / 360.0);
            }
            worstExcess = std::max(worstExcess, Distance(out, ref) - Distance(turned, ref));
        }
        EXPECT_LT(worstRotation, 1e-9) << "order " << order;
        EXPECT_LE(worstExcess, 1e-9) << "order " << order;
    }
}

TEST(FbxUnrollV2VRefTest, FlipsAndPlainCases) {
    FbxDouble3 out;
    EXPECT_FALSE(FbxAnimCurveFilterUnroll::V2VRef(out, FbxDouble3(-170, 0, 0),
                                                  FbxDouble3(170, 0, 0), FbxEuler::eOrderXYZ));
    EXPECT_EQ(out, FbxDouble3(190, 0, 0));
    EXPECT_FALSE(FbxAnimCurveFilterUnroll::V2VRef(out, FbxDouble3(0, 100, 0), FbxDouble3(0, 80, 0),
                                                  FbxEuler::eOrderXYZ));
    EXPECT_EQ(out, FbxDouble3(0, 100, 0));
    // (180, 10, 180) is (0, 170, 0): the flipped form is next to the reference.
    EXPECT_TRUE(FbxAnimCurveFilterUnroll::V2VRef(out, FbxDouble3(180, 10, 180),
                                                 FbxDouble3(0, 160, 0), FbxEuler::eOrderXYZ));
    EXPECT_NEAR(Distance(out, FbxDouble3(0, 170, 0)), 0.0, 1e-9);
    // Equally far: the flipped form wins.
    EXPECT_TRUE(FbxAnimCurveFilterUnroll::V2VRef(out, FbxDouble3(-90, 30, -90),
                                                 FbxDouble3(0, 90, 0), FbxEuler::eOrderXYZ));
    EXPECT_EQ(out, FbxDouble3(90, 150, 90));
    EXPECT_FALSE(FbxAnimCurveFilterUnroll::V2VRef(out, FbxDouble3(500, 0, 0), FbxDouble3(0, 0, 0),
                                                  FbxEuler::eOrderSphericXYZ));
    EXPECT_EQ(out, FbxDouble3(500, 0, 0));
}

// At a middle angle of 90 or 270 degrees only the sum or the difference of
// the outer angles matters; a reference that splits it differently is the same
// rotation, and the outer angles must move onto it.
TEST(FbxUnrollV2VRefTest, GimbalLockInEveryOrder) {
    for (FbxEuler::EOrder order : kOrders) {
        int a = 0, b = 1, c = 2;
        FbxEuler::GetAxes(order, a, b, c);
        for (double middle : {90.0, 270.0, -90.0}) {
            SCOPED_TRACE(testing::Message() << "order " << order << " middle " << middle);
            FbxDouble3 in;
            in[a] = 40.0;
            in[b] = middle;
            in[c] = -10.0;
            FbxDouble3 ref = in;
            ref[a] -= 30.0;
            ref[c] -= 30.0;
            if (MatrixDistance(Rotation(in, order), Rotation(ref, order)) > 1e-9) {
                ref[c] += 60.0;
            }
            ASSERT_LT(MatrixDistance(Rotation(in, order), Rotation(ref, order)), 1e-9);
            FbxDouble3 out;
            FbxAnimCurveFilterUnroll::V2VRef(out, in, ref, order);
            EXPECT_LT(Distance(out, ref), 1e-9);
        }
    }
}

TEST(FbxUnrollQualityTest, RatioOfRotationToAngleDistance) {
    using F = FbxAnimCurveFilterUnroll;
    EXPECT_DOUBLE_EQ(F::InterpolationQualityFactor(FbxVector4(1, 2, 3, 1), FbxVector4(1, 2, 3, 1)),
                     100.0);
    // A turn about one axis: rotation angle equals the angle distance.
    EXPECT_NEAR(F::InterpolationQualityFactor(FbxVector4(0, 0, 0, 1), FbxVector4(30, 0, 0, 1)), 1.0,
                1e-9);
    // A whole turn in the angles is no rotation at all.
    EXPECT_NEAR(F::InterpolationQualityFactor(FbxVector4(0, 0, 0, 1), FbxVector4(360, 0, 0, 1)),
                0.0, 1e-9);
}

class FbxUnrollTest : public ::testing::Test {
protected:
    void TearDown() override { mManager->Destroy(); }

    void Key(int frame, const FbxDouble3& angles) {
        for (int i = 0; i < 3; ++i) {
            const int key = mCurves[i]->KeyAdd(FbxTime(frame * 1176000LL));
            mCurves[i]->KeySetValue(key, static_cast<float>(angles[i]));
            mCurves[i]->KeySetInterpolation(key, FbxAnimCurveDef::eInterpolationLinear);
        }
    }
    FbxDouble3 At(int index) const {
        return FbxDouble3(mCurves[0]->KeyGetValue(index), mCurves[1]->KeyGetValue(index),
                          mCurves[2]->KeyGetValue(index));
    }

    FbxManager* mManager = FbxManager::Create();
    FbxScene* mScene = FbxScene::Create(mManager, "scene");
    FbxAnimCurve* mCurves[3] = {FbxAnimCurve::Create(mScene, "x"),
                                FbxAnimCurve::Create(mScene, "y"),
                                FbxAnimCurve::Create(mScene, "z")};
    FbxAnimCurveFilterUnroll mFilter;
    FbxStatus mStatus;
};

TEST_F(FbxUnrollTest, FailuresLeaveCurvesUnchanged) {
    EXPECT_FALSE(mFilter.Apply(mCurves, 2, &mStatus));
    EXPECT_EQ(mStatus.GetCode(), FbxStatus::eFailure);
    EXPECT_STREQ(mStatus.GetErrorString(), "Number of animation curves is not 3");
    FbxAnimCurve* partial[3] = {mCurves[0], nullptr, mCurves[2]};
    EXPECT_FALSE(mFilter.Apply(partial, 3, &mStatus));
    EXPECT_STREQ(mStatus.GetErrorString(), "Not enough animation curves found");
    EXPECT_FALSE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_STREQ(mStatus.GetErrorString(), "No keys");
    Key(0, FbxDouble3(0, 0, 0));
    Key(1, FbxDouble3(-170, 0, 0));
    mFilter.SetStartTime(FbxTime(10 * 1176000LL));
    EXPECT_FALSE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_STREQ(mStatus.GetErrorString(), "No key to be filtered");
    EXPECT_FLOAT_EQ(mCurves[0]->KeyGetValue(1), -170.0f);
    EXPECT_EQ(mScene->GetMemberCount<FbxAnimCurve>(), 3);
    mFilter.Reset();
    EXPECT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_FALSE(mStatus.Error());
}

// Angles as a converter gives them: each in (-180, 180], the middle one in
// [-90, 90]. Past 90 degrees about Y this is the flipped form.
FbxDouble3 CanonicalXYZ(const Matrix& m) {
    const double toDegrees = 180.0 / std::numbers::pi;
    return FbxDouble3(std::atan2(m[2][1], m[2][2]) * toDegrees,
                      std::asin(std::clamp(-m[2][0], -1.0, 1.0)) * toDegrees,
                      std::atan2(m[1][0], m[0][0]) * toDegrees);
}

TEST_F(FbxUnrollTest, RemovesFlipsAndWrapsAlongATake) {
    // Two turns about Y with a small tilt, keyed every 10 degrees.
    const int frames = 73;
    for (int i = 0; i < frames; ++i) {
        Key(i, CanonicalXYZ(Rotation(FbxDouble3(5, 10.0 * i, 0), FbxEuler::eOrderXYZ)));
    }
    ASSERT_GT(std::abs(At(10)[0] - At(8)[0]), 90.0);
    mFilter.SetTestForPath(false);
    mFilter.SetQualityTolerance(0.25);
    ASSERT_TRUE(mFilter.NeedApply(mCurves, 3, &mStatus));
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    double worst = 0.0;
    for (int i = 0; i < frames; ++i) {
        worst = std::max(worst, Distance(At(i), FbxDouble3(5, 10.0 * i, 0)));
    }
    EXPECT_LT(worst, 1e-3);
    EXPECT_FALSE(mFilter.NeedApply(mCurves, 3, &mStatus));
    EXPECT_EQ(mScene->GetMemberCount<FbxAnimCurve>(), 3);
    EXPECT_EQ(mCurves[0]->KeyGetFlags(3), 0x2104u);
}

TEST_F(FbxUnrollTest, WrapAroundContinuesPastOneEighty) {
    Key(0, FbxDouble3(170, 0, 0));
    Key(1, FbxDouble3(-170, 0, 0));
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_EQ(At(0), FbxDouble3(170, 0, 0));
    EXPECT_EQ(At(1), FbxDouble3(190, 0, 0));
}

TEST_F(FbxUnrollTest, PathTestStopsAtAPoorKey) {
    Key(0, FbxDouble3(0, 0, 0));
    Key(1, FbxDouble3(0, 0, 0));
    // The same rotation as (0, 0, 0) but far in angle space: poor quality.
    Key(2, FbxDouble3(360 + 1, 0, 0));
    Key(3, FbxDouble3(-170, 0, 0));
    mFilter.SetTestForPath(true);
    mFilter.SetQualityTolerance(0.25);
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_NEAR(At(2)[0], 1.0, 1e-5);
    EXPECT_FLOAT_EQ(At(3)[0], -170.0f);
}

TEST_F(FbxUnrollTest, SynchronisesKeysOfTheThreeCurves) {
    Key(0, FbxDouble3(0, 0, 0));
    Key(2, FbxDouble3(-170, 0, 0));
    const int key = mCurves[0]->KeyAdd(FbxTime(1176000));
    mCurves[0]->KeySetValue(key, 170.0f);
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    for (FbxAnimCurve* curve : mCurves) {
        EXPECT_EQ(curve->KeyGetCount(), 3);
    }
    EXPECT_FLOAT_EQ(At(2)[0], 190.0f);
}

TEST_F(FbxUnrollTest, SpanStartsFromTheKeyBeforeIt) {
    Key(0, FbxDouble3(170, 0, 0));
    Key(1, FbxDouble3(-175, 0, 0));
    Key(2, FbxDouble3(-170, 0, 0));
    mFilter.SetStartTime(FbxTime(1176000));
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_EQ(At(0), FbxDouble3(170, 0, 0));
    EXPECT_EQ(At(1), FbxDouble3(185, 0, 0));
    EXPECT_EQ(At(2), FbxDouble3(190, 0, 0));
}

// Seeded random takes in every order, each key keyed as its flipped form or
// moved by whole turns at random: unrolled, every key is still the take's
// rotation and consecutive keys are no farther apart than the take's steps.
TEST_F(FbxUnrollTest, RandomTakesKeepTheirRotationsAndBecomeContinuous) {
    std::mt19937 random(2024);
    std::uniform_real_distribution<double> step(-8.0, 8.0);
    for (FbxEuler::EOrder order : kOrders) {
        SCOPED_TRACE(testing::Message() << "order " << order);
        int a = 0, b = 1, c = 2;
        FbxEuler::GetAxes(order, a, b, c);
        FbxAnimCurve* curves[3];
        for (FbxAnimCurve*& curve : curves) {
            curve = FbxAnimCurve::Create(mScene, "");
        }
        std::vector<FbxDouble3> take;
        FbxDouble3 angles(20 * step(random), 20 * step(random), 20 * step(random));
        for (int i = 0; i < 300; ++i) {
            FbxDouble3 keyed = angles;
            if (random() % 2) {
                keyed[a] += 180.0, keyed[b] = 180.0 - keyed[b], keyed[c] += 180.0;
            }
            for (int k = 0; k < 3; ++k) {
                keyed[k] += 360.0 * (static_cast<int>(random() % 5) - 2);
                const int key = curves[k]->KeyAdd(FbxTime(i * 1176000LL));
                curves[k]->KeySetValue(key, static_cast<float>(keyed[k]));
            }
            take.push_back(angles);
            for (int k = 0; k < 3; ++k) {
                angles[k] += step(random);
            }
        }
        mFilter.SetRotationOrder(order);
        ASSERT_TRUE(mFilter.Apply(curves, 3, &mStatus));
        double worstRotation = 0.0;
        double worstStep = 0.0;
        FbxDouble3 previous;
        for (int i = 0; i < 300; ++i) {
            const FbxDouble3 out(curves[0]->KeyGetValue(i), curves[1]->KeyGetValue(i),
                                 curves[2]->KeyGetValue(i));
            worstRotation = std::max(
                worstRotation, MatrixDistance(Rotation(out, order), Rotation(take[i], order)));
            for (int k = 0; i > 0 && k < 3; ++k) {
                worstStep = std::max(worstStep, std::abs(out[k] - previous[k]));
            }
            previous = out;
        }
        EXPECT_LT(worstRotation, 1e-5);
        EXPECT_LE(worstStep, 8.0 + 1e-3);
    }
}

}  // namespace
