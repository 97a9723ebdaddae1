#pragma once

#include <memory>

#include "fbx/scene/fbxstatus.h"
#include "fbx/scene/fbxtypes.h"

class FbxDocument;
class FbxIOSettings;
class FbxManager;
class FbxScene;
class FbxWriterFbx7_Impl;

// Writes one scene document as an FBX 7 file, binary or ASCII: header, global settings,
// documents, definitions with property templates, objects, connections and takes.
//
// Call FileCreate, PreprocessScene, Write, PostprocessScene and FileClose in this order.
// The file appears under its name only when all of them succeed; otherwise GetStatus()
// says why and whatever was under the name before is left as it was.
class FbxWriterFbx7 {
public:
    enum EExportMode { eBINARY, eASCII };

    FbxWriterFbx7(FbxManager& manager, FbxIOSettings* settings, EExportMode mode = eBINARY);
    ~FbxWriterFbx7();
    FbxWriterFbx7(const FbxWriterFbx7&) = delete;
    FbxWriterFbx7& operator=(const FbxWriterFbx7&) = delete;

    // One of the "ExportFileVersion" names ("FBX202000"); other text selects the default.
    void SetFileExportVersion(const FbxString& version);

    // Reads the options, opens the output (relative names are taken from the current
    // folder) and writes the file header.
    bool FileCreate(const char* fileName);
    // Writes the footer and moves the file into place; after a failed write it removes the
    // unfinished file instead and returns false.
    bool FileClose();
    bool IsFileOpen() const;

    // The scenes of this model need no preparation for FBX 7: both only report success.
    bool PreprocessScene(FbxScene&) { return true; }
    bool PostprocessScene(FbxScene&) { return true; }

    bool Write(FbxDocument* document);

    FbxStatus& GetStatus();

private:
    std::unique_ptr<FbxWriterFbx7_Impl> mImpl;
};
