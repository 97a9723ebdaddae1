#pragma once

#include <array>
#include <string>
#include <string_view>

#include <zavo/nuhandid.h>

// The host's body model: the segments of a pose in the host's order (body segments 0 to 22,
// then props 23 to 26) with their default names and parents, and the 20 finger joints of each
// hand with theirs. Whoever builds or reads a skeleton of the host takes it from here.
namespace BodyModel {

inline constexpr int BodySegmentCount = 23;
inline constexpr int PropCount = 4;
inline constexpr int SegmentCount = BodySegmentCount + PropCount;
inline constexpr int FingerJointCount = 20;  // per hand

struct Segment {
    std::string_view name;  // the default name
    int parent;             // -1 for the pelvis; -1 for a prop, whose joint says where it hangs
};

// Every parent comes before its children.
inline constexpr std::array<Segment, SegmentCount> Segments = {{
    {"Hips", -1},     {"Spine", 0},        {"Spine1", 1},        {"Spine2", 2},
    {"Spine3", 3},    {"Neck", 4},         {"Head", 5},          {"RightShoulder", 4},
    {"RightArm", 7},  {"RightForeArm", 8}, {"RightHand", 9},     {"LeftShoulder", 4},
    {"LeftArm", 11},  {"LeftForeArm", 12}, {"LeftHand", 13},     {"RightUpLeg", 0},
    {"RightLeg", 15}, {"RightFoot", 16},   {"RightToeBase", 17}, {"LeftUpLeg", 0},
    {"LeftLeg", 19},  {"LeftFoot", 20},    {"LeftToeBase", 21},  {"Prop1", -1},
    {"Prop2", -1},    {"Prop3", -1},       {"Prop4", -1},
}};

struct FingerJoint {
    std::string_view name;  // after the hand's name: "Thumb1" names "LeftHandThumb1"
    int parent;             // the finger joint it hangs from, -1 for the hand itself
    bool tracked;           // the carpus and the base joints of the fingers are not tracked
};

// The same for both hands; every parent comes before its children.
inline constexpr std::array<FingerJoint, FingerJointCount> FingerJoints = {{
    {"Carpus", -1, false},  {"Thumb1", -1, true},  {"Thumb2", 1, true},  {"Thumb3", 2, true},
    {"Index0", -1, false},  {"Index1", -1, true},  {"Index2", 5, true},  {"Index3", 6, true},
    {"Middle0", -1, false}, {"Middle1", -1, true}, {"Middle2", 9, true}, {"Middle3", 10, true},
    {"Ring0", -1, false},   {"Ring1", -1, true},   {"Ring2", 13, true},  {"Ring3", 14, true},
    {"Pinky0", -1, false},  {"Pinky1", -1, true},  {"Pinky2", 17, true}, {"Pinky3", 18, true},
}};

// The body segment that carries the finger joints of `hand`.
constexpr int handSegment(NuHandId hand) {
    return hand == NuHand_Left ? 14 : 10;
}

// The default name of finger joint `k` (0 to 19) of `hand`, such as "LeftHandThumb1".
inline std::string fingerName(NuHandId hand, int k) {
    return std::string(Segments[handSegment(hand)].name).append(FingerJoints[k].name);
}

}  // namespace BodyModel
