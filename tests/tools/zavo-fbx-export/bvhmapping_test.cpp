// How BVH clips meet the host's body: their frame rate, their joint names, and what folding
// joints without a segment of their own costs the Skeleton preset.
#include <gtest/gtest.h>

#include <cstdlib>

#include "bvhfolding.h"
#include "bvhframerate.h"
#include "bvhtake.h"

namespace {

const std::string dataDir = ZAVO_BVH_DATA_DIR;

int jointIndex(const BvhClip& clip, const std::string& name) {
    for (size_t j = 0; j < clip.joints.size(); ++j)
        if (clip.joints[j].name == name) return static_cast<int>(j);
    return -1;
}

BvhClip clipWithFrameTime(const std::string& text) {
    BvhClip clip;
    clip.frameTimeText = text;
    clip.frameTime = std::strtod(text.c_str(), nullptr);
    return clip;
}

}  // namespace

TEST(BvhFrameRate, TakesTheStandardRateAFrameTimeIsRoundedFrom) {
    struct Case {
        const char* frameTime;
        double rate;
        bool standard;
    };
    const Case cases[] = {
        {"0.008333", 120, true},
        {".0083333", 120, true},
        {"0.033333", 30, true},
        {"8.333e-3", 120, true},
        {"0.0083", 120, true},  // 119.88 rounds there too; 120 lies nearer
        {"0.00834167", 120000.0 / 1001.0, true},
        {"0.01668", 60000.0 / 1001.0, true},
        {"0.041708", 24000.0 / 1001.0, true},
        {"0.04", 25, true},
        {"0.0083334", 1 / 0.0083334, false},  // 1/120 prints 0.0083333 at this precision
        {"0.0125", 80, false},
        {"100000", 1e-5, false},
        {"1e-7", 1e7, false},
    };
    for (const Case& c : cases) {
        const BvhFrameRate rate = bvhFrameRate(clipWithFrameTime(c.frameTime));
        EXPECT_DOUBLE_EQ(rate.rate, c.rate) << c.frameTime;
        EXPECT_EQ(rate.standard, c.standard) << c.frameTime;
    }
}

TEST(BvhNaming, ReadsEachRealClipInTheSchemeThatKnowsItsNames) {
    const BvhClip walk = readBvhFile(dataDir + "/cmu_02_01_walk.bvh");
    const BvhClip run = readBvhFile(dataDir + "/cmu_02_03_run.bvh");
    const BvhClip alt = readBvhFile(dataDir + "/cmu_131_01_walk_alt_names.bvh");
    for (const BvhClip* clip : {&walk, &run, &alt}) {
        EXPECT_EQ(clip->joints.size(), 31u);
        EXPECT_EQ(clip->channelCount, 96);
    }
    EXPECT_EQ(walk.frameCount, 343);
    EXPECT_EQ(run.frameCount, 173);
    EXPECT_EQ(alt.frameCount, 994);
    EXPECT_EQ(alt.frameTimeText, ".0083333");
    EXPECT_EQ(alt.joints[19].name, "LeftElbow");
    EXPECT_EQ(alt.joints[19].channels[1], BvhChannel::XRotation);  // per-joint channel order

    const BvhBodyMap walkMap = mapBvhJoints(walk);
    EXPECT_EQ(walkMap.scheme, "CMU");
    // The spine moves up a segment; the lower neck turns the chest segment the arms hang from.
    const char* const spine[] = {"Hips", "LowerBack", "Spine", "Spine1", "Neck", "Neck1", "Head"};
    for (int s = 0; s < 7; ++s) EXPECT_EQ(walkMap.segmentJoint[s], jointIndex(walk, spine[s]));
    EXPECT_EQ(walkMap.segmentJoint[11], jointIndex(walk, "LeftShoulder"));
    EXPECT_EQ(walkMap.segmentJoint[18], jointIndex(walk, "RightToeBase"));
    ASSERT_TRUE(walkMap.hasFingers);
    EXPECT_EQ(walkMap.fingerJoint[0][5], jointIndex(walk, "LeftFingerBase"));
    EXPECT_EQ(walkMap.fingerJoint[0][6], jointIndex(walk, "LeftHandIndex1"));
    EXPECT_EQ(walkMap.fingerJoint[1][1], jointIndex(walk, "RThumb"));
    EXPECT_EQ(walkMap.fingerJoint[1][9], jointIndex(walk, "RightHand"));  // follows the hand

    const BvhBodyMap runMap = mapBvhJoints(run);
    EXPECT_EQ(runMap.scheme, "CMU motion-capture names");
    EXPECT_EQ(runMap.segmentJoint[0], 0);  // "hip": the root is the pelvis whatever its name
    EXPECT_EQ(runMap.segmentJoint[4], jointIndex(run, "lowerneck"));
    EXPECT_EQ(runMap.segmentJoint[12], jointIndex(run, "lhumerus"));
    EXPECT_EQ(runMap.segmentJoint[15], jointIndex(run, "rfemur"));

    // Here LeftShoulder is the upper arm and LeftCollar the collarbone.
    const BvhBodyMap altMap = mapBvhJoints(alt);
    EXPECT_EQ(altMap.scheme, "CMU alternative names");
    EXPECT_EQ(altMap.segmentJoint[11], jointIndex(alt, "LeftCollar"));
    EXPECT_EQ(altMap.segmentJoint[12], jointIndex(alt, "LeftShoulder"));
    EXPECT_EQ(altMap.segmentJoint[5], jointIndex(alt, "Neck"));

    // Default names with a stray joint of another scheme stay default.
    BvhClip mixed;
    for (const char* name : {"Hips", "Spine", "Spine1", "Spine2", "LThumb", "Neck"})
        mixed.joints.push_back({name, static_cast<int>(mixed.joints.size()) - 1, {}, {}, 0});
    const BvhBodyMap mixedMap = mapBvhJoints(mixed);
    EXPECT_EQ(mixedMap.scheme, "default");
    EXPECT_EQ(mixedMap.segmentJoint[1], 1);
    EXPECT_EQ(mixedMap.segmentJoint[5], 5);
    EXPECT_FALSE(mixedMap.hasFingers);
}

// A folded joint that turns carries the bone below it off the rebuilt skeleton.
TEST(BvhFolding, MeasuresWhatAFoldedJointCostsTheJointsBelowIt) {
    const BvhClip clip = parseBvh(
        "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 3 Xposition Yposition Zposition\n"
        "JOINT Twist\n{\nOFFSET 0 0 0\nCHANNELS 1 Zrotation\nJOINT Spine\n{\nOFFSET 0 10 0\n"
        "CHANNELS 0\nEnd Site\n{\nOFFSET 0 1 0\n}\n}\n}\n}\n"
        "MOTION\nFrames: 3\nFrame Time: 0.1\n0 0 0 0\n5 0 0 90\n0 0 0 45\n",
        "twist.bvh");
    const BvhFolding folding = measureBvhFolding(clip, mapBvhJoints(clip), 0.01);
    EXPECT_EQ(folding.foldedJoints, std::vector<int>{1});
    EXPECT_EQ(folding.standIn, (std::vector<int>{0, 0, 1}));
    EXPECT_NEAR(folding.worstError, 0.1 * std::sqrt(2.0), 1e-12);
    EXPECT_EQ(folding.worstJoint, 2);
    EXPECT_EQ(folding.worstFrame, 1);
    EXPECT_EQ(bvhStandInName(folding.standIn[2]), "Spine");
    EXPECT_EQ(bvhStandInName(206), "RightHandIndex2");
}
