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

// The X, Y and Z curves of a three-double property, looked up by name at the first key and
// keyed through directly after that: a long take keys millions of times.
class ChannelCurves {
public:
    // Keys the three channels in the order X, Y, Z with one linear key each (stored in single
    // precision; a key already at `time` takes the new value), making the curves at the first
    // key; a curve that cannot be made is skipped. When `reserve` is positive, each new curve
    // reserves room for that many keys, so long takes append without reallocating. New curves
    // keep their key times with `timesOf`'s, every frame keying every curve; the first curve
    // made becomes `timesOf` while it is null.
    void key(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, double x, double y, double z,
             int reserve, FbxAnimCurve*& timesOf);

private:
    void makeCurves(FbxProperty& property, FbxAnimLayer* layer, int reserve,
                    FbxAnimCurve*& timesOf);

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
