#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

#include "demotake.h"
#include "jsontakereader.h"
#include "takeerror.h"
#include "takewriter.h"

namespace {

std::string takeText(const Take& take) {
    std::ostringstream text;
    writeTake(take, text);
    return text.str();
}

// `count` copies of `item`, comma-separated.
std::string list(const std::string& item, int count) {
    std::string text = item;
    for (int i = 1; i < count; ++i) text += "," + item;
    return text;
}

// A take with 23 body segments; each 'P' in `frames` is a pose with every segment at rest.
std::string bodyTake(const std::string& frames, const std::string& extra = "") {
    std::string names = "\"S0\"";
    for (int i = 1; i < 23; ++i) names += ",\"S" + std::to_string(i) + "\"";
    std::string text = R"({"format":"zavo-take","version":1,"frameRate":240,"segmentNames":[)" +
                       names + "]" + extra + R"(,"frames":[)";
    for (char c : frames)
        text +=
            c == 'P' ? R"({"segments":[)" + list("[0,0,1,1,0,0,0]", 23) + "]}" : std::string(1, c);
    return text + "]}";
}

// A segmentNames member of 23 names S0 to S22, some replaced.
std::string names(const std::map<int, std::string>& replaced) {
    std::string text = R"(,"segmentNames":[)";
    for (int i = 0; i < 23; ++i) {
        const auto name = replaced.find(i);
        text += (i ? ",\"" : "\"") +
                (name == replaced.end() ? "S" + std::to_string(i) : name->second) + "\"";
    }
    return text + "]";
}

}  // namespace

TEST(JsonTakeReader, ReadsBackWhatTheWriterWroteThroughTheFileBuffer) {
    DemoTakeOptions options;
    options.frames = 700;  // several megabytes: the reader refills its buffer many times
    options.props = 2;
    Take take = makeDemoTake(options);
    take.frames[3].reset();
    take.frames[4]->valid = false;
    take.frames[4]->poseOffset = {-5, 17};
    take.userComment = "line\nbreak \"quoted\" \xc3\xa9";
    take.recordStartUtcOffset = 7200;
    const std::string path = ::testing::TempDir() + "roundtrip.json";
    writeTakeFile(take, path);
    const Take read = readTakeFile(path);
    std::remove(path.c_str());
    // The writer spells out every field, so equal texts mean nothing was lost or changed.
    const std::string want = takeText(take), got = takeText(read);
    const auto [w, g] = std::mismatch(want.begin(), want.end(), got.begin(), got.end());
    EXPECT_EQ(std::string(g, got.end()).substr(0, 200), std::string(w, want.end()).substr(0, 200));
    EXPECT_FALSE(read.props.has_value());
}

TEST(JsonTakeReader, FillsInEveryDefault) {
    const Take take = readTakeText(
        bodyTake("P,null,P,P", R"(,"future":{"a":[1,{"b":null}]},"comment":"x")"), "t.json");
    EXPECT_EQ(take.recordStartTime, 0);
    EXPECT_EQ(take.userComment, "");
    EXPECT_TRUE(take.hasBody);
    EXPECT_EQ(take.firstFrame, 0);
    EXPECT_EQ(take.frameCount(), 4);
    EXPECT_FALSE(take.nullPose.has_value());
    EXPECT_FALSE(take.frames[1].has_value());
    EXPECT_TRUE(take.isProp(23));
    EXPECT_FALSE(take.isProp(22));
    EXPECT_TRUE(take.fingerNames[0].empty());
    const TakePose& third = *take.frames[3];
    EXPECT_TRUE(third.valid);
    EXPECT_EQ(third.frameTime, 13);  // round(3 * 1000 / 240) = round(12.5)
    EXPECT_EQ(take.frames[2]->frameTime, 8);
    EXPECT_EQ(third.absoluteTime, 13);
    EXPECT_EQ(third.poseOffset, (std::array<int32_t, 2>{0, 0}));
    EXPECT_FALSE(third.hasFingers());

    const Take timed = readTakeText(
        bodyTake("P", R"(,"recordStartTime":"2026-04-30T14:03:12.250+02:00","props":[5])"),
        "t.json");
    EXPECT_EQ(timed.recordStartTime, 1777550592250);
    EXPECT_EQ(timed.recordStartUtcOffset, 7200);
    EXPECT_EQ(timed.frames[0]->absoluteTime, 1777550592250);
    EXPECT_TRUE(timed.isProp(5));
    EXPECT_FALSE(timed.isProp(23));
}

TEST(JsonTakeReader, NamesFileFrameAndFieldOfABadTake) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "t.json: expected '{' (a take is one JSON object) (line 1, column 1)"},
        {R"({"format":"zavo-take",)", "t.json: expected a string (line 1, column 23)"},
        {R"({"format":"other"})",
         "t.json: format: expected \"zavo-take\", found \"other\" (line 1, column 18)"},
        {R"({"version":2})",
         "t.json: version: version 2 is not supported (this program reads version 1) (line 1, "
         "column 13)"},
        {R"({"format":"zavo-take","version":1,"frameRate":0})",
         "t.json: frameRate: expected a number above 0 (line 1, column 48)"},
        {R"({"format":"zavo-take","version":1,"segmentNames":[],"frames":[]})",
         "t.json: missing field frameRate"},
        {R"({"recordStartTime":"2026-04-30T14:03:12"})",
         "t.json: recordStartTime: expected an ISO 8601 time with a zone, such as "
         "2026-04-30T14:03:12.250Z, found \"2026-04-30T14:03:12\" (line 1, column 41)"},
        {"{\"frames\":[null,\n{\"segments\":[[0,0,1,1,0,0,0],[0,0,1,1,0,0]]}]}",
         "t.json: frames[1].segments[1]: expected 7 numbers, found 6 (line 2, column 43)"},
        {R"({"frames":[{"segments":[[0,0,1,1,0,0,"x"]]}]})",
         "t.json: frames[0].segments[0]: expected a number (line 1, column 38)"},
        {R"({"frames":[{"valid":true}]})",
         "t.json: frames[0]: missing field segments (line 1, column 26)"},
        {R"({"frames":[{"fingers":{"left":[)" + list("[0,0,0,1,0,0,0]", 19) + "]}}]}",
         "t.json: frames[0].fingers.left: expected 20 finger poses, found 19 (line 1, column 336)"},
        {"{\"userComment\":\"a\x01\"}",
         "t.json: userComment: control character in a string (line 1, column 18)"},
        {R"({"userComment":"\q"})", "t.json: userComment: invalid escape \\q (line 1, column 19)"},
        {bodyTake("P") + "x",
         "t.json: unexpected text after the end of the take (line 1, column 590)"},
        {bodyTake("P,P", R"(,"segmentNames":["a"],"hasBody":false)"),
         "t.json: frames[0].segments: expected 1 segments (one per segment name), found 23"},
        {bodyTake("P", R"(,"props":[23])"), "t.json: props[0]: no segment 23"},
        {bodyTake("P", R"(,"joints":[{"parent":10,"child":30}])"),
         "t.json: joints[0]: segment out of range 0 to 22"},
        {bodyTake("P", R"(,"firstFrame":1)"), "t.json: frames: no frame from firstFrame 1 on"},
        {bodyTake("P,null,null", R"(,"firstFrame":1)"),
         "t.json: frames: every frame from firstFrame 1 on is null"},
        {bodyTake("P", R"(,"segmentNames":["a"])"),
         "t.json: segmentNames: a take with a body needs the 23 body segments, found 1"},
        {bodyTake("P", names({{5, "S2"}})),
         "t.json: segmentNames[5]: \"S2\" is also segmentNames[2]"},
        {bodyTake("P", names({{3, "Spine\\nx"}})),
         "t.json: segmentNames[3]: a name must not hold control characters (line breaks, NUL)"},
        {bodyTake("P", names({{22, "Toe\\u0000"}})),
         "t.json: segmentNames[22]: a name must not hold control characters (line breaks, NUL)"},
        {bodyTake("P", R"(,"fingerSegmentNames":{"left":[)" + list("\"F\"", 19) +
                           R"(,"F\r"],"right":[)" + list("\"F\"", 20) + "]}"),
         "t.json: fingerSegmentNames.left[19]: a name must not hold control characters (line "
         "breaks, NUL)"},
    };
    for (const auto& [text, message] : cases) {
        try {
            readTakeText(text, "t.json");
            ADD_FAILURE() << "accepted: " << text;
        } catch (const TakeError& error) {
            EXPECT_EQ(error.what(), message) << text;
        }
    }
}

TEST(JsonTakeReader, RefusesEveryNumberJsonDoesNotSpell) {
    for (const std::string number : {"nan", "NaN", "-nan", "inf", "-inf", "Infinity", "+1", "01",
                                     "-01", ".5", "1.", "1e", "1e+", "0x10", "--1"}) {
        try {
            readTakeText(R"({"frameRate":)" + number + "}", "t.json");
            ADD_FAILURE() << "accepted " << number;
        } catch (const TakeError& error) {
            EXPECT_EQ(error.what(), "t.json: frameRate: expected a JSON number, found " + number +
                                        " (line 1, column 14)");
        }
    }
    // Spellings JSON allows, the unusual ones included.
    for (const std::string number : {"0.5e-3", "1E2", "1e+0", "240"})
        EXPECT_NO_THROW(readTakeText(bodyTake("P", R"(,"frameRate":)" + number), "t.json"))
            << number;
}
