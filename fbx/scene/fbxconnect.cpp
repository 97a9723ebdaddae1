#include "fbx/scene/fbxconnect.h"

#include <algorithm>

#include "fbx/scene/fbxdocument.h"

FbxConnectionPoint& FbxConnect::PointOf(const FbxConnect::End& end) {
    return end.property ? end.property->mConnections : end.object->mConnections;
}

namespace {

template <class T>
bool Contains(const std::vector<T*>& list, const T* item) {
    return std::find(list.rbegin(), list.rend(), item) != list.rend();
}

// Searches from the back: members leave a document mostly in reverse order.
template <class T>
bool Erase(std::vector<T*>& list, const T* item) {
    auto it = std::find(list.rbegin(), list.rend(), item);
    if (it == list.rend()) {
        return false;
    }
    list.erase(std::next(it).base());
    return true;
}

bool Valid(const FbxConnect::End& end) {
    return end.object && (!end.property || end.property->mOwner == end.object);
}

}  // namespace

FbxConnect::End FbxConnect::Of(const FbxProperty& property) {
    FbxPropertyData* data = property.GetData();
    return {data ? data->mOwner : nullptr, data};
}

bool FbxConnect::Link(End src, End dst) {
    if (!Valid(src) || !Valid(dst) || (src.object == dst.object && src.property == dst.property)) {
        return false;
    }
    FbxConnectionPoint& from = PointOf(src);
    FbxConnectionPoint& to = PointOf(dst);
    if (dst.property ? Contains(from.mDstProperties, dst.property)
                     : Contains(from.mDstObjects, dst.object)) {
        return false;
    }
    if (dst.property) {
        from.mDstProperties.push_back(dst.property);
    } else {
        from.mDstObjects.push_back(dst.object);
    }
    if (src.property) {
        to.mSrcProperties.push_back(src.property);
    } else {
        to.mSrcObjects.push_back(src.object);
    }
    if (!src.property && !dst.property) {
        dst.object->OnSrcObjectConnected(src.object);
    }
    // A source connected to a member joins the member's document.
    FbxDocument* document = dst.object->GetDocument();
    if (document && !src.object->GetDocument()) {
        document->AddMember(src.object);
    }
    return true;
}

bool FbxConnect::Unlink(End src, End dst) {
    if (!Valid(src) || !Valid(dst)) {
        return false;
    }
    FbxConnectionPoint& from = PointOf(src);
    FbxConnectionPoint& to = PointOf(dst);
    if (dst.property ? !Contains(from.mDstProperties, dst.property)
                     : !Contains(from.mDstObjects, dst.object)) {
        return false;
    }
    if (!src.property && !dst.property) {
        dst.object->OnSrcObjectDisconnected(src.object);
    }
    if (dst.property) {
        Erase(from.mDstProperties, dst.property);
    } else {
        Erase(from.mDstObjects, dst.object);
    }
    if (src.property) {
        Erase(to.mSrcProperties, src.property);
    } else {
        Erase(to.mSrcObjects, src.object);
    }
    return true;
}

namespace {

// Copies first: unlinking changes the lists being walked.
void UnlinkPoint(FbxConnect::End self) {
    const FbxConnectionPoint& point = FbxConnect::PointOf(self);
    for (FbxObject* src : std::vector<FbxObject*>(point.mSrcObjects)) {
        FbxConnect::Unlink(FbxConnect::Of(src), self);
    }
    for (FbxPropertyData* src : std::vector<FbxPropertyData*>(point.mSrcProperties)) {
        FbxConnect::Unlink({src->mOwner, src}, self);
    }
    for (FbxObject* dst : std::vector<FbxObject*>(point.mDstObjects)) {
        FbxConnect::Unlink(self, FbxConnect::Of(dst));
    }
    for (FbxPropertyData* dst : std::vector<FbxPropertyData*>(point.mDstProperties)) {
        FbxConnect::Unlink(self, {dst->mOwner, dst});
    }
}

}  // namespace

void FbxConnect::UnlinkAll(FbxObject* object) {
    for (FbxProperty p = object->GetFirstProperty(); p.IsValid(); p = object->GetNextProperty(p)) {
        UnlinkPoint(Of(p));
    }
    UnlinkPoint(Of(object));
}
