// The "Objects" section of the FBX 7 writer: one record per object, and the "P" records of
// the properties that differ from the type's template.
#include <strings.h>

#include <cmath>
#include <limits>

#include "fbx/io/fbxwriterfbx7impl.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnodeattribute.h"

namespace {

// Letters of the shading modes, in the order of FbxNode::EShadingMode.
constexpr char kShadingLetters[] = {'Y', 'W', 'F', 'L', 'T', 'U'};

// "A" (animatable) with "+" (animated), "U" (user-defined), "H" (hidden), then the lock and
// mute bits as one hex digit each.
std::string FlagText(const FbxProperty& property) {
    const FbxUInt32 flags = property.GetFlags();
    std::string text;
    if (flags & FbxPropertyFlags::eAnimatable) {
        text += 'A';
        if (flags & FbxPropertyFlags::eAnimated) text += '+';
    }
    if (flags & FbxPropertyFlags::eUserDefined) text += 'U';
    if (flags & FbxPropertyFlags::eHidden) text += 'H';
    const char* digits = "0123456789abcdef";
    if (const int lock = property.GetLockBits() & 0xF) (text += 'L') += digits[lock];
    if (const int mute = property.GetMuteBits() & 0xF) (text += 'M') += digits[mute];
    return text;
}

bool HasFiniteLimit(const FbxProperty& property) {
    return (property.HasMinLimit() && std::isfinite(property.GetMinLimit())) ||
           (property.HasMaxLimit() && std::isfinite(property.GetMaxLimit()));
}

// A limit in an integer value's own type: an open end (or a limit beyond the type) becomes the
// type's extreme instead of an undefined conversion.
template <typename Integer>
Integer Saturated(double limit) {
    constexpr double kLowest = static_cast<double>(std::numeric_limits<Integer>::lowest());
    constexpr double kBeyond = -kLowest;  // the first value past the maximum
    if (std::isnan(limit)) return 0;
    if (limit <= kLowest) return std::numeric_limits<Integer>::lowest();
    if (limit >= kBeyond) return std::numeric_limits<Integer>::max();
    return static_cast<Integer>(limit);
}

}  // namespace

void FbxWriterFbx7_Impl::WriteObjects() {
    WriteBanner(" Object properties");
    mIO->FieldWriteBegin("Objects");
    mIO->FieldWriteBlockBegin();
    mPreparedUpTo = 0;
    mPrepared.clear();
    for (size_t i = 0; i < mObjects.size(); ++i) {
        PrepareCurvesAhead(i);
        WriteObject(*mObjects[i]);
        if (mIO->GetStatus().Error()) break;
    }
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

// The key values of the next few curves start compressing while the objects before them are
// written; the window bounds the arrays held in memory at once.
void FbxWriterFbx7_Impl::PrepareCurvesAhead(size_t index) {
    constexpr size_t kAhead = 8;
    for (; mPreparedUpTo < mObjects.size() && mPreparedUpTo <= index + kAhead; ++mPreparedUpTo) {
        const FbxAnimCurve* curve = FbxCast<FbxAnimCurve>(mObjects[mPreparedUpTo]);
        if (!curve || curve->KeyGetCount() == 0) continue;
        const uint64_t ticket = mIO->PrepareArrayF(
            static_cast<size_t>(curve->KeyGetCount()), [curve](float* out, size_t first, size_t n) {
                curve->KeyGetRange(static_cast<int>(first), static_cast<int>(n), nullptr, out,
                                   nullptr);
            });
        mPrepared.emplace_back(curve, ticket);
    }
}

// Id, "class::name" and sub-type, then a block, also when it stays empty: readers require
// the block of models, stacks, layers and curve nodes.
void FbxWriterFbx7_Impl::WriteObject(const FbxObject& object) {
    mIO->FieldWriteBegin(object.GetTypeName());
    mIO->FieldWriteLL(GetObjectId(object));
    mIO->FieldWriteS(object.GetNameWithNameSpacePrefix().Buffer());
    mIO->FieldWriteS(object.GetSubTypeName());
    mIO->FieldWriteBlockBegin();
    if (const FbxNode* node = FbxCast<FbxNode>(&object)) {
        WriteModelBody(*node);
    } else if (const FbxNodeAttribute* attribute = FbxCast<FbxNodeAttribute>(&object)) {
        WriteNodeAttributeBody(*attribute);
    } else {
        WriteProperties(object, TemplateFor(object));
        if (const FbxAnimCurve* curve = FbxCast<FbxAnimCurve>(&object)) WriteCurveBody(*curve);
    }
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

void FbxWriterFbx7_Impl::WriteModelBody(const FbxNode& node) {
    mIO->FieldWriteI("Version", 232);
    WriteProperties(node, TemplateFor(node));
    const int mode = node.GetShadingMode();
    const bool known = mode >= 0 && mode < static_cast<int>(sizeof kShadingLetters);
    mIO->FieldWriteCH("Shading", known ? kShadingLetters[mode] : 'Y');
    mIO->FieldWriteS("Culling", "CullingOff");
}

void FbxWriterFbx7_Impl::WriteNodeAttributeBody(const FbxNodeAttribute& attribute) {
    WriteProperties(attribute, TemplateFor(attribute));
    mIO->FieldWriteBegin("TypeFlags");
    for (const char* flag : attribute.GetTypeFlags()) mIO->FieldWriteS(flag);
    mIO->FieldWriteEnd();
}

// Every savable property, depth first, that differs from the template's same-named one (all
// of them without a template). "Properties70" appears only when one is written.
void FbxWriterFbx7_Impl::WriteProperties(const FbxObject& object,
                                         const FbxObject* propertyTemplate) {
    bool opened = false;
    for (FbxProperty p = object.GetFirstProperty(); p.IsValid(); p = object.GetNextProperty(p)) {
        if (p.GetFlag(FbxPropertyFlags::eNotSavable)) continue;
        if (propertyTemplate &&
            p.CompareValue(propertyTemplate->FindProperty(p.GetHierarchicalName().Buffer()))) {
            continue;
        }
        if (!opened) {
            mIO->FieldWriteBegin("Properties70");
            mIO->FieldWriteBlockBegin();
            opened = true;
        }
        WritePropertyRecord(p);
    }
    if (opened) {
        mIO->FieldWriteBlockEnd();
        mIO->FieldWriteEnd();
    }
}

// Name, two type names (an animatable property is named by its data type, others by the
// type's file name; the second repeats the data type unless that is the same word), flags,
// value, and for animatable user properties with limits the minimum and maximum.
void FbxWriterFbx7_Impl::WritePropertyRecord(const FbxProperty& property) {
    const FbxDataType type = property.GetPropertyDataType();
    const bool animatable = property.GetFlag(FbxPropertyFlags::eAnimatable);
    const char* first = animatable ? type.GetName() : type.GetIOName();
    const char* second = strcasecmp(first, type.GetName()) == 0 ? "" : type.GetName();
    mIO->FieldWriteBegin("P");
    mIO->FieldWriteS(property.GetHierarchicalName().Buffer());
    mIO->FieldWriteS(first);
    mIO->FieldWriteS(second);
    mIO->FieldWriteS(FlagText(property).c_str());
    WritePropertyValue(property);
    if (animatable && property.GetFlag(FbxPropertyFlags::eUserDefined) &&
        HasFiniteLimit(property)) {
        const double lowest = std::numeric_limits<double>::lowest();
        const double highest = std::numeric_limits<double>::max();
        for (double limit : {property.HasMinLimit() ? property.GetMinLimit() : lowest,
                             property.HasMaxLimit() ? property.GetMaxLimit() : highest}) {
            switch (type.GetType()) {
                case eFbxChar:
                case eFbxBool:
                case eFbxInt:
                case eFbxEnum:
                    mIO->FieldWriteI(Saturated<int>(limit));
                    break;
                case eFbxLongLong:
                case eFbxULongLong:
                    mIO->FieldWriteLL(Saturated<long long>(limit));
                    break;
                case eFbxFloat:
                    mIO->FieldWriteF(static_cast<float>(limit));
                    break;
                default:
                    mIO->FieldWriteD(limit);
            }
        }
    }
    mIO->FieldWriteEnd();
}

void FbxWriterFbx7_Impl::WritePropertyValue(const FbxProperty& property) {
    switch (property.GetPropertyDataType().GetType()) {
        case eFbxChar:
        case eFbxBool:
        case eFbxInt:
        case eFbxEnum:
            mIO->FieldWriteI(property.Get<int>());
            break;
        case eFbxLongLong:
            mIO->FieldWriteLL(property.Get<FbxLongLong>());
            break;
        case eFbxULongLong:
            mIO->FieldWriteULL(property.Get<FbxULongLong>());
            break;
        case eFbxFloat:
            mIO->FieldWriteF(property.Get<float>());
            break;
        case eFbxDouble:
            mIO->FieldWriteD(property.Get<double>());
            break;
        case eFbxDouble2:
            mIO->FieldWriteDn(property.Get<FbxDouble2>().Buffer(), 2);
            break;
        case eFbxDouble3:
            mIO->FieldWrite3D(property.Get<FbxDouble3>().Buffer());
            break;
        case eFbxDouble4:
            mIO->FieldWrite4D(property.Get<FbxDouble4>().Buffer());
            break;
        case eFbxString:
        case eFbxDateTime:
            mIO->FieldWriteS(property.Get<FbxString>().Buffer());
            break;
        case eFbxTime:
            mIO->FieldWriteT(property.Get<FbxTime>());
            break;
        default:  // references and compounds carry no value
            break;
    }
}
