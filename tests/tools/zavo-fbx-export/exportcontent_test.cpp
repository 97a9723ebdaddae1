// What an export holds stays what it was when the reference lists under tests/data/content were
// recorded: every record and every inflated array, for the demo take and the shared clips, in
// both encodings. Changes to how the writer stores or compresses data must not show here.
// After an intended change of content, run with ZAVO_UPDATE_CONTENT=1 to record new lists.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <fstream>
#include <string>
#include <vector>

#include "fbxfile/fbxbinaryreader.h"
#include "programrun.h"
#include "tests/support/fbxcontentdigest.h"

namespace {

struct ContentCase {
    const char* name;
    QStringList input;
};

std::vector<ContentCase> contentCases() {
    const QDir clips(ZAVO_BVH_DATA_DIR);
    std::vector<ContentCase> cases{
        {"demo", {"--demo", "--demo-frames", "240", "--demo-rate", "120", "--demo-props", "2"}},
        {"demo-nodes", {"--demo", "--preset", "nodes"}}};
    for (const char* clip : {"cmu_02_01_walk", "cmu_02_03_run", "cmu_131_01_walk_alt_names"}) {
        cases.push_back({clip, {clips.filePath(QString(clip) + ".bvh"), "--bvh-unit", "0.056444"}});
    }
    return cases;
}

std::vector<std::string> contentLines(const std::string& path, bool binary, std::string& error) {
    if (!binary) {
        const std::vector<uint8_t> bytes = fbxfile::ReadAllBytes(path);
        return fbxtest::AsciiContentLines(std::string(bytes.begin(), bytes.end()));
    }
    fbxfile::File file;
    if (!fbxfile::ReadBinaryFile(path, file, error)) return {};
    return fbxtest::BinaryContentLines(file);
}

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

TEST(ExportContent, EveryRecordAndArrayMatchesTheReference) {
    const bool update = qEnvironmentVariableIsSet("ZAVO_UPDATE_CONTENT");
    for (const ContentCase& c : contentCases()) {
        for (const char* format : {"binary", "ascii"}) {
            SCOPED_TRACE(std::string(c.name) + " " + format);
            QTemporaryDir folder;
            const ProgramRun run =
                runProgram(folder, QStringList(c.input) << "--deterministic"
                                                        << "--quiet"
                                                        << "--format" << format << "out.fbx");
            ASSERT_EQ(run.exitStatus, 0) << run.standardError.toStdString();
            std::string error;
            const std::vector<std::string> lines = contentLines(
                folder.filePath("out.fbx").toStdString(), std::string(format) == "binary", error);
            ASSERT_TRUE(error.empty()) << error;
            const std::string reference =
                std::string(ZAVO_CONTENT_DATA_DIR) + "/" + c.name + "-" + format + ".txt";
            if (update) {
                std::ofstream out(reference);
                for (const std::string& line : lines) out << line << '\n';
                continue;
            }
            const std::vector<std::string> expected = readLines(reference);
            ASSERT_FALSE(expected.empty()) << "no reference " << reference;
            ASSERT_EQ(lines.size(), expected.size());
            for (size_t i = 0; i < lines.size(); ++i) ASSERT_EQ(lines[i], expected[i]) << i;
        }
    }
}

// The golden files are whole exports of a small take, kept byte for byte so that any change to
// what a file holds shows in review. After an intended change, record new ones with
// ZAVO_UPDATE_GOLDEN=1 ctest --preset default -R GoldenFiles
TEST(GoldenFiles, SmallTakeExportsByteForByte) {
    const bool update = qEnvironmentVariableIsSet("ZAVO_UPDATE_GOLDEN");
    for (const char* format : {"binary", "ascii"}) {
        SCOPED_TRACE(format);
        QTemporaryDir folder;
        const ProgramRun run =
            runProgram(folder, {"--demo", "--demo-frames", "8", "--demo-rate", "60",
                                "--no-demo-fingers", "--demo-props", "1", "--deterministic",
                                "--quiet", "--format", format, "out.fbx"});
        ASSERT_EQ(run.exitStatus, 0) << run.standardError.toStdString();
        const std::string golden =
            std::string(ZAVO_GOLDEN_DATA_DIR) + "/small-take-" + format + ".fbx";
        const std::vector<uint8_t> bytes =
            fbxfile::ReadAllBytes(folder.filePath("out.fbx").toStdString());
        if (update) {
            std::ofstream(golden, std::ios::binary)
                .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
            continue;
        }
        const std::vector<uint8_t> expected = fbxfile::ReadAllBytes(golden);
        ASSERT_FALSE(expected.empty()) << "no golden file " << golden;
        EXPECT_TRUE(bytes == expected) << "the export differs from " << golden;
    }
}

}  // namespace
