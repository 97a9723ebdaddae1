#include <gtest/gtest.h>

#include <string_view>

#include "fbx/scene/fbxscene.h"
#include "fbxfile/fbxasciireader.h"
#include "tests/fbx/io/fbxio_test_util.h"

namespace {

// Record names of the tree, depth-first, one per line indented by depth.
std::string Outline(const fbxfile::Record& record, int depth = 0) {
    std::string text = std::string(depth, ' ') + record.name + "\n";
    for (const fbxfile::Record& child : record.children) text += Outline(child, depth + 1);
    return text;
}

// The ASCII reader is what the fuzzers trust, so it must accept what the writer writes and
// find there the records a binary file of the same scene holds.
TEST(FbxAsciiReader, ReadsTheWritersAsciiWithTheBinaryRecords) {
    fbxtest::ManagerScope manager;
    FbxScene* scene = fbxtest::BuildAnimatedScene(manager.get(), {.joints = 3, .keys = 40});
    fbxtest::TempDir dir;
    ASSERT_EQ("", fbxtest::Export(manager.get(), scene, dir.File("a.fbx"), {.ascii = true}));
    ASSERT_EQ("", fbxtest::Export(manager.get(), scene, dir.File("b.fbx")));

    fbxfile::File ascii;
    std::string error;
    ASSERT_TRUE(fbxfile::ReadAsciiFile(dir.File("a.fbx"), ascii, error)) << error;
    const fbxfile::File binary = fbxtest::ReadChecked(dir.File("b.fbx"));
    for (const char* section : {"Definitions", "Objects", "Connections", "Takes"})
        EXPECT_EQ(Outline(*binary.Find(section)), Outline(*ascii.Find(section))) << section;
    const fbxfile::Record* keyTimes = ascii.Find("Objects/AnimationCurve/KeyTime");
    ASSERT_NE(nullptr, keyTimes);
    EXPECT_EQ(40u, keyTimes->values.at(0).reals.size());
}

TEST(FbxAsciiReader, RefusesWhatBreaksATextReader) {
    using namespace std::literals;
    const std::string header = "; FBX 7.7.0 project file\n";
    const struct {
        std::string_view text;
        const char* error;
    } cases[] = {
        {"A: \"one\ntwo\"\n", "string not closed on its line"},
        {"A:  {\n\t;Model::a\rb\n}\n", "carriage return in a comment line"},
        {"A:  {\n\t;Model::a\nb, Model::c\n}\n", "expected a record name"},
        {"A: *3 {\n\ta: 1,2\n}\n", "announces 3 values, holds 2"},
        {"A:  {\n\tB: 1\n", "block not closed"},
        {"}\n", "without an open block"},
        {"A: 1 x\n", "expected ',' or the line's end"},
        {"A:  {\n\tB:\n\t\t\"wrapped\"\n}\n", "expected a record name"},
        {"A: \"a\0b\"\n"sv, "NUL byte"},
    };
    for (const auto& bad : cases) {
        fbxfile::File file;
        std::string error;
        const std::string text = header + std::string(bad.text);
        EXPECT_FALSE(fbxfile::ReadAsciiText(text, file, error)) << bad.text;
        EXPECT_NE(std::string::npos, error.find(bad.error)) << bad.text << " -> " << error;
    }
}

TEST(FbxAsciiReader, FollowsValueListsThatWrap) {
    const std::string text =
        "; FBX 7.7.0 project file\n"
        "A: \n        \"long\", \"x\",\n        1\n"
        "B: *2 {\n\ta: 1,\n2\n}\n";
    fbxfile::File file;
    std::string error;
    ASSERT_TRUE(fbxfile::ReadAsciiText(text, file, error)) << error;
    EXPECT_EQ("Slong Sx D1", fbxfile::Texts(file.Find("A")->values));
    EXPECT_EQ("d[1,2]", fbxfile::Texts(file.Find("B")->values));
}
}  // namespace
