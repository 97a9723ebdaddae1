#include "exportscene.h"

#include <algorithm>
#include <array>

#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvefilterunroll.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbxglue.h"
#include "parallelfor.h"
#include "zavoversion.h"

namespace {

constexpr double UnrollQualityTolerance = 0.25;

FbxString utf8(const QString& text) {
    return FbxString(text.toUtf8().toStdString());
}

}  // namespace

ExportScene::~ExportScene() {
    if (m_manager) DestroySdkObjects(m_manager, false);
}

void ExportScene::open(const QString& takeName, const QString& comment, bool deterministic) {
    setSegmentNames({});
    m_keyTimesCurve = nullptr;
    InitializeSdkObjects(m_manager, m_scene);
    m_manager->GetIOSettings()->SetBoolProp(EXP_FBX_DETERMINISTIC, deterministic);
    createDocumentInfo(comment);
    m_stack = FbxAnimStack::Create(m_scene, takeName.toLatin1().constData());
    m_layer = FbxAnimLayer::Create(m_scene, "Nuvia Animation Layer");
    m_stack->AddMember(m_layer);
}

void ExportScene::createDocumentInfo(const QString& comment) {
    FbxDocumentInfo* info = FbxDocumentInfo::Create(m_manager, "SceneInfo");
    info->mTitle = "Nuvia ZAVO Exported Scene";
    info->mSubject = "Export of an Nuvia ZAVO Motion Capture";
    info->mAuthor = "Nuvia ZAVO";
    info->mKeywords = "ZAVO Mocap Motion Capture";
    info->mRevision = ZavoVersion::Text;
    info->mComment = utf8(comment);
    m_scene->SetSceneInfo(info);
}

void ExportScene::setTimeMode(FbxTime::EMode mode, double rate) {
    FbxGlobalSettings& settings = m_scene->GetGlobalSettings();
    settings.SetTimeMode(mode);
    if (mode == FbxTime::eCustom) settings.SetCustomFrameRate(rate);
}

void ExportScene::setSegmentNames(const QStringList& names) {
    m_segmentNames = names;
    m_nodeNames.clear();
    m_nodeNames.reserve(names.size());
    for (const QString& name : names) m_nodeNames.push_back(utf8(name));
    m_segments.clear();
}

AnimatedSegment* ExportScene::animatedSegment(int index) {
    const auto i = static_cast<size_t>(index);
    if (m_segments.size() != m_nodeNames.size()) m_segments.resize(m_nodeNames.size());
    AnimatedSegment& segment = m_segments[i];
    if (!segment.found) {
        segment.node = animatedNode(m_scene, m_layer, m_nodeNames[i]);
        segment.found = true;
    }
    return segment.node ? &segment : nullptr;
}

bool ExportScene::save(const QString& fileName, const QString& format, const FbxTimeSpan& span,
                       QString& error) {
    unrollRotations();
    m_stack->SetLocalTimeSpan(span);
    std::string reason;
    const bool saved = SaveScene(m_manager, m_scene, fileName.toUtf8().constData(),
                                 format.toLower().toUtf8().constData(), false, &reason);
    if (!saved) error = QString::fromStdString(reason);
    return saved;
}

namespace {

using RotationCurves = std::array<FbxAnimCurve*, 3>;

void unroll(RotationCurves curves) {
    FbxAnimCurveFilterUnroll filter;
    filter.SetTestForPath(false);
    filter.SetQualityTolerance(UnrollQualityTolerance);
    filter.Apply(curves.data(), 3);
}

// Whether unrolling changes the curves where they are, with no scratch copies, which would be
// objects of the scene: so it goes where the three curves are keyed at the same times, as
// every frame keys them.
bool unrollsInPlace(const RotationCurves& curves) {
    return curves[0] && curves[1] && curves[2] && curves[0]->KeyTimesEqual(*curves[1]) &&
           curves[0]->KeyTimesEqual(*curves[2]);
}

}  // namespace

void ExportScene::unrollRotations() {
    // Euler keys taken frame by frame jump by whole turns or flip; readers interpolating them
    // would spin the long way round between keys.
    std::vector<FbxNode*> nodes;
    for (const FbxString& name : m_nodeNames) {
        if (FbxNode* node = m_scene->FindNodeByName(name)) nodes.push_back(node);
    }
    // Nodes found twice (segments sharing a name) are unrolled as often, in order, here, and so
    // are curves that need copies; every other node's curves on any thread, one at a time each.
    std::vector<RotationCurves> inPlace;
    for (FbxNode* node : nodes) {
        const RotationCurves curves = {
            node->LclRotation.GetCurve(m_layer, "Lcl Rotation", "X", false),
            node->LclRotation.GetCurve(m_layer, "Lcl Rotation", "Y", false),
            node->LclRotation.GetCurve(m_layer, "Lcl Rotation", "Z", false)};
        if (std::count(nodes.begin(), nodes.end(), node) == 1 && unrollsInPlace(curves)) {
            inPlace.push_back(curves);
        } else {
            unroll(curves);
        }
    }
    parallelFor(inPlace.size(), m_unrollThreads, [&inPlace](size_t i) { unroll(inPlace[i]); });
}

void ExportScene::close(bool saved) {
    DestroySdkObjects(m_manager, saved);
    m_manager = nullptr;
    m_scene = nullptr;
    m_stack = nullptr;
    m_layer = nullptr;
    m_segments.clear();
    m_keyTimesCurve = nullptr;
}
