#include "fbxglue.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include "fbx/io/fbxexporter.h"
#include "fbx/io/fbxiopluginregistry.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

namespace {

std::FILE* g_lines = stdout;

// Pipes and terminals behind standard output; a regular file there is left to the caller.
bool IsStandardOutput(const char* file) {
    struct stat named {
    }, standard{};
    if (std::strcmp(file, "-") == 0) return true;
    return stat(file, &named) == 0 && fstat(STDOUT_FILENO, &standard) == 0 &&
           named.st_dev == standard.st_dev && named.st_ino == standard.st_ino &&
           !S_ISREG(named.st_mode);
}

}  // namespace

void DirectGlueLinesAwayFrom(const char* outputFile) {
    g_lines = outputFile && IsStandardOutput(outputFile) ? stderr : stdout;
}

void InitializeSdkObjects(FbxManager*& manager, FbxScene*& scene) {
    manager = FbxManager::Create();
    if (!manager) {
        std::fprintf(g_lines, "Error: Unable to create FBX Manager!\n");
        throw std::runtime_error("Error: Unable to create FBX Manager");
    }
    std::fprintf(g_lines, "FBX library version %s\n", manager->GetVersion());
    manager->SetIOSettings(FbxIOSettings::Create(manager, "IOSRoot"));
    manager->LoadPluginsDirectory(QCoreApplication::applicationDirPath().toUtf8().constData());
    scene = FbxScene::Create(manager, "My Scene");
    if (!scene) {
        std::fprintf(g_lines, "Error: Unable to create FBX Scene!\n");
        throw std::runtime_error("Error: Unable to create FBX Scene");
    }
}

void DestroySdkObjects(FbxManager* manager, bool exitStatus) {
    if (manager) manager->Destroy();
    if (exitStatus) std::fprintf(g_lines, "Program Success!\n");
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
        std::fprintf(g_lines, "Call to FbxExporter::Initialize() failed.\n");
    } else {
        int major = 0, minor = 0, revision = 0;
        manager->GetFileFormatVersion(major, minor, revision);
        std::fprintf(g_lines, "FBX file format version %d.%d.%d\n\n", major, minor, revision);
        saved = exporter->Export(scene, false);
    }
    if (!saved) {
        std::fprintf(g_lines, "Error returned: %s\n\n", exporter->GetStatus().GetErrorString());
        if (error) *error = exporter->GetStatus().GetErrorString();
    }
    exporter->Destroy();
    return saved;
}
