#include "fbxexporterfactory.h"

#include <zavo/abstractsettingssynchronizer.h>
#include <zavo/abstractzavostudioplugininterface.h>

#include "exportsettings.h"
#include "fbxexporterglobal.h"
#include "fbxexporterlocal.h"
#include "fbxexporteroptionspage.h"
#include "nutypes/nutimestamp.h"
#include "nutypes/nuversion.h"
#include "zavoversion.h"

namespace {

// Severity and code under which the host files the refusal of an unknown preset.
constexpr int PresetLogSeverity = 3;
constexpr int PresetLogCode = 500;

}  // namespace

FbxExporterFactory::~FbxExporterFactory() {
    delete m_settings;
}

void FbxExporterFactory::initializePlugin(AbstractZavoStudioPluginInterface& host) {
    AbstractSettingsSynchronizer* settings =
        host.registerSettings(ExportSettings::defaults(), ExportSettings::descriptions(), this);
    if (settings != m_settings) delete m_settings;
    m_settings = settings;
}

QString FbxExporterFactory::trName() const {
    return tr("FBX Exporter");
}

QString FbxExporterFactory::orgName() const {
    return QStringLiteral("FBX Exporter");
}

QString FbxExporterFactory::extension() const {
    return QStringLiteral("fbx");
}

QString FbxExporterFactory::version() const {
    const NuVersion version{ZavoVersion::Major,     ZavoVersion::Minor,
                            ZavoVersion::Revision,  ZavoVersion::BuildNumber,
                            ZavoVersion::BuildTime, ZavoVersion::BuildNote};
    return QString::fromStdString(NuVersion_toString(version));
}

int FbxExporterFactory::type() const {
    return AbstractPluginFactory::ExporterType;
}

AbstractOptionsPage* FbxExporterFactory::optionsPage() {
    if (!m_settings) return nullptr;
    return new FbxExporterOptionsPage(m_settings);
}

bool FbxExporterFactory::supportsObjectExporting() const {
    return true;
}

bool FbxExporterFactory::supportsParallelExporting() const {
    return false;
}

AbstractSettingsSynchronizer* FbxExporterFactory::settingsSynchronizer() const {
    return m_settings;
}

AbstractExporter* FbxExporterFactory::doCreate(AbstractZavoStudioPluginInterface& host) const {
    if (!m_settings) return nullptr;
    const auto [preset, text] = readPreset(*m_settings);
    switch (preset) {
        case 0:
            return new FbxExporterGlobal(host, m_settings);
        case 1:
            return new FbxExporterLocal(host, m_settings);
        default: {
            // The host shows the last logged line as the reason no export started, so that line
            // also names the key and what it accepts, as every other refused setting does.
            const QString refusal = readSetting(*m_settings, ExportSettings::OutputPreset).error;
            host.log(nullptr, PresetLogSeverity,
                     QStringLiteral("FBX Preset \"%1\" not supported. %2").arg(text, refusal),
                     PresetLogCode, NuTimeStamp_now());
            return nullptr;
        }
    }
}
