// Takes without a body: every tracked object as a flat node keyed with its global transform.
#include <numbers>

#include "axisconvention.h"
#include "fbx/scene/fbxmarker.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxnull.h"
#include "fbx/scene/fbxscene.h"
#include "hostposition.h"
#include "nufbxexporter.h"

namespace {

FbxNodeAttribute* createObjectAttribute(FbxScene* scene, const char* name, bool useNull) {
    if (useNull) return FbxNull::Create(scene, name);
    FbxMarker* marker = FbxMarker::Create(scene, name);
    marker->SetType(FbxMarker::eStandard);
    marker->Look.Set(FbxMarker::eLightCross);
    return marker;
}

// Objects are keyed turned a quarter turn about the host's vertical axis.
const nuvia::Quaternion& objectTurn() {
    static const nuvia::Quaternion turn = [] {
        nuvia::Quaternion q;
        q.setRotateZ(std::numbers::pi / 2);
        return q;
    }();
    return turn;
}

}  // namespace

bool NuFbxExporter::initObjectScene(const QString&, bool useNulls) {
    if (!firstUsablePose().isValid()) return true;
    FbxScene* scene = m_scene.scene();
    const QStringList names = m_host.segmentNames();
    setSegmentNames(names);
    for (const QString& name : names) {
        const QByteArray utf8 = name.toUtf8();
        FbxNodeAttribute* attribute = createObjectAttribute(scene, utf8.constData(), useNulls);
        FbxNode* node = FbxNode::Create(scene, utf8.constData());
        node->SetNodeAttribute(attribute);
        node->SetTransformationInheritType(FbxTransform::eInheritRrs);
        scene->GetRootNode()->AddChild(node);
    }
    return true;
}

bool NuFbxExporter::exportObjectFrame(int frame) {
    if (!useThisFrame(frame)) return true;
    const std::optional<KeyedFrame> keyed = prepareFrame(frame);
    if (!keyed) return true;
    const PoseReading& pose = keyed->reading;
    nuvia::Quaternion r;
    nuvia::Vector3 euler;
    for (int i = 0; i < segmentCount(); ++i) {
        // An empty pose places every object at the origin with a zero orientation.
        const NuVector& position = pose.position(i);
        const nuvia::Vector3 p = position.size() == 0 ? nuvia::Vector3() : firstThree(position);
        keyTranslation(i, keyed->time, toFbxAxes(p));
        // The host names objects its poses may not hold; it answers for those itself.
        r.setQuatMulQuat(objectTurn(), i < pose.segmentCount()
                                           ? pose.orientation(i)
                                           : keyed->pose.q_gb(i, PoseBase_Global));
        toFbxAxes(r).toEuler(euler);
        keyRotation(i, keyed->time, euler);
    }
    return true;
}
