// Animation data of the FBX 7 writer: the key arrays of "AnimationCurve" records and the
// "Takes" section.
#include <algorithm>
#include <bit>

#include "fbx/io/fbxwriterfbx7impl.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxscene.h"

namespace {

// A key attribute shared by `count` consecutive keys.
struct AttributeRun {
    FbxAnimCurveKeyAttribute attribute;
    int32_t count;
};

// Runs over consecutive keys only: files record the attribute of each run of equal keys,
// not a table of distinct attributes.
std::vector<AttributeRun> CollectRuns(const FbxAnimCurve& curve) {
    std::vector<AttributeRun> runs;
    const int count = curve.KeyGetCount();
    for (int first = 0; first < count;) {
        const int run = curve.KeyGetAttributeRun(first);
        runs.push_back({curve.KeyGetAttribute(first), run});
        first += run;
    }
    return runs;
}

// The flag word spelled out for ASCII readers ("Cubic|TangeantAuto|GenericTimeIndependent").
std::string FlagNames(FbxUInt32 flags) {
    struct Name {
        FbxUInt32 mask;
        FbxUInt32 value;
        const char* text;
    };
    constexpr FbxUInt32 kInterpolation = FbxAnimCurveDef::kInterpolationMask;
    constexpr FbxUInt32 kConstant = FbxAnimCurveDef::eInterpolationConstant;
    constexpr FbxUInt32 kCubic = FbxAnimCurveDef::eInterpolationCubic;
    static constexpr Name kNames[] = {
        {kInterpolation, kConstant, "Constant"},
        {kInterpolation, FbxAnimCurveDef::eInterpolationLinear, "Linear"},
        {kInterpolation, kCubic, "Cubic"},
        {kInterpolation | 0x100, kConstant, "ConstantStandard"},
        {kInterpolation | 0x100, kConstant | 0x100, "ConstantNext"},
        {kInterpolation | 0x100, kCubic | 0x100, "TangeantAuto"},
        {kInterpolation | 0x200, kCubic | 0x200, "TangeantTCB"},
        {kInterpolation | 0x400, kCubic | 0x400, "TangeantUser"},
        {kInterpolation | 0x800, kCubic | 0x800, "GenericBreak"},
        {kInterpolation | 0x1000, kCubic | 0x1000, "GenericClamp"},
        {kInterpolation | 0x2000, kCubic | 0x2000, "GenericTimeIndependent"},
        {kInterpolation | 0x4000, kCubic | 0x4000, "GenericClampProgressive"},
        {0x00100000, 0x00100000, "TangeantShowLeft"},
        {0x00200000, 0x00200000, "TangeantShowRight"},
        {0x01000000, 0x01000000, "WeightedRight"},
        {0x02000000, 0x02000000, "WeightedNextLeft"},
        {0x10000000, 0x10000000, "VelocityRight"},
        {0x20000000, 0x20000000, "VelocityNextLeft"},
        {0x00020000, 0x00020000, "SelectLeft"},
        {0x00040000, 0x00040000, "SelectRight"},
        {0x00080000, 0x00080000, "Marked4Manipulation"},
    };
    std::string text;
    for (const Name& name : kNames) {
        if ((flags & name.mask) != name.value) continue;
        if (!text.empty()) text += '|';
        text += name.text;
    }
    return text;
}

// Take file names use "_" for blanks and tabs.
std::string TakeFileName(const char* takeName) {
    std::string name = takeName;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == ' ' || c == '\t'; }, '_');
    return name + ".tak";
}

}  // namespace

// "Default" always; with keys also the key version, times, values and the attributes with
// their run lengths. The arrays are streamed from the curve's key blocks.
void FbxWriterFbx7_Impl::WriteCurveBody(const FbxAnimCurve& curve) {
    mIO->FieldWriteD("Default", curve.GetDefaultValue());
    const size_t count = static_cast<size_t>(curve.KeyGetCount());
    if (count == 0) return;
    mIO->FieldWriteI("KeyVer", mVersion == 7100 ? 4007 : 4009);
    mIO->FieldWriteBegin("KeyTime");
    const std::vector<int64_t>& times = FileKeyTimes(curve);
    mIO->FieldWriteArrayLL(times, mFileTimesTag);
    mIO->FieldWriteEnd();
    mIO->FieldWriteBegin("KeyValueFloat");
    mIO->FieldWriteArrayF(
        count,
        [&](float* out, size_t first, size_t n) {
            curve.KeyGetRange(static_cast<int>(first), static_cast<int>(n), nullptr, out, nullptr);
        },
        TakePrepared(curve));
    mIO->FieldWriteEnd();
    WriteKeyAttributes(curve);
}

// The curves of a take share their key times: the file's times of the last curve are kept and
// reused while the next curve has keys at the same times, under a tag that tells the field
// writer so.
const std::vector<int64_t>& FbxWriterFbx7_Impl::FileKeyTimes(const FbxAnimCurve& curve) {
    if (mTimesOf && curve.KeyTimesEqual(*mTimesOf)) return mFileTimes;
    mFileTimes.resize(static_cast<size_t>(curve.KeyGetCount()));
    curve.KeyGetRange(0, curve.KeyGetCount(), mFileTimes.data(), nullptr, nullptr);
    for (int64_t& time : mFileTimes) time = mIO->FileTimeTicks(time);
    mTimesOf = &curve;
    ++mFileTimesTag;
    return mFileTimes;
}

// The ticket of the curve's prepared key values; 0 when they were not prepared.
uint64_t FbxWriterFbx7_Impl::TakePrepared(const FbxAnimCurve& curve) {
    while (!mPrepared.empty() && mPrepared.front().first != &curve) mPrepared.pop_front();
    if (mPrepared.empty()) return 0;
    const uint64_t ticket = mPrepared.front().second;
    mPrepared.pop_front();
    return ticket;
}

void FbxWriterFbx7_Impl::WriteKeyAttributes(const FbxAnimCurve& curve) {
    const std::vector<AttributeRun> runs = CollectRuns(curve);
    if (!mBinary) {
        std::string names;
        for (const AttributeRun& run : runs) {
            names += (names.empty() ? "" : ", ") + FlagNames(run.attribute.mFlags);
        }
        mIO->WriteComments(("KeyAttrFlags: " + names).c_str());
    }
    mIO->FieldWriteBegin("KeyAttrFlags");
    mIO->FieldWriteArrayI(runs.size(), [&](int32_t* out, size_t first, size_t n) {
        for (size_t i = 0; i < n; ++i)
            out[i] = static_cast<int32_t>(runs[first + i].attribute.mFlags);
    });
    mIO->FieldWriteEnd();
    // Four data words per run, stored bit for bit: float values in binary, and in ASCII
    // (from FBX 7.2 on) the words' integer values, which keep packed weights exact.
    const auto word = [&](size_t index) { return runs[index / 4].attribute.mData[index % 4]; };
    mIO->FieldWriteBegin("KeyAttrDataFloat");
    if (mBinary || mVersion < 7200) {
        mIO->FieldWriteArrayF(runs.size() * 4, [&](float* out, size_t first, size_t n) {
            for (size_t i = 0; i < n; ++i) out[i] = std::bit_cast<float>(word(first + i));
        });
    } else {
        mIO->FieldWriteArrayI(runs.size() * 4, [&](int32_t* out, size_t first, size_t n) {
            for (size_t i = 0; i < n; ++i) out[i] = static_cast<int32_t>(word(first + i));
        });
    }
    mIO->FieldWriteEnd();
    mIO->FieldWriteBegin("KeyAttrRefCount");
    mIO->FieldWriteArrayI(runs.size(), [&](int32_t* out, size_t first, size_t n) {
        for (size_t i = 0; i < n; ++i) out[i] = runs[first + i].count;
    });
    mIO->FieldWriteEnd();
}

void FbxWriterFbx7_Impl::WriteTakes() {
    std::vector<const FbxAnimStack*> stacks;
    for (const FbxObject* object : mObjects) {
        if (const FbxAnimStack* stack = FbxCast<FbxAnimStack>(object)) stacks.push_back(stack);
    }
    const FbxAnimStack* current = mScene ? mScene->GetCurrentAnimationStack() : nullptr;
    WriteBanner("Takes section", true);
    mIO->FieldWriteBegin("Takes");
    mIO->FieldWriteBlockBegin();
    mIO->FieldWriteS("Current", current ? current->GetName() : "");
    // A span still at its default (empty) falls back to the timeline's default span.
    const auto span = [&](FbxTimeSpan value) {
        if (mScene && value.GetStart().Get() == 0 && value.GetStop().Get() == 0) {
            return mScene->GetGlobalSettings().GetTimelineDefaultTimeSpan();
        }
        return value;
    };
    for (const FbxAnimStack* stack : stacks) {
        mIO->FieldWriteBegin("Take");
        mIO->FieldWriteS(stack->GetName());
        mIO->FieldWriteBlockBegin();
        mIO->FieldWriteS("FileName", TakeFileName(stack->GetName()).c_str());
        mIO->FieldWriteTS("LocalTime", span(stack->GetLocalTimeSpan()));
        mIO->FieldWriteTS("ReferenceTime", span(stack->GetReferenceTimeSpan()));
        mIO->FieldWriteBlockEnd();
        mIO->FieldWriteEnd();
    }
    mIO->FieldWriteBlockEnd();
    mIO->FieldWriteEnd();
}
