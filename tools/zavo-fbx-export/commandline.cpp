#include "commandline.h"

#include <QCommandLineParser>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>
#include <functional>
#include <map>
#include <optional>

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::optional<double> parseNumber(const std::string& text) {
    double value = 0.0;
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || ptr != text.data() + text.size() ||
        !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<int> parseInteger(const std::string& text) {
    int value = 0;
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || ptr != text.data() + text.size()) return std::nullopt;
    return value;
}

[[noreturn]] void usageError(const std::string& message) {
    throw CommandLineError(2, message);
}

// One option as given: its name with its dashes, and its value (empty for a flag).
struct Given {
    std::string name;
    std::string value;
};

// A value that does not fit its option: a malformed command line (exit status 2), or, for an
// export setting, a setting the run cannot use (exit status 1).
[[noreturn]] void refuse(const Given& given, const std::string& expected, bool setting) {
    const std::string message = given.name + " " + given.value + ": expected " + expected;
    throw CommandLineError(setting ? 1 : 2, setting ? "invalid setting " + message : message);
}

int wholeNumber(const Given& given, int from, int to, const std::string& expected,
                bool setting = false) {
    const auto number = parseInteger(given.value);
    if (!number || *number < from || *number > to) refuse(given, expected, setting);
    return *number;
}

double numberAboveZero(const Given& given, const std::string& expected, bool setting = false) {
    const auto number = parseNumber(given.value);
    if (!number || *number <= 0.0) refuse(given, expected, setting);
    return *number;
}

using Apply = std::function<void(CommandLine&, const Given&)>;

// An enumerated setting: stores the value of the choice given, as the options page stores it.
Apply choice(const char* key, std::vector<std::pair<const char*, QVariant>> choices) {
    return [key, choices = std::move(choices)](CommandLine& command, const Given& given) {
        for (const auto& [name, value] : choices)
            if (lowered(given.value) == name) return command.settings.emplace_back(key, value);
        std::string expected = choices.front().first;
        for (size_t i = 1; i < choices.size(); ++i)
            expected += (i + 1 < choices.size() ? ", " : " or ") + std::string(choices[i].first);
        refuse(given, expected, true);
    };
}

// A setting that a flag turns on or off.
Apply setting(const char* key, bool value) {
    return [key, value](CommandLine& command, const Given&) {
        command.settings.emplace_back(key, value);
    };
}

void setSetting(CommandLine& command, const Given& given) {
    const size_t equals = given.value.find('=');
    if (equals == 0 || equals == std::string::npos) usageError("--set needs KEY=VALUE");
    command.settings.emplace_back(QString::fromStdString(given.value.substr(0, equals)),
                                  QString::fromStdString(given.value.substr(equals + 1)));
}

void checkModes(const CommandLine& command) {
    if (command.demo && command.mode == CommandLine::Mode::Options)
        usageError("--demo and --options exclude each other");
}

// What an option does to the command line; batch options are not passed on to the runs.
struct OptionRule {
    const char* names;  // comma-separated, without dashes
    enum Takes { Flag, Value, BatchValue } takes;
    Apply apply;
};

using C = CommandLine;
using G = Given;
using R = OptionRule;

const std::vector<OptionRule>& rules() {
    static const std::vector<OptionRule> all = {
        {"preset", R::Value, choice("outputPreset", {{"skeleton", 1}, {"nodes", 0}})},
        {"naming", R::Value, choice("naming", {{"default", "default"}, {"unreal", "unreal"}})},
        // The options page stores units as these numbers: whole ones as integers.
        {"unit", R::Value,
         choice("outputScale", {{"millimeters", 1000},
                                {"centimeters", 100},
                                {"decimeters", 10},
                                {"meters", 1},
                                {"kilometers", 0.001},
                                {"feet", 3.2808399},
                                {"inches", 39.3700787}})},
        {"scale", R::Value,
         [](C& c, const G& g) {
             c.settings.emplace_back("outputScale", numberAboveZero(g, "a number above 0", true));
         }},
        {"time-increment", R::Value, choice("timeIncrementMode", {{"fixed", 0}, {"dynamic", 1}})},
        {"time-start", R::Value, choice("timeStart", {{"zero", 0}, {"real", 1}})},
        {"calibration-pose", R::Flag, setting("useCalibrationPose", true)},
        {"no-calibration-pose", R::Flag, setting("useCalibrationPose", false)},
        {"frame-skip", R::Value,
         [](C& c, const G& g) {
             c.settings.emplace_back("frameSkip",
                                     wholeNumber(g, 0, INT_MAX, "a whole number from 0", true));
         }},
        {"walk-on-the-spot", R::Flag, setting("walkOnTheSpot", true)},
        {"no-walk-on-the-spot", R::Flag, setting("walkOnTheSpot", false)},
        {"format", R::Value, choice("exportFormat", {{"binary", "binary"}, {"ascii", "ascii"}})},
        {"set", R::Value, setSetting},
        {"settings", R::Value, [](C& c, const G& g) { c.settingsFile = g.value; }},
        {"plugin", R::Value, [](C& c, const G& g) { c.pluginPath = g.value; }},
        {"deterministic", R::Flag, [](C& c, const G&) { c.deterministic = true; }},
        {"demo-frames", R::Value,
         [](C& c, const G& g) {
             c.demoTake.frames = wholeNumber(g, 1, INT_MAX, "a whole number from 1");
         }},
        {"demo-rate", R::Value,
         [](C& c, const G& g) { c.demoTake.frameRate = numberAboveZero(g, "a number above 0"); }},
        {"demo-fingers", R::Flag, [](C& c, const G&) { c.demoTake.fingers = true; }},
        {"no-demo-fingers", R::Flag, [](C& c, const G&) { c.demoTake.fingers = false; }},
        {"demo-props", R::Value,
         [](C& c, const G& g) {
             c.demoTake.props = wholeNumber(g, 0, 4, "a whole number from 0 to 4");
         }},
        {"bvh-unit", R::Value,
         [](C& c, const G& g) {
             c.bvhMetresPerUnit = bvhUnitFromText(g.value);
             if (c.bvhMetresPerUnit <= 0.0)
                 refuse(g, "millimeters, centimeters, meters, inches or metres per unit", false);
         }},
        {"bvh-rate", R::Value,
         [](C& c, const G& g) {
             c.bvhFrameRate = numberAboveZero(g, "frames per second above 0");
         }},
        {"v,verbose", R::Flag, [](C& c, const G&) { c.verbose = true; }},
        {"q,quiet", R::Flag, [](C& c, const G&) { c.quiet = true; }},
        {"demo", R::Flag,
         [](C& c, const G&) {
             c.demo = true;
             checkModes(c);
         }},
        {"options", R::Flag,
         [](C& c, const G&) {
             c.mode = C::Mode::Options;
             checkModes(c);
         }},
        {"h,help", R::Flag, [](C& c, const G&) { c.mode = C::Mode::Help; }},
        {"version", R::Flag, [](C& c, const G&) { c.mode = C::Mode::Version; }},
        {"output-dir", R::BatchValue,
         [](C& c, const G& g) {
             c.outputDir = g.value;
             if (c.outputDir.empty()) usageError("--output-dir needs a folder");
         }},
        {"j,jobs", R::BatchValue,
         [](C& c, const G& g) { c.jobs = wholeNumber(g, 1, INT_MAX, "a whole number from 1"); }},
    };
    return all;
}

// An option name as the parser reports it, with its dashes.
std::string dashed(const QString& name) {
    return (name.size() == 1 ? "-" : "--") + name.toStdString();
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : m_arguments(arguments) {
        m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        for (const OptionRule& rule : rules())
            m_parser.addOption(QCommandLineOption(
                QString::fromLatin1(rule.names).split(u','), QString(),
                rule.takes != OptionRule::Flag ? QStringLiteral("VALUE") : QString()));
    }

    CommandLine parse() {
        const bool parsed = m_parser.parse(qtArguments());
        if (const auto stop = helpOrVersion(); stop != m_arguments.end()) {
            // --help and --version end the command line: a fault before them is still a fault,
            // nothing after them is read.
            const std::vector<std::string> before(m_arguments.begin(), stop);
            Parser(before).readOptions();
            m_result.mode = *stop == "--version" || *stop == "-version" ? CommandLine::Mode::Version
                                                                        : CommandLine::Mode::Help;
            return m_result;
        }
        if (!parsed) usageError(parseProblem());
        applyOptions();
        for (const QString& positional : m_parser.positionalArguments())
            m_positionals.push_back(positional.toStdString());
        checkPositionals();
        return m_result;
    }

private:
    QStringList qtArguments() const {
        QStringList arguments{QStringLiteral("zavo-fbx-export")};
        for (const std::string& argument : m_arguments)
            arguments.append(QString::fromStdString(argument));
        return arguments;
    }

    // The first --help or --version the parser took as an option, or the end.
    std::vector<std::string>::const_iterator helpOrVersion() const {
        const QStringList names = m_parser.optionNames();
        if (!names.contains(u"h") && !names.contains(u"help") && !names.contains(u"version"))
            return m_arguments.end();
        const auto end = std::find(m_arguments.begin(), m_arguments.end(), "--");
        return std::find_if(m_arguments.begin(), end, [](const std::string& argument) {
            return argument == "-h" || argument == "--help" || argument == "-help" ||
                   argument == "--version" || argument == "-version";
        });
    }

    // Options up to the first fault, which throws.
    void readOptions() {
        if (!m_parser.parse(qtArguments())) usageError(parseProblem());
        applyOptions();
    }

    void applyOptions() {
        std::map<const OptionRule*, int> valuesRead;
        for (const QString& name : m_parser.optionNames()) {
            const OptionRule& option = rule(name);
            Given given{dashed(name), {}};
            if (option.takes != OptionRule::Flag)
                given.value = m_parser.values(name).at(valuesRead[&option]++).toStdString();
            option.apply(m_result, given);
            if (option.takes == OptionRule::BatchValue) continue;
            m_result.runOptions.push_back(given.name);
            if (option.takes == OptionRule::Value) m_result.runOptions.push_back(given.value);
        }
    }

    static const OptionRule& rule(const QString& name) {
        return *std::find_if(rules().begin(), rules().end(), [&](const OptionRule& rule) {
            return QString::fromLatin1(rule.names).split(u',').contains(name);
        });
    }

    // The first fault the parser found, in the program's words.
    std::string parseProblem() const {
        if (const QStringList unknown = m_parser.unknownOptionNames(); !unknown.isEmpty())
            return "unknown option " + spelled(unknown.first());
        // Qt names the option in quotes: a missing value, or a value given to a flag.
        const QString name = m_parser.errorText().section(u'\'', 1, 1);
        const QString bare = name.mid(name.startsWith(u"--") ? 2 : 1);
        if (!m_parser.optionNames().contains(bare)) return m_parser.errorText().toStdString();
        return name.toStdString() +
               (rule(bare).takes != OptionRule::Flag ? " needs a value" : " takes no value");
    }

    // An unknown option as the user typed it, one dash or two.
    std::string spelled(const QString& name) const {
        for (const std::string& argument : m_arguments) {
            if (argument == "--") break;
            const std::string typed = argument.substr(0, argument.find('='));
            if (typed == "-" + name.toStdString() || typed == "--" + name.toStdString())
                return typed;
        }
        return dashed(name);
    }

    void checkBatch() {
        if (m_result.mode == CommandLine::Mode::Options) usageError("--options takes no files");
        if (m_result.demo) usageError("--demo and --output-dir exclude each other");
        if (m_positionals.empty()) usageError("--output-dir needs at least one INPUT");
        m_result.inputs = m_positionals;
    }

    void checkPositionals() {
        using Mode = CommandLine::Mode;
        if (!m_result.outputDir.empty()) return checkBatch();
        if (m_result.jobs != 1) usageError("--jobs needs --output-dir");
        const size_t expected = m_result.mode == Mode::Options ? 0 : m_result.demo ? 1 : 2;
        if (m_positionals.size() != expected) {
            if (m_result.mode == Mode::Options) usageError("--options takes no files");
            if (m_result.demo) usageError("--demo needs exactly one OUTPUT.fbx");
            usageError(m_positionals.empty() ? "missing INPUT and OUTPUT.fbx"
                                             : "expected INPUT and OUTPUT.fbx");
        }
        if (expected == 2) m_result.input = m_positionals[0];
        if (expected > 0) m_result.output = m_positionals.back();
    }

    const std::vector<std::string>& m_arguments;
    QCommandLineParser m_parser;
    std::vector<std::string> m_positionals;
    CommandLine m_result;
};

}  // namespace

double bvhUnitFromText(const std::string& text) {
    static const std::map<std::string, double> units = {
        {"millimeters", 0.001}, {"centimeters", 0.01}, {"meters", 1.0}, {"inches", 0.0254}};
    if (const auto unit = units.find(lowered(text)); unit != units.end()) return unit->second;
    const auto number = parseNumber(text);
    return number && *number > 0.0 ? *number : 0.0;
}

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    return Parser(arguments).parse();
}

std::string usageText() {
    return R"(Usage:
  zavo-fbx-export [OPTIONS] INPUT OUTPUT.fbx
  zavo-fbx-export [OPTIONS] --demo OUTPUT.fbx
  zavo-fbx-export [OPTIONS] --output-dir DIR INPUT...
  zavo-fbx-export --options [--settings FILE]
  zavo-fbx-export --help | --version

Exports a take to an FBX file with the FBX exporter plug-in, driving it as the studio does.
INPUT is a take file (.json) or a BVH file (.bvh); --demo exports the built-in demo take.
With --output-dir, every INPUT becomes DIR/NAME.fbx (NAME: the input's name without its
suffix); a failed input does not stop the others.

Export settings (they override the settings store for this run):
  --preset skeleton|nodes          output preset
  --naming default|unreal          joint names of the Skeleton preset
  --unit millimeters|centimeters|decimeters|meters|kilometers|feet|inches
  --scale X                        output scale (file units per metre)
  --time-increment fixed|dynamic   key timing
  --time-start zero|real           keys from 0 or from the recorded time of day
  --calibration-pose, --no-calibration-pose
                                   first frame replaced by the T-pose or not
  --frame-skip N                   frames skipped between exported frames
  --walk-on-the-spot, --no-walk-on-the-spot
  --format binary|ascii            FBX encoding
  --set KEY=VALUE                  any settings key, the value as text (repeatable)

Other options:
  --settings FILE       the settings store, an INI file (default: in the user's
                        configuration folder); --options edits it
  --plugin PATH         the plug-in library (default: installed beside the program)
  --deterministic       byte-identical files for the same take and settings
  --demo-frames N       demo take length in frames (default 600)
  --demo-rate HZ        demo take frame rate (default 60)
  --demo-fingers, --no-demo-fingers
                        demo take with or without finger data (default with)
  --demo-props K        props in the demo take, 0 to 4 (default 1)
  --bvh-unit UNIT       length unit of a BVH file: millimeters, centimeters, meters,
                        inches or metres per file unit (default centimeters)
  --output-dir DIR      convert every INPUT into DIR (an existing folder)
  -j, --jobs N          with --output-dir: convert N inputs at once (default 1)
  --bvh-rate HZ         frame rate of a BVH file (default: from its Frame Time, a
                        standard rate when the printed value is that rate rounded)
  -v, --verbose         tell how BVH joints were matched to the body
  -q, --quiet           no progress and no summary
  --options             edit the plug-in's settings in its options page

Exit status: 0 file written (every file, with --output-dir), 1 export failed (any), 2 usage
error, 128 + N ended by signal N (SIGINT, SIGTERM, SIGHUP; the earlier file is kept).
)";
}
