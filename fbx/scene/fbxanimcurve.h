#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "fbx/scene/fbxanimcurvedef.h"
#include "fbx/scene/fbxkeytimecolumn.h"
#include "fbx/scene/fbxobject.h"
#include "fbx/scene/fbxtime.h"

// Keys of one animated channel, strictly increasing in time.
//
// Storage is by column, each held only when its keys differ: key times as a start
// and a step while they are evenly spaced (a take keyed frame by frame), else listed
// in a column that curves keyed at the same times may hold once (KeyShareTimes), slopes only
// once one is not zero, and per key one byte naming a shared entry for flags,
// weights and velocities (four bytes past 256 entries). A take's key costs five
// bytes: its value and that byte.
// An index at or past the key count reads a placeholder key (time 0, value 0,
// default attribute).
//
// Changes may be bracketed by KeyModifyBegin/KeyModifyEnd (they nest); change
// notifications are then held back and delivered once when the outermost
// bracket closes. A take's keys arrive bracketed, one at a time, each after the
// last; that path is inline below and costs a few stores.
//
// Threads: a curve holds no state shared with the scene, and its listener (if
// any) runs on the thread that changes it. Different curves may therefore be
// keyed, read and unrolled on different threads at once, as long as each curve
// is touched by one thread only and nothing else in the scene changes
// meanwhile; curves that share key times count as one curve while any of them
// changes (reading them all at once on many threads is fine). Making, finding
// or connecting curves is not part of this: those change the scene.
class FbxAnimCurve : public FbxObject {
    FBX_DECLARE_CLASS(FbxAnimCurve, FbxObject)

public:
    enum EKeyChange : unsigned {
        eKeyAdded = 1u << 0,
        eKeyRemoved = 1u << 1,
        eKeyValueChanged = 1u << 2,
        eKeyAttributeChanged = 1u << 3
    };
    // Receives the changes (EKeyChange bits) since the last notification.
    using ChangeListener = std::function<void(FbxAnimCurve& curve, unsigned changes)>;

    void KeyModifyBegin() { ++mModifyDepth; }
    void KeyModifyEnd();
    bool IsModifying() const { return mModifyDepth > 0; }
    void SetChangeListener(ChangeListener listener) { mListener = std::move(listener); }

    // Adds a default key (value 0, flags 0x2108, zero slopes, weights 3333) at
    // time and returns its index. A key already at time is reset in place (the
    // count stays); otherwise later keys move up by one. Appending in time order
    // costs constant time.
    int KeyAdd(FbxTime time, int* last = nullptr);
    // Sets time, value, interpolation and tangent mode of a key that KeyAdd made.
    // False, changing nothing, for an index outside [0, count) or a time not
    // strictly between the neighbouring keys' times: keys never change order.
    bool KeySet(
        int index, FbxTime time, float value,
        FbxAnimCurveDef::EInterpolationType interpolation = FbxAnimCurveDef::eInterpolationCubic,
        FbxAnimCurveDef::ETangentMode tangentMode = FbxAnimCurveDef::eTangentAuto);
    bool KeyRemove(int index);
    // Removes keys first..last inclusive.
    bool KeyRemove(int first, int last);
    void KeyClear();
    // Reserves room for count keys; the key count does not change.
    void ResizeKeyBuffer(int count);

    // Setters ignore indexes outside [0, count).
    void KeySetValue(int index, float value);
    // Replaces only the interpolation field of the flags.
    void KeySetInterpolation(int index, FbxAnimCurveDef::EInterpolationType interpolation);
    // Replaces only the tangent-mode field of the flags.
    void KeySetTangentMode(int index, FbxAnimCurveDef::ETangentMode mode);
    void KeySetFlags(int index, FbxUInt32 flags);
    void KeySetAttribute(int index, const FbxAnimCurveKeyAttribute& attribute);
    void KeySetRightDerivative(int index, float slope);
    // The left slope of a key is stored on the key before it; ignored for key 0.
    void KeySetLeftDerivative(int index, float slope);

    int KeyGetCount() const { return mKeyCount; }
    FbxTime KeyGetTime(int index) const;
    float KeyGetValue(int index) const;
    FbxUInt32 KeyGetFlags(int index) const;
    FbxAnimCurveDef::EInterpolationType KeyGetInterpolation(int index) const;
    FbxAnimCurveDef::ETangentMode KeyGetTangentMode(int index) const;
    FbxAnimCurveKeyAttribute KeyGetAttribute(int index) const;
    float KeyGetRightDerivative(int index) const;
    float KeyGetLeftDerivative(int index) const;
    // Copies keys [first, first + count) into the arrays that are not null;
    // lets a writer stream a long curve in chunks.
    void KeyGetRange(int first, int count, FbxLongLong* times, float* values,
                     FbxAnimCurveKeyAttribute* attributes) const;
    // How many keys from first on have key first's whole attribute (flags, slopes,
    // weights, velocities); 0 outside the keys. Lets a writer store attributes as runs.
    int KeyGetAttributeRun(int first) const;
    // Whether other has keys at exactly this curve's times; at once when they share them.
    bool KeyTimesEqual(const FbxAnimCurve& other) const;
    // Keeps this curve's key times in one column with other's for as long as both are keyed
    // at the same times, as a take's curves are; a curve keyed differently goes on alone.
    // Keys and their order do not change.
    void KeyShareTimes(FbxAnimCurve& other);

    // Position of time as a fractional key index: a whole number when a key is
    // at time, i + f between keys i and i + 1; clamped to [0, count - 1]
    // outside the keys; -1 without keys.
    double KeyFind(FbxTime time, int* last = nullptr) const;
    // Index of the key at exactly time, or -1.
    int KeyIndexAt(FbxTime time) const;
    // Value at time: constant, linear or cubic (Hermite with the keys' slopes;
    // auto tangents use the neighbouring keys) between keys; the first or last
    // value outside; the default value without keys.
    float Evaluate(FbxTime time, int* last = nullptr) const;
    // From the first to the last key; false without keys.
    bool GetTimeInterval(FbxTimeSpan& span) const;

    void SetDefaultValue(float value) { mDefaultValue = value; }
    float GetDefaultValue() const { return mDefaultValue; }

    // Makes this curve a copy of source (default value and, when withKeys, keys).
    void CopyFrom(const FbxAnimCurve& source, bool withKeys = true);
    // Replaces this curve's keys in [start, stop] by source's keys in that span.
    void Replace(const FbxAnimCurve& source, FbxTime start, FbxTime stop);

    // Bytes held for keys: columns and shared attributes; a shared time column counts its
    // share.
    size_t GetKeyMemoryUsage() const;

    ~FbxAnimCurve() override;

protected:
    FbxAnimCurve(FbxManager& manager, const char* name);

private:
    // One key with its columns gathered.
    struct Key {
        FbxLongLong time;
        float value;
        float rightSlope;
        float nextLeftSlope;
        FbxUInt32 shared;  // index into mShared
    };
    struct SharedAttribute {
        FbxUInt32 flags;
        FbxUInt32 weights;
        FbxUInt32 velocities;
        bool operator==(const SharedAttribute&) const = default;
    };
    // Shared entries never change once made (only CopyFrom replaces them), so an
    // added key's entry and the outcome of the last flag change are remembered:
    // keying a take key by key then skips the attribute search.
    static constexpr FbxUInt32 kNoShared = ~FbxUInt32{0};
    struct FlagChange {
        FbxUInt32 from = kNoShared;
        FbxUInt32 flags = 0;
        FbxUInt32 to = kNoShared;
    };

    bool Valid(int index) const { return index >= 0 && index < mKeyCount; }
    FbxLongLong TimeAt(int index) const;
    FbxUInt32 SharedAt(int index) const;
    float RightSlopeAt(int index) const;
    float NextLeftSlopeAt(int index) const;
    Key KeyAt(int index) const;
    static FbxLongLong EvenTime(FbxLongLong first, FbxLongLong step, int index);
    // Whether a key at time goes at the end, after the last key, into columns that need
    // nothing but a value, a small shared entry and, once times are listed, the time.
    bool AppendsPlainly(FbxLongLong time) const;
    int AddKey(FbxTime time, int* last);
    void SetTime(int index, FbxLongLong time);
    void SetShared(int index, FbxUInt32 shared);
    void SetSlope(std::vector<float>& column, int index, float slope);
    void SetKey(int index, const Key& key);
    void InsertKey(int index, const Key& key);
    void AppendKey(const Key& key);
    void EraseKeys(int first, int last);
    void ListTimes();
    void Reserve(int count);
    FbxUInt32 Share(const SharedAttribute& attribute);
    Key MakeKey(FbxTime time, const FbxAnimCurveKeyAttribute& attribute);
    Key DefaultKey(FbxTime time);
    void SetFlags(int index, FbxUInt32 flags);
    void SwitchInterpolation(int index, FbxAnimCurveDef::EInterpolationType interpolation);
    FbxAnimCurveKeyAttribute AttributeOf(const Key& key) const;
    void Notify(unsigned changes);
    void Deliver(unsigned changes);
    int LowerBound(FbxTime time) const;
    float CubicSlope(int index, bool right) const;

    // What a take's appended key reads and writes comes first, on few cache lines: a
    // take keys hundreds of curves in turn, frame after frame.
    int mKeyCount = 0;
    int mModifyDepth = 0;
    unsigned mPendingChanges = 0;
    mutable int mLastEvaluated = 0;  // where the last Evaluate found its time
    // Times are mTimeFirst + index * mTimeStep (wrapping) until mTimesListed, then the
    // first mKeyCount entries of mTimes.
    bool mTimesListed = false;
    bool mSharedIsWide = false;
    FbxUInt32 mDefaultShared = kNoShared;
    // The last interpolation change: its flags field holds the interpolation asked for.
    FlagChange mLastInterpolation;
    FbxLongLong mTimeFirst = 0;
    FbxLongLong mTimeStep = 0;
    // The last key's time, so that appending reads no column; meaningless without keys.
    FbxLongLong mTimeLast = 0;
    std::vector<float> mValues;
    FbxKeyTimeColumn mTimes;
    std::vector<uint8_t> mSharedSmall;   // while fewer than 256 shared entries
    std::vector<float> mRightSlopes;     // empty: all zero
    std::vector<float> mNextLeftSlopes;  // empty: all zero

    std::vector<FbxUInt32> mSharedWide;  // from the 257th entry on
    std::vector<SharedAttribute> mShared;
    std::unordered_map<FbxULongLong, std::vector<FbxUInt32>> mSharedIndex;  // by hash
    std::array<FbxUInt32, 2> mRecentShared = {0, 0};
    FlagChange mLastFlagChange;
    float mDefaultValue = 0.0f;
    ChangeListener mListener;
};

inline FbxLongLong FbxAnimCurve::EvenTime(FbxLongLong first, FbxLongLong step, int index) {
    // Evenly spaced times wrap like unsigned numbers, so no spacing is out of range.
    return static_cast<FbxLongLong>(static_cast<FbxULongLong>(first) +
                                    static_cast<FbxULongLong>(step) * static_cast<unsigned>(index));
}

inline FbxUInt32 FbxAnimCurve::SharedAt(int index) const {
    const auto i = static_cast<size_t>(index);
    return mSharedIsWide ? mSharedWide[i] : mSharedSmall[i];
}

inline void FbxAnimCurve::Notify(unsigned changes) {
    if (mModifyDepth > 0) {
        mPendingChanges |= changes;
    } else if (mListener) {
        Deliver(changes);
    }
}

inline void FbxAnimCurve::KeyModifyEnd() {
    if (mModifyDepth == 0 || --mModifyDepth > 0) {
        return;
    }
    mLastEvaluated = 0;
    const unsigned changes = std::exchange(mPendingChanges, 0u);
    if (changes != 0 && mListener) {
        Deliver(changes);
    }
}

inline bool FbxAnimCurve::AppendsPlainly(FbxLongLong time) const {
    if (mKeyCount < 2 || mSharedIsWide || mDefaultShared > 0xFF || !mRightSlopes.empty() ||
        !mNextLeftSlopes.empty()) {
        return false;
    }
    return time > mTimeLast && (mTimesListed || time == EvenTime(mTimeLast, mTimeStep, 1));
}

inline int FbxAnimCurve::KeyAdd(FbxTime time, int* last) {
    if (!AppendsPlainly(time.Get())) {
        return AddKey(time, last);
    }
    mLastEvaluated = 0;
    if (mTimesListed) {
        mTimes.Place(mKeyCount, time.Get());
    }
    mTimeLast = time.Get();
    mValues.push_back(0.0f);
    mSharedSmall.push_back(static_cast<uint8_t>(mDefaultShared));
    const int index = mKeyCount++;
    Notify(eKeyAdded);
    return last ? (*last = index) : index;
}

inline void FbxAnimCurve::KeySetValue(int index, float value) {
    if (Valid(index)) {
        mValues[static_cast<size_t>(index)] = value;
        Notify(eKeyValueChanged);
    }
}

inline float FbxAnimCurve::KeyGetValue(int index) const {
    return Valid(index) ? mValues[static_cast<size_t>(index)] : 0.0f;
}

// A take switches key after key from the same entry to the same interpolation: the last
// switch is reused without looking at the entry.
inline void FbxAnimCurve::KeySetInterpolation(int index,
                                              FbxAnimCurveDef::EInterpolationType interpolation) {
    if (!Valid(index)) {
        return;
    }
    if (mSharedIsWide || mSharedSmall[static_cast<size_t>(index)] != mLastInterpolation.from ||
        static_cast<FbxUInt32>(interpolation) != mLastInterpolation.flags ||
        mLastInterpolation.to > 0xFF) {
        SwitchInterpolation(index, interpolation);
        return;
    }
    mSharedSmall[static_cast<size_t>(index)] = static_cast<uint8_t>(mLastInterpolation.to);
    Notify(eKeyAttributeChanged);
}
