#include "fbx/scene/fbxanimcurve.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxAnimCurve, "AnimationCurve", "AnimCurve", false)

namespace {

const FbxAnimCurveKeyAttribute kDefaultAttribute;

FbxUInt32 Bits(float value) {
    return std::bit_cast<FbxUInt32>(value);
}

template <typename T>
void Erase(std::vector<T>& column, int first, int last) {
    if (!column.empty()) column.erase(column.begin() + first, column.begin() + last + 1);
}

}  // namespace

FbxAnimCurve::FbxAnimCurve(FbxManager& manager, const char* name) : FbxObject(manager, name) {}

FbxAnimCurve::~FbxAnimCurve() = default;

FbxLongLong FbxAnimCurve::TimeAt(int index) const {
    return mTimesListed ? mTimes[index] : EvenTime(mTimeFirst, mTimeStep, index);
}

float FbxAnimCurve::RightSlopeAt(int index) const {
    return mRightSlopes.empty() ? 0.0f : mRightSlopes[static_cast<size_t>(index)];
}

float FbxAnimCurve::NextLeftSlopeAt(int index) const {
    return mNextLeftSlopes.empty() ? 0.0f : mNextLeftSlopes[static_cast<size_t>(index)];
}

FbxAnimCurve::Key FbxAnimCurve::KeyAt(int index) const {
    return Key{TimeAt(index), mValues[static_cast<size_t>(index)], RightSlopeAt(index),
               NextLeftSlopeAt(index), SharedAt(index)};
}

// The column may hold these times already: another curve sharing it listed them first.
void FbxAnimCurve::ListTimes() {
    for (int i = 0; i < mKeyCount; ++i) mTimes.Place(i, EvenTime(mTimeFirst, mTimeStep, i));
    mTimes.Reserve(static_cast<int>(mValues.capacity()));
    mTimesListed = true;
}

// A key reset at its own time leaves a shared time column shared.
void FbxAnimCurve::SetTime(int index, FbxLongLong time) {
    if (TimeAt(index) == time) return;
    if (index == mKeyCount - 1) mTimeLast = time;
    if (!mTimesListed) {
        if (mKeyCount == 1) {
            mTimeFirst = time;
            return;
        }
        ListTimes();
    }
    mTimes.Own(mKeyCount)[static_cast<size_t>(index)] = time;
}

void FbxAnimCurve::SetShared(int index, FbxUInt32 shared) {
    if (!mSharedIsWide && shared > 0xFF) {
        mSharedWide.assign(mSharedSmall.begin(), mSharedSmall.end());
        mSharedSmall = {};
        mSharedIsWide = true;
    }
    const auto i = static_cast<size_t>(index);
    if (mSharedIsWide) {
        mSharedWide[i] = shared;
    } else {
        mSharedSmall[i] = static_cast<uint8_t>(shared);
    }
}

// A slope column comes into being with the first slope that is not zero (bit for bit:
// files keep -0).
void FbxAnimCurve::SetSlope(std::vector<float>& column, int index, float slope) {
    if (column.empty()) {
        if (Bits(slope) == 0) return;
        column.reserve(mValues.capacity());
        column.assign(static_cast<size_t>(mKeyCount), 0.0f);
    }
    column[static_cast<size_t>(index)] = slope;
}

void FbxAnimCurve::SetKey(int index, const Key& key) {
    SetTime(index, key.time);
    mValues[static_cast<size_t>(index)] = key.value;
    SetSlope(mRightSlopes, index, key.rightSlope);
    SetSlope(mNextLeftSlopes, index, key.nextLeftSlope);
    SetShared(index, key.shared);
}

// Appending at the next even step keeps the times unlisted.
void FbxAnimCurve::InsertKey(int index, const Key& key) {
    const bool append = index == mKeyCount;
    if (!mTimesListed) {
        if (append && mKeyCount == 0) {
            mTimeFirst = key.time;
        } else if (append && mKeyCount == 1) {
            mTimeStep = static_cast<FbxLongLong>(static_cast<FbxULongLong>(key.time) -
                                                 static_cast<FbxULongLong>(mTimeFirst));
        } else if (!append || EvenTime(mTimeFirst, mTimeStep, index) != key.time) {
            ListTimes();
        }
    }
    const auto at = static_cast<ptrdiff_t>(index);
    if (mTimesListed && append) {
        mTimes.Place(index, key.time);
    } else if (mTimesListed) {
        std::vector<FbxLongLong>& times = mTimes.Own(mKeyCount);
        times.insert(times.begin() + at, key.time);
    }
    if (append) mTimeLast = key.time;
    mValues.insert(mValues.begin() + at, key.value);
    if (!mRightSlopes.empty()) mRightSlopes.insert(mRightSlopes.begin() + at, 0.0f);
    if (!mNextLeftSlopes.empty()) mNextLeftSlopes.insert(mNextLeftSlopes.begin() + at, 0.0f);
    if (mSharedIsWide) {
        mSharedWide.insert(mSharedWide.begin() + at, 0);
    } else {
        mSharedSmall.insert(mSharedSmall.begin() + at, 0);
    }
    ++mKeyCount;
    SetSlope(mRightSlopes, index, key.rightSlope);
    SetSlope(mNextLeftSlopes, index, key.nextLeftSlope);
    SetShared(index, key.shared);
}

// A take keyed frame by frame appends with zero slopes: each column grows at its end.
void FbxAnimCurve::AppendKey(const Key& key) {
    const bool placed =
        mTimesListed || (mKeyCount >= 2 && EvenTime(mTimeFirst, mTimeStep, mKeyCount) == key.time);
    if (!placed || !mRightSlopes.empty() || !mNextLeftSlopes.empty() || Bits(key.rightSlope) != 0 ||
        Bits(key.nextLeftSlope) != 0 || mSharedIsWide || key.shared > 0xFF) {
        InsertKey(mKeyCount, key);
        return;
    }
    if (mTimesListed) {
        mTimes.Place(mKeyCount, key.time);
    }
    mTimeLast = key.time;
    mValues.push_back(key.value);
    mSharedSmall.push_back(static_cast<uint8_t>(key.shared));
    ++mKeyCount;
}

// Removing keys from either end keeps even times unlisted; removing the last keys shortens
// only this curve's view of listed times.
void FbxAnimCurve::EraseKeys(int first, int last) {
    if (!mTimesListed && first == 0) {
        mTimeFirst = EvenTime(mTimeFirst, mTimeStep, last + 1);
    } else if (!mTimesListed && last != mKeyCount - 1) {
        ListTimes();
    }
    if (mTimesListed && last != mKeyCount - 1) {
        Erase(mTimes.Own(mKeyCount), first, last);
    }
    Erase(mValues, first, last);
    Erase(mRightSlopes, first, last);
    Erase(mNextLeftSlopes, first, last);
    Erase(mSharedSmall, first, last);
    Erase(mSharedWide, first, last);
    mKeyCount -= last - first + 1;
    if (mKeyCount > 0) mTimeLast = TimeAt(mKeyCount - 1);
}

void FbxAnimCurve::Reserve(int count) {
    const auto n = static_cast<size_t>(std::max(count, 0));
    mValues.reserve(n);
    if (mTimesListed) mTimes.Reserve(count);
    if (!mRightSlopes.empty()) mRightSlopes.reserve(n);
    if (!mNextLeftSlopes.empty()) mNextLeftSlopes.reserve(n);
    if (mSharedIsWide) {
        mSharedWide.reserve(n);
    } else {
        mSharedSmall.reserve(n);
    }
}

// Keys of one curve share few distinct attributes; the two used last are
// checked first, since a writer alternates between a new key's attribute and
// the one it switches the key to.
FbxUInt32 FbxAnimCurve::Share(const SharedAttribute& attribute) {
    for (FbxUInt32 recent : mRecentShared) {
        if (recent < mShared.size() && mShared[recent] == attribute) {
            return recent;
        }
    }
    const FbxULongLong hash = (FbxULongLong{attribute.flags} << 32 | attribute.weights) ^
                              (FbxULongLong{attribute.velocities} * 0x9E3779B97F4A7C15ULL);
    std::vector<FbxUInt32>& candidates = mSharedIndex[hash];
    FbxUInt32 found = static_cast<FbxUInt32>(mShared.size());
    for (FbxUInt32 index : candidates) {
        if (mShared[index] == attribute) {
            found = index;
        }
    }
    if (found == mShared.size()) {
        mShared.push_back(attribute);
        candidates.push_back(found);
    }
    mRecentShared[1] = mRecentShared[0];
    mRecentShared[0] = found;
    return found;
}

FbxAnimCurve::Key FbxAnimCurve::MakeKey(FbxTime time, const FbxAnimCurveKeyAttribute& attribute) {
    return Key{time.Get(), 0.0f, std::bit_cast<float>(attribute.mData[0]),
               std::bit_cast<float>(attribute.mData[1]),
               Share({attribute.mFlags, attribute.mData[2], attribute.mData[3]})};
}

FbxAnimCurve::Key FbxAnimCurve::DefaultKey(FbxTime time) {
    if (mDefaultShared == kNoShared) {
        mDefaultShared = MakeKey(time, kDefaultAttribute).shared;
    }
    return Key{time.Get(), 0.0f, kDefaultAttribute.GetDataFloat(0),
               kDefaultAttribute.GetDataFloat(1), mDefaultShared};
}

FbxAnimCurveKeyAttribute FbxAnimCurve::AttributeOf(const Key& key) const {
    const SharedAttribute& shared = mShared[key.shared];
    FbxAnimCurveKeyAttribute attribute;
    attribute.mFlags = shared.flags;
    attribute.mData[0] = Bits(key.rightSlope);
    attribute.mData[1] = Bits(key.nextLeftSlope);
    attribute.mData[2] = shared.weights;
    attribute.mData[3] = shared.velocities;
    return attribute;
}

// Out of line: the inline key path only ever holds changes back.
void FbxAnimCurve::Deliver(unsigned changes) {
    mListener(*this, changes);
}

int FbxAnimCurve::LowerBound(FbxTime time) const {
    if (!mTimesListed) {
        int lo = 0;
        int hi = mKeyCount;
        while (lo < hi) {
            const int mid = lo + (hi - lo) / 2;
            if (TimeAt(mid) < time.Get()) {
                lo = mid + 1;
            } else {
                hi = mid;
            }
        }
        return lo;
    }
    const FbxLongLong* times = mTimes.Data();
    return static_cast<int>(std::lower_bound(times, times + mKeyCount, time.Get()) - times);
}

// Everything but a plain append (AppendsPlainly).
int FbxAnimCurve::AddKey(FbxTime time, int* last) {
    mLastEvaluated = 0;
    const Key key = DefaultKey(time);
    int index = mKeyCount;
    // Writers append in time order: the last key decides before any search.
    if (mKeyCount > 0 && time.Get() <= TimeAt(mKeyCount - 1)) {
        index = LowerBound(time);
        if (TimeAt(index) == time.Get()) {
            SetKey(index, key);
            Notify(eKeyValueChanged | eKeyAttributeChanged);
            return last ? (*last = index) : index;
        }
    }
    if (index == mKeyCount) {
        AppendKey(key);
    } else {
        InsertKey(index, key);
    }
    Notify(eKeyAdded);
    return last ? (*last = index) : index;
}

bool FbxAnimCurve::KeySet(int index, FbxTime time, float value,
                          FbxAnimCurveDef::EInterpolationType interpolation,
                          FbxAnimCurveDef::ETangentMode tangentMode) {
    const bool ordered = Valid(index) && (index == 0 || TimeAt(index - 1) < time.Get()) &&
                         (index + 1 == mKeyCount || time.Get() < TimeAt(index + 1));
    if (!ordered) {
        return false;
    }
    KeyModifyBegin();
    SetTime(index, time.Get());
    KeySetValue(index, value);
    KeySetInterpolation(index, interpolation);
    KeySetTangentMode(index, tangentMode);
    KeyModifyEnd();
    return true;
}

bool FbxAnimCurve::KeyRemove(int index) {
    return KeyRemove(index, index);
}

bool FbxAnimCurve::KeyRemove(int first, int last) {
    if (first < 0 || last < first || last >= mKeyCount) {
        return false;
    }
    EraseKeys(first, last);
    mLastEvaluated = 0;
    Notify(eKeyRemoved);
    return true;
}

void FbxAnimCurve::KeyClear() {
    if (mKeyCount == 0) {
        return;
    }
    mKeyCount = 0;
    mValues = {};
    mTimesListed = false;
    mTimes.Release();
    mRightSlopes = {};
    mNextLeftSlopes = {};
    mSharedSmall = {};
    mSharedWide = {};
    mSharedIsWide = false;
    mLastEvaluated = 0;
    Notify(eKeyRemoved);
}

void FbxAnimCurve::ResizeKeyBuffer(int count) {
    Reserve(count);
}

// Writers switch key after key from the same entry to the same flags.
void FbxAnimCurve::SetFlags(int index, FbxUInt32 flags) {
    const FbxUInt32 shared = SharedAt(index);
    if (shared != mLastFlagChange.from || flags != mLastFlagChange.flags) {
        SharedAttribute changed = mShared[shared];
        changed.flags = flags;
        mLastFlagChange = {shared, flags, Share(changed)};
    }
    SetShared(index, mLastFlagChange.to);
    Notify(eKeyAttributeChanged);
}

// The weighting and velocity bits stay as they are: a linear key ignores them.
void FbxAnimCurve::SwitchInterpolation(int index,
                                       FbxAnimCurveDef::EInterpolationType interpolation) {
    const FbxUInt32 shared = SharedAt(index);
    const FbxUInt32 mask = FbxAnimCurveDef::kInterpolationMask;
    SetFlags(index, (mShared[shared].flags & ~mask) | (interpolation & mask));
    mLastInterpolation = {shared, static_cast<FbxUInt32>(interpolation), SharedAt(index)};
}

void FbxAnimCurve::KeySetFlags(int index, FbxUInt32 flags) {
    if (Valid(index)) {
        SetFlags(index, flags);
    }
}

void FbxAnimCurve::KeySetTangentMode(int index, FbxAnimCurveDef::ETangentMode mode) {
    if (Valid(index)) {
        const FbxUInt32 mask = FbxAnimCurveDef::kTangentModeMask;
        SetFlags(index, (mShared[SharedAt(index)].flags & ~mask) | (mode & mask));
    }
}

void FbxAnimCurve::KeySetAttribute(int index, const FbxAnimCurveKeyAttribute& attribute) {
    if (!Valid(index)) {
        return;
    }
    const Key made = MakeKey(FbxTime(TimeAt(index)), attribute);
    SetSlope(mRightSlopes, index, made.rightSlope);
    SetSlope(mNextLeftSlopes, index, made.nextLeftSlope);
    SetShared(index, made.shared);
    Notify(eKeyAttributeChanged);
}

void FbxAnimCurve::KeySetRightDerivative(int index, float slope) {
    if (Valid(index)) {
        SetSlope(mRightSlopes, index, slope);
        Notify(eKeyAttributeChanged);
    }
}

void FbxAnimCurve::KeySetLeftDerivative(int index, float slope) {
    if (index > 0 && Valid(index)) {
        SetSlope(mNextLeftSlopes, index - 1, slope);
        Notify(eKeyAttributeChanged);
    }
}

FbxTime FbxAnimCurve::KeyGetTime(int index) const {
    return FbxTime(Valid(index) ? TimeAt(index) : 0);
}

FbxUInt32 FbxAnimCurve::KeyGetFlags(int index) const {
    return Valid(index) ? mShared[SharedAt(index)].flags : kDefaultAttribute.mFlags;
}

FbxAnimCurveDef::EInterpolationType FbxAnimCurve::KeyGetInterpolation(int index) const {
    return static_cast<FbxAnimCurveDef::EInterpolationType>(KeyGetFlags(index) &
                                                            FbxAnimCurveDef::kInterpolationMask);
}

FbxAnimCurveDef::ETangentMode FbxAnimCurve::KeyGetTangentMode(int index) const {
    return static_cast<FbxAnimCurveDef::ETangentMode>(KeyGetFlags(index) &
                                                      FbxAnimCurveDef::kTangentModeMask);
}

FbxAnimCurveKeyAttribute FbxAnimCurve::KeyGetAttribute(int index) const {
    return Valid(index) ? AttributeOf(KeyAt(index)) : kDefaultAttribute;
}

float FbxAnimCurve::KeyGetRightDerivative(int index) const {
    return Valid(index) ? RightSlopeAt(index) : 0.0f;
}

float FbxAnimCurve::KeyGetLeftDerivative(int index) const {
    return index > 0 && Valid(index) ? NextLeftSlopeAt(index - 1) : 0.0f;
}

void FbxAnimCurve::KeyGetRange(int first, int count, FbxLongLong* times, float* values,
                               FbxAnimCurveKeyAttribute* attributes) const {
    const int begin = std::max(first, 0);
    const auto end =
        static_cast<int>(std::min<FbxLongLong>(FbxLongLong{first} + std::max(count, 0), mKeyCount));
    if (begin >= end) {
        return;
    }
    const auto out = static_cast<size_t>(begin - first);
    const auto from = static_cast<size_t>(begin);
    const auto n = static_cast<size_t>(end - begin);
    if (times && mTimesListed) {
        std::copy_n(mTimes.Data() + from, n, times + out);
    } else if (times) {
        for (int i = begin; i < end; ++i) {
            times[static_cast<size_t>(i - first)] = EvenTime(mTimeFirst, mTimeStep, i);
        }
    }
    if (values) {
        std::copy_n(mValues.begin() + static_cast<ptrdiff_t>(from), n, values + out);
    }
    for (int i = begin; attributes && i < end; ++i) {
        attributes[static_cast<size_t>(i - first)] = AttributeOf(KeyAt(i));
    }
}

// Keys share an attribute when they name the same shared entry and have the same slopes;
// without slopes that is a scan of the entry column.
int FbxAnimCurve::KeyGetAttributeRun(int first) const {
    if (!Valid(first)) {
        return 0;
    }
    const Key start = KeyAt(first);
    int i = first + 1;
    if (mRightSlopes.empty() && mNextLeftSlopes.empty() && !mSharedIsWide) {
        const auto begin = mSharedSmall.begin();
        i = static_cast<int>(std::find_if(begin + first + 1, begin + mKeyCount,
                                          [&](uint8_t s) { return s != start.shared; }) -
                             begin);
    } else {
        for (; i < mKeyCount; ++i) {
            const Key key = KeyAt(i);
            if (key.shared != start.shared || Bits(key.rightSlope) != Bits(start.rightSlope) ||
                Bits(key.nextLeftSlope) != Bits(start.nextLeftSlope)) {
                break;
            }
        }
    }
    return i - first;
}

bool FbxAnimCurve::KeyTimesEqual(const FbxAnimCurve& other) const {
    if (mKeyCount != other.mKeyCount) {
        return false;
    }
    if (mKeyCount == 0) {
        return true;
    }
    if (!mTimesListed && !other.mTimesListed) {
        return mTimeFirst == other.mTimeFirst && (mKeyCount == 1 || mTimeStep == other.mTimeStep);
    }
    if (mTimesListed && other.mTimesListed) {
        const FbxLongLong* times = mTimes.Data();
        return mTimes.SameAs(other.mTimes) ||
               std::equal(times, times + mKeyCount, other.mTimes.Data());
    }
    for (int i = 0; i < mKeyCount; ++i) {
        if (TimeAt(i) != other.TimeAt(i)) {
            return false;
        }
    }
    return true;
}

// Listed times are placed again in the joined column: they stay shared as far as they agree.
void FbxAnimCurve::KeyShareTimes(FbxAnimCurve& other) {
    if (&other == this || mTimes.SameAs(other.mTimes)) {
        return;
    }
    std::vector<FbxLongLong> times;
    if (mTimesListed) {
        times.assign(mTimes.Data(), mTimes.Data() + mKeyCount);
    }
    mTimes.Join(other.mTimes);
    for (size_t i = 0; i < times.size(); ++i) {
        mTimes.Place(static_cast<int>(i), times[i]);
    }
}

double FbxAnimCurve::KeyFind(FbxTime time, int* last) const {
    if (mKeyCount == 0) {
        return -1.0;
    }
    double position = 0.0;
    if (time.Get() >= TimeAt(mKeyCount - 1)) {
        position = mKeyCount - 1;
    } else if (time.Get() > TimeAt(0)) {
        const int above = LowerBound(time);
        const FbxLongLong next = TimeAt(above);
        if (next == time.Get()) {
            position = above;
        } else {
            const FbxLongLong previous = TimeAt(above - 1);
            position = (above - 1) + static_cast<double>(time.Get() - previous) /
                                         static_cast<double>(next - previous);
        }
    }
    if (last) {
        *last = static_cast<int>(position);
    }
    return position;
}

int FbxAnimCurve::KeyIndexAt(FbxTime time) const {
    if (mKeyCount == 0) {
        return -1;
    }
    const int index = LowerBound(time);
    return index < mKeyCount && TimeAt(index) == time.Get() ? index : -1;
}

// Auto tangents follow the neighbours (flat at the ends); other modes use the
// stored slopes. Slopes are in value units per second.
float FbxAnimCurve::CubicSlope(int index, bool right) const {
    const FbxUInt32 mode = KeyGetFlags(index) & FbxAnimCurveDef::kTangentModeMask;
    if (mode & (FbxAnimCurveDef::eTangentUser | FbxAnimCurveDef::eTangentGenericBreak)) {
        return right ? RightSlopeAt(index) : KeyGetLeftDerivative(index);
    }
    if (index == 0 || index + 1 >= mKeyCount) {
        return 0.0f;
    }
    const Key previous = KeyAt(index - 1);
    const Key next = KeyAt(index + 1);
    const double seconds =
        static_cast<double>(next.time - previous.time) / static_cast<double>(FBX_TC_SECOND);
    return static_cast<float>((next.value - previous.value) / seconds);
}

float FbxAnimCurve::Evaluate(FbxTime time, int* last) const {
    if (mKeyCount == 0) {
        return mDefaultValue;
    }
    const FbxLongLong t = time.Get();
    int i = std::clamp(mLastEvaluated, 0, mKeyCount - 1);
    if (t <= TimeAt(0) || t >= TimeAt(mKeyCount - 1)) {
        i = t <= TimeAt(0) ? 0 : mKeyCount - 1;
        mLastEvaluated = i;
        if (last) {
            *last = i;
        }
        return mValues[static_cast<size_t>(i)];
    }
    if (!(TimeAt(i) <= t && i + 1 < mKeyCount && t < TimeAt(i + 1))) {
        i = LowerBound(time);
        i = TimeAt(i) == t ? i : i - 1;
    }
    mLastEvaluated = i;
    if (last) {
        *last = i;
    }
    const Key a = KeyAt(i);
    const Key b = KeyAt(i + 1);
    const FbxUInt32 flags = mShared[a.shared].flags;
    const FbxUInt32 interpolation = flags & FbxAnimCurveDef::kInterpolationMask;
    if (interpolation == FbxAnimCurveDef::eInterpolationConstant) {
        return (flags & FbxAnimCurveDef::eConstantNext) ? b.value : a.value;
    }
    const double u = static_cast<double>(t - a.time) / static_cast<double>(b.time - a.time);
    if (interpolation != FbxAnimCurveDef::eInterpolationCubic) {
        return static_cast<float>(a.value + (b.value - a.value) * u);
    }
    const double span = static_cast<double>(b.time - a.time) / static_cast<double>(FBX_TC_SECOND);
    const double u2 = u * u;
    const double u3 = u2 * u;
    return static_cast<float>(
        (2 * u3 - 3 * u2 + 1) * a.value + (u3 - 2 * u2 + u) * span * CubicSlope(i, true) +
        (-2 * u3 + 3 * u2) * b.value + (u3 - u2) * span * CubicSlope(i + 1, false));
}

bool FbxAnimCurve::GetTimeInterval(FbxTimeSpan& span) const {
    if (mKeyCount == 0) {
        return false;
    }
    span.Set(FbxTime(TimeAt(0)), FbxTime(TimeAt(mKeyCount - 1)));
    return true;
}

void FbxAnimCurve::CopyFrom(const FbxAnimCurve& source, bool withKeys) {
    mDefaultValue = source.mDefaultValue;
    if (!withKeys || &source == this) {
        return;
    }
    mShared = source.mShared;
    mSharedIndex = source.mSharedIndex;
    mRecentShared = source.mRecentShared;
    mDefaultShared = source.mDefaultShared;
    mLastFlagChange = source.mLastFlagChange;
    mLastInterpolation = source.mLastInterpolation;
    mKeyCount = source.mKeyCount;
    mValues = source.mValues;
    mTimesListed = source.mTimesListed;
    mTimeFirst = source.mTimeFirst;
    mTimeStep = source.mTimeStep;
    mTimeLast = source.mTimeLast;
    mTimes.Release();
    if (mTimesListed) mTimes.Assign(source.mTimes.Data(), mKeyCount);
    mRightSlopes = source.mRightSlopes;
    mNextLeftSlopes = source.mNextLeftSlopes;
    mSharedSmall = source.mSharedSmall;
    mSharedWide = source.mSharedWide;
    mSharedIsWide = source.mSharedIsWide;
    mLastEvaluated = 0;
    Notify(eKeyAdded | eKeyRemoved);
}

// The keys are gathered, then laid out afresh: this keeps even times unlisted when the
// replacement keeps their spacing.
void FbxAnimCurve::Replace(const FbxAnimCurve& source, FbxTime start, FbxTime stop) {
    if (&source == this) {
        return;
    }
    std::vector<Key> keys;
    keys.reserve(static_cast<size_t>(mKeyCount + source.mKeyCount));
    int i = 0;
    for (; i < mKeyCount && TimeAt(i) < start.Get(); ++i) {
        keys.push_back(KeyAt(i));
    }
    for (int s = source.LowerBound(start); s < source.mKeyCount; ++s) {
        Key copy = source.KeyAt(s);
        if (copy.time > stop.Get()) {
            break;
        }
        copy.shared = Share(source.mShared[copy.shared]);
        keys.push_back(copy);
    }
    for (; i < mKeyCount; ++i) {
        if (TimeAt(i) > stop.Get()) {
            keys.push_back(KeyAt(i));
        }
    }
    const int count = static_cast<int>(keys.size());
    mKeyCount = 0;
    mTimesListed = false;
    mTimes.Release();
    mValues.clear();
    mRightSlopes.clear();
    mNextLeftSlopes.clear();
    mSharedSmall.clear();
    mSharedWide.clear();
    mSharedIsWide = false;
    Reserve(count);
    for (const Key& key : keys) {
        InsertKey(mKeyCount, key);
    }
    mLastEvaluated = 0;
    Notify(eKeyAdded | eKeyRemoved | eKeyValueChanged);
}

size_t FbxAnimCurve::GetKeyMemoryUsage() const {
    return mValues.capacity() * sizeof(float) + mTimes.MemoryUsage() +
           (mRightSlopes.capacity() + mNextLeftSlopes.capacity()) * sizeof(float) +
           mSharedSmall.capacity() + mSharedWide.capacity() * sizeof(FbxUInt32) +
           mShared.capacity() * sizeof(SharedAttribute) +
           mSharedIndex.size() * (sizeof(FbxULongLong) + sizeof(std::vector<FbxUInt32>) + 16);
}
