#include "fbx/scene/fbxmanager.h"

#include "fbx/scene/fbxdocument.h"
#include "zavoversion.h"

FbxManager* FbxManager::Create() {
    return new FbxManager();
}

void FbxManager::Destroy() {
    delete this;
}

// Objects go in reverse creation order without disconnecting: everything they
// could be connected to goes with them.
FbxManager::~FbxManager() {
    for (auto it = mObjects.rbegin(); it != mObjects.rend(); ++it) {
        delete *it;
    }
    for (auto it = mDefaultObjects.rbegin(); it != mDefaultObjects.rend(); ++it) {
        delete it->second;
    }
}

const char* FbxManager::GetVersion(bool) {
    return ZavoVersion::Text;
}

void FbxManager::GetFileFormatVersion(int& major, int& minor, int& revision) {
    major = 7;
    minor = 7;
    revision = 0;
}

bool FbxManager::LoadPluginsDirectory(const char*, const char*) {
    return true;
}

FbxObject* FbxManager::GetDefaultObject(const FbxClassId& classId) {
    for (const auto& [id, object] : mDefaultObjects) {
        if (id == &classId) {
            return object;
        }
    }
    if (!classId.GetConstructor()) {
        return nullptr;
    }
    FbxObject* object = classId.GetConstructor()(*this, classId.GetName());
    // A default object belongs to no document and is not counted among the objects.
    mObjects[object->mManagerSlot] = nullptr;
    ++mFreeSlots;
    mDefaultObjects.emplace_back(&classId, object);
    return object;
}

void FbxManager::Register(FbxObject* object) {
    object->mManagerSlot = mObjects.size();
    mObjects.push_back(object);
}

void FbxManager::Release(FbxObject* object) {
    for (auto it = mDefaultObjects.begin(); it != mDefaultObjects.end(); ++it) {
        if (it->second == object) {
            mDefaultObjects.erase(it);
            delete object;
            return;
        }
    }
    mObjects[object->mManagerSlot] = nullptr;
    ++mFreeSlots;
    delete object;
    if (mFreeSlots > 64 && mFreeSlots * 2 > mObjects.size()) {
        std::erase(mObjects, nullptr);
        for (size_t i = 0; i < mObjects.size(); ++i) {
            mObjects[i]->mManagerSlot = i;
        }
        mFreeSlots = 0;
    }
}

void FbxManager::AddToContainer(FbxObject* container, FbxObject* object) {
    FbxDocument* document = FbxCast<FbxDocument>(container);
    if (!document) document = container->GetDocument();
    if (document) document->AddMember(object);
}
