#pragma once

#include "fbx/scene/fbxtypes.h"

// Tick units. A second is 141,120,000 ticks, divisible by every standard frame
// rate (including the NTSC rates through their 1001 factor), so frame times are
// exact integers.
inline constexpr FbxLongLong FBX_TC_MILLISECOND = 141120;
inline constexpr FbxLongLong FBX_TC_SECOND = FBX_TC_MILLISECOND * 1000;
inline constexpr FbxLongLong FBX_TC_MINUTE = FBX_TC_SECOND * 60;
inline constexpr FbxLongLong FBX_TC_HOUR = FBX_TC_MINUTE * 60;
inline constexpr FbxLongLong FBX_TC_DAY = FBX_TC_HOUR * 24;
// Older files count 46,186,158,000 ticks per second.
inline constexpr FbxLongLong FBX_TC_LEGACY_SECOND = 46186158000LL;
inline constexpr FbxLongLong FBX_TC_ZERO = 0;
inline constexpr FbxLongLong FBX_TC_INFINITY = INT64_MAX;
inline constexpr FbxLongLong FBX_TC_MINUS_INFINITY = INT64_MIN + 1;

// A point in time as a signed tick count.
class FbxTime {
public:
    // Numbering is stored in files; mode 7 exists but has no rate.
    enum EMode {
        eDefaultMode = 0,
        eFrames120,
        eFrames100,
        eFrames60,
        eFrames50,
        eFrames48,
        eFrames30,
        eFrames30Drop,
        eNTSCDropFrame,
        eNTSCFullFrame,
        ePAL,
        eFrames24,
        eFrames1000,
        eFilmFullFrame,
        eCustom,
        eFrames96,
        eFrames72,
        eFrames59dot94,
        eFrames119dot88,
        eModesCount
    };

    constexpr FbxTime(FbxLongLong ticks = 0) : mTime(ticks) {}

    constexpr FbxLongLong Get() const { return mTime; }
    constexpr void Set(FbxLongLong ticks) { mTime = ticks; }

    // Rounds to the nearest tick with the half-away-from-zero bias of 0.005.
    void SetSecondDouble(double seconds);
    double GetSecondDouble() const;
    void SetMilliSeconds(FbxLongLong ms) { mTime = ms * FBX_TC_MILLISECOND; }
    FbxLongLong GetMilliSeconds() const { return mTime / FBX_TC_MILLISECOND; }
    // The frame arguments below count frames of `mode`. The custom mode has no rate of its
    // own: `customRate` (finite and above 0) gives it, and without one a custom frame has no
    // length. eDefaultMode stands for 30 fps. `field` counts half frames.
    void SetTime(int hour, int minute, int second, int frame = 0, int field = 0,
                 EMode mode = eDefaultMode, double customRate = 0.0);
    void SetFrame(FbxLongLong frame, EMode mode = eDefaultMode, double customRate = 0.0);
    void SetFramePrecise(double frame, EMode mode = eDefaultMode, double customRate = 0.0);
    // Whole frames elapsed; 0 for a mode without a rate.
    FbxLongLong GetFrameCount(EMode mode = eDefaultMode, double customRate = 0.0) const;
    double GetFrameCountPrecise(EMode mode = eDefaultMode, double customRate = 0.0) const;
    // Ticks of one frame of the mode; a custom frame is 141,120,000 / customRate, truncated.
    static FbxLongLong GetOneFrameValue(EMode mode = eDefaultMode, double customRate = 0.0);
    static double GetFrameRate(EMode mode, double customRate = 0.0);
    // First standard mode whose rate lies within precision; eDefaultMode if none.
    static EMode ConvertFrameRateToTimeMode(double rate, double precision = 0.00000001);

    constexpr FbxTime& operator+=(const FbxTime& t) { return mTime += t.mTime, *this; }
    constexpr FbxTime& operator-=(const FbxTime& t) { return mTime -= t.mTime, *this; }
    friend constexpr FbxTime operator+(FbxTime a, FbxTime b) { return a += b; }
    friend constexpr FbxTime operator-(FbxTime a, FbxTime b) { return a -= b; }
    friend constexpr FbxTime operator-(FbxTime a) { return FbxTime(-a.mTime); }
    friend constexpr FbxTime operator*(FbxTime a, int k) { return FbxTime(a.mTime * k); }
    friend constexpr bool operator==(FbxTime a, FbxTime b) { return a.mTime == b.mTime; }
    friend constexpr auto operator<=>(FbxTime a, FbxTime b) { return a.mTime <=> b.mTime; }

private:
    FbxLongLong mTime;
};

inline constexpr FbxTime FBX_TIME_INFINITE{FBX_TC_INFINITY};
inline constexpr FbxTime FBX_TIME_MINUS_INFINITE{FBX_TC_MINUS_INFINITY};
inline constexpr FbxTime FBX_TIME_ZERO{0};
inline constexpr FbxTime FBX_TIME_ONE_SECOND{FBX_TC_SECOND};

// A start and a stop time. The stop may precede the start (a reversed span).
class FbxTimeSpan {
public:
    constexpr FbxTimeSpan() = default;
    constexpr FbxTimeSpan(FbxTime start, FbxTime stop) : mStart(start), mStop(stop) {}

    constexpr void Set(FbxTime start, FbxTime stop) { mStart = start, mStop = stop; }
    constexpr void SetStart(FbxTime start) { mStart = start; }
    constexpr void SetStop(FbxTime stop) { mStop = stop; }
    constexpr FbxTime GetStart() const { return mStart; }
    constexpr FbxTime GetStop() const { return mStop; }
    // Always non-negative, whatever the direction.
    FbxTime GetDuration() const;
    constexpr FbxTime GetSignedDuration() const { return mStop - mStart; }
    // Inclusive at both ends, for either direction.
    bool IsInside(FbxTime time) const;
    // Grows this span to cover other as well.
    void UnionAssignment(const FbxTimeSpan& other);

    friend constexpr bool operator==(const FbxTimeSpan&, const FbxTimeSpan&) = default;

private:
    FbxTime mStart;
    FbxTime mStop;
};

// Process-wide time-code definition (127 by default). With 127, times written
// to files use the legacy tick unit.
int FbxTCGetDefinition();
void FbxTCSetDefinition(int definition);
// Ticks to legacy ticks (46,186,158,000 per second), truncating below the
// second; 0 and the infinite markers pass unchanged. Whole seconds are a 32-bit
// count, so times beyond about 68 years wrap.
FbxLongLong FbxTCToLegacy(FbxLongLong ticks);
// Legacy ticks back to ticks, truncating; the inverse of FbxTCToLegacy on whole seconds.
FbxLongLong FbxTCFromLegacy(FbxLongLong legacyTicks);

// Whether a custom rate divides the second into frames of a whole number of ticks.
bool FbxIsValidCustomFrameRate(double rate);
// Display name of a mode ("120 fps", "NTSC Drop", "Custom"); "" for no row.
const char* FbxGetTimeModeName(FbxTime::EMode mode);
// Short rate text of a mode ("120", "29.97 drop"; "" for custom, whose rate is the run's).
const char* FbxGetGlobalFrameRateString(FbxTime::EMode mode);
const char* FbxGetGlobalTimeModeString(FbxTime::EMode mode);
double FbxGetFrameRate(FbxTime::EMode mode, double customRate = 0.0);
// The mode number the earlier file generation used for mode.
int FbxGetOldTimeModeValue(FbxTime::EMode mode);
