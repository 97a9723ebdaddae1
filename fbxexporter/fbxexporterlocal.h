#pragma once

#include "nufbxexporter.h"

class FbxNode;

// The Skeleton preset: the character as a skeleton of limb nodes under a root joint, parented
// along the exported skeleton, animated by local rotations and by the pelvis translation.
class FbxExporterLocal : public NuFbxExporter {
    Q_OBJECT

public:
    FbxExporterLocal(AbstractZavoStudioPluginInterface& host,
                     AbstractSettingsSynchronizer* settings);

    // Builds the skeleton from the calibration pose. A take without a body gets markers
    // instead; an invalid first pose builds nothing.
    bool initScene(const QString& name) override;
    bool exportFrame(int frame) override;

private:
    // A limb-node joint named `name`, not yet in the tree.
    FbxNode* createJoint(const QString& name);
    // Keys the pelvis's translation; `pelvis` is its global position on FBX axes.
    void keyPelvisTranslation(AnimatedSegment& pelvisSegment, const nuvia::Vector3& translation,
                              const nuvia::Vector3& pelvis);
};
