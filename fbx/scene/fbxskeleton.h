#pragma once

#include "fbx/scene/fbxnodeattribute.h"

// A joint of a skeleton.
class FbxSkeleton : public FbxNodeAttribute {
    FBX_DECLARE_CLASS(FbxSkeleton, FbxNodeAttribute)

public:
    enum EType { eRoot = 0, eLimb = 1, eLimbNode = 2, eEffector = 3 };

    static constexpr double sDefaultSize = 100.0;
    static constexpr double sDefaultLimbLength = 1.0;

    FbxPropertyT<double> Size;
    // Meaningful for limbs only; hidden for the other types.
    FbxPropertyT<double> LimbLength;

    // Also records that the type was chosen and shows "LimbLength" only for
    // the limb types (1, 2).
    void SetSkeletonType(EType type);
    EType GetSkeletonType() const { return mSkeletonType; }
    bool GetSkeletonTypeIsSet() const { return mSkeletonTypeIsSet; }

    FbxNodeAttribute::EType GetAttributeType() const override {
        return FbxNodeAttribute::eSkeleton;
    }
    // "Root", "Limb", "LimbNode" or "Effector".
    const char* GetSubTypeName() const override;
    std::vector<const char*> GetTypeFlags() const override;

protected:
    FbxSkeleton(FbxManager& manager, const char* name);

private:
    EType mSkeletonType = eRoot;
    bool mSkeletonTypeIsSet = false;
};
