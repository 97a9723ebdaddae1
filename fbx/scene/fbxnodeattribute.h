#pragma once

#include <vector>

#include "fbx/scene/fbxobject.h"

class FbxNode;

// What a node is (a skeleton joint, a null, a marker). Files write it as a
// "NodeAttribute" record whose sub-type and "TypeFlags" come from the class.
class FbxNodeAttribute : public FbxObject {
    FBX_DECLARE_CLASS(FbxNodeAttribute, FbxObject)

public:
    enum EType { eUnknown, eNull, eMarker, eSkeleton };

    FbxPropertyT<FbxDouble3> Color;

    virtual EType GetAttributeType() const { return eUnknown; }
    // The values of the record's "TypeFlags" field.
    virtual std::vector<const char*> GetTypeFlags() const { return {}; }
    // The node carrying this attribute, or null.
    FbxNode* GetNode() const;

protected:
    FbxNodeAttribute(FbxManager& manager, const char* name);
};
