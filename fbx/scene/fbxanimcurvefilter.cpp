#include "fbx/scene/fbxanimcurvefilter.h"

#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"

void FbxAnimCurveFilter::Reset() {
    mStart = FBX_TIME_MINUS_INFINITE;
    mStop = FBX_TIME_INFINITE;
}

// A channel without a curve is passed as null so the filter can refuse it.
std::vector<FbxAnimCurve*> FbxAnimCurveFilter::Curves(const FbxAnimCurveNode& node) {
    std::vector<FbxAnimCurve*> curves;
    for (int i = 0; i < node.GetChannelsCount(); ++i) {
        curves.push_back(node.GetCurve(i));
    }
    return curves;
}

bool FbxAnimCurveFilter::Apply(FbxAnimCurveNode& node, FbxStatus* status) {
    std::vector<FbxAnimCurve*> curves = Curves(node);
    return Apply(curves.data(), static_cast<int>(curves.size()), status);
}

bool FbxAnimCurveFilter::Apply(FbxAnimCurve& curve, FbxStatus* status) {
    FbxAnimCurve* curves[] = {&curve};
    return Apply(curves, 1, status);
}

bool FbxAnimCurveFilter::Treats(const FbxAnimCurveNode&) const {
    return true;
}

namespace {

bool Animates(const FbxAnimCurveNode& node, const FbxObject& object) {
    for (int i = 0; i < node.GetDstPropertyCount(); ++i) {
        if (node.GetDstProperty(i).GetFbxObject() == &object) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<FbxAnimCurveNode*> FbxAnimCurveFilter::CurveNodes(FbxAnimStack& stack,
                                                              const FbxObject* object) const {
    std::vector<FbxAnimCurveNode*> nodes;
    for (int l = 0; l < stack.GetMemberCount(); ++l) {
        const FbxAnimLayer* layer = stack.GetMember(l);
        for (int n = 0; n < layer->GetMemberCount(); ++n) {
            FbxAnimCurveNode* node = layer->GetMember(n);
            if (node->IsAnimated() && Treats(*node) && (!object || Animates(*node, *object))) {
                nodes.push_back(node);
            }
        }
    }
    return nodes;
}

bool FbxAnimCurveFilter::Apply(FbxAnimStack& stack, FbxStatus* status) {
    for (FbxAnimCurveNode* node : CurveNodes(stack, nullptr)) {
        if (!Apply(*node, status)) {
            return false;
        }
    }
    return true;
}

bool FbxAnimCurveFilter::Apply(FbxObject& object, FbxAnimStack& stack, FbxStatus* status) {
    for (FbxAnimCurveNode* node : CurveNodes(stack, &object)) {
        if (!Apply(*node, status)) {
            return false;
        }
    }
    return true;
}
