// Files written by the exporter, read back by an independent open reader (assimp).
#include <cmath>

#include "fbx/scene/fbxscene.h"
#include "tests/fbxio/fbxio_export_util.h"
#include "tests/fbxio/fbxio_test_util.h"
#include "tests/support/fbxassimpscene.h"

namespace {

using fbxtest::AnimatedSceneShape;
using fbxtest::AssimpScene;
using fbxtest::TempDir;

struct Quaternion {
    double w, x, y, z;
};

// Euler angles in degrees, X applied first (the FBX rotation order "Euler XYZ").
Quaternion FromEulerXYZ(double x, double y, double z) {
    const double rad = M_PI / 360.0;  // half angles
    const double cx = std::cos(x * rad), sx = std::sin(x * rad);
    const double cy = std::cos(y * rad), sy = std::sin(y * rad);
    const double cz = std::cos(z * rad), sz = std::sin(z * rad);
    return {cz * cy * cx + sz * sy * sx, cz * cy * sx - sz * sy * cx, cz * sy * cx + sz * cy * sx,
            sz * cy * cx - cz * sy * sx};
}

// Largest component difference of the unit quaternions, blind to their sign (q and -q are
// the same rotation).
double RotationDistance(const Quaternion& a, const fbxtest::RotationKey& b) {
    const double norm = std::sqrt(b.w * b.w + b.x * b.x + b.y * b.y + b.z * b.z);
    const double dot = a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
    const double sign = dot < 0 ? -1.0 : 1.0;
    return std::max({std::abs(a.w - sign * b.w / norm), std::abs(a.x - sign * b.x / norm),
                     std::abs(a.y - sign * b.y / norm), std::abs(a.z - sign * b.z / norm)});
}

// Compares every node's place in the hierarchy and every key with what the scene holds;
// reports the worst deviation instead of stopping at the first.
void ExpectSceneReadsBack(const std::string& path, const AnimatedSceneShape& shape) {
    AssimpScene scene;
    std::string error;
    ASSERT_TRUE(scene.Load(path, error)) << error;
    std::vector<std::string> expectedNames;
    for (int node = 0; node <= shape.joints; ++node)
        expectedNames.push_back(fbxtest::NodeName(node));
    std::vector<std::string> names = scene.NodeNames();
    std::sort(names.begin(), names.end());
    std::sort(expectedNames.begin(), expectedNames.end());
    EXPECT_EQ(expectedNames, names);
    ASSERT_EQ(1u, scene.AnimationCount());

    double worstTime = 0, worstTranslation = 0, worstRotation = 0;
    for (int node = 1; node <= shape.joints; ++node) {
        const std::string name = fbxtest::NodeName(node);
        EXPECT_EQ(fbxtest::NodeName(fbxtest::ParentOf(node, shape)), scene.ParentName(name));
        const auto translations = scene.TranslationKeys(name);
        const auto rotations = scene.RotationKeys(name);
        ASSERT_EQ(static_cast<size_t>(shape.keys), translations.size()) << name;
        ASSERT_EQ(static_cast<size_t>(shape.keys), rotations.size()) << name;
        for (int key = 0; key < shape.keys; ++key) {
            const double seconds = fbxtest::KeyTime(key).GetSecondDouble();
            worstTime = std::max({worstTime, std::abs(translations[key].seconds - seconds),
                                  std::abs(rotations[key].seconds - seconds)});
            const double values[] = {translations[key].x, translations[key].y, translations[key].z};
            for (int axis = 0; axis < 3; ++axis) {
                const double expected = fbxtest::TranslationValue(node, axis, key);
                worstTranslation = std::max(worstTranslation, std::abs(values[axis] - expected));
            }
            const Quaternion expected = FromEulerXYZ(fbxtest::RotationValue(node, 0, key),
                                                     fbxtest::RotationValue(node, 1, key),
                                                     fbxtest::RotationValue(node, 2, key));
            worstRotation = std::max(worstRotation, RotationDistance(expected, rotations[key]));
        }
    }
    EXPECT_LT(worstTime, 1e-6) << path;
    EXPECT_LT(worstTranslation, 1e-4) << path;  // float keys of values up to ~500
    EXPECT_LT(worstRotation, 1e-6) << path;     // single-precision quaternions
}

TEST(FbxRoundTrip, ThreeLevelSkeletonBinaryAndAscii) {
    const AnimatedSceneShape shape{2, true, 25};
    for (bool ascii : {false, true}) {
        TempDir dir;
        fbxtest::ManagerScope manager;
        FbxScene* scene = BuildAnimatedScene(manager.get(), shape);
        const std::string path = dir.File("skeleton.fbx");
        fbxtest::ExportRequest request;
        request.ascii = ascii;
        ASSERT_EQ("", Export(manager.get(), scene, path, request));
        if (!ascii) fbxtest::ReadChecked(path);
        ExpectSceneReadsBack(path, shape);
    }
}

// The size a long take produces: 50 animated joints with 10,000 keys on each channel.
TEST(FbxRoundTrip, FiftyNodesTenThousandKeys) {
    const AnimatedSceneShape shape{50, false, 10000};
    TempDir dir;
    fbxtest::ManagerScope manager;
    FbxScene* scene = BuildAnimatedScene(manager.get(), shape);
    for (bool ascii : {false, true}) {
        const std::string path = dir.File(ascii ? "ascii.fbx" : "binary.fbx");
        fbxtest::ExportRequest request;
        request.ascii = ascii;
        ASSERT_EQ("", Export(manager.get(), scene, path, request));
        if (!ascii) fbxtest::ReadChecked(path);
        ExpectSceneReadsBack(path, shape);
    }
}

}  // namespace
