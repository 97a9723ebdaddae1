// Speed of writing an animated scene to an FBX file, binary and ASCII, through the exporter
// object the plug-in uses, with the default export settings (binary arrays compressed).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "benchtake.h"
#include "fbx/io/fbxexporter.h"
#include "fbx/io/fbxiopluginregistry.h"
#include "fbx/io/fbxiosettings.h"
#include "fbx/scene/fbxmanager.h"
#include "fbx/scene/fbxscene.h"

namespace {

std::filesystem::path OutputPath() {
    return std::filesystem::temp_directory_path() /
           ("zavo-write-bench-" + std::to_string(getpid()) + ".fbx");
}

// Writes a take of range(0) frames on range(1) nodes (six curves each). Reports the file's
// bytes per second and keys per second; the time should grow linearly with the keys.
void WriteTake(benchmark::State& state, const char* format) {
    BenchTake take(static_cast<int>(state.range(1)));
    take.KeyFrames(static_cast<int>(state.range(0)));
    FbxManager* manager = take.Manager();
    manager->SetIOSettings(FbxIOSettings::Create(manager, "IOSRoot"));
    const int writer = manager->GetIOPluginRegistry()->FindWriterByDescription(format);
    const std::filesystem::path path = OutputPath();
    for (auto _ : state) {
        FbxExporter* exporter = FbxExporter::Create(manager, "");
        if (!exporter->Initialize(path.c_str(), writer) || !exporter->Export(take.Scene())) {
            state.SkipWithError(exporter->GetStatus().GetErrorString());
            break;
        }
        exporter->Destroy();
    }
    std::error_code error;
    const auto fileBytes = static_cast<int64_t>(std::filesystem::file_size(path, error));
    std::filesystem::remove(path, error);
    const long long keys = take.KeyCount();
    state.SetBytesProcessed(state.iterations() * fileBytes);
    state.SetItemsProcessed(state.iterations() * keys);
    state.SetComplexityN(keys);
    state.counters["file_MB"] = static_cast<double>(fileBytes) / 1e6;
}

void BM_WriteBinary(benchmark::State& state) {
    WriteTake(state, "binary");
}
void BM_WriteAscii(benchmark::State& state) {
    WriteTake(state, "ascii");
}

// The writer compresses and writes on threads of its own besides the caller's: the time is
// the wall clock's and the processor time that of every thread of the process.
void AllThreads(benchmark::internal::Benchmark* b) {
    b->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);
}

// Take lengths over which both forms must stay linear in the number of keys.
void LinearSizes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"frames", "nodes"})
        ->Args({1000, 50})
        ->Args({10000, 50})
        ->Args({40000, 50})
        ->Complexity(benchmark::oN);
    AllThreads(b);
}

BENCHMARK(BM_WriteBinary)->Apply(LinearSizes);
BENCHMARK(BM_WriteAscii)->Apply(LinearSizes);
// A 10-minute take at 240 fps.
BENCHMARK(BM_WriteBinary)
    ->ArgNames({"frames", "nodes"})
    ->Args({144000, 53})
    ->Iterations(1)
    ->Apply(AllThreads);
BENCHMARK(BM_WriteAscii)
    ->ArgNames({"frames", "nodes"})
    ->Args({144000, 53})
    ->Iterations(1)
    ->Apply(AllThreads);

}  // namespace

BENCHMARK_MAIN();
