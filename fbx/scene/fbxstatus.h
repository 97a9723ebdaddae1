#pragma once

#include "fbx/scene/fbxtypes.h"

// Outcome of an operation of the FBX model or writer: a code and a sentence.
// The first error sticks, so a caller sees the cause rather than its echoes.
class FbxStatus {
public:
    enum EStatusCode {
        eSuccess = 0,
        eFailure = 1,
        eInsufficientMemory = 2,
        eInvalidParameter = 3,
        eIndexOutOfRange = 4,
        ePasswordError = 5,
        eInvalidFile = 6,
        eInvalidFileVersion = 7,
        eSceneCheckFail = 8,
    };

    FbxStatus() = default;
    FbxStatus(EStatusCode code, const char* message = nullptr) { SetCode(code, message); }

    // Records an error unless one is already recorded; eSuccess is ignored.
    void SetCode(EStatusCode code, const char* message = nullptr);
    EStatusCode GetCode() const { return mCode; }
    bool Error() const { return mCode != eSuccess; }
    // The message of the recorded error, or "Success".
    const char* GetErrorString() const;
    void Clear();

    bool operator==(EStatusCode code) const { return mCode == code; }

private:
    EStatusCode mCode = eSuccess;
    FbxString mMessage;
};
