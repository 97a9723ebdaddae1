#include <cstdlib>

#include "fbx/io/fbxfileversion.h"
#include "fbx/io/fbxiopluginregistry.h"
#include "fbx/scene/fbxscene.h"
#include "tests/fbxio/fbxio_export_util.h"
#include "tests/fbxio/fbxio_test_util.h"

namespace {

using fbxtest::ManagerScope;

TEST(FbxIOPluginRegistry, WritersAndChoiceByDescription) {
    ManagerScope manager, other;
    const FbxIOPluginRegistry* registry = manager->GetIOPluginRegistry();
    ASSERT_EQ(registry, other->GetIOPluginRegistry()) << "one process-wide table";
    ASSERT_EQ(4, registry->GetWriterFormatCount());
    EXPECT_STREQ("FBX binary (*.fbx)", registry->GetWriterFormatDescription(0));
    EXPECT_STREQ("FBX ascii (*.fbx)", registry->GetWriterFormatDescription(1));
    EXPECT_STREQ("FBX 6.0 binary (*.fbx)", registry->GetWriterFormatDescription(2));
    EXPECT_STREQ("FBX 6.0 ascii (*.fbx)", registry->GetWriterFormatDescription(3));
    EXPECT_EQ(nullptr, registry->GetWriterFormatDescription(4));
    EXPECT_TRUE(registry->WriterIsFBX(3));
    EXPECT_FALSE(registry->WriterIsFBX(-1));
    EXPECT_EQ(0, registry->GetNativeWriterFormat());
    EXPECT_EQ(0, registry->FindWriterByDescription("binary"));
    EXPECT_EQ(1, registry->FindWriterByDescription("ascii"));
    EXPECT_EQ(0, registry->FindWriterByDescription("xml"));
    EXPECT_EQ(0, registry->FindWriterByDescription(nullptr));
}

TEST(FbxIOSettings, ExportGroupKeysDefaultsAndConversions) {
    ManagerScope manager;
    FbxIOSettings* settings = manager->GetIOSettings();
    const std::vector<FbxString> paths = settings->GetPropPaths();
    EXPECT_EQ((std::vector<FbxString>{"Export|AdvOptGrp|Fbx", EXP_FBX_ASCII, EXP_FBX_DETERMINISTIC,
                                      EXP_FBX_EXPORT_FILE_VERSION}),
              std::vector<FbxString>(paths.begin(), paths.begin() + 4));
    EXPECT_EQ(FbxString("Compress MinSize"), settings->GetPropLabel(EXP_FBX_COMPRESS_MINSIZE));
    EXPECT_EQ(FbxString("FBX202000"), settings->GetStringProp(EXP_FBX_EXPORT_FILE_VERSION, ""));
    const auto labels = settings->GetPropItems("Export|AdvOptGrp|Fbx|VersionsUIAlias");
    ASSERT_EQ(11u, labels.size());
    EXPECT_EQ(FbxString("FBX 2016/2017"), labels[3]);
    for (const auto& [path, value] : {std::pair{EXP_FBX_COMPRESS_LEVEL, 1},
                                      {EXP_FBX_COMPRESS_MINSIZE, 1024},
                                      {EXP_CACHE_SIZE, 8},
                                      {EXP_FBX_ANIMATION, 1},
                                      {"Export|Absent", -1}}) {
        EXPECT_EQ(value, settings->GetIntProp(path, -1)) << path;
    }
    settings->SetIntProp("Export|Number", 5);
    EXPECT_TRUE(settings->GetBoolProp("Export|Number", false));
    EXPECT_EQ(FbxString("text default"), settings->GetStringProp("Export|Number", "text default"));
    settings->SetStringProp(EXP_FBX_ASCII, "ASCII");
    EXPECT_TRUE(settings->GetBoolProp(EXP_FBX_ASCII, true)) << "a text does not read as a flag";
}

TEST(FbxIOSettings, EnvironmentAsksForDeterministicOutput) {
    ManagerScope manager;
    ASSERT_EQ(0, setenv(FBX_DETERMINISTIC_ENV, "1", 1));
    EXPECT_TRUE(
        FbxIOSettings::Create(manager.get(), "a")->GetBoolProp(EXP_FBX_DETERMINISTIC, false));
    ASSERT_EQ(0, setenv(FBX_DETERMINISTIC_ENV, "0", 1));
    EXPECT_FALSE(
        FbxIOSettings::Create(manager.get(), "b")->GetBoolProp(EXP_FBX_DETERMINISTIC, true));
    ASSERT_EQ(0, unsetenv(FBX_DETERMINISTIC_ENV));
    EXPECT_FALSE(FbxDeterministicDefault());
}

TEST(FbxExporter, VersionTableAndInitializeFailures) {
    struct Row {
        const char* name;
        int version;
    };
    for (const Row& row : {Row{"FBX202000", 7700}, Row{"FBX201900", 7700}, Row{"FBX201800", 7500},
                           Row{"FBX201600", 7500}, Row{"FBX201400", 7400}, Row{"FBX201300", 7300},
                           Row{"FBX201200", 7200}, Row{"FBX201100", 7100}, Row{"FBX201000", 7700},
                           Row{"FBX200900", 7700}, Row{"FBX200611", 7700}}) {
        ASSERT_NE(nullptr, FbxFindFileVersion(row.name)) << row.name;
        EXPECT_EQ(row.version, FbxFindFileVersion(row.name)->version) << row.name;
    }
    EXPECT_EQ(11u, FbxFileVersions().size());
    EXPECT_EQ(nullptr, FbxFindFileVersion("FBX7700"));

    ManagerScope manager;
    FbxExporter* exporter = FbxExporter::Create(manager.get(), "");
    EXPECT_EQ(FbxString("FBX202000"), exporter->GetFileExportVersion());
    EXPECT_TRUE(exporter->SetFileExportVersion("FBX201400"));
    EXPECT_EQ(FbxString("FBX201400"), exporter->GetFileExportVersion());
    EXPECT_FALSE(exporter->SetFileExportVersion("2014"));
    EXPECT_EQ(FbxString("FBX202000"), exporter->GetFileExportVersion());

    FbxScene* scene = FbxScene::Create(manager.get(), "My Scene");
    EXPECT_FALSE(exporter->Export(scene));
    EXPECT_STREQ("Exporter not initialized", exporter->GetStatus().GetErrorString());
    EXPECT_FALSE(exporter->Initialize("take.fbx", 2));
    EXPECT_STREQ("No writer for this file format", exporter->GetStatus().GetErrorString());
    EXPECT_FALSE(exporter->Initialize("take.fbx", 9));
    EXPECT_FALSE(exporter->Initialize(nullptr));
    EXPECT_STREQ("Invalid file name", exporter->GetStatus().GetErrorString());
    EXPECT_FALSE(exporter->Initialize("/proc/version/take.fbx"));
    EXPECT_STREQ("Unable to create the file \"/proc/version/take.fbx\": Not a directory",
                 exporter->GetStatus().GetErrorString());
    EXPECT_TRUE(exporter->Initialize("take.fbx"));
    EXPECT_EQ(0, exporter->GetFileFormat());
    EXPECT_EQ(manager->GetIOSettings(), exporter->GetIOSettings());
}

}  // namespace
