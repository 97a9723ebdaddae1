#include "fbx/scene/fbxobject.h"

#include "fbx/scene/fbxconnect.h"
#include "fbx/scene/fbxdocument.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

namespace {

template <class T>
T* At(const std::vector<T*>& list, int index) {
    return index >= 0 && static_cast<size_t>(index) < list.size() ? list[index] : nullptr;
}

}  // namespace

const FbxClassId FbxObject::ClassId("FbxObject", nullptr, "Object", "Object", false,
                                    &FbxManager::Construct<FbxObject>);

FbxObject* FbxObject::Create(FbxManager* manager, const char* name) {
    return manager ? manager->CreateObject<FbxObject>(name) : nullptr;
}

FbxObject* FbxObject::Create(FbxObject* container, const char* name) {
    return FbxManager::CreateInContainer<FbxObject>(container, name);
}

FbxObject::FbxObject(FbxManager& manager, const char* name)
    : mManager(&manager), mUniqueId(++manager.mLastUniqueId), mName(name) {}

FbxObject::~FbxObject() = default;

void FbxObject::Destroy() {
    FbxConnect::UnlinkAll(this);
    mManager->Release(this);
}

void FbxObject::SetName(const char* name) {
    const FbxString oldName = mName;
    mName = FbxString(name);
    if (oldName == mName) {
        return;
    }
    // Every document this object is connected to indexes nodes by name.
    for (FbxObject* dst : mConnections.mDstObjects) {
        if (auto* document = FbxCast<FbxDocument>(dst)) {
            document->MemberRenamed(this, oldName);
        }
    }
}

FbxString FbxObject::GetNameWithNameSpacePrefix() const {
    return FbxString(GetNamePrefix()) + "::" + mName;
}

FbxScene* FbxObject::GetScene() const {
    if (auto* self = FbxCast<FbxScene>(const_cast<FbxObject*>(this))) {
        return self;
    }
    return FbxCast<FbxScene>(mDocument);
}

FbxProperty FbxObject::GetFirstProperty() const {
    return FbxProperty(mRootProperties.empty() ? nullptr : mRootProperties.front());
}

FbxProperty FbxObject::GetNextProperty(const FbxProperty& property) const {
    if (!property.IsValid() || property.GetFbxObject() != this) {
        return FbxProperty();
    }
    if (property.GetChildCount() > 0) {
        return property.GetChild(0);
    }
    for (FbxProperty p = property; p.IsValid(); p = p.GetParent()) {
        FbxProperty sibling = p.GetSibling();
        if (sibling.IsValid()) {
            return sibling;
        }
    }
    return FbxProperty();
}

FbxProperty FbxObject::FindProperty(const char* name) const {
    if (!name) {
        return FbxProperty();
    }
    for (const auto& data : mProperties) {
        if (data->mHierarchicalName == name) {
            return FbxProperty(data.get());
        }
    }
    return FbxProperty();
}

bool FbxObject::ConnectSrcObject(FbxObject* object) {
    return FbxConnect::Link(FbxConnect::Of(object), FbxConnect::Of(this));
}

bool FbxObject::ConnectDstObject(FbxObject* object) {
    return FbxConnect::Link(FbxConnect::Of(this), FbxConnect::Of(object));
}

bool FbxObject::ConnectSrcProperty(const FbxProperty& property) {
    return FbxConnect::Link(FbxConnect::Of(property), FbxConnect::Of(this));
}

bool FbxObject::ConnectDstProperty(const FbxProperty& property) {
    return FbxConnect::Link(FbxConnect::Of(this), FbxConnect::Of(property));
}

bool FbxObject::DisconnectSrcObject(FbxObject* object) {
    return FbxConnect::Unlink(FbxConnect::Of(object), FbxConnect::Of(this));
}

bool FbxObject::DisconnectDstObject(FbxObject* object) {
    return FbxConnect::Unlink(FbxConnect::Of(this), FbxConnect::Of(object));
}

bool FbxObject::DisconnectSrcProperty(const FbxProperty& property) {
    return FbxConnect::Unlink(FbxConnect::Of(property), FbxConnect::Of(this));
}

bool FbxObject::DisconnectDstProperty(const FbxProperty& property) {
    return FbxConnect::Unlink(FbxConnect::Of(this), FbxConnect::Of(property));
}

bool FbxObject::IsConnectedSrcObject(const FbxObject* object) const {
    return object && object->IsConnectedDstObject(this);
}

bool FbxObject::IsConnectedDstObject(const FbxObject* object) const {
    for (const FbxObject* dst : mConnections.mDstObjects) {
        if (dst == object) {
            return true;
        }
    }
    return false;
}

FbxObject* FbxObject::GetSrcObject(int index) const {
    return At(mConnections.mSrcObjects, index);
}

FbxObject* FbxObject::GetDstObject(int index) const {
    return At(mConnections.mDstObjects, index);
}

FbxProperty FbxObject::GetSrcProperty(int index) const {
    return FbxProperty(At(mConnections.mSrcProperties, index));
}

FbxProperty FbxObject::GetDstProperty(int index) const {
    return FbxProperty(At(mConnections.mDstProperties, index));
}

int FbxObject::CountOf(const std::vector<FbxObject*>& list, const FbxClassId& classId) {
    int count = 0;
    for (const FbxObject* object : list) {
        count += object->Is(classId) ? 1 : 0;
    }
    return count;
}

FbxObject* FbxObject::NthOf(const std::vector<FbxObject*>& list, const FbxClassId& classId,
                            int index) {
    for (FbxObject* object : list) {
        if (object->Is(classId) && index-- == 0) {
            return object;
        }
    }
    return nullptr;
}

void FbxObject::OnSrcObjectConnected(FbxObject*) {}

void FbxObject::OnSrcObjectDisconnected(FbxObject*) {}
