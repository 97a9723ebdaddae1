#include "bodytables.h"

#include <algorithm>
#include <cctype>

namespace bodytables {

const std::array<std::string_view, BodySegmentCount> segmentNames = {
    "Hips",         "Spine",         "Spine1",   "Spine2",       "Spine3",     "Neck",
    "Head",         "RightShoulder", "RightArm", "RightForeArm", "RightHand",  "LeftShoulder",
    "LeftArm",      "LeftForeArm",   "LeftHand", "RightUpLeg",   "RightLeg",   "RightFoot",
    "RightToeBase", "LeftUpLeg",     "LeftLeg",  "LeftFoot",     "LeftToeBase"};

const std::array<int, BodySegmentCount> segmentParents = {
    -1, 0, 1, 2, 3, 4, 5, 4, 7, 8, 9, 4, 11, 12, 13, 0, 15, 16, 17, 0, 19, 20, 21};

const std::array<std::string_view, FingerCount> leftFingerNames = {
    "LeftHandCarpus",  "LeftHandThumb1",  "LeftHandThumb2", "LeftHandThumb3",  "LeftHandIndex0",
    "LeftHandIndex1",  "LeftHandIndex2",  "LeftHandIndex3", "LeftHandMiddle0", "LeftHandMiddle1",
    "LeftHandMiddle2", "LeftHandMiddle3", "LeftHandRing0",  "LeftHandRing1",   "LeftHandRing2",
    "LeftHandRing3",   "LeftHandPinky0",  "LeftHandPinky1", "LeftHandPinky2",  "LeftHandPinky3"};

const std::array<std::string_view, FingerCount> rightFingerNames = {
    "RightHandCarpus",  "RightHandThumb1",  "RightHandThumb2",  "RightHandThumb3",
    "RightHandIndex0",  "RightHandIndex1",  "RightHandIndex2",  "RightHandIndex3",
    "RightHandMiddle0", "RightHandMiddle1", "RightHandMiddle2", "RightHandMiddle3",
    "RightHandRing0",   "RightHandRing1",   "RightHandRing2",   "RightHandRing3",
    "RightHandPinky0",  "RightHandPinky1",  "RightHandPinky2",  "RightHandPinky3"};

const std::array<int, FingerCount> fingerParents = {-1, -1, 1,  2,  -1, -1, 5,  6,  -1, -1,
                                                    9,  10, -1, -1, 13, 14, -1, -1, 17, 18};

namespace {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

template <size_t N>
int indexOf(const std::array<std::string_view, N>& names, std::string_view name) {
    for (size_t i = 0; i < N; ++i)
        if (equalsIgnoringCase(names[i], name)) return static_cast<int>(i);
    return -1;
}

}  // namespace

int segmentByName(std::string_view name) {
    return indexOf(segmentNames, name);
}

bool fingerByName(std::string_view name, int& hand, int& finger) {
    for (hand = 0; hand < 2; ++hand) {
        finger = indexOf(hand == 0 ? leftFingerNames : rightFingerNames, name);
        if (finger >= 0) return true;
    }
    return false;
}

}  // namespace bodytables
