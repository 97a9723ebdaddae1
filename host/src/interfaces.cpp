// Out-of-line destructors anchor each interface's identity in the host library.
#include "zavo/abstractexporter.h"
#include "zavo/abstractexporterfactory.h"
#include "zavo/abstractplugin.h"
#include "zavo/abstractpluginfactory.h"
#include "zavo/abstractsettingssynchronizer.h"
#include "zavo/abstractzavostudioplugininterface.h"

AbstractPlugin::~AbstractPlugin() = default;
AbstractExporter::~AbstractExporter() = default;
AbstractPluginFactory::~AbstractPluginFactory() = default;
AbstractExporterFactory::~AbstractExporterFactory() = default;
AbstractSettingsSynchronizer::~AbstractSettingsSynchronizer() = default;
AbstractZavoStudioPluginInterface::~AbstractZavoStudioPluginInterface() = default;
