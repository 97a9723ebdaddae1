#include "fbx/scene/fbxnodeattribute.h"

#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"

FBX_IMPLEMENT_CLASS(FbxNodeAttribute, "NodeAttribute", "NodeAttribute", true)

FbxNodeAttribute::FbxNodeAttribute(FbxManager& manager, const char* name)
    : FbxObject(manager, name) {
    Color = AddProperty("Color", FbxColor3DT, FbxDouble3(0.8, 0.8, 0.8));
}

FbxNode* FbxNodeAttribute::GetNode() const {
    return GetDstObject<FbxNode>(0);
}
