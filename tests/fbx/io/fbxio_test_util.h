#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fbx/io/fbxexporter.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxtime.h"
#include "fbxfile/fbxbinaryreader.h"

class FbxScene;

namespace fbxtest {

// A fresh folder per test, removed with everything in it afterwards.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "fbxio-XXXXXX").string();
        mPath = mkdtemp(pattern.data()) ? pattern : std::string();
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    std::string File(const std::string& name) const { return mPath + "/" + name; }
    // Names in the folder, to see that no temporary file is left behind.
    std::vector<std::string> Entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mPath)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string mPath;
};

inline std::string ReadText(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// Reads a binary file with the structural reader; a violation fails the test.
inline fbxfile::File ReadChecked(const std::string& path,
                                 const fbxfile::ReadOptions& options = {}) {
    fbxfile::File file;
    std::string error;
    EXPECT_TRUE(fbxfile::ReadBinaryFile(path, file, error, options)) << path << ": " << error;
    return file;
}

// Runs `body` while the file system refuses every byte of a file past `limit` (the process's
// file size limit); writes beyond it fail as on a full disk.
template <typename Body>
void WithFileSizeLimit(size_t limit, const Body& body) {
    struct rlimit saved {};
    getrlimit(RLIMIT_FSIZE, &saved);
    struct rlimit reduced = saved;
    reduced.rlim_cur = limit;
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &reduced));
    body();
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
}

// A manager with IO settings, owning everything a test builds.
class ManagerScope {
public:
    ManagerScope() { get()->SetIOSettings(FbxIOSettings::Create(get(), "IOSRoot")); }
    FbxManager* operator->() const { return get(); }
    FbxManager* get() const { return mManager.get(); }

private:
    struct Destroy {
        void operator()(FbxManager* manager) const { manager->Destroy(); }
    };
    std::unique_ptr<FbxManager, Destroy> mManager{FbxManager::Create()};
};

struct ExportRequest {
    bool ascii = false;
    bool deterministic = true;
    const char* version = "FBX202000";
};

// Saves `document` through an exporter; returns the exporter's status text ("" on success).
inline std::string Export(FbxManager* manager, FbxDocument* document, const std::string& path,
                          const ExportRequest& request = {}) {
    manager->GetIOSettings()->SetBoolProp(EXP_FBX_DETERMINISTIC, request.deterministic);
    FbxExporter* exporter = FbxExporter::Create(manager, "");
    exporter->SetFileExportVersion(request.version);
    const bool ok =
        exporter->Initialize(path.c_str(), request.ascii ? 1 : 0) && exporter->Export(document);
    const std::string error = ok ? "" : exporter->GetStatus().GetErrorString();
    exporter->Destroy();
    return error;
}

// An animated skeleton like the exporter writes: a root "Reference" and joints below it,
// each with linear keys on the three channels of Lcl Translation and Lcl Rotation at
// 120 frames per second.
struct AnimatedSceneShape {
    int joints = 2;     // below the root
    bool chain = true;  // a chain (each joint the child of the previous), else a binary tree
    int keys = 10;
    const char* takeName = "Take 001";
};

FbxScene* BuildAnimatedScene(FbxManager* manager, const AnimatedSceneShape& shape);

// Names and parents of the nodes (index 0 is the root "Reference").
std::string NodeName(int node);
int ParentOf(int node, const AnimatedSceneShape& shape);

// The key of node `node`, channel `axis` (0..2) at key `key`, as stored (single precision).
FbxTime KeyTime(int key);
float TranslationValue(int node, int axis, int key);
// Degrees; kept inside (-90, 90) so that one Euler triple names each rotation.
float RotationValue(int node, int axis, int key);

}  // namespace fbxtest
