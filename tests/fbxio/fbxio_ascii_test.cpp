#include <algorithm>
#include <functional>
#include <limits>

#include "fbx/io/fbxio.h"
#include "tests/fbxio/fbxio_test_util.h"

namespace {

std::string WriteAscii(const std::function<void(FbxIO&)>& body, int version = 7700) {
    fbxtest::TempDir dir;
    const std::string path = dir.File("out.fbx");
    FbxIO io;
    EXPECT_TRUE(io.ProjectCreateEmpty(path.c_str(), version, false));
    body(io);
    EXPECT_TRUE(io.ProjectClose()) << io.GetStatus().GetErrorString();
    return fbxtest::ReadText(path);
}

TEST(FbxIOAscii, DocumentLayoutQuotingNumbersAndArrays) {
    const long long times[] = {0, 384884650, 769769300};
    const std::string text = WriteAscii([&](FbxIO& io) {
        io.FieldWriteBegin("FBXHeaderExtension");
        io.FieldWriteBlockBegin();
        io.FieldWriteI("FBXHeaderVersion", 1004);
        io.FieldWriteBegin("P");
        io.FieldWriteS("Lcl Translation");
        io.FieldWriteS("Lcl Translation");
        io.FieldWriteS("");
        io.FieldWriteS("A+");
        const double value[] = {0, 96.25, 1.5};
        io.FieldWrite3D(value);
        io.FieldWriteEnd();
        io.FieldWriteCH("Shading", 'Y');
        io.FieldWriteS("Name", "Model::say \"hi\"\n\r");
        io.FieldWriteBegin("KeyTime");
        io.FieldWriteArrayLL(3, times);
        io.FieldWriteEnd();
        io.FieldWriteBegin("Numbers");
        io.FieldWriteF(1.0f / 3.0f);
        io.FieldWriteD(-0.999999940395355);
        io.FieldWriteD(3.94064230135882e-08);
        io.FieldWriteD(-0.0);
        io.FieldWriteD(std::numeric_limits<double>::infinity());
        io.FieldWriteB(true);
        io.FieldWriteLL(46186158000LL);
        io.FieldWriteT(FbxTime(FBX_TC_SECOND));
        io.FieldWriteEnd();
        io.FieldWriteBegin("Empty");
        io.FieldWriteBlockBegin();
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
        io.WriteComments("");
        io.WriteComments("Model::Hips, Model::RootNode");
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
        io.WriteComments("");
        io.WriteComments(" Object definitions");
        io.FieldWriteR("Raw", "abcd", 4);
    });
    EXPECT_EQ(
        "; FBX 7.7.0 project file\n"
        "; ----------------------------------------------------\n"
        "\n"
        "FBXHeaderExtension:  {\n"
        "\tFBXHeaderVersion: 1004\n"
        "\tP: \"Lcl Translation\", \"Lcl Translation\", \"\", \"A+\",0,96.25,1.5\n"
        "\tShading: Y\n"
        "\tName: \"Model::say &quot;hi&quot;&lf;&cr;\"\n"
        "\tKeyTime: *3 {\n"
        "\t\ta: 0,384884650,769769300\n"
        "\t}\n"
        "\tNumbers: 0.3333333,-0.999999940395355,3.94064230135882e-08,-0,inf,1,46186158000,"
        "46186158000\n"
        "\tEmpty:  {\n"
        "\t}\n"
        "\t\n"
        "\t;Model::Hips, Model::RootNode\n"
        "}\n"
        "\n"
        "; Object definitions\n"
        "Raw: ,\n"
        " \"YWJjZA==\"\n",
        text);
    for (int version : {7400, 7500}) {
        const std::string banner = "; FBX 7." + std::to_string(version / 100 % 10) + ".0 project";
        EXPECT_EQ(0u, WriteAscii([](FbxIO&) {}, version).find(banner));
    }
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
    // Column 8 + 4 for the first value, + 5 for each further one: the 23rd passes 120.
    std::string expected = "\t\tValues: 1000";
    for (int i = 1; i < 30; ++i) expected += i == 22 ? ",\n        1000" : ",1000";
    EXPECT_NE(std::string::npos, text.find(expected + "\n")) << text;

    const size_t open = text.find("Array: *2000 {\n\ta: ") + 20;
    std::string elements = text.substr(open, text.find("\n}", open) - open);
    EXPECT_GT(std::count(elements.begin(), elements.end(), '\n'), 10);
    EXPECT_EQ(std::string::npos, elements.find_first_of(" \t")) << "no indent on new lines";
    EXPECT_EQ(std::string::npos, elements.find("\n,")) << "lines end with the separator";
    std::erase(elements, '\n');
    EXPECT_EQ(values.size() - 1,
              static_cast<size_t>(std::count(elements.begin(), elements.end(), ',')));
}

}  // namespace
