#include "fbx/scene/fbxanimstack.h"

#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxAnimStack, "AnimationStack", "AnimStack", true)

FbxAnimStack::FbxAnimStack(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    Description = AddProperty("Description", FbxStringDT, FbxString());
    LocalStart = AddProperty("LocalStart", FbxTimeDT, FbxTime(0));
    LocalStop = AddProperty("LocalStop", FbxTimeDT, FbxTime(0));
    ReferenceStart = AddProperty("ReferenceStart", FbxTimeDT, FbxTime(0));
    ReferenceStop = AddProperty("ReferenceStop", FbxTimeDT, FbxTime(0));
}

bool FbxAnimStack::AddMember(FbxAnimLayer* layer) {
    return ConnectSrcObject(layer);
}

int FbxAnimStack::GetMemberCount() const {
    return GetSrcObjectCount<FbxAnimLayer>();
}

FbxAnimLayer* FbxAnimStack::GetMember(int index) const {
    return GetSrcObject<FbxAnimLayer>(index);
}

void FbxAnimStack::SetLocalTimeSpan(const FbxTimeSpan& span) {
    LocalStart.Set(span.GetStart());
    LocalStop.Set(span.GetStop());
    if (!mReferenceSpanSet) {
        ReferenceStart.Set(span.GetStart());
        ReferenceStop.Set(span.GetStop());
    }
}

FbxTimeSpan FbxAnimStack::GetLocalTimeSpan() const {
    return FbxTimeSpan(LocalStart.Get(), LocalStop.Get());
}

void FbxAnimStack::SetReferenceTimeSpan(const FbxTimeSpan& span) {
    ReferenceStart.Set(span.GetStart());
    ReferenceStop.Set(span.GetStop());
    mReferenceSpanSet = true;
}

FbxTimeSpan FbxAnimStack::GetReferenceTimeSpan() const {
    return FbxTimeSpan(ReferenceStart.Get(), ReferenceStop.Get());
}
