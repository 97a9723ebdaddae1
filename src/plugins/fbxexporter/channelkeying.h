#pragma once

#include "fbx/scene/fbxtime.h"

class FbxAnimCurve;
class FbxAnimLayer;
class FbxNode;
class FbxProperty;
class FbxScene;
class FbxString;

// The node of an animated segment, found by name, with its Lcl Rotation and Lcl Translation curve
// nodes made on `layer` when missing (rotation first). Null when no node has that name.
FbxNode* animatedNode(FbxScene* scene, FbxAnimLayer* layer, const FbxString& name);

// Adds one linear key of `value` (stored in single precision) at `time` to channel `channel`
// ("X", "Y", "Z") of an animatable property on `layer`, making the curve when missing. A key
// already at `time` takes the new value. Returns the curve, or null when none could be made
// (the key is then skipped).
FbxAnimCurve* keyChannel(FbxProperty& property, FbxAnimLayer* layer, const char* channel,
                         FbxTime time, double value);

// Keys the three channels of a three-double property in the order X, Y, Z. When `reserve` is
// positive, the X curve reserves room for that many keys, so long takes append without
// reallocating.
void keyChannels(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, double x, double y,
                 double z, int reserve = 0);
