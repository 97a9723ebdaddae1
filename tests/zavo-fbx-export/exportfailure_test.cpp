// How the program ends: exit status, one clear line on standard error, and no output file
// (or the earlier file untouched) when an export fails; the summary and repeatable files when
// it succeeds; the options page writing the settings store.
#include <gtest/gtest.h>

#include <zavo/abstractexporterfactory.h>
#include <zavo/abstractoptionspage.h>
#include <QComboBox>
#include <QFile>
#include <QPluginLoader>
#include <QRegularExpression>
#include <fstream>

#include "demotake.h"
#include "optionsdialog.h"
#include "pluginloader.h"
#include "programrun.h"
#include "settingsstore.h"
#include "takehost.h"
#include "takewriter.h"

namespace {

void writeText(const QTemporaryDir& folder, const char* name, const std::string& text) {
    std::ofstream(folder.filePath(name).toStdString(), std::ios::binary) << text;
}

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A take with two frames, the second of them one segment short.
std::string shortFrameTake() {
    DemoTakeOptions options;
    options.frames = 2;
    options.props = 0;
    options.fingers = false;
    Take take = makeDemoTake(options);
    take.frames[1]->segments.pop_back();
    std::ostringstream text;
    writeTake(take, text);
    return text.str();
}

// A clip whose last frame was cut off in the middle.
const char* const truncatedClip =
    "HIERARCHY\nROOT Hips\n{\n  OFFSET 0 0 0\n  CHANNELS 6 Xposition Yposition Zposition "
    "Zrotation Yrotation Xrotation\n}\nMOTION\nFrames: 3\nFrame Time: 0.0083333\n"
    "0 17 0 0 0 0\n0 17 1 0 0 0\n0 17";

}  // namespace

TEST(ExportFailure, EndsWithStatusOneLineAndNoFile) {
    QTemporaryDir folder;
    writeText(folder, "bad.json", R"({"format": "zavo-take", "version": 1,)");
    writeText(folder, "short.json", shortFrameTake());
    writeText(folder, "cut.bvh", truncatedClip);
    const std::vector<std::tuple<QStringList, int, QString>> cases = {
        {{"bad.json", "out.fbx"}, 1, "bad.json: expected a string (line 1, column 38)"},
        {{"short.json", "out.fbx"},
         1,
         "short.json: frames[1].segments: expected 23 segments (one per segment name), found 22"},
        {{"cut.bvh", "out.fbx"}, 1, "cut.bvh: line 12: frame 2: expected 6 numbers, found 2"},
        {{"missing.json", "out.fbx"}, 1, "missing.json: cannot open: No such file or directory"},
        {{"--preset", "mesh", "--demo", "out.fbx"},
         1,
         "invalid setting --preset mesh: expected skeleton or nodes"},
        {{"--set", "outputPreset=Mesh", "--demo", "out.fbx"},
         1,
         "out.fbx: the plug-in made no exporter: FBX Preset \"Mesh\" not supported"},
        {{"--set", "naming=maya", "--demo", "out.fbx"},
         1,
         "out.fbx: export failed: Invalid naming convention: maya"},
        {{"--set", "outputscale=2", "--demo", "out.fbx"},
         1,
         "invalid setting outputscale: the plug-in has no such setting"},
        {{"--demo", "no/such/folder/out.fbx"},
         1,
         "no/such/folder/out.fbx: no such folder " + folder.filePath("no/such/folder")},
        {{"--demo", "."}, 1, ".: is a folder"},
        {{"--plugin", "nothing.so", "--demo", "out.fbx"}, 1, "nothing.so: no such plug-in file"},
        {{"--demo", "--frame-rate", "30", "out.fbx"},
         2,
         "unknown option --frame-rate (see --help)"},
    };
    for (const auto& [arguments, status, message] : cases) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        const ProgramRun run = runProgram(folder, arguments);
        EXPECT_EQ(run.exitStatus, status);
        EXPECT_EQ(run.standardError.toStdString(),
                  ("zavo-fbx-export: " + message + "\n").toStdString());
        EXPECT_FALSE(QFile::exists(folder.filePath("out.fbx")));
    }
}

TEST(ExportFailure, KeepsTheFileThatWasThere) {
    QTemporaryDir folder;
    writeText(folder, "out.fbx", "an earlier export");
    const ProgramRun run = runProgram(folder, {"--set", "naming=maya", "--demo", "out.fbx"});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(fileBytes(folder.filePath("out.fbx")), "an earlier export");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1) << "a temporary file stayed";
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
    std::ostringstream take;
    writeTake(makeDemoTake({}), take);
    writeText(folder, "demo.json", take.str());
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
