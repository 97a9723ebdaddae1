#pragma once

#include "fbx/scene/fbxnodeattribute.h"

// A node that is only a transform (a locator).
class FbxNull : public FbxNodeAttribute {
    FBX_DECLARE_CLASS(FbxNull, FbxNodeAttribute)

public:
    enum ELook { eNone = 0, eCross = 1 };

    FbxPropertyT<double> Size;
    FbxPropertyT<ELook> Look;

    FbxNodeAttribute::EType GetAttributeType() const override { return FbxNodeAttribute::eNull; }
    const char* GetSubTypeName() const override { return "Null"; }
    std::vector<const char*> GetTypeFlags() const override { return {"Null"}; }

protected:
    FbxNull(FbxManager& manager, const char* name);
};
