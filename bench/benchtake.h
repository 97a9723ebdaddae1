#pragma once

#include <string>
#include <vector>

#include "fbx/scene/fbxtime.h"
#include "fbx/scene/fbxtypes.h"

class FbxAnimLayer;
class FbxManager;
class FbxScene;

// A synthetic take in the scene model, keyed the way the exporter keys a take: a chain of
// skeleton nodes, each animated in translation and rotation (six linear curves per node).
// Owns its manager; destroying the take frees every object.
class BenchTake {
public:
    explicit BenchTake(int nodeCount);
    ~BenchTake();
    BenchTake(const BenchTake&) = delete;
    BenchTake& operator=(const BenchTake&) = delete;

    // Keys every node at frame (240 fps), looking each node up by name as the exporter does.
    // reserveFrames is the take's length, used to reserve curve room up front.
    void KeyFrame(int frame, int reserveFrames);
    // Keys frames [0, frames) and sets the take's time span.
    void KeyFrames(int frames);

    FbxManager* Manager() const { return mManager; }
    FbxScene* Scene() const { return mScene; }
    FbxAnimLayer* Layer() const { return mLayer; }
    const std::vector<FbxString>& NodeNames() const { return mNames; }
    // Keys on every curve of the take.
    long long KeyCount() const;
    // Bytes the curves hold for their keys.
    size_t KeyMemoryUsage() const;

    static FbxTime FrameTime(int frame);

private:
    FbxManager* mManager;
    FbxScene* mScene;
    FbxAnimLayer* mLayer;
    std::vector<FbxString> mNames;
};
