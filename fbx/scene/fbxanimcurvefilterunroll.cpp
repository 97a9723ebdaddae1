#include "fbx/scene/fbxanimcurvefilterunroll.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvefilterkeysync.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

namespace {

constexpr double kDefaultQualityTolerance = 0.25;

constexpr double kDegree = std::numbers::pi / 180.0;

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            m[r][c] = a[r][0] * b[0][c] + a[r][1] * b[1][c] + a[r][2] * b[2][c];
        }
    }
    return m;
}

Matrix AxisRotation(int axis, double degrees) {
    const double c = std::cos(degrees * kDegree);
    const double s = std::sin(degrees * kDegree);
    const int u = (axis + 1) % 3;
    const int v = (axis + 2) % 3;
    Matrix m{};
    m[axis][axis] = 1.0;
    m[u][u] = c;
    m[u][v] = -s;
    m[v][u] = s;
    m[v][v] = c;
    return m;
}

// Rotation of an Euler triple: the first axis applies first (column vectors).
Matrix EulerMatrix(const FbxVector4& angles, FbxEuler::EOrder order) {
    int a = 0, b = 1, c = 2;
    FbxEuler::GetAxes(order, a, b, c);
    return Multiply(AxisRotation(c, angles[c]),
                    Multiply(AxisRotation(b, angles[b]), AxisRotation(a, angles[a])));
}

// std::round (halves away from zero, a zero keeps the sign of x) without the library call,
// which the unroll makes six times a key: below 2^52 the truncation is exact and so is the
// fraction left. The sign matters: files keep -0.
double RoundHalfAway(double x) {
    if (!(std::abs(x) < 4.5e15)) {
        return std::round(x);
    }
    const auto whole = static_cast<double>(static_cast<long long>(x));
    const double fraction = x - whole;
    return std::copysign(fraction >= 0.5 ? whole + 1.0 : fraction <= -0.5 ? whole - 1.0 : whole, x);
}

// value moved by whole turns to lie nearest reference.
double NearestTurn(double value, double reference) {
    return value + 360.0 * RoundHalfAway((reference - value) / 360.0);
}

// Below this many degrees the quick candidate below carries rounding errors under a
// millionth of a degree, and the integer conversions it makes cannot overflow.
constexpr double kQuickRange = 1.0e6;

// One axis of the direct candidate when it lands within 60 degrees of reference: no quotient
// is near a half then, so a rounded product finds the same whole turns as the exact
// division. False when that is not certain.
inline bool QuickTurn(double value, double reference, double& turned) {
    if (!(std::abs(value) < kQuickRange && std::abs(reference) < kQuickRange)) {
        return false;
    }
    const double d = reference - value;
    const double quotient = d * (1.0 / 360.0);
    // Rounded without a branch: the sign of a step between keys is anyone's guess.
    const auto turns =
        static_cast<double>(static_cast<long long>(quotient + std::copysign(0.5, quotient)));
    if (!(std::abs(quotient - turns) < 1.0 / 6.0)) {
        return false;
    }
    // As NearestTurn: no whole turn adds a zero with the sign of the quotient.
    turned = value + 360.0 * std::copysign(turns, d);
    return true;
}

// The direct candidate when each axis, moved by whole turns, lands within 60 degrees of ref.
// The flipped candidate is then more than 120 degrees off on the first and the last axis,
// so it cannot be as close. False, out untouched, otherwise.
bool QuickDirect(FbxDouble3& out, const FbxDouble3& in, const FbxDouble3& ref) {
    double x = 0.0, y = 0.0, z = 0.0;
    if (!QuickTurn(in[0], ref[0], x) || !QuickTurn(in[1], ref[1], y) ||
        !QuickTurn(in[2], ref[2], z)) {
        return false;
    }
    out = FbxDouble3(x, y, z);
    return true;
}

double SquaredDistance(const FbxDouble3& a, const FbxDouble3& b) {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i) {
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    }
    return sum;
}

// Most middle angles are nowhere near a quarter turn; those skip the exact gimbal-lock
// test. A product will do for that: the angles the test finds are within a millionth of a
// degree of one.
inline bool MaybeQuarterTurn(double angle) {
    if (!(std::abs(angle) < 1e9)) {
        return true;
    }
    const double quarters = angle * (1.0 / 90.0);
    const double fraction =
        std::abs(quarters - static_cast<double>(static_cast<long long>(quarters)));
    return fraction <= 1e-3 || fraction >= 1.0 - 1e-3;
}

// With the middle angle at 90 or 270 degrees only the sum or the difference of
// the outer angles matters; both move together toward the reference.
void ResolveGimbalLock(FbxDouble3& out, const FbxDouble3& ref, int a, int b, int c,
                       bool evenOrder) {
    if (!MaybeQuarterTurn(out[b])) {
        return;
    }
    double middle = std::fmod(out[b], 360.0);
    if (middle < 0.0) {
        middle += 360.0;
    }
    const bool at90 = std::abs(middle - 90.0) < 1e-6;
    const bool at270 = std::abs(middle - 270.0) < 1e-6;
    if (!at90 && !at270) {
        return;
    }
    const double da = ref[a] - out[a];
    const double dc = ref[c] - out[c];
    if (at90 == evenOrder) {
        out[a] += (da + dc) / 2.0;
        out[c] += (da + dc) / 2.0;
    } else {
        out[a] += (da - dc) / 2.0;
        out[c] -= (da - dc) / 2.0;
    }
}

void Fail(FbxStatus* status, const char* message) {
    if (status) {
        status->SetCode(FbxStatus::eFailure, message);
    }
}

FbxDouble3 KeyTriple(FbxAnimCurve* const* curves, int index) {
    return FbxDouble3(curves[0]->KeyGetValue(index), curves[1]->KeyGetValue(index),
                      curves[2]->KeyGetValue(index));
}

// A smooth take moves each axis by far less than a sixth of a turn from key to key. Once the
// reference is a key moved by whole turns on each axis, the walk's quick path keeps adding
// those turns key after key and splits no gimbal lock: a steady run, whose values follow
// from the keys alone. Its keys are checked four at a time in the vector lanes of the
// compiler's vector types, in float arithmetic, with margins that hold whatever its rounding:
// a key let through is one the quick path takes that way, and any doubtful key ends the run
// and goes the full way.
constexpr int kLanes = 4;
using FloatLanes = float __attribute__((vector_size(kLanes * sizeof(float))));
using LaneBits = std::int32_t __attribute__((vector_size(kLanes * sizeof(std::int32_t))));

constexpr int kSteadyBlock = 256;
// Runs end at flips and wraps; the first block after one is small, so a take that keeps
// flipping copies few keys it will not use.
constexpr int kSteadyFirstBlock = 32;
// Keys of a run stay below this many degrees, so float steps are exact to within a few
// thousandths of a degree, and the quick path's range holds with the turns added.
constexpr float kSteadyRange = 65536.0f;
constexpr double kSteadyTurns = 2000.0;
// A step below this is within a sixth of a turn (60 degrees) in double arithmetic too.
constexpr float kSteadyStep = 59.99f;
// Middle angles further than this from 90 + 180n, in half turns (0.18 degrees), get no
// gimbal-lock split; float rounding here errs by under 1e-4.
constexpr float kSteadyLockMargin = 1e-3f;

struct SteadyBlock {
    // Per axis the run's first key, the keys after it, and room for a part-filled group.
    std::array<std::array<float, 1 + kSteadyBlock + kLanes>, 3> keys;
    std::array<double, 3> turns;
    // Per axis whether a key of the run may be -0.
    std::array<bool, 3> zeros;
};

[[gnu::always_inline]] inline FloatLanes LoadLanes(const float* keys) {
    FloatLanes lanes;
    std::memcpy(&lanes, keys, sizeof lanes);
    return lanes;
}

[[gnu::always_inline]] inline FloatLanes Abs(FloatLanes x) {
    return std::bit_cast<FloatLanes>(std::bit_cast<LaneBits>(x) &
                                     std::numeric_limits<std::int32_t>::max());
}

// What the quick step with turns makes of key after previous (the value it is unrolled
// from). With no turn to add it keeps the key, but a zero takes the sign of the difference
// added to it: -0 stays only below a negative reference.
double SteadyValue(double key, double previous, double turns) {
    if (turns != 0.0) {
        return key + 360.0 * turns;
    }
    const bool negativeZero = key == 0.0 && std::signbit(key);
    return negativeZero && !(previous < 0.0) ? 0.0 : key;
}

// Whether the walk's step for key index from ref is the quick one adding whole turns on
// every axis, with no gimbal-lock split: the first key of a steady run, its turns then in
// turns. Checked the walk's own way, in double arithmetic.
bool SteadyStart(FbxAnimCurve* const* curves, int index, const FbxDouble3& ref,
                 FbxEuler::EOrder order, std::array<double, 3>& turns) {
    FbxDouble3 out;
    for (size_t i = 0; i < 3; ++i) {
        const auto axis = static_cast<int>(i);
        const double key = curves[i]->KeyGetValue(index);
        if (!(std::abs(key) < kSteadyRange) || !QuickTurn(key, ref[axis], out[axis])) {
            return false;
        }
        turns[i] = RoundHalfAway((ref[axis] - key) / 360.0);
        const double steady = SteadyValue(key, ref[axis], turns[i]);
        if (!(std::abs(turns[i]) < kSteadyTurns) ||
            std::bit_cast<std::uint64_t>(out[axis]) != std::bit_cast<std::uint64_t>(steady)) {
            return false;
        }
    }
    int a = 0, b = 1, c = 2;
    FbxEuler::GetAxes(order, a, b, c);
    const FbxDouble3 quick = out;
    ResolveGimbalLock(out, ref, a, b, c, FbxEuler::IsParityEven(order));
    // A split by zero may still flip the sign of a zero.
    return std::bit_cast<std::array<std::uint64_t, 3>>(out) ==
           std::bit_cast<std::array<std::uint64_t, 3>>(quick);
}

// Lanes (all bits set) of keys k.. whose step on axis stays steady: in range and within a
// sixth of a turn of the key before. On the order's middle axis, lanes whose angle may be
// split for gimbal lock are left out too. Lanes holding -0 are added to zeros.
[[gnu::always_inline]] inline LaneBits SteadyLanes(const SteadyBlock& block, size_t axis, int k,
                                                   bool middle, LaneBits& zeros) {
    const float* keys = block.keys[axis].data() + 1 + k;
    const FloatLanes value = LoadLanes(keys);
    zeros |= std::bit_cast<LaneBits>(value) == std::numeric_limits<std::int32_t>::min();
    LaneBits steady = Abs(value) < kSteadyRange;
    steady &= Abs(value - LoadLanes(keys - 1)) < kSteadyStep;
    if (middle) {
        // Adding and taking away 1.5 * 2^23 rounds to a whole number of half turns.
        constexpr float kRounder = 12582912.0f;
        const FloatLanes halfTurns = (value - 90.0f) * (1.0f / 180.0f);
        steady &= Abs(halfTurns - ((halfTurns + kRounder) - kRounder)) > kSteadyLockMargin;
    }
    return steady;
}

// The steady run of keys after key first (at most count of them), which starts a run with
// turns, middle being the order's middle axis: its length; key first on in block.
int SteadyRun(FbxAnimCurve* const* curves, int first, int count, const std::array<double, 3>& turns,
              int middle, SteadyBlock& block) {
    block.turns = turns;
    for (size_t i = 0; i < 3; ++i) {
        float* keys = block.keys[i].data();
        curves[i]->KeyGetRange(first, count + 1, nullptr, keys, nullptr);
        std::fill_n(keys + 1 + count, kLanes, 0.0f);
    }
    // -0 lanes, on the way: keys of the block, a few perhaps past the run.
    std::array<LaneBits, 3> zeros{};
    int run = count;
    for (int k = 0; k < count; k += kLanes) {
        LaneBits steady = SteadyLanes(block, 0, k, middle == 0, zeros[0]);
        steady &= SteadyLanes(block, 1, k, middle == 1, zeros[1]);
        steady &= SteadyLanes(block, 2, k, middle == 2, zeros[2]);
        if ((steady[0] & steady[1] & steady[2] & steady[3]) == 0) {
            int lane = 0;
            while (steady[lane] != 0) {
                ++lane;
            }
            run = std::min(count, k + lane);
            break;
        }
    }
    for (size_t i = 0; i < 3; ++i) {
        const float key = block.keys[i][0];
        block.zeros[i] = (zeros[i][0] | zeros[i][1] | zeros[i][2] | zeros[i][3]) != 0 ||
                         (key == 0.0f && std::signbit(key));
    }
    return run;
}

// Stores an axis's run with no turn to add: the keys stay, but a -0 may become +0 (see
// SteadyValue), from ref for the first key. Returns the last key's value.
double CommitKeptAxis(FbxAnimCurve& curve, int first, int run, const float* keys, double ref,
                      bool write) {
    double previous = ref;
    for (int k = 0; k < run; ++k) {
        const double value = SteadyValue(keys[k], previous, 0.0);
        if (write && std::signbit(value) != std::signbit(keys[k])) {
            curve.KeySetValue(first + k, static_cast<float>(value));
        }
        previous = value;
    }
    return previous;
}

// Stores the run's values (written when write is set) and moves ref to its last key; true
// when a value changes, as a turn added to keys below a million degrees does: float
// rounding cannot take it back. A zero changing its sign is no change.
bool CommitSteadyRun(FbxAnimCurve* const* curves, int first, int run, const SteadyBlock& block,
                     bool write, FbxDouble3& ref) {
    bool changed = false;
    for (size_t i = 0; i < 3 && run > 0; ++i) {
        const float* keys = block.keys[i].data();
        const double shift = 360.0 * block.turns[i];
        const auto axis = static_cast<int>(i);
        if (shift == 0.0) {
            ref[axis] = block.zeros[i]
                            ? CommitKeptAxis(*curves[i], first, run, keys, ref[axis], write)
                            : keys[run - 1];
            continue;
        }
        changed = true;
        ref[axis] = keys[run - 1] + shift;
        for (int k = 0; k < run && write; ++k) {
            curves[i]->KeySetValue(first + k, static_cast<float>(keys[k] + shift));
        }
    }
    return changed;
}

// Three scratch copies of the input curves, destroyed with this holder.
struct Temporaries {
    std::array<FbxAnimCurve*, 3> curves{};

    explicit Temporaries(FbxAnimCurve** inputs) {
        FbxScene* scene = inputs[0]->GetScene();
        for (int i = 0; i < 3; ++i) {
            char name[16];
            std::snprintf(name, sizeof name, "tmp%d", i);
            curves[i] = scene ? FbxAnimCurve::Create(scene, name)
                              : FbxAnimCurve::Create(inputs[0]->GetManager(), name);
            curves[i]->CopyFrom(*inputs[i]);
        }
    }
    ~Temporaries() {
        for (FbxAnimCurve* curve : curves) {
            curve->Destroy();
        }
    }
    Temporaries(const Temporaries&) = delete;
    Temporaries& operator=(const Temporaries&) = delete;
};

}  // namespace

FbxAnimCurveFilterUnroll::FbxAnimCurveFilterUnroll() {
    Reset();
}

void FbxAnimCurveFilterUnroll::Reset() {
    FbxAnimCurveFilter::Reset();
    mQualityTolerance = kDefaultQualityTolerance;
    mTestForPath = false;
    mForceAutoTangents = false;
    mRotationOrder = FbxEuler::eOrderXYZ;
    mReplaceMode = 0;
}

bool FbxAnimCurveFilterUnroll::V2VRef(FbxDouble3& out, const FbxDouble3& in, const FbxDouble3& ref,
                                      FbxEuler::EOrder order) {
    int a = 0, b = 1, c = 2;
    if (!FbxEuler::GetAxes(order, a, b, c)) {
        out = in;
        return false;
    }
    if (QuickDirect(out, in, ref)) {
        if (MaybeQuarterTurn(out[b])) {
            ResolveGimbalLock(out, ref, a, b, c, FbxEuler::IsParityEven(order));
        }
        return false;
    }
    FbxDouble3 direct;
    direct[a] = NearestTurn(in[a], ref[a]);
    direct[b] = NearestTurn(in[b], ref[b]);
    direct[c] = NearestTurn(in[c], ref[c]);
    FbxDouble3 flipped;
    flipped[a] = NearestTurn(in[a] + 180.0, ref[a]);
    flipped[b] = NearestTurn(180.0 - in[b], ref[b]);
    flipped[c] = NearestTurn(in[c] + 180.0, ref[c]);
    const bool takeFlipped = SquaredDistance(flipped, ref) <= SquaredDistance(direct, ref);
    out = takeFlipped ? flipped : direct;
    ResolveGimbalLock(out, ref, a, b, c, FbxEuler::IsParityEven(order));
    return takeFlipped;
}

double FbxAnimCurveFilterUnroll::InterpolationQualityFactor(const FbxVector4& a,
                                                            const FbxVector4& b,
                                                            FbxEuler::EOrder order) {
    double s = 0.0;
    for (int i = 0; i < 4; ++i) {
        s += (a[i] - b[i]) * (a[i] - b[i]);
    }
    if (s <= 2.220446049250313e-16) {
        return 100.0;
    }
    const Matrix ma = EulerMatrix(a, order);
    const Matrix mb = EulerMatrix(b, order);
    // trace(A^T B) = 1 + 2 cos(angle of the relative rotation)
    double trace = 0.0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            trace += ma[r][c] * mb[r][c];
        }
    }
    const double angle = std::acos(std::clamp((trace - 1.0) / 2.0, -1.0, 1.0)) / kDegree;
    return angle * angle / s;
}

bool FbxAnimCurveFilterUnroll::Apply(FbxAnimCurve** curves, int count, FbxStatus* status) {
    bool changed = false;
    return Run(curves, count, status, true, changed);
}

bool FbxAnimCurveFilterUnroll::NeedApply(FbxAnimCurve** curves, int count, FbxStatus* status) {
    bool changed = false;
    return Run(curves, count, status, false, changed) && changed;
}

bool FbxAnimCurveFilterUnroll::NeedApply(FbxAnimCurveNode& node, FbxStatus* status) {
    std::vector<FbxAnimCurve*> curves = Curves(node);
    return NeedApply(curves.data(), static_cast<int>(curves.size()), status);
}

bool FbxAnimCurveFilterUnroll::NeedApply(FbxAnimCurve& curve, FbxStatus* status) {
    FbxAnimCurve* curves[] = {&curve};
    return NeedApply(curves, 1, status);
}

bool FbxAnimCurveFilterUnroll::NeedApply(FbxAnimStack& stack, FbxStatus* status) {
    const std::vector<FbxAnimCurveNode*> nodes = CurveNodes(stack, nullptr);
    return std::any_of(nodes.begin(), nodes.end(),
                       [&](FbxAnimCurveNode* node) { return NeedApply(*node, status); });
}

bool FbxAnimCurveFilterUnroll::NeedApply(FbxObject& object, FbxAnimStack& stack,
                                         FbxStatus* status) {
    const std::vector<FbxAnimCurveNode*> nodes = CurveNodes(stack, &object);
    return std::any_of(nodes.begin(), nodes.end(),
                       [&](FbxAnimCurveNode* node) { return NeedApply(*node, status); });
}

bool FbxAnimCurveFilterUnroll::Treats(const FbxAnimCurveNode& node) const {
    for (int i = 0; i < node.GetDstPropertyCount(); ++i) {
        if (node.GetDstProperty(i).GetName() == "Lcl Rotation") {
            return true;
        }
    }
    return false;
}

bool FbxAnimCurveFilterUnroll::Check(FbxAnimCurve** curves, int count, FbxStatus* status,
                                     FbxTimeSpan& span) const {
    if (status) {
        status->Clear();
    }
    if (count != 3 || !curves) {
        Fail(status, "Number of animation curves is not 3");
        return false;
    }
    if (!curves[0] || !curves[1] || !curves[2]) {
        Fail(status, "Not enough animation curves found");
        return false;
    }
    bool any = false;
    FbxTime first = FBX_TIME_INFINITE;
    FbxTime last = FBX_TIME_MINUS_INFINITE;
    for (int i = 0; i < 3; ++i) {
        const int keys = curves[i]->KeyGetCount();
        if (keys > 0) {
            any = true;
            first = std::min(first, curves[i]->KeyGetTime(0));
            last = std::max(last, curves[i]->KeyGetTime(keys - 1));
        }
    }
    if (!any) {
        Fail(status, "No keys");
        return false;
    }
    span.Set(std::max(first, mStart), std::min(last, mStop));
    return true;
}

namespace {

// Index of the first key of curve for which before(time) is false; keys are in time order.
template <class Before>
int FirstKeyNotBefore(const FbxAnimCurve& curve, Before before) {
    int lo = 0;
    int hi = curve.KeyGetCount();
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (before(curve.KeyGetTime(mid))) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    return lo;
}

// Indices of the first and last keys of curve within span; first is -1 when none is.
void SpanIndices(const FbxAnimCurve& curve, const FbxTimeSpan& span, int& first, int& last) {
    first = FirstKeyNotBefore(curve, [&](FbxTime t) { return t < span.GetStart(); });
    last = FirstKeyNotBefore(curve, [&](FbxTime t) { return t <= span.GetStop(); }) - 1;
    if (first > last) {
        first = -1;
        last = -1;
    }
}

}  // namespace

bool FbxAnimCurveFilterUnroll::Run(FbxAnimCurve** curves, int count, FbxStatus* status, bool commit,
                                   bool& changed) {
    FbxTimeSpan span;
    if (!Check(curves, count, status, span)) {
        return false;
    }
    int firstIndex = -1;
    int lastIndex = -1;
    if (curves[0]->KeyTimesEqual(*curves[1]) && curves[0]->KeyTimesEqual(*curves[2])) {
        SpanIndices(*curves[0], span, firstIndex, lastIndex);
        if (firstIndex < 0) {
            Fail(status, "No key to be filtered");
            return false;
        }
        RunInPlace(curves, span, firstIndex, lastIndex, commit, changed);
        return true;
    }
    Temporaries temporaries(curves);
    FbxAnimCurve** temps = temporaries.curves.data();
    FbxAnimCurveFilterKeySync sync;
    sync.SetStartTime(span.GetStart());
    sync.SetStopTime(span.GetStop());
    sync.Apply(temps, 3);
    SpanIndices(*temps[0], span, firstIndex, lastIndex);
    if (firstIndex < 0) {
        Fail(status, "No key to be filtered");
        return false;
    }
    // A span of one key is left as it is: there is nothing to unroll it against.
    if (firstIndex == lastIndex) {
        return true;
    }
    changed = Walk(temps, firstIndex, lastIndex, true);
    if (commit) {
        for (int i = 0; i < 3; ++i) {
            ReplaceSpan(*curves[i], *temps[i], span);
        }
    }
    return true;
}

// The same outcome as walking copies and replacing the span with them: the keys keep their
// times, so only values and tangents change, and in replace mode 2 the keys after the span.
void FbxAnimCurveFilterUnroll::RunInPlace(FbxAnimCurve** curves, const FbxTimeSpan& span, int first,
                                          int last, bool commit, bool& changed) const {
    if (first == last) {
        return;
    }
    if (!commit) {
        changed = Walk(curves, first, last, false);
        return;
    }
    std::array<float, 3> before{};
    for (int i = 0; i < 3; ++i) {
        curves[i]->KeyModifyBegin();
        before[static_cast<size_t>(i)] = curves[i]->Evaluate(span.GetStop());
    }
    changed = Walk(curves, first, last, true);
    for (int i = 0; i < 3; ++i) {
        if (mReplaceMode == 2) {
            ShiftAfterSpan(*curves[i], span, before[static_cast<size_t>(i)]);
        }
        curves[i]->KeyModifyEnd();
    }
}

// Rewrites keys first..last of the three curves in place; true when a value changed.
bool FbxAnimCurveFilterUnroll::Walk(FbxAnimCurve** curves, int first, int last, bool write) const {
    FbxDouble3 ref = first > 0 ? KeyTriple(curves, first - 1) : FbxDouble3(0.0, 0.0, 0.0);
    bool changed = false;
    int a = 0, b = 1, c = 2;
    // The path test looks at every step; the spheric order keeps every key as it is.
    const bool runs = !mTestForPath && FbxEuler::GetAxes(mRotationOrder, a, b, c);
    SteadyBlock block;
    std::array<double, 3> turns{};
    int blockSize = kSteadyFirstBlock;
    for (int j = first; j <= last;) {
        if (runs && SteadyStart(curves, j, ref, mRotationOrder, turns)) {
            const int count = std::min(blockSize, last - j);
            const int run = 1 + SteadyRun(curves, j, count, turns, b, block);
            changed = CommitSteadyRun(curves, j, run, block, write, ref) || changed;
            j += run;
            blockSize = run > count ? std::min(2 * blockSize, kSteadyBlock) : kSteadyFirstBlock;
            continue;
        }
        if (!Step(curves, j, write, ref, changed)) {
            break;
        }
        ++j;
    }
    return changed;
}

// One key the full way: flips, whole turns, gimbal lock and the path test, which may stop
// the walk (false).
bool FbxAnimCurveFilterUnroll::Step(FbxAnimCurve** curves, int index, bool write, FbxDouble3& ref,
                                    bool& changed) const {
    const FbxDouble3 in = KeyTriple(curves, index);
    FbxDouble3 out;
    const bool flipped = V2VRef(out, in, ref, mRotationOrder);
    for (int i = 0; i < 3; ++i) {
        const float value = static_cast<float>(out[i]);
        changed = changed || value != curves[i]->KeyGetValue(index);
        if (write) {
            curves[i]->KeySetValue(index, value);
        }
        if (write && mForceAutoTangents && flipped) {
            ForceAutoTangent(*curves[i], index);
        }
    }
    if (mTestForPath && InterpolationQualityFactor(FbxVector4(ref[0], ref[1], ref[2], 1.0),
                                                   FbxVector4(out[0], out[1], out[2], 1.0),
                                                   mRotationOrder) < mQualityTolerance) {
        return false;
    }
    ref = out;
    return true;
}

void FbxAnimCurveFilterUnroll::ForceAutoTangent(FbxAnimCurve& curve, int index) {
    const FbxUInt32 flags = curve.KeyGetFlags(index);
    const FbxUInt32 mode = flags & FbxAnimCurveDef::kTangentModeMask &
                           ~static_cast<FbxUInt32>(FbxAnimCurveDef::eTangentGenericBreak);
    if ((flags & FbxAnimCurveDef::kInterpolationMask) != FbxAnimCurveDef::eInterpolationCubic ||
        mode != FbxAnimCurveDef::eTangentUser) {
        return;
    }
    curve.KeySetFlags(index, (flags & ~FbxAnimCurveDef::kTangentModeMask) | 0x6100u);
    curve.KeySetLeftDerivative(index, 0.0f);
    curve.KeySetRightDerivative(index, 0.0f);
}

// In replace mode 2 the keys after the span move by the whole turns the last
// key moved, so the curve stays continuous past the span.
void FbxAnimCurveFilterUnroll::ReplaceSpan(FbxAnimCurve& curve, const FbxAnimCurve& unrolled,
                                           const FbxTimeSpan& span) const {
    curve.KeyModifyBegin();
    const float before = curve.Evaluate(span.GetStop());
    curve.Replace(unrolled, span.GetStart(), span.GetStop());
    if (mReplaceMode == 2) {
        ShiftAfterSpan(curve, span, before);
    }
    curve.KeyModifyEnd();
}

void FbxAnimCurveFilterUnroll::ShiftAfterSpan(FbxAnimCurve& curve, const FbxTimeSpan& span,
                                              float before) {
    const double turns = std::round((curve.Evaluate(span.GetStop()) - before) / 360.0);
    if (turns == 0.0) {
        return;
    }
    for (int k = curve.KeyGetCount() - 1; k >= 0 && curve.KeyGetTime(k) > span.GetStop(); --k) {
        curve.KeySetValue(k, static_cast<float>(curve.KeyGetValue(k) + 360.0 * turns));
    }
}
