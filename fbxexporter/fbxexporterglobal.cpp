#include "fbxexporterglobal.h"

#include "channelkeying.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxscene.h"
#include "hostposition.h"
#include "skeletondefinition.h"

namespace {

struct SegmentState {
    nuvia::Vector3 position;
    NuQuaternion orientation;
};

SegmentState hostSegment(const ZavoPoseObject& pose, int i) {
    return {firstThree(pose.pos_g(i)), pose.q_gb(i, PoseBase_Global)};
}

// Finger joint k of the exported ones, counted over both hands: the left hand's 15 first.
SegmentState fingerJoint(const ZavoPoseObject& pose, int k) {
    const NuHandId hand =
        k < SkeletonDefinition::ExportedFingersPerHand ? NuHand_Left : NuHand_Right;
    if (hand == NuHand_Right) k -= SkeletonDefinition::ExportedFingersPerHand;
    const int joint = 4 * k / 3 + 1;  // skips the untracked base joints 0, 4, 8, 12, 16
    // A frame without finger data shows the fingers unrotated at the origin.
    const KexSegmentPose finger =
        pose.hasFingerTrackingData() && joint < SkeletonDefinition::FingerJointCount
            ? pose.fingerTrackingData(hand, joint)
            : KexSegmentPose{};
    return {nuvia::Vector3(finger.position), finger.orientation};
}

}  // namespace

FbxExporterGlobal::FbxExporterGlobal(AbstractZavoStudioPluginInterface& host,
                                     AbstractSettingsSynchronizer* settings)
    : NuFbxExporter(host, settings) {}

bool FbxExporterGlobal::initScene(const QString& name) {
    if (!m_host.hasBody()) return initObjectScene(name, true);
    if (!firstUsablePose().isValid()) return true;

    const QByteArray rootName = name.toUtf8();
    FbxNull* rootNull = FbxNull::Create(m_scene, rootName.constData());
    FbxNode* root = FbxNode::Create(m_scene, rootName.constData());
    root->SetNodeAttribute(rootNull);
    root->LclTranslation.Set(FbxDouble3(0, 0, 0));
    root->LclRotation.Set(FbxDouble3(0, 0, 0));
    m_scene->GetRootNode()->AddChild(root);

    setSegmentNames(nodeNames());
    for (const FbxString& segmentName : m_segmentNodeNames) {
        FbxNull* null = FbxNull::Create(m_scene, segmentName.Buffer());
        FbxNode* node = FbxNode::Create(m_scene, segmentName.Buffer());
        node->SetNodeAttribute(null);
        node->SetTransformationInheritType(FbxTransform::eInheritRSrs);
        root->AddChild(node);
    }
    return true;
}

QStringList FbxExporterGlobal::nodeNames() const {
    QStringList names = m_host.segmentNames();
    const qsizetype hostSegments = names.size();
    if (!m_host.fingerTrackingSegmentName(NuHand_Left, 0).isEmpty()) {
        for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
            for (const int joint : SkeletonDefinition::ExportedFingerJoints) {
                names.append(m_host.fingerTrackingSegmentName(hand, joint));
            }
        }
    }
    // Props get neutral names, so that a rig made for one take fits the next whatever it holds.
    int prop = 0;
    for (qsizetype i = 0; i < hostSegments; ++i) {
        if (m_host.isProp(static_cast<int>(i))) names[i] = QStringLiteral("Prop%1").arg(++prop);
    }
    return names;
}

bool FbxExporterGlobal::exportFrame(int frame) {
    // Without a prepared run (initialize failed, or the run is over) there is nothing to key.
    if (!m_initialized) return false;
    if (!m_host.hasBody()) return exportObjectFrame(frame);
    if (!useThisFrame(frame)) return true;
    ZavoPoseObject pose;
    if (!prepareFrame(frame, pose)) return true;
    const nuvia::Vector3 pelvis(pose.pos_g(0));
    const int hostSegments = pose.segmentStateCount();
    nuvia::Vector3 euler;
    for (int i = 0; i < static_cast<int>(m_segmentNodeNames.size()); ++i) {
        AnimatedSegment* segment = animatedSegment(i);
        if (!segment) continue;
        FbxNode* node = segment->node;
        const SegmentState s =
            i < hostSegments ? hostSegment(pose, i) : fingerJoint(pose, i - hostSegments);
        // Host axes 1, 2, 0 are FBX X, Y, Z. Walking on the spot keeps every segment's horizontal
        // position relative to the pelvis of the same frame.
        const nuvia::Vector3& g = s.position;
        const double x = m_walkOnTheSpot ? g[1] - pelvis[1] : g[1];
        const double z = m_walkOnTheSpot ? g[0] - pelvis[0] : g[0];
        segment->translation.key(node->LclTranslation, m_animLayer, m_keyTime, x * m_outputScale,
                                 g[2] * m_outputScale, z * m_outputScale, m_exportedFrameCount);
        const NuQuaternion& q = s.orientation;
        nuvia::Quaternion(q.w, q.y, q.z, q.x).toEuler(euler);
        segment->rotation.key(node->LclRotation, m_animLayer, m_keyTime, euler[0], euler[1],
                              euler[2], m_exportedFrameCount);
    }
    return true;
}
