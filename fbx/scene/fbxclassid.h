#pragma once

class FbxObject;
class FbxManager;

// Identity of a class of the scene model: its name, its base class and how the
// file format names it. One constant per class, linked to its base, so that
// class tests walk a short chain without run-time type information.
class FbxClassId {
public:
    using Constructor = FbxObject* (*)(FbxManager& manager, const char* name);

    // fbxTypeName: record type in files ("Model"); namePrefix: the part before
    // "::" in object names ("Model"); hasTemplate: whether files carry a property
    // template for the class (named by the class name, "FbxNode").
    constexpr FbxClassId(const char* name, const FbxClassId* parent, const char* fbxTypeName,
                         const char* namePrefix, bool hasTemplate, Constructor constructor)
        : mName(name),
          mParent(parent),
          mFbxTypeName(fbxTypeName),
          mNamePrefix(namePrefix),
          mHasTemplate(hasTemplate),
          mConstructor(constructor) {}

    FbxClassId(const FbxClassId&) = delete;
    FbxClassId& operator=(const FbxClassId&) = delete;

    const char* GetName() const { return mName; }
    const FbxClassId* GetParent() const { return mParent; }
    const char* GetFbxTypeName() const { return mFbxTypeName; }
    const char* GetNamePrefix() const { return mNamePrefix; }
    bool HasPropertyTemplate() const { return mHasTemplate; }
    // Null for abstract classes, which have no default object.
    Constructor GetConstructor() const { return mConstructor; }

    // True when this class is other or derives from it.
    bool Is(const FbxClassId& other) const {
        for (const FbxClassId* c = this; c; c = c->mParent) {
            if (c == &other) {
                return true;
            }
        }
        return false;
    }
    bool operator==(const FbxClassId& other) const { return this == &other; }

private:
    const char* mName;
    const FbxClassId* mParent;
    const char* mFbxTypeName;
    const char* mNamePrefix;
    bool mHasTemplate;
    Constructor mConstructor;
};

// Declares the class identity of a scene-model class; pair with FBX_IMPLEMENT_CLASS.
#define FBX_DECLARE_CLASS(Class, Parent)                          \
public:                                                           \
    static const FbxClassId ClassId;                              \
    const FbxClassId& GetRuntimeClassId() const override {        \
        return ClassId;                                           \
    }                                                             \
    static Class* Create(FbxManager* manager, const char* name);  \
    static Class* Create(FbxObject* container, const char* name); \
                                                                  \
private:                                                          \
    using ParentClass = Parent;                                   \
    friend class FbxManager;                                      \
                                                                  \
public:

// Defines ClassId and the two Create functions (through a manager, or inside the
// document of a container object).
#define FBX_IMPLEMENT_CLASS(Class, FbxTypeName, NamePrefix, HasTemplate)                           \
    const FbxClassId Class::ClassId(#Class, &Class::ParentClass::ClassId, FbxTypeName, NamePrefix, \
                                    HasTemplate, &FbxManager::Construct<Class>);                   \
    Class* Class::Create(FbxManager* manager, const char* name) {                                  \
        return manager ? manager->CreateObject<Class>(name) : nullptr;                             \
    }                                                                                              \
    Class* Class::Create(FbxObject* container, const char* name) {                                 \
        return FbxManager::CreateInContainer<Class>(container, name);                              \
    }
