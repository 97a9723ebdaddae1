#include "tests/support/fbxassimpscene.h"

#include <assimp/scene.h>
#include <assimp/Importer.hpp>

#include <algorithm>
#include <cmath>
#include <functional>

namespace fbxtest {

namespace {

Matrix FromAssimp(const aiMatrix4x4& m) {
    return {m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4,
            m.c1, m.c2, m.c3, m.c4, m.d1, m.d2, m.d3, m.d4};
}

Matrix Compose(const aiVector3D& t, const aiQuaternion& r, const aiVector3D& s) {
    return FromAssimp(aiMatrix4x4(s, r, t));
}

// Index of the last key at or before `time` (0 before the first key).
template <typename Key>
unsigned KeyBefore(const Key* keys, unsigned count, double time) {
    unsigned index = 0;
    while (index + 1 < count && keys[index + 1].mTime <= time) ++index;
    return index;
}

aiVector3D Sample(const aiVectorKey* keys, unsigned count, double time, aiVector3D fallback) {
    if (count == 0) return fallback;
    const unsigned i = KeyBefore(keys, count, time);
    if (i + 1 >= count || time <= keys[i].mTime) return keys[i].mValue;
    const double f = (time - keys[i].mTime) / (keys[i + 1].mTime - keys[i].mTime);
    return keys[i].mValue + (keys[i + 1].mValue - keys[i].mValue) * static_cast<ai_real>(f);
}

aiQuaternion Sample(const aiQuatKey* keys, unsigned count, double time, aiQuaternion fallback) {
    if (count == 0) return fallback;
    const unsigned i = KeyBefore(keys, count, time);
    if (i + 1 >= count || time <= keys[i].mTime) return keys[i].mValue;
    const double f = (time - keys[i].mTime) / (keys[i + 1].mTime - keys[i].mTime);
    aiQuaternion out;
    aiQuaternion::Interpolate(out, keys[i].mValue, keys[i + 1].mValue, static_cast<ai_real>(f));
    return out.Normalize();
}

}  // namespace

struct AssimpScene::Impl {
    Assimp::Importer importer;
    const aiScene* scene = nullptr;
};

AssimpScene::AssimpScene() : mImpl(std::make_unique<Impl>()) {}
AssimpScene::~AssimpScene() = default;

bool AssimpScene::Load(const std::string& path, std::string& error) {
    mImpl->scene = mImpl->importer.ReadFile(path, 0);
    if (!mImpl->scene || !mImpl->scene->mRootNode) {
        error = mImpl->importer.GetErrorString();
        mImpl->scene = nullptr;
        return false;
    }
    return true;
}

const aiScene* AssimpScene::Raw() const {
    return mImpl->scene;
}

std::vector<std::string> AssimpScene::NodeNames() const {
    std::vector<std::string> names;
    if (!mImpl->scene) return names;
    std::function<void(const aiNode*)> visit = [&](const aiNode* node) {
        for (unsigned i = 0; i < node->mNumChildren; ++i) {
            names.emplace_back(node->mChildren[i]->mName.C_Str());
            visit(node->mChildren[i]);
        }
    };
    visit(mImpl->scene->mRootNode);
    return names;
}

const aiNode* AssimpScene::Find(const std::string& name) const {
    if (!mImpl->scene) return nullptr;
    const aiNode* root = mImpl->scene->mRootNode;
    const aiNode* node = root->FindNode(name.c_str());
    return node == root ? nullptr : node;
}

bool AssimpScene::HasNode(const std::string& name) const {
    return Find(name) != nullptr;
}

std::string AssimpScene::ParentName(const std::string& name) const {
    const aiNode* node = Find(name);
    if (!node || !node->mParent || node->mParent == mImpl->scene->mRootNode) return "";
    return node->mParent->mName.C_Str();
}

Matrix AssimpScene::WorldTransform(const std::string& name) const {
    Matrix world = FromAssimp(aiMatrix4x4());
    for (const aiNode* node = Find(name); node; node = node->mParent) {
        world = Multiply(FromAssimp(node->mTransformation), world);
    }
    return world;
}

Matrix AssimpScene::WorldTransformAt(const std::string& name, double seconds) const {
    const double ticks = seconds * TicksPerSecond();
    Matrix world = FromAssimp(aiMatrix4x4());
    for (const aiNode* node = Find(name); node; node = node->mParent) {
        Matrix local = FromAssimp(node->mTransformation);
        if (const aiNodeAnim* channel = Channel(node->mName.C_Str())) {
            aiVector3D scaling, translation;
            aiQuaternion rotation;
            node->mTransformation.Decompose(scaling, rotation, translation);
            local = Compose(
                Sample(channel->mPositionKeys, channel->mNumPositionKeys, ticks, translation),
                Sample(channel->mRotationKeys, channel->mNumRotationKeys, ticks, rotation),
                Sample(channel->mScalingKeys, channel->mNumScalingKeys, ticks, scaling));
        }
        world = Multiply(local, world);
    }
    return world;
}

size_t AssimpScene::AnimationCount() const {
    return mImpl->scene ? mImpl->scene->mNumAnimations : 0;
}

const aiNodeAnim* AssimpScene::Channel(const std::string& name) const {
    if (AnimationCount() == 0) return nullptr;
    const aiAnimation* animation = mImpl->scene->mAnimations[0];
    for (unsigned i = 0; i < animation->mNumChannels; ++i) {
        if (name == animation->mChannels[i]->mNodeName.C_Str()) return animation->mChannels[i];
    }
    return nullptr;
}

double AssimpScene::TicksPerSecond() const {
    if (AnimationCount() == 0) return 1.0;
    const double rate = mImpl->scene->mAnimations[0]->mTicksPerSecond;
    return rate > 0 ? rate : 1.0;
}

std::vector<VectorKey> AssimpScene::TranslationKeys(const std::string& name) const {
    std::vector<VectorKey> keys;
    if (const aiNodeAnim* channel = Channel(name)) {
        for (unsigned i = 0; i < channel->mNumPositionKeys; ++i) {
            const aiVectorKey& key = channel->mPositionKeys[i];
            keys.push_back(
                {key.mTime / TicksPerSecond(), key.mValue.x, key.mValue.y, key.mValue.z});
        }
    }
    return keys;
}

std::vector<RotationKey> AssimpScene::RotationKeys(const std::string& name) const {
    std::vector<RotationKey> keys;
    if (const aiNodeAnim* channel = Channel(name)) {
        for (unsigned i = 0; i < channel->mNumRotationKeys; ++i) {
            const aiQuatKey& key = channel->mRotationKeys[i];
            keys.push_back({key.mTime / TicksPerSecond(), key.mValue.w, key.mValue.x, key.mValue.y,
                            key.mValue.z});
        }
    }
    return keys;
}

Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix out{};
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            for (int k = 0; k < 4; ++k) out[row * 4 + column] += a[row * 4 + k] * b[k * 4 + column];
        }
    }
    return out;
}

std::array<double, 3> EulerXYZDegrees(const Matrix& m) {
    constexpr double kDegrees = 180.0 / M_PI;
    const double y = std::asin(std::clamp(-m[8], -1.0, 1.0));
    const double x = std::atan2(m[9], m[10]);
    const double z = std::atan2(m[4], m[0]);
    return {x * kDegrees, y * kDegrees, z * kDegrees};
}

std::array<double, 3> Translation(const Matrix& m) {
    return {m[3], m[7], m[11]};
}

}  // namespace fbxtest
