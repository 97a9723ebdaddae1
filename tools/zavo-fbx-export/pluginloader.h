#pragma once

#include <QPluginLoader>
#include <QString>

class AbstractExporterFactory;

// The plug-in library to load when the user names none: the one installed beside the program
// (lib/zavo/plugins/exporters below the installation prefix), else the build tree's.
QString defaultPluginPath();

// Loads the exporter plug-in the way the studio does: Qt's plug-in loader, the plug-in's
// instance, its exporter interface. The loader keeps the library loaded. Throws RunError.
AbstractExporterFactory* loadExporterFactory(QPluginLoader& loader, const QString& path);
