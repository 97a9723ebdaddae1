#include <array>
#include <cstring>
#include <functional>
#include <numeric>

#include "fbx/io/fbxio.h"
#include "fbx/io/fbxsourcecheck.h"
#include "tests/fbxio/fbxio_test_util.h"

namespace {

using fbxtest::File;
using fbxtest::Record;
using fbxtest::TempDir;
using Strings = std::vector<std::string>;

struct BinaryFile {
    std::vector<uint8_t> bytes;
    File file;
};

// Writes a binary file whose top-level fields come from `body`; every file goes through the
// structural reader.
BinaryFile WriteBinary(const std::function<void(FbxIO&)>& body, int version = 7700,
                       const fbxtest::ReadOptions& options = {}, int timeCodeDefinition = 127) {
    TempDir dir;
    FbxIO io(FbxIO::ImplementationForVersion(version), timeCodeDefinition);
    const std::string path = dir.File("out.fbx");
    EXPECT_TRUE(io.ProjectCreateEmpty(path.c_str(), version, true));
    body(io);
    EXPECT_TRUE(io.ProjectClose()) << io.GetStatus().GetErrorString();
    return {fbxtest::ReadAllBytes(path), fbxtest::ReadChecked(path, options)};
}

TEST(FbxIOBinary, HeaderRecordAndFooterBytes) {
    const BinaryFile out = WriteBinary([](FbxIO& io) { io.FieldWriteI("Version", 232); });
    // Signature, version 7700, then the record: end offset 64, one value of 5 bytes, the
    // name, 'I' 232; then the 25-byte null record that ends the top level.
    std::vector<uint8_t> expected(std::begin("Kaydara FBX Binary  \0\x1a\0"),
                                  std::end("Kaydara FBX Binary  \0\x1a\0") - 1);
    for (uint8_t byte : {0x14, 0x1e, 0, 0, 64, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0,
                         0,    0,    0, 0, 0,  5, 0, 0, 0, 0, 0, 0, 0, 7}) {
        expected.push_back(byte);
    }
    for (char c : std::string("VersionI\xe8\0\0\0", 12)) expected.push_back(uint8_t(c));
    expected.resize(expected.size() + 25, 0);
    ASSERT_GT(out.bytes.size(), expected.size());
    EXPECT_EQ(expected, std::vector<uint8_t>(out.bytes.begin(), out.bytes.begin() + 89));
    EXPECT_EQ(0u, out.bytes.size() % 16);
}

TEST(FbxIOBinary, ScalarTypesStringsAndNames) {
    const unsigned char raw[] = {'r', 0, 'w'};
    const BinaryFile out = WriteBinary([&](FbxIO& io) {
        io.FieldWriteBegin("\"Values\"");
        io.FieldWriteI(-7);
        io.FieldWriteUI(4000000000u);
        io.FieldWriteB(true);
        io.FieldWriteB(false);
        io.FieldWriteLL(-5000000000LL);
        io.FieldWriteULL(1ULL << 63);
        io.FieldWriteD(0.25);
        io.FieldWriteF(1.5f);
        io.FieldWriteShort(-3);
        io.FieldWriteUShort(65535);
        io.FieldWriteCH('Y');
        io.FieldWriteByte(-1);
        io.FieldWriteUByte(200);
        io.FieldWriteS("Model::Hips");
        io.FieldWriteC("plain");
        io.FieldWriteS(nullptr);
        io.FieldWriteR(raw, sizeof raw);
        const double vector[] = {1, 2, 3, 4};
        io.FieldWrite3D(vector);
        io.FieldWriteEnd();
        io.FieldWriteBegin("Empty");
        io.FieldWriteEnd();
    });
    const Record* values = out.file.Find("Values");
    ASSERT_NE(nullptr, values) << "a quoted field name is stored without its quotes";
    EXPECT_EQ((Strings{"I-7",
                       "I-294967296",
                       "I1",
                       "I0",
                       "L-5000000000",
                       "L-9223372036854775808",
                       "D0.25",
                       "F1.5",
                       "Y-3",
                       "Y-1",
                       "C89",
                       "C255",
                       "C200",
                       std::string("SHips\0\x01Model", 12),
                       "Splain",
                       "S",
                       std::string("Rr\0w", 4),
                       "D1",
                       "D2",
                       "D3"}),
              fbxtest::Texts(values->values));
    const Record* empty = out.file.Find("Empty");
    ASSERT_NE(nullptr, empty);
    EXPECT_TRUE(empty->values.empty());
    EXPECT_FALSE(empty->hasBlock);
}

TEST(FbxIOBinary, TimesAreLegacyTicksIn7700AndPlainTicksOtherwise) {
    struct Case {
        int version;
        int definition;
        std::string second;
    };
    for (const Case& c : {Case{7700, 127, "46186158000"}, Case{7400, 127, "46186158000"},
                          Case{7600, 127, "141120000"}, Case{7700, 0, "141120000"}}) {
        const BinaryFile out = WriteBinary(
            [&](FbxIO& io) {
                io.FieldWriteT("Time", FbxTime(FBX_TC_SECOND));
                io.FieldWriteTS("Span", FbxTimeSpan(FbxTime(0), FbxTime(-FBX_TC_SECOND)));
            },
            c.version, {}, c.definition);
        EXPECT_EQ(Strings{"L" + c.second}, fbxtest::Texts(out.file.Find("Time")->values));
        EXPECT_EQ((Strings{"L0", "L-" + c.second}), fbxtest::Texts(out.file.Find("Span")->values));
    }
}

TEST(FbxIOBinary, ArraysOfEveryTypeWithStrideAndGroups) {
    const double xyzw[] = {1, 2, 3, 9, 4, 5, 6, 9};
    const BinaryFile out = WriteBinary([&](FbxIO& io) {
        io.FieldWriteBegin("A");
        io.FieldWriteArrayD(2, xyzw, 3, 4 * sizeof(double));  // xyz of two xyzw elements
        io.FieldWriteArrayF(2, std::array{0.5f, -1.0f}.data());
        io.FieldWriteArrayI(2, std::array{-1, 2}.data());
        io.FieldWriteArrayUI(1, std::array{3000000000u}.data());
        io.FieldWriteArrayLL(1, std::array{-(1LL << 40)}.data());
        io.FieldWriteArrayULL(1, std::array{7ULL}.data());
        io.FieldWriteArrayB(2, std::array{true, false}.data());
        io.FieldWriteArrayBytes(1, std::array<unsigned char, 1>{250}.data());
        io.FieldWriteArraySBytes(1, std::array<signed char, 1>{-2}.data());
        io.FieldWriteArrayShort(1, std::array<short, 1>{-300}.data());
        io.FieldWriteArrayUShort(1, std::array<unsigned short, 1>{600}.data());
        io.FieldWriteArrayD(0, static_cast<const double*>(nullptr));
        io.FieldWriteArrayLL(3, [](int64_t* out, size_t first, size_t n) {
            for (size_t i = 0; i < n; ++i) out[i] = static_cast<int64_t>(first + i) * 10;
        });
        io.FieldWriteEnd();
    });
    EXPECT_EQ(
        (Strings{"d[1,2,3,4,5,6]", "f[0.5,-1]", "i[-1,2]", "i[-1294967296]", "l[-1099511627776]",
                 "l[7]", "b[1,0]", "c[250]", "c[254]", "h[-300]", "h[600]", "d[]", "l[0,10,20]"}),
        fbxtest::Texts(out.file.Find("A")->values));
}

// The reader enforces the rule (at least the minimum and more than 1023 bytes) on every
// array of the file, so writing both sides of each boundary is the test.
TEST(FbxIOBinary, CompressionThresholdAndSettings) {
    struct Case {
        bool enabled;
        int minimum;
        int level;
    };
    std::vector<unsigned char> bytes(5000);
    std::iota(bytes.begin(), bytes.end(), 0);
    for (const Case& c :
         {Case{true, 1024, 1}, Case{true, 0, 9}, Case{true, 4096, 1}, Case{false, 1024, 1}}) {
        fbxtest::ReadOptions options;
        options.compressMinimumSize = static_cast<uint32_t>(c.minimum);
        options.expectCompression = c.enabled;
        const BinaryFile out = WriteBinary(
            [&](FbxIO& io) {
                io.CompressArrays(c.enabled);
                io.CompressMinimumSize(c.minimum);
                io.CompressLevel(c.level);
                io.FieldWriteBegin("Arrays");
                for (int size : {1023, 1024, 4095, 4096, 5000}) {
                    io.FieldWriteArrayBytes(size, bytes.data());
                }
                io.FieldWriteEnd();
            },
            7700, options);
        EXPECT_EQ(bytes[4999], out.file.Find("Arrays")->values[4].Ints()[4999]);
    }
}

TEST(FbxIOBinary, NestedBlocksAndNullRecordsOfBothHeaderWidths) {
    for (int version : {7400, 7500, 7700}) {
        const BinaryFile out = WriteBinary(
            [](FbxIO& io) {
                io.FieldWriteBegin("Objects");
                io.FieldWriteBlockBegin();
                io.FieldWriteBegin("Model");
                io.FieldWriteLL(5);
                io.FieldWriteBlockBegin();
                io.FieldWriteI("Version", 232);
                io.FieldWriteBlockEnd();
                io.FieldWriteEnd();
                io.FieldWriteBegin("AnimationLayer");
                io.FieldWriteBlockBegin();
                io.FieldWriteBlockEnd();
                io.FieldWriteEnd();
                io.FieldWriteBlockEnd();
                io.FieldWriteEnd();
                io.FieldWriteI("After", 1);
            },
            version);
        EXPECT_EQ(static_cast<uint32_t>(version), out.file.version);
        EXPECT_EQ(232, out.file.Find("Objects/Model/Version")->values[0].Int());
        const Record* layer = out.file.Find("Objects/AnimationLayer");
        ASSERT_NE(nullptr, layer) << version;
        EXPECT_TRUE(layer->hasBlock && layer->children.empty()) << "empty blocks stay";
        // Behind the empty block come its null record and the one that closes "Objects":
        // 13 zero bytes each with 32-bit headers, 25 with 64-bit ones.
        const size_t nullRecord = 3 * (version >= 7500 ? 8 : 4) + 1;
        EXPECT_EQ(layer->offset + nullRecord + 14 + 2 * nullRecord, out.file.Find("After")->offset);
    }
}

TEST(FbxIOBinary, FooterPaddingAndSourceCheck) {
    // Body lengths over a full cycle of 16: the reader checks the 1 to 16 padding bytes.
    for (int extra = 0; extra < 16; ++extra) {
        WriteBinary([&](FbxIO& io) {
            io.FieldWriteR("Pad", std::string(static_cast<size_t>(extra), 'x').data(),
                           static_cast<size_t>(extra));
        });
    }
    // Known answer: FileId and footer block of a file created 1970-01-01 10:00:00.000.
    FbxCreationTime time;
    time.year = 1970;
    time.month = time.day = 1;
    time.hour = 10;
    const FbxSourceCheckBlock fileId = {0x28, 0xb3, 0x2a, 0xeb, 0xb6, 0x24, 0xcc, 0xc2,
                                        0xbf, 0xc8, 0xb0, 0x2a, 0xa9, 0x2b, 0xfc, 0xf1};
    const FbxSourceCheckBlock footer = {0xfa, 0xbc, 0xab, 0x09, 0xd0, 0xc8, 0xd4, 0x66,
                                        0xb1, 0x76, 0xfb, 0x83, 0x1c, 0xf7, 0x26, 0x7e};
    EXPECT_EQ(fileId, FbxFileIdBlock(time));
    EXPECT_EQ("1970-01-01 10:00:00:000", FbxFormatCreationTime(time));
    EXPECT_EQ("0001100100197000", FbxMangleCreationTime(time));
    EXPECT_EQ("0000-01-01 00:00:00:000", FbxFormatCreationTime(FbxCreationTime{}));
    const BinaryFile out = WriteBinary([&](FbxIO& io) { io.SetCreationTime(time); });
    EXPECT_EQ(0, std::memcmp(footer.data(), out.file.footerCheck, 16));
}

TEST(FbxIOBinary, MisuseIsReportedAndStopsLaterWrites) {
    TempDir dir;
    const std::string path = dir.File("bad.fbx");
    struct Case {
        std::function<void(FbxIO&)> misuse;
        FbxStatus::EStatusCode code;
        const char* message;
    };
    const Case cases[] = {
        {[](FbxIO& io) { io.FieldWriteI(1); }, FbxStatus::eInvalidParameter,
         "Write field error : Field not opened"},
        {[](FbxIO& io) { io.FieldWriteBlockBegin(); }, FbxStatus::eInvalidParameter,
         "Write field error : Field not opened"},
        {[](FbxIO& io) {
             io.FieldWriteBegin("A");
             io.FieldWriteBegin("B");
         },
         FbxStatus::eFailure, "Begin Field error: last field not closed"},
    };
    for (const Case& c : cases) {
        FbxIO io;
        ASSERT_TRUE(io.ProjectCreateEmpty(path.c_str(), 7700, true));
        c.misuse(io);
        io.FieldWriteI("Later", 2);  // returns at once: the first error stays
        EXPECT_EQ(c.code, io.GetStatus().GetCode());
        EXPECT_STREQ(c.message, io.GetStatus().GetErrorString());
        EXPECT_FALSE(io.ProjectClose());
    }
    FbxIO closed;
    closed.WriteComments("x");
    EXPECT_STREQ("File not opened", closed.GetStatus().GetErrorString());
    EXPECT_TRUE(dir.Entries().empty()) << "failed writes leave no file behind";
}

TEST(FbxIOBinary, ReaderRejectsCorruptedFiles) {
    const BinaryFile out = WriteBinary([](FbxIO& io) {
        io.FieldWriteBegin("Objects");
        io.FieldWriteBlockBegin();
        io.FieldWriteI("Version", 1);
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
    });
    const size_t objects = 27, version = 59, innerNull = 96;
    struct Corruption {
        size_t at;
        uint8_t mask;
        const char* expected;
    };
    for (const Corruption& c : {Corruption{objects, 0x02, "children do not end"},
                                Corruption{objects + 7, 0x01, "end offset out of range"},
                                Corruption{version + 16, 0x01, "value-list length"},
                                Corruption{innerNull + 8, 0x01, "end offset out of range"},
                                Corruption{out.bytes.size() - 20, 0x01, "non-zero footer"},
                                Corruption{out.bytes.size() - 1, 0x01, "magic"}}) {
        std::vector<uint8_t> bytes = out.bytes;
        bytes[c.at] ^= c.mask;
        File file;
        std::string error;
        EXPECT_FALSE(fbxtest::ReadBinaryBytes(bytes, file, error)) << c.at;
        EXPECT_NE(std::string::npos, error.find(c.expected)) << error;
    }
}

}  // namespace
