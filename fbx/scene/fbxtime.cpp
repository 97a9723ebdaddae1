#include "fbx/scene/fbxtime.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

struct TimeModeRow {
    double rate;
    const char* shortName;
    FbxTime::EMode mode;
    int oldMode;
    const char* name;
    int protocol;
    FbxLongLong ticksPerFrame;
};

// Indexed by mode; row 0 is never read (eDefaultMode resolves to 30 fps) and row
// 7 is a mode without a rate. The custom row has no rate of its own: each
// caller passes the rate of its run, so no run sees another's.
constexpr TimeModeRow gTimeModeList[FbxTime::eModesCount] = {
    {0.0, "", FbxTime::eDefaultMode, 0, "", 3, 0},
    {120.0, "120", FbxTime::eFrames120, 8, "120 fps", 3, 1176000},
    {100.0, "100", FbxTime::eFrames100, 7, "100 fps", 3, 1411200},
    {60.0, "60", FbxTime::eFrames60, 6, "60 fps", 3, 2352000},
    {50.0, "50", FbxTime::eFrames50, 5, "50 fps", 3, 2822400},
    {48.0, "48", FbxTime::eFrames48, 0, "48 fps", 3, 2940000},
    {30.0, "30", FbxTime::eFrames30, 3, "30 fps", 3, 4704000},
    {0.0, "", FbxTime::eFrames30Drop, 0, "", 3, 0},
    {30000.0 / 1001.0, "29.97 drop", FbxTime::eNTSCDropFrame, 4, "NTSC Drop", 3, 4708704},
    {30000.0 / 1001.0, "29.97 full", FbxTime::eNTSCFullFrame, 9, "NTSC Full", 3, 4708704},
    {25.0, "25", FbxTime::ePAL, 2, "PAL", 3, 5644800},
    {24.0, "24", FbxTime::eFrames24, 1, "24 fps", 3, 5880000},
    {1000.0, "1000", FbxTime::eFrames1000, 11, "1000 fps", 0, 141120},
    {24000.0 / 1001.0, "23.976", FbxTime::eFilmFullFrame, 0, "23.976 fps", 3, 5885880},
    {0.0, "", FbxTime::eCustom, 0, "Custom", 3, 0},
    {96.0, "96", FbxTime::eFrames96, 0, "96 fps", 3, 1470000},
    {72.0, "72", FbxTime::eFrames72, 0, "72 fps", 3, 1960000},
    {60000.0 / 1001.0, "59.94", FbxTime::eFrames59dot94, 0, "59.94 fps", 3, 2354352},
    {120000.0 / 1001.0, "119.88", FbxTime::eFrames119dot88, 0, "119.88 fps", 3, 1177176},
};

constexpr FbxTime::EMode kDefaultTimeMode = FbxTime::eFrames30;
int gTimeCodeDefinition = 127;

// The row a mode stands for; nullptr for numbers outside the table.
const TimeModeRow* RowOf(FbxTime::EMode mode) {
    if (mode == FbxTime::eDefaultMode) {
        mode = kDefaultTimeMode;
    }
    if (mode <= FbxTime::eDefaultMode || mode >= FbxTime::eModesCount) {
        return nullptr;
    }
    return &gTimeModeList[mode];
}

bool IsUsableRate(double rate) {
    return std::isfinite(rate) && rate > 0.0;
}

// One custom frame is a whole number of ticks, truncated; a rate so low that a frame would
// not fit the tick count has no frame length.
FbxLongLong TicksPerFrame(const TimeModeRow& row, double customRate) {
    if (row.mode != FbxTime::eCustom) {
        return row.ticksPerFrame;
    }
    if (!IsUsableRate(customRate)) {
        return 0;
    }
    const double ticks = static_cast<double>(FBX_TC_SECOND) / customRate;
    return ticks < 9.0e18 ? static_cast<FbxLongLong>(ticks) : 0;
}

bool IsMarker(FbxLongLong ticks) {
    return ticks == 0 || ticks == FBX_TC_INFINITY || ticks == FBX_TC_MINUS_INFINITY;
}

// Magnitude of a tick count; defined for the smallest 64-bit value too.
FbxULongLong Magnitude(FbxLongLong ticks) {
    return ticks < 0 ? 0 - static_cast<FbxULongLong>(ticks) : static_cast<FbxULongLong>(ticks);
}

FbxLongLong WithSignOf(FbxLongLong ticks, FbxULongLong magnitude) {
    return static_cast<FbxLongLong>(ticks < 0 ? 0 - magnitude : magnitude);
}

}  // namespace

void FbxTime::SetSecondDouble(double seconds) {
    const double ticks = seconds * static_cast<double>(FBX_TC_SECOND);
    mTime = static_cast<FbxLongLong>(ticks < 0.0 ? ticks - 0.005 : ticks + 0.005);
}

double FbxTime::GetSecondDouble() const {
    return static_cast<double>(mTime) / static_cast<double>(FBX_TC_SECOND);
}

void FbxTime::SetTime(int hour, int minute, int second, int frame, int field, EMode mode,
                      double customRate) {
    const FbxLongLong oneFrame = GetOneFrameValue(mode, customRate);
    mTime = hour * FBX_TC_HOUR + minute * FBX_TC_MINUTE + second * FBX_TC_SECOND +
            frame * oneFrame + field * (oneFrame / 2);
}

void FbxTime::SetFrame(FbxLongLong frame, EMode mode, double customRate) {
    mTime = frame * GetOneFrameValue(mode, customRate);
}

void FbxTime::SetFramePrecise(double frame, EMode mode, double customRate) {
    mTime =
        static_cast<FbxLongLong>(frame * static_cast<double>(GetOneFrameValue(mode, customRate)));
}

FbxLongLong FbxTime::GetFrameCount(EMode mode, double customRate) const {
    const FbxLongLong oneFrame = GetOneFrameValue(mode, customRate);
    return oneFrame ? mTime / oneFrame : 0;
}

double FbxTime::GetFrameCountPrecise(EMode mode, double customRate) const {
    const FbxLongLong oneFrame = GetOneFrameValue(mode, customRate);
    return oneFrame ? static_cast<double>(mTime) / static_cast<double>(oneFrame) : 0.0;
}

FbxLongLong FbxTime::GetOneFrameValue(EMode mode, double customRate) {
    const TimeModeRow* row = RowOf(mode);
    return row ? TicksPerFrame(*row, customRate) : 0;
}

double FbxTime::GetFrameRate(EMode mode, double customRate) {
    const TimeModeRow* row = RowOf(mode);
    if (row && row->mode == eCustom) {
        return IsUsableRate(customRate) ? customRate : 0.0;
    }
    return row ? row->rate : 0.0;
}

FbxTime::EMode FbxTime::ConvertFrameRateToTimeMode(double rate, double precision) {
    for (int m = eFrames120; m < eModesCount; ++m) {
        if (m == eCustom) {
            continue;
        }
        const double r = gTimeModeList[m].rate;
        if (r - precision <= rate && rate <= r + precision) {
            return static_cast<EMode>(m);
        }
    }
    return eDefaultMode;
}

FbxTime FbxTimeSpan::GetDuration() const {
    return mStop >= mStart ? mStop - mStart : mStart - mStop;
}

bool FbxTimeSpan::IsInside(FbxTime time) const {
    return mStop >= mStart ? (time >= mStart && time <= mStop) : (time >= mStop && time <= mStart);
}

void FbxTimeSpan::UnionAssignment(const FbxTimeSpan& other) {
    const FbxTime lo = std::min({mStart, mStop, other.mStart, other.mStop});
    const FbxTime hi = std::max({mStart, mStop, other.mStart, other.mStop});
    Set(lo, hi);
}

int FbxTCGetDefinition() {
    return gTimeCodeDefinition;
}

void FbxTCSetDefinition(int definition) {
    gTimeCodeDefinition = definition;
}

FbxLongLong FbxTCToLegacy(FbxLongLong ticks) {
    if (IsMarker(ticks)) {
        return ticks;
    }
    // Split into hours, minutes and seconds so no product leaves 64 bits. The
    // legacy unit counts whole seconds in 32 bits, so times past about 68 years
    // wrap; unsigned arithmetic keeps the wrap defined.
    const FbxULongLong a = Magnitude(ticks);
    const FbxULongLong hours = a / FBX_TC_HOUR;
    FbxULongLong rest = a % FBX_TC_HOUR;
    const FbxULongLong minutes = rest / FBX_TC_MINUTE;
    rest %= FBX_TC_MINUTE;
    const FbxULongLong seconds = rest / FBX_TC_SECOND;
    const FbxULongLong r = rest % FBX_TC_SECOND;
    const auto wholeSeconds = static_cast<std::int32_t>(hours * 3600 + minutes * 60 + seconds);
    const FbxULongLong legacy =
        static_cast<FbxULongLong>(FbxLongLong{wholeSeconds}) * FBX_TC_LEGACY_SECOND +
        (r * 46186158ULL) / 141120ULL;
    return WithSignOf(ticks, legacy);
}

FbxLongLong FbxTCFromLegacy(FbxLongLong legacyTicks) {
    if (IsMarker(legacyTicks)) {
        return legacyTicks;
    }
    const FbxULongLong a = Magnitude(legacyTicks);
    const FbxULongLong seconds = a / FBX_TC_LEGACY_SECOND;
    const FbxULongLong r = a % FBX_TC_LEGACY_SECOND;
    return WithSignOf(legacyTicks, seconds * FBX_TC_SECOND + (r * 141120ULL) / 46186158ULL);
}

bool FbxIsValidCustomFrameRate(double rate) {
    if (rate < 1.0) {
        return false;
    }
    const double ticks = (1000.0 / rate) * static_cast<double>(FBX_TC_MILLISECOND);
    return ticks == std::floor(ticks);
}

const char* FbxGetTimeModeName(FbxTime::EMode mode) {
    const TimeModeRow* row = RowOf(mode);
    return row ? row->name : "";
}

const char* FbxGetGlobalFrameRateString(FbxTime::EMode mode) {
    const TimeModeRow* row = RowOf(mode);
    return row ? row->shortName : "";
}

const char* FbxGetGlobalTimeModeString(FbxTime::EMode mode) {
    return FbxGetTimeModeName(mode);
}

double FbxGetFrameRate(FbxTime::EMode mode, double customRate) {
    return FbxTime::GetFrameRate(mode, customRate);
}

int FbxGetOldTimeModeValue(FbxTime::EMode mode) {
    const TimeModeRow* row = RowOf(mode);
    return row ? row->oldMode : 0;
}
