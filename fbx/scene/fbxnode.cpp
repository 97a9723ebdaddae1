#include "fbx/scene/fbxnode.h"

#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxmarker.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxskeleton.h"

FBX_IMPLEMENT_CLASS(FbxNode, "Model", "Model", true)

FbxNode::FbxNode(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    CreateProperties();
}

namespace {

constexpr FbxDouble3 kZero(0.0, 0.0, 0.0);
constexpr FbxDouble3 kOne(1.0, 1.0, 1.0);

}  // namespace

// The order here is the order files list a model's properties in.
void FbxNode::CreateProperties() {
    QuaternionInterpolate = AddProperty("QuaternionInterpolate", FbxEnumDT, eQuatInterpOff);
    for (const char* name : {"OFF", "Classic", "Auto", "Slerp", "Squad"}) {
        QuaternionInterpolate.AddEnumValue(name);
    }
    RotationOffset = AddProperty("RotationOffset", FbxDouble3DT, kZero);
    RotationPivot = AddProperty("RotationPivot", FbxDouble3DT, kZero);
    ScalingOffset = AddProperty("ScalingOffset", FbxDouble3DT, kZero);
    ScalingPivot = AddProperty("ScalingPivot", FbxDouble3DT, kZero);
    TranslationActive = AddProperty("TranslationActive", FbxBoolDT, false);
    TranslationMin = AddProperty("TranslationMin", FbxDouble3DT, kZero);
    TranslationMax = AddProperty("TranslationMax", FbxDouble3DT, kZero);
    TranslationMinX = AddProperty("TranslationMinX", FbxBoolDT, false);
    TranslationMinY = AddProperty("TranslationMinY", FbxBoolDT, false);
    TranslationMinZ = AddProperty("TranslationMinZ", FbxBoolDT, false);
    TranslationMaxX = AddProperty("TranslationMaxX", FbxBoolDT, false);
    TranslationMaxY = AddProperty("TranslationMaxY", FbxBoolDT, false);
    TranslationMaxZ = AddProperty("TranslationMaxZ", FbxBoolDT, false);
    RotationOrder = AddProperty("RotationOrder", FbxEnumDT, FbxEuler::eOrderXYZ);
    for (const char* name : {"Euler XYZ", "Euler XZY", "Euler YZX", "Euler YXZ", "Euler ZXY",
                             "Euler ZYX", "Spheric XYZ"}) {
        RotationOrder.AddEnumValue(name);
    }
    RotationSpaceForLimitOnly = AddProperty("RotationSpaceForLimitOnly", FbxBoolDT, false);
    RotationStiffnessX = AddProperty("RotationStiffnessX", FbxDoubleDT, 0.0);
    RotationStiffnessY = AddProperty("RotationStiffnessY", FbxDoubleDT, 0.0);
    RotationStiffnessZ = AddProperty("RotationStiffnessZ", FbxDoubleDT, 0.0);
    AxisLen = AddProperty("AxisLen", FbxDoubleDT, 10.0);
    PreRotation = AddProperty("PreRotation", FbxDouble3DT, kZero);
    PostRotation = AddProperty("PostRotation", FbxDouble3DT, kZero);
    RotationActive = AddProperty("RotationActive", FbxBoolDT, false);
    RotationMin = AddProperty("RotationMin", FbxDouble3DT, kZero);
    RotationMax = AddProperty("RotationMax", FbxDouble3DT, kZero);
    RotationMinX = AddProperty("RotationMinX", FbxBoolDT, false);
    RotationMinY = AddProperty("RotationMinY", FbxBoolDT, false);
    RotationMinZ = AddProperty("RotationMinZ", FbxBoolDT, false);
    RotationMaxX = AddProperty("RotationMaxX", FbxBoolDT, false);
    RotationMaxY = AddProperty("RotationMaxY", FbxBoolDT, false);
    RotationMaxZ = AddProperty("RotationMaxZ", FbxBoolDT, false);
    InheritType = AddProperty("InheritType", FbxEnumDT, FbxTransform::eInheritRrSs);
    for (const char* name : {"RrSs", "RSrs", "Rrs"}) {
        InheritType.AddEnumValue(name);
    }
    ScalingActive = AddProperty("ScalingActive", FbxBoolDT, false);
    ScalingMin = AddProperty("ScalingMin", FbxDouble3DT, kZero);
    ScalingMax = AddProperty("ScalingMax", FbxDouble3DT, kOne);
    ScalingMinX = AddProperty("ScalingMinX", FbxBoolDT, false);
    ScalingMinY = AddProperty("ScalingMinY", FbxBoolDT, false);
    ScalingMinZ = AddProperty("ScalingMinZ", FbxBoolDT, false);
    ScalingMaxX = AddProperty("ScalingMaxX", FbxBoolDT, false);
    ScalingMaxY = AddProperty("ScalingMaxY", FbxBoolDT, false);
    ScalingMaxZ = AddProperty("ScalingMaxZ", FbxBoolDT, false);
    GeometricTranslation = AddProperty("GeometricTranslation", FbxDouble3DT, kZero);
    GeometricRotation = AddProperty("GeometricRotation", FbxDouble3DT, kZero);
    GeometricScaling = AddProperty("GeometricScaling", FbxDouble3DT, kOne);
    MinDampRangeX = AddProperty("MinDampRangeX", FbxDoubleDT, 0.0);
    MinDampRangeY = AddProperty("MinDampRangeY", FbxDoubleDT, 0.0);
    MinDampRangeZ = AddProperty("MinDampRangeZ", FbxDoubleDT, 0.0);
    MaxDampRangeX = AddProperty("MaxDampRangeX", FbxDoubleDT, 0.0);
    MaxDampRangeY = AddProperty("MaxDampRangeY", FbxDoubleDT, 0.0);
    MaxDampRangeZ = AddProperty("MaxDampRangeZ", FbxDoubleDT, 0.0);
    MinDampStrengthX = AddProperty("MinDampStrengthX", FbxDoubleDT, 0.0);
    MinDampStrengthY = AddProperty("MinDampStrengthY", FbxDoubleDT, 0.0);
    MinDampStrengthZ = AddProperty("MinDampStrengthZ", FbxDoubleDT, 0.0);
    MaxDampStrengthX = AddProperty("MaxDampStrengthX", FbxDoubleDT, 0.0);
    MaxDampStrengthY = AddProperty("MaxDampStrengthY", FbxDoubleDT, 0.0);
    MaxDampStrengthZ = AddProperty("MaxDampStrengthZ", FbxDoubleDT, 0.0);
    PreferedAngleX = AddProperty("PreferedAngleX", FbxDoubleDT, 0.0);
    PreferedAngleY = AddProperty("PreferedAngleY", FbxDoubleDT, 0.0);
    PreferedAngleZ = AddProperty("PreferedAngleZ", FbxDoubleDT, 0.0);
    LookAtProperty = FbxProperty::Create(this, FbxReferenceDT, "LookAtProperty");
    UpVectorProperty = FbxProperty::Create(this, FbxReferenceDT, "UpVectorProperty");
    Show = AddProperty("Show", FbxBoolDT, true);
    NegativePercentShapeSupport = AddProperty("NegativePercentShapeSupport", FbxBoolDT, true);
    DefaultAttributeIndex = AddProperty("DefaultAttributeIndex", FbxIntDT, -1);
    Freeze = AddProperty("Freeze", FbxBoolDT, false);
    LODBox = AddProperty("LODBox", FbxBoolDT, false);
    const FbxUInt32 animatable = FbxPropertyFlags::eAnimatable;
    LclTranslation = AddProperty("Lcl Translation", FbxLocalTranslationDT, kZero, animatable);
    LclRotation = AddProperty("Lcl Rotation", FbxLocalRotationDT, kZero, animatable);
    LclScaling = AddProperty("Lcl Scaling", FbxLocalScalingDT, kOne, animatable);
    Visibility = AddProperty("Visibility", FbxVisibilityDT, 1.0, animatable);
    VisibilityInheritance = AddProperty("Visibility Inheritance", FbxVisibilityInheritanceDT, true);
}

bool FbxNode::AddChild(FbxNode* child) {
    if (!child) {
        return false;
    }
    for (const FbxNode* n = this; n; n = n->GetParent()) {
        if (n == child) {
            return false;
        }
    }
    if (FbxNode* parent = child->GetParent()) {
        parent->DisconnectSrcObject(child);
    }
    return ConnectSrcObject(child);
}

FbxNode* FbxNode::RemoveChild(FbxNode* child) {
    return child && child->GetParent() == this && DisconnectSrcObject(child) ? child : nullptr;
}

FbxNode* FbxNode::GetParent() const {
    return GetDstObject<FbxNode>(0);
}

int FbxNode::GetChildCount(bool recursive) const {
    const int count = GetSrcObjectCount<FbxNode>();
    int total = count;
    for (int i = 0; recursive && i < count; ++i) {
        total += GetChild(i)->GetChildCount(true);
    }
    return total;
}

FbxNode* FbxNode::GetChild(int index) const {
    return GetSrcObject<FbxNode>(index);
}

FbxNode* FbxNode::FindChild(const char* name, bool recursive) const {
    const int count = GetChildCount();
    for (int i = 0; i < count; ++i) {
        if (GetChild(i)->GetNameString() == name) {
            return GetChild(i);
        }
    }
    for (int i = 0; recursive && i < count; ++i) {
        if (FbxNode* found = GetChild(i)->FindChild(name, true)) {
            return found;
        }
    }
    return nullptr;
}

bool FbxNode::SetNodeAttribute(FbxNodeAttribute* attribute) {
    FbxNodeAttribute* current = GetNodeAttribute();
    if (attribute == current) {
        return attribute != nullptr;
    }
    if (attribute && attribute->GetNode()) {
        return false;
    }
    if (current) {
        DisconnectSrcObject(current);
    }
    if (!attribute) {
        DefaultAttributeIndex.Set(-1);
        return true;
    }
    ConnectSrcObject(attribute);
    DefaultAttributeIndex.Set(0);
    return true;
}

FbxNodeAttribute* FbxNode::GetNodeAttribute() const {
    return GetSrcObject<FbxNodeAttribute>(0);
}

FbxSkeleton* FbxNode::GetSkeleton() const {
    return FbxCast<FbxSkeleton>(GetNodeAttribute());
}

FbxNull* FbxNode::GetNull() const {
    return FbxCast<FbxNull>(GetNodeAttribute());
}

FbxMarker* FbxNode::GetMarker() const {
    return FbxCast<FbxMarker>(GetNodeAttribute());
}

void FbxNode::SetTransformationInheritType(FbxTransform::EInheritType type) {
    InheritType.Set(type);
    mInheritType = type;
}

void FbxNode::GetTransformationInheritType(FbxTransform::EInheritType& type) const {
    type = mInheritType;
}

const char* FbxNode::GetSubTypeName() const {
    const FbxNodeAttribute* attribute = GetNodeAttribute();
    return attribute ? attribute->GetSubTypeName() : "Null";
}
