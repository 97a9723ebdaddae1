#pragma once

#include <array>
#include <string_view>

// The host's body model: segments 0 to 22 in the order of the default skeleton, their parents,
// and the 20 finger joints of each hand.
namespace bodytables {

inline constexpr int BodySegmentCount = 23;
inline constexpr int FingerCount = 20;
inline constexpr int LeftHandSegment = 14;
inline constexpr int RightHandSegment = 10;

// Default names of host segments 0 to 22.
extern const std::array<std::string_view, BodySegmentCount> segmentNames;
// Parent segment of each body segment, -1 for the pelvis.
extern const std::array<int, BodySegmentCount> segmentParents;
// Default names of finger joint 0 to 19 of the left hand ("LeftHandThumb1", ...).
extern const std::array<std::string_view, FingerCount> leftFingerNames;
extern const std::array<std::string_view, FingerCount> rightFingerNames;
// Parent finger of each finger joint, -1 when it hangs from the hand itself.
extern const std::array<int, FingerCount> fingerParents;

// Whether the exported skeleton carries finger joint k: it has no carpus and no metacarpals.
constexpr bool fingerIsExported(int k) {
    return k % 4 != 0;
}

// The segment index whose default name equals `name` ignoring case, or -1.
int segmentByName(std::string_view name);
// The finger joint (0 to 19) and hand (0 left, 1 right) named `name` ignoring case; false when
// `name` is no finger name.
bool fingerByName(std::string_view name, int& hand, int& finger);

}  // namespace bodytables
