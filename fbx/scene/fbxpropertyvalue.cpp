#include "fbx/scene/fbxpropertyvalue.h"

namespace {

bool IsNumber(EFbxType type) {
    switch (type) {
        case eFbxChar:
        case eFbxBool:
        case eFbxInt:
        case eFbxEnum:
        case eFbxLongLong:
        case eFbxULongLong:
        case eFbxFloat:
        case eFbxDouble:
            return true;
        default:
            return false;
    }
}

template <class T>
FbxPropertyValue NumberAs(const FbxPropertyValue& value) {
    return FbxPropertyValue(FbxValueAs<T>(value));
}

}  // namespace

FbxPropertyValue FbxDefaultValue(EFbxType type) {
    switch (type) {
        case eFbxChar:
        case eFbxInt:
        case eFbxEnum:
            return 0;
        case eFbxBool:
            return false;
        case eFbxLongLong:
            return FbxLongLong{0};
        case eFbxULongLong:
            return FbxULongLong{0};
        case eFbxFloat:
            return 0.0f;
        case eFbxDouble:
            return 0.0;
        case eFbxDouble2:
            return FbxDouble2();
        case eFbxDouble3:
            return FbxDouble3();
        case eFbxDouble4:
            return FbxDouble4();
        case eFbxString:
        case eFbxDateTime:
            return FbxString();
        case eFbxTime:
            return FbxTime();
        default:
            return std::monostate();
    }
}

bool FbxConvertValue(const FbxPropertyValue& value, EFbxType type, FbxPropertyValue& out) {
    const bool isNumber = std::visit(
        [](const auto& v) { return std::is_arithmetic_v<std::decay_t<decltype(v)>>; }, value);
    if (IsNumber(type)) {
        if (!isNumber) {
            return false;
        }
        switch (type) {
            case eFbxBool:
                out = NumberAs<bool>(value);
                return true;
            case eFbxLongLong:
                out = NumberAs<FbxLongLong>(value);
                return true;
            case eFbxULongLong:
                out = NumberAs<FbxULongLong>(value);
                return true;
            case eFbxFloat:
                out = NumberAs<float>(value);
                return true;
            case eFbxDouble:
                out = NumberAs<double>(value);
                return true;
            default:
                out = NumberAs<int>(value);
                return true;
        }
    }
    const FbxPropertyValue zero = FbxDefaultValue(type);
    if (std::holds_alternative<std::monostate>(zero) || zero.index() != value.index()) {
        return false;
    }
    out = value;
    return true;
}
