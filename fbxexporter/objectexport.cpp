// Takes without a body: every tracked object as a flat node keyed with its global transform.
#include <numbers>

#include "axisconvention.h"
#include "channelkeying.h"
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
    setSegmentNames(m_host.segmentNames());
    for (const FbxString& name : m_segmentNodeNames) {
        FbxNodeAttribute* attribute = createObjectAttribute(m_scene, name.Buffer(), useNulls);
        FbxNode* node = FbxNode::Create(m_scene, name.Buffer());
        node->SetNodeAttribute(attribute);
        node->SetTransformationInheritType(FbxTransform::eInheritRrs);
        m_scene->GetRootNode()->AddChild(node);
    }
    return true;
}

bool NuFbxExporter::exportObjectFrame(int frame) {
    if (!useThisFrame(frame)) return true;
    ZavoPoseObject pose;
    if (!prepareFrame(frame, pose)) return true;
    nuvia::Quaternion r;
    nuvia::Vector3 euler;
    for (int i = 0; i < static_cast<int>(m_segmentNodeNames.size()); ++i) {
        AnimatedSegment* segment = animatedSegment(i);
        if (!segment) continue;
        FbxNode* node = segment->node;
        // An empty pose places every object at the origin with a zero orientation.
        const NuVector position = pose.pos_g(i);
        const nuvia::Vector3 p = position.size() == 0 ? nuvia::Vector3() : firstThree(position);
        r.setQuatMulQuat(objectTurn(), pose.q_gb(i, PoseBase_Global));
        const nuvia::Vector3 fbx = toFbxAxes(p);
        segment->translation.key(node->LclTranslation, m_animLayer, m_keyTime,
                                 fbx[0] * m_outputScale, fbx[1] * m_outputScale,
                                 fbx[2] * m_outputScale, m_exportedFrameCount);
        toFbxAxes(r).toEuler(euler);
        segment->rotation.key(node->LclRotation, m_animLayer, m_keyTime, euler[0], euler[1],
                              euler[2], m_exportedFrameCount);
    }
    return true;
}
