#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "bvhclip.h"
#include "bvhtake.h"
#include "takeerror.h"

namespace {

const std::string dataDir = ZAVO_BVH_DATA_DIR;

std::string clipText(const char* name) {
    std::ifstream file(dataDir + "/" + name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void expectNear(takemath::Vec3 a, takemath::Vec3 b, double tolerance = 1e-9) {
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

int jointIndex(const BvhClip& clip, const std::string& name) {
    for (size_t j = 0; j < clip.joints.size(); ++j)
        if (clip.joints[j].name == name) return static_cast<int>(j);
    return -1;
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

TEST(BvhReader, TakeUsesHostAxesMetresAndTheRestPoseAsNullPose) {
    const Take take = takeFromBvh(parseBvh(smallClip, "small.bvh"), 0.01);
    EXPECT_DOUBLE_EQ(take.frameRate, 1.0 / 0.0083333);
    EXPECT_EQ(take.recordStartTime, 0);
    ASSERT_EQ(take.frames.size(), 2u);
    EXPECT_EQ(take.frames[1]->frameTime, 8);
    // BVH (x, y, z) in centimetres becomes host (z, x, y) in metres.
    const auto& pelvis = take.frames[0]->segments[0];
    EXPECT_NEAR(pelvis.position[0], 0.03, 1e-12);
    EXPECT_NEAR(pelvis.position[1], 0.01, 1e-12);
    EXPECT_NEAR(pelvis.position[2], 0.02, 1e-12);
    const auto& rest = take.nullPose->segments[1];  // Spine at rest
    EXPECT_NEAR(rest.position[2], 0.15, 1e-12);
    EXPECT_EQ(rest.orientation, (std::array<double, 4>{1, 0, 0, 0}));
    // A finger name gives the take finger data; fingers without a joint follow their parent.
    ASSERT_TRUE(take.frames[0]->hasFingers());
    EXPECT_EQ(take.fingerNames[0][2], "LeftHandThumb2");
    const TakePose& frame = *take.frames[0];
    EXPECT_EQ(frame.finger(0, 3).position, frame.finger(0, 2).position);
    EXPECT_EQ(frame.finger(0, 1).position, frame.segments[14].position);
    EXPECT_EQ(frame.segments[14].position, frame.segments[1].position);
}

TEST(BvhReader, ReadsTheRealClipsAndMatchesJointsByName) {
    ASSERT_TRUE(std::filesystem::is_directory(dataDir)) << "no clips in " << dataDir;
    const BvhClip walk = readBvhFile(dataDir + "/cmu_02_01_walk.bvh");
    const BvhClip run = parseBvh(clipText("cmu_02_03_run.bvh"), "run.bvh");
    const BvhClip alt = readBvhFile(dataDir + "/cmu_131_01_walk_alt_names.bvh");
    for (const BvhClip* clip : {&walk, &run, &alt}) {
        EXPECT_EQ(clip->joints.size(), 31u);
        EXPECT_EQ(clip->channelCount, 96);
    }
    EXPECT_EQ(walk.frameCount, 343);
    EXPECT_EQ(run.frameCount, 173);
    EXPECT_EQ(alt.frameCount, 994);

    const BvhBodyMap walkMap = mapBvhJoints(walk);
    EXPECT_EQ(std::count(walkMap.matched.begin(), walkMap.matched.end(), true), 21);
    EXPECT_FALSE(walkMap.matched[3]);
    EXPECT_EQ(walkMap.segmentJoint[4], jointIndex(walk, "Spine1"));
    EXPECT_TRUE(walkMap.hasFingers);  // LeftHandIndex1 carries a finger name
    EXPECT_EQ(walkMap.fingerJoint[0][5], jointIndex(walk, "LeftHandIndex1"));
    EXPECT_EQ(walkMap.fingerJoint[0][1], jointIndex(walk, "LeftHand"));

    const BvhBodyMap runMap = mapBvhJoints(run);
    EXPECT_EQ(runMap.segmentJoint[0], 0);  // "hip": the root is the pelvis whatever its name
    EXPECT_EQ(runMap.segmentJoint[6], jointIndex(run, "head"));
    EXPECT_EQ(runMap.segmentJoint[14], 0);
    EXPECT_FALSE(runMap.hasFingers);

    const BvhBodyMap altMap = mapBvhJoints(alt);
    EXPECT_EQ(altMap.segmentJoint[11], jointIndex(alt, "LeftShoulder"));  // the upper arm
    EXPECT_EQ(altMap.segmentJoint[12], jointIndex(alt, "LeftShoulder"));
}

TEST(BvhReader, ReportsMalformedFilesWithTheirLine) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "b.bvh: line 1: expected HIERARCHY, found the end of the file"},
        {"HIERARCHY\nROOT Hips\n{\nCHANNELS 0\n}",
         "b.bvh: line 4: expected OFFSET, found 'CHANNELS'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Wrotation\n}",
         "b.bvh: line 5: expected a channel name such as Zrotation, found 'Wrotation'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n",
         "b.bvh: line 6: expected JOINT, End Site or '}', found the end of the file"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0\nCHANNELS 0\n}",
         "b.bvh: line 5: expected a number, found 'CHANNELS'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n}\nMOTION\nFrames: 2\n"
         "Frame Time: 0\n1\n2\n",
         "b.bvh: line 9: expected a frame time above 0, found '0'"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n}\nMOTION\nFrames: 2\n"
         "Frame Time: 0.1\n1\n2\n3\n",
         "b.bvh: line 12: more frames than the 2 that Frames: announces"},
        {"HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 1 Xrotation\n}\nMOTION\nFrames: 2\n"
         "Frame Time: 0.1\n1 x\n",
         "b.bvh: line 10: frame 0: expected a number"},
        {clipText("cmu_02_03_run.bvh").substr(0, clipText("cmu_02_03_run.bvh").size() - 300),
         "b.bvh: line 360: frame 172: expected 96 numbers, found 59"},
    };
    for (const auto& [text, message] : cases) {
        try {
            parseBvh(text, "b.bvh");
            ADD_FAILURE() << "accepted: " << message;
        } catch (const TakeError& error) {
            EXPECT_EQ(error.what(), message) << text.substr(0, 200);
        }
    }
    EXPECT_THROW(readBvhFile("/nonexistent/clip.bvh"), TakeError);
}
