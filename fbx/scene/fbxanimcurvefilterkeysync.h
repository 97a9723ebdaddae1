#pragma once

#include "fbx/scene/fbxanimcurvefilter.h"

// Gives curves keys at the same times: every key time of one curve within the
// filter's span is added to the others, with the value they had there and the
// interpolation of their key before it.
class FbxAnimCurveFilterKeySync : public FbxAnimCurveFilter {
public:
    const char* GetName() const override { return "KeySync"; }
    bool Apply(FbxAnimCurve** curves, int count, FbxStatus* status = nullptr) override;
    using FbxAnimCurveFilter::Apply;
};
