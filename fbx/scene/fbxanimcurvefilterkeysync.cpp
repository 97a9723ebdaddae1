#include "fbx/scene/fbxanimcurvefilterkeysync.h"

#include <algorithm>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"

namespace {

// Every key time of the curves within [start, stop], sorted, without repeats.
std::vector<FbxLongLong> KeyTimes(FbxAnimCurve** curves, int count, FbxTime start, FbxTime stop) {
    std::vector<FbxLongLong> times;
    for (int c = 0; c < count; ++c) {
        for (int k = 0; k < curves[c]->KeyGetCount(); ++k) {
            const FbxTime t = curves[c]->KeyGetTime(k);
            if (t >= start && t <= stop) {
                times.push_back(t.Get());
            }
        }
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

struct MergedKey {
    FbxLongLong time;
    float value;
    FbxAnimCurveKeyAttribute attribute;
};

// The curve's keys with a key added at every time of times it lacks: the value
// the curve had there, the interpolation of the key before it (of the first key
// when it comes first) and otherwise a new key's attribute.
std::vector<MergedKey> MergeKeys(const FbxAnimCurve& curve, const std::vector<FbxLongLong>& times) {
    const int count = curve.KeyGetCount();
    std::vector<MergedKey> merged;
    merged.reserve(static_cast<size_t>(count) + times.size());
    auto keep = [&](int k) {
        merged.push_back(
            {curve.KeyGetTime(k).Get(), curve.KeyGetValue(k), curve.KeyGetAttribute(k)});
    };
    int k = 0;
    for (FbxLongLong t : times) {
        for (; k < count && curve.KeyGetTime(k).Get() < t; ++k) {
            keep(k);
        }
        if (k < count && curve.KeyGetTime(k).Get() == t) {
            continue;
        }
        MergedKey added{t, curve.Evaluate(FbxTime(t)), FbxAnimCurveKeyAttribute()};
        const FbxUInt32 model = !merged.empty() ? merged.back().attribute.mFlags
                                : count > 0     ? curve.KeyGetFlags(0)
                                                : added.attribute.mFlags;
        const FbxUInt32 mask = FbxAnimCurveDef::kInterpolationMask;
        added.attribute.mFlags = (added.attribute.mFlags & ~mask) | (model & mask);
        merged.push_back(added);
    }
    for (; k < count; ++k) {
        keep(k);
    }
    return merged;
}

// Rebuilt in one pass rather than by inserting keys one by one, which would
// move every later key for each insertion.
void AddMissingKeys(FbxAnimCurve& curve, const std::vector<FbxLongLong>& times) {
    const std::vector<MergedKey> merged = MergeKeys(curve, times);
    if (merged.size() == static_cast<size_t>(curve.KeyGetCount())) {
        return;
    }
    curve.KeyModifyBegin();
    curve.KeyClear();
    curve.ResizeKeyBuffer(static_cast<int>(merged.size()));
    for (const MergedKey& key : merged) {
        const int index = curve.KeyAdd(FbxTime(key.time));
        curve.KeySetValue(index, key.value);
        curve.KeySetAttribute(index, key.attribute);
    }
    curve.KeyModifyEnd();
}

// The common case (curves keyed together) needs no work.
bool SameKeyTimes(FbxAnimCurve** curves, int count) {
    const int keys = curves[0]->KeyGetCount();
    for (int c = 1; c < count; ++c) {
        if (curves[c]->KeyGetCount() != keys) {
            return false;
        }
    }
    for (int k = 0; k < keys; ++k) {
        for (int c = 1; c < count; ++c) {
            if (curves[c]->KeyGetTime(k) != curves[0]->KeyGetTime(k)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

bool FbxAnimCurveFilterKeySync::Apply(FbxAnimCurve** curves, int count, FbxStatus* status) {
    if (status) {
        status->Clear();
    }
    if (!curves || count < 1 || std::find(curves, curves + count, nullptr) != curves + count) {
        if (status) {
            status->SetCode(FbxStatus::eFailure, "Not enough animation curves found");
        }
        return false;
    }
    if (SameKeyTimes(curves, count)) {
        return true;
    }
    const std::vector<FbxLongLong> times = KeyTimes(curves, count, mStart, mStop);
    for (int c = 0; c < count; ++c) {
        AddMissingKeys(*curves[c], times);
    }
    return true;
}
