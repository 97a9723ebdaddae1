#include "tests/support/fbxassimpscene.h"

#include <assimp/anim.h>
#include <assimp/scene.h>
#include <assimp/Importer.hpp>

namespace fbxtest {

namespace {

Matrix FromAssimp(const aiMatrix4x4& m) {
    return {m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4,
            m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4};
}

// In double precision: long chains of joints add up the rounding of single precision.
Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix out{};
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            for (int k = 0; k < 4; ++k) out[row * 4 + column] += a[row * 4 + k] * b[k * 4 + column];
        }
    }
    return out;
}

// The keys' value at `time` (in ticks), interpolated between the keys around it and held
// outside them; `value` when there are no keys.
template <typename Key, typename T>
T Sample(const Key* keys, unsigned count, double time, T value) {
    if (count == 0) return value;
    unsigned i = 0;
    while (i + 1 < count && keys[i + 1].mTime <= time) ++i;
    if (i + 1 >= count || time <= keys[i].mTime) return keys[i].mValue;
    const double f = (time - keys[i].mTime) / (keys[i + 1].mTime - keys[i].mTime);
    Assimp::Interpolator<Key>()(value, keys[i], keys[i + 1], static_cast<ai_real>(f));
    return value;
}

void CollectNames(const aiNode* node, std::vector<std::string>& names) {
    for (unsigned i = 0; i < node->mNumChildren; ++i) {
        names.emplace_back(node->mChildren[i]->mName.C_Str());
        CollectNames(node->mChildren[i], names);
    }
}

}  // namespace

AssimpScene::AssimpScene() : mImporter(std::make_unique<Assimp::Importer>()) {}
AssimpScene::~AssimpScene() = default;

bool AssimpScene::Load(const std::string& path, std::string& error) {
    mScene = mImporter->ReadFile(path, 0);
    if (!mScene || !mScene->mRootNode) {
        error = mImporter->GetErrorString();
        mScene = nullptr;
    }
    return mScene != nullptr;
}

std::vector<std::string> AssimpScene::NodeNames() const {
    std::vector<std::string> names;
    if (mScene) CollectNames(mScene->mRootNode, names);
    return names;
}

const aiNode* AssimpScene::Find(const std::string& name) const {
    if (!mScene) return nullptr;
    const aiNode* node = mScene->mRootNode->FindNode(name.c_str());
    return node == mScene->mRootNode ? nullptr : node;
}

std::string AssimpScene::ParentName(const std::string& name) const {
    const aiNode* node = Find(name);
    if (!node || !node->mParent || node->mParent == mScene->mRootNode) return "";
    return node->mParent->mName.C_Str();
}

Matrix AssimpScene::WorldTransformAt(const std::string& name, double seconds) const {
    const double ticks = seconds * TicksPerSecond();
    Matrix world = FromAssimp(aiMatrix4x4());
    for (const aiNode* node = Find(name); node; node = node->mParent) {
        aiMatrix4x4 local = node->mTransformation;
        if (const aiNodeAnim* channel = Channel(node->mName.C_Str())) {
            aiVector3D scaling, translation;
            aiQuaternion rotation;
            local.Decompose(scaling, rotation, translation);
            local = aiMatrix4x4(
                Sample(channel->mScalingKeys, channel->mNumScalingKeys, ticks, scaling),
                Sample(channel->mRotationKeys, channel->mNumRotationKeys, ticks, rotation),
                Sample(channel->mPositionKeys, channel->mNumPositionKeys, ticks, translation));
        }
        world = Multiply(FromAssimp(local), world);
    }
    return world;
}

const aiNodeAnim* AssimpScene::Channel(const std::string& name) const {
    if (!mScene || mScene->mNumAnimations == 0) return nullptr;
    const aiAnimation* animation = mScene->mAnimations[0];
    for (unsigned i = 0; i < animation->mNumChannels; ++i) {
        if (name == animation->mChannels[i]->mNodeName.C_Str()) return animation->mChannels[i];
    }
    return nullptr;
}

double AssimpScene::TicksPerSecond() const {
    const double rate =
        mScene && mScene->mNumAnimations ? mScene->mAnimations[0]->mTicksPerSecond : 0;
    return rate > 0 ? rate : 1.0;
}

std::vector<VectorKey> AssimpScene::TranslationKeys(const std::string& name) const {
    std::vector<VectorKey> keys;
    const aiNodeAnim* channel = Channel(name);
    for (unsigned i = 0; channel && i < channel->mNumPositionKeys; ++i) {
        const aiVectorKey& key = channel->mPositionKeys[i];
        keys.push_back({key.mTime / TicksPerSecond(), key.mValue.x, key.mValue.y, key.mValue.z});
    }
    return keys;
}

std::vector<RotationKey> AssimpScene::RotationKeys(const std::string& name) const {
    std::vector<RotationKey> keys;
    const aiNodeAnim* channel = Channel(name);
    for (unsigned i = 0; channel && i < channel->mNumRotationKeys; ++i) {
        const aiQuatKey& key = channel->mRotationKeys[i];
        keys.push_back(
            {key.mTime / TicksPerSecond(), key.mValue.w, key.mValue.x, key.mValue.y, key.mValue.z});
    }
    return keys;
}

std::array<double, 3> Translation(const Matrix& m) {
    return {m[3], m[7], m[11]};
}

}  // namespace fbxtest
