#pragma once

#include "nufbxexporter.h"

// The Nodes preset: every segment as a flat node under one root, animated by its global
// position and orientation straight from the host's poses.
class FbxExporterGlobal : public NuFbxExporter {
    Q_OBJECT

public:
    FbxExporterGlobal(AbstractZavoStudioPluginInterface& host,
                      AbstractSettingsSynchronizer* settings);

    // Builds one null node per host segment and per tracked finger joint. A take without a
    // body gets null nodes per object instead; an invalid first pose builds nothing.
    bool initScene(const QString& name) override;
    bool exportFrame(int frame) override;

private:
    QStringList nodeNames() const;
};
