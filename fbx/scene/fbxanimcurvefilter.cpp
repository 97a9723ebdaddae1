#include "fbx/scene/fbxanimcurvefilter.h"

#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"

void FbxAnimCurveFilter::Reset() {
    mStart = FBX_TIME_MINUS_INFINITE;
    mStop = FBX_TIME_INFINITE;
}

// A channel without a curve is passed as null so the filter can refuse it.
bool FbxAnimCurveFilter::Apply(FbxAnimCurveNode& node, FbxStatus* status) {
    std::vector<FbxAnimCurve*> curves;
    for (int i = 0; i < node.GetChannelsCount(); ++i) {
        curves.push_back(node.GetCurve(i));
    }
    return Apply(curves.data(), static_cast<int>(curves.size()), status);
}

bool FbxAnimCurveFilter::Apply(FbxAnimCurve& curve, FbxStatus* status) {
    FbxAnimCurve* curves[] = {&curve};
    return Apply(curves, 1, status);
}
