#pragma once

#include <string>

#include "fbx/io/fbxexporter.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxmanager.h"
#include "tests/fbxio/fbxio_test_scene.h"

namespace fbxtest {

struct ExportRequest {
    bool ascii = false;
    bool deterministic = true;
    const char* version = "FBX202000";
};

// A manager with IO settings, owning everything a test builds; destroyed with the fixture.
class ManagerScope {
public:
    ManagerScope() : mManager(FbxManager::Create()) {
        mManager->SetIOSettings(FbxIOSettings::Create(mManager, "IOSRoot"));
    }
    ~ManagerScope() { mManager->Destroy(); }
    ManagerScope(const ManagerScope&) = delete;
    ManagerScope& operator=(const ManagerScope&) = delete;

    FbxManager* operator->() const { return mManager; }
    FbxManager* get() const { return mManager; }

private:
    FbxManager* mManager;
};

// Saves `document` through an exporter; returns the exporter's status text ("" on success).
inline std::string Export(FbxManager* manager, FbxDocument* document, const std::string& path,
                          const ExportRequest& request = {}) {
    manager->GetIOSettings()->SetBoolProp(EXP_FBX_DETERMINISTIC, request.deterministic);
    FbxExporter* exporter = FbxExporter::Create(manager, "");
    exporter->SetFileExportVersion(request.version);
    std::string error;
    if (!exporter->Initialize(path.c_str(), request.ascii ? 1 : 0)) {
        error = exporter->GetStatus().GetErrorString();
    } else if (!exporter->Export(document)) {
        error = exporter->GetStatus().GetErrorString();
    }
    exporter->Destroy();
    return error;
}

}  // namespace fbxtest
