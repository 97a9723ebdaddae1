#include "fbxglue.h"

#include <QCoreApplication>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "fbx/io/fbxexporter.h"
#include "fbx/io/fbxiopluginregistry.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

void InitializeSdkObjects(FbxManager*& manager, FbxScene*& scene) {
    manager = FbxManager::Create();
    if (!manager) {
        std::printf("Error: Unable to create FBX Manager!\n");
        throw std::runtime_error("Error: Unable to create FBX Manager");
    }
    std::printf("FBX library version %s\n", manager->GetVersion());
    manager->SetIOSettings(FbxIOSettings::Create(manager, "IOSRoot"));
    manager->LoadPluginsDirectory(QCoreApplication::applicationDirPath().toUtf8().constData());
    scene = FbxScene::Create(manager, "My Scene");
    if (!scene) {
        std::printf("Error: Unable to create FBX Scene!\n");
        throw std::runtime_error("Error: Unable to create FBX Scene");
    }
}

void DestroySdkObjects(FbxManager* manager, bool exitStatus) {
    if (manager) manager->Destroy();
    if (exitStatus) std::printf("Program Success!\n");
}

bool SaveScene(FbxManager* manager, FbxDocument* scene, const char* fileName, const char* format,
               bool embedMedia, std::string* error) {
    FbxExporter* exporter = FbxExporter::Create(manager, "");
    // "binary" and "ascii" name the FBX 7 writers by their descriptions.
    const FbxIOPluginRegistry* registry = manager->GetIOPluginRegistry();
    const int fileFormat =
        format ? registry->FindWriterByDescription(format) : registry->GetNativeWriterFormat();
    FbxIOSettings* settings = manager->GetIOSettings();
    for (const char* option :
         {"Material", "Texture", "Shape", "Gobo", "Animation", "Global_Settings"}) {
        settings->SetBoolProp((std::string("Export|AdvOptGrp|Fbx|") + option).c_str(), true);
    }
    settings->SetBoolProp("Export|AdvOptGrp|Fbx|EMBEDDED", embedMedia);
    bool saved = exporter->Initialize(fileName, fileFormat, settings);
    if (!saved) {
        std::printf("Call to FbxExporter::Initialize() failed.\n");
    } else {
        int major = 0, minor = 0, revision = 0;
        manager->GetFileFormatVersion(major, minor, revision);
        std::printf("FBX file format version %d.%d.%d\n\n", major, minor, revision);
        saved = exporter->Export(scene, false);
    }
    if (!saved) {
        std::printf("Error returned: %s\n\n", exporter->GetStatus().GetErrorString());
        if (error) *error = exporter->GetStatus().GetErrorString();
    }
    exporter->Destroy();
    return saved;
}
