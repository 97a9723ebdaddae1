#pragma once

#include <string>

#include "fbx/scene/fbxtime.h"

class FbxManager;
class FbxScene;

namespace fbxtest {

// An animated skeleton like the exporter writes: a root "Reference" and joints below it,
// each with linear keys on the three channels of Lcl Translation and Lcl Rotation at
// 120 frames per second.
struct AnimatedSceneShape {
    int joints = 2;     // below the root
    bool chain = true;  // a chain (each joint the child of the previous), else a binary tree
    int keys = 10;
    const char* takeName = "Take 001";
};

FbxScene* BuildAnimatedScene(FbxManager* manager, const AnimatedSceneShape& shape);

// Names and parents of the nodes (index 0 is the root "Reference").
std::string NodeName(int node);
int ParentOf(int node, const AnimatedSceneShape& shape);

// The key of node `node`, channel `axis` (0..2) at key `key`, as stored (single precision).
FbxTime KeyTime(int key);
float TranslationValue(int node, int axis, int key);
// Degrees; kept inside (-90, 90) so that one Euler triple names each rotation.
float RotationValue(int node, int axis, int key);

}  // namespace fbxtest
