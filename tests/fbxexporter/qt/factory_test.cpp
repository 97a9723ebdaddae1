#include <gtest/gtest.h>

#include <QFile>
#include <QLibrary>
#include <QPluginLoader>
#include <memory>
#include <typeinfo>

#include <zavo/abstractexporter.h>
#include <zavo/abstractoptionspage.h>

#include "fakehost.h"
#include "loadedplugin.h"
#include "zavoversion.h"

TEST(FbxExporterPlugin, MetadataNamesTheFactoryAndNothingElse) {
    QPluginLoader loader(QStringLiteral(FBXEXPORTER_PLUGIN_PATH));
    const QJsonObject meta = loader.metaData();
    EXPECT_EQ(meta.value("IID").toString(), "FbxExporter");
    EXPECT_EQ(meta.value("className").toString(), "FbxExporterFactory");
    EXPECT_FALSE(meta.contains("MetaData"));

    QLibrary library(QStringLiteral(FBXEXPORTER_PLUGIN_PATH));
    auto query =
        reinterpret_cast<QtPluginMetaDataFunction>(library.resolve("qt_plugin_query_metadata_v2"));
    ASSERT_NE(query, nullptr);
    // Header: format 1, the Qt version built with, the CPU level; then the CBOR map
    // {2: "FbxExporter", 3: "FbxExporterFactory"}.
    const QByteArray payload = QByteArray("\x01\x06") + char(QT_VERSION_MINOR) +
                               char(QPluginMetaData::archRequirements()) + "\xbf\x02\x6b" +
                               "FbxExporter" + "\x03\x72" + "FbxExporterFactory" + "\xff";
    ASSERT_EQ(payload.size(), 39);
    const QPluginMetaData raw = query();
    const QByteArray served(static_cast<const char*>(raw.data), qsizetype(raw.size));
    EXPECT_EQ(served.left(39).toHex().toStdString(), payload.toHex().toStdString());

    QFile file(QStringLiteral(FBXEXPORTER_PLUGIN_PATH));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    // ELF note: name size 12, payload size 39, Qt's note type, owner name, payload.
    const QByteArray note = QByteArray("\x0c\0\0\0\x27\0\0\0\x01\0\x51\x74", 12) +
                            QByteArray("qt-project!\0", 12) + payload;
    EXPECT_TRUE(file.readAll().contains(note));
}

TEST(FbxExporterPlugin, OneInstanceAnsweringTheFactoryInterfaces) {
    QObject* instance = pluginInstance();
    QLibrary library(QStringLiteral(FBXEXPORTER_PLUGIN_PATH));
    auto entry = reinterpret_cast<QtPluginInstanceFunction>(library.resolve("qt_plugin_instance"));
    ASSERT_TRUE(instance && entry);
    EXPECT_EQ(entry(), instance);
    EXPECT_EQ(entry(), instance);
    void* factory = pluginFactory();
    for (const char* id : {"AbstractExporterFactory", "com.nuvia.plugin.exporter/1.0",
                           "com.nuvia.pluginfactory/1.0"}) {
        EXPECT_EQ(instance->qt_metacast(id), factory) << id;
    }
}

TEST(FbxExporterPlugin, FactoryDescribesTheExporterAndRegistersItsSettings) {
    AbstractExporterFactory& factory = *pluginFactory();
    const QString version = QString::fromLatin1(ZavoVersion::Text) + '.' +
                            QString::number(ZavoVersion::BuildNumber) + ' ' +
                            QString::fromLatin1(ZavoVersion::BuildNote);
    EXPECT_EQ(
        QStringList({factory.trName(), factory.orgName(), factory.extension(), factory.version()}),
        QStringList({"FBX Exporter", "FBX Exporter", "fbx", version}));
    EXPECT_EQ(factory.type(), 1);
    EXPECT_TRUE(factory.supportsObjectExporting());
    EXPECT_FALSE(factory.supportsParallelExporting());

    FakeHost host;
    factory.initializePlugin(host);
    EXPECT_EQ(host.registeredBy, &factory);
    EXPECT_EQ(factory.settingsSynchronizer(), host.settings);
    const QMap<QString, QVariant>& defaults = host.settings->defaults;
    EXPECT_EQ(defaults.size(), 9);
    EXPECT_EQ(host.settings->descriptions.keys(), defaults.keys());
    EXPECT_EQ(defaults["outputScale"].typeId(), QMetaType::Int);  // an integer, deliberately
    EXPECT_EQ(defaults["useCalibrationPose"], QVariant(true));
    EXPECT_EQ(defaults["exportFormat"], QVariant("ascii"));

    std::unique_ptr<AbstractOptionsPage> page(factory.optionsPage());
    ASSERT_TRUE(page && !page->parent());
    EXPECT_EQ(page->qt_metacast("com.nuvia.optionspage/1.0"), page.get());
    EXPECT_EQ(page->name() + page->category() + page->factoryName(), "FBXExportersFBX Exporter");
}

TEST(FbxExporterPlugin, DoCreateMakesTheExporterOfTheStoredPreset) {
    AbstractExporterFactory& factory = *pluginFactory();
    FakeHost host;
    factory.initializePlugin(host);
    const std::pair<QVariant, const char*> cases[] = {
        {"nodes", "Global"},   {"NODES", "Global"}, {0, "Global"}, {"", "Global"},
        {"skeleton", "Local"}, {1, "Local"},        {2, nullptr},  {"Mesh", nullptr}};
    for (const auto& [preset, exporterKind] : cases) {
        host.settings->stored["outputPreset"] = preset;
        host.logs.clear();
        std::unique_ptr<AbstractExporter> exporter(factory.doCreate(host));
        const QString text = preset.toString();
        const QByteArray type = exporter ? typeid(*exporter).name() : "none";
        EXPECT_TRUE(type.endsWith(exporterKind ? "FbxExporter" + QByteArray(exporterKind) : "none"))
            << type.data() << " for " << text.toStdString();
        EXPECT_EQ(host.logs,
                  exporterKind
                      ? QStringList()
                      : QStringList(QString("3 500 FBX Preset \"%1\" not supported. Invalid "
                                            "outputPreset: \"%1\" (accepted: Nodes or Skeleton "
                                            "in any case, 0 or 1)")
                                        .arg(text)));
    }
}
