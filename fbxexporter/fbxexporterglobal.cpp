#include "fbxexporterglobal.h"

#include "axisconvention.h"
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

SegmentState hostSegment(const PoseReading& pose, int i) {
    return {firstThree(pose.position(i)), pose.orientation(i)};
}

// Exported finger k of both hands.
SegmentState fingerJoint(const PoseReading& pose, int k) {
    const SkeletonDefinition::ExportedFinger f = SkeletonDefinition::exportedFinger(k);
    // A frame without finger data shows the fingers unrotated at the origin.
    static const KexSegmentPose unrotated;
    const KexSegmentPose& finger = f.joint >= 0 ? pose.finger(f.hand, f.joint) : unrotated;
    return {nuvia::Vector3(finger.position), finger.orientation};
}

}  // namespace

FbxExporterGlobal::FbxExporterGlobal(AbstractZavoStudioPluginInterface& host,
                                     AbstractSettingsSynchronizer* settings)
    : NuFbxExporter(host, settings) {}

bool FbxExporterGlobal::initScene(const QString& name) {
    if (!host().hasBody()) return initObjectScene(name, true);
    if (!firstUsablePose().isValid()) return true;

    FbxScene* scene = sceneUnderWay().scene();
    const QByteArray rootName = name.toUtf8();
    FbxNull* rootNull = FbxNull::Create(scene, rootName.constData());
    FbxNode* root = FbxNode::Create(scene, rootName.constData());
    root->SetNodeAttribute(rootNull);
    root->LclTranslation.Set(FbxDouble3(0, 0, 0));
    root->LclRotation.Set(FbxDouble3(0, 0, 0));
    scene->GetRootNode()->AddChild(root);

    const QStringList names = nodeNames();
    setSegmentNames(names);
    for (const QString& segmentName : names) {
        const QByteArray utf8 = segmentName.toUtf8();
        FbxNull* null = FbxNull::Create(scene, utf8.constData());
        FbxNode* node = FbxNode::Create(scene, utf8.constData());
        node->SetNodeAttribute(null);
        node->SetTransformationInheritType(FbxTransform::eInheritRSrs);
        root->AddChild(node);
    }
    return true;
}

QStringList FbxExporterGlobal::nodeNames() const {
    QStringList names = host().segmentNames();
    const qsizetype hostSegments = names.size();
    if (!host().fingerTrackingSegmentName(NuHand_Left, 0).isEmpty()) {
        for (const NuHandId hand : {NuHand_Left, NuHand_Right}) {
            for (const int joint : SkeletonDefinition::ExportedFingerJoints) {
                names.append(host().fingerTrackingSegmentName(hand, joint));
            }
        }
    }
    // Props get neutral names, so that a rig made for one take fits the next whatever it holds.
    int prop = 0;
    for (qsizetype i = 0; i < hostSegments; ++i) {
        if (host().isProp(static_cast<int>(i))) names[i] = QStringLiteral("Prop%1").arg(++prop);
    }
    return names;
}

bool FbxExporterGlobal::exportFrame(int frame) {
    // Without a prepared run (initialize failed, or the run is over) there is nothing to key.
    if (!isRunning()) return false;
    if (!host().hasBody()) return exportObjectFrame(frame);
    if (!useThisFrame(frame)) return true;
    const std::optional<KeyedFrame> keyed = prepareFrame(frame);
    if (!keyed) return true;
    const PoseReading& pose = keyed->reading;
    const nuvia::Vector3 pelvis = toFbxAxes(nuvia::Vector3(pose.position(0)));
    const int hostSegments = pose.segmentCount();
    nuvia::Vector3 euler;
    for (int i = 0; i < segmentCount(); ++i) {
        const SegmentState s =
            i < hostSegments ? hostSegment(pose, i) : fingerJoint(pose, i - hostSegments);
        // Walking on the spot keeps every segment's horizontal position relative to the pelvis
        // of the same frame.
        nuvia::Vector3 p = toFbxAxes(s.position);
        if (settings().walkOnTheSpot) {
            p[0] -= pelvis[0];
            p[2] -= pelvis[2];
        }
        keyTranslation(i, keyed->time, p);
        toFbxAxes(s.orientation).toEuler(euler);
        keyRotation(i, keyed->time, euler);
    }
    return true;
}
