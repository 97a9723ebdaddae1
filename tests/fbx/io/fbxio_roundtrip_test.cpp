// Files written by the exporter, read back by an independent open reader (assimp).
#include <algorithm>
#include <cmath>

#include "fbx/scene/fbxscene.h"
#include "tests/fbx/io/fbxio_test_util.h"
#include "tests/support/fbxassimpscene.h"

namespace {

using fbxtest::AnimatedSceneShape;
using Quaternion = std::array<double, 4>;  // w, x, y, z

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
double RotationDistance(const Quaternion& a, const fbxtest::RotationKey& key) {
    const Quaternion b = {key.w, key.x, key.y, key.z};
    const double norm = std::sqrt(b[0] * b[0] + b[1] * b[1] + b[2] * b[2] + b[3] * b[3]);
    const double dot = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    const double sign = dot < 0 ? -1.0 : 1.0;
    double worst = 0;
    for (int i = 0; i < 4; ++i) worst = std::max(worst, std::abs(a[i] - sign * b[i] / norm));
    return worst;
}

// Compares every node's place in the hierarchy and every key with what the scene holds;
// reports the worst deviation instead of stopping at the first.
void ExpectSceneReadsBack(const std::string& path, const AnimatedSceneShape& shape) {
    fbxtest::AssimpScene scene;
    std::string error;
    ASSERT_TRUE(scene.Load(path, error)) << error;
    // Every joint below has its parent checked: with the count this pins the whole tree.
    EXPECT_EQ(static_cast<size_t>(shape.joints + 1), scene.NodeNames().size());
    EXPECT_TRUE(scene.HasNode("Reference"));

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
            double euler[3];
            for (int axis = 0; axis < 3; ++axis) {
                const double expected = fbxtest::TranslationValue(node, axis, key);
                worstTranslation = std::max(worstTranslation, std::abs(values[axis] - expected));
                euler[axis] = fbxtest::RotationValue(node, axis, key);
            }
            const Quaternion expected = FromEulerXYZ(euler[0], euler[1], euler[2]);
            worstRotation = std::max(worstRotation, RotationDistance(expected, rotations[key]));
        }
    }
    EXPECT_LT(worstTime, 1e-6) << path;
    EXPECT_LT(worstTranslation, 1e-4) << path;  // float keys of values up to ~500
    EXPECT_LT(worstRotation, 1e-6) << path;     // single-precision quaternions
}

// The size a long take produces: 50 animated joints, five levels deep, with 10,000 keys on each
// channel.
TEST(FbxRoundTrip, FiftyNodesTenThousandKeys) {
    const AnimatedSceneShape shape{50, false, 10000};
    fbxtest::TempDir dir;
    fbxtest::ManagerScope manager;
    FbxScene* scene = BuildAnimatedScene(manager.get(), shape);
    for (bool ascii : {false, true}) {
        const std::string path = dir.File(ascii ? "ascii.fbx" : "binary.fbx");
        ASSERT_EQ("", fbxtest::Export(manager.get(), scene, path, {.ascii = ascii}));
        if (!ascii) fbxtest::ReadChecked(path);
        ExpectSceneReadsBack(path, shape);
    }
}

}  // namespace
