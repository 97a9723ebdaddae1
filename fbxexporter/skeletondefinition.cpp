#include "skeletondefinition.h"

namespace SkeletonDefinition {

namespace {

struct BodySegment {
    const char* defaultName;
    const char* unrealName;
    int defaultParent;
    int unrealParent;
};

// The unreal rig has three spine links between pelvis and shoulders: host segment 2 is cut out
// of the chain (kept as a root of its own) and "spine_02" hangs directly from "spine_01".
constexpr std::array<BodySegment, HostSegmentCount> kBody = {{
    {"Hips", "pelvis", -1, -1},
    {"Spine", "spine_01", 0, 0},
    {"Spine1", "spine_02_ignored", 1, -1},
    {"Spine2", "spine_02", 2, 1},
    {"Spine3", "spine_03", 3, 3},
    {"Neck", "neck_01", 4, 4},
    {"Head", "head", 5, 5},
    {"RightShoulder", "clavicle_r", 4, 4},
    {"RightArm", "upperarm_r", 7, 7},
    {"RightForeArm", "lowerarm_r", 8, 8},
    {"RightHand", "hand_r", 9, 9},
    {"LeftShoulder", "clavicle_l", 4, 4},
    {"LeftArm", "upperarm_l", 11, 11},
    {"LeftForeArm", "lowerarm_l", 12, 12},
    {"LeftHand", "hand_l", 13, 13},
    {"RightUpLeg", "thigh_r", 0, 0},
    {"RightLeg", "calf_r", 15, 15},
    {"RightFoot", "foot_r", 16, 16},
    {"RightToeBase", "ball_r", 17, 17},
    {"LeftUpLeg", "thigh_l", 0, 0},
    {"LeftLeg", "calf_l", 19, 19},
    {"LeftFoot", "foot_l", 20, 20},
    {"LeftToeBase", "ball_l", 21, 21},
    {"Prop1", "prop_01", -1, -1},
    {"Prop2", "prop_02", -1, -1},
    {"Prop3", "prop_03", -1, -1},
    {"Prop4", "prop_04", -1, -1},
}};

struct FingerJoint {
    const char* defaultJoint;  // after "LeftHand" / "RightHand"
    const char* unrealJoint;   // before "_l" / "_r"
    int parent;
};

constexpr std::array<FingerJoint, FingerJointCount> kFingers = {{
    {"Carpus", "carpus", -1},     {"Thumb1", "thumb_01", -1},  {"Thumb2", "thumb_02", 1},
    {"Thumb3", "thumb_03", 2},    {"Index0", "index_00", -1},  {"Index1", "index_01", -1},
    {"Index2", "index_02", 5},    {"Index3", "index_03", 6},   {"Middle0", "middle_00", -1},
    {"Middle1", "middle_01", -1}, {"Middle2", "middle_02", 9}, {"Middle3", "middle_03", 10},
    {"Ring0", "ring_00", -1},     {"Ring1", "ring_01", -1},    {"Ring2", "ring_02", 13},
    {"Ring3", "ring_03", 14},     {"Pinky0", "pinky_00", -1},  {"Pinky1", "pinky_01", -1},
    {"Pinky2", "pinky_02", 17},   {"Pinky3", "pinky_03", 18},
}};

constexpr int kThirdThumbJoint = 3;

}  // namespace

QStringList bodyNames(Naming naming) {
    QStringList names;
    names.reserve(HostSegmentCount);
    for (const BodySegment& segment : kBody) {
        names.append(QString::fromLatin1(naming == Naming_Unreal ? segment.unrealName
                                                                 : segment.defaultName));
    }
    return names;
}

std::vector<int> bodyParents(Naming naming) {
    std::vector<int> parents;
    parents.reserve(HostSegmentCount);
    for (const BodySegment& segment : kBody) {
        parents.push_back(naming == Naming_Unreal ? segment.unrealParent : segment.defaultParent);
    }
    return parents;
}

QStringList fingerNames(Naming naming, NuHandId hand) {
    const bool left = hand == NuHand_Left;
    QStringList names;
    names.reserve(FingerJointCount);
    for (int k = 0; k < FingerJointCount; ++k) {
        if (naming != Naming_Unreal) {
            names.append(QString::fromLatin1(left ? "LeftHand" : "RightHand") +
                         QString::fromLatin1(kFingers[k].defaultJoint));
            continue;
        }
        const QString suffix = QString::fromLatin1(left ? "_l" : "_r");
        // Rigs made for this convention name the third thumb joint with the side suffix twice.
        const QString side = k == kThirdThumbJoint ? suffix + suffix : suffix;
        names.append(QString::fromLatin1(kFingers[k].unrealJoint) + side);
    }
    return names;
}

std::vector<int> fingerParents() {
    std::vector<int> parents;
    parents.reserve(FingerJointCount);
    for (const FingerJoint& joint : kFingers) parents.push_back(joint.parent);
    return parents;
}

int exportedFingerSlot(int k) {
    for (int slot = 0; slot < ExportedFingersPerHand; ++slot) {
        if (ExportedFingerJoints[slot] == k) return slot;
    }
    return -1;
}

}  // namespace SkeletonDefinition
