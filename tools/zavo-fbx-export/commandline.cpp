#include "commandline.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <optional>

#include <QCommandLineParser>

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

[[noreturn]] void invalidSetting(const std::string& option, const std::string& value,
                                 const std::string& expected) {
    throw CommandLineError(1, "invalid setting " + option + " " + value + ": expected " + expected);
}

// The stored value for each choice of an enumerated setting option.
struct Choice {
    const char* name;
    QVariant value;
};

struct ChoiceOption {
    const char* option;
    const char* key;
    std::vector<Choice> choices;
    const char* expected;
};

const std::vector<ChoiceOption>& choiceOptions() {
    // The options page stores units as these numbers: whole ones as integers.
    static const std::vector<ChoiceOption> options = {
        {"--preset", "outputPreset", {{"skeleton", 1}, {"nodes", 0}}, "skeleton or nodes"},
        {"--naming", "naming", {{"default", "default"}, {"unreal", "unreal"}}, "default or unreal"},
        {"--unit",
         "outputScale",
         {{"millimeters", 1000},
          {"centimeters", 100},
          {"decimeters", 10},
          {"meters", 1},
          {"kilometers", 0.001},
          {"feet", 3.2808399},
          {"inches", 39.3700787}},
         "millimeters, centimeters, decimeters, meters, kilometers, feet or inches"},
        {"--time-increment",
         "timeIncrementMode",
         {{"fixed", 0}, {"dynamic", 1}},
         "fixed or dynamic"},
        {"--time-start", "timeStart", {{"zero", 0}, {"real", 1}}, "zero or real"},
        {"--format", "exportFormat", {{"binary", "binary"}, {"ascii", "ascii"}}, "binary or ascii"},
    };
    return options;
}

const std::map<std::string, std::pair<const char*, bool>>& flagOptions() {
    static const std::map<std::string, std::pair<const char*, bool>> flags = {
        {"--calibration-pose", {"useCalibrationPose", true}},
        {"--no-calibration-pose", {"useCalibrationPose", false}},
        {"--walk-on-the-spot", {"walkOnTheSpot", true}},
        {"--no-walk-on-the-spot", {"walkOnTheSpot", false}},
    };
    return flags;
}

// Every option the program knows; the texts of --help are usageText()'s, so the options carry
// names only. A value name marks an option that takes a value.
QList<QCommandLineOption> knownOptions() {
    QList<QCommandLineOption> options;
    for (const char* flag :
         {"calibration-pose", "no-calibration-pose", "walk-on-the-spot", "no-walk-on-the-spot",
          "version", "options", "demo", "deterministic", "demo-fingers", "no-demo-fingers"})
        options.append(QCommandLineOption(QString::fromLatin1(flag)));
    for (const char* flag : {"h,help", "q,quiet", "v,verbose"})
        options.append(QCommandLineOption(QString::fromLatin1(flag).split(u',')));
    for (const char* valued :
         {"preset", "naming", "unit", "scale", "time-increment", "time-start", "frame-skip",
          "format", "set", "settings", "plugin", "demo-frames", "demo-rate", "demo-props",
          "bvh-unit", "bvh-rate", "output-dir", "j,jobs"})
        options.append(QCommandLineOption(QString::fromLatin1(valued).split(u','), QString(),
                                          QStringLiteral("VALUE")));
    return options;
}

// An option name as the parser reports it, with its dashes.
std::string dashed(const QString& name) {
    return (name.size() == 1 ? "-" : "--") + name.toStdString();
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : m_arguments(arguments) {
        m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        m_parser.addOptions(knownOptions());
    }

    CommandLine parse() {
        QStringList arguments{QStringLiteral("zavo-fbx-export")};
        for (const std::string& argument : m_arguments)
            arguments.append(QString::fromStdString(argument));
        const bool parsed = m_parser.parse(arguments);
        // --help and --version answer whatever else the command line holds.
        for (const QString& name : m_parser.optionNames()) {
            if (name == u"help" || name == u"h") m_result.mode = CommandLine::Mode::Help;
            if (name == u"version") m_result.mode = CommandLine::Mode::Version;
            if (m_result.mode != CommandLine::Mode::Export) return m_result;
        }
        if (!parsed) usageError(parseProblem());
        for (const QString& name : m_parser.optionNames()) {
            m_option = name == u"j" ? QStringLiteral("jobs") : name;
            m_name = dashed(name);
            m_valueTaken = false;
            if (batchOption()) continue;
            option();
            m_result.runOptions.push_back(m_name);
            if (m_valueTaken) m_result.runOptions.push_back(m_value);
        }
        for (const QString& positional : m_parser.positionalArguments())
            m_positionals.push_back(positional.toStdString());
        checkPositionals();
        return m_result;
    }

private:
    // The first fault the parser found, in the program's words.
    std::string parseProblem() const {
        if (const QStringList unknown = m_parser.unknownOptionNames(); !unknown.isEmpty())
            return "unknown option " + spelled(unknown.first());
        // Qt names the option in quotes: a missing value, or a value given to a flag.
        const QString name = m_parser.errorText().section(u'\'', 1, 1);
        for (const QCommandLineOption& option : knownOptions())
            if (option.names().contains(name.mid(name.startsWith(u"--") ? 2 : 1)))
                return name.toStdString() +
                       (option.valueName().isEmpty() ? " takes no value" : " needs a value");
        return m_parser.errorText().toStdString();
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

    // The option's next value; every option is read once per time it was given.
    std::string value() {
        m_valueTaken = true;
        m_value = m_parser.values(m_option).at(m_taken[m_option]++).toStdString();
        return m_value;
    }

    bool batchOption() {
        if (m_name == "--output-dir") {
            m_result.outputDir = value();
            if (m_result.outputDir.empty()) usageError("--output-dir needs a folder");
        } else if (m_name == "--jobs" || m_name == "-j") {
            const std::string text = value();
            const auto jobs = parseInteger(text);
            if (!jobs || *jobs < 1)
                usageError(m_name + " " + text + ": expected a whole number from 1");
            m_result.jobs = *jobs;
        } else {
            return false;
        }
        return true;
    }

    void option() {
        if (!settingOption() && !modeOption()) otherOption();
    }

    bool settingOption() {
        for (const ChoiceOption& choice : choiceOptions()) {
            if (m_name != choice.option) continue;
            const std::string text = value();
            for (const Choice& c : choice.choices)
                if (lowered(text) == c.name) {
                    m_result.settings.emplace_back(choice.key, c.value);
                    return true;
                }
            invalidSetting(m_name, text, choice.expected);
        }
        if (const auto flag = flagOptions().find(m_name); flag != flagOptions().end()) {
            m_result.settings.emplace_back(flag->second.first, flag->second.second);
            return true;
        }
        if (m_name == "--scale") {
            const std::string text = value();
            const auto scale = parseNumber(text);
            if (!scale || *scale <= 0.0) invalidSetting(m_name, text, "a number above 0");
            m_result.settings.emplace_back("outputScale", *scale);
        } else if (m_name == "--frame-skip") {
            const std::string text = value();
            const auto skip = parseInteger(text);
            if (!skip || *skip < 0) invalidSetting(m_name, text, "a whole number from 0");
            m_result.settings.emplace_back("frameSkip", *skip);
        } else if (m_name == "--set") {
            const std::string text = value();
            const size_t equals = text.find('=');
            if (equals == 0 || equals == std::string::npos) usageError("--set needs KEY=VALUE");
            m_result.settings.emplace_back(QString::fromStdString(text.substr(0, equals)),
                                           QString::fromStdString(text.substr(equals + 1)));
        } else {
            return false;
        }
        return true;
    }

    bool modeOption() {
        if (m_name == "--options")
            m_result.mode = CommandLine::Mode::Options;
        else if (m_name == "--demo")
            m_result.demo = true;
        else
            return false;
        if (m_result.demo && m_result.mode == CommandLine::Mode::Options)
            usageError("--demo and --options exclude each other");
        return true;
    }

    void otherOption() {
        if (m_name == "--settings") {
            m_result.settingsFile = value();
        } else if (m_name == "--plugin") {
            m_result.pluginPath = value();
        } else if (m_name == "--deterministic" || m_name == "--quiet" || m_name == "-q") {
            (m_name == "--deterministic" ? m_result.deterministic : m_result.quiet) = true;
        } else if (m_name == "--demo-frames" || m_name == "--demo-props") {
            const std::string text = value();
            const auto number = parseInteger(text);
            const bool frames = m_name == "--demo-frames";
            if (!number || *number < (frames ? 1 : 0) || (!frames && *number > 4))
                usageError(m_name + " " + text + ": expected " +
                           (frames ? "a whole number from 1" : "a whole number from 0 to 4"));
            (frames ? m_result.demoTake.frames : m_result.demoTake.props) = *number;
        } else if (m_name == "--demo-rate") {
            const std::string text = value();
            const auto rate = parseNumber(text);
            if (!rate || *rate <= 0.0)
                usageError("--demo-rate " + text + ": expected a number above 0");
            m_result.demoTake.frameRate = *rate;
        } else if (m_name == "--demo-fingers" || m_name == "--no-demo-fingers") {
            m_result.demoTake.fingers = m_name == "--demo-fingers";
        } else if (m_name == "--bvh-rate") {
            const std::string text = value();
            const auto rate = parseNumber(text);
            if (!rate || *rate <= 0.0)
                usageError("--bvh-rate " + text + ": expected frames per second above 0");
            m_result.bvhFrameRate = *rate;
        } else if (m_name == "--verbose" || m_name == "-v") {
            m_result.verbose = true;
        } else if (m_name == "--bvh-unit") {
            const std::string text = value();
            m_result.bvhMetresPerUnit = bvhUnitFromText(text);
            if (m_result.bvhMetresPerUnit <= 0.0)
                usageError(
                    "--bvh-unit " + text +
                    ": expected millimeters, centimeters, meters, inches or metres per unit");
        }
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
    QString m_option;                // the option at hand, by its long name
    std::string m_name;              // and as given, with its dashes
    std::map<QString, int> m_taken;  // values read so far, per option
    bool m_valueTaken = false;
    std::string m_value;
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
