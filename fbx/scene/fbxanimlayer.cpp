#include "fbx/scene/fbxanimlayer.h"

#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

FBX_IMPLEMENT_CLASS(FbxAnimLayer, "AnimationLayer", "AnimLayer", true)

FbxAnimLayer::FbxAnimLayer(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    Weight = AddProperty("Weight", FbxDoubleDT, 100.0, FbxPropertyFlags::eAnimatable);
    Mute = AddProperty("Mute", FbxBoolDT, false);
    Solo = AddProperty("Solo", FbxBoolDT, false);
    Lock = AddProperty("Lock", FbxBoolDT, false);
    Color = AddProperty("Color", FbxColor3DT, FbxDouble3(0.8, 0.8, 0.8));
    BlendMode = AddProperty("BlendMode", FbxEnumDT, eBlendAdditive);
    RotationAccumulationMode = AddProperty("RotationAccumulationMode", FbxEnumDT, eRotationByLayer);
    ScaleAccumulationMode = AddProperty("ScaleAccumulationMode", FbxEnumDT, eScaleMultiply);
    BlendModeBypass = AddProperty("BlendModeBypass", FbxULongLongDT, FbxULongLong{0});
}

FbxAnimCurveNode* FbxAnimLayer::CreateCurveNode(FbxProperty& property) {
    if (!property.IsValid() || !property.GetFlag(FbxPropertyFlags::eAnimatable)) {
        return nullptr;
    }
    FbxAnimCurveNode* node = FbxAnimCurveNode::CreateTypedCurveNode(property, GetScene());
    if (!node) {
        return nullptr;
    }
    ConnectSrcObject(node);
    node->ConnectDstProperty(property);
    property.ModifyFlag(FbxPropertyFlags::eAnimated, true);
    return node;
}

int FbxAnimLayer::GetMemberCount() const {
    return GetSrcObjectCount<FbxAnimCurveNode>();
}

FbxAnimCurveNode* FbxAnimLayer::GetMember(int index) const {
    return GetSrcObject<FbxAnimCurveNode>(index);
}
