#pragma once

#include <vector>

#include "fbx/scene/fbxclassid.h"
#include "fbx/scene/fbxobject.h"
#include "fbx/scene/fbxtypes.h"

class FbxIOSettings;
class FbxIOPluginRegistry;

// Creates and owns every object of the scene model; destroying the manager
// destroys them all. One manager per export run.
class FbxManager {
public:
    static FbxManager* Create();
    // Frees the manager and every object it created.
    void Destroy();

    // The product version, "major.minor.revision", in both forms.
    static const char* GetVersion(bool full = true);
    static void GetFileFormatVersion(int& major, int& minor, int& revision);

    void SetIOSettings(FbxIOSettings* settings) { mIOSettings = settings; }
    FbxIOSettings* GetIOSettings() const { return mIOSettings; }
    // Everything this system reads and writes is built in; nothing is loaded.
    bool LoadPluginsDirectory(const char* directory, const char* extensions = nullptr);
    // The registry of file writers (provided by the file-export library).
    FbxIOPluginRegistry* GetIOPluginRegistry() const;

    // The class's default object: every property at its default value. Files use
    // it as the class's property template. Made on first use; null for classes
    // that cannot be instantiated.
    FbxObject* GetDefaultObject(const FbxClassId& classId);

    // Objects alive, in creation order (default objects excluded).
    int GetObjectCount() const { return static_cast<int>(mObjects.size() - mFreeSlots); }

    template <class T>
    T* CreateObject(const char* name) {
        T* object = new T(*this, name);
        Register(object);
        return object;
    }
    // Creates the object and makes it a member of container's document (or of
    // container itself when it is a document).
    template <class T>
    static T* CreateInContainer(FbxObject* container, const char* name) {
        if (!container) {
            return nullptr;
        }
        T* object = container->GetManager()->CreateObject<T>(name);
        AddToContainer(container, object);
        return object;
    }
    template <class T>
    static FbxObject* Construct(FbxManager& manager, const char* name) {
        return manager.CreateObject<T>(name);
    }

    FbxManager(const FbxManager&) = delete;
    FbxManager& operator=(const FbxManager&) = delete;

private:
    friend class FbxObject;

    FbxManager() = default;
    ~FbxManager();

    void Register(FbxObject* object);
    // Unlinks object from the manager and frees it (connections already cut).
    void Release(FbxObject* object);
    static void AddToContainer(FbxObject* container, FbxObject* object);

    std::vector<FbxObject*> mObjects;  // creation order; null where destroyed
    size_t mFreeSlots = 0;
    std::vector<std::pair<const FbxClassId*, FbxObject*>> mDefaultObjects;
    FbxIOSettings* mIOSettings = nullptr;
    // Ids count per manager, so that one export's ids never depend on what ran before it.
    FbxUInt64 mLastUniqueId = 0;
};
