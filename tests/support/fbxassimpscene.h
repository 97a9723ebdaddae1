#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

struct aiNode;
struct aiNodeAnim;
struct aiScene;
namespace Assimp {
class Importer;
}

// A written FBX file as an independent open reader (assimp) sees it: node names and
// hierarchy, animated world transforms, and the animation keys of each node.
namespace fbxtest {

// Row-major 4x4 matrix (translation in the last column).
using Matrix = std::array<double, 16>;

struct VectorKey {
    double seconds;
    double x, y, z;
};

struct RotationKey {
    double seconds;
    double w, x, y, z;
};

class AssimpScene {
public:
    AssimpScene();
    ~AssimpScene();

    // Loads the file; on failure `error` holds the reader's message.
    bool Load(const std::string& path, std::string& error);

    // Every node, depth first, without the reader's synthetic root node.
    std::vector<std::string> NodeNames() const;
    bool HasNode(const std::string& name) const { return Find(name) != nullptr; }
    // The parent's name; empty for a top node or an unknown name.
    std::string ParentName(const std::string& name) const;

    // World transform with every animated node evaluated at `seconds` (linear translation,
    // spherical-linear rotation between keys, held before the first and after the last).
    Matrix WorldTransformAt(const std::string& name, double seconds) const;

    // Keys of the node in the first animation, in seconds; empty when it is not animated.
    std::vector<VectorKey> TranslationKeys(const std::string& name) const;
    std::vector<RotationKey> RotationKeys(const std::string& name) const;

private:
    const aiNode* Find(const std::string& name) const;
    const aiNodeAnim* Channel(const std::string& name) const;
    double TicksPerSecond() const;

    std::unique_ptr<Assimp::Importer> mImporter;
    const aiScene* mScene = nullptr;
};

std::array<double, 3> Translation(const Matrix& m);

}  // namespace fbxtest
