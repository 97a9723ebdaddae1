#include "fbx/scene/fbxtime.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace {

TEST(FbxTimeTest, TickArithmeticIsExact) {
    FbxTime t;
    // Half a tick and more rounds away from zero.
    for (auto [seconds, ticks] : {std::pair{1.0, 141120000LL},
                                  {-0.5, -70560000LL},
                                  {0.996 / 141120000.0, 1LL},
                                  {-0.996 / 141120000.0, -1LL}}) {
        t.SetSecondDouble(seconds);
        EXPECT_EQ(t.Get(), ticks) << seconds;
    }
    t.SetMilliSeconds(-1500);
    EXPECT_EQ(t.Get(), -1500 * 141120);
    EXPECT_EQ(t.GetMilliSeconds(), -1500);
    t.SetTime(1, 2, 3, 4, 0, FbxTime::eFrames120);
    EXPECT_EQ(t.Get(), 3723LL * 141120000 + 4 * 1176000);
    EXPECT_EQ(t.GetFrameCount(FbxTime::eFrames120), 3723LL * 120 + 4);
    EXPECT_DOUBLE_EQ(FbxTime(70560000).GetSecondDouble(), 0.5);
}

// The irregular frame lengths and their rate names; the rest follow from the rate.
TEST(FbxTimeTest, FrameLengthsAndRateNames) {
    const struct {
        FbxTime::EMode mode;
        FbxLongLong ticks;
        const char* rate;
    } rows[] = {
        {FbxTime::eFrames120, 1176000, "120"},
        {FbxTime::eFrames30Drop, 0, ""},
        {FbxTime::eNTSCDropFrame, 4708704, "29.97 drop"},
        {FbxTime::ePAL, 5644800, "25"},
        {FbxTime::eFilmFullFrame, 5885880, "23.976"},
        {FbxTime::eFrames119dot88, 1177176, "119.88"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rate);
        EXPECT_EQ(FbxTime::GetOneFrameValue(row.mode), row.ticks);
        EXPECT_STREQ(FbxGetGlobalFrameRateString(row.mode), row.rate);
        FbxTime t;
        t.SetFrame(1000, row.mode);
        EXPECT_EQ(t.Get(), 1000 * row.ticks);
    }
    EXPECT_EQ(FbxTime::GetOneFrameValue(static_cast<FbxTime::EMode>(42)), 0);
}

TEST(FbxTimeTest, ModeLookupTakesLowestMatchingMode) {
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(29.97, 0.01), FbxTime::eNTSCDropFrame);
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(119.88, 0.2), FbxTime::eFrames120);
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(119.88, 0.01), FbxTime::eFrames119dot88);
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(60000.0 / 1001.0), FbxTime::eFrames59dot94);
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(31.0, 0.5), FbxTime::eDefaultMode);
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(240.0), FbxTime::eDefaultMode);
    // The bounds are inclusive.
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(24.5, 0.5), FbxTime::ePAL);
}

TEST(FbxTimeTest, LegacyTicks) {
    EXPECT_EQ(FbxTCToLegacy(141120000), 46186158000LL);
    EXPECT_EQ(FbxTCToLegacy(-141120000), -46186158000LL);
    EXPECT_EQ(FbxTCToLegacy(FBX_TC_INFINITY), FBX_TC_INFINITY);
    EXPECT_EQ(FbxTCToLegacy(FBX_TC_MINUS_INFINITY), FBX_TC_MINUS_INFINITY);
    // One frame at 120 fps, exact in both units.
    EXPECT_EQ(FbxTCToLegacy(1176000), 384884650);
    // Below the second the conversion truncates: one tick is 327.28... legacy ticks.
    EXPECT_EQ(FbxTCToLegacy(1), 327);
    EXPECT_EQ(FbxTCToLegacy(-1), -327);
    // Ten hours plus a frame: the split keeps the products inside 64 bits.
    const FbxLongLong tenHours = 10 * FBX_TC_HOUR + 1176000;
    EXPECT_EQ(FbxTCToLegacy(tenHours), 36000LL * 46186158000LL + 384884650);
    EXPECT_EQ(FbxTCFromLegacy(FbxTCToLegacy(tenHours)), tenHours);
    // Whole seconds are a 32-bit count: 2^32 + 1 seconds wrap to one second.
    EXPECT_EQ(FbxTCToLegacy(((1LL << 32) + 1) * FBX_TC_SECOND), 46186158000LL);
    EXPECT_EQ(FbxTCToLegacy(-((1LL << 32) + 1) * FBX_TC_SECOND), -46186158000LL);
    EXPECT_EQ(FbxTCGetDefinition(), 127);
}

// The custom mode takes the caller's rate, whatever it is, and forgets it afterwards.
TEST(FbxTimeTest, CustomModeUsesTheGivenRate) {
    const struct {
        double rate;
        FbxLongLong ticks;
    } rows[] = {
        {240.0, 588000},
        {12.5, 11289600},
        {119.88, 1177177},
        {120.0005, 1175995},
        {7.0, 20160000},
        {0.5, 282240000},
        {1e-12, 0},
        {0.0, 0},
        {-30.0, 0},
        {std::numeric_limits<double>::quiet_NaN(), 0},
        {std::numeric_limits<double>::infinity(), 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rate);
        EXPECT_EQ(FbxTime::GetOneFrameValue(FbxTime::eCustom, row.rate), row.ticks);
        FbxTime t;
        t.SetTime(0, 0, 1, 3, 0, FbxTime::eCustom, row.rate);
        EXPECT_EQ(t.Get(), FBX_TC_SECOND + 3 * row.ticks);
    }
    EXPECT_DOUBLE_EQ(FbxTime::GetFrameRate(FbxTime::eCustom, 120.0005), 120.0005);
    EXPECT_EQ(FbxTime::GetOneFrameValue(FbxTime::eCustom), 0);
    EXPECT_EQ(FbxTime::ConvertFrameRateToTimeMode(12.5), FbxTime::eDefaultMode);
    // Without a mode of its own a time counts 30 fps frames.
    EXPECT_EQ(FbxTime::GetOneFrameValue(FbxTime::eDefaultMode), 4704000);
    EXPECT_FALSE(FbxIsValidCustomFrameRate(11.0));
    EXPECT_TRUE(FbxIsValidCustomFrameRate(240.0));
}

TEST(FbxTimeSpanTest, DirectionAndUnion) {
    FbxTimeSpan span(FbxTime(100), FbxTime(-50));
    EXPECT_EQ(span.GetDuration().Get(), 150);
    EXPECT_EQ(span.GetSignedDuration().Get(), -150);
    EXPECT_TRUE(span.IsInside(FbxTime(-50)));
    EXPECT_FALSE(span.IsInside(FbxTime(101)));
    span.UnionAssignment(FbxTimeSpan(FbxTime(300), FbxTime(200)));
    EXPECT_EQ(span, FbxTimeSpan(FbxTime(-50), FbxTime(300)));
}

// Each mode's names, rate and the mode number of the older files, and fractional frames.
TEST(FbxTimeTest, ModeNamesRatesAndFractionalFrames) {
    const struct {
        FbxTime::EMode mode;
        const char* name;
        double rate;
        int oldMode;
    } rows[] = {
        {FbxTime::eDefaultMode, "30 fps", 30.0, 3},
        {FbxTime::eFrames120, "120 fps", 120.0, 8},
        {FbxTime::eNTSCFullFrame, "NTSC Full", 30000.0 / 1001.0, 9},
        {FbxTime::eFrames1000, "1000 fps", 1000.0, 11},
        {FbxTime::eCustom, "Custom", 0.0, 0},
        {FbxTime::eFrames30Drop, "", 0.0, 0},
        {static_cast<FbxTime::EMode>(25), "", 0.0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_STREQ(FbxGetTimeModeName(row.mode), row.name);
        EXPECT_STREQ(FbxGetGlobalTimeModeString(row.mode), row.name);
        EXPECT_DOUBLE_EQ(FbxGetFrameRate(row.mode), row.rate);
        EXPECT_EQ(FbxGetOldTimeModeValue(row.mode), row.oldMode);
    }
    EXPECT_DOUBLE_EQ(FbxGetFrameRate(FbxTime::eCustom, 90.0), 90.0);

    FbxTime t;
    t.SetFramePrecise(2.5, FbxTime::eFrames60);
    EXPECT_EQ(t.Get(), 5880000);
    EXPECT_DOUBLE_EQ(t.GetFrameCountPrecise(FbxTime::eFrames60), 2.5);
    EXPECT_EQ(t.GetFrameCount(FbxTime::eFrames60), 2);
    t.SetFramePrecise(-0.5, FbxTime::eCustom, 100.0);
    EXPECT_EQ(t.Get(), -705600);
    EXPECT_DOUBLE_EQ(t.GetFrameCountPrecise(FbxTime::eCustom), 0.0);
}

}  // namespace
