#pragma once

#include <memory>
#include <vector>

#include "fbx/scene/fbxclassid.h"
#include "fbx/scene/fbxconnectionpoint.h"
#include "fbx/scene/fbxproperty.h"
#include "fbx/scene/fbxtypes.h"

class FbxManager;
class FbxDocument;
class FbxScene;

// Base of every object of the scene model. Objects are created through their
// class's Create(manager or container, name), owned by the manager and freed by
// Destroy() or with the manager.
//
// How a writer walks the model:
//  - Objects of a scene: FbxDocument::GetMemberCount()/GetMember(i), in the order
//    they joined the scene (creation order for objects created in the scene).
//  - Per object: GetTypeName() is the record type ("Model", "NodeAttribute",
//    "AnimationStack", "AnimationLayer", "AnimationCurveNode", "AnimationCurve",
//    "GlobalSettings", "SceneInfo", "Document"); GetNamePrefix() the class part of
//    the record name ("Model", "AnimStack", ...) and GetNameWithNameSpacePrefix()
//    the whole "Model::Hips"; GetSubTypeName() the third value ("LimbNode",
//    "Root", "Null", "Marker" or ""); GetUniqueID() the id, unique among the manager's objects.
//  - Properties, depth first: for (FbxProperty p = GetFirstProperty();
//    p.IsValid(); p = GetNextProperty(p)). See FbxProperty for what each gives.
//  - Template: GetClassId().HasPropertyTemplate() says whether files carry one;
//    its name is GetClassId().GetName() ("FbxNode") and its properties are those
//    of FbxManager::GetDefaultObject(GetClassId()). A property of the template
//    is found by GetHierarchicalName() with FindProperty.
//  - Connections of an object, each list in connection order:
//    GetDstObject(i) (object -> object), GetDstProperty(i) (object -> property);
//    for each property, its GetDstObject(i) and GetDstProperty(i) (property ->
//    object, property -> property). A connection whose destination is a
//    document (FbxDocument) is scene membership, not part of the content.
//  - IsSavable(): objects flagged not savable are skipped.
class FbxObject {
public:
    static const FbxClassId ClassId;
    virtual const FbxClassId& GetRuntimeClassId() const { return ClassId; }
    static FbxObject* Create(FbxManager* manager, const char* name);
    static FbxObject* Create(FbxObject* container, const char* name);

    FbxObject(const FbxObject&) = delete;
    FbxObject& operator=(const FbxObject&) = delete;

    // Disconnects the object from everything and frees it.
    void Destroy();

    const char* GetName() const { return mName.Buffer(); }
    const FbxString& GetNameString() const { return mName; }
    void SetName(const char* name);
    // "Model::Hips": the class prefix and the name.
    FbxString GetNameWithNameSpacePrefix() const;
    const char* GetNamePrefix() const { return GetClassId().GetNamePrefix(); }
    FbxUInt64 GetUniqueID() const { return mUniqueId; }
    const FbxClassId& GetClassId() const { return GetRuntimeClassId(); }
    // The C++ class name, which is also the name of the class's property template.
    const char* GetClassName() const { return GetClassId().GetName(); }
    // Record type in files.
    const char* GetTypeName() const { return GetClassId().GetFbxTypeName(); }
    // Third value of the object's record ("LimbNode" for a limb-node model).
    virtual const char* GetSubTypeName() const { return ""; }
    bool Is(const FbxClassId& classId) const { return GetClassId().Is(classId); }
    template <class T>
    bool Is() const {
        return Is(T::ClassId);
    }

    FbxManager* GetManager() const { return mManager; }
    // The document this object is a member of; null when it is in none.
    FbxDocument* GetDocument() const { return mDocument; }
    // The scene this object is a member of (a scene is its own scene).
    FbxScene* GetScene() const;

    bool IsSavable() const { return mSavable; }
    void SetSavable(bool savable) { mSavable = savable; }

    // Properties in depth-first order (a compound, then its children).
    FbxProperty GetFirstProperty() const;
    FbxProperty GetNextProperty(const FbxProperty& property) const;
    // By hierarchical name, exact case.
    FbxProperty FindProperty(const char* name) const;
    int GetPropertyCount() const { return static_cast<int>(mProperties.size()); }

    bool ConnectSrcObject(FbxObject* object);
    bool ConnectDstObject(FbxObject* object);
    bool ConnectSrcProperty(const FbxProperty& property);
    bool ConnectDstProperty(const FbxProperty& property);
    bool DisconnectSrcObject(FbxObject* object);
    bool DisconnectDstObject(FbxObject* object);
    bool DisconnectSrcProperty(const FbxProperty& property);
    bool DisconnectDstProperty(const FbxProperty& property);
    bool IsConnectedSrcObject(const FbxObject* object) const;
    bool IsConnectedDstObject(const FbxObject* object) const;

    int GetSrcObjectCount() const { return static_cast<int>(mConnections.mSrcObjects.size()); }
    FbxObject* GetSrcObject(int index = 0) const;
    int GetDstObjectCount() const { return static_cast<int>(mConnections.mDstObjects.size()); }
    FbxObject* GetDstObject(int index = 0) const;
    int GetSrcPropertyCount() const { return static_cast<int>(mConnections.mSrcProperties.size()); }
    FbxProperty GetSrcProperty(int index = 0) const;
    int GetDstPropertyCount() const { return static_cast<int>(mConnections.mDstProperties.size()); }
    FbxProperty GetDstProperty(int index = 0) const;

    // Filtered by class (T or a class derived from it); index counts matches only.
    template <class T>
    int GetSrcObjectCount() const {
        return CountOf(mConnections.mSrcObjects, T::ClassId);
    }
    template <class T>
    T* GetSrcObject(int index = 0) const {
        return static_cast<T*>(NthOf(mConnections.mSrcObjects, T::ClassId, index));
    }
    template <class T>
    int GetDstObjectCount() const {
        return CountOf(mConnections.mDstObjects, T::ClassId);
    }
    template <class T>
    T* GetDstObject(int index = 0) const {
        return static_cast<T*>(NthOf(mConnections.mDstObjects, T::ClassId, index));
    }

    const FbxConnectionPoint& GetConnections() const { return mConnections; }

    static int CountOf(const std::vector<FbxObject*>& list, const FbxClassId& classId);
    static FbxObject* NthOf(const std::vector<FbxObject*>& list, const FbxClassId& classId,
                            int index);

protected:
    FbxObject(FbxManager& manager, const char* name);
    virtual ~FbxObject();

    // Adds a property at the end, with its initial value.
    template <class T>
    FbxPropertyT<T> AddProperty(const char* name, const FbxDataType& type, const T& value,
                                FbxUInt32 flags = FbxPropertyFlags::eNone) {
        FbxProperty p = FbxProperty::Create(this, type, name, flags);
        p.Set(value);
        return FbxPropertyT<T>(p);
    }

    // Called after object became a source of this object, and before it stops being one.
    virtual void OnSrcObjectConnected(FbxObject* object);
    virtual void OnSrcObjectDisconnected(FbxObject* object);

private:
    friend class FbxManager;
    friend class FbxProperty;
    friend class FbxDocument;
    friend struct FbxConnect;

    FbxManager* mManager;
    FbxDocument* mDocument = nullptr;
    FbxUInt64 mUniqueId;
    size_t mManagerSlot = 0;
    bool mSavable = true;
    FbxString mName;
    std::vector<std::unique_ptr<FbxPropertyData>> mProperties;  // creation order
    std::vector<FbxPropertyData*> mRootProperties;              // depth-first roots
    FbxConnectionPoint mConnections;
};

// obj as T when it is of class T (or derived); null otherwise.
template <class T>
T* FbxCast(FbxObject* obj) {
    return obj && obj->Is(T::ClassId) ? static_cast<T*>(obj) : nullptr;
}
template <class T>
const T* FbxCast(const FbxObject* obj) {
    return obj && obj->Is(T::ClassId) ? static_cast<const T*>(obj) : nullptr;
}

template <class T>
int FbxProperty::GetSrcObjectCount() const {
    return mData ? FbxObject::CountOf(mData->mConnections.mSrcObjects, T::ClassId) : 0;
}
template <class T>
T* FbxProperty::GetSrcObject(int index) const {
    return mData ? static_cast<T*>(
                       FbxObject::NthOf(mData->mConnections.mSrcObjects, T::ClassId, index))
                 : nullptr;
}
