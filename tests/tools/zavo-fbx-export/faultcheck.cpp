#include "faultcheck.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <cmath>
#include <iostream>

#include "fbxfile/fbxbinaryreader.h"
#include "tests/support/fbxassimpscene.h"

namespace {

bool allFinite(const fbxfile::Record& record) {
    for (const fbxfile::Value& value : record.values)
        for (double real : value.reals)
            if (!std::isfinite(real)) return false;
    for (const fbxfile::Record& child : record.children)
        if (!allFinite(child)) return false;
    return true;
}

std::string binaryProblem(const QByteArray& bytes, int framesExported, const QString& warnings) {
    fbxfile::File file;
    std::string error;
    const std::vector<uint8_t> data(bytes.begin(), bytes.end());
    if (!fbxfile::ReadBinaryBytes(data, file, error, {.compressMinimumSize = std::nullopt}))
        return "the structural reader refuses the file: " + error;
    if (!allFinite(file.root)) return "the file holds a non-finite number";
    const fbxfile::Record* objects = file.Find("Objects");
    if (!objects || objects->Children("Model").empty()) return "the file holds no node";
    size_t keys = 0;
    for (const fbxfile::Record* curve : objects->Children("AnimationCurve"))
        if (const fbxfile::Record* times = curve->Child("KeyTime"))
            keys = std::max(keys, times->values.at(0).ints.size());
    if (keys == 0) return "the file holds no key";
    if (framesExported > 0 && keys < static_cast<size_t>(framesExported) &&
        !warnings.contains("share a key time") && !warnings.contains("no usable pose"))
        return std::to_string(keys) + " keys for " + std::to_string(framesExported) +
               " frames, and no word of the lost frames";
    return {};
}

std::string asciiProblem(const QByteArray& bytes) {
    QTemporaryFile file(QDir::tempPath() + "/faultcheck-XXXXXX.fbx");
    if (!file.open()) return "cannot keep a copy to read";
    file.write(bytes);
    file.flush();
    fbxtest::AssimpScene scene;
    std::string error;
    if (!scene.Load(file.fileName().toStdString(), error))
        return "assimp refuses the file: " + error;
    if (scene.NodeNames().empty()) return "the file holds no node";
    for (const char* word : {"nan", "inf", "NaN", "INF"})
        if (bytes.contains(QByteArray(",") + word) || bytes.contains(QByteArray(" ") + word))
            return std::string("the file holds ") + word;
    return {};
}

std::string describe(const ProgramRun& run) {
    return " (exit " + std::to_string(run.exitStatus) + ", standard error \"" +
           run.standardError.trimmed().left(300).toStdString() + "\")";
}

std::string folderChange(const FolderState& before, const FolderState& after,
                         const QString& output) {
    for (const auto& [name, bytes] : after) {
        if (name == output) continue;
        const auto was = before.find(name);
        if (was == before.end()) return "left " + name.toStdString() + " beside the output";
        if (was->second != bytes) return "changed " + name.toStdString();
    }
    for (const auto& [name, bytes] : before)
        if (name != output && !after.count(name)) return "removed " + name.toStdString();
    return {};
}

}  // namespace

FolderState folderState(const QString& folder) {
    FolderState state;
    const QDir dir(folder);
    for (const QFileInfo& entry :
         dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        if (entry.isSymLink())
            state[entry.fileName()] = "link to " + entry.symLinkTarget().toUtf8();
        else if (entry.isDir())
            state[entry.fileName()] = "folder";
        else if (!entry.isFile())
            state[entry.fileName()] = "special";
        else
            state[entry.fileName()] = fileBytes(entry.filePath());
    }
    return state;
}

std::string unreadableExport(const QByteArray& bytes, int framesExported, const QString& warnings) {
    if (bytes.startsWith("Kaydara FBX Binary"))
        return binaryProblem(bytes, framesExported, warnings);
    return asciiProblem(bytes);
}

std::string unclearOutcome(const ProgramRun& run, const QString& folder, const QString& output,
                           const FolderState& before, const Expectation& expected) {
    const FolderState after = folderState(folder);
    if (run.exitStatus == 0 && expected.outcome != Outcome::Refused) {
        const QFileInfo file(QDir(folder).filePath(output));
        if (!file.isFile() || file.isSymLink()) return "exit 0 without a file" + describe(run);
        if (std::string problem = unreadableExport(fileBytes(file.filePath()),
                                                   expected.framesExported, run.standardError);
            !problem.empty())
            return "exit 0, but " + problem + describe(run);
        if (!run.standardError.contains(expected.warning))
            return "exit 0 without the warning \"" + expected.warning.toStdString() + "\"" +
                   describe(run);
        if (std::string change = folderChange(before, after, output); !change.empty())
            return "exit 0, but the run " + change;
        return {};
    }
    if (run.exitStatus == 1 && expected.outcome != Outcome::Written) {
        const QString& error = run.standardError;
        if (!error.startsWith("zavo-fbx-export: ") || !error.endsWith('\n') ||
            error.count('\n') != 1)
            return "refused without one line on standard error" + describe(run);
        for (const QString& part : expected.messageParts)
            if (!error.contains(part))
                return "the refusal does not say \"" + part.toStdString() + "\"" + describe(run);
        if (after != before) return "refused, but the run " + folderChange(before, after, {});
        return {};
    }
    return std::string(expected.outcome == Outcome::Written   ? "expected a file"
                       : expected.outcome == Outcome::Refused ? "expected a clear refusal"
                                                              : "no clear outcome") +
           describe(run);
}

void MatrixTally::row(const std::string& kind, const std::string& label,
                      const std::string& problem) {
    ++m_counts[kind];
    if (!problem.empty()) ADD_FAILURE() << label << ": " << problem;
}

void MatrixTally::cannotTry(const std::string& label, const std::string& reason) {
    m_untried.push_back(label + ": " + reason);
}

void MatrixTally::finish() const {
    int total = 0;
    std::cout << "[ matrix   ] " << m_name << ":";
    for (const auto& [kind, count] : m_counts) {
        std::cout << " " << count << " " << kind << ";";
        total += count;
    }
    std::cout << " " << total << " in all\n";
    for (const std::string& line : m_untried)
        std::cout << "[ matrix   ] not tried: " << line << "\n";
}

QString caseFolder(const QTemporaryDir& root, size_t index) {
    const QString name = QString("case%1").arg(index);
    QDir(root.path()).mkdir(name);
    writeFile(root.filePath(name + "/out.fbx"), "an earlier export");
    return name;
}

void runMatrix(const std::string& name, const QTemporaryDir& root,
               const std::vector<MatrixRow>& rows, int timeLimitMs) {
    std::vector<QString> folders;
    std::vector<FolderState> before;
    std::vector<QStringList> argumentLists;
    for (size_t i = 0; i < rows.size(); ++i) {
        folders.push_back(root.filePath(caseFolder(root, i)));
        before.push_back(folderState(folders.back()));
        argumentLists.push_back(rows[i].arguments);
    }
    const std::vector<ProgramRun> runs = runPrograms(root, argumentLists, timeLimitMs);
    MatrixTally tally(name);
    for (size_t i = 0; i < rows.size(); ++i)
        tally.row(rows[i].kind, rows[i].label,
                  unclearOutcome(runs[i], folders[i], "out.fbx", before[i], rows[i].expected));
    tally.finish();
}
