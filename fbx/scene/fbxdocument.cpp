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
    return it == mNodesByName.end() ? nullptr : it->second.front().node;
}

// A new member brings along what is already connected to it (a node's
// attribute and children, a property's curve nodes).
void FbxDocument::OnSrcObjectConnected(FbxObject* object) {
    if (auto* node = FbxCast<FbxNode>(object)) {
        IndexNode(node, mNextConnectionOrder++);
    }
    if (object->mDocument) {
        return;
    }
    object->mDocument = this;
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
    if (auto* node = FbxCast<FbxNode>(object)) {
        UnindexNode(node, node->GetNameString());
    }
    if (object->mDocument != this) {
        return;
    }
    if (object == mInfo) {
        mInfo = nullptr;
    }
    object->mDocument = nullptr;
}

void FbxDocument::MemberRenamed(FbxObject* member, const FbxString& oldName) {
    auto* node = FbxCast<FbxNode>(member);
    if (const FbxUInt64 order = node ? UnindexNode(node, oldName) : 0) {
        IndexNode(node, order);
    }
}

void FbxDocument::IndexNode(FbxNode* node, FbxUInt64 order) {
    std::vector<IndexedNode>& nodes = mNodesByName[node->GetNameString()];
    auto position = std::upper_bound(
        nodes.begin(), nodes.end(), order,
        [](FbxUInt64 value, const IndexedNode& entry) { return value < entry.order; });
    nodes.insert(position, IndexedNode{order, node});
}

FbxUInt64 FbxDocument::UnindexNode(FbxNode* node, const FbxString& name) {
    auto it = mNodesByName.find(name);
    if (it == mNodesByName.end()) {
        return 0;
    }
    std::vector<IndexedNode>& nodes = it->second;
    auto entry = std::find_if(nodes.begin(), nodes.end(),
                              [node](const IndexedNode& e) { return e.node == node; });
    if (entry == nodes.end()) {
        return 0;
    }
    const FbxUInt64 order = entry->order;
    nodes.erase(entry);
    if (nodes.empty()) {
        mNodesByName.erase(it);
    }
    return order;
}
