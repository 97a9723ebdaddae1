#include "fbx/scene/fbxdocumentinfo.h"

#include "fbx/scene/fbxmanager.h"

FBX_IMPLEMENT_CLASS(FbxDocumentInfo, "SceneInfo", "SceneInfo", false)

FbxDocumentInfo::FbxDocumentInfo(FbxManager& manager, const char* name) : FbxObject(manager, name) {
    Url = AddProperty("DocumentUrl", FbxUrlDT, FbxString());
    SrcDocumentUrl = AddProperty("SrcDocumentUrl", FbxUrlDT, FbxString());
    Original = FbxProperty::Create(this, FbxCompoundDT, "Original");
    auto text = [](const FbxProperty& parent, const char* childName, const FbxDataType& type) {
        return FbxPropertyT<FbxString>(FbxProperty::Create(parent, type, childName));
    };
    Original_ApplicationVendor = text(Original, "ApplicationVendor", FbxStringDT);
    Original_ApplicationName = text(Original, "ApplicationName", FbxStringDT);
    Original_ApplicationVersion = text(Original, "ApplicationVersion", FbxStringDT);
    Original_DateTime_GMT = text(Original, "DateTime_GMT", FbxDateTimeDT);
    Original_FileName = text(Original, "FileName", FbxStringDT);
    LastSaved = FbxProperty::Create(this, FbxCompoundDT, "LastSaved");
    LastSaved_ApplicationVendor = text(LastSaved, "ApplicationVendor", FbxStringDT);
    LastSaved_ApplicationName = text(LastSaved, "ApplicationName", FbxStringDT);
    LastSaved_ApplicationVersion = text(LastSaved, "ApplicationVersion", FbxStringDT);
    LastSaved_DateTime_GMT = text(LastSaved, "DateTime_GMT", FbxDateTimeDT);
}
