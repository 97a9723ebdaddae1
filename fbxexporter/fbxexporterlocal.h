#pragma once

#include <memory>

#include "nufbxexporter.h"
#include "posetransformfbx.h"

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

    std::unique_ptr<PoseTransformFbx> m_poseTransform;  // null until a usable pose built the scene
};
