#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <sstream>

#include "batchexport.h"
#include "commandline.h"
#include "settingsstore.h"

namespace {

// The arguments of `line`, split at blanks.
CommandLine parse(const std::string& line) {
    std::vector<std::string> arguments;
    std::istringstream words(line);
    for (std::string word; words >> word;) arguments.push_back(word);
    return parseCommandLine(arguments);
}

}  // namespace

TEST(CommandLine, MapsEachOptionToItsSettingsKeyAndStoredValue) {
    const CommandLine command = parse(
        "--preset Nodes --naming=unreal --unit inches -scale=2.5 --time-increment fixed "
        "--time-start real --no-calibration-pose --frame-skip 3 --walk-on-the-spot --format "
        "binary --set naming=x=y --no-demo-fingers --demo-fingers walk.bvh walk.fbx");
    const std::vector<std::pair<QString, QVariant>> expected = {
        {"outputPreset", 0},           {"naming", "unreal"},     {"outputScale", 39.3700787},
        {"outputScale", 2.5},          {"timeIncrementMode", 0}, {"timeStart", 1},
        {"useCalibrationPose", false}, {"frameSkip", 3},         {"walkOnTheSpot", true},
        {"exportFormat", "binary"},    {"naming", "x=y"}};
    ASSERT_EQ(command.settings.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(command.settings[i].first, expected[i].first);
        EXPECT_EQ(command.settings[i].second, expected[i].second) << i;
        EXPECT_EQ(command.settings[i].second.typeId(), expected[i].second.typeId()) << i;
    }
    EXPECT_EQ(command.input, "walk.bvh");
    EXPECT_EQ(command.output, "walk.fbx");
    EXPECT_TRUE(command.demoTake.fingers);  // the last of opposing flags wins
    EXPECT_EQ(parse("--unit meters --demo d.fbx").settings[0].second.typeId(), QMetaType::Int);

    const CommandLine demo = parse(
        "--demo --demo-frames 10 --demo-rate 120 --no-demo-fingers --demo-props 0 "
        "--deterministic -q --bvh-unit 0.056444 --bvh-rate 119.88 -v -- -odd.fbx");
    EXPECT_TRUE(demo.demo);
    EXPECT_EQ(demo.output, "-odd.fbx");
    EXPECT_EQ(demo.demoTake.frames, 10);
    EXPECT_EQ(demo.demoTake.frameRate, 120.0);
    EXPECT_FALSE(demo.demoTake.fingers);
    EXPECT_EQ(demo.demoTake.props, 0);
    EXPECT_TRUE(demo.deterministic && demo.quiet);
    EXPECT_DOUBLE_EQ(demo.bvhMetresPerUnit, 0.056444);
    EXPECT_DOUBLE_EQ(demo.bvhFrameRate, 119.88);
    EXPECT_TRUE(demo.verbose);
    EXPECT_DOUBLE_EQ(bvhUnitFromText("inches"), 0.0254);
    EXPECT_EQ(parse("--options --settings s.ini").mode, CommandLine::Mode::Options);
    EXPECT_EQ(parse("x --version").mode, CommandLine::Mode::Version);
}

TEST(CommandLine, TellsUsageErrorsFromInvalidSettings) {
    const std::vector<std::tuple<std::string, int, std::string>> cases = {
        {"", 2, "missing INPUT and OUTPUT.fbx"},
        {"a.json", 2, "expected INPUT and OUTPUT.fbx"},
        {"--demo a.fbx b.fbx", 2, "--demo needs exactly one OUTPUT.fbx"},
        {"--options a.fbx", 2, "--options takes no files"},
        {"--bogus a b", 2, "unknown option --bogus"},
        {"a b --preset", 2, "--preset needs a value"},
        {"--quiet=1 a b", 2, "--quiet takes no value"},
        {"--set naming a b", 2, "--set needs KEY=VALUE"},
        {"--demo-props 5 --demo a", 2, "--demo-props 5: expected a whole number from 0 to 4"},
        {"--bvh-unit yards a b", 2,
         "--bvh-unit yards: expected millimeters, centimeters, meters, inches or metres per unit"},
        {"--bvh-rate -inf a b", 2, "--bvh-rate -inf: expected frames per second above 0"},
        {"--bvh-rate nan a b", 2, "--bvh-rate nan: expected frames per second above 0"},
        {"--preset mesh a b", 1, "invalid setting --preset mesh: expected skeleton or nodes"},
        {"--naming maya a b", 1, "invalid setting --naming maya: expected default or unreal"},
        {"--scale -1 a b", 1, "invalid setting --scale -1: expected a number above 0"},
        {"--frame-skip 1.5 a b", 1,
         "invalid setting --frame-skip 1.5: expected a whole number from 0"},
        {"--output-dir out", 2, "--output-dir needs at least one INPUT"},
        {"--output-dir out --demo", 2, "--demo and --output-dir exclude each other"},
        {"--jobs 2 a b", 2, "--jobs needs --output-dir"},
        {"--output-dir out -j 0 a", 2, "-j 0: expected a whole number from 1"},
        {"--output-dir out --jobs=x a", 2, "--jobs x: expected a whole number from 1"},
        {"--output-dir= a", 2, "--output-dir needs a folder"},
        {"--output-dir out --options", 2, "--options takes no files"},
        {"--options --demo", 2, "--demo and --options exclude each other"},
        // How options are spelled: one dash or two, a value after '=' or in the next argument.
        {"-bogus a b", 2, "unknown option -bogus"},
        {"--bogus=1 a b", 2, "unknown option --bogus"},
        {"-qv a b", 2, "unknown option -qv"},
        {"-j2 a b", 2, "unknown option -j2"},
        {"a b -j", 2, "-j needs a value"},
        {"--demo=1 x.fbx", 2, "--demo takes no value"},
        {"--preset --demo x.fbx", 1, "invalid setting --preset --demo: expected skeleton or nodes"},
        {"--scale 1e999 a b", 1, "invalid setting --scale 1e999: expected a number above 0"},
    };
    for (const auto& [arguments, status, message] : cases) {
        try {
            parse(arguments);
            ADD_FAILURE() << "accepted " << message;
        } catch (const CommandLineError& error) {
            EXPECT_EQ(error.exitStatus(), status) << message;
            EXPECT_EQ(error.what(), message);
        }
    }
}

// --help and --version answer before anything else on the command line is judged.
TEST(CommandLine, HelpAndVersionEndTheCommandLine) {
    EXPECT_EQ(parse("--help --bogus").mode, CommandLine::Mode::Help);
    EXPECT_EQ(parse("a b --version --bogus").mode, CommandLine::Mode::Version);
    EXPECT_EQ(parse("--version --help").mode, CommandLine::Mode::Version);
    EXPECT_EQ(parse("take.json -- --help").input, "take.json");
    const std::vector<std::pair<std::string, int>> faultsBefore = {
        {"--bogus --help", 2}, {"--help=1", 2}, {"--preset mesh -h", 1}, {"--demo --options", 2}};
    for (const auto& [line, exitStatus] : faultsBefore) {
        try {
            parse(line + " --version");
            ADD_FAILURE() << line;
        } catch (const CommandLineError& error) {
            EXPECT_EQ(error.exitStatus(), exitStatus) << line;
        }
    }
}

TEST(CommandLine, KnowsEveryOptionItsHelpNames) {
    const std::string help = usageText();
    size_t checked = 0;
    for (size_t at = help.find(" -"); at != std::string::npos; at = help.find(" -", at + 1)) {
        const size_t end = help.find_first_of(" ,\n|=):]", at + 1);
        const std::string option = help.substr(at + 1, end - at - 1);
        if (option.size() < 2 || option == "--") continue;
        try {
            parse(option + " x a b");
        } catch (const CommandLineError& error) {
            EXPECT_EQ(std::string(error.what()).find("unknown option"), std::string::npos)
                << option;
        }
        ++checked;
    }
    EXPECT_GT(checked, 30u);
}

TEST(CommandLine, BatchKeepsEveryOtherOptionForItsRuns) {
    const CommandLine batch = parse(
        "--format binary --output-dir out -j 2 --jobs=3 --set naming=unreal -q a.bvh -- -b.json");
    EXPECT_EQ(batch.outputDir, "out");
    EXPECT_EQ(batch.jobs, 3);
    EXPECT_EQ(batch.inputs, (std::vector<std::string>{"a.bvh", "-b.json"}));
    EXPECT_EQ(batch.runOptions,
              (std::vector<std::string>{"--format", "binary", "--set", "naming=unreal", "-q"}));
    EXPECT_EQ(batchOutputPath("out", "takes/walk.v2.bvh"), "out/walk.v2.fbx");
    EXPECT_EQ(batchOutputPath("out/", "run"), "out/run.fbx");
}

TEST(SettingsStore, RunValuesOverStoredValuesOverDefaults) {
    QTemporaryDir folder;
    const QString file = folder.filePath("settings.ini");
    {
        const auto store = std::make_shared<SettingsStore>(file);
        store->registerKeys("FBX Exporter", {{"outputPreset", 1}, {"naming", "default"}},
                            {{"naming", "Naming convention"}});
        EXPECT_TRUE(store->isRegistered("FBX Exporter", "naming"));
        EXPECT_FALSE(store->isRegistered("FBX Exporter", "Naming"));
        StoreSettingsSynchronizer synchronizer(store, "FBX Exporter");
        EXPECT_EQ(synchronizer.value("outputPreset"), QVariant(1));
        EXPECT_EQ(synchronizer.description("naming"), "Naming convention");
        synchronizer.setValue("outputPreset", 0);
        store->setRunValue("naming", "unreal");
        EXPECT_EQ(synchronizer.value("naming"), QVariant("unreal"));
        EXPECT_TRUE(store->ok());
    }
    SettingsStore reopened(file);
    reopened.registerKeys("FBX Exporter", {{"outputPreset", 1}, {"naming", "default"}}, {});
    EXPECT_EQ(reopened.value("FBX Exporter", "outputPreset").toInt(), 0);
    EXPECT_EQ(reopened.value("FBX Exporter", "naming"), QVariant("default"));  // not saved
}
