#include "channelkeying.h"

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxproperty.h"
#include "fbx/scene/fbxscene.h"

FbxNode* animatedNode(FbxScene* scene, FbxAnimLayer* layer, const FbxString& name) {
    FbxNode* node = scene->FindNodeByName(name);
    if (!node) return nullptr;
    node->LclRotation.GetCurveNode(layer, true);
    node->LclTranslation.GetCurveNode(layer, true);
    return node;
}

namespace {

void appendKey(FbxAnimCurve* curve, FbxTime time, double value) {
    curve->KeyModifyBegin();
    const int index = curve->KeyAdd(time);
    curve->KeySetValue(index, static_cast<float>(value));
    curve->KeySetInterpolation(index, FbxAnimCurveDef::eInterpolationLinear);
    curve->KeyModifyEnd();
}

}  // namespace

void ChannelCurves::key(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, double x,
                        double y, double z, int reserve, FbxAnimCurve*& timesOf) {
    if (!m_found) makeCurves(property, layer, reserve, timesOf);
    const double values[3] = {x, y, z};
    for (int c = 0; c < 3; ++c)
        if (m_curves[c]) appendKey(m_curves[c], time, values[c]);
}

// A take keyed at the host's frame times lists each key's time: sharing them keeps one list
// for all curves instead of one per curve.
void ChannelCurves::makeCurves(FbxProperty& property, FbxAnimLayer* layer, int reserve,
                               FbxAnimCurve*& timesOf) {
    static const char* const channels[3] = {"X", "Y", "Z"};
    for (int c = 0; c < 3; ++c) {
        FbxAnimCurve* curve =
            property.GetCurve(layer, property.GetName().Buffer(), channels[c], true);
        m_curves[c] = curve;
        if (!curve) continue;
        if (reserve > 0) curve->ResizeKeyBuffer(reserve);
        if (timesOf) {
            curve->KeyShareTimes(*timesOf);
        } else {
            timesOf = curve;
        }
    }
    m_found = true;
}
