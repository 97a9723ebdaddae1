#pragma once

#include <QObject>
#include <QString>
#include <QtPlugin>

#include <zavo/abstractexporterfactory.h>

// The one object the plug-in library publishes: it names the FBX exporter, registers its
// settings with the host, hands out the options page and makes one exporter per export run.
class FbxExporterFactory : public QObject, public AbstractExporterFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "FbxExporter")
    Q_INTERFACES(AbstractExporterFactory : AbstractPluginFactory)

public:
    FbxExporterFactory() = default;
    ~FbxExporterFactory() override;

    void initializePlugin(AbstractZavoStudioPluginInterface& host) override;
    QString trName() const override;
    QString orgName() const override;
    QString extension() const override;
    QString version() const override;
    int type() const override;
    // Null until initializePlugin has run: the page has no settings to edit before that.
    AbstractOptionsPage* optionsPage() override;
    bool supportsObjectExporting() const override;
    // The FBX time mode is process-wide, so two runs at once would disturb each other's keys.
    bool supportsParallelExporting() const override;
    AbstractSettingsSynchronizer* settingsSynchronizer() const override;
    // The exporter of the stored output preset. An unsupported preset is logged with the host
    // rather than thrown, so the host just reports that no exporter exists.
    AbstractExporter* doCreate(AbstractZavoStudioPluginInterface& host) const override;

private:
    AbstractSettingsSynchronizer* m_settings = nullptr;  // owned
};
