#include "fbx/io/fbxexporter.h"

#include "fbx/io/fbxfileversion.h"
#include "fbx/io/fbxiopluginregistry.h"
#include "fbx/io/fbxwriterfbx7.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

FBX_IMPLEMENT_CLASS(FbxExporter, "Exporter", "Exporter", false)

FbxExporter::FbxExporter(FbxManager& manager, const char* name)
    : FbxObject(manager, name), mFileVersion(FBX_DEFAULT_FILE_VERSION) {}

bool FbxExporter::Initialize(const char* fileName, int fileFormat, FbxIOSettings* settings) {
    mStatus.Clear();
    mFileName = FbxString();
    mFileFormat = -1;
    mSettings = settings ? settings : GetManager()->GetIOSettings();
    const FbxIOPluginRegistry& registry = *GetManager()->GetIOPluginRegistry();
    const int format = fileFormat < 0 ? registry.GetNativeWriterFormat() : fileFormat;
    if (!registry.WriterIsAvailable(format)) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "No writer for this file format");
        return false;
    }
    if (!fileName || !*fileName) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid file name");
        return false;
    }
    mFileFormat = format;
    mFileName = fileName;
    return true;
}

bool FbxExporter::Export(FbxDocument* document, bool /*nonBlocking*/) {
    if (mFileFormat < 0) {
        mStatus.SetCode(FbxStatus::eFailure, "Exporter not initialized");
        return false;
    }
    const bool ascii = GetManager()->GetIOPluginRegistry()->WriterIsAscii(mFileFormat);
    FbxWriterFbx7 writer(*GetManager(), mSettings,
                         ascii ? FbxWriterFbx7::eASCII : FbxWriterFbx7::eBINARY);
    writer.SetFileExportVersion(mFileVersion);
    FbxScene* scene = FbxCast<FbxScene>(document);
    bool written = writer.FileCreate(mFileName.Buffer());
    if (written && scene) written = writer.PreprocessScene(*scene);
    if (written) written = writer.Write(document);
    if (written && scene) written = writer.PostprocessScene(*scene);
    if (writer.IsFileOpen()) written = writer.FileClose() && written;
    if (!written) {
        const FbxStatus& status = writer.GetStatus();
        mStatus.SetCode(status.GetCode(), status.GetErrorString());
    }
    return written;
}

bool FbxExporter::SetFileExportVersion(const FbxString& version) {
    const bool known = FbxFindFileVersion(version.Buffer()) != nullptr;
    mFileVersion = known ? version : FbxString(FBX_DEFAULT_FILE_VERSION);
    return known;
}
