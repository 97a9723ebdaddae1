#pragma once

#include "fbx/scene/fbxtypes.h"

// Flag bits of a property, as files store them.
struct FbxPropertyFlags {
    enum EFlags : FbxUInt32 {
        eNone = 0,
        eStatic = 1u << 0,
        eAnimatable = 1u << 1,  // may be animated: files name it by its data type
        eAnimated = 1u << 2,    // a curve node is connected on some layer
        eImported = 1u << 3,
        eUserDefined = 1u << 4,
        eHidden = 1u << 5,
        eNotSavable = 1u << 6,  // never written
        eLockedMember0 = 1u << 7,
        eLockedMember1 = 1u << 8,
        eLockedMember2 = 1u << 9,
        eLockedMember3 = 1u << 10,
        eLockedAll = 0xFu << 7,
        eMutedMember0 = 1u << 11,
        eMutedMember1 = 1u << 12,
        eMutedMember2 = 1u << 13,
        eMutedMember3 = 1u << 14,
        eMutedAll = 0xFu << 11,
    };
    static constexpr int kLockShift = 7;
    static constexpr int kMuteShift = 11;
};
