#pragma once

#include <cstring>
#include <type_traits>

#include "fbx/scene/fbxtime.h"
#include "fbx/scene/fbxtypes.h"

// How a property's value is stored.
enum EFbxType {
    eFbxUndefined,
    eFbxChar,
    eFbxBool,
    eFbxInt,
    eFbxEnum,
    eFbxLongLong,
    eFbxULongLong,
    eFbxFloat,
    eFbxDouble,
    eFbxDouble2,
    eFbxDouble3,
    eFbxDouble4,
    eFbxString,
    eFbxTime,
    eFbxDateTime,   // stored as text
    eFbxReference,  // no value: the property links objects through connections
    eFbxCompound,   // no value: a parent of child properties
    eFbxTypeCount
};

// The data type of a property: a name ("Number", "Lcl Translation"), the name
// files use for non-animatable properties ("double", "Lcl Translation") and the
// storage type. Types with the same storage may differ in meaning (a colour and
// a vector are both three doubles).
class FbxDataType {
public:
    constexpr FbxDataType() = default;
    constexpr FbxDataType(const char* name, const char* ioName, EFbxType type)
        : mName(name), mIOName(ioName), mType(type) {}

    constexpr const char* GetName() const { return mName; }
    constexpr const char* GetIOName() const { return mIOName; }
    constexpr EFbxType GetType() const { return mType; }
    constexpr bool Valid() const { return mType != eFbxUndefined; }

    friend bool operator==(const FbxDataType& a, const FbxDataType& b) {
        return a.mType == b.mType && std::strcmp(a.mName, b.mName) == 0;
    }

private:
    const char* mName = "";
    const char* mIOName = "";
    EFbxType mType = eFbxUndefined;
};

inline constexpr FbxDataType FbxUndefinedDT{"", "", eFbxUndefined};
inline constexpr FbxDataType FbxBoolDT{"Bool", "bool", eFbxBool};
inline constexpr FbxDataType FbxIntDT{"Integer", "int", eFbxInt};
inline constexpr FbxDataType FbxEnumDT{"Enum", "enum", eFbxEnum};
inline constexpr FbxDataType FbxLongLongDT{"LongLong", "LongLong", eFbxLongLong};
inline constexpr FbxDataType FbxULongLongDT{"ULongLong", "ULongLong", eFbxULongLong};
inline constexpr FbxDataType FbxFloatDT{"Float", "float", eFbxFloat};
inline constexpr FbxDataType FbxDoubleDT{"Number", "double", eFbxDouble};
inline constexpr FbxDataType FbxDouble2DT{"Vector2", "Vector2D", eFbxDouble2};
inline constexpr FbxDataType FbxDouble3DT{"Vector", "Vector3D", eFbxDouble3};
inline constexpr FbxDataType FbxDouble4DT{"Vector4", "Vector4D", eFbxDouble4};
inline constexpr FbxDataType FbxColor3DT{"Color", "ColorRGB", eFbxDouble3};
inline constexpr FbxDataType FbxColor4DT{"ColorAndAlpha", "ColorRGBA", eFbxDouble4};
inline constexpr FbxDataType FbxStringDT{"KString", "KString", eFbxString};
inline constexpr FbxDataType FbxUrlDT{"Url", "KString", eFbxString};
inline constexpr FbxDataType FbxTimeDT{"Time", "KTime", eFbxTime};
inline constexpr FbxDataType FbxDateTimeDT{"DateTime", "DateTime", eFbxDateTime};
inline constexpr FbxDataType FbxReferenceDT{"object", "object", eFbxReference};
inline constexpr FbxDataType FbxCompoundDT{"Compound", "Compound", eFbxCompound};
inline constexpr FbxDataType FbxLocalTranslationDT{"Lcl Translation", "Lcl Translation",
                                                   eFbxDouble3};
inline constexpr FbxDataType FbxLocalRotationDT{"Lcl Rotation", "Lcl Rotation", eFbxDouble3};
inline constexpr FbxDataType FbxLocalScalingDT{"Lcl Scaling", "Lcl Scaling", eFbxDouble3};
inline constexpr FbxDataType FbxVisibilityDT{"Visibility", "Visibility", eFbxDouble};
inline constexpr FbxDataType FbxVisibilityInheritanceDT{"Visibility Inheritance",
                                                        "Visibility Inheritance", eFbxBool};

// Storage type of a C++ value type; enumerations are stored as eFbxEnum.
template <class T>
constexpr EFbxType FbxTypeOf() {
    if constexpr (std::is_enum_v<T>) {
        return eFbxEnum;
    } else if constexpr (std::is_same_v<T, bool>) {
        return eFbxBool;
    } else if constexpr (std::is_same_v<T, int>) {
        return eFbxInt;
    } else if constexpr (std::is_same_v<T, FbxLongLong>) {
        return eFbxLongLong;
    } else if constexpr (std::is_same_v<T, FbxULongLong>) {
        return eFbxULongLong;
    } else if constexpr (std::is_same_v<T, float>) {
        return eFbxFloat;
    } else if constexpr (std::is_same_v<T, double>) {
        return eFbxDouble;
    } else if constexpr (std::is_same_v<T, FbxDouble2>) {
        return eFbxDouble2;
    } else if constexpr (std::is_same_v<T, FbxDouble3>) {
        return eFbxDouble3;
    } else if constexpr (std::is_same_v<T, FbxDouble4>) {
        return eFbxDouble4;
    } else if constexpr (std::is_same_v<T, FbxString>) {
        return eFbxString;
    } else if constexpr (std::is_same_v<T, FbxTime>) {
        return eFbxTime;
    } else {
        return eFbxUndefined;
    }
}
