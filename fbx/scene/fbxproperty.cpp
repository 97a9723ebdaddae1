#include "fbx/scene/fbxproperty.h"

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvenode.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxconnect.h"
#include "fbx/scene/fbxobject.h"

namespace {

const FbxPropertyValue kNoValue;
const FbxString kNoName;

}  // namespace

FbxProperty FbxProperty::Create(FbxObject* object, const FbxDataType& type, const char* name,
                                FbxUInt32 flags) {
    if (!object || !name || !*name || object->FindProperty(name).IsValid()) {
        return FbxProperty();
    }
    auto data = std::make_unique<FbxPropertyData>();
    data->mOwner = object;
    data->mName = name;
    data->mHierarchicalName = name;
    data->mType = type;
    data->mFlags = flags;
    data->mValue = FbxDefaultValue(type.GetType());
    data->mSiblingIndex = object->mRootProperties.size();
    object->mRootProperties.push_back(data.get());
    object->mProperties.push_back(std::move(data));
    return FbxProperty(object->mProperties.back().get());
}

FbxProperty FbxProperty::Create(const FbxProperty& parent, const FbxDataType& type,
                                const char* name, FbxUInt32 flags) {
    if (!parent.IsValid() || !name || !*name) {
        return FbxProperty();
    }
    FbxObject* object = parent.mData->mOwner;
    const FbxString fullName = parent.mData->mHierarchicalName + "|" + name;
    if (object->FindProperty(fullName.Buffer()).IsValid()) {
        return FbxProperty();
    }
    auto data = std::make_unique<FbxPropertyData>();
    data->mOwner = object;
    data->mParent = parent.mData;
    data->mName = name;
    data->mHierarchicalName = fullName;
    data->mType = type;
    data->mFlags = flags;
    data->mValue = FbxDefaultValue(type.GetType());
    data->mSiblingIndex = parent.mData->mChildren.size();
    parent.mData->mChildren.push_back(data.get());
    object->mProperties.push_back(std::move(data));
    return FbxProperty(object->mProperties.back().get());
}

FbxObject* FbxProperty::GetFbxObject() const {
    return mData ? mData->mOwner : nullptr;
}

const FbxString& FbxProperty::GetName() const {
    return mData ? mData->mName : kNoName;
}

const FbxString& FbxProperty::GetHierarchicalName() const {
    return mData ? mData->mHierarchicalName : kNoName;
}

FbxDataType FbxProperty::GetPropertyDataType() const {
    return mData ? mData->mType : FbxUndefinedDT;
}

FbxUInt32 FbxProperty::GetFlags() const {
    return mData ? mData->mFlags : 0;
}

bool FbxProperty::GetFlag(FbxPropertyFlags::EFlags flag) const {
    return mData && (mData->mFlags & flag) == static_cast<FbxUInt32>(flag);
}

bool FbxProperty::ModifyFlag(FbxPropertyFlags::EFlags flag, bool value) {
    if (!mData) {
        return false;
    }
    mData->mFlags =
        value ? (mData->mFlags | flag) : (mData->mFlags & ~static_cast<FbxUInt32>(flag));
    return true;
}

int FbxProperty::GetLockBits() const {
    return static_cast<int>((GetFlags() >> FbxPropertyFlags::kLockShift) & 0xF);
}

int FbxProperty::GetMuteBits() const {
    return static_cast<int>((GetFlags() >> FbxPropertyFlags::kMuteShift) & 0xF);
}

bool FbxProperty::SetLockBits(int bits) {
    if (!mData || bits < 0 || bits > 0xF) {
        return false;
    }
    mData->mFlags = (mData->mFlags & ~static_cast<FbxUInt32>(FbxPropertyFlags::eLockedAll)) |
                    (static_cast<FbxUInt32>(bits) << FbxPropertyFlags::kLockShift);
    return true;
}

bool FbxProperty::SetMuteBits(int bits) {
    if (!mData || bits < 0 || bits > 0xF) {
        return false;
    }
    mData->mFlags = (mData->mFlags & ~static_cast<FbxUInt32>(FbxPropertyFlags::eMutedAll)) |
                    (static_cast<FbxUInt32>(bits) << FbxPropertyFlags::kMuteShift);
    return true;
}

const FbxPropertyValue& FbxProperty::GetValue() const {
    return mData ? mData->mValue : kNoValue;
}

bool FbxProperty::SetValue(const FbxPropertyValue& value) {
    return mData && FbxConvertValue(value, mData->mType.GetType(), mData->mValue);
}

bool FbxProperty::CompareValue(const FbxProperty& other) const {
    return mData && other.mData && mData->mValue == other.mData->mValue;
}

bool FbxProperty::CopyValue(const FbxProperty& other) {
    return other.mData && SetValue(other.mData->mValue);
}

bool FbxProperty::HasMinLimit() const {
    return mData && mData->mMin.has_value();
}

bool FbxProperty::HasMaxLimit() const {
    return mData && mData->mMax.has_value();
}

double FbxProperty::GetMinLimit() const {
    return HasMinLimit() ? *mData->mMin : 0.0;
}

double FbxProperty::GetMaxLimit() const {
    return HasMaxLimit() ? *mData->mMax : 0.0;
}

bool FbxProperty::SetMinLimit(double min) {
    return mData && (mData->mMin = min, true);
}

bool FbxProperty::SetMaxLimit(double max) {
    return mData && (mData->mMax = max, true);
}

int FbxProperty::AddEnumValue(const char* name) {
    if (!mData || mData->mType.GetType() != eFbxEnum) {
        return -1;
    }
    mData->mEnumValues.emplace_back(name);
    return static_cast<int>(mData->mEnumValues.size()) - 1;
}

int FbxProperty::GetEnumCount() const {
    return mData ? static_cast<int>(mData->mEnumValues.size()) : 0;
}

const char* FbxProperty::GetEnumValue(int index) const {
    if (index < 0 || index >= GetEnumCount()) {
        return "";
    }
    return mData->mEnumValues[index].Buffer();
}

FbxProperty FbxProperty::GetParent() const {
    return FbxProperty(mData ? mData->mParent : nullptr);
}

int FbxProperty::GetChildCount() const {
    return mData ? static_cast<int>(mData->mChildren.size()) : 0;
}

FbxProperty FbxProperty::GetChild(int index) const {
    if (index < 0 || index >= GetChildCount()) {
        return FbxProperty();
    }
    return FbxProperty(mData->mChildren[index]);
}

FbxProperty FbxProperty::GetSibling() const {
    if (!mData) {
        return FbxProperty();
    }
    const auto& siblings =
        mData->mParent ? mData->mParent->mChildren : mData->mOwner->mRootProperties;
    const size_t next = mData->mSiblingIndex + 1;
    return FbxProperty(next < siblings.size() ? siblings[next] : nullptr);
}

FbxProperty FbxProperty::Find(const char* name) const {
    for (int i = 0; i < GetChildCount(); ++i) {
        if (mData->mChildren[i]->mName == name) {
            return FbxProperty(mData->mChildren[i]);
        }
    }
    return FbxProperty();
}

bool FbxProperty::ConnectSrcObject(FbxObject* object) {
    return FbxConnect::Link(FbxConnect::Of(object), FbxConnect::Of(*this));
}

bool FbxProperty::ConnectDstObject(FbxObject* object) {
    return FbxConnect::Link(FbxConnect::Of(*this), FbxConnect::Of(object));
}

bool FbxProperty::ConnectSrcProperty(const FbxProperty& property) {
    return FbxConnect::Link(FbxConnect::Of(property), FbxConnect::Of(*this));
}

bool FbxProperty::ConnectDstProperty(const FbxProperty& property) {
    return FbxConnect::Link(FbxConnect::Of(*this), FbxConnect::Of(property));
}

bool FbxProperty::DisconnectSrcObject(FbxObject* object) {
    return FbxConnect::Unlink(FbxConnect::Of(object), FbxConnect::Of(*this));
}

bool FbxProperty::DisconnectDstObject(FbxObject* object) {
    return FbxConnect::Unlink(FbxConnect::Of(*this), FbxConnect::Of(object));
}

bool FbxProperty::DisconnectSrcProperty(const FbxProperty& property) {
    return FbxConnect::Unlink(FbxConnect::Of(property), FbxConnect::Of(*this));
}

bool FbxProperty::DisconnectDstProperty(const FbxProperty& property) {
    return FbxConnect::Unlink(FbxConnect::Of(*this), FbxConnect::Of(property));
}

namespace {

template <class T>
T* At(const std::vector<T*>& list, int index) {
    return index >= 0 && static_cast<size_t>(index) < list.size() ? list[index] : nullptr;
}

}  // namespace

int FbxProperty::GetSrcObjectCount() const {
    return mData ? static_cast<int>(mData->mConnections.mSrcObjects.size()) : 0;
}

FbxObject* FbxProperty::GetSrcObject(int index) const {
    return mData ? At(mData->mConnections.mSrcObjects, index) : nullptr;
}

int FbxProperty::GetDstObjectCount() const {
    return mData ? static_cast<int>(mData->mConnections.mDstObjects.size()) : 0;
}

FbxObject* FbxProperty::GetDstObject(int index) const {
    return mData ? At(mData->mConnections.mDstObjects, index) : nullptr;
}

int FbxProperty::GetSrcPropertyCount() const {
    return mData ? static_cast<int>(mData->mConnections.mSrcProperties.size()) : 0;
}

FbxProperty FbxProperty::GetSrcProperty(int index) const {
    return FbxProperty(mData ? At(mData->mConnections.mSrcProperties, index) : nullptr);
}

int FbxProperty::GetDstPropertyCount() const {
    return mData ? static_cast<int>(mData->mConnections.mDstProperties.size()) : 0;
}

FbxProperty FbxProperty::GetDstProperty(int index) const {
    return FbxProperty(mData ? At(mData->mConnections.mDstProperties, index) : nullptr);
}

FbxAnimCurveNode* FbxProperty::GetCurveNode(FbxAnimLayer* layer, bool create) {
    if (!mData || !layer) {
        return nullptr;
    }
    for (FbxObject* src : mData->mConnections.mSrcObjects) {
        auto* node = FbxCast<FbxAnimCurveNode>(src);
        if (node && node->IsConnectedDstObject(layer)) {
            return node;
        }
    }
    return create ? layer->CreateCurveNode(*this) : nullptr;
}

FbxAnimCurve* FbxProperty::GetCurve(FbxAnimLayer* layer, const char* name, const char* channel,
                                    bool create) {
    if (!mData || !layer || !name || !*name) {
        return nullptr;
    }
    FbxAnimCurveNode* node = GetCurveNode(layer, create);
    if (!node) {
        return nullptr;
    }
    const int index = node->GetChannelIndex(channel);
    if (index < 0) {
        return nullptr;
    }
    if (FbxAnimCurve* curve = node->GetCurve(index)) {
        return curve;
    }
    return create ? node->CreateCurve(index) : nullptr;
}

FbxAnimCurve* FbxProperty::GetCurve(FbxAnimLayer* layer, bool create) {
    FbxAnimCurveNode* node = GetCurveNode(layer, create);
    if (!node || node->GetChannelsCount() == 0) {
        return nullptr;
    }
    if (FbxAnimCurve* curve = node->GetCurve(0)) {
        return curve;
    }
    return create ? node->CreateCurve(0) : nullptr;
}
