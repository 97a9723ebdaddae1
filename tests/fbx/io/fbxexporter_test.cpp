#include <cstdlib>

#include "fbx/io/fbxiopluginregistry.h"
#include "fbx/scene/fbxscene.h"
#include "tests/fbx/io/fbxio_test_util.h"

namespace {

using fbxtest::ManagerScope;

TEST(FbxIOPluginRegistry, OneTableAndChoiceByDescription) {
    ManagerScope manager, other;
    const FbxIOPluginRegistry* registry = manager->GetIOPluginRegistry();
    ASSERT_EQ(registry, other->GetIOPluginRegistry());
    EXPECT_EQ(4, registry->GetWriterFormatCount());
    EXPECT_EQ(nullptr, registry->GetWriterFormatDescription(4));
    EXPECT_FALSE(registry->WriterIsFBX(-1));
    // The first writer that names the word wins; anything else gets the native binary one.
    for (const auto& [word, id] :
         {std::pair{"binary", 0}, {"ascii", 1}, {"6.0 ascii", 3}, {"xml", 0}, {"", 0}}) {
        EXPECT_EQ(id, registry->FindWriterByDescription(word)) << word;
    }
    EXPECT_EQ(0, registry->FindWriterByDescription(nullptr));
}

TEST(FbxIOSettings, DefaultsAndConversions) {
    ManagerScope manager;
    FbxIOSettings* settings = manager->GetIOSettings();
    EXPECT_EQ(FbxString("FBX202000"), settings->GetStringProp(EXP_FBX_EXPORT_FILE_VERSION, ""));
    EXPECT_EQ(-1, settings->GetIntProp("Export|Absent", -1));
    settings->SetStringProp(EXP_FBX_ASCII, "ASCII");
    EXPECT_TRUE(settings->GetBoolProp(EXP_FBX_ASCII, true)) << "a text does not read as a flag";
    // Deterministic output is asked for by the exporting program, never by the environment.
    ASSERT_EQ(0, setenv("ZAVO_FBX_DETERMINISTIC", "1", 1));
    EXPECT_FALSE(
        FbxIOSettings::Create(manager.get(), "fresh")->GetBoolProp(EXP_FBX_DETERMINISTIC, true));
    ASSERT_EQ(0, unsetenv("ZAVO_FBX_DETERMINISTIC"));
}

// The version names map to file versions in the writer's tests.
TEST(FbxExporter, VersionChoiceAndInitializeFailures) {
    ManagerScope manager;
    FbxExporter* exporter = FbxExporter::Create(manager.get(), "");
    EXPECT_TRUE(exporter->SetFileExportVersion("FBX201400"));
    EXPECT_EQ(FbxString("FBX201400"), exporter->GetFileExportVersion());
    EXPECT_FALSE(exporter->SetFileExportVersion("2014"));
    EXPECT_EQ(FbxString("FBX202000"), exporter->GetFileExportVersion()) << "back to the default";

    EXPECT_FALSE(exporter->Export(FbxScene::Create(manager.get(), "My Scene")));
    EXPECT_STREQ("Exporter not initialized", exporter->GetStatus().GetErrorString());
    for (const auto& [file, format, error] :
         {std::tuple{"take.fbx", 2, "No writer for this file format"},
          {"take.fbx", 9, "No writer for this file format"},
          {nullptr, -1, "Invalid file name"}}) {
        EXPECT_FALSE(exporter->Initialize(file, format));
        EXPECT_STREQ(error, exporter->GetStatus().GetErrorString());
    }
    EXPECT_TRUE(exporter->Initialize("take.fbx"));
    EXPECT_EQ(0, exporter->GetFileFormat());
}

}  // namespace
