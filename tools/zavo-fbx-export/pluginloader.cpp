#include "pluginloader.h"

#include <zavo/abstractexporterfactory.h>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include "runerror.h"

QString defaultPluginPath() {
    const QString installed = QDir(QCoreApplication::applicationDirPath())
                                  .filePath(QStringLiteral(ZAVO_PLUGIN_RELATIVE_PATH));
#ifdef ZAVO_PLUGIN_BUILD_PATH
    if (!QFileInfo::exists(installed) && QFileInfo::exists(QStringLiteral(ZAVO_PLUGIN_BUILD_PATH)))
        return QStringLiteral(ZAVO_PLUGIN_BUILD_PATH);
#endif
    return QDir::cleanPath(installed);
}

AbstractExporterFactory* loadExporterFactory(QPluginLoader& loader, const QString& path) {
    const std::string where = path.toStdString() + ": ";
    if (!QFileInfo::exists(path)) throw RunError(where + "no such plug-in file");
    loader.setFileName(path);
    if (!loader.load())
        throw RunError(where + "cannot load the plug-in: " + loader.errorString().toStdString());
    QObject* instance = loader.instance();
    if (!instance)
        throw RunError(where +
                       "the plug-in made no instance: " + loader.errorString().toStdString());
    auto* factory = qobject_cast<AbstractExporterFactory*>(instance);
    if (!factory || factory->type() != AbstractPluginFactory::ExporterType)
        throw RunError(where + "not an exporter plug-in (no " AbstractExporterFactory_iid ")");
    return factory;
}
