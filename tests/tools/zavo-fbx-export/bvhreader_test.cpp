#include <gtest/gtest.h>

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
    for (const auto& [text, message] : cases) {
        try {
            parseBvh(text, "b.bvh");
            ADD_FAILURE() << "accepted: " << message;
        } catch (const TakeError& error) {
            EXPECT_EQ(error.what(), "b.bvh: " + message) << text.substr(0, 200);
        }
    }
    EXPECT_THROW(readBvhFile("/nonexistent/clip.bvh"), TakeError);
}
