#include "program.h"

#include <sys/stat.h>
#include <unistd.h>
#include <zavo/abstractexporterfactory.h>
#include <zavo/abstractoptionspage.h>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPluginLoader>

#include <cstdio>
#include <memory>
#include <optional>

#include "bvhimport.h"
#include "exportdriver.h"
#include "fbxcontentcount.h"
#include "jsontakereader.h"
#include "optionsdialog.h"
#include "outputfile.h"
#include "pluginloader.h"
#include "progressbar.h"
#include "runerror.h"
#include "runsummary.h"
#include "settingsstore.h"
#include "signalexit.h"
#include "standardoutput.h"
#include "takehost.h"

namespace {

QString fromStd(const std::string& text) {
    return QString::fromStdString(text);
}

void warn(const QString& text) {
    std::fprintf(stderr, "zavo-fbx-export: warning: %s\n", text.toLocal8Bit().constData());
}

std::shared_ptr<SettingsStore> openStore(const CommandLine& command) {
    const QString file =
        command.settingsFile.empty() ? defaultSettingsFile() : fromStd(command.settingsFile);
    auto store = std::make_shared<SettingsStore>(file);
    // Running on defaults instead of the user's settings would go unnoticed.
    if (!store->ok()) throw RunError(file.toStdString() + ": cannot read the settings (INI) file");
    return store;
}

QString pluginPath(const CommandLine& command) {
    return command.pluginPath.empty() ? defaultPluginPath() : fromStd(command.pluginPath);
}

// Lays the command line's settings over the store, after the plug-in registered its keys, so
// that a misspelt key of --set is caught.
void applySettings(const CommandLine& command, SettingsStore& store, const QString& group) {
    for (const auto& [key, value] : command.settings) {
        if (!store.isRegistered(group, key))
            throw RunError("invalid setting " + key.toStdString() +
                           ": the plug-in has no such setting");
        store.setRunValue(key, value);
    }
}

void reportWarnings(const ExportOutcome& outcome, const TakeHost& host) {
    for (const HostLogEntry& entry : host.logEntries())
        warn(QStringLiteral("plug-in: ") + entry.text);
    if (outcome.framesAbandoned > 0)
        warn(QStringLiteral("%1 of %2 frames not exported, first %3")
                 .arg(outcome.framesAbandoned)
                 .arg(outcome.framesDriven)
                 .arg(outcome.firstAbandonMessage));
    if (!outcome.pluginLastError.isEmpty())
        warn(QStringLiteral("plug-in: ") + outcome.pluginLastError);
}

// "-", or a name of the program's own standard output (/dev/stdout): the FBX data goes there,
// so nothing else may.
bool namesStandardOutput(const QString& output) {
    struct stat named {
    }, standard{};
    return output == QLatin1String("-") ||
           (::stat(QFile::encodeName(output).constData(), &named) == 0 &&
            ::fstat(STDOUT_FILENO, &standard) == 0 && named.st_dev == standard.st_dev &&
            named.st_ino == standard.st_ino && !S_ISREG(named.st_mode));
}

void printSummary(std::FILE* stream, const QString& output, const QString& written,
                  const ExportOutcome& outcome, double seconds) {
    const FileSnapshot file = FileSnapshot::of(written);
    // Reading back a pipe or a device would wait for data that never comes.
    const FbxContentCount count = file.regular ? countFbxContent(written) : FbxContentCount{};
    std::fflush(stdout);
    std::fprintf(stream, "%s\n",
                 formatRunSummary(output, outcome.framesExported, count, file.size, seconds)
                     .toLocal8Bit()
                     .constData());
}

}  // namespace

Take loadTake(const CommandLine& command) {
    if (command.demo) return makeComputedDemoTake(command.demoTake);
    if (QFileInfo(fromStd(command.input))
            .suffix()
            .compare(QLatin1String("bvh"), Qt::CaseInsensitive) == 0) {
        std::vector<std::string> notes;
        Take take =
            importBvhTake(command.input,
                          {command.bvhMetresPerUnit, command.bvhFrameRate, command.verbose}, notes);
        for (const std::string& note : notes)
            if (!command.quiet) std::printf("%s\n", note.c_str());
        return take;
    }
    return readTakeFile(command.input);
}

void runExportCommand(const CommandLine& command) {
    exitOnStoppingSignals(command.output);
    QElapsedTimer timer;
    timer.start();
    const QString output = fromStd(command.output);
    if (const QString problem = outputPathProblem(output); !problem.isEmpty())
        throw RunError(command.output + ": " + problem.toStdString());
    // Writing the export over its own take would lose the recording; a pipe or a device named
    // twice loses nothing.
    if (const FileSnapshot input = FileSnapshot::of(fromStd(command.input));
        !command.demo && input.regular && input.sameFileAs(FileSnapshot::of(output)))
        throw RunError(command.output + ": is the input file");
    // The plug-in prints its progress lines on standard output: silenced by --quiet, and sent
    // to standard error when the FBX data itself goes to standard output.
    const bool toStandardOutput = namesStandardOutput(output);
    std::optional<StandardOutputRedirect> pluginLines;
    if (command.quiet || toStandardOutput) pluginLines.emplace(command.quiet ? -1 : STDERR_FILENO);
    const QString written = toStandardOutput && pluginLines->original() >= 0
                                ? QStringLiteral("/dev/fd/%1").arg(pluginLines->original())
                                : output;
    QPluginLoader loader;
    AbstractExporterFactory* factory = loadExporterFactory(loader, pluginPath(command));
    const Take take = loadTake(command);
    const std::shared_ptr<SettingsStore> store = openStore(command);
    TakeHost host(take, store);
    factory->initializePlugin(host);
    applySettings(command, *store, host.settingsGroup());
    if (command.deterministic) qputenv("ZAVO_FBX_DETERMINISTIC", "1");

    ProgressBar bar(stderr, !command.quiet);
    const ExportOutcome outcome = runExport(*factory, host, written, [&](int done, int total) {
        bar.update(done, total);
        if (done == total) bar.finish();
    });
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    if (command.quiet) return;
    reportWarnings(outcome, host);
    printSummary(toStandardOutput ? stderr : stdout, output, written, outcome, seconds);
}

void runOptionsCommand(const CommandLine& command) {
    QPluginLoader loader;
    AbstractExporterFactory* factory = loadExporterFactory(loader, pluginPath(command));
    const Take noTake;
    const std::shared_ptr<SettingsStore> store = openStore(command);
    TakeHost host(noTake, store);
    factory->initializePlugin(host);
    const std::unique_ptr<AbstractOptionsPage> page(factory->optionsPage());
    if (!page)
        throw RunError(loader.fileName().toStdString() + ": the plug-in has no options page");
    OptionsDialog dialog(*page);
    if (dialog.exec() != QDialog::Accepted) return;
    if (!store->ok())
        throw RunError(store->fileName().toStdString() + ": cannot save the settings");
    if (!command.quiet)
        std::printf("Settings saved to %s\n", store->fileName().toLocal8Bit().constData());
}
