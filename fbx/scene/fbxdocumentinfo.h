#pragma once

#include "fbx/scene/fbxobject.h"

// Descriptive information of a document: the texts shown as file metadata,
// and the origin and last-save records. Files store it in their header.
class FbxDocumentInfo : public FbxObject {
    FBX_DECLARE_CLASS(FbxDocumentInfo, FbxObject)

public:
    FbxString mTitle;
    FbxString mSubject;
    FbxString mAuthor;
    FbxString mKeywords;
    FbxString mRevision;
    FbxString mComment;

    FbxPropertyT<FbxString> Url;  // "DocumentUrl"
    FbxPropertyT<FbxString> SrcDocumentUrl;
    FbxProperty Original;  // compound
    FbxPropertyT<FbxString> Original_ApplicationVendor;
    FbxPropertyT<FbxString> Original_ApplicationName;
    FbxPropertyT<FbxString> Original_ApplicationVersion;
    FbxPropertyT<FbxString> Original_DateTime_GMT;  // "dd/mm/yyyy hh:mm:ss.mmm"
    FbxPropertyT<FbxString> Original_FileName;
    FbxProperty LastSaved;  // compound
    FbxPropertyT<FbxString> LastSaved_ApplicationVendor;
    FbxPropertyT<FbxString> LastSaved_ApplicationName;
    FbxPropertyT<FbxString> LastSaved_ApplicationVersion;
    FbxPropertyT<FbxString> LastSaved_DateTime_GMT;

    const char* GetSubTypeName() const override { return "UserData"; }

protected:
    FbxDocumentInfo(FbxManager& manager, const char* name);
};
