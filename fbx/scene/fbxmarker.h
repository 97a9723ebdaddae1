#pragma once

#include "fbx/scene/fbxnodeattribute.h"

// A tracked point, drawn with one of several looks. Its properties follow
// those of the null attribute (colour, size, look).
class FbxMarker : public FbxNodeAttribute {
    FBX_DECLARE_CLASS(FbxMarker, FbxNodeAttribute)

public:
    enum EType { eStandard = 0, eOptical, eEffectorFK, eEffectorIK };
    enum ELook {
        eCube = 0,
        eHardCross,
        eLightCross,
        eSphere,
        eCapsule,
        eBox,
        eBone,
        eCircle,
        eSquare,
        eStick,
        eNone
    };

    FbxPropertyT<double> Size;
    FbxPropertyT<ELook> Look;

    void SetType(EType type) { mType = type; }
    EType GetType() const { return mType; }

    FbxNodeAttribute::EType GetAttributeType() const override { return FbxNodeAttribute::eMarker; }
    const char* GetSubTypeName() const override { return "Marker"; }
    std::vector<const char*> GetTypeFlags() const override { return {"Marker"}; }

protected:
    FbxMarker(FbxManager& manager, const char* name);

private:
    EType mType = eStandard;
};
