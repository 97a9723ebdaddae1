#include "fbx/scene/fbxnull.h"

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxNull, "NodeAttribute", "NodeAttribute", true)

FbxNull::FbxNull(FbxManager& manager, const char* name) : FbxNodeAttribute(manager, name) {
    Size = AddProperty("Size", FbxDoubleDT, 100.0);
    Look = AddProperty("Look", FbxEnumDT, eCross);
    Look.AddEnumValue("None");
    Look.AddEnumValue("Cross");
}
