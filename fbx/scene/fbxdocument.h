#pragma once

#include <unordered_map>
#include <vector>

#include "fbx/scene/fbxobject.h"

class FbxDocumentInfo;
class FbxNode;

// A container of objects (its members). An object joins a document when it is
// created inside it, added with AddMember, or connected as a source to an object
// that is already a member (a node added as child of a member node joins with
// its attribute and children). Membership is a connection from the object to
// the document.
class FbxDocument : public FbxObject {
    FBX_DECLARE_CLASS(FbxDocument, FbxObject)

public:
    FbxProperty SourceObject;  // object reference, no value
    FbxPropertyT<FbxString> ActiveAnimStackName;

    bool AddMember(FbxObject* member);
    bool RemoveMember(FbxObject* member);
    // Members in the order they joined.
    int GetMemberCount() const { return GetSrcObjectCount(); }
    FbxObject* GetMember(int index = 0) const { return GetSrcObject(index); }
    template <class T>
    int GetMemberCount() const {
        return GetSrcObjectCount<T>();
    }
    template <class T>
    T* GetMember(int index = 0) const {
        return GetSrcObject<T>(index);
    }
    bool IsMember(const FbxObject* object) const { return object && object->GetDocument() == this; }

    // Document information (title, author, ...), a member of the document.
    void SetDocumentInfo(FbxDocumentInfo* info);
    FbxDocumentInfo* GetDocumentInfo() const { return mInfo; }

    // The first node connected to this document that is named name (exact
    // case), in connection order: what a scan of the connected nodes would find.
    // An index kept up to date on connection, rename and removal answers it.
    FbxNode* FindNodeByName(const FbxString& name) const;

protected:
    FbxDocument(FbxManager& manager, const char* name);
    void OnSrcObjectConnected(FbxObject* object) override;
    void OnSrcObjectDisconnected(FbxObject* object) override;

private:
    friend class FbxObject;

    // A node connected to this document, with when it was connected.
    struct IndexedNode {
        FbxUInt64 order;
        FbxNode* node;
    };

    void IndexNode(FbxNode* node, FbxUInt64 order);
    void MemberRenamed(FbxObject* member, const FbxString& oldName);
    // The order the node was indexed with under name; 0 when it was not.
    FbxUInt64 UnindexNode(FbxNode* node, const FbxString& name);

    FbxDocumentInfo* mInfo = nullptr;
    FbxUInt64 mNextConnectionOrder = 1;
    // Every node connected to this document (also one whose document is another),
    // by name, each list in connection order: the first entry is what a scan of
    // the connected nodes in order would find first.
    std::unordered_map<FbxString, std::vector<IndexedNode>> mNodesByName;
};
