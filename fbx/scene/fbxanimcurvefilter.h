#pragma once

#include "fbx/scene/fbxstatus.h"
#include "fbx/scene/fbxtime.h"

class FbxAnimCurve;
class FbxAnimCurveNode;

// Base of the filters that rewrite animation curves: the span of keys they
// treat (everything by default).
class FbxAnimCurveFilter {
public:
    virtual ~FbxAnimCurveFilter() = default;

    virtual const char* GetName() const = 0;
    virtual void Reset();

    void SetStartTime(FbxTime start) { mStart = start; }
    void SetStopTime(FbxTime stop) { mStop = stop; }
    FbxTime GetStartTime() const { return mStart; }
    FbxTime GetStopTime() const { return mStop; }

    // Filters curves together; false with the reason in status.
    virtual bool Apply(FbxAnimCurve** curves, int count, FbxStatus* status = nullptr) = 0;
    // The curves of every channel of node that has one.
    bool Apply(FbxAnimCurveNode& node, FbxStatus* status = nullptr);
    bool Apply(FbxAnimCurve& curve, FbxStatus* status = nullptr);

protected:
    FbxTime mStart = FBX_TIME_MINUS_INFINITE;
    FbxTime mStop = FBX_TIME_INFINITE;
};
