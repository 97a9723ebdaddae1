#pragma once

#include <bit>
#include <cstring>

#include "fbx/scene/fbxtypes.h"

// Key flag bits and defaults of animation curves, as files store them.
struct FbxAnimCurveDef {
    enum EInterpolationType {
        eInterpolationConstant = 0x00000002,
        eInterpolationLinear = 0x00000004,
        eInterpolationCubic = 0x00000008
    };
    enum ETangentMode {
        eTangentAuto = 0x00000100,
        eTangentTCB = 0x00000200,
        eTangentUser = 0x00000400,
        eTangentGenericBreak = 0x00000800,
        eTangentBreak = eTangentGenericBreak | eTangentUser,
        eTangentAutoBreak = eTangentGenericBreak | eTangentAuto,
        eTangentGenericClamp = 0x00001000,
        eTangentGenericTimeIndependent = 0x00002000,
        eTangentGenericClampProgressive = 0x00004000 | eTangentGenericTimeIndependent
    };
    enum EConstantMode { eConstantStandard = 0x00000000, eConstantNext = 0x00000100 };
    enum EWeightedMode {
        eWeightedNone = 0x00000000,
        eWeightedRight = 0x01000000,
        eWeightedNextLeft = 0x02000000,
        eWeightedAll = eWeightedRight | eWeightedNextLeft
    };
    enum EVelocityMode {
        eVelocityNone = 0x00000000,
        eVelocityRight = 0x10000000,
        eVelocityNextLeft = 0x20000000,
        eVelocityAll = eVelocityRight | eVelocityNextLeft
    };

    static constexpr FbxUInt32 kInterpolationMask = 0x0000000E;
    static constexpr FbxUInt32 kTangentModeMask = 0x00007F00;
    static constexpr FbxUInt32 kWeightedMask = 0x03000000;
    static constexpr FbxUInt32 kVelocityMask = 0x30000000;
    // Cubic, auto tangent, time independent: what KeyAdd gives a new key.
    static constexpr FbxUInt32 kDefaultKeyFlags = FbxUInt32{eInterpolationCubic} |
                                                  FbxUInt32{eTangentAuto} |
                                                  FbxUInt32{eTangentGenericTimeIndependent};
    // Tangent weights are ten-thousandths in 16 bits.
    static constexpr FbxUInt32 kDefaultWeight = 3333;
    static constexpr float sDEFAULT_WEIGHT = 0.3333f;
    static constexpr float sDEFAULT_VELOCITY = 0.0f;
};

// The attribute of a key: its flag word and four data words. Word 0 is the
// right slope and word 1 the next key's left slope (float bit patterns); word 2
// holds the tangent weights and word 3 the velocities, each as two 16-bit
// ten-thousandths (low half right, high half next-left). Files write the words
// as floats ("KeyAttrDataFloat"), bit for bit.
struct FbxAnimCurveKeyAttribute {
    FbxUInt32 mFlags = FbxAnimCurveDef::kDefaultKeyFlags;
    FbxUInt32 mData[4] = {
        0, 0, FbxAnimCurveDef::kDefaultWeight | (FbxAnimCurveDef::kDefaultWeight << 16), 0};

    float GetDataFloat(int i) const { return std::bit_cast<float>(mData[i]); }
    friend bool operator==(const FbxAnimCurveKeyAttribute& a, const FbxAnimCurveKeyAttribute& b) {
        return std::memcmp(&a, &b, sizeof a) == 0;
    }
};
