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

FbxAnimCurve* keyChannel(FbxProperty& property, FbxAnimLayer* layer, const char* channel,
                         FbxTime time, double value) {
    FbxAnimCurve* curve = property.GetCurve(layer, property.GetName().Buffer(), channel, true);
    if (!curve) return nullptr;
    curve->KeyModifyBegin();
    const int index = curve->KeyAdd(time);
    curve->KeySetValue(index, static_cast<float>(value));
    curve->KeySetInterpolation(index, FbxAnimCurveDef::eInterpolationLinear);
    curve->KeyModifyEnd();
    return curve;
}

void keyChannels(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, double x, double y,
                 double z, int reserve) {
    FbxAnimCurve* curveX = keyChannel(property, layer, "X", time, x);
    if (curveX && reserve > 0) curveX->ResizeKeyBuffer(reserve);
    keyChannel(property, layer, "Y", time, y);
    keyChannel(property, layer, "Z", time, z);
}
