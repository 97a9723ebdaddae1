#pragma once

#include <QString>
#include <QStringList>
#include <array>
#include <vector>

#include <zavo/bodymodel.h>
#include <zavo/nuhandid.h>

#include "exportsettings.h"

// The skeleton the Skeleton preset exports: the host's body and prop segments, the finger
// joints of both hands, their names in each naming convention and their parents.
//
// An exported segment is identified by a segment code: 0 to 99 is a host segment (body 0 to 22,
// props 23 to 26), 100 + k is finger joint k of the left hand, 200 + k that of the right hand.
namespace SkeletonDefinition {

inline constexpr int HostSegmentCount = BodyModel::SegmentCount;  // body segments and props
inline constexpr int FirstProp = BodyModel::BodySegmentCount;
inline constexpr int FingerJointCount = BodyModel::FingerJointCount;  // per hand
inline constexpr int LeftFingerCode = 100;
inline constexpr int RightFingerCode = 200;
inline constexpr int LeftHandSegment = BodyModel::handSegment(NuHand_Left);
inline constexpr int RightHandSegment = BodyModel::handSegment(NuHand_Right);

// Only tracked finger joints are exported: neither the carpus nor the fingers' base joints.
inline constexpr int ExportedFingersPerHand = [] {
    int count = 0;
    for (const BodyModel::FingerJoint& joint : BodyModel::FingerJoints) count += joint.tracked;
    return count;
}();

// Host segments in export order, parents first: pelvis, legs, spine, left arm.
inline constexpr std::array<int, 17> TrunkAndLeftArm = {0, 15, 16, 17, 18, 19, 20, 21, 22,
                                                        1, 2,  3,  4,  11, 12, 13, 14};
inline constexpr std::array<int, 4> RightArm = {7, 8, 9, 10};
inline constexpr std::array<int, 2> NeckAndHead = {5, 6};

// Finger joints that are exported, in export order.
inline constexpr std::array<int, ExportedFingersPerHand> ExportedFingerJoints = [] {
    std::array<int, ExportedFingersPerHand> joints{};
    int slot = 0;
    for (int k = 0; k < FingerJointCount; ++k)
        if (BodyModel::FingerJoints[k].tracked) joints[slot++] = k;
    return joints;
}();
inline constexpr int ExportedFingerCount = 2 * ExportedFingersPerHand;

// Exported finger k of both hands, the left hand's first: its hand and finger joint. The joint is
// -1 past the last exported finger.
struct ExportedFinger {
    NuHandId hand;
    int joint;
};
constexpr ExportedFinger exportedFinger(int k) {
    const NuHandId hand = k < ExportedFingersPerHand ? NuHand_Left : NuHand_Right;
    const int slot = hand == NuHand_Left ? k : k - ExportedFingersPerHand;
    return {hand, slot >= 0 && slot < ExportedFingersPerHand ? ExportedFingerJoints[slot] : -1};
}

// Names of host segments 0 to 26 in `naming` (anything but unreal means default).
QStringList bodyNames(Naming naming);
// Parents of host segments 0 to 26 in `naming`, -1 for none. The props' parents come from the
// host's joint list, so they are -1 here.
std::vector<int> bodyParents(Naming naming);
// Names of finger joints 0 to 19 of `hand` in `naming`.
QStringList fingerNames(Naming naming, NuHandId hand);
// Parent joint of finger joint 0 to 19, -1 when it hangs from the hand; the same for both hands.
std::vector<int> fingerParents();
// Position of finger joint k among the exported joints of its hand (0 to 14), -1 when the
// joint is not exported.
int exportedFingerSlot(int k);

}  // namespace SkeletonDefinition
