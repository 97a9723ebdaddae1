#pragma once

#include <QString>

#include "zavo/abstractplugin.h"

// One export run. The host calls initialize, exportFrame for every frame in order, then
// finalize exactly once (also after a failed initialize), and deletes the exporter.
class ZAVO_HOST_EXPORT AbstractExporter : public AbstractPlugin {
public:
    ~AbstractExporter() override;

    virtual bool initialize(const QString& fileName) = 0;
    virtual bool exportFrame(int frame) = 0;
    virtual bool finalize(bool cancelled) = 0;
    // Why the last operation did not do what it should, or empty.
    virtual QString lastError() const = 0;
};
