#pragma once

#include <vector>

#include "fbx/scene/fbxstatus.h"
#include "fbx/scene/fbxtime.h"

class FbxAnimCurve;
class FbxAnimCurveNode;
class FbxAnimStack;
class FbxObject;

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
    // Every animated curve node on the stack's layers that this filter treats;
    // false, with the reason in status, at the first node that fails.
    bool Apply(FbxAnimStack& stack, FbxStatus* status = nullptr);
    // As above, limited to the curve nodes that animate a property of object.
    bool Apply(FbxObject& object, FbxAnimStack& stack, FbxStatus* status = nullptr);

protected:
    // Whether the stack overloads hand node to this filter; every node by default.
    virtual bool Treats(const FbxAnimCurveNode& node) const;
    // The animated curve nodes of stack's layers that this filter treats, those
    // animating a property of object when object is given.
    std::vector<FbxAnimCurveNode*> CurveNodes(FbxAnimStack& stack, const FbxObject* object) const;
    // One entry per channel of node, null for a channel without a curve.
    static std::vector<FbxAnimCurve*> Curves(const FbxAnimCurveNode& node);

    FbxTime mStart = FBX_TIME_MINUS_INFINITE;
    FbxTime mStop = FBX_TIME_INFINITE;
};
