// Speed and memory of the scene model on the exporter's hot paths: keying a long take frame by
// frame, the Euler unroll of rotation curves, and looking nodes up by name.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

#include "benchtake.h"
#include "fbx/scene/fbxanimcurve.h"
#include "fbx/scene/fbxanimcurvefilterunroll.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"
#include "heapinuse.h"

namespace {

// Keys a take of range(0) frames on range(1) nodes (six curves each) in time order, the way
// the exporter does: every frame, each node is found by name and its six channels get one
// bracketed linear key. Reports keys per second, the bytes per key the curves account for,
// and the heap the keying really took per key.
void BM_KeyTake(benchmark::State& state) {
    const int frames = static_cast<int>(state.range(0));
    const int nodes = static_cast<int>(state.range(1));
    long long keys = 0;
    double bytesPerKey = 0;
    double heapPerKey = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto take = std::make_unique<BenchTake>(nodes);
        const size_t heapBefore = HeapInUse();
        state.ResumeTiming();
        take->KeyFrames(frames);
        state.PauseTiming();
        keys = take->KeyCount();
        bytesPerKey = static_cast<double>(take->KeyMemoryUsage()) / static_cast<double>(keys);
        heapPerKey = static_cast<double>(HeapInUse() - heapBefore) / static_cast<double>(keys);
        take.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * keys);
    state.counters["bytes_per_key"] = bytesPerKey;
    state.counters["heap_per_key"] = heapPerKey;
}
BENCHMARK(BM_KeyTake)
    ->ArgNames({"frames", "nodes"})
    ->Args({1000, 60})
    ->Args({10000, 60})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KeyTake)
    ->ArgNames({"frames", "nodes"})
    ->Args({100000, 60})
    ->Args({144000, 53})  // a 10-minute take at 240 fps
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

double Wrap180(double degrees) {
    return std::remainder(degrees, 360.0);
}

// Rotation keys as a frame-by-frame Euler decomposition gives them: a spin about X that wraps
// at +-180 every 400 frames, and every 97th frame the equivalent flipped triple.
void FillRotation(FbxAnimCurve* curves[3], int frames) {
    for (FbxAnimCurve* curve : {curves[0], curves[1], curves[2]}) {
        curve->KeyModifyBegin();
        curve->ResizeKeyBuffer(frames);
    }
    for (int frame = 0; frame < frames; ++frame) {
        double angles[3] = {0.9 * frame, 40.0 * std::sin(0.01 * frame),
                            25.0 * std::cos(0.013 * frame)};
        if (frame % 97 == 0) {
            angles[0] += 180.0;
            angles[1] = 180.0 - angles[1];
            angles[2] += 180.0;
        }
        for (int axis = 0; axis < 3; ++axis) {
            const int index = curves[axis]->KeyAdd(BenchTake::FrameTime(frame));
            curves[axis]->KeySetValue(index, static_cast<float>(Wrap180(angles[axis])));
            curves[axis]->KeySetInterpolation(index, FbxAnimCurveDef::eInterpolationLinear);
        }
    }
    for (FbxAnimCurve* curve : {curves[0], curves[1], curves[2]}) {
        curve->KeyModifyEnd();
    }
}

// Unrolls the three rotation curves of one node over range(0) frames with the exporter's
// settings (no path test, tolerance 0.25). Reports keys per second.
void BM_UnrollRotation(benchmark::State& state) {
    const int frames = static_cast<int>(state.range(0));
    FbxManager* manager = FbxManager::Create();
    FbxScene* scene = FbxScene::Create(manager, "Bench Scene");
    FbxAnimCurve* source[3];
    FbxAnimCurve* curves[3];
    for (int axis = 0; axis < 3; ++axis) {
        source[axis] = FbxAnimCurve::Create(scene, "");
        curves[axis] = FbxAnimCurve::Create(scene, "");
    }
    FillRotation(source, frames);
    FbxAnimCurveFilterUnroll filter;
    filter.SetTestForPath(false);
    if (!filter.NeedApply(source, 3)) {
        state.SkipWithError("the rotation curves have no flips to unroll");
    }
    for (auto _ : state) {
        state.PauseTiming();
        for (int axis = 0; axis < 3; ++axis) {
            curves[axis]->CopyFrom(*source[axis]);
        }
        filter.Reset();
        filter.SetTestForPath(false);
        filter.SetQualityTolerance(0.25);
        state.ResumeTiming();
        FbxStatus status;
        if (!filter.Apply(curves, 3, &status)) {
            state.SkipWithError(status.GetErrorString());
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * 3 * frames);
    manager->Destroy();
}
BENCHMARK(BM_UnrollRotation)
    ->ArgName("frames")
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(144000)
    ->Unit(benchmark::kMillisecond);

// Finds each of range(0) nodes by name in turn, as every exported frame does.
void BM_FindNodeByName(benchmark::State& state) {
    const BenchTake take(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        for (const FbxString& name : take.NodeNames()) {
            benchmark::DoNotOptimize(take.Scene()->FindNodeByName(name));
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FindNodeByName)->ArgName("nodes")->Arg(60)->Arg(100);

}  // namespace

BENCHMARK_MAIN();
