#include "posetransformfbx.h"

#include <algorithm>

#include "axisconvention.h"
#include "hostposition.h"
#include "skeletondefinition.h"

using namespace SkeletonDefinition;

namespace {

// a - b on FBX axes, from the first three elements of each. Formed in place: every segment
// of every frame takes one.
nuvia::Vector3 fbxDifference(const NuVector& a, const NuVector& b) {
    const nuvia::Vector3 p = firstThree(a);
    const nuvia::Vector3 q = firstThree(b);
    return toFbxAxes(nuvia::Vector3(p[0] - q[0], p[1] - q[1], p[2] - q[2]));
}

int hostSegmentOrRoot(int segment) {
    return segment >= 0 && segment < HostSegmentCount ? segment : -1;
}

}  // namespace

PoseTransformFbx::PoseTransformFbx(const ZavoPoseObject& pose, const KexJointArray& joints,
                                   Naming naming)
    : m_bodyNames(bodyNames(naming)),
      m_leftFingerNames(fingerNames(naming, NuHand_Left)),
      m_rightFingerNames(fingerNames(naming, NuHand_Right)),
      m_bodyParents(bodyParents(naming)),
      m_fingerParents(fingerParents()),
      m_leftFingerPoseIndex(FingerJointCount, -1),
      m_rightFingerPoseIndex(FingerJointCount, -1) {
    // Whether fingers are exported is decided here, once: later frames cannot change the tree.
    const bool fingers = pose.hasFingerTrackingData();
    m_segmentMap.assign(TrunkAndLeftArm.begin(), TrunkAndLeftArm.end());
    if (fingers) appendFingers(LeftFingerCode);
    m_segmentMap.insert(m_segmentMap.end(), RightArm.begin(), RightArm.end());
    if (fingers) appendFingers(RightFingerCode);
    m_segmentMap.insert(m_segmentMap.end(), NeckAndHead.begin(), NeckAndHead.end());
    appendProps(joints);

    const int firstFinger = pose.segmentStateCount();
    for (int k = 0; k < FingerJointCount; ++k) {
        const int slot = exportedFingerSlot(k);
        if (slot < 0) continue;
        m_leftFingerPoseIndex[k] = firstFinger + slot;
        m_rightFingerPoseIndex[k] = firstFinger + ExportedFingersPerHand + slot;
    }

    // Pose indices are not export positions: size the lists to reach the largest of them,
    // parents included (a prop may hang from a prop the take does not hold).
    int size = 0;
    for (int i = 0; i < getSegmentCount(); ++i) {
        QString name;
        int index = -1, parent = -1;
        getSegmentMeta(i, name, index, parent);
        size = std::max({size, index + 1, parent + 1});
        m_poseIndices.push_back(static_cast<size_t>(index));
    }
    m_translations.resize(size);
    m_globalOrientations.resize(size, nuvia::Quaternion(0, 0, 0, 0));
    // A segment no pose covers has always stood at Euler angles of exactly +0: the
    // identity with a -0 X is the rotation whose angles come out so (the plain identity's
    // pitch is -0).
    m_localOrientations.resize(size, nuvia::Quaternion(1, -0.0, 0, 0));
}

void PoseTransformFbx::appendFingers(int firstCode) {
    for (int k : ExportedFingerJoints) m_segmentMap.push_back(firstCode + k);
}

void PoseTransformFbx::appendProps(const KexJointArray& joints) {
    // The host hands out its joint list as raw records of its own stride.
    const auto* records = static_cast<const char*>(joints.data());
    const size_t stride = g_KexJointArrayDescriptor.elementSize;
    for (int prop = FirstProp; prop < HostSegmentCount; ++prop) {
        for (size_t i = 0; i < joints.count(); ++i) {
            const auto* joint = reinterpret_cast<const KexJoint*>(records + i * stride);
            if (joint->childSegment != prop) continue;
            m_segmentMap.push_back(prop);
            // A parent that is no host segment would leave the prop hanging from nothing.
            m_bodyParents[prop] = hostSegmentOrRoot(joint->parentSegment);
            break;
        }
    }
}

PoseTransformFbx::Hand PoseTransformFbx::handOf(int code) const {
    if (code >= RightFingerCode) {
        return {RightHandSegment, NuHand_Right, code - RightFingerCode, &m_rightFingerPoseIndex};
    }
    return {LeftHandSegment, NuHand_Left, code - LeftFingerCode, &m_leftFingerPoseIndex};
}

void PoseTransformFbx::getSegmentMeta(int i, QString& name, int& index, int& parent) const {
    const int code = m_segmentMap[i];
    if (code < LeftFingerCode) {
        name = m_bodyNames[code];
        index = code;
        parent = m_bodyParents[code];
        return;
    }
    const Hand hand = handOf(code);
    name = (hand.id == NuHand_Left ? m_leftFingerNames : m_rightFingerNames)[hand.joint];
    const int parentJoint = m_fingerParents[hand.joint];
    parent = parentJoint < 0 ? hand.segment : (*hand.poseIndex)[parentJoint];
    index = (*hand.poseIndex)[hand.joint];
}

void PoseTransformFbx::transform(const ZavoPoseObject& pose) {
    m_reading.read(pose);
    transform(m_reading);
}

void PoseTransformFbx::transform(const PoseReading& pose) {
    // Export order puts parents first, so a parent's global orientation of this frame is
    // stored before its children need it.
    for (int code : m_segmentMap) {
        if (code < LeftFingerCode) {
            transformBody(pose, code);
        } else {
            transformFinger(pose, code);
        }
    }
}

void PoseTransformFbx::transformBody(const PoseReading& pose, int code) {
    if (code < 0 || code >= pose.segmentCount()) return;
    const nuvia::Quaternion global = toFbxAxes(pose.orientation(code));
    m_globalOrientations[code] = global;
    const int parent = m_bodyParents[code];
    if (parent < 0) {
        m_translations[code] = toFbxAxes(nuvia::Vector3(pose.position(code)));
        m_localOrientations[code] = global;
        return;
    }
    // The offset is the difference of the global positions, not rotated into the parent's
    // frame: it is the true local offset where the parent is unrotated, as in the T-pose that
    // sets up the skeleton, which is where readers take the bone offsets from.
    m_translations[code] = fbxDifference(pose.position(code), pose.position(parent));
    setLocal(code, m_globalOrientations[parent], global);
}

void PoseTransformFbx::transformFinger(const PoseReading& pose, int code) {
    const Hand hand = handOf(code);
    const int index = (*hand.poseIndex)[hand.joint];
    if (index < 0) return;
    const KexSegmentPose& finger = pose.finger(hand.id, hand.joint);
    const nuvia::Quaternion global = toFbxAxes(finger.orientation);
    m_globalOrientations[index] = global;

    const int parentJoint = m_fingerParents[hand.joint];
    if (parentJoint < 0) {
        m_translations[index] = fbxDifference(finger.position, pose.position(hand.segment));
        setLocal(index, m_globalOrientations[hand.segment], global);
        return;
    }
    const int parentIndex = (*hand.poseIndex)[parentJoint];
    if (parentIndex < 0) return;
    m_translations[index] =
        fbxDifference(finger.position, pose.finger(hand.id, parentJoint).position);
    setLocal(index, m_globalOrientations[parentIndex], global);
}

void PoseTransformFbx::setLocal(int index, const nuvia::Quaternion& parentGlobal,
                                const nuvia::Quaternion& global) {
    // Host orientations are unit quaternions, so the conjugate serves as the inverse.
    nuvia::Quaternion inverseParent;
    inverseParent.setInverseOf(parentGlobal);
    m_localOrientations[index].setQuatMulQuat(inverseParent, global);
}
