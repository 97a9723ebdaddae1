#include "fbx/scene/fbxanimcurvefilterunroll.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
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
    for (int j = first; j <= last; ++j) {
        const FbxDouble3 in = KeyTriple(curves, j);
        FbxDouble3 out;
        const bool flipped = V2VRef(out, in, ref, mRotationOrder);
        for (int i = 0; i < 3 && write; ++i) {
            const float value = static_cast<float>(out[i]);
            changed = changed || value != curves[i]->KeyGetValue(j);
            curves[i]->KeySetValue(j, value);
            if (mForceAutoTangents && flipped) {
                ForceAutoTangent(*curves[i], j);
            }
        }
        for (int i = 0; i < 3 && !write; ++i) {
            changed = changed || static_cast<float>(out[i]) != curves[i]->KeyGetValue(j);
        }
        if (mTestForPath && InterpolationQualityFactor(FbxVector4(ref[0], ref[1], ref[2], 1.0),
                                                       FbxVector4(out[0], out[1], out[2], 1.0),
                                                       mRotationOrder) < mQualityTolerance) {
            break;
        }
        ref = out;
    }
    return changed;
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
