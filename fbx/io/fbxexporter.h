#pragma once

#include "fbx/scene/fbxobject.h"
#include "fbx/scene/fbxstatus.h"

class FbxDocument;
class FbxIOSettings;

// Saves a document to a file through one of the registered writers (FbxIOPluginRegistry).
// Owned by its manager like every other object.
class FbxExporter : public FbxObject {
    FBX_DECLARE_CLASS(FbxExporter, FbxObject)
public:
    // Binds the exporter to `fileName` and a writer: `fileFormat` is a writer id, or -1 for
    // the native (binary) writer, as every writer here writes .fbx files. `settings` defaults
    // to the manager's. Fails (see GetStatus) for an empty name or a format without a writer;
    // whether the file can be written is known only when Export() creates it.
    bool Initialize(const char* fileName, int fileFormat = -1, FbxIOSettings* settings = nullptr);
    // Writes the document. The file replaces an existing one only when the whole write
    // succeeds. Writes always complete before returning (`nonBlocking` is ignored).
    bool Export(FbxDocument* document, bool nonBlocking = false);

    // One of the "ExportFileVersion" names; anything else selects "FBX202000" and returns
    // false.
    bool SetFileExportVersion(const FbxString& version);
    const FbxString& GetFileExportVersion() const { return mFileVersion; }
    const FbxString& GetFileName() const { return mFileName; }
    int GetFileFormat() const { return mFileFormat; }
    FbxIOSettings* GetIOSettings() const { return mSettings; }

    FbxStatus& GetStatus() { return mStatus; }

protected:
    FbxExporter(FbxManager& manager, const char* name);

private:
    FbxStatus mStatus;
    FbxString mFileName;
    FbxString mFileVersion;
    int mFileFormat = -1;
    FbxIOSettings* mSettings = nullptr;
};
