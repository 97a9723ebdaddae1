#include "fbx/scene/fbxstatus.h"

void FbxStatus::SetCode(EStatusCode code, const char* message) {
    if (code == eSuccess || Error()) {
        return;
    }
    mCode = code;
    mMessage = FbxString(message);
}

const char* FbxStatus::GetErrorString() const {
    if (!Error()) {
        return "Success";
    }
    return mMessage.IsEmpty() ? "Error" : mMessage.Buffer();
}

void FbxStatus::Clear() {
    mCode = eSuccess;
    mMessage = FbxString();
}
