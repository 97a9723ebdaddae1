#pragma once

#include <type_traits>
#include <variant>

#include "fbx/scene/fbxdatatype.h"

// The value of a property. Enumerations are held as int, date-times as text;
// reference and compound properties hold no value (monostate).
using FbxPropertyValue =
    std::variant<std::monostate, bool, int, FbxLongLong, FbxULongLong, float, double, FbxDouble2,
                 FbxDouble3, FbxDouble4, FbxString, FbxTime>;

// The value of a C++ value, enumerations as int.
template <class T>
FbxPropertyValue FbxMakeValue(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return FbxPropertyValue(static_cast<int>(value));
    } else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>) {
        return FbxPropertyValue(FbxString(value));
    } else if constexpr (std::is_same_v<T, long> && !std::is_same_v<long, FbxLongLong>) {
        return FbxPropertyValue(static_cast<FbxLongLong>(value));
    } else {
        return FbxPropertyValue(value);
    }
}

// The value as T: numbers convert among each other, other types must match;
// a mismatch yields T's default value.
template <class T>
T FbxValueAs(const FbxPropertyValue& value) {
    if constexpr (std::is_enum_v<T>) {
        return static_cast<T>(FbxValueAs<int>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        return std::visit(
            [](const auto& v) -> T {
                using V = std::decay_t<decltype(v)>;
                if constexpr (std::is_arithmetic_v<V>) {
                    return static_cast<T>(v);
                } else {
                    return T{};
                }
            },
            value);
    } else {
        const T* v = std::get_if<T>(&value);
        return v ? *v : T{};
    }
}

// The default (zero) value of a storage type.
FbxPropertyValue FbxDefaultValue(EFbxType type);
// value converted to the storage of type; false when the kinds do not match
// (a number into a vector, text into a number).
bool FbxConvertValue(const FbxPropertyValue& value, EFbxType type, FbxPropertyValue& out);
