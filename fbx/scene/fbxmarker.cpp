#include "fbx/scene/fbxmarker.h"

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxMarker, "NodeAttribute", "NodeAttribute", true)

FbxMarker::FbxMarker(FbxManager& manager, const char* name) : FbxNodeAttribute(manager, name) {
    Size = AddProperty("Size", FbxDoubleDT, 100.0);
    Look = AddProperty("Look", FbxEnumDT, eCube);
    for (const char* look : {"Cube", "Hard Cross", "Light Cross", "Sphere", "Capsule", "Box",
                             "Bone", "Circle", "Square", "Stick", "None"}) {
        Look.AddEnumValue(look);
    }
}
