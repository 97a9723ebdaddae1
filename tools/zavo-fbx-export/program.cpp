#include "program.h"

#include <zavo/abstractexporterfactory.h>
#include <zavo/abstractoptionspage.h>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QPluginLoader>
#include <csignal>
#include <cstdio>
#include <memory>

#include "bvhtake.h"
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

void cancelOnSignal(int) {
    requestCancel();
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

}  // namespace

Take loadTake(const CommandLine& command) {
    if (command.demo) return makeDemoTake(command.demoTake);
    if (QFileInfo(fromStd(command.input))
            .suffix()
            .compare(QLatin1String("bvh"), Qt::CaseInsensitive) == 0)
        return takeFromBvh(readBvhFile(command.input), command.bvhMetresPerUnit);
    return readTakeFile(command.input);
}

void runExportCommand(const CommandLine& command) {
    QElapsedTimer timer;
    timer.start();
    const QString output = fromStd(command.output);
    if (const QString problem = outputPathProblem(output); !problem.isEmpty())
        throw RunError(command.output + ": " + problem.toStdString());
    // Writing the export over its own take would lose the recording.
    if (const FileSnapshot input = FileSnapshot::of(fromStd(command.input));
        !command.demo && input.exists && input.sameFileAs(FileSnapshot::of(output)))
        throw RunError(command.output + ": is the input file");
    QPluginLoader loader;
    AbstractExporterFactory* factory = loadExporterFactory(loader, pluginPath(command));
    const Take take = loadTake(command);
    const std::shared_ptr<SettingsStore> store = openStore(command);
    TakeHost host(take, store);
    factory->initializePlugin(host);
    applySettings(command, *store, host.settingsGroup());
    if (command.deterministic) qputenv("ZAVO_FBX_DETERMINISTIC", "1");

    ProgressBar bar(stderr, !command.quiet);
    std::signal(SIGINT, cancelOnSignal);
    std::signal(SIGTERM, cancelOnSignal);
    const ExportOutcome outcome = runExport(*factory, host, output, [&](int done, int total) {
        bar.update(done, total);
        if (done == total) bar.finish();
    });
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    reportWarnings(outcome, host);
    if (command.quiet) return;
    const FbxContentCount count = countFbxContent(output);
    std::fflush(stdout);
    std::printf("%s\n", formatRunSummary(output, count, FileSnapshot::of(output).size, seconds)
                            .toLocal8Bit()
                            .constData());
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
