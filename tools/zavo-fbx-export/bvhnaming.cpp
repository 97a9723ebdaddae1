#include "bvhnaming.h"

#include <algorithm>
#include <cctype>
#include <string>

#include <zavo/bodymodel.h>

namespace {

// A clip joint name and the default segment or finger name it stands for; empty: the joint is
// folded into the bone above it.
struct NameEntry {
    std::string_view clip, host;
};

struct SchemeTable {
    std::string_view name;
    std::vector<NameEntry> entries;
};

// The CMU skeleton has one joint more than the body in the back and the neck, and a hip joint
// between the pelvis and each thigh. Its lower back sits on the pelvis and its lower neck on
// the chest, so the spine moves up one segment (the lower neck turning "Spine3") and every
// joint keeps its place; only the hip joints, which carry no bone of their own, are folded.
// The finger base takes the index finger's first joint, which keeps the stub finger where the
// clip has it.
std::vector<NameEntry> cmuEntries(std::string_view hipL, std::string_view hipR,
                                  const std::vector<std::string_view>& limbs,
                                  const std::vector<std::string_view>& back) {
    static constexpr std::string_view limbTargets[] = {
        "LeftUpLeg",       "LeftLeg",        "LeftFoot",     "LeftToeBase",    "LeftShoulder",
        "LeftArm",         "LeftForeArm",    "LeftHand",     "LeftHandIndex1", "LeftHandIndex2",
        "LeftHandThumb1",  "RightUpLeg",     "RightLeg",     "RightFoot",      "RightToeBase",
        "RightShoulder",   "RightArm",       "RightForeArm", "RightHand",      "RightHandIndex1",
        "RightHandIndex2", "RightHandThumb1"};
    static constexpr std::string_view backTargets[] = {"Spine",  "Spine1", "Spine2",
                                                       "Spine3", "Neck",   "Head"};
    std::vector<NameEntry> entries{{hipL, ""}, {hipR, ""}};
    for (size_t i = 0; i < limbs.size(); ++i) entries.push_back({limbs[i], limbTargets[i]});
    for (size_t i = 0; i < back.size(); ++i) entries.push_back({back[i], backTargets[i]});
    return entries;
}

const std::vector<SchemeTable>& schemeTables() {
    static const std::vector<SchemeTable> tables = {
        {"CMU", cmuEntries("LHipJoint", "RHipJoint",
                           {"LeftUpLeg",       "LeftLeg",        "LeftFoot",     "LeftToeBase",
                            "LeftShoulder",    "LeftArm",        "LeftForeArm",  "LeftHand",
                            "LeftFingerBase",  "LeftHandIndex1", "LThumb",       "RightUpLeg",
                            "RightLeg",        "RightFoot",      "RightToeBase", "RightShoulder",
                            "RightArm",        "RightForeArm",   "RightHand",    "RightFingerBase",
                            "RightHandIndex1", "RThumb"},
                           {"LowerBack", "Spine", "Spine1", "Neck", "Neck1", "Head"})},
        {"CMU motion-capture names",
         cmuEntries("lhipjoint", "rhipjoint",
                    {"lfemur",  "ltibia", "lfoot",    "ltoes",     "lclavicle", "lhumerus",
                     "lradius", "lwrist", "lhand",    "lfingers",  "lthumb",    "rfemur",
                     "rtibia",  "rfoot",  "rtoes",    "rclavicle", "rhumerus",  "rradius",
                     "rwrist",  "rhand",  "rfingers", "rthumb"},
                    {"lowerback", "upperback", "thorax", "lowerneck", "upperneck", "head"})},
        {"CMU alternative names",
         cmuEntries("LHipJoint", "RHipJoint",
                    {"LeftHip",      "LeftKnee",      "LeftAnkle",  "LeftToe",    "LeftCollar",
                     "LeftShoulder", "LeftElbow",     "LeftWrist",  "lhand",      "LFingers",
                     "LThumb",       "RightHip",      "RightKnee",  "RightAnkle", "RightToe",
                     "RightCollar",  "RightShoulder", "RightElbow", "RightWrist", "rhand",
                     "RFingers",     "RThumb"},
                    {"lowerback", "Chest", "Chest2", "lowerneck", "Neck", "Head"})},
    };
    return tables;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

// The target of a default segment or finger name, or Unknown.
int defaultTarget(std::string_view name) {
    for (int s = 0; s < BodyModel::BodySegmentCount; ++s)
        if (equalsIgnoringCase(BodyModel::Segments[s].name, name)) return s;
    // A finger name is its hand's name followed by the joint's.
    for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
        const std::string_view handName = BodyModel::Segments[BodyModel::handSegment(hand)].name;
        if (!equalsIgnoringCase(name.substr(0, handName.size()), handName)) continue;
        for (int k = 0; k < BodyModel::FingerJointCount; ++k)
            if (equalsIgnoringCase(BodyModel::FingerJoints[k].name, name.substr(handName.size())))
                return 100 * (hand + 1) + k;
    }
    return BvhNamingScheme::Unknown;
}

int tableTarget(const SchemeTable& table, std::string_view name) {
    for (const NameEntry& entry : table.entries)
        if (equalsIgnoringCase(entry.clip, name))
            return entry.host.empty() ? BvhNamingScheme::Folded : defaultTarget(entry.host);
    return BvhNamingScheme::Unknown;
}

}  // namespace

BvhNamingScheme bvhNamingScheme(const BvhClip& clip) {
    BvhNamingScheme scheme{"default", {}};
    for (const BvhJoint& joint : clip.joints) scheme.targets.push_back(defaultTarget(joint.name));
    const auto known = [](const std::vector<int>& targets) {
        return std::count_if(targets.begin() + (targets.empty() ? 0 : 1), targets.end(),
                             [](int t) { return t != BvhNamingScheme::Unknown; });
    };
    auto best = known(scheme.targets);
    for (const SchemeTable& table : schemeTables()) {
        BvhNamingScheme candidate{table.name, {}};
        for (const BvhJoint& joint : clip.joints)
            candidate.targets.push_back(tableTarget(table, joint.name));
        // A table must know more names than the default ones do; a default-named clip with a
        // joint or two of another scheme stays default.
        if (const auto count = known(candidate.targets); count > best) {
            best = count;
            scheme = std::move(candidate);
        }
    }
    for (size_t j = 0; j < clip.joints.size(); ++j)
        if (scheme.targets[j] == BvhNamingScheme::Unknown)
            scheme.targets[j] = defaultTarget(clip.joints[j].name);
    return scheme;
}
