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

// Values are taken before any key is added, so new keys follow the curve as it was.
void AddMissingKeys(FbxAnimCurve& curve, const std::vector<FbxLongLong>& times) {
    std::vector<std::pair<FbxLongLong, float>> missing;
    for (FbxLongLong t : times) {
        if (curve.KeyIndexAt(FbxTime(t)) < 0) {
            missing.emplace_back(t, curve.Evaluate(FbxTime(t)));
        }
    }
    curve.KeyModifyBegin();
    for (const auto& [t, value] : missing) {
        const int index = curve.KeyAdd(FbxTime(t));
        const int model = index > 0 ? index - 1 : index + 1;
        curve.KeySetValue(index, value);
        if (model < curve.KeyGetCount()) {
            curve.KeySetInterpolation(index, curve.KeyGetInterpolation(model));
        }
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
