#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include <zavo/kexjointarray.h>
#include <zavo/zavoposeobject.h>

#include "exportsettings.h"
#include "math/quaternion.h"
#include "math/vector.h"
#include "posereading.h"

// Turns the host's poses (global positions and orientations, host axes, Z up) into the
// exported skeleton's local transforms (FBX axes, Y up): for every exported segment a
// translation from its parent and a local rotation.
//
// The skeleton is fixed at construction: body segments, finger joints when the given pose
// has finger data, and every prop the host's joint list attaches to a segment. Export
// positions run from 0 to getSegmentCount() - 1, parents before children. Segments are also
// known by their pose index: the host segment number, or S + 0 to S + 29 for finger joints,
// where S is the segment count of the pose given to the constructor.
class PoseTransformFbx {
public:
    PoseTransformFbx(const ZavoPoseObject& pose, const KexJointArray& joints, Naming naming);

    int getSegmentCount() const { return static_cast<int>(m_segmentMap.size()); }
    // Name, pose index and parent pose index (-1 for a root) of export position i.
    void getSegmentMeta(int i, QString& name, int& index, int& parent) const;
    // Translation and rotation (XYZ Euler angles in degrees) of export position i as of the
    // last transform().
    void getSegmentPose(int i, nuvia::Vector3& translation, nuvia::Vector3& rotation) const {
        translation = getSegmentTranslation(i);
        getSegmentRotation(i).toEuler(rotation);
    }
    // The same translation and the rotation whose Euler angles getSegmentPose() gives, for
    // those who form the angles elsewhere.
    const nuvia::Vector3& getSegmentTranslation(int i) const {
        return m_translations[m_poseIndices[static_cast<size_t>(i)]];
    }
    const nuvia::Quaternion& getSegmentRotation(int i) const {
        return m_localOrientations[m_poseIndices[static_cast<size_t>(i)]];
    }
    // Computes every segment's local transform from one frame's pose. A segment the pose does
    // not cover keeps its previous values. Throws NuException when a root segment's position is
    // not three elements long.
    void transform(const ZavoPoseObject& pose);
    // The same for a pose read already.
    void transform(const PoseReading& pose);

private:
    struct Hand {
        int segment;  // host segment of the hand
        NuHandId id;
        int joint;  // finger joint 0 to 19
        const std::vector<int>* poseIndex;
    };

    Hand handOf(int code) const;
    void appendFingers(int firstCode);
    void appendProps(const KexJointArray& joints);
    void transformBody(const PoseReading& pose, int code);
    void transformFinger(const PoseReading& pose, int code);
    void setLocal(int index, const nuvia::Quaternion& parentGlobal,
                  const nuvia::Quaternion& global);

    QStringList m_bodyNames;
    QStringList m_leftFingerNames;
    QStringList m_rightFingerNames;
    std::vector<int> m_segmentMap;      // segment code per export position
    std::vector<size_t> m_poseIndices;  // pose index per export position
    std::vector<int> m_bodyParents;
    std::vector<int> m_fingerParents;
    std::vector<int> m_leftFingerPoseIndex;
    std::vector<int> m_rightFingerPoseIndex;
    PoseReading m_reading;  // of the pose transform() read itself
    // Indexed by pose index.
    std::vector<nuvia::Vector3> m_translations;
    std::vector<nuvia::Quaternion> m_globalOrientations;
    std::vector<nuvia::Quaternion> m_localOrientations;
};
