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

// The X, Y and Z curves of a three-double property, looked up by name at the first key and
// keyed through directly after that: a long take keys millions of times.
class ChannelCurves {
public:
    // Keys the three channels in the order X, Y, Z, making the curves at the first key. When
    // `reserve` is positive, each new curve reserves room for that many keys, so long takes
    // append without reallocating.
    void key(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, double x, double y, double z,
             int reserve = 0);

private:
    bool m_found = false;
    FbxAnimCurve* m_curves[3] = {};  // null where no curve could be made
};

// An animated segment's node and its curves, looked up once per run.
struct AnimatedSegment {
    bool found = false;
    FbxNode* node = nullptr;  // null when no node has the segment's name
    ChannelCurves translation;
    ChannelCurves rotation;
};
