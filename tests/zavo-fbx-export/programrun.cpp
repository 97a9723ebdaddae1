#include "programrun.h"

#include <QProcess>

ProgramRun runProgram(const QTemporaryDir& folder, QStringList arguments) {
    QProcess process;
    process.setWorkingDirectory(folder.path());
    arguments.prepend(folder.filePath("settings.ini"));
    arguments.prepend("--settings");
    process.start(ZAVO_FBX_EXPORT_PROGRAM, arguments);
    ProgramRun run;
    if (!process.waitForFinished(300000)) return run;
    run.exitStatus = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.standardOutput = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.standardError = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}
