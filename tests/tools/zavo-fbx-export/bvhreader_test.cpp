#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <random>
#include <sstream>

#include "bvhclip.h"
#include "takeerror.h"

namespace {

void expectNear(takemath::Vec3 a, takemath::Vec3 b, double tolerance = 1e-9) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

// Root at a position channel, turned by its own channel order, a child and a grandchild.
const char* const smallClip =
    "HIERARCHY\r\nROOT Hips\n{\n OFFSET 5 5 5\n CHANNELS 6 Xposition Yposition Zposition "
    "Zrotation Yrotation Xrotation\n  JOINT Spine\n  {\nOFFSET 0 10 0\nCHANNELS 3 Xrotation "
    "Zrotation Yrotation  \n   End Site\n   {\n    OFFSET 0 4 0\n   }\n  }\n  JOINT "
    "LeftHandThumb2\n  {\n   OFFSET 1 0 0\n   CHANNELS 3 Zrotation Yrotation Xrotation\n  "
    "}\n}\nMOTION\nFrames: 2\nFrame Time: .0083333\n1 2 3 0 90 0 90 90 0 0 0 0\n"
    "0 0 0 0 0 0 0 0 0 0 0 0 \n";

std::string fileText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string withLineEnds(const std::string& text, const std::string& end) {
    std::string result;
    for (const char c : text)
        if (c == '\n')
            result += end;
        else
            result += c;
    return result;
}

// The numbers of every frame, front to back.
std::vector<double> allValues(const BvhClip& clip) {
    std::vector<double> values;
    for (int f = 0; f < clip.frameCount; ++f) {
        const double* frame = clip.values.frame(f);
        values.insert(values.end(), frame, frame + clip.channelCount);
    }
    return values;
}

}  // namespace

TEST(BvhReader, ForwardKinematicsFollowsEachJointsChannelOrder) {
    const BvhClip clip = parseBvh(smallClip, "small.bvh");
    ASSERT_EQ(clip.joints.size(), 3u);
    const auto rest = bvhForwardKinematics(clip, -1);
    expectNear(rest[0].position, {5, 5, 5});
    expectNear(rest[1].position, {5, 15, 5});
    const auto pose = bvhForwardKinematics(clip, 0);
    // The root's position channels replace its offset; its Y turn of 90 degrees carries the
    // offset (1, 0, 0) of the third joint to (0, 0, -1).
    expectNear(pose[0].position, {1, 2, 3});
    expectNear(pose[1].position, {1, 12, 3});
    expectNear(pose[2].position, {1, 2, 2});
    // Spine turns X 90 then Z 90 in its channel order: Ry(90) Rx(90) Rz(90) takes its Y axis
    // to +Z; the reverse order would give +X.
    expectNear(takemath::rotate(pose[1].orientation, {0, 1, 0}), {0, 0, 1});
}

// Every malformed input ends in one line naming the file, the line and what was expected.
TEST(BvhReader, ReportsMalformedFilesWithTheirLine) {
    const std::string head = "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n}\n";
    const std::string motion = head + "MOTION\nFrames: 2\nFrame Time: 0.1\n";
    std::vector<std::pair<std::string, std::string>> cases = {
        {"", "line 1: expected HIERARCHY, found the end of the file"},
        {std::string(3, '\0'), "line 1: expected HIERARCHY, found '\\x00\\x00\\x00'"},
        {"HIERARCHY\nROOT Hips\n{\nCHANNELS 0\n}", "line 4: expected OFFSET, found 'CHANNELS'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Wrotation\n}",
         "line 5: expected a channel name such as Zrotation, found 'Wrotation'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 7\n}",
         "line 5: expected a channel count from 0 to 6, found '7'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n",
         "line 6: expected JOINT, End Site or '}', found the end of the file"},
        {"HIERARCHY\rROOT Hips\r{\rOFFSET 0 0\rCHANNELS 0\r}",
         "line 5: expected a number, found 'CHANNELS'"},
        {"HIERARCHY\r\nROOT Hips\r\n{\nOFFSET 0 0\r\nCHANNELS 0\r\n}",
         "line 5: expected a number, found 'CHANNELS'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 nan 0\n",
         "line 4: expected a finite number, found 'nan'"},
        {"HIERARCHY\nROOT\n{\n", "line 2: joint 0: expected a name"},
        {"HIERARCHY\nROOT Hi\x01ps {\n",
         "line 2: joint 0: expected a name without control "
         "characters, found 'Hi\\x01ps'"},
        {std::string("HIERARCHY\nROOT Hi\0ps\n", 21),
         "line 2: joint 0: expected a name without control characters, found 'Hi\\x00ps'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 0\nJOINT Spine\n{\nOFFSET 0 1 0\n"
         "CHANNELS 0\n}\nJOINT HIPS\n",
         "line 11: joint 2: expected a name of its own, found 'HIPS', the name of joint 0"},
        {head + "ROOT Other\n",
         "line 7: expected MOTION (only one ROOT is supported), found 'ROOT'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 0\n}\nMOTION\nFrames: 1\n"
         "Frame Time: 0.1\n\n",
         "line 8: expected a hierarchy with at least one channel"},
        {head + "MOTION\nFrames: 1.5\n",
         "line 8: expected a frame count from 1 to 2147483647, "
         "found '1.5'"},
        {head + "MOTION\nFrames: 2000000000\nFrame Time: 0.1\n1\n2\n",
         "line 8: expected at most 3 frames, as many as the rest of the file can hold, found "
         "'2000000000'"},
        {head + "MOTION\nFrames: 2\nFrame Time: 0\n1\n2\n",
         "line 9: expected a frame time above 0, found '0'"},
        {head + "MOTION\nFrames: 2\nFrame Time: 1e999\n1\n2\n",
         "line 9: expected a finite number, found '1e999'"},
        {head + "MOTION\nFrames: 2\nFrame Time: 0.1 s\n1\n2\n",
         "line 9: expected the end of the line after the frame time, found 's'"},
        {motion + "1\n2\n3\n",
         "line 12: expected the end of the file after the 2 frames that Frames: announces, "
         "found more"},
        {motion + "1 x\n", "line 10: frame 0: expected a finite number, found 'x'"},
        {motion + "1\n",
         "line 10: expected 2 frames as Frames: says, found the end of the file "
         "after 1"},
    };
    // Every spelling of a non-finite number that the C library reads.
    for (const std::string word :
         {"nan", "NaN", "-nan", "nan(0x7)", "inf", "-INF", "Infinity", "1e400", "+inf"})
        cases.emplace_back(motion + "0\n" + word + "\n",
                           "line 11: frame 1: expected a finite number, found '" + word + "'");
    // Frame lines read in parts side by side are checked as one reading front to back would.
    const std::string three = head + "MOTION\nFrames: 3\nFrame Time: 0.1\n";
    const std::vector<std::pair<std::string, std::string>> motionCases = {
        {three + "1\r\n\r\n2\r\n \t\r\n3 4\r\n5\r\nx\r\n",
         "line 14: frame 2: expected 1 numbers, found 2"},
        // A word that is no number is met before the line is found to be one too many.
        {three + "1\r2\r\r3\r4 x\r", "line 14: frame 3: expected a finite number, found 'x'"},
        {three + "1\n2\n\n\n3\n\n4\n5\n6\n7\n8\n",
         "line 16: expected the end of the file after the 3 frames that Frames: announces, "
         "found more"},
        {three + "1\n2\n\n\n\n\n\n\n\n\n\n\n",
         "line 21: expected 3 frames as Frames: says, found the end of the file after 2"},
        {three + "1\n2\n\n\n\n\n\n\n\n3 x\n",
         "line 19: frame 2: expected a finite number, found 'x'"},
        {three + "1\n\n\n\n\n\n\n2 3\n\n\n\n\nx\n",
         "line 17: frame 1: expected 1 numbers, found 2"},
        // More numbers than the whole section may hold, all on the last line.
        {three + "1\n2\n3\n\n\n\n\n\n1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21\n",
         "line 18: expected the end of the file after the 3 frames that Frames: announces, "
         "found more"},
    };
    cases.insert(cases.end(), motionCases.begin(), motionCases.end());
    for (const int parts : {1, 2, 3, 16}) {
        for (const auto& [text, message] : cases) {
            try {
                parseBvh(text, "b.bvh", parts);
                ADD_FAILURE() << "accepted in " << parts << " parts: " << message;
            } catch (const TakeError& error) {
                EXPECT_EQ(error.what(), "b.bvh: " + message)
                    << parts << " parts: " << text.substr(0, 200);
            }
        }
    }
    EXPECT_THROW(readBvhFile("/nonexistent/clip.bvh"), TakeError);
}

// A real clip read in parts side by side, whatever its line ends, holds the very numbers of
// one reading front to back.
TEST(BvhReader, ReadsTheSameNumbersInAnyNumberOfParts) {
    const std::string lf = fileText(std::string(ZAVO_BVH_DATA_DIR) + "/cmu_02_03_run.bvh");
    ASSERT_FALSE(lf.empty());
    const BvhClip whole = parseBvh(lf, "run.bvh", 1);
    ASSERT_EQ(whole.values.size(), 173u * 96u);
    const std::vector<double> wholeValues = allValues(whole);
    // Blank lines between the frames leave runs without a frame when read in many parts.
    for (const auto& [label, end] :
         {std::pair{"LF", "\n"}, {"CRLF", "\r\n"}, {"CR", "\r"}, {"LF LF", "\n\n"}}) {
        const std::string text = withLineEnds(lf, end);
        for (const int parts : {1, 2, 3, 7, 400}) {
            const BvhClip clip = parseBvh(text, "run.bvh", parts);
            EXPECT_EQ(clip.frameCount, whole.frameCount);
            EXPECT_EQ(clip.values.size(), whole.values.size());
            EXPECT_TRUE(allValues(clip) == wholeValues) << parts << " parts, " << label;
        }
    }
}

// Short decimals take a quicker road than the library's reading; both give the same double to
// the last bit, and words that are no such decimal are left to the library, in a word alone
// and in the frame lines alike, where a word that only begins as a decimal is refused whole.
TEST(BvhReader, ReadsNumbersToTheBitAsTheLibraryDoes) {
    std::vector<std::string> words;
    std::istringstream table(
        "0 -0 -0.0000 7 123456789012345 1234567890123456 999999999999999.9 0.000000000000001 "
        "000000000000001.5 0.30000000000000004 -179.99999999999 .5 5. -.5 1.2.3 --1 - . 1e5 "
        "2.5E-3 0x10 1,5 +2.25 1.5x -2.25-3 12.3456e2");
    for (std::string word; table >> word;) words.push_back(word);
    std::vector<std::string> numbers, refused;
    std::vector<uint64_t> expectedBits;
    std::mt19937_64 random(2024);
    for (int i = 0; i < 20000; ++i) {
        const int whole = static_cast<int>(random() % 8), decimals = static_cast<int>(random() % 9);
        std::string word = random() % 2 ? "-" : "";
        for (int d = 0; d <= whole; ++d) word += static_cast<char>('0' + random() % 10);
        if (decimals > 0) word += '.';
        for (int d = 0; d < decimals; ++d) word += static_cast<char>('0' + random() % 10);
        words.push_back(word);
    }
    for (const std::string& word : words) {
        const std::string_view digitsOn = word[0] == '+' ? std::string_view(word).substr(1) : word;
        double expected = 0.0;
        const auto [end, error] =
            std::from_chars(digitsOn.data(), digitsOn.data() + digitsOn.size(), expected);
        const bool number = error == std::errc() && end == digitsOn.data() + digitsOn.size();
        double value = 0.0;
        ASSERT_EQ(bvhNumber(word, value), number) << word;
        if (number) {
            ASSERT_EQ(std::bit_cast<uint64_t>(value), std::bit_cast<uint64_t>(expected)) << word;
            numbers.push_back(word);
            expectedBits.push_back(std::bit_cast<uint64_t>(expected));
        } else if (!word.empty() && word != "-" && word != ".") {
            refused.push_back(word);
        }
    }
    const std::string head = "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n}\n";
    std::string clip =
        head + "MOTION\nFrames: " + std::to_string(numbers.size()) + "\nFrame Time: 0.1\n";
    for (const std::string& word : numbers) clip += " \t" + word + "\n";
    for (const int parts : {1, 2}) {
        const BvhClip read = parseBvh(clip, "n.bvh", parts);
        ASSERT_EQ(read.values.size(), numbers.size());
        for (size_t i = 0; i < numbers.size(); ++i)
            ASSERT_EQ(std::bit_cast<uint64_t>(*read.values.frame(static_cast<int>(i))),
                      expectedBits[i])
                << numbers[i];
    }
    for (const std::string& word : refused) {
        const std::string text = head + "MOTION\nFrames: 2\nFrame Time: 0.1\n1\n" + word + " 2\n";
        try {
            parseBvh(text, "n.bvh", 1);
            ADD_FAILURE() << "accepted " << word;
        } catch (const TakeError& error) {
            EXPECT_EQ(error.what(),
                      "n.bvh: line 11: frame 1: expected a finite number, found '" + word + "'");
        }
    }
}
