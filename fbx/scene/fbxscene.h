#pragma once

#include "fbx/scene/fbxdocument.h"

class FbxNode;
class FbxGlobalSettings;
class FbxAnimStack;

// A document with one root node, one global settings object and the current
// animation stack. Both the root node ("RootNode") and the global settings are
// members made with the scene.
class FbxScene : public FbxDocument {
    FBX_DECLARE_CLASS(FbxScene, FbxDocument)

public:
    FbxNode* GetRootNode() const { return mRootNode; }
    FbxGlobalSettings& GetGlobalSettings() const { return *mGlobalSettings; }

    // The same as SetDocumentInfo/GetDocumentInfo.
    void SetSceneInfo(FbxDocumentInfo* info) { SetDocumentInfo(info); }
    FbxDocumentInfo* GetSceneInfo() const { return GetDocumentInfo(); }

    // Also stores the stack's name in "ActiveAnimStackName".
    void SetCurrentAnimationStack(FbxAnimStack* stack);
    FbxAnimStack* GetCurrentAnimationStack() const;

    // Member nodes in membership order (the root node first).
    int GetNodeCount() const;
    const char* GetSubTypeName() const override { return "Scene"; }
    FbxNode* GetNode(int index) const;

protected:
    FbxScene(FbxManager& manager, const char* name);
    void OnSrcObjectDisconnected(FbxObject* object) override;

private:
    FbxNode* mRootNode = nullptr;
    FbxGlobalSettings* mGlobalSettings = nullptr;
};
