#pragma once

#include <vector>

class FbxObject;
struct FbxPropertyData;

// The connection lists of one end: an object or one of its properties. Each
// list keeps the order in which connections were made. A connection from A to
// B appears in A's destination list and in B's source list.
struct FbxConnectionPoint {
    std::vector<FbxObject*> mSrcObjects;
    std::vector<FbxPropertyData*> mSrcProperties;
    std::vector<FbxObject*> mDstObjects;
    std::vector<FbxPropertyData*> mDstProperties;
};
