#include "benchtake.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimlayer.h"
#include "fbx/scene/fbxanimstack.h"
#include "fbx/scene/fbxglobalsettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxnode.h"
#include "fbx/scene/fbxscene.h"
#include "fbx/scene/fbxskeleton.h"

namespace {

constexpr const char* kChannels[3] = {"X", "Y", "Z"};
constexpr int kWaveLength = 256;

// Motion values come from a small precomputed wave so that the benchmark times the model,
// not the trigonometry.
const std::array<float, kWaveLength>& Wave() {
    static const std::array<float, kWaveLength> wave = [] {
        std::array<float, kWaveLength> values{};
        for (int i = 0; i < kWaveLength; ++i) {
            values[i] =
                static_cast<float>(90.0 * std::sin(2.0 * std::numbers::pi * i / kWaveLength));
        }
        return values;
    }();
    return wave;
}

// One linear key, bracketed like every key the exporter adds.
FbxAnimCurve* KeyChannel(FbxProperty& property, FbxAnimLayer* layer, int channel, FbxTime time,
                         float value) {
    FbxAnimCurve* curve =
        property.GetCurve(layer, property.GetName().Buffer(), kChannels[channel], true);
    curve->KeyModifyBegin();
    const int index = curve->KeyAdd(time);
    curve->KeySetValue(index, value);
    curve->KeySetInterpolation(index, FbxAnimCurveDef::eInterpolationLinear);
    curve->KeyModifyEnd();
    return curve;
}

void KeyChannels(FbxProperty& property, FbxAnimLayer* layer, FbxTime time, int phase, int reserve) {
    const auto& wave = Wave();
    for (int channel = 0; channel < 3; ++channel) {
        const float value = wave[(phase + 37 * channel) % kWaveLength];
        FbxAnimCurve* curve = KeyChannel(property, layer, channel, time, value);
        if (channel == 0 && reserve > 0) {
            curve->ResizeKeyBuffer(reserve);
        }
    }
}

// Every curve of the take, translation X, Y, Z then rotation X, Y, Z per node.
template <class Visit>
void ForEachCurve(const BenchTake& take, Visit visit) {
    for (const FbxString& name : take.NodeNames()) {
        FbxNode* node = take.Scene()->FindNodeByName(name);
        for (FbxProperty* property : {static_cast<FbxProperty*>(&node->LclTranslation),
                                      static_cast<FbxProperty*>(&node->LclRotation)}) {
            for (const char* channel : kChannels) {
                if (FbxAnimCurve* curve = property->GetCurve(
                        take.Layer(), property->GetName().Buffer(), channel, false)) {
                    visit(*curve);
                }
            }
        }
    }
}

}  // namespace

BenchTake::BenchTake(int nodeCount) : mManager(FbxManager::Create()) {
    mScene = FbxScene::Create(mManager, "Bench Scene");
    FbxAnimStack* stack = FbxAnimStack::Create(mScene, "Take 001");
    mLayer = FbxAnimLayer::Create(mScene, "Base Layer");
    stack->AddMember(mLayer);
    mScene->SetCurrentAnimationStack(stack);
    FbxNode* parent = mScene->GetRootNode();
    for (int i = 0; i < nodeCount; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "Segment%02d", i);
        FbxNode* node = FbxNode::Create(mScene, name);
        FbxSkeleton* skeleton = FbxSkeleton::Create(mScene, name);
        skeleton->SetSkeletonType(i == 0 ? FbxSkeleton::eRoot : FbxSkeleton::eLimbNode);
        node->SetNodeAttribute(skeleton);
        parent->AddChild(node);
        parent = node;
        mNames.emplace_back(name);
    }
}

BenchTake::~BenchTake() {
    mManager->Destroy();
}

FbxTime BenchTake::FrameTime(int frame) {
    // 240 fps: half a frame at 120 fps, a whole number of ticks.
    return FbxTime(frame * (FbxTime::GetOneFrameValue(FbxTime::eFrames120) / 2));
}

void BenchTake::KeyFrame(int frame, int reserveFrames) {
    const FbxTime time = FrameTime(frame);
    for (size_t i = 0; i < mNames.size(); ++i) {
        FbxNode* node = mScene->FindNodeByName(mNames[i]);
        const int phase = frame + static_cast<int>(i) * 11;
        KeyChannels(node->LclTranslation, mLayer, time, phase, reserveFrames);
        KeyChannels(node->LclRotation, mLayer, time, phase + 101, 0);
    }
}

void BenchTake::KeyFrames(int frames) {
    for (int frame = 0; frame < frames; ++frame) {
        KeyFrame(frame, frames);
    }
    mScene->GetCurrentAnimationStack()->SetLocalTimeSpan(
        FbxTimeSpan(FrameTime(0), FrameTime(frames - 1)));
}

long long BenchTake::KeyCount() const {
    long long keys = 0;
    ForEachCurve(*this, [&](const FbxAnimCurve& curve) { keys += curve.KeyGetCount(); });
    return keys;
}

size_t BenchTake::KeyMemoryUsage() const {
    size_t bytes = 0;
    ForEachCurve(*this, [&](const FbxAnimCurve& curve) { bytes += curve.GetKeyMemoryUsage(); });
    return bytes;
}
