#pragma once

#include "fbx/scene/fbxobject.h"

class FbxAnimCurveNode;

// A layer of a stack; the curve nodes animating properties are its members.
class FbxAnimLayer : public FbxObject {
    FBX_DECLARE_CLASS(FbxAnimLayer, FbxObject)

public:
    enum EBlendMode { eBlendAdditive, eBlendOverride, eBlendOverridePassthrough };
    enum ERotationAccumulationMode { eRotationByLayer, eRotationByChannel };
    enum EScaleAccumulationMode { eScaleMultiply, eScaleAdditive };

    FbxPropertyT<double> Weight;
    FbxPropertyT<bool> Mute;
    FbxPropertyT<bool> Solo;
    FbxPropertyT<bool> Lock;
    FbxPropertyT<FbxDouble3> Color;
    FbxPropertyT<EBlendMode> BlendMode;
    FbxPropertyT<ERotationAccumulationMode> RotationAccumulationMode;
    FbxPropertyT<EScaleAccumulationMode> ScaleAccumulationMode;
    FbxPropertyT<FbxULongLong> BlendModeBypass;

    // Makes a curve node for property on this layer (see FbxAnimCurveNode) and
    // flags the property animated. Null for an invalid or non-animatable
    // property, or one whose value has no numeric channels.
    FbxAnimCurveNode* CreateCurveNode(FbxProperty& property);
    int GetMemberCount() const;
    FbxAnimCurveNode* GetMember(int index = 0) const;

protected:
    FbxAnimLayer(FbxManager& manager, const char* name);
};
