#include "nufbxexporter.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageLogger>

#include "exportsettings.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxanimcurvefilterunroll.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxdocumentinfo.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbxglue.h"
#include "nutypes/nuexception.h"
#include "zavoversion.h"

namespace {

// Result code of the exceptions for settings the exporter cannot work with.
constexpr int InvalidSettingCode = 33;

constexpr double TimeModePrecision = 1e-8;
// Set to "1" by hosts and test runs that want byte-identical files from identical takes.
constexpr const char* DeterministicVariable = "ZAVO_FBX_DETERMINISTIC";
constexpr double UnrollQualityTolerance = 0.25;

FbxString utf8(const QString& text) {
    return FbxString(text.toUtf8().toStdString());
}

}  // namespace

NuFbxExporter::NuFbxExporter(AbstractZavoStudioPluginInterface& host,
                             AbstractSettingsSynchronizer* settings)
    : m_host(host), m_settings(settings) {}

// The manager is released by finalize(), which the host always calls.
NuFbxExporter::~NuFbxExporter() = default;

QString NuFbxExporter::lastError() const {
    return m_lastError;
}

void NuFbxExporter::loadSettings() {
    // Without a settings store the run keeps the defaults.
    if (!m_settings) return;
    const AbstractSettingsSynchronizer& settings = *m_settings;
    const auto [preset, presetText] = readPreset(settings);
    m_preset = preset;
    if (preset == 2) {
        throw NuException(InvalidSettingCode,
                          ("Invalid outputPreset: " + presetText).toStdString());
    }
    const auto [naming, namingText] = readNaming(settings);
    m_naming = naming;
    if (naming == Naming_Invalid) {
        throw NuException(InvalidSettingCode,
                          ("Invalid naming convention: " + namingText).toStdString());
    }
    // A value the run cannot use ends it before anything is made, rather than exporting with
    // a scale of 0 or the wrong format.
    const auto value = [&settings](const char* key) {
        SettingReading reading = readSetting(settings, key);
        if (!reading.error.isEmpty()) {
            throw NuException(InvalidSettingCode, reading.error.toStdString());
        }
        return reading.value;
    };
    m_outputScale = value(ExportSettings::OutputScale).toDouble();
    m_dynamic = value(ExportSettings::TimeIncrementMode).toInt() == 1;
    m_startAtZero = value(ExportSettings::TimeStart).toInt() == 0;
    m_useCalibrationPose = value(ExportSettings::UseCalibrationPose).toBool();
    m_frameSkip = value(ExportSettings::FrameSkip).toInt();
    m_walkOnTheSpot = value(ExportSettings::WalkOnTheSpot).toBool();
    m_exportFormat = value(ExportSettings::ExportFormat).toString();
}

bool NuFbxExporter::initialize(const QString& fileName) {
    m_host.logUsageEvent(QStringLiteral("FileExportedFBX"));
    m_timeSet = false;
    loadSettings();
    if (fileName.isEmpty()) {
        QMessageLogger("fbxexporter", 94, "initialize").warning("No valid filename retrieved");
        return false;
    }
    // "-" is standard output, which no folder holds.
    const bool standardOutput = fileName == QLatin1String("-");
    m_fileName =
        standardOutput ? fileName : QDir::cleanPath(QFileInfo(fileName).absoluteFilePath());
    m_takeName = takeNameOf(m_fileName);

    DirectGlueLinesAwayFrom(m_fileName.toUtf8().constData());
    InitializeSdkObjects(m_manager, m_scene);
    m_animatedSegments.clear();
    m_manager->GetIOSettings()->SetBoolProp(EXP_FBX_DETERMINISTIC,
                                            qgetenv(DeterministicVariable) == "1");
    createDocumentInfo();
    m_animStack = FbxAnimStack::Create(m_scene, m_takeName.toLatin1().constData());
    m_animLayer = FbxAnimLayer::Create(m_scene, "Nuvia Animation Layer");
    m_animStack->AddMember(m_animLayer);
    if (!initScene(QStringLiteral("Reference"))) return false;

    m_startOffset = m_host.recordStartTime().toMSecsSinceEpoch();
    m_exportedFrameCount = static_cast<int32_t>(m_host.frameCount() / (int64_t{m_frameSkip} + 1));
    m_firstFrame = -1;
    m_offeredFrames = m_usedFrames = m_invalidFrames = m_keyedFrames = m_collidingFrames =
        m_poselessFrames = 0;
    m_keyTimes.clear();
    setTimeMode();
    if (m_startAtZero) m_startOffset = 0;
    m_initialized = true;
    return true;
}

QString NuFbxExporter::takeNameOf(const QString& fileName) const {
    // Drop the last suffix; a name without one loses its last character (the dot it lacks is
    // counted), which users' take names have always had.
    const QFileInfo info(fileName);
    QString name = info.fileName();
    const qsizetype keep = name.length() - (info.suffix().length() + 1);
    if (static_cast<size_t>(keep) < static_cast<size_t>(name.length())) name.truncate(keep);
    // Takes recorded in several parts are numbered after a '#'.
    const qsizetype hash = name.indexOf(u'#');
    if (hash >= 0) name.truncate(hash);
    return name;
}

void NuFbxExporter::createDocumentInfo() {
    FbxDocumentInfo* info = FbxDocumentInfo::Create(m_manager, "SceneInfo");
    info->mTitle = "Nuvia ZAVO Exported Scene";
    info->mSubject = "Export of an Nuvia ZAVO Motion Capture";
    info->mAuthor = "Nuvia ZAVO";
    info->mKeywords = "ZAVO Mocap Motion Capture";
    info->mRevision = ZavoVersion::Text;
    info->mComment = utf8(m_host.userComment());
    m_scene->SetSceneInfo(info);
}

void NuFbxExporter::setTimeMode() {
    // One key per exported frame: the scene plays at the host's rate divided by the skip. A
    // rate without a standard mode is the run's own custom rate, whatever it is; it lives in
    // this run only, so runs one after another never see each other's rate.
    m_exportRate = m_host.frameRate() / (m_frameSkip + 1.0);
    m_timeMode = FbxTime::ConvertFrameRateToTimeMode(m_exportRate, TimeModePrecision);
    if (m_timeMode == FbxTime::eDefaultMode) m_timeMode = FbxTime::eCustom;
    FbxGlobalSettings& settings = m_scene->GetGlobalSettings();
    settings.SetTimeMode(m_timeMode);
    if (m_timeMode == FbxTime::eCustom) settings.SetCustomFrameRate(m_exportRate);
}

bool NuFbxExporter::finalize(bool cancelled) {
    // initialize() may have stopped before the scene existed.
    const bool save = !cancelled && m_scene && m_animStack;
    bool saved = false;
    const QString nothing = save ? nothingToExport() : QString();
    if (!nothing.isEmpty()) m_lastError = nothing;
    if (save && nothing.isEmpty()) {
        unrollRotations();
        m_animStack->SetLocalTimeSpan(FbxTimeSpan(m_animationStart, m_animationStop));
        std::string error;
        saved = SaveScene(m_manager, m_scene, m_fileName.toUtf8().constData(),
                          m_exportFormat.toLower().toUtf8().constData(), false, &error);
        // The host shows the reason; the file under the name is the one from before.
        if (!saved) m_lastError = QString::fromStdString(error);
        if (saved) {
            if (const QString lost = lostFramesWarning(); !lost.isEmpty()) m_lastError = lost;
        }
    }
    DestroySdkObjects(m_manager, saved);
    m_initialized = false;
    m_manager = nullptr;
    m_scene = nullptr;
    m_animStack = nullptr;
    m_animLayer = nullptr;
    m_animatedSegments.clear();
    m_poseTransform.reset();
    return saved || !save;
}

void NuFbxExporter::unrollRotations() {
    // Euler keys taken frame by frame jump by whole turns or flip; readers interpolating them
    // would spin the long way round between keys.
    FbxAnimCurveFilterUnroll filter;
    for (const FbxString& name : m_segmentNodeNames) {
        filter.Reset();
        filter.SetTestForPath(false);
        filter.SetQualityTolerance(UnrollQualityTolerance);
        FbxNode* node = m_scene->FindNodeByName(name);
        if (!node) continue;
        FbxAnimCurve* curves[3] = {
            node->LclRotation.GetCurve(m_animLayer, "Lcl Rotation", "X", false),
            node->LclRotation.GetCurve(m_animLayer, "Lcl Rotation", "Y", false),
            node->LclRotation.GetCurve(m_animLayer, "Lcl Rotation", "Z", false)};
        filter.Apply(curves, 3);
    }
}

ZavoPoseObject NuFbxExporter::framePose(int frame) const {
    if (m_useCalibrationPose && frame == m_firstFrame) {
        // A take recorded without a calibration pose keeps its first frame as it is.
        ZavoPoseObject calibration = m_host.nullPose();
        if (isUsablePose(calibration)) return calibration;
    }
    return m_host.pose(frame);
}

void NuFbxExporter::setSegmentNames(const QStringList& names) {
    m_segmentNames = names;
    m_segmentNodeNames.clear();
    m_segmentNodeNames.reserve(names.size());
    for (const QString& name : names) m_segmentNodeNames.push_back(utf8(name));
    m_animatedSegments.clear();
}

AnimatedSegment* NuFbxExporter::animatedSegment(int index) {
    const auto i = static_cast<size_t>(index);
    if (m_animatedSegments.size() != m_segmentNodeNames.size())
        m_animatedSegments.resize(m_segmentNodeNames.size());
    AnimatedSegment& segment = m_animatedSegments[i];
    if (!segment.found) {
        segment.node = animatedNode(m_scene, m_animLayer, m_segmentNodeNames[i]);
        segment.found = true;
    }
    return segment.node ? &segment : nullptr;
}
