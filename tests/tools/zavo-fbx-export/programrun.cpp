#include "programrun.h"

#include <QFile>
#include <QProcess>
#include <memory>

namespace {

void startProgram(QProcess& process, const QTemporaryDir& folder, QStringList arguments,
                  const RunOptions& options) {
    process.setWorkingDirectory(folder.path());
    arguments.prepend(folder.filePath("settings.ini"));
    arguments.prepend("--settings");
    if (options.childSetup) process.setChildProcessModifier(options.childSetup);
    if (options.wrapper.isEmpty()) {
        process.start(ZAVO_FBX_EXPORT_PROGRAM, arguments);
        return;
    }
    QStringList wrapped = options.wrapper.mid(1);
    wrapped << ZAVO_FBX_EXPORT_PROGRAM << arguments;
    process.start(options.wrapper.first(), wrapped);
}

ProgramRun finishProgram(QProcess& process, int timeLimitMs, QByteArray outputSoFar = {}) {
    ProgramRun run;
    if (!process.waitForFinished(timeLimitMs)) {
        process.kill();
        process.waitForFinished();
    } else if (process.exitStatus() == QProcess::NormalExit) {
        run.exitStatus = process.exitCode();
    }
    run.outputBytes = outputSoFar + process.readAllStandardOutput();
    run.standardOutput = QString::fromLocal8Bit(run.outputBytes);
    run.standardError = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

}  // namespace

ProgramRun runProgram(const QTemporaryDir& folder, QStringList arguments,
                      const RunOptions& options) {
    QProcess process;
    startProgram(process, folder, std::move(arguments), options);
    QByteArray output;
    if (options.whileRunning && process.waitForStarted()) {
        while (!output.contains(options.waitForOutput) &&
               process.waitForReadyRead(options.timeLimitMs))
            output += process.readAllStandardOutput();
        // A program that already ended has no process id left to pass (0 would name our own
        // process group).
        if (process.processId() > 0) options.whileRunning(process.processId());
    }
    return finishProgram(process, options.timeLimitMs, output);
}

std::vector<ProgramRun> runPrograms(const QTemporaryDir& folder,
                                    const std::vector<QStringList>& argumentLists,
                                    int timeLimitMs) {
    // Most of a short run is spent waiting on start-up, so a few at once finish sooner.
    constexpr size_t atOnce = 6;
    std::vector<ProgramRun> runs;
    for (size_t first = 0; first < argumentLists.size(); first += atOnce) {
        std::vector<std::unique_ptr<QProcess>> processes;
        for (size_t i = first; i < std::min(first + atOnce, argumentLists.size()); ++i) {
            processes.push_back(std::make_unique<QProcess>());
            startProgram(*processes.back(), folder, argumentLists[i], {});
        }
        for (const auto& process : processes) runs.push_back(finishProgram(*process, timeLimitMs));
    }
    return runs;
}

QByteArray fileBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(bytes);
}
