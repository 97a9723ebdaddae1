#include "fbx/scene/fbxanimcurvefilterunroll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxnode.h"
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

// The unroll of one triple written as plainly as it reads: whole turns by an exact division
// rounded half away from zero, the flipped form when it is not farther, then the gimbal-lock
// split. The filter's own must give the same doubles bit for bit.
bool PlainV2VRef(FbxDouble3& out, const FbxDouble3& in, const FbxDouble3& ref,
                 FbxEuler::EOrder order) {
    int a = 0, b = 1, c = 2;
    FbxEuler::GetAxes(order, a, b, c);
    const auto near = [](double value, double reference) {
        return value + 360.0 * std::round((reference - value) / 360.0);
    };
    const auto squared = [&](const FbxDouble3& v) {
        return (v[0] - ref[0]) * (v[0] - ref[0]) + (v[1] - ref[1]) * (v[1] - ref[1]) +
               (v[2] - ref[2]) * (v[2] - ref[2]);
    };
    FbxDouble3 direct, flipped;
    direct[a] = near(in[a], ref[a]);
    direct[b] = near(in[b], ref[b]);
    direct[c] = near(in[c], ref[c]);
    flipped[a] = near(in[a] + 180.0, ref[a]);
    flipped[b] = near(180.0 - in[b], ref[b]);
    flipped[c] = near(in[c] + 180.0, ref[c]);
    const bool takeFlipped = squared(flipped) <= squared(direct);
    out = takeFlipped ? flipped : direct;
    double middle = std::fmod(out[b], 360.0);
    middle += middle < 0.0 ? 360.0 : 0.0;
    const bool at90 = std::abs(middle - 90.0) < 1e-6;
    const bool at270 = std::abs(middle - 270.0) < 1e-6;
    const double da = ref[a] - out[a], dc = ref[c] - out[c];
    if ((at90 || at270) && at90 == FbxEuler::IsParityEven(order)) {
        out[a] += (da + dc) / 2.0;
        out[c] += (da + dc) / 2.0;
    } else if (at90 || at270) {
        out[a] += (da - dc) / 2.0;
        out[c] -= (da - dc) / 2.0;
    }
    return takeFlipped;
}

// Angles a take could hold: finite and within a few dozen turns.
bool Ordinary(const FbxDouble3& v) {
    return std::abs(v[0]) < 1e4 && std::abs(v[1]) < 1e4 && std::abs(v[2]) < 1e4;
}

bool SameBits(const FbxDouble3& x, const FbxDouble3& y) {
    for (int i = 0; i < 3; ++i) {
        const bool same = std::isnan(x[i])
                              ? std::isnan(y[i])
                              : std::bit_cast<uint64_t>(x[i]) == std::bit_cast<uint64_t>(y[i]);
        if (!same) return false;
    }
    return true;
}

// Takes move a little from key to key, wrap by whole turns, flip, sit at a quarter turn or
// exactly half a turn from the reference; zeros carry either sign (-0 is stored as keyed);
// values grow huge or are not numbers at all. Every case, in every order, must come out as the
// plain formula has it. Where the angles are ordinary numbers the formula itself is held to
// what an unroll means: the same rotation, and no farther from the reference than the input
// moved by whole turns.
TEST(FbxUnrollV2VRefTest, SameBitsAsThePlainFormula) {
    std::mt19937 random(31);
    std::uniform_real_distribution<double> wide(-720.0, 720.0);
    std::uniform_real_distribution<double> small(-70.0, 70.0);
    const double special[] = {0.0,          -0.0,     90.0,      -90.0,      180.0,      -180.0,
                              270.0,        360.0,    -540.0,    60.0,       -60.0,      1e-300,
                              -1e-300,      1e6,      -1e6,      1e15,       -4.6e15,    1e300,
                              std::nan(""), INFINITY, -INFINITY, 89.9999995, 269.9999999};
    std::vector<std::pair<FbxDouble3, FbxDouble3>> cases;
    for (int i = 0; i < 20000; ++i) {
        FbxDouble3 in(wide(random), wide(random), wide(random));
        FbxDouble3 ref = in;
        for (int k = 0; k < 3; ++k) {
            const double turns = 360.0 * (static_cast<int>(random() % 7) - 3);
            const double sign = random() % 2 ? 1.0 : -1.0;
            const double pick = special[random() % std::size(special)];
            switch (random() % 6) {
                case 0:
                    ref[k] = wide(random);
                    break;
                case 1:
                    ref[k] = in[k] + turns + 180.0 * sign;
                    break;
                case 2:
                    ref[k] = pick;
                    break;
                case 3:
                    in[k] = pick;
                    ref[k] = pick + small(random);
                    break;
                case 4:
                    ref[k] = in[k] + turns + 60.0 * sign;
                    break;
                default:
                    ref[k] = in[k] + turns + small(random);
            }
        }
        cases.emplace_back(in, ref);
    }
    for (double x : special) {
        for (double y : special) {
            cases.emplace_back(FbxDouble3(x, 90.0, y), FbxDouble3(y, -x, 0.0));
            cases.emplace_back(FbxDouble3(x, y, -x), FbxDouble3(-0.0, x, 180.0));
        }
    }
    int mismatches = 0;
    for (FbxEuler::EOrder order : kOrders) {
        for (const auto& [in, ref] : cases) {
            FbxDouble3 out, expected;
            const bool flipped = FbxAnimCurveFilterUnroll::V2VRef(out, in, ref, order);
            const bool expectedFlip = PlainV2VRef(expected, in, ref, order);
            bool wrong = flipped != expectedFlip || !SameBits(out, expected);
            if (Ordinary(in) && Ordinary(ref)) {
                FbxDouble3 turned;
                for (int k = 0; k < 3; ++k) {
                    turned[k] = in[k] + 360.0 * std::round((ref[k] - in[k]) / 360.0);
                }
                wrong = wrong ||
                        MatrixDistance(Rotation(in, order), Rotation(expected, order)) > 1e-6 ||
                        Distance(expected, ref) > Distance(turned, ref) + 1e-9;
            }
            if (wrong && ++mismatches <= 5) {
                ADD_FAILURE() << "order " << order << " in " << in[0] << " " << in[1] << " "
                              << in[2] << " ref " << ref[0] << " " << ref[1] << " " << ref[2];
            }
        }
    }
    EXPECT_EQ(mismatches, 0);
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

// The walk as it reads: each key unrolled from the one before it (the first from zero, or
// from the key before the filter's start), one key after another, stored as float. A single
// key has nothing to be unrolled against and stays.
std::vector<FbxDouble3> PlainWalk(const std::vector<FbxDouble3>& keys, int start,
                                  FbxEuler::EOrder order, bool& changed) {
    std::vector<FbxDouble3> out;
    FbxDouble3 ref(0, 0, 0);
    for (const FbxDouble3& key : keys) {
        out.emplace_back(static_cast<float>(key[0]), static_cast<float>(key[1]),
                         static_cast<float>(key[2]));
    }
    if (start > 0) {
        ref = out[static_cast<size_t>(start) - 1];
    }
    changed = false;
    if (out.size() < static_cast<size_t>(start) + 2) {
        return out;
    }
    for (size_t k = static_cast<size_t>(start); k < out.size(); ++k) {
        FbxDouble3 unrolled;
        FbxAnimCurveFilterUnroll::V2VRef(unrolled, out[k], ref, order);
        for (int i = 0; i < 3; ++i) {
            const auto value = static_cast<float>(unrolled[i]);
            changed = changed || value != static_cast<float>(out[k][i]);
            out[k][i] = value;
        }
        ref = unrolled;
    }
    return out;
}

// Takes of many kinds, from smooth to hostile: small steps that wrap at +-180 and add whole
// turns, flips to the equivalent triple, steps right at a sixth of a turn, middle angles at
// or near a quarter turn, zeros of either sign, huge values, infinities and not-a-numbers,
// angles many turns out, one key or two. In every order, from the first key or from one
// further on, the filter must leave each key bit for bit where the plain walk puts it. Takes
// keyed at random as flipped triples or whole turns out must moreover keep every key's
// rotation and come out as continuous as the take moved, with nothing left to unroll.
TEST_F(FbxUnrollTest, SameKeysAsThePlainWalk) {
    std::mt19937 random(77);
    const auto uniform = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    const double special[] = {0.0,    -0.0,   90.0,   -90.0,        270.0,    89.9999999,
                              90.002, 180.0,  -180.0, 65535.9,      65536.0,  999999.0,
                              1e6,    1e7,    -1e30,  std::nan(""), INFINITY, -INFINITY,
                              1e-30,  -1e-30, 59.99,  60.0,         -60.0001, 720000.5};
    using Take = std::vector<FbxDouble3>;
    const auto smooth = [&](int keys, double step, double start) {
        Take take;
        FbxDouble3 angles(start, uniform(-170, 170), uniform(-170, 170));
        for (int k = 0; k < keys; ++k) {
            take.emplace_back(std::remainder(angles[0], 360.0), std::remainder(angles[1], 360.0),
                              std::remainder(angles[2], 360.0));
            for (int i = 0; i < 3; ++i) {
                angles[i] += uniform(-step, step);
            }
        }
        return take;
    };
    const struct {
        const char* name;
        double maxStep;  // the take's largest step per axis, where continuity is checked
        std::function<Take(int a, int b, int c)> make;
    } kinds[] = {
        {"smooth", 0.0, [&](int, int, int) { return smooth(700, 4.0, uniform(-180, 180)); }},
        {"spinning", 0.0, [&](int, int, int) { return smooth(700, 25.0, 0.0); }},
        {"steps near a sixth of a turn", 0.0,
         [&](int, int, int) { return smooth(300, 61.0, 10.0); }},
        {"big steps", 0.0, [&](int, int, int) { return smooth(300, 130.0, 10.0); }},
        {"flips", 0.0,
         [&](int, int, int) {
             Take take = smooth(500, 3.0, 0.0);
             for (size_t k = 0; k < take.size(); k += 1 + random() % 40) {
                 take[k] = FbxDouble3(take[k][0] + 180, 180 - take[k][1], take[k][2] + 180);
             }
             return take;
         }},
        {"whole turns out", 0.0,
         [&](int, int, int) {
             Take take = smooth(400, 5.0, 0.0);
             const double turns = 360.0 * static_cast<double>(random() % 4000);
             for (FbxDouble3& key : take) {
                 key[random() % 3] += turns;
             }
             return take;
         }},
        {"middle at a quarter turn", 0.0,
         [&](int, int, int) {
             Take take = smooth(400, 3.0, 0.0);
             const double near[] = {90.0, 270.0, -90.0, 90.0 + 1e-7, 90.0 - 1e-3, 450.0, 89.8};
             for (FbxDouble3& key : take) {
                 key[random() % 3] = near[random() % std::size(near)];
             }
             return take;
         }},
        {"special values", 0.0,
         [&](int, int, int) {
             Take take = smooth(300, 20.0, 0.0);
             for (size_t k = 0; k < take.size(); k += 1 + random() % 6) {
                 take[k][random() % 3] = special[random() % std::size(special)];
             }
             return take;
         }},
        {"zeros", 0.0,
         [&](int, int middle, int) {
             Take take(300, FbxDouble3(0.0, -0.0, 0.0));
             for (size_t k = 0; k < take.size(); k += 1 + random() % 9) {
                 take[k][random() % 3] = random() % 2 ? -0.0 : uniform(-1e-3, 1e-3);
             }
             for (size_t k = 200; k < take.size(); ++k) {
                 take[k][middle] = 90.0;
             }
             return take;
         }},
        {"flipped or turned", 8.0,
         [&](int a, int b, int c) {
             Take take;
             FbxDouble3 angles(uniform(-160, 160), uniform(-160, 160), uniform(-160, 160));
             for (int k = 0; k < 300; ++k) {
                 FbxDouble3 keyed = angles;
                 if (random() % 2) {
                     keyed[a] += 180.0, keyed[b] = 180.0 - keyed[b], keyed[c] += 180.0;
                 }
                 for (int i = 0; i < 3; ++i) {
                     keyed[i] += 360.0 * (static_cast<int>(random() % 5) - 2);
                     angles[i] += uniform(-8.0, 8.0);
                 }
                 take.push_back(keyed);
             }
             return take;
         }},
        {"one key", 0.0, [&](int, int, int) { return Take{FbxDouble3(-0.0, 270.0, -190.0)}; }},
        {"two keys", 0.0,
         [&](int, int, int) {
             return Take{FbxDouble3(170, 0, -0.0), FbxDouble3(-170, 0, 0)};
         }},
    };
    int mismatches = 0;
    for (const auto& kind : kinds) {
        for (FbxEuler::EOrder order : kOrders) {
            int a = 0, b = 1, c = 2;
            FbxEuler::GetAxes(order, a, b, c);
            const Take take = kind.make(a, b, c);
            const int start = take.size() > 2 ? static_cast<int>(random() % 3) : 0;
            for (FbxAnimCurve* curve : mCurves) {
                curve->KeyClear();
            }
            for (size_t k = 0; k < take.size(); ++k) {
                Key(static_cast<int>(k), take[k]);
            }
            bool expectChange = false;
            const Take expected = PlainWalk(take, start, order, expectChange);
            mFilter.Reset();
            mFilter.SetRotationOrder(order);
            mFilter.SetStartTime(FbxTime(start * 1176000LL));
            const bool need = mFilter.NeedApply(mCurves, 3, &mStatus);
            ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus)) << kind.name;
            int wrong = need != expectChange ? 1 : 0;
            for (size_t k = 0; k < take.size(); ++k) {
                for (int i = 0; i < 3; ++i) {
                    const float got = mCurves[i]->KeyGetValue(static_cast<int>(k));
                    const auto want = static_cast<float>(expected[k][i]);
                    wrong += std::bit_cast<uint32_t>(got) != std::bit_cast<uint32_t>(want);
                }
            }
            if (wrong > 0 && ++mismatches <= 5) {
                ADD_FAILURE() << kind.name << ", order " << order << ", start " << start << ": "
                              << wrong << " keys differ";
            }
            if (kind.maxStep > 0.0) {
                SCOPED_TRACE(testing::Message() << kind.name << ", order " << order);
                double worstRotation = 0.0, worstStep = 0.0;
                for (int k = 0; k < static_cast<int>(take.size()); ++k) {
                    worstRotation =
                        std::max(worstRotation,
                                 MatrixDistance(Rotation(At(k), order), Rotation(take[k], order)));
                    for (int i = 0; k > start && i < 3; ++i) {
                        worstStep = std::max(worstStep, std::abs(At(k)[i] - At(k - 1)[i]));
                    }
                }
                EXPECT_LT(worstRotation, 1e-5);
                EXPECT_LE(worstStep, kind.maxStep + 1e-3);
                EXPECT_EQ(mCurves[0]->KeyGetFlags(3), 0x2104u);
                EXPECT_FALSE(mFilter.NeedApply(mCurves, 3, &mStatus));
            }
        }
    }
    EXPECT_EQ(mismatches, 0);
    // Curves keyed at the same times are unrolled where they are, through no copies.
    EXPECT_EQ(mScene->GetMemberCount<FbxAnimCurve>(), 3);
}

// Every key of the three curves, to tell whether a run changed anything.
std::vector<std::pair<FbxLongLong, float>> Snapshot(FbxAnimCurve* const* curves) {
    std::vector<std::pair<FbxLongLong, float>> keys;
    for (int i = 0; i < 3; ++i) {
        for (int k = 0; k < curves[i]->KeyGetCount(); ++k) {
            keys.emplace_back(curves[i]->KeyGetTime(k).Get(), curves[i]->KeyGetValue(k));
        }
    }
    return keys;
}

// What a run leaves of small takes, and NeedApply answering true exactly when Apply then
// changes a key.
TEST_F(FbxUnrollTest, RunsOfSmallTakes) {
    const struct {
        const char* name;
        std::vector<FbxDouble3> keys;
        std::vector<FbxDouble3> after;  // the keys once unrolled; empty when nothing changes
        int startFrame = -1;            // the filter's span, in frames; -1 for none
        int stopFrame = -1;
        bool testForPath = false;
        int replaceMode = 0;
    } rows[] = {
        {"continuous", {{10, 0, 0}, {20, 0, 0}, {30, 0, 0}}, {}},
        {"flip", {{170, 0, 0}, {-170, 0, 0}}, {{170, 0, 0}, {190, 0, 0}}},
        {"whole turn", {{0, 0, 0}, {0, 370, 0}}, {{0, 0, 0}, {0, 10, 0}}},
        {"one key", {{-170, 20, 400}}, {}},
        // The span holds only the last key, which differs from the one before by a turn.
        {"one key span", {{170, 0, 0}, {-170, 0, 0}}, {}, 1},
        {"span after the flip",
         {{170, 0, 0}, {-170, 0, 0}, {-165, 0, 0}},
         {{170, 0, 0}, {190, 0, 0}, {195, 0, 0}},
         1},
        // 361 is the same rotation as 0 but far in angle space: the walk unrolls it and stops
        // there, before the flip.
        {"path test",
         {{0, 0, 0}, {361, 0, 0}, {-170, 0, 0}},
         {{0, 0, 0}, {1, 0, 0}, {-170, 0, 0}},
         -1,
         -1,
         true},
        // Past the span, keys stay; in replace mode 2 they move by the whole turns the span's
        // last key moved, which keeps the curve continuous.
        {"span before the end",
         {{170, 0, 0}, {-175, 0, 0}, {-170, 0, 0}},
         {{170, 0, 0}, {185, 0, 0}, {-170, 0, 0}},
         -1,
         1},
        {"span before the end, replace mode 2",
         {{170, 0, 0}, {-175, 0, 0}, {-170, 0, 0}},
         {{170, 0, 0}, {185, 0, 0}, {190, 0, 0}},
         -1,
         1,
         false,
         2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (FbxAnimCurve* curve : mCurves) {
            curve->KeyClear();
        }
        for (size_t i = 0; i < row.keys.size(); ++i) {
            Key(static_cast<int>(i), row.keys[i]);
        }
        mFilter.Reset();
        mFilter.SetTestForPath(row.testForPath);
        mFilter.SetReplaceMode(row.replaceMode);
        if (row.startFrame >= 0) {
            mFilter.SetStartTime(FbxTime(row.startFrame * 1176000LL));
        }
        if (row.stopFrame >= 0) {
            mFilter.SetStopTime(FbxTime(row.stopFrame * 1176000LL));
        }
        const auto before = Snapshot(mCurves);
        const bool need = mFilter.NeedApply(mCurves, 3, &mStatus);
        EXPECT_EQ(Snapshot(mCurves), before);
        ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
        EXPECT_EQ(need, !row.after.empty());
        EXPECT_EQ(Snapshot(mCurves) != before, !row.after.empty());
        const std::vector<FbxDouble3>& after = row.after.empty() ? row.keys : row.after;
        for (size_t i = 0; i < after.size(); ++i) {
            EXPECT_LT(Distance(At(static_cast<int>(i)), after[i]), 1e-4) << "key " << i;
        }
        EXPECT_FALSE(mFilter.NeedApply(mCurves, 3, &mStatus));
    }
    EXPECT_FALSE(mFilter.NeedApply(mCurves, 2, &mStatus));
    EXPECT_STREQ(mStatus.GetErrorString(), "Number of animation curves is not 3");
}

// Each setting reads back what was set, and Reset brings all of them back.
TEST_F(FbxUnrollTest, SettingsAndReset) {
    mFilter.SetQualityTolerance(3.5);
    mFilter.SetTestForPath(true);
    mFilter.SetForceAutoTangents(true);
    mFilter.SetRotationOrder(FbxEuler::eOrderZYX);
    mFilter.SetReplaceMode(2);
    mFilter.SetStartTime(FbxTime(5));
    mFilter.SetStopTime(FbxTime(9));
    EXPECT_DOUBLE_EQ(mFilter.GetQualityTolerance(), 3.5);
    EXPECT_TRUE(mFilter.GetTestForPath());
    EXPECT_TRUE(mFilter.GetForceAutoTangents());
    EXPECT_EQ(mFilter.GetRotationOrder(), FbxEuler::eOrderZYX);
    EXPECT_EQ(mFilter.GetReplaceMode(), 2);
    EXPECT_EQ(mFilter.GetStartTime(), FbxTime(5));
    EXPECT_EQ(mFilter.GetStopTime(), FbxTime(9));
    mFilter.Reset();
    EXPECT_DOUBLE_EQ(mFilter.GetQualityTolerance(), 0.25);
    EXPECT_FALSE(mFilter.GetTestForPath());
    EXPECT_FALSE(mFilter.GetForceAutoTangents());
    EXPECT_EQ(mFilter.GetRotationOrder(), FbxEuler::eOrderXYZ);
    EXPECT_EQ(mFilter.GetReplaceMode(), 0);
    EXPECT_EQ(mFilter.GetStartTime(), FBX_TIME_MINUS_INFINITE);
    EXPECT_EQ(mFilter.GetStopTime(), FBX_TIME_INFINITE);
    EXPECT_STREQ(mFilter.GetName(), "Unroll");
}

// Flipped cubic keys with user tangents become auto keys with flat slopes; keys of any other
// kind, and keys that were not flipped, keep their tangents.
TEST_F(FbxUnrollTest, ForcedAutoTangentsOnlyOnFlippedUserKeys) {
    Key(0, FbxDouble3(0, 80, 0));
    Key(1, FbxDouble3(180, 80, 180));  // the flipped form of (0, 100, 0)
    Key(2, FbxDouble3(0, 100, 0));
    for (FbxAnimCurve* curve : mCurves) {
        for (int k = 0; k < 3; ++k) {
            curve->KeySetInterpolation(k, FbxAnimCurveDef::eInterpolationCubic);
            curve->KeySetTangentMode(k, FbxAnimCurveDef::eTangentBreak);
            curve->KeySetRightDerivative(k, 5.0f);
            curve->KeySetLeftDerivative(k, 6.0f);
        }
    }
    mCurves[2]->KeySetInterpolation(1, FbxAnimCurveDef::eInterpolationLinear);
    mFilter.SetForceAutoTangents(true);
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    EXPECT_LT(Distance(At(1), FbxDouble3(0, 100, 0)), 1e-4);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(mCurves[i]->KeyGetFlags(1), 0x6108u);
        EXPECT_FLOAT_EQ(mCurves[i]->KeyGetRightDerivative(1), 0.0f);
        EXPECT_FLOAT_EQ(mCurves[i]->KeyGetLeftDerivative(1), 0.0f);
    }
    EXPECT_EQ(mCurves[2]->KeyGetFlags(1), 0x0C04u);
    EXPECT_FLOAT_EQ(mCurves[2]->KeyGetRightDerivative(1), 5.0f);
    for (int k : {0, 2}) {
        EXPECT_EQ(mCurves[0]->KeyGetFlags(k), 0x0C08u);
        EXPECT_FLOAT_EQ(mCurves[0]->KeyGetRightDerivative(k), 5.0f);
    }
}

// The stack overloads treat the rotation curve nodes on every layer (of one object when
// given) and leave translations, which may well jump by 340, alone.
TEST_F(FbxUnrollTest, StackAndObjectOverloadsTreatRotationsOnly) {
    FbxAnimStack* stack = FbxAnimStack::Create(mScene, "take");
    FbxAnimLayer* layer = FbxAnimLayer::Create(mScene, "layer");
    stack->AddMember(layer);
    FbxNode* nodes[2] = {FbxNode::Create(mScene, "a"), FbxNode::Create(mScene, "b")};
    const auto keyJump = [&](FbxPropertyT<FbxDouble3>& property, const char* name) {
        for (const char* channel : {"X", "Y", "Z"}) {
            const float jump = channel[0] == 'X' ? 170.0f : 0.0f;
            FbxAnimCurve* curve = property.GetCurve(layer, name, channel, true);
            curve->KeySetValue(curve->KeyAdd(FbxTime(0)), jump);
            curve->KeySetValue(curve->KeyAdd(FbxTime(1176000)), -jump);
        }
    };
    for (FbxNode* node : nodes) {
        keyJump(node->LclRotation, "Lcl Rotation");
        keyJump(node->LclTranslation, "Lcl Translation");
    }
    const auto last = [&](FbxPropertyT<FbxDouble3>& property, const char* name) {
        return property.GetCurve(layer, name, "X")->KeyGetValue(1);
    };
    EXPECT_TRUE(mFilter.NeedApply(*nodes[1], *stack, &mStatus));
    ASSERT_TRUE(mFilter.Apply(*nodes[1], *stack, &mStatus));
    EXPECT_FALSE(mFilter.NeedApply(*nodes[1], *stack, &mStatus));
    EXPECT_FLOAT_EQ(last(nodes[0]->LclRotation, "Lcl Rotation"), -170.0f);
    EXPECT_FLOAT_EQ(last(nodes[1]->LclRotation, "Lcl Rotation"), 190.0f);
    EXPECT_TRUE(mFilter.NeedApply(*stack, &mStatus));
    ASSERT_TRUE(mFilter.Apply(*stack, &mStatus));
    EXPECT_FALSE(mFilter.NeedApply(*stack, &mStatus));
    for (FbxNode* node : nodes) {
        EXPECT_FLOAT_EQ(last(node->LclRotation, "Lcl Rotation"), 190.0f);
        EXPECT_FLOAT_EQ(last(node->LclTranslation, "Lcl Translation"), -170.0f);
    }
    // A rotation node missing a channel's curve is refused with the reason.
    FbxNode* partial = FbxNode::Create(mScene, "partial");
    partial->LclRotation.GetCurve(layer, "Lcl Rotation", "X", true)->KeyAdd(FbxTime(0));
    EXPECT_FALSE(mFilter.Apply(*stack, &mStatus));
    EXPECT_STREQ(mStatus.GetErrorString(), "Not enough animation curves found");
}

// Curves keyed at the same times are unrolled where they are; curves that need their keys
// synchronised first go through copies. Both ways end with the same keys.
TEST_F(FbxUnrollTest, InPlaceAndCopiedRunsAgree) {
    FbxAnimCurve* other[3] = {FbxAnimCurve::Create(mScene, "u"), FbxAnimCurve::Create(mScene, "v"),
                              FbxAnimCurve::Create(mScene, "w")};
    const float xs[] = {170, -175, -170, -160, -150, -140};
    for (int k = 0; k < 6; ++k) {
        Key(k, FbxDouble3(xs[k], 30, -40));
        for (int c = 0; c < 3; ++c) {
            other[c]->KeySetValue(other[c]->KeyAdd(FbxTime(k * 1176000LL)),
                                  mCurves[c]->KeyGetValue(k));
            other[c]->KeySetInterpolation(k, FbxAnimCurveDef::eInterpolationLinear);
        }
    }
    // A key on the line between two others: synchronising adds it to the other curves at
    // the values they have there, and the walk passes it on its way.
    other[0]->KeySetValue(other[0]->KeyAdd(FbxTime(4 * 1176000LL + 588000)), -145.0f);
    ASSERT_TRUE(mFilter.Apply(mCurves, 3, &mStatus));
    ASSERT_TRUE(mFilter.Apply(other, 3, &mStatus));
    ASSERT_EQ(other[1]->KeyGetCount(), 7);
    EXPECT_FLOAT_EQ(other[0]->KeyGetValue(5), 215.0f);
    for (int k = 0; k < 6; ++k) {
        const int o = k < 5 ? k : 6;
        for (int c = 0; c < 3; ++c) {
            EXPECT_FLOAT_EQ(mCurves[c]->KeyGetValue(k), other[c]->KeyGetValue(o)) << k;
            EXPECT_EQ(mCurves[c]->KeyGetFlags(k), other[c]->KeyGetFlags(o)) << k;
        }
    }
    EXPECT_FLOAT_EQ(mCurves[0]->KeyGetValue(5), 220.0f);
}

// A node's take for the threaded runs: each axis spins at its own rate and sways.
float TakeAngle(int node, int frame, int axis) {
    return static_cast<float>(
        std::remainder((1.5 + node) * frame * (axis + 1) + 40.0 * std::sin(0.01 * frame), 360.0));
}

// Curves unrolled one way must hold the same times and value bits as curves unrolled another.
void ExpectSameKeys(const FbxAnimCurve& a, const FbxAnimCurve& b, int node, int axis) {
    ASSERT_EQ(a.KeyGetCount(), b.KeyGetCount()) << node << " " << axis;
    for (int k = 0; k < a.KeyGetCount(); ++k) {
        ASSERT_EQ(a.KeyGetTime(k), b.KeyGetTime(k)) << node << " " << axis << " " << k;
        ASSERT_EQ(std::bit_cast<uint32_t>(a.KeyGetValue(k)),
                  std::bit_cast<uint32_t>(b.KeyGetValue(k)))
            << node << " " << axis << " " << k;
    }
}

// Rotation curves of different nodes may be keyed and unrolled on different threads at once.
// The unroll of curves keyed at the same times works where they are: it makes no scene
// object (the next object made gets the very next id).
TEST_F(FbxUnrollTest, NodesKeyedAndUnrolledOnThreadsAtOnce) {
    constexpr int kNodes = 4;
    constexpr int kFrames = 2000;
    const auto keyAndUnroll = [&](FbxAnimCurve** curves, int node) {
        for (int frame = 0; frame < kFrames; ++frame) {
            for (int axis = 0; axis < 3; ++axis) {
                KeyAsTaken(*curves[axis], frame * 588000LL, TakeAngle(node, frame, axis));
            }
        }
        FbxAnimCurveFilterUnroll filter;
        return filter.Apply(curves, 3);
    };
    std::array<std::array<FbxAnimCurve*, 3>, kNodes> threaded{}, alone{};
    for (int node = 0; node < kNodes; ++node) {
        for (int axis = 0; axis < 3; ++axis) {
            threaded[node][axis] = FbxAnimCurve::Create(mScene, "threaded");
            alone[node][axis] = FbxAnimCurve::Create(mScene, "alone");
        }
    }
    const FbxUInt64 idBefore = FbxAnimCurve::Create(mScene, "before")->GetUniqueID();
    std::array<bool, kNodes> applied{};
    std::vector<std::thread> threads;
    for (int half = 0; half < 2; ++half) {
        threads.emplace_back([&, half] {
            for (int node = half; node < kNodes; node += 2) {
                applied[node] = keyAndUnroll(threaded[node].data(), node);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(FbxAnimCurve::Create(mScene, "after")->GetUniqueID(), idBefore + 1);
    for (int node = 0; node < kNodes; ++node) {
        ASSERT_TRUE(applied[node]);
        ASSERT_TRUE(keyAndUnroll(alone[node].data(), node));
        for (int axis = 0; axis < 3; ++axis) {
            ASSERT_EQ(threaded[node][axis]->KeyGetCount(), kFrames);
            ExpectSameKeys(*threaded[node][axis], *alone[node][axis], node, axis);
        }
    }
}

// Curves of several nodes keyed at the same, unevenly spaced times share them and unroll as
// curves alone do: in place on threads at once, or through copies where one node's curves
// differ in times, which leaves every other node's times as they were.
TEST_F(FbxUnrollTest, NodesSharingKeyTimesUnrollAsCurvesAlone) {
    constexpr int kNodes = 3;
    constexpr int kFrames = 400;
    using Node = std::array<FbxAnimCurve*, 3>;
    std::array<Node, kNodes> shared{}, alone{};
    for (int node = 0; node < kNodes; ++node) {
        for (int axis = 0; axis < 3; ++axis) {
            shared[node][axis] = FbxAnimCurve::Create(mScene, "shared");
            alone[node][axis] = FbxAnimCurve::Create(mScene, "alone");
            shared[node][axis]->KeyShareTimes(*shared[0][0]);
        }
    }
    for (int frame = 0; frame < kFrames; ++frame) {
        const FbxLongLong time = (frame * 25LL + frame % 3) * 10000;
        for (int node = 0; node < kNodes; ++node) {
            for (int axis = 0; axis < 3; ++axis) {
                const float value = TakeAngle(node, frame, axis);
                KeyAsTaken(*shared[node][axis], time, value);
                KeyAsTaken(*alone[node][axis], time, value);
            }
        }
    }
    KeyAsTaken(*shared[1][0], 105000, 30.0f);
    KeyAsTaken(*alone[1][0], 105000, 30.0f);
    // Copies are scene objects: node 1 goes first, on this thread.
    ASSERT_TRUE(FbxAnimCurveFilterUnroll().Apply(shared[1].data(), 3));
    std::array<bool, kNodes> applied{true, true, true};
    std::vector<std::thread> threads;
    for (int node : {0, 2}) {
        threads.emplace_back([&, node] {
            applied[node] = FbxAnimCurveFilterUnroll().Apply(shared[node].data(), 3);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int node = 0; node < kNodes; ++node) {
        ASSERT_TRUE(applied[node]);
        ASSERT_TRUE(FbxAnimCurveFilterUnroll().Apply(alone[node].data(), 3));
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(shared[node][axis]->KeyTimesEqual(*shared[0][0]),
                      alone[node][axis]->KeyTimesEqual(*alone[0][0]));
            ExpectSameKeys(*shared[node][axis], *alone[node][axis], node, axis);
        }
    }
}

}  // namespace
