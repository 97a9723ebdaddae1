#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <vector>

// One run of the program under test.
struct ProgramRun {
    int exitStatus = -1;  // -1: killed by a signal or still running at the time limit
    QString standardOutput;
    QString standardError;
    QByteArray outputBytes;  // standard output as written, for a file sent there
};

// How to start a run beyond its arguments.
struct RunOptions {
    // A program and its arguments that start the program under test (e.g. in a mount
    // namespace); empty: start it directly.
    QStringList wrapper;
    // Runs in the child before the program starts (e.g. to drop privileges).
    std::function<void()> childSetup;
    // Called with the process id once the program has started and, when `waitForOutput` is
    // set, has written that text on standard output (e.g. to send it a signal).
    std::function<void(qint64)> whileRunning;
    QByteArray waitForOutput;
    int timeLimitMs = 300000;
};

// Runs zavo-fbx-export with `arguments` in `folder`, with a settings store of its own there.
ProgramRun runProgram(const QTemporaryDir& folder, QStringList arguments,
                      const RunOptions& options = {});

// Runs the program once per argument list, several at a time, and returns the runs in order.
// A run still going at `timeLimitMs` is killed and reads as killed.
std::vector<ProgramRun> runPrograms(const QTemporaryDir& folder,
                                    const std::vector<QStringList>& argumentLists,
                                    int timeLimitMs = 300000);

// Bytes of a file; empty when it cannot be read.
QByteArray fileBytes(const QString& path);
void writeFile(const QString& path, const QByteArray& bytes);
