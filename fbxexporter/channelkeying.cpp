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

FbxAnimCurve* keyChannel(FbxProperty& property, FbxAnimLayer* layer, const char* channel,
                         FbxTime time, double value) {
    FbxAnimCurve* curve = property.GetCurve(layer, property.GetName().Buffer(), channel, true);
    if (curve) appendKey(curve, time, value);
    return curve;
}

void ChannelCurves::key(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, double x,
                        double y, double z, int reserve) {
    const double values[3] = {x, y, z};
    if (m_found) {
        for (int c = 0; c < 3; ++c)
            if (m_curves[c]) appendKey(m_curves[c], time, values[c]);
        return;
    }
    static const char* const channels[3] = {"X", "Y", "Z"};
    for (int c = 0; c < 3; ++c) {
        m_curves[c] = keyChannel(property, layer, channels[c], time, values[c]);
        if (m_curves[c] && reserve > 0) m_curves[c]->ResizeKeyBuffer(reserve);
    }
    m_found = true;
}
