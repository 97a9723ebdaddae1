#pragma once

#include "fbx/scene/fbxeuler.h"
#include "fbx/scene/fbxobject.h"
#include "fbx/scene/fbxtransform.h"

class FbxNodeAttribute;
class FbxSkeleton;
class FbxNull;
class FbxMarker;

// A transform node of the scene tree. It has at most one parent node, ordered
// children and at most one node attribute (what the node is). Children and the
// attribute are sources of the node (connections child -> parent,
// attribute -> node).
class FbxNode : public FbxObject {
    FBX_DECLARE_CLASS(FbxNode, FbxObject)

public:
    enum EShadingMode {
        eHardShading,
        eWireFrame,
        eFlatShading,
        eLightShading,
        eTextureShading,
        eFullShading
    };
    enum EQuaternionInterpolate {
        eQuatInterpOff,
        eQuatInterpClassic,
        eQuatInterpAuto,
        eQuatInterpSlerp,
        eQuatInterpSquad
    };

    // Properties in the order a node creates them (which is the order files list them).
    FbxPropertyT<EQuaternionInterpolate> QuaternionInterpolate;
    FbxPropertyT<FbxDouble3> RotationOffset;
    FbxPropertyT<FbxDouble3> RotationPivot;
    FbxPropertyT<FbxDouble3> ScalingOffset;
    FbxPropertyT<FbxDouble3> ScalingPivot;
    FbxPropertyT<bool> TranslationActive;
    FbxPropertyT<FbxDouble3> TranslationMin;
    FbxPropertyT<FbxDouble3> TranslationMax;
    FbxPropertyT<bool> TranslationMinX;
    FbxPropertyT<bool> TranslationMinY;
    FbxPropertyT<bool> TranslationMinZ;
    FbxPropertyT<bool> TranslationMaxX;
    FbxPropertyT<bool> TranslationMaxY;
    FbxPropertyT<bool> TranslationMaxZ;
    FbxPropertyT<FbxEuler::EOrder> RotationOrder;
    FbxPropertyT<bool> RotationSpaceForLimitOnly;
    FbxPropertyT<double> RotationStiffnessX;
    FbxPropertyT<double> RotationStiffnessY;
    FbxPropertyT<double> RotationStiffnessZ;
    FbxPropertyT<double> AxisLen;
    FbxPropertyT<FbxDouble3> PreRotation;
    FbxPropertyT<FbxDouble3> PostRotation;
    FbxPropertyT<bool> RotationActive;
    FbxPropertyT<FbxDouble3> RotationMin;
    FbxPropertyT<FbxDouble3> RotationMax;
    FbxPropertyT<bool> RotationMinX;
    FbxPropertyT<bool> RotationMinY;
    FbxPropertyT<bool> RotationMinZ;
    FbxPropertyT<bool> RotationMaxX;
    FbxPropertyT<bool> RotationMaxY;
    FbxPropertyT<bool> RotationMaxZ;
    FbxPropertyT<FbxTransform::EInheritType> InheritType;
    FbxPropertyT<bool> ScalingActive;
    FbxPropertyT<FbxDouble3> ScalingMin;
    FbxPropertyT<FbxDouble3> ScalingMax;
    FbxPropertyT<bool> ScalingMinX;
    FbxPropertyT<bool> ScalingMinY;
    FbxPropertyT<bool> ScalingMinZ;
    FbxPropertyT<bool> ScalingMaxX;
    FbxPropertyT<bool> ScalingMaxY;
    FbxPropertyT<bool> ScalingMaxZ;
    FbxPropertyT<FbxDouble3> GeometricTranslation;
    FbxPropertyT<FbxDouble3> GeometricRotation;
    FbxPropertyT<FbxDouble3> GeometricScaling;
    FbxPropertyT<double> MinDampRangeX;
    FbxPropertyT<double> MinDampRangeY;
    FbxPropertyT<double> MinDampRangeZ;
    FbxPropertyT<double> MaxDampRangeX;
    FbxPropertyT<double> MaxDampRangeY;
    FbxPropertyT<double> MaxDampRangeZ;
    FbxPropertyT<double> MinDampStrengthX;
    FbxPropertyT<double> MinDampStrengthY;
    FbxPropertyT<double> MinDampStrengthZ;
    FbxPropertyT<double> MaxDampStrengthX;
    FbxPropertyT<double> MaxDampStrengthY;
    FbxPropertyT<double> MaxDampStrengthZ;
    FbxPropertyT<double> PreferedAngleX;
    FbxPropertyT<double> PreferedAngleY;
    FbxPropertyT<double> PreferedAngleZ;
    FbxProperty LookAtProperty;    // object reference
    FbxProperty UpVectorProperty;  // object reference
    FbxPropertyT<bool> Show;
    FbxPropertyT<bool> NegativePercentShapeSupport;
    FbxPropertyT<int> DefaultAttributeIndex;
    FbxPropertyT<bool> Freeze;
    FbxPropertyT<bool> LODBox;
    FbxPropertyT<FbxDouble3> LclTranslation;
    FbxPropertyT<FbxDouble3> LclRotation;
    FbxPropertyT<FbxDouble3> LclScaling;
    FbxPropertyT<double> Visibility;
    FbxPropertyT<bool> VisibilityInheritance;

    // Makes child the last child of this node, first detaching it from its
    // current parent: a move, never a copy. False for null, this node itself or
    // one of its ancestors (which would make a cycle).
    bool AddChild(FbxNode* child);
    // Detaches child; returns it, or null when it is not a child of this node.
    FbxNode* RemoveChild(FbxNode* child);
    FbxNode* GetParent() const;
    int GetChildCount(bool recursive = false) const;
    FbxNode* GetChild(int index) const;
    // Depth first below this node, exact case.
    FbxNode* FindChild(const char* name, bool recursive = true) const;

    // Replaces the node's attribute (null removes it) and sets
    // "DefaultAttributeIndex" to 0 (-1 without attribute). False when the
    // attribute already belongs to another node.
    bool SetNodeAttribute(FbxNodeAttribute* attribute);
    FbxNodeAttribute* GetNodeAttribute() const;
    FbxSkeleton* GetSkeleton() const;
    FbxNull* GetNull() const;
    FbxMarker* GetMarker() const;

    // Stores the type in "InheritType" and in the node's transform evaluation.
    void SetTransformationInheritType(FbxTransform::EInheritType type);
    void GetTransformationInheritType(FbxTransform::EInheritType& type) const;

    void SetShadingMode(EShadingMode mode) { mShadingMode = mode; }
    EShadingMode GetShadingMode() const { return mShadingMode; }

    // The attribute's sub-type ("LimbNode", "Root", "Null", "Marker"); "Null"
    // for a node without attribute.
    const char* GetSubTypeName() const override;

protected:
    FbxNode(FbxManager& manager, const char* name);

private:
    void CreateProperties();

    FbxTransform::EInheritType mInheritType = FbxTransform::eInheritRrSs;
    EShadingMode mShadingMode = eHardShading;
};
