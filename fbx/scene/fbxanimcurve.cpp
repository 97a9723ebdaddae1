#include "fbx/scene/fbxanimcurve.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxAnimCurve, "AnimationCurve", "AnimCurve", false)

struct FbxAnimCurve::Block {
    Key keys[kKeysPerBlock];
};

void FbxAnimCurve::BlockDeleter::operator()(Block* block) const {
    ::operator delete(block);
}

namespace {

const FbxAnimCurveKeyAttribute kDefaultAttribute;

FbxUInt32 Bits(float value) {
    return std::bit_cast<FbxUInt32>(value);
}

}  // namespace

FbxAnimCurve::FbxAnimCurve(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    static_assert(sizeof(Block) <= kBlockBytes);
}

FbxAnimCurve::~FbxAnimCurve() = default;

// Indexes here are never negative; unsigned division spares the sign fix-ups
// on a path every key access takes.
FbxAnimCurve::Key& FbxAnimCurve::KeyAt(int index) {
    const auto i = static_cast<unsigned>(index);
    return mBlocks[i / kKeysPerBlock]->keys[i % kKeysPerBlock];
}

const FbxAnimCurve::Key& FbxAnimCurve::KeyAt(int index) const {
    const auto i = static_cast<unsigned>(index);
    return mBlocks[i / kKeysPerBlock]->keys[i % kKeysPerBlock];
}

FbxAnimCurve::Key* FbxAnimCurve::Find(int index) {
    return index >= 0 && index < mKeyCount ? &KeyAt(index) : nullptr;
}

const FbxAnimCurve::Key* FbxAnimCurve::Find(int index) const {
    return index >= 0 && index < mKeyCount ? &KeyAt(index) : nullptr;
}

void FbxAnimCurve::Reserve(int count) {
    while (static_cast<int>(mBlocks.size()) * kKeysPerBlock < count) {
        void* memory = ::operator new(kBlockBytes);
        mBlocks.emplace_back(new (memory) Block);
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

void FbxAnimCurve::Notify(unsigned changes) {
    if (mModifyDepth > 0) {
        mPendingChanges |= changes;
    } else if (mListener) {
        mListener(*this, changes);
    }
}

void FbxAnimCurve::KeyModifyBegin() {
    ++mModifyDepth;
}

void FbxAnimCurve::KeyModifyEnd() {
    if (mModifyDepth == 0 || --mModifyDepth > 0) {
        return;
    }
    mLastEvaluated = 0;
    const unsigned changes = std::exchange(mPendingChanges, 0u);
    if (changes && mListener) {
        mListener(*this, changes);
    }
}

int FbxAnimCurve::LowerBound(FbxTime time) const {
    int lo = 0;
    int hi = mKeyCount;
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (KeyAt(mid).time < time.Get()) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    return lo;
}

// Moves keys [from, count) up by one slot, across block boundaries.
void FbxAnimCurve::ShiftUp(int from) {
    for (int i = mKeyCount; i > from; --i) {
        KeyAt(i) = KeyAt(i - 1);
    }
}

int FbxAnimCurve::KeyAdd(FbxTime time, int* last) {
    if (mKeyCount == static_cast<int>(mBlocks.size()) * kKeysPerBlock) {
        Reserve(mKeyCount + 1);
    }
    mLastEvaluated = 0;
    const Key key = DefaultKey(time);
    int index = mKeyCount;
    // Writers append in time order: the last key decides before any search.
    if (mKeyCount > 0 && time.Get() <= KeyAt(mKeyCount - 1).time) {
        index = LowerBound(time);
        if (KeyAt(index).time == time.Get()) {
            KeyAt(index) = key;
            Notify(eKeyValueChanged | eKeyAttributeChanged);
            return last ? (*last = index) : index;
        }
        ShiftUp(index);
    }
    KeyAt(index) = key;
    ++mKeyCount;
    Notify(eKeyAdded);
    return last ? (*last = index) : index;
}

void FbxAnimCurve::KeySet(int index, FbxTime time, float value,
                          FbxAnimCurveDef::EInterpolationType interpolation,
                          FbxAnimCurveDef::ETangentMode tangentMode) {
    if (!Find(index)) {
        return;
    }
    KeyAt(index).time = time.Get();
    KeySetValue(index, value);
    KeySetInterpolation(index, interpolation);
    KeySetTangentMode(index, tangentMode);
}

bool FbxAnimCurve::KeyRemove(int index) {
    return KeyRemove(index, index);
}

bool FbxAnimCurve::KeyRemove(int first, int last) {
    if (first < 0 || last < first || last >= mKeyCount) {
        return false;
    }
    const int removed = last - first + 1;
    for (int i = first; i + removed < mKeyCount; ++i) {
        KeyAt(i) = KeyAt(i + removed);
    }
    mKeyCount -= removed;
    mLastEvaluated = 0;
    Notify(eKeyRemoved);
    return true;
}

void FbxAnimCurve::KeyClear() {
    if (mKeyCount == 0) {
        return;
    }
    mKeyCount = 0;
    mBlocks.clear();
    mLastEvaluated = 0;
    Notify(eKeyRemoved);
}

void FbxAnimCurve::ResizeKeyBuffer(int count) {
    const int blocks = (std::max(count, 0) + kKeysPerBlock - 1) / kKeysPerBlock;
    mBlocks.reserve(static_cast<size_t>(blocks));
    Reserve(count);
}

void FbxAnimCurve::KeySetValue(int index, float value) {
    if (Key* key = Find(index)) {
        key->value = value;
        Notify(eKeyValueChanged);
    }
}

// Writers switch key after key from the same entry to the same flags.
void FbxAnimCurve::SetFlags(Key& key, FbxUInt32 flags) {
    if (key.shared != mLastFlagChange.from || flags != mLastFlagChange.flags) {
        SharedAttribute shared = mShared[key.shared];
        shared.flags = flags;
        mLastFlagChange = {key.shared, flags, Share(shared)};
    }
    key.shared = mLastFlagChange.to;
    Notify(eKeyAttributeChanged);
}

void FbxAnimCurve::KeySetFlags(int index, FbxUInt32 flags) {
    if (Key* key = Find(index)) {
        SetFlags(*key, flags);
    }
}

// The weighting and velocity bits stay as they are: a linear key ignores them.
void FbxAnimCurve::KeySetInterpolation(int index,
                                       FbxAnimCurveDef::EInterpolationType interpolation) {
    if (Key* key = Find(index)) {
        const FbxUInt32 mask = FbxAnimCurveDef::kInterpolationMask;
        SetFlags(*key, (mShared[key->shared].flags & ~mask) | (interpolation & mask));
    }
}

void FbxAnimCurve::KeySetTangentMode(int index, FbxAnimCurveDef::ETangentMode mode) {
    if (Key* key = Find(index)) {
        const FbxUInt32 mask = FbxAnimCurveDef::kTangentModeMask;
        SetFlags(*key, (mShared[key->shared].flags & ~mask) | (mode & mask));
    }
}

void FbxAnimCurve::KeySetAttribute(int index, const FbxAnimCurveKeyAttribute& attribute) {
    if (!Find(index)) {
        return;
    }
    Key& key = KeyAt(index);
    const Key made = MakeKey(FbxTime(key.time), attribute);
    key.rightSlope = made.rightSlope;
    key.nextLeftSlope = made.nextLeftSlope;
    key.shared = made.shared;
    Notify(eKeyAttributeChanged);
}

void FbxAnimCurve::KeySetRightDerivative(int index, float slope) {
    if (Find(index)) {
        KeyAt(index).rightSlope = slope;
        Notify(eKeyAttributeChanged);
    }
}

void FbxAnimCurve::KeySetLeftDerivative(int index, float slope) {
    if (index > 0 && Find(index)) {
        KeyAt(index - 1).nextLeftSlope = slope;
        Notify(eKeyAttributeChanged);
    }
}

FbxTime FbxAnimCurve::KeyGetTime(int index) const {
    const Key* key = Find(index);
    return FbxTime(key ? key->time : 0);
}

float FbxAnimCurve::KeyGetValue(int index) const {
    const Key* key = Find(index);
    return key ? key->value : 0.0f;
}

FbxUInt32 FbxAnimCurve::KeyGetFlags(int index) const {
    const Key* key = Find(index);
    return key ? mShared[key->shared].flags : kDefaultAttribute.mFlags;
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
    const Key* key = Find(index);
    return key ? AttributeOf(*key) : kDefaultAttribute;
}

float FbxAnimCurve::KeyGetRightDerivative(int index) const {
    const Key* key = Find(index);
    return key ? key->rightSlope : 0.0f;
}

float FbxAnimCurve::KeyGetLeftDerivative(int index) const {
    const Key* previous = index > 0 && Find(index) ? Find(index - 1) : nullptr;
    return previous ? previous->nextLeftSlope : 0.0f;
}

void FbxAnimCurve::KeyGetRange(int first, int count, FbxLongLong* times, float* values,
                               FbxAnimCurveKeyAttribute* attributes) const {
    const int begin = std::max(first, 0);
    const auto end =
        static_cast<int>(std::min<FbxLongLong>(FbxLongLong{first} + std::max(count, 0), mKeyCount));
    for (int i = begin; i < end; ++i) {
        const Key& key = KeyAt(i);
        const int out = i - first;
        if (times) {
            times[out] = key.time;
        }
        if (values) {
            values[out] = key.value;
        }
        if (attributes) {
            attributes[out] = AttributeOf(key);
        }
    }
}

double FbxAnimCurve::KeyFind(FbxTime time, int* last) const {
    if (mKeyCount == 0) {
        return -1.0;
    }
    double position = 0.0;
    if (time.Get() >= KeyAt(mKeyCount - 1).time) {
        position = mKeyCount - 1;
    } else if (time.Get() > KeyAt(0).time) {
        const int above = LowerBound(time);
        const Key& next = KeyAt(above);
        if (next.time == time.Get()) {
            position = above;
        } else {
            const Key& previous = KeyAt(above - 1);
            position = (above - 1) + static_cast<double>(time.Get() - previous.time) /
                                         static_cast<double>(next.time - previous.time);
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
    return index < mKeyCount && KeyAt(index).time == time.Get() ? index : -1;
}

// Auto tangents follow the neighbours (flat at the ends); other modes use the
// stored slopes. Slopes are in value units per second.
float FbxAnimCurve::CubicSlope(int index, bool right) const {
    const FbxUInt32 mode = KeyGetFlags(index) & FbxAnimCurveDef::kTangentModeMask;
    if (mode & (FbxAnimCurveDef::eTangentUser | FbxAnimCurveDef::eTangentGenericBreak)) {
        return right ? KeyAt(index).rightSlope : KeyGetLeftDerivative(index);
    }
    if (index == 0 || index + 1 >= mKeyCount) {
        return 0.0f;
    }
    const Key& previous = KeyAt(index - 1);
    const Key& next = KeyAt(index + 1);
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
    if (t <= KeyAt(0).time || t >= KeyAt(mKeyCount - 1).time) {
        i = t <= KeyAt(0).time ? 0 : mKeyCount - 1;
        mLastEvaluated = i;
        if (last) {
            *last = i;
        }
        return KeyAt(i).value;
    }
    if (!(KeyAt(i).time <= t && i + 1 < mKeyCount && t < KeyAt(i + 1).time)) {
        i = LowerBound(time);
        i = KeyAt(i).time == t ? i : i - 1;
    }
    mLastEvaluated = i;
    if (last) {
        *last = i;
    }
    const Key& a = KeyAt(i);
    const Key& b = KeyAt(i + 1);
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
    span.Set(FbxTime(KeyAt(0).time), FbxTime(KeyAt(mKeyCount - 1).time));
    return true;
}

void FbxAnimCurve::CopyFrom(const FbxAnimCurve& source, bool withKeys) {
    mDefaultValue = source.mDefaultValue;
    if (!withKeys || &source == this) {
        return;
    }
    mKeyCount = 0;
    mBlocks.clear();
    mShared = source.mShared;
    mSharedIndex = source.mSharedIndex;
    mRecentShared = source.mRecentShared;
    mDefaultShared = source.mDefaultShared;
    mLastFlagChange = source.mLastFlagChange;
    Reserve(source.mKeyCount);
    for (size_t b = 0; b < source.mBlocks.size() && b < mBlocks.size(); ++b) {
        *mBlocks[b] = *source.mBlocks[b];
    }
    mKeyCount = source.mKeyCount;
    mLastEvaluated = 0;
    Notify(eKeyAdded | eKeyRemoved);
}

void FbxAnimCurve::Replace(const FbxAnimCurve& source, FbxTime start, FbxTime stop) {
    if (&source == this) {
        return;
    }
    std::vector<Key> keys;
    keys.reserve(static_cast<size_t>(mKeyCount + source.mKeyCount));
    int i = 0;
    for (; i < mKeyCount && KeyAt(i).time < start.Get(); ++i) {
        keys.push_back(KeyAt(i));
    }
    for (int s = source.LowerBound(start); s < source.mKeyCount; ++s) {
        const Key& key = source.KeyAt(s);
        if (key.time > stop.Get()) {
            break;
        }
        Key copy = key;
        const SharedAttribute& shared = source.mShared[key.shared];
        copy.shared = Share(shared);
        keys.push_back(copy);
    }
    for (; i < mKeyCount; ++i) {
        if (KeyAt(i).time > stop.Get()) {
            keys.push_back(KeyAt(i));
        }
    }
    Reserve(static_cast<int>(keys.size()));
    for (size_t k = 0; k < keys.size(); ++k) {
        KeyAt(static_cast<int>(k)) = keys[k];
    }
    mKeyCount = static_cast<int>(keys.size());
    mLastEvaluated = 0;
    Notify(eKeyAdded | eKeyRemoved | eKeyValueChanged);
}

size_t FbxAnimCurve::GetKeyMemoryUsage() const {
    return mBlocks.size() * kBlockBytes + mBlocks.capacity() * sizeof(void*) +
           mShared.capacity() * sizeof(SharedAttribute) +
           mSharedIndex.size() * (sizeof(FbxULongLong) + sizeof(std::vector<FbxUInt32>) + 16);
}
