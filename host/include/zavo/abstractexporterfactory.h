#pragma once

#include <QString>
#include <QtPlugin>

#include "zavo/abstractpluginfactory.h"

class AbstractExporter;

// A factory of exporters: one exporter object per export run.
class ZAVO_HOST_EXPORT AbstractExporterFactory : public AbstractPluginFactory {
public:
    ~AbstractExporterFactory() override;

    // File name extension of the files the exporters write, without the dot.
    virtual QString extension() const = 0;
    virtual bool supportsObjectExporting() const = 0;
    virtual bool supportsParallelExporting() const = 0;
    virtual bool supportsBatchExporting() const { return true; }
    virtual bool supportsMultipleExports() const { return true; }
    // A new exporter for one run, owned by the caller; null when none can be made.
    virtual AbstractExporter* doCreate(AbstractZavoStudioPluginInterface& host) const = 0;
};

#define AbstractExporterFactory_iid "com.nuvia.plugin.exporter/1.0"
Q_DECLARE_INTERFACE(AbstractExporterFactory, AbstractExporterFactory_iid)
