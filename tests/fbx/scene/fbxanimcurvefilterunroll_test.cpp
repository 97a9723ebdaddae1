#include "fbx/scene/fbxanimcurvefilterunroll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "tests/fbx/scene/scenetest.h"

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;

// The rotation an Euler triple stands for, the order's first axis applied first.
Matrix Rotation(const FbxDouble3& angles, FbxEuler::EOrder order) {
    int a = 0, b = 1, c = 2;
    FbxEuler::GetAxes(order, a, b, c);
    Matrix m{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (int axis : {a, b, c}) {
        const double r = angles[axis] * std::numbers::pi / 180.0;
        const int u = (axis + 1) % 3, v = (axis + 2) % 3;
        for (int k = 0; k < 3; ++k) {
            const double mu = m[u][k], mv = m[v][k];
            m[u][k] = std::cos(r) * mu - std::sin(r) * mv;
            m[v][k] = std::sin(r) * mu + std::cos(r) * mv;
        }
    }
    return m;
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
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
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
        double worstRotation = 0.0, worstExcess = 0.0;
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
    const struct {
        FbxDouble3 in, ref, out;
        FbxEuler::EOrder order;
        bool flipped;
    } rows[] = {
        {{-170, 0, 0}, {170, 0, 0}, {190, 0, 0}, FbxEuler::eOrderXYZ, false},
        {{0, 100, 0}, {0, 80, 0}, {0, 100, 0}, FbxEuler::eOrderXYZ, false},
        // (180, 10, 180) is (0, 170, 0): the flipped form is next to the reference.
        {{180, 10, 180}, {0, 160, 0}, {0, 170, 0}, FbxEuler::eOrderXYZ, true},
        // Equally far: the flipped form wins.
        {{-90, 30, -90}, {0, 90, 0}, {90, 150, 90}, FbxEuler::eOrderXYZ, true},
        {{500, 0, 0}, {0, 0, 0}, {500, 0, 0}, FbxEuler::eOrderSphericXYZ, false},
    };
    for (const auto& row : rows) {
        FbxDouble3 out;
        EXPECT_EQ(FbxAnimCurveFilterUnroll::V2VRef(out, row.in, row.ref, row.order), row.flipped);
        EXPECT_LT(Distance(out, row.out), 1e-9) << row.in[0] << " " << row.in[1];
    }
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
            in[a] = 40.0, in[b] = middle, in[c] = -10.0;
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

class FbxUnrollTest : public SceneTest {
protected:
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

// The span starts from the key before it, and a key on one curve gets its
// fellows on the other two.
TEST_F(FbxUnrollTest, SpanStartsFromTheKeyBeforeItAndKeysAreSynchronised) {
    Key(0, FbxDouble3(170, 0, 0));
    mCurves[0]->KeySetValue(mCurves[0]->KeyAdd(FbxTime(1176000)), -175.0f);
    Key(2, FbxDouble3(-170, 0, 0));
    mFilter.SetStartTime(FbxTime(1176000));
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_EQ(mCurves[2]->KeyGetCount(), 3);
    EXPECT_EQ(At(0), FbxDouble3(170, 0, 0));
    EXPECT_EQ(At(1), FbxDouble3(185, 0, 0));
    EXPECT_EQ(At(2), FbxDouble3(190, 0, 0));
}

// Seeded random takes in every order, each key keyed as its flipped form or
// moved by whole turns at random: unrolled in place, every key is still the
// take's rotation and consecutive keys are no farther apart than the take's steps.
TEST_F(FbxUnrollTest, RandomTakesKeepTheirRotationsAndBecomeContinuous) {
    std::mt19937 random(2024);
    std::uniform_real_distribution<double> step(-8.0, 8.0);
    for (FbxEuler::EOrder order : kOrders) {
        SCOPED_TRACE(testing::Message() << "order " << order);
        int a = 0, b = 1, c = 2;
        FbxEuler::GetAxes(order, a, b, c);
        for (FbxAnimCurve* curve : mCurves) {
            curve->KeyClear();
        }
        std::vector<FbxDouble3> take;
        FbxDouble3 angles(20 * step(random), 20 * step(random), 20 * step(random));
        for (int i = 0; i < 300; ++i) {
            take.push_back(angles);
            FbxDouble3 keyed = angles;
            if (random() % 2) {
                keyed[a] += 180.0, keyed[b] = 180.0 - keyed[b], keyed[c] += 180.0;
            }
            for (int k = 0; k < 3; ++k) {
                keyed[k] += 360.0 * (static_cast<int>(random() % 5) - 2);
                angles[k] += step(random);
            }
            Key(i, keyed);
        }
        mFilter.SetRotationOrder(order);
        ASSERT_TRUE(mFilter.NeedApply(mCurves, 3, &mStatus));
        ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
        EXPECT_FALSE(mFilter.NeedApply(mCurves, 3, &mStatus));
        EXPECT_EQ(mCurves[0]->KeyGetFlags(3), 0x2104u);
        double worstRotation = 0.0, worstStep = 0.0;
        for (int i = 0; i < 300; ++i) {
            worstRotation = std::max(
                worstRotation, MatrixDistance(Rotation(At(i), order), Rotation(take[i], order)));
            for (int k = 0; i > 0 && k < 3; ++k) {
                worstStep = std::max(worstStep, std::abs(At(i)[k] - At(i - 1)[k]));
            }
        }
        EXPECT_LT(worstRotation, 1e-5);
        EXPECT_LE(worstStep, 8.0 + 1e-3);
    }
    EXPECT_EQ(mScene->GetMemberCount<FbxAnimCurve>(), 3);
}

}  // namespace
