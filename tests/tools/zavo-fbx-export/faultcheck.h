#pragma once

#include <QByteArray>
#include <QString>
#include <map>
#include <string>
#include <vector>

#include "programrun.h"

// Checks shared by the fault matrices: every hostile input or fault must end either in a file
// a reader opens or in a clear refusal that leaves the folder as it was.

// What a folder holds, entry by entry: a file's bytes, or the kind of a special entry.
using FolderState = std::map<QString, QByteArray>;
FolderState folderState(const QString& folder);

enum class Outcome { Written, Refused, Either };

struct Expectation {
    Outcome outcome;
    // Texts the refusal's line must hold (file, key, value, reason).
    QStringList messageParts = {};
    // Frames the run exports; a file with fewer keys than this must have said why.
    int framesExported = 0;
    // Text a successful run must have said on standard error.
    QString warning = {};
};

// Why `run` did not end as `expected`, or empty when it did. Written: exit 0 and `output`
// (relative to `folder`) is a file a reader opens, with nodes, keys and only finite numbers,
// and nothing else in the folder changed. Refused: exit 1, one line on standard error holding
// the message parts, and the folder exactly as before.
std::string unclearOutcome(const ProgramRun& run, const QString& folder, const QString& output,
                           const FolderState& before, const Expectation& expected);

// Why the FBX bytes would not pass for an export of `framesExported` frames, or empty.
// `warnings` is what the run said on standard error.
std::string unreadableExport(const QByteArray& bytes, int framesExported, const QString& warnings);

// Counts a matrix's rows per kind of fault and fails the rows that did not end clearly.
class MatrixTally {
public:
    explicit MatrixTally(std::string name) : m_name(std::move(name)) {}

    // One row's result: `problem` is empty when the row ended as expected.
    void row(const std::string& kind, const std::string& label, const std::string& problem);
    // A row this machine cannot set up, with the reason.
    void cannotTry(const std::string& label, const std::string& reason);
    // Prints the counts and the rows not tried.
    void finish() const;

private:
    std::string m_name;
    std::map<std::string, int> m_counts;
    std::vector<std::string> m_untried;
};

// One row of a matrix run by runMatrix. Row i writes caseFolder(root, i) + "/out.fbx".
struct MatrixRow {
    std::string kind, label;
    QStringList arguments;
    Expectation expected;
};

// Makes the folder of row `index` in `root`, holding an earlier export out.fbx; its name.
QString caseFolder(const QTemporaryDir& root, size_t index);

// Runs the rows in `root`, several at a time, each checked against its case folder.
void runMatrix(const std::string& name, const QTemporaryDir& root,
               const std::vector<MatrixRow>& rows, int timeLimitMs = 300000);
