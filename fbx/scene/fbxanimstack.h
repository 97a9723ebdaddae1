#pragma once

#include "fbx/scene/fbxobject.h"
#include "fbx/scene/fbxtime.h"

class FbxAnimLayer;

// One take: a time span and its layers (the stack's members).
class FbxAnimStack : public FbxObject {
    FBX_DECLARE_CLASS(FbxAnimStack, FbxObject)

public:
    FbxPropertyT<FbxString> Description;
    FbxPropertyT<FbxTime> LocalStart;
    FbxPropertyT<FbxTime> LocalStop;
    FbxPropertyT<FbxTime> ReferenceStart;
    FbxPropertyT<FbxTime> ReferenceStop;

    // Connects layer as the stack's last layer.
    bool AddMember(FbxAnimLayer* layer);
    int GetMemberCount() const;
    FbxAnimLayer* GetMember(int index = 0) const;

    // Also sets the reference span until one is set explicitly, so a take's
    // reference span follows its local span.
    void SetLocalTimeSpan(const FbxTimeSpan& span);
    FbxTimeSpan GetLocalTimeSpan() const;
    void SetReferenceTimeSpan(const FbxTimeSpan& span);
    FbxTimeSpan GetReferenceTimeSpan() const;

protected:
    FbxAnimStack(FbxManager& manager, const char* name);

private:
    bool mReferenceSpanSet = false;
};
