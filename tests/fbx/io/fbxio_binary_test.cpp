#include <array>
#include <functional>
#include <limits>
#include <numeric>

#include "fbx/io/fbxio.h"
#include "fbx/io/fbxsourcecheck.h"
#include "tests/fbx/io/fbxio_test_util.h"

namespace {

using fbxfile::File;
using fbxfile::Texts;
using namespace std::string_literals;

struct BinaryFile {
    std::vector<uint8_t> bytes;
    File file;
};

// Writes a binary file whose top-level fields come from `body`; every file goes through the
// structural reader.
BinaryFile WriteBinary(const std::function<void(FbxIO&)>& body, int version = 7700,
                       const fbxfile::ReadOptions& options = {}, int timeCodeDefinition = 127) {
    fbxtest::TempDir dir;
    FbxIO io(FbxIO::ImplementationForVersion(version), timeCodeDefinition);
    const std::string path = dir.File("out.fbx");
    EXPECT_TRUE(io.ProjectCreateEmpty(path.c_str(), version, true));
    body(io);
    EXPECT_TRUE(io.ProjectClose()) << io.GetStatus().GetErrorString();
    return {fbxfile::ReadAllBytes(path), fbxtest::ReadChecked(path, options)};
}

TEST(FbxIOBinary, ScalarsStringsAndArraysOfEveryType) {
    const double xyzw[] = {1, 2, 3, 9, 4, 5, 6, 9};
    const BinaryFile out = WriteBinary([&](FbxIO& io) {
        io.FieldWriteBegin("\"Values\"");
        io.FieldWriteI(-7);
        io.FieldWriteUI(4000000000u);
        io.FieldWriteB(true);
        io.FieldWriteLL(-5000000000LL);
        io.FieldWriteD(0.25);
        io.FieldWriteF(1.5f);
        io.FieldWriteShort(-3);
        io.FieldWriteCH('Y');
        io.FieldWriteUByte(200);
        io.FieldWriteS("Model::Hips");
        io.FieldWriteS(nullptr);
        io.FieldWriteR("r\0w", 3);
        io.FieldWrite3D(xyzw);
        io.FieldWriteEnd();
        io.FieldWriteBegin("Arrays");
        io.FieldWriteArrayD(2, xyzw, 3, 4 * sizeof(double));  // xyz of two xyzw elements
        io.FieldWriteArrayF(2, std::array{0.5f, -1.0f}.data());
        io.FieldWriteArrayI(2, std::array{-1, 2}.data());
        io.FieldWriteArrayLL(1, std::array{-(1LL << 40)}.data());
        io.FieldWriteArrayB(2, std::array{true, false}.data());
        io.FieldWriteArrayBytes(1, std::array<unsigned char, 1>{250}.data());
        io.FieldWriteArrayShort(1, std::array<short, 1>{-300}.data());
        io.FieldWriteArrayD(0, static_cast<const double*>(nullptr));
        io.FieldWriteArrayLL(3, [](int64_t* values, size_t first, size_t n) {
            for (size_t i = 0; i < n; ++i) values[i] = static_cast<int64_t>(first + i) * 10;
        });
        io.FieldWriteEnd();
        io.FieldWriteBegin("Empty");
        io.FieldWriteEnd();
    });
    ASSERT_NE(nullptr, out.file.Find("Values")) << "a quoted field name loses its quotes";
    EXPECT_EQ(
        "I-7 I-294967296 I1 L-5000000000 D0.25 F1.5 Y-3 C89 C200 SHips\0\x01Model S Rr\0w "
        "D1 D2 D3"s,
        Texts(out.file.Find("Values")->values));
    EXPECT_EQ(
        "d[1,2,3,4,5,6] f[0.5,-1] i[-1,2] l[-1099511627776] b[1,0] c[250] h[-300] d[] "
        "l[0,10,20]",
        Texts(out.file.Find("Arrays")->values));
    const fbxfile::Record* empty = out.file.Find("Empty");
    EXPECT_TRUE(empty && empty->values.empty() && !empty->hasBlock);
}

TEST(FbxIOBinary, TimesAreLegacyTicksIn7700AndPlainTicksOtherwise) {
    for (const auto& [version, definition, second] :
         {std::tuple{7700, 127, "46186158000"}, {7600, 127, "141120000"}, {7700, 0, "141120000"}}) {
        const BinaryFile out = WriteBinary(
            [&](FbxIO& io) {
                io.FieldWriteT("Time", FbxTime(FBX_TC_SECOND));
                io.FieldWriteTS("Span", FbxTimeSpan(FbxTime(0), FbxTime(-FBX_TC_SECOND)));
            },
            version, {}, definition);
        EXPECT_EQ("L"s + second, Texts(out.file.Find("Time")->values));
        EXPECT_EQ("L0 L-"s + second, Texts(out.file.Find("Span")->values));
    }
}

// The reader enforces the rule (at least the minimum and more than 1023 bytes) on every
// array of the file, so writing both sides of each boundary is the test.
TEST(FbxIOBinary, CompressionThresholdAndSettings) {
    std::vector<unsigned char> bytes(5000);
    std::iota(bytes.begin(), bytes.end(), 0);
    for (const auto& [enabled, minimum, level] :
         {std::tuple{true, 1024, 1}, {true, 0, 9}, {true, 4096, 1}, {false, 1024, 1}}) {
        const fbxfile::ReadOptions options{enabled ? uint32_t(minimum) : UINT32_MAX};
        const BinaryFile out = WriteBinary(
            [&](FbxIO& io) {
                io.CompressArrays(enabled);
                io.CompressMinimumSize(minimum);
                io.CompressLevel(level);
                io.FieldWriteBegin("Arrays");
                for (int size : {1023, 1024, 4095, 4096, 5000}) {
                    io.FieldWriteArrayBytes(size, bytes.data());
                }
                io.FieldWriteEnd();
            },
            7700, options);
        EXPECT_EQ(bytes[4999], out.file.Find("Arrays")->values[4].ints[4999]);
    }
}

// Arrays whose compressed bytes come from elsewhere than their elements: a tagged array
// reuses the bytes of the last tagged one only under the same tag, and a prepared array
// whose ticket was dropped (taken out of order) is read from its source again.
TEST(FbxIOBinary, TaggedAndPreparedArraysHoldTheirOwnElements) {
    std::vector<int64_t> times(3000), others(3000);
    std::iota(times.begin(), times.end(), 0);
    std::iota(others.begin(), others.end(), 5);
    std::vector<float> first(2000, 0.5f), second(2000, -2.0f);
    const auto source = [](const std::vector<float>& values) {
        return [&values](float* out, size_t at, size_t n) {
            std::copy_n(values.begin() + static_cast<ptrdiff_t>(at), n, out);
        };
    };
    const std::vector<std::pair<const std::vector<int64_t>*, uint64_t>> tagged = {
        {&times, 1}, {&times, 1}, {&others, 2}, {&others, 2}, {&times, 1}, {&others, 0}};
    for (const bool compress : {true, false}) {
        const BinaryFile out = WriteBinary(
            [&](FbxIO& io) {
                io.CompressArrays(compress);
                io.FieldWriteBegin("Times");
                for (const auto& [values, tag] : tagged) io.FieldWriteArrayLL(*values, tag);
                io.FieldWriteEnd();
                const uint64_t firstTicket = io.PrepareArrayF(first.size(), source(first));
                const uint64_t secondTicket = io.PrepareArrayF(second.size(), source(second));
                io.FieldWriteBegin("Values");
                io.FieldWriteArrayF(second.size(), source(second), secondTicket);
                io.FieldWriteArrayF(first.size(), source(first), firstTicket);
                io.FieldWriteEnd();
            },
            7700, {compress ? 1024u : UINT32_MAX});
        SCOPED_TRACE(compress ? "compressed" : "raw");
        const std::vector<fbxfile::Value>& written = out.file.Find("Times")->values;
        ASSERT_EQ(tagged.size(), written.size());
        for (size_t i = 0; i < tagged.size(); ++i) {
            EXPECT_EQ(*tagged[i].first, written[i].ints) << "array " << i;
        }
        const std::vector<fbxfile::Value>& values = out.file.Find("Values")->values;
        ASSERT_EQ(2u, values.size());
        EXPECT_EQ(std::vector<double>(second.begin(), second.end()), values[0].reals);
        EXPECT_EQ(std::vector<double>(first.begin(), first.end()), values[1].reals);
    }
}

TEST(FbxIOBinary, FooterPaddingAndSourceCheck) {
    // Body lengths over a full cycle of 16: the reader checks the 1 to 16 padding bytes.
    for (size_t extra = 0; extra < 16; ++extra) {
        WriteBinary(
            [&](FbxIO& io) { io.FieldWriteR("Pad", std::string(extra, 'x').data(), extra); });
    }
    // Known answer: FileId and footer block of a file created 1970-01-01 10:00:00.000.
    FbxCreationTime time;
    time.year = 1970;
    time.month = time.day = 1;
    time.hour = 10;
    const FbxSourceCheckBlock fileId = {0x28, 0xb3, 0x2a, 0xeb, 0xb6, 0x24, 0xcc, 0xc2,
                                        0xbf, 0xc8, 0xb0, 0x2a, 0xa9, 0x2b, 0xfc, 0xf1};
    EXPECT_EQ(fileId, FbxFileIdBlock(time));
    const BinaryFile out = WriteBinary([&](FbxIO& io) { io.SetCreationTime(time); });
    EXPECT_EQ("\xfa\xbc\xab\x09\xd0\xc8\xd4\x66\xb1\x76\xfb\x83\x1c\xf7\x26\x7e",
              out.file.footerCheck);
}

TEST(FbxIOBinary, MisuseIsReportedAndStopsLaterWrites) {
    fbxtest::TempDir dir;
    const std::string path = dir.File("bad.fbx");
    for (const auto& [unclosed, code, message] :
         {std::tuple{false, FbxStatus::eInvalidParameter, "Write field error : Field not opened"},
          {true, FbxStatus::eFailure, "Begin Field error: last field not closed"}}) {
        FbxIO io;
        ASSERT_TRUE(io.ProjectCreateEmpty(path.c_str(), 7700, true));
        unclosed ? (io.FieldWriteBegin("A"), io.FieldWriteBegin("B")) : io.FieldWriteI(1);
        io.FieldWriteI("Later", 2);  // returns at once: the first error stays
        EXPECT_EQ(code, io.GetStatus().GetCode());
        EXPECT_STREQ(message, io.GetStatus().GetErrorString());
        EXPECT_FALSE(io.ProjectClose());
    }
    // Missing data is an error, not a crash; neither is an absurd cache size.
    for (const auto& [misuse, message] :
         std::vector<std::pair<std::function<void(FbxIO&)>, const char*>>{
             {[](FbxIO& io) { io.FieldWriteR(nullptr, 4); }, "Invalid raw data"},
             {[](FbxIO& io) { io.FieldWrite3D(nullptr); }, "Invalid values"},
             {[](FbxIO& io) { io.FieldWriteArrayLL(3, FbxIO::ArraySource<int64_t>()); },
              "Invalid array"}}) {
        FbxIO io;
        io.CacheSize(std::numeric_limits<int>::max());
        ASSERT_TRUE(io.ProjectCreateEmpty(path.c_str(), 7700, true));
        io.FieldWriteBegin("Bad");
        misuse(io);
        EXPECT_EQ(FbxStatus::eInvalidParameter, io.GetStatus().GetCode());
        EXPECT_STREQ(message, io.GetStatus().GetErrorString());
        EXPECT_FALSE(io.ProjectClose());
    }
    FbxIO closed;
    closed.WriteComments("x");
    EXPECT_STREQ("File not opened", closed.GetStatus().GetErrorString());
    EXPECT_TRUE(dir.Entries().empty()) << "failed writes leave no file behind";
}

// The reader must see each kind of damage, or the checks on every written file prove nothing.
TEST(FbxIOBinary, ReaderRejectsCorruptedFiles) {
    const BinaryFile out = WriteBinary([](FbxIO& io) {
        io.FieldWriteBegin("Objects");
        io.FieldWriteBlockBegin();
        io.FieldWriteBegin("Data");
        io.FieldWriteArrayBytes(2000, std::vector<unsigned char>(2000, 7).data());
        io.FieldWriteEnd();
        io.FieldWriteBlockEnd();
        io.FieldWriteEnd();
    });
    // Objects at 27, its child at 27 + 25 + 7 = 59 with its array header after 25 + 4 + 1.
    const size_t objects = 27, data = 59, array = data + 30;
    for (const auto& [at, expected] : {std::pair{size_t{0}, "signature"},
                                       {objects, "children do not end"},
                                       {objects + 7, "end offset out of range"},
                                       {data + 16, "value-list length"},
                                       {array, "compressed array does not inflate"},
                                       {array + 4, "array of 2000 bytes not compressed"},
                                       {out.bytes.size() - 40, "bad footer byte"}}) {
        std::vector<uint8_t> bytes = out.bytes;
        ++bytes[at];
        File file;
        std::string error;
        EXPECT_FALSE(fbxfile::ReadBinaryBytes(bytes, file, error)) << at;
        EXPECT_NE(std::string::npos, error.find(expected)) << at << ": " << error;
    }
}

}  // namespace
