// zavo-fbx-export: exports a take, a BVH clip or the demo take to FBX with the exporter
// plug-in, driving it the way the studio application does.
#include <QApplication>
#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <new>

#include "batchexport.h"
#include "commandline.h"
#include "program.h"
#include "runerror.h"
#include "takeerror.h"
#include "zavoversion.h"

namespace {

constexpr int ExitWritten = 0;
constexpr int ExitFailed = 1;
constexpr int ExitUsage = 2;

int failed(int status, const char* message) {
    std::fflush(stdout);
    std::fprintf(stderr, "zavo-fbx-export: %s\n", message);
    return status;
}

bool hasDisplay() {
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") ||
           !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

}  // namespace

int main(int argc, char** argv) {
    // Line by line, also into a pipe or a log, so that the plug-in's progress lines say where
    // a run is while it runs.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    CommandLine command;
    try {
        command = parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const CommandLineError& error) {
        const std::string hint = error.exitStatus() == ExitUsage ? " (see --help)" : "";
        return failed(error.exitStatus(), (error.what() + hint).c_str());
    }
    if (command.mode == CommandLine::Mode::Help) {
        std::fputs(usageText().c_str(), stdout);
        return ExitWritten;
    }
    if (command.mode == CommandLine::Mode::Version) {
        std::printf("zavo-fbx-export %s (Qt %s)\n", ZavoVersion::Text, qVersion());
        return ExitWritten;
    }
    const bool options = command.mode == CommandLine::Mode::Options;
    if (options && !hasDisplay())
        return failed(ExitFailed, "--options needs a display (or QT_QPA_PLATFORM=offscreen)");
    std::unique_ptr<QCoreApplication> app(options ? new QApplication(argc, argv)
                                                  : new QCoreApplication(argc, argv));
    QCoreApplication::setApplicationName(QStringLiteral("zavo-fbx-export"));
    if (!command.outputDir.empty()) return runBatchCommand(command);
    try {
        options ? runOptionsCommand(command) : runExportCommand(command);
    } catch (const RunError& error) {
        return failed(ExitFailed, error.what());
    } catch (const TakeError& error) {
        return failed(ExitFailed, error.what());
    } catch (const std::bad_alloc&) {
        return failed(ExitFailed, "out of memory: the take is too large to export");
    } catch (const std::exception& error) {
        return failed(ExitFailed, (std::string("unexpected failure: ") + error.what()).c_str());
    }
    return ExitWritten;
}
