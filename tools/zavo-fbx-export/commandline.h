#pragma once

#include <QString>
#include <QVariant>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "demotake.h"

// What the user asked for on the command line.
struct CommandLine {
    enum class Mode { Export, Options, Help, Version };

    Mode mode = Mode::Export;
    bool demo = false;
    std::string input;   // take or BVH file; empty with --demo
    std::string output;  // the FBX file
    // Batch conversion (--output-dir): every input becomes DIR/NAME.fbx, --jobs of them at once.
    std::string outputDir;  // empty: one INPUT and one OUTPUT
    std::vector<std::string> inputs;
    int jobs = 1;
    // The options as given, without the batch options and the files: what one run of the
    // batch is started with.
    std::vector<std::string> runOptions;
    // Settings keys and values in the order given (a later value of a key wins), typed as the
    // plug-in's options page stores them.
    std::vector<std::pair<QString, QVariant>> settings;
    std::string settingsFile;  // empty: the user's configuration folder
    std::string pluginPath;    // empty: beside the program, else the build tree's
    bool deterministic = false;
    bool quiet = false;
    DemoTakeOptions demoTake;
    double bvhMetresPerUnit = 0.01;
    double bvhFrameRate = 0.0;  // 0: from the BVH file's Frame Time
    bool verbose = false;
};

// A command line that cannot be run: exit status 2 for a malformed command line, 1 for a
// well-formed option whose value is no valid setting.
class CommandLineError : public std::runtime_error {
public:
    CommandLineError(int exitStatus, const std::string& message)
        : std::runtime_error(message), m_exitStatus(exitStatus) {}
    int exitStatus() const { return m_exitStatus; }

private:
    int m_exitStatus;
};

// Parses the arguments after the program name; throws CommandLineError.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);
// The --help text.
std::string usageText();
// Metres per BVH file unit for a unit name or a plain number; 0 when `text` is neither.
double bvhUnitFromText(const std::string& text);
