#pragma once

#include "fbx/scene/fbxdatatype.h"
#include "fbx/scene/fbxpropertydata.h"
#include "fbx/scene/fbxpropertyflags.h"
#include "fbx/scene/fbxpropertyvalue.h"

class FbxObject;
class FbxAnimLayer;
class FbxAnimCurveNode;
class FbxAnimCurve;

// Handle to a property of an object. Copies are cheap and refer to the same
// property; a default handle is invalid. Handles stay valid as long as the
// object lives.
//
// How a writer reads a property (see also FbxObject):
//  - GetHierarchicalName(): "Lcl Translation", "d|X" (children of compound "d").
//  - GetPropertyDataType(): GetName() is the type's own name ("Number",
//    "Lcl Translation"), GetIOName() the name for non-animatable properties
//    ("double"); GetType() says how the value is stored (EFbxType).
//  - GetFlags(): the raw flag word (FbxPropertyFlags bits: 2 animatable,
//    4 animated, 16 user-defined, 32 hidden, 64 not savable, lock bits 7-10,
//    mute bits 11-14); GetLockBits()/GetMuteBits() give the 4-bit fields.
//  - GetValue(): the stored value; Get<T>() converts numbers.
//  - HasMinLimit()/GetMinLimit(), HasMaxLimit()/GetMaxLimit(): optional limits.
//  - CompareValue(templateProperty): true when both values are equal, the test
//    that decides whether a property differs from its class template.
//  - Connections: GetSrcObject*/GetDstObject* (property-object ends) and
//    GetSrcProperty*/GetDstProperty* (property-property ends), each in the
//    order the connections were made.
class FbxProperty {
public:
    FbxProperty() = default;
    explicit FbxProperty(FbxPropertyData* data) : mData(data) {}

    // A new property at the end of object's properties. Fails (invalid handle)
    // on a null object, an empty name or a name already taken.
    static FbxProperty Create(FbxObject* object, const FbxDataType& type, const char* name,
                              FbxUInt32 flags = FbxPropertyFlags::eNone);
    // A new child property of a compound; its hierarchical name is "parent|name".
    static FbxProperty Create(const FbxProperty& parent, const FbxDataType& type, const char* name,
                              FbxUInt32 flags = FbxPropertyFlags::eNone);

    bool IsValid() const { return mData != nullptr; }
    FbxPropertyData* GetData() const { return mData; }
    FbxObject* GetFbxObject() const;
    // The names live as long as the property (an empty name for an invalid handle):
    // hot paths read them without copying.
    const FbxString& GetName() const;
    const FbxString& GetHierarchicalName() const;
    FbxDataType GetPropertyDataType() const;

    FbxUInt32 GetFlags() const;
    bool GetFlag(FbxPropertyFlags::EFlags flag) const;
    // Sets or clears all bits of flag.
    bool ModifyFlag(FbxPropertyFlags::EFlags flag, bool value);
    int GetLockBits() const;
    int GetMuteBits() const;
    bool SetLockBits(int bits);
    bool SetMuteBits(int bits);

    const FbxPropertyValue& GetValue() const;
    // Converts value to the property's storage type; false when it cannot.
    bool SetValue(const FbxPropertyValue& value);
    template <class T>
    T Get() const {
        return FbxValueAs<T>(GetValue());
    }
    template <class T>
    bool Set(const T& value) {
        return SetValue(FbxMakeValue(value));
    }
    bool CompareValue(const FbxProperty& other) const;
    bool CopyValue(const FbxProperty& other);

    bool HasMinLimit() const;
    bool HasMaxLimit() const;
    double GetMinLimit() const;
    double GetMaxLimit() const;
    bool SetMinLimit(double min);
    bool SetMaxLimit(double max);

    // Display names of an enumeration's values.
    int AddEnumValue(const char* name);
    int GetEnumCount() const;
    const char* GetEnumValue(int index) const;

    // Tree of hierarchical properties.
    FbxProperty GetParent() const;
    int GetChildCount() const;
    FbxProperty GetChild(int index = 0) const;
    FbxProperty GetSibling() const;
    FbxProperty Find(const char* name) const;

    bool ConnectSrcObject(FbxObject* object);
    bool ConnectDstObject(FbxObject* object);
    bool ConnectSrcProperty(const FbxProperty& property);
    bool ConnectDstProperty(const FbxProperty& property);
    bool DisconnectSrcObject(FbxObject* object);
    bool DisconnectDstObject(FbxObject* object);
    bool DisconnectSrcProperty(const FbxProperty& property);
    bool DisconnectDstProperty(const FbxProperty& property);
    int GetSrcObjectCount() const;
    FbxObject* GetSrcObject(int index = 0) const;
    int GetDstObjectCount() const;
    FbxObject* GetDstObject(int index = 0) const;
    int GetSrcPropertyCount() const;
    FbxProperty GetSrcProperty(int index = 0) const;
    int GetDstPropertyCount() const;
    FbxProperty GetDstProperty(int index = 0) const;
    template <class T>
    int GetSrcObjectCount() const;
    template <class T>
    T* GetSrcObject(int index = 0) const;

    // The property's curve node on layer; with create, one is made through the
    // layer when missing (channels "X", "Y", "Z" for three-double properties)
    // and the property is flagged animated.
    FbxAnimCurveNode* GetCurveNode(FbxAnimLayer* layer, bool create = false);
    // The first curve of channel ("X", "Y", "Z") of this property's curve node on
    // layer; with create, the curve node and the curve are made when missing.
    // Null for an invalid property, a null layer, a null or empty name or an
    // unknown channel. Callers pass the property's own name as name.
    FbxAnimCurve* GetCurve(FbxAnimLayer* layer, const char* name, const char* channel,
                           bool create = false);
    FbxAnimCurve* GetCurve(FbxAnimLayer* layer, bool create = false);

    friend bool operator==(const FbxProperty& a, const FbxProperty& b) {
        return a.mData == b.mData;
    }

protected:
    FbxPropertyData* mData = nullptr;
};

// A property handle typed by its value; the public property members of the
// model's classes.
template <class T>
class FbxPropertyT : public FbxProperty {
public:
    FbxPropertyT() = default;
    explicit FbxPropertyT(const FbxProperty& property) : FbxProperty(property) {}

    using FbxProperty::Get;
    using FbxProperty::Set;
    T Get() const { return FbxProperty::Get<T>(); }
    bool Set(const T& value) { return FbxProperty::Set(value); }
    FbxPropertyT& operator=(const T& value) {
        Set(value);
        return *this;
    }
    operator T() const { return Get(); }
};
