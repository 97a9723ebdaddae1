#include "fbx/scene/fbxskeleton.h"

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxSkeleton, "NodeAttribute", "NodeAttribute", true)

FbxSkeleton::FbxSkeleton(FbxManager& manager, const char* name) : FbxNodeAttribute(manager, name) {
    Size = AddProperty("Size", FbxDoubleDT, sDefaultSize);
    LimbLength =
        AddProperty("LimbLength", FbxDoubleDT, sDefaultLimbLength, FbxPropertyFlags::eHidden);
}

void FbxSkeleton::SetSkeletonType(EType type) {
    mSkeletonType = type;
    mSkeletonTypeIsSet = true;
    LimbLength.ModifyFlag(FbxPropertyFlags::eHidden, type != eLimb && type != eLimbNode);
}

const char* FbxSkeleton::GetSubTypeName() const {
    switch (mSkeletonType) {
        case eLimb:
            return "Limb";
        case eLimbNode:
            return "LimbNode";
        case eEffector:
            return "Effector";
        default:
            return "Root";
    }
}

std::vector<const char*> FbxSkeleton::GetTypeFlags() const {
    if (mSkeletonType == eRoot) {
        return {"Null", "Skeleton", "Root"};
    }
    return {"Skeleton"};
}
