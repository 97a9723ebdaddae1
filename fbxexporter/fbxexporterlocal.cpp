#include "fbxexporterlocal.h"

#include <QHash>
#include <algorithm>

#include "axisconvention.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"
#include "skeletondefinition.h"

FbxExporterLocal::FbxExporterLocal(AbstractZavoStudioPluginInterface& host,
                                   AbstractSettingsSynchronizer* settings)
    : NuFbxExporter(host, settings) {}

bool FbxExporterLocal::initScene(const QString& name) {
    m_poseTransform.reset();
    if (!host().hasBody()) return initObjectScene(name, false);
    // A take whose first frames lack a pose is built from its first usable one; without any,
    // finalize reports that there is nothing to export.
    const ZavoPoseObject first = firstUsablePose();
    if (!first.isValid()) return true;

    // Without a calibration pose the skeleton stands as in the first usable frame.
    ZavoPoseObject nullPose = host().nullPose();
    if (!isUsablePose(nullPose)) nullPose = first;
    m_poseTransform =
        std::make_unique<PoseTransformFbx>(nullPose, host().jointInfoList(), settings().naming);
    // The take's own segment count, with the fingers when the calibration pose has them, decides
    // how many joints are made; it matches the skeleton when every prop of the take has a joint.
    const int fingers =
        nullPose.hasFingerTrackingData() ? SkeletonDefinition::ExportedFingerCount : 0;
    const int count =
        std::min(first.segmentStateCount() + fingers, m_poseTransform->getSegmentCount());

    FbxScene* scene = sceneUnderWay().scene();
    FbxSkeleton* rootSkeleton = FbxSkeleton::Create(scene, name.toUtf8().constData());
    FbxNode* root = FbxNode::Create(scene, name.toUtf8().constData());
    rootSkeleton->SetSkeletonType(FbxSkeleton::eRoot);
    root->SetNodeAttribute(rootSkeleton);
    root->LclTranslation.Set(FbxDouble3(0, 0, 0));
    root->LclRotation.Set(FbxDouble3(0, 0, 0));
    scene->GetRootNode()->AddChild(root);

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
        const double scale = settings().outputScale;
        node->LclTranslation.Set(FbxDouble3(scale * t[0], scale * t[1], scale * t[2]));
        node->LclRotation.Set(FbxDouble3(r[0], r[1], r[2]));
        parent->AddChild(node);
    }
    setSegmentNames(names);
    return true;
}

FbxNode* FbxExporterLocal::createJoint(const QString& name) {
    const QByteArray utf8 = name.toUtf8();
    FbxScene* scene = sceneUnderWay().scene();
    FbxNode* node = FbxNode::Create(scene, utf8.constData());
    FbxSkeleton* skeleton = FbxSkeleton::Create(scene, utf8.constData());
    skeleton->SetSkeletonType(FbxSkeleton::eLimbNode);
    node->SetNodeAttribute(skeleton);
    // The parent's scaling applies before the joint's own rotation.
    node->SetTransformationInheritType(FbxTransform::eInheritRSrs);
    return node;
}

bool FbxExporterLocal::exportFrame(int frame) {
    // Without a prepared run (initialize failed, or the run is over) there is nothing to key.
    if (!isRunning()) return false;
    if (!host().hasBody()) return exportObjectFrame(frame);
    if (!useThisFrame(frame)) return true;
    const std::optional<KeyedFrame> keyed = prepareFrame(frame);
    if (!keyed) return true;
    // Nothing was built for a take without a usable pose.
    if (!m_poseTransform) return true;
    m_poseTransform->transform(keyed->reading);
    const nuvia::Vector3 pelvis = toFbxAxes(nuvia::Vector3(keyed->reading.position(0)));
    const int count = std::min(m_poseTransform->getSegmentCount(), segmentCount());
    for (int i = 0; i < count; ++i) {
        // Only the pelvis moves; every other joint keeps its offset from its parent. Walking on
        // the spot keeps the pelvis's horizontal position at its own: zero, formed as a
        // difference so that a position that is not a number stays visible.
        if (i == 0) {
            nuvia::Vector3 t = m_poseTransform->getSegmentTranslation(i);
            if (settings().walkOnTheSpot) {
                t[0] = pelvis[0] - pelvis[0];
                t[2] = pelvis[2] - pelvis[2];
            }
            keyTranslation(i, keyed->time, t);
        }
        keyRotation(i, keyed->time, m_poseTransform->getSegmentRotation(i));
    }
    return true;
}
