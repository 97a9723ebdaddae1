#include <algorithm>
#include <array>
#include <functional>
#include <limits>

#include "fbx/io/fbxio.h"
#include "tests/fbx/io/fbxio_test_util.h"

namespace {

std::string WriteAscii(const std::function<void(FbxIO&)>& body) {
    fbxtest::TempDir dir;
    const std::string path = dir.File("out.fbx");
    FbxIO io;
    EXPECT_TRUE(io.ProjectCreateEmpty(path.c_str(), 7700, false));
    body(io);
    EXPECT_TRUE(io.ProjectClose()) << io.GetStatus().GetErrorString();
    return fbxtest::ReadText(path);
}

TEST(FbxIOAscii, QuotingNumbersAndArrays) {
    const std::string text = WriteAscii([&](FbxIO& io) {
        io.FieldWriteBegin("Block");
        io.FieldWriteBlockBegin();
        io.FieldWriteBegin("P");
        io.FieldWriteS("Model::say \"hi\"\n\r");
        io.FieldWriteS("");
        io.FieldWriteCH('Y');
        io.FieldWriteF(1.0f / 3.0f);
        io.FieldWriteD(-0.999999940395355);
        io.FieldWriteD(3.94064230135882e-08);
        io.FieldWriteD(-0.0);
        io.FieldWriteD(std::numeric_limits<double>::infinity());
        io.FieldWriteLL(46186158000LL);
        io.FieldWriteEnd();
        io.FieldWriteBegin("KeyTime");
        io.FieldWriteArrayLL(3, std::array<long long, 3>{0, 384884650, 769769300}.data());
        io.FieldWriteEnd();
        io.WriteComments("Model::Hips");
        io.WriteComments(std::string_view("a\nb\rc\0d\x1b\te", 10));
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
    });
    EXPECT_EQ(
        "; FBX 7.7.0 project file\n"
        "; ----------------------------------------------------\n"
        "\n"
        "Block:  {\n"
        "\tP: \"Model::say &quot;hi&quot;&lf;&cr;\", \"\",Y,0.3333333,-0.999999940395355,"
        "3.94064230135882e-08,-0,inf,46186158000\n"
        "\tKeyTime: *3 {\n"
        "\t\ta: 0,384884650,769769300\n"
        "\t}\n"
        "\t;Model::Hips\n"
        "\t;a&lf;b&cr;c&#0;d&#27;\te\n"
        "}\n",
        text);
}

// Past column 120 the value list continues on a new line indented by depth * depth + 4
// blanks; the counter starts a field at that same indent. Arrays continue in column 0.
TEST(FbxIOAscii, LongListsWrap) {
    std::vector<double> values(2000, 0.123456789012345);
    const std::string text = WriteAscii([&](FbxIO& io) {
        io.FieldWriteBegin("A");
        io.FieldWriteBlockBegin();
        io.FieldWriteBegin("B");
        io.FieldWriteBlockBegin();
        io.FieldWriteBegin("Values");
        for (int i = 0; i < 30; ++i) io.FieldWriteI(1000);
        io.FieldWriteEnd();
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
        io.FieldWriteBegin("Array");
        io.FieldWriteArrayD(static_cast<int>(values.size()), values.data());
        io.FieldWriteEnd();
    });
    // Column 8 + 4 for each value (the "," between numbers does not count): the 29th passes
    // 120.
    std::string expected = "\t\tValues: 1000";
    for (int i = 1; i < 30; ++i) expected += i == 28 ? ",\n        1000" : ",1000";
    EXPECT_NE(std::string::npos, text.find(expected + "\n")) << text;

    const size_t open = text.find("Array: *2000 {\n\ta: ") + 20;
    const std::string elements = text.substr(open, text.find("\n}", open) - open);
    EXPECT_GT(std::count(elements.begin(), elements.end(), '\n'), 10);
    EXPECT_EQ(std::string::npos, elements.find_first_of(" \t")) << "no indent on new lines";
    EXPECT_EQ(std::string::npos, elements.find("\n,")) << "lines end with the separator";
}

}  // namespace
