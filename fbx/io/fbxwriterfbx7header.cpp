// Header sections of the FBX 7 writer: "FBXHeaderExtension", the binary top-level fields,
// "GlobalSettings", "Documents" and "References".
#include "fbx/io/fbxsourcecheck.h"
#include "fbx/io/fbxwriterfbx7impl.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"

namespace {

std::string CreatorText() {
    return std::string("Nuvia FBX Writer version ") + FbxManager::GetVersion(true);
}

}  // namespace

void FbxWriterFbx7_Impl::WriteHeaderExtension() {
    mIO->FieldWriteBegin("FBXHeaderExtension");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("FBXHeaderVersion", mVersion >= 7700 ? 1004 : 1003);
    mIO->FieldWriteI("FBXVersion", mVersion);
    if (mBinary) mIO->FieldWriteI("EncryptionType", 0);
    WriteCreationTimeStamp();
    mIO->FieldWriteS("Creator", CreatorText().c_str());
    // Readers take the key time unit from this definition (127: the legacy unit).
    mIO->FieldWriteBegin("OtherFlags");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("TCDefinition", FbxTCGetDefinition());
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
    WriteSceneInfo();
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

void FbxWriterFbx7_Impl::WriteCreationTimeStamp() {
    const FbxCreationTime& time = mIO->GetCreationTime();
    mIO->FieldWriteBegin("CreationTimeStamp");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("Version", 1000);
    mIO->FieldWriteI("Year", time.year);
    mIO->FieldWriteI("Month", time.month);
    mIO->FieldWriteI("Day", time.day);
    mIO->FieldWriteI("Hour", time.hour);
    mIO->FieldWriteI("Minute", time.minute);
    mIO->FieldWriteI("Second", time.second);
    mIO->FieldWriteI("Millisecond", time.millisecond);
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

// The document information as the header's "SceneInfo" record: no id, the texts in a
// "MetaData" block, then all of its properties.
void FbxWriterFbx7_Impl::WriteSceneInfo() {
    const FbxDocumentInfo* info = mDocument->GetDocumentInfo();
    if (!info) return;
    mIO->FieldWriteBegin("SceneInfo");
    mIO->FieldWriteS(info->GetNameWithNameSpacePrefix().Buffer());
    mIO->FieldWriteS(info->GetSubTypeName());
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteS("Type", info->GetSubTypeName());
    mIO->FieldWriteI("Version", 100);
    mIO->FieldWriteBegin("MetaData");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("Version", 100);
    mIO->FieldWriteS("Title", info->mTitle.Buffer());
    mIO->FieldWriteS("Subject", info->mSubject.Buffer());
    mIO->FieldWriteS("Author", info->mAuthor.Buffer());
    mIO->FieldWriteS("Keywords", info->mKeywords.Buffer());
    mIO->FieldWriteS("Revision", info->mRevision.Buffer());
    mIO->FieldWriteS("Comment", info->mComment.Buffer());
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
    WriteProperties(*info, nullptr);
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

// "FileId", "CreationTime" and "Creator": binary files only. FileId and the footer's source
// check both derive from the creation time, so they stay consistent with each other.
void FbxWriterFbx7_Impl::WriteTopLevelBinaryFields() {
    const FbxSourceCheckBlock fileId = FbxFileIdBlock(mIO->GetCreationTime());
    mIO->FieldWriteR("FileId", fileId.data(), fileId.size());
    mIO->FieldWriteS("CreationTime", FbxFormatCreationTime(mIO->GetCreationTime()).c_str());
    mIO->FieldWriteS("Creator", (CreatorText() + " build=0").c_str());
}

void FbxWriterFbx7_Impl::WriteGlobalSettings() {
    if (!mScene) return;
    mIO->FieldWriteBegin("GlobalSettings");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("Version", 1000);
    WriteProperties(mScene->GetGlobalSettings(), nullptr);
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

void FbxWriterFbx7_Impl::WriteDocuments() {
    WriteBanner(" Documents Description");
    mIO->FieldWriteBegin("Documents");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteI("Count", 1);
    mIO->FieldWriteBegin("Document");
    mIO->FieldWriteLL(GetObjectId(*mDocument));
    mIO->FieldWriteS(mDocument->GetName());
    mIO->FieldWriteS(mDocument->GetSubTypeName());
    mIO->FieldWriteBlockBegin();
    WriteProperties(*mDocument, nullptr);
    if (mScene) mIO->FieldWriteLL("RootNode", GetObjectId(*mScene->GetRootNode()));
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}

// The file holds one document, so no object refers into another: the table is empty.
void FbxWriterFbx7_Impl::WriteReferences() {
    mIO->FieldWriteBegin("References");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}
