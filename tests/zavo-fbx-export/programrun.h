#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// One run of the program under test.
struct ProgramRun {
    int exitStatus = -1;
    QString standardOutput;
    QString standardError;
};

// Runs zavo-fbx-export with `arguments` in `folder`, with a settings store of its own there.
ProgramRun runProgram(const QTemporaryDir& folder, QStringList arguments);
