#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "fbx/scene/fbxconnectionpoint.h"
#include "fbx/scene/fbxdatatype.h"
#include "fbx/scene/fbxpropertyvalue.h"

class FbxObject;

// Storage of one property, owned by its object. Reached through FbxProperty
// handles; nothing outside the model needs its fields.
struct FbxPropertyData {
    FbxObject* mOwner = nullptr;
    FbxPropertyData* mParent = nullptr;
    std::vector<FbxPropertyData*> mChildren;
    size_t mSiblingIndex = 0;     // position among the parent's children (or the roots)
    FbxString mName;              // local name ("X")
    FbxString mHierarchicalName;  // full name ("d|X")
    FbxDataType mType;
    FbxUInt32 mFlags = 0;
    FbxPropertyValue mValue;
    std::optional<double> mMin;
    std::optional<double> mMax;
    std::vector<FbxString> mEnumValues;
    FbxConnectionPoint mConnections;
};
