#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

// A manager with one scene; everything a test makes goes with the manager.
class SceneTest : public ::testing::Test {
protected:
    void TearDown() override { mManager->Destroy(); }

    FbxManager* mManager = FbxManager::Create();
    FbxScene* mScene = FbxScene::Create(mManager, "scene");
};

// A key as a take's keying thread adds it: value and linear interpolation in one bracket of
// changes. Returns the key's index.
inline int KeyAsTaken(FbxAnimCurve& curve, FbxLongLong time, float value) {
    curve.KeyModifyBegin();
    const int key = curve.KeyAdd(FbxTime(time));
    curve.KeySetValue(key, value);
    curve.KeySetInterpolation(key, FbxAnimCurveDef::eInterpolationLinear);
    curve.KeyModifyEnd();
    return key;
}

// Hierarchical property names in the order a file lists them.
inline std::vector<std::string> PropertyNames(const FbxObject& object) {
    std::vector<std::string> names;
    for (FbxProperty p = object.GetFirstProperty(); p.IsValid(); p = object.GetNextProperty(p)) {
        names.push_back(p.GetHierarchicalName().Std());
    }
    return names;
}
