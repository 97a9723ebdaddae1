#include "nufbxexporter.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageLogger>
#include <system_error>

#include "fbx/io/fbxprocessorthreads.h"
#include "fbx/scene/fbxnode.h"
#include "fbxglue.h"

namespace {

// Set to "1" by hosts and test runs that want byte-identical files from identical takes.
constexpr const char* DeterministicVariable = "ZAVO_FBX_DETERMINISTIC";

QString takeNameOf(const QString& fileName) {
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

}  // namespace

NuFbxExporter::NuFbxExporter(AbstractZavoStudioPluginInterface& host,
                             AbstractSettingsSynchronizer* settings)
    : m_host(host), m_settingsStore(settings) {}

// The scene releases a manager that no finalize() released, once nothing keys into it.
NuFbxExporter::~NuFbxExporter() {
    m_keying.reset();
}

const ExportScene& NuFbxExporter::sceneUnderWay() const {
    if (m_keying) m_keying->waitUntilKeyed();
    return m_scene;
}

QString NuFbxExporter::lastError() const {
    return m_lastError;
}

void NuFbxExporter::loadSettings() {
    // Without a settings store the run keeps the defaults.
    if (m_settingsStore) m_settings = readRunSettings(*m_settingsStore);
}

bool NuFbxExporter::initialize(const QString& fileName) {
    stopKeying(true);
    m_host.logUsageEvent(QStringLiteral("FileExportedFBX"));
    loadSettings();
    if (fileName.isEmpty()) {
        QMessageLogger("fbxexporter", 94, "initialize").warning("No valid filename retrieved");
        return false;
    }
    // "-" is standard output, which no folder holds.
    const bool standardOutput = fileName == QLatin1String("-");
    m_fileName =
        standardOutput ? fileName : QDir::cleanPath(QFileInfo(fileName).absoluteFilePath());

    DirectGlueLinesAwayFrom(m_fileName.toUtf8().constData());
    m_scene.open(takeNameOf(m_fileName), m_host.userComment(),
                 qgetenv(DeterministicVariable) == "1");
    if (!initScene(QStringLiteral("Reference"))) return false;

    // The timing lives in this run only, so runs one after another never see each other's rate.
    m_timing =
        KeyTiming(m_settings, m_host.frameRate(), m_host.recordStartTime().toMSecsSinceEpoch());
    m_scene.setTimeMode(m_timing.timeMode(), m_timing.exportRate());
    m_scene.setUnrollThreads(m_helperThreadsWanted ? FbxProcessorThreads() : 1);
    m_exportedFrameCount =
        static_cast<int32_t>(m_host.frameCount() / (int64_t{m_settings.frameSkip} + 1));
    m_counts = FrameCounts();
    forgetPoses();
    startKeying();
    m_running = true;
    return true;
}

void NuFbxExporter::startKeying() {
    if (!m_helperThreadsWanted || FbxProcessorThreads() < 2) return;
    try {
        m_keying = std::make_unique<KeyingThread>(
            [this](std::span<const ChannelKey> keys) { keyIntoScene(keys); });
    } catch (const std::system_error&) {
        // Without a thread to spare the host's thread keys, as on a single processor.
        m_keying.reset();
    }
}

std::exception_ptr NuFbxExporter::stopKeying(bool cancelled) {
    const std::unique_ptr<KeyingThread> keying = std::move(m_keying);
    if (!keying) return nullptr;
    if (cancelled) {
        keying->cancel();
        return nullptr;
    }
    try {
        keying->finish();
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

bool NuFbxExporter::finalize(bool cancelled) {
    if (const std::exception_ptr failure = stopKeying(cancelled)) {
        // Frames the host saw accepted lack keys: no file rather than one without them.
        m_scene.close(false);
        m_running = false;
        std::rethrow_exception(failure);
    }
    // initialize() may have stopped before the scene existed.
    const bool save = !cancelled && m_scene.isOpen();
    bool saved = false;
    const QString nothing = save ? nothingToExport() : QString();
    if (!nothing.isEmpty()) m_lastError = nothing;
    if (save && nothing.isEmpty()) {
        // The host shows the reason; the file under the name is the one from before.
        saved = m_scene.save(m_fileName, m_settings.exportFormat,
                             FbxTimeSpan(m_animationStart, m_animationStop), m_lastError);
        if (saved) {
            if (const QString lost = m_counts.lostFramesWarning(); !lost.isEmpty()) {
                m_lastError = lost;
            }
        }
    }
    m_scene.close(saved);
    forgetPoses();
    m_running = false;
    return saved || !save;
}

QString NuFbxExporter::nothingToExport() const {
    if (m_scene.segmentCount() == 0) {
        return tr("Nothing to export: no frame of the take has a usable pose (valid, finite, "
                  "and within range at output scale %1)")
            .arg(m_settings.outputScale);
    }
    return m_counts.nothingKeyed();
}

void NuFbxExporter::keyTranslation(int segment, FbxTime time, const nuvia::Vector3& translation) {
    const double scale = m_settings.outputScale;
    addKey({segment,
            ChannelKey::Translation,
            time,
            {translation[0] * scale, translation[1] * scale, translation[2] * scale}});
}

void NuFbxExporter::keyRotation(int segment, FbxTime time, const nuvia::Vector3& euler) {
    addKey({segment, ChannelKey::Rotation, time, {euler[0], euler[1], euler[2]}});
}

void NuFbxExporter::keyRotation(int segment, FbxTime time, const nuvia::Quaternion& rotation) {
    addKey(
        {segment, ChannelKey::Orientation, time, {rotation.w, rotation.x, rotation.y, rotation.z}});
}

void NuFbxExporter::addKey(const ChannelKey& key) {
    if (m_keying) {
        m_keying->add(key);
    } else {
        keyIntoScene(std::span(&key, 1));
    }
}

void NuFbxExporter::keyIntoScene(std::span<const ChannelKey> keys) {
    nuvia::Vector3 values;
    for (const ChannelKey& key : keys) {
        AnimatedSegment* segment = m_scene.animatedSegment(key.segment);
        if (!segment) continue;
        const bool translation = key.channel == ChannelKey::Translation;
        ChannelCurves& curves = translation ? segment->translation : segment->rotation;
        FbxProperty& property =
            translation ? segment->node->LclTranslation : segment->node->LclRotation;
        if (key.channel == ChannelKey::Orientation) {
            nuvia::Quaternion(key.values[0], key.values[1], key.values[2], key.values[3])
                .toEuler(values);
        } else {
            values = nuvia::Vector3(key.values[0], key.values[1], key.values[2]);
        }
        curves.key(property, m_scene.layer(), key.time, static_cast<float>(values[0]),
                   static_cast<float>(values[1]), static_cast<float>(values[2]),
                   m_exportedFrameCount, m_scene.keyTimesCurve());
    }
}
