#pragma once

#include <QObject>
#include <QPluginLoader>

#include <zavo/abstractexporterfactory.h>

// The built plug-in, loaded the way the host loads it.
inline QObject* pluginInstance() {
    static QPluginLoader loader(QStringLiteral(FBXEXPORTER_PLUGIN_PATH));
    return loader.instance();
}

inline AbstractExporterFactory* pluginFactory() {
    return qobject_cast<AbstractExporterFactory*>(pluginInstance());
}
