// How the program ends: exit status, one clear line on standard error and no output file when
// an export fails (the fault matrices see an earlier file survive); the summary and repeatable
// files when it succeeds; the options page writing the settings store.
#include <gtest/gtest.h>

#include <zavo/abstractexporterfactory.h>
#include <zavo/abstractoptionspage.h>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QPluginLoader>
#include <QRegularExpression>

#include "demotake.h"
#include "optionsdialog.h"
#include "pluginloader.h"
#include "programrun.h"
#include "settingsstore.h"
#include "takehost.h"
#include "takewriter.h"

TEST(ExportFailure, EndsWithStatusOneLineAndNoFile) {
    QTemporaryDir folder;
    writeFile(folder.filePath("bad.json"), R"({"format": "zavo-take", "version": 1,)");
    writeFile(folder.filePath("bad.ini"), "[group\nkey");
    Take take = makeDemoTake({.frames = 2, .fingers = false, .props = 0});
    take.frames[1]->segments.pop_back();
    writeTakeFile(take, folder.filePath("short.json").toStdString());
    writeFile(folder.filePath("cut.bvh"),  // the last frame cut off in the middle
              fileBytes(ZAVO_BVH_DATA_DIR "/cmu_02_03_run.bvh").chopped(300));
    const std::vector<std::tuple<QString, int, QString>> cases = {
        {"bad.json out.fbx", 1, "bad.json: expected a string (line 1, column 38)"},
        {"short.json out.fbx", 1,
         "short.json: frames[1].segments: expected 23 segments (one per segment name), found 22"},
        {"cut.bvh out.fbx", 1, "cut.bvh: line 360: frame 172: expected 96 numbers, found 59"},
        {"missing.json out.fbx", 1, "missing.json: cannot open: No such file or directory"},
        {"--preset mesh --demo out.fbx", 1,
         "invalid setting --preset mesh: expected skeleton or nodes"},
        {"--set outputPreset=Mesh --demo out.fbx", 1,
         "out.fbx: the plug-in made no exporter: FBX Preset \"Mesh\" not supported. Invalid "
         "outputPreset: \"Mesh\" (accepted: Nodes or Skeleton in any case, 0 or 1)"},
        {"--set naming=maya --demo out.fbx", 1,
         "out.fbx: export failed: Invalid naming convention: maya"},
        {"--set outputscale=2 --demo out.fbx", 1,
         "invalid setting outputscale: the plug-in has no such setting"},
        {"--demo no/such/folder/out.fbx", 1,
         "no/such/folder/out.fbx: no such folder " + folder.filePath("no/such/folder")},
        {"--demo .", 1, ".: is a folder"},
        {"short.json ./short.json", 1, "./short.json: is the input file"},
        {"/dev/null /dev/null", 1,  // a device named twice is no clash of input and output
         "/dev/null: expected '{' (a take is one JSON object) (line 1, column 1)"},
        {"--plugin nothing.so --demo out.fbx", 1, "nothing.so: no such plug-in file"},
        {"--settings bad.ini --demo out.fbx", 1, "bad.ini: cannot read the settings (INI) file"},
        {"--demo --frame-rate 30 out.fbx", 2, "unknown option --frame-rate (see --help)"},
    };
    for (const auto& [arguments, status, message] : cases) {
        SCOPED_TRACE(arguments.toStdString());
        const ProgramRun run = runProgram(folder, arguments.split(' '));
        EXPECT_EQ(run.exitStatus, status);
        EXPECT_EQ(run.standardError.toStdString(),
                  ("zavo-fbx-export: " + message + "\n").toStdString());
        EXPECT_FALSE(QFile::exists(folder.filePath("out.fbx")));
    }
}

TEST(ExportSuccess, SummarisesAndRepeatsItselfByteForByte) {
    QTemporaryDir folder;
    for (const char* format : {"ascii", "binary"}) {
        const ProgramRun run =
            runProgram(folder, {"--demo", "--deterministic", "--format", format, "first.fbx"});
        ASSERT_EQ(run.exitStatus, 0) << run.standardError.toStdString();
        EXPECT_EQ(run.standardError, "");
        const QString summary = run.standardOutput.trimmed().split('\n').last();
        EXPECT_TRUE(
            QRegularExpression(R"(^first\.fbx: 600 frames, 55 nodes, 165 curves, 99000 keys, )"
                               R"(\d+\.\d [KM]B, \d+\.\d\d s$)")
                .match(summary)
                .hasMatch())
            << summary.toStdString();
    }

    // The demo take through a take file gives the same bytes: the reader loses nothing the
    // plug-in uses.
    QDir(folder.path()).mkdir("again");
    writeTakeFile(makeDemoTake({}), folder.filePath("demo.json").toStdString());
    const ProgramRun again = runProgram(folder, {"--deterministic", "--quiet", "--format", "binary",
                                                 "demo.json", "again/first.fbx"});
    ASSERT_EQ(again.exitStatus, 0) << again.standardError.toStdString();
    EXPECT_FALSE(again.standardOutput.contains("frames,"));
    EXPECT_EQ(fileBytes(folder.filePath("first.fbx")),
              fileBytes(folder.filePath("again/first.fbx")));
}

TEST(OptionsPage, OkWritesThePagesValuesIntoTheSettingsStore) {
    QTemporaryDir folder;
    QPluginLoader loader;
    AbstractExporterFactory* factory = loadExporterFactory(loader, defaultPluginPath());
    const Take noTake;
    const auto store = std::make_shared<SettingsStore>(folder.filePath("settings.ini"));
    TakeHost host(noTake, store);
    factory->initializePlugin(host);
    const std::unique_ptr<AbstractOptionsPage> page(factory->optionsPage());
    ASSERT_TRUE(page);
    OptionsDialog dialog(*page);
    auto* preset = dialog.findChild<QComboBox*>("outputPresetComboBox");
    ASSERT_TRUE(preset);
    preset->setCurrentIndex(preset->findData(0));  // Nodes
    dialog.accept();
    SettingsStore reopened(folder.filePath("settings.ini"));
    EXPECT_EQ(reopened.value(host.settingsGroup(), "outputPreset").toInt(), 0);
    EXPECT_EQ(reopened.value(host.settingsGroup(), "exportFormat").toString(), "ascii");
}
