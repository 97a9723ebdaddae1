#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "axisconvention.h"
#include "exportprobe.h"
#include "skeletondefinition.h"
#include "synthetictake.h"
#include "tests/support/fbxassimpscene.h"

namespace {

// Exports the take with the probe and loads the file with the independent reader.
template <class Exporter>
std::unique_ptr<fbxtest::AssimpScene> exportAndRead(FakeHost& host, const QString& format) {
    QTemporaryDir dir;
    const QString file = dir.filePath("take.fbx");
    host.settings.values["exportFormat"] = format;
    Probe<Exporter> probe(host);
    probe.run(file);
    probe.finalize(false);
    // The format names a writer by its description, whatever its case.
    QFile written(file);
    EXPECT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.read(18) == "Kaydara FBX Binary", format.toLower() != "ascii")
        << format.toStdString();
    auto scene = std::make_unique<fbxtest::AssimpScene>();
    std::string error;
    EXPECT_TRUE(scene->Load(file.toStdString(), error)) << error;
    return scene;
}

// Largest distance, in centimetres, between a joint's world position in the file and the
// take's global position of what it shows, over a few frames.
double worstWorldPosition(const FakeHost& host, const fbxtest::AssimpScene& scene) {
    const PoseTransformFbx joints(host.nullPose(), host.jointInfoList(), Naming_Default);
    const int segments = host.nullPose().segmentStateCount();
    double worst = 0;
    for (int frame : {1, 7, 20, 39}) {
        const FakePose& pose = *host.frames[frame];
        for (int i = 0; i < joints.getSegmentCount(); ++i) {
            QString name;
            int index = 0, parent = 0;
            joints.getSegmentMeta(i, name, index, parent);
            const int finger = index - segments;
            const SkeletonDefinition::ExportedFinger f = SkeletonDefinition::exportedFinger(finger);
            const NuVector& p =
                finger < 0 ? pose.positions[index] : (*pose.fingers)[f.hand][f.joint].position;
            const auto world = fbxtest::Translation(
                scene.WorldTransformAt(name.toStdString(), pose.time / 1000.0));
            const nuvia::Vector3 expected = toFbxAxes(p);
            for (int a = 0; a < 3; ++a) {
                worst = std::max(worst, std::abs(world[a] - expected[a] * 100));
            }
        }
    }
    return worst;
}

}  // namespace

TEST(RoundTrip, EveryPresetReadsBackWithItsHierarchyKeysAndWorldPositions) {
    for (const char* format : {"Binary", "ascii"}) {
        FakeHost host;
        loadRigidTake(host, {.frames = 40, .fingers = true, .props = 2});
        const auto skeleton = exportAndRead<FbxExporterLocal>(host, format);
        EXPECT_EQ(skeleton->ParentName("Hips"), "Reference") << format;
        EXPECT_EQ(skeleton->ParentName("LeftHandThumb2"), "LeftHandThumb1");
        EXPECT_EQ(skeleton->ParentName("Prop2"), "LeftHand");
        EXPECT_EQ(skeleton->NodeNames().size(), 1u + 23 + 30 + 2);
        EXPECT_EQ(skeleton->RotationKeys("LeftHandPinky3").size(), 40u);
        EXPECT_EQ(skeleton->TranslationKeys("Hips").size(), 40u);
        EXPECT_LT(worstWorldPosition(host, *skeleton), 0.001);

        const auto nodes = exportAndRead<FbxExporterGlobal>(host, format);
        EXPECT_EQ(nodes->ParentName("RFinger19"), "Reference") << format;
        EXPECT_EQ(nodes->ParentName("Prop1"), "Reference");
        EXPECT_EQ(nodes->NodeNames().size(), 1u + 25 + 30);
        EXPECT_EQ(nodes->TranslationKeys("Seg9").size(), 40u);
        EXPECT_EQ(nodes->RotationKeys("Seg9").size(), 40u);
    }
}
