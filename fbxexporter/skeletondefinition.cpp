#include "skeletondefinition.h"

namespace SkeletonDefinition {

namespace {

// Names of host segments 0 to 26 in the unreal convention; the default names are the host's.
constexpr std::array<const char*, HostSegmentCount> kUnrealBodyNames = {
    "pelvis",     "spine_01",   "spine_02_ignored", "spine_02",   "spine_03", "neck_01",
    "head",       "clavicle_r", "upperarm_r",       "lowerarm_r", "hand_r",   "clavicle_l",
    "upperarm_l", "lowerarm_l", "hand_l",           "thigh_r",    "calf_r",   "foot_r",
    "ball_r",     "thigh_l",    "calf_l",           "foot_l",     "ball_l",   "prop_01",
    "prop_02",    "prop_03",    "prop_04"};

// The unreal rig has three spine links between pelvis and shoulders: host segment 2 is cut out
// of the chain (kept as a root of its own) and "spine_02" hangs directly from "spine_01".
constexpr int kCutSpine = 2;

// Finger joints 0 to 19 in the unreal convention, before "_l" / "_r".
constexpr std::array<const char*, FingerJointCount> kUnrealFingerNames = {
    "carpus",   "thumb_01",  "thumb_02",  "thumb_03",  "index_00",  "index_01", "index_02",
    "index_03", "middle_00", "middle_01", "middle_02", "middle_03", "ring_00",  "ring_01",
    "ring_02",  "ring_03",   "pinky_00",  "pinky_01",  "pinky_02",  "pinky_03"};

constexpr int kThirdThumbJoint = 3;

QString latin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QStringList bodyNames(Naming naming) {
    QStringList names;
    names.reserve(HostSegmentCount);
    for (int s = 0; s < HostSegmentCount; ++s) {
        names.append(naming == Naming_Unreal ? QString::fromLatin1(kUnrealBodyNames[s])
                                             : latin1(BodyModel::Segments[s].name));
    }
    return names;
}

std::vector<int> bodyParents(Naming naming) {
    std::vector<int> parents;
    parents.reserve(HostSegmentCount);
    for (const BodyModel::Segment& segment : BodyModel::Segments) parents.push_back(segment.parent);
    if (naming == Naming_Unreal) {
        const int spineBelow = parents[kCutSpine];
        parents[kCutSpine] = -1;
        for (int& parent : parents)
            if (parent == kCutSpine) parent = spineBelow;
    }
    return parents;
}

QStringList fingerNames(Naming naming, NuHandId hand) {
    QStringList names;
    names.reserve(FingerJointCount);
    for (int k = 0; k < FingerJointCount; ++k) {
        if (naming != Naming_Unreal) {
            names.append(QString::fromStdString(BodyModel::fingerName(hand, k)));
            continue;
        }
        const QString suffix = QString::fromLatin1(hand == NuHand_Left ? "_l" : "_r");
        // Rigs made for this convention name the third thumb joint with the side suffix twice.
        const QString side = k == kThirdThumbJoint ? suffix + suffix : suffix;
        names.append(QString::fromLatin1(kUnrealFingerNames[k]) + side);
    }
    return names;
}

std::vector<int> fingerParents() {
    std::vector<int> parents;
    parents.reserve(FingerJointCount);
    for (const BodyModel::FingerJoint& joint : BodyModel::FingerJoints)
        parents.push_back(joint.parent);
    return parents;
}

int exportedFingerSlot(int k) {
    for (int slot = 0; slot < ExportedFingersPerHand; ++slot) {
        if (ExportedFingerJoints[slot] == k) return slot;
    }
    return -1;
}

}  // namespace SkeletonDefinition
