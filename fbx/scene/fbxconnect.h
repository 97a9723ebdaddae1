#pragma once

#include "fbx/scene/fbxobject.h"

// The one place where connection lists change, so both ends always agree and
// documents hear about their members. Internal to the scene model.
struct FbxConnect {
    // An end of a connection: an object, or one of its properties.
    struct End {
        FbxObject* object;
        FbxPropertyData* property;
    };
    static End Of(FbxObject* object) { return {object, nullptr}; }
    static End Of(const FbxProperty& property);

    // False for a null end, a self-connection or an existing connection.
    static bool Link(End src, End dst);
    static bool Unlink(End src, End dst);
    // Cuts every connection of object and of its properties.
    static void UnlinkAll(FbxObject* object);
    static FbxConnectionPoint& PointOf(const End& end);
};
