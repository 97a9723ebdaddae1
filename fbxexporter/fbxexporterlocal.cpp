#include "fbxexporterlocal.h"

#include <QHash>

#include "axisconvention.h"
#include "channelkeying.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"
#include "skeletondefinition.h"

FbxExporterLocal::FbxExporterLocal(AbstractZavoStudioPluginInterface& host,
                                   AbstractSettingsSynchronizer* settings)
    : NuFbxExporter(host, settings) {}

bool FbxExporterLocal::initScene(const QString& name) {
    if (!m_host.hasBody()) return initObjectScene(name, false);
    // A take whose first frames lack a pose is built from its first usable one; without any,
    // finalize reports that there is nothing to export.
    const ZavoPoseObject first = firstUsablePose();
    if (!first.isValid()) return true;

    // Without a calibration pose the skeleton stands as in the first usable frame.
    ZavoPoseObject nullPose = m_host.nullPose();
    if (!isUsablePose(nullPose)) nullPose = first;
    m_poseTransform = std::make_unique<PoseTransformFbx>(nullPose, m_host.jointInfoList(),
                                                         static_cast<Naming>(m_naming));
    // The take's own segment count, with the fingers when the calibration pose has them, decides
    // how many joints are made; it matches the skeleton when every prop of the take has a joint.
    const int fingers =
        nullPose.hasFingerTrackingData() ? SkeletonDefinition::ExportedFingerCount : 0;
    const int count =
        std::min(first.segmentStateCount() + fingers, m_poseTransform->getSegmentCount());

    FbxSkeleton* rootSkeleton = FbxSkeleton::Create(m_scene, name.toUtf8().constData());
    FbxNode* root = FbxNode::Create(m_scene, name.toUtf8().constData());
    rootSkeleton->SetSkeletonType(FbxSkeleton::eRoot);
    root->SetNodeAttribute(rootSkeleton);
    root->LclTranslation.Set(FbxDouble3(0, 0, 0));
    root->LclRotation.Set(FbxDouble3(0, 0, 0));
    m_scene->GetRootNode()->AddChild(root);

    // The joints start in the calibration pose.
    m_poseTransform->transform(nullPose);
    QStringList names;
    QHash<int, FbxNode*> nodeOfPoseIndex;
    for (int i = 0; i < count; ++i) {
        QString segmentName;
        int poseIndex = -1, parentIndex = -1;
        nuvia::Vector3 t, r;
        m_poseTransform->getSegmentMeta(i, segmentName, poseIndex, parentIndex);
        m_poseTransform->getSegmentPose(i, t, r);
        names.append(segmentName);
        // Parents come first in the skeleton's order; a joint whose parent is not made yet (a
        // prop the joint list hangs from itself, say) hangs from the root.
        FbxNode* parent = nodeOfPoseIndex.value(parentIndex, root);
        FbxNode* node = createJoint(segmentName);
        nodeOfPoseIndex.insert(poseIndex, node);
        node->LclTranslation.Set(
            FbxDouble3(m_outputScale * t[0], m_outputScale * t[1], m_outputScale * t[2]));
        node->LclRotation.Set(FbxDouble3(r[0], r[1], r[2]));
        parent->AddChild(node);
    }
    setSegmentNames(names);
    return true;
}

FbxNode* FbxExporterLocal::createJoint(const QString& name) {
    const QByteArray utf8 = name.toUtf8();
    FbxNode* node = FbxNode::Create(m_scene, utf8.constData());
    FbxSkeleton* skeleton = FbxSkeleton::Create(m_scene, utf8.constData());
    skeleton->SetSkeletonType(FbxSkeleton::eLimbNode);
    node->SetNodeAttribute(skeleton);
    // The parent's scaling applies before the joint's own rotation.
    node->SetTransformationInheritType(FbxTransform::eInheritRSrs);
    return node;
}

bool FbxExporterLocal::exportFrame(int frame) {
    // Without a prepared run (initialize failed, or the run is over) there is nothing to key.
    if (!m_initialized) return false;
    if (!m_host.hasBody()) return exportObjectFrame(frame);
    if (!useThisFrame(frame)) return true;
    ZavoPoseObject pose;
    if (!prepareFrame(frame, pose)) return true;
    // Nothing was built for a take without a usable pose.
    if (!m_poseTransform) return true;
    m_poseTransform->transform(pose);
    const nuvia::Vector3 pelvis = toFbxAxes(nuvia::Vector3(pose.pos_g(0)));
    const int count =
        std::min(m_poseTransform->getSegmentCount(), static_cast<int>(m_segmentNodeNames.size()));
    nuvia::Vector3 t, r;
    for (int i = 0; i < count; ++i) {
        m_poseTransform->getSegmentPose(i, t, r);
        AnimatedSegment* segment = animatedSegment(i);
        if (!segment) continue;
        // Only the pelvis moves; every other joint keeps its offset from its parent.
        if (i == 0) keyPelvisTranslation(*segment, t, pelvis);
        segment->rotation.key(segment->node->LclRotation, m_animLayer, m_keyTime, r[0], r[1], r[2],
                              m_exportedFrameCount);
    }
    return true;
}

void FbxExporterLocal::keyPelvisTranslation(AnimatedSegment& pelvisSegment,
                                            const nuvia::Vector3& translation,
                                            const nuvia::Vector3& pelvis) {
    // Walking on the spot keeps the horizontal position at the pelvis's own: zero, formed as a
    // difference so that a position that is not a number stays visible.
    const double x = m_walkOnTheSpot ? pelvis[0] - pelvis[0] : translation[0];
    const double z = m_walkOnTheSpot ? pelvis[2] - pelvis[2] : translation[2];
    pelvisSegment.translation.key(pelvisSegment.node->LclTranslation, m_animLayer, m_keyTime,
                                  x * m_outputScale, translation[1] * m_outputScale,
                                  z * m_outputScale, m_exportedFrameCount);
}
