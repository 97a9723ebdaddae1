#include "fbx/scene/fbxdocument.h"

#include <algorithm>

#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"

FBX_IMPLEMENT_CLASS(FbxDocument, "Document", "Document", false)

FbxDocument::FbxDocument(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    SourceObject = FbxProperty::Create(this, FbxReferenceDT, "SourceObject");
    ActiveAnimStackName = AddProperty("ActiveAnimStackName", FbxStringDT, FbxString());
}

bool FbxDocument::AddMember(FbxObject* member) {
    return member && member != this && ConnectSrcObject(member);
}

bool FbxDocument::RemoveMember(FbxObject* member) {
    return DisconnectSrcObject(member);
}

void FbxDocument::SetDocumentInfo(FbxDocumentInfo* info) {
    if (info == mInfo) {
        return;
    }
    if (mInfo) {
        RemoveMember(mInfo);
    }
    mInfo = info;
    if (info) {
        AddMember(info);
    }
}

FbxNode* FbxDocument::FindNodeByName(const FbxString& name) const {
    auto it = mNodesByName.find(name);
    return it == mNodesByName.end() ? nullptr : it->second.front();
}

// A new member brings along what is already connected to it (a node's
// attribute and children, a property's curve nodes).
void FbxDocument::OnSrcObjectConnected(FbxObject* object) {
    if (object->mDocument) {
        return;
    }
    object->mDocument = this;
    object->mDocumentOrder = mNextMemberOrder++;
    if (auto* node = FbxCast<FbxNode>(object)) {
        IndexNode(node);
    }
    std::vector<FbxObject*> sources = object->mConnections.mSrcObjects;
    for (const auto& property : object->mProperties) {
        const auto& more = property->mConnections.mSrcObjects;
        sources.insert(sources.end(), more.begin(), more.end());
    }
    for (FbxObject* source : sources) {
        if (!source->mDocument) {
            AddMember(source);
        }
    }
}

void FbxDocument::OnSrcObjectDisconnected(FbxObject* object) {
    if (object->mDocument != this) {
        return;
    }
    if (auto* node = FbxCast<FbxNode>(object)) {
        UnindexNode(node, node->GetNameString());
    }
    if (object == mInfo) {
        mInfo = nullptr;
    }
    object->mDocument = nullptr;
}

void FbxDocument::MemberRenamed(FbxObject* member, const FbxString& oldName) {
    if (auto* node = FbxCast<FbxNode>(member)) {
        UnindexNode(node, oldName);
        IndexNode(node);
    }
}

void FbxDocument::IndexNode(FbxNode* node) {
    std::vector<FbxNode*>& nodes = mNodesByName[node->GetNameString()];
    auto position = std::upper_bound(nodes.begin(), nodes.end(), node, [](FbxNode* a, FbxNode* b) {
        return a->mDocumentOrder < b->mDocumentOrder;
    });
    nodes.insert(position, node);
}

void FbxDocument::UnindexNode(FbxNode* node, const FbxString& name) {
    auto it = mNodesByName.find(name);
    if (it == mNodesByName.end()) {
        return;
    }
    std::erase(it->second, node);
    if (it->second.empty()) {
        mNodesByName.erase(it);
    }
}
