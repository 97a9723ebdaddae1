#include "fbx/scene/fbxscene.h"

#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"

FBX_IMPLEMENT_CLASS(FbxScene, "Document", "Scene", false)

FbxScene::FbxScene(FbxManager& manager, const char* name) : FbxDocument(manager, name) {
    mRootNode = manager.CreateObject<FbxNode>("RootNode");
    AddMember(mRootNode);
    mGlobalSettings = manager.CreateObject<FbxGlobalSettings>("GlobalSettings");
    AddMember(mGlobalSettings);
}

void FbxScene::OnSrcObjectDisconnected(FbxObject* object) {
    if (object == mRootNode) {
        mRootNode = nullptr;
    }
    FbxDocument::OnSrcObjectDisconnected(object);
}

void FbxScene::SetCurrentAnimationStack(FbxAnimStack* stack) {
    ActiveAnimStackName.Set(stack ? stack->GetNameString() : FbxString());
}

FbxAnimStack* FbxScene::GetCurrentAnimationStack() const {
    const FbxString name = ActiveAnimStackName.Get();
    const int count = GetMemberCount<FbxAnimStack>();
    for (int i = 0; i < count; ++i) {
        FbxAnimStack* stack = GetMember<FbxAnimStack>(i);
        if (name.IsEmpty() || stack->GetNameString() == name) {
            return stack;
        }
    }
    return nullptr;
}

int FbxScene::GetNodeCount() const {
    return GetMemberCount<FbxNode>();
}

FbxNode* FbxScene::GetNode(int index) const {
    return GetMember<FbxNode>(index);
}
