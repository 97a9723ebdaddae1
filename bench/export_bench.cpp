// Speed and memory of the reference host's take input and of a whole demo export.
#include <benchmark/benchmark.h>

#include <zavo/abstractexporterfactory.h>
#include <QCoreApplication>
#include <QPluginLoader>
#include <QTemporaryDir>
#include <cstdio>
#include <filesystem>

#include "demotake.h"
#include "exportdriver.h"
#include "heapinuse.h"
#include "jsontakereader.h"
#include "pluginloader.h"
#include "settingsstore.h"
#include "takehost.h"
#include "takewriter.h"

namespace {

std::string g_takeFile;

// A demo take file of about `megabytes` MB, written once per process.
const std::string& takeFile(int megabytes) {
    std::string& path = g_takeFile;
    if (path.empty()) {
        path = std::filesystem::temp_directory_path() / "zavo-bench-take.json";
        DemoTakeOptions options;
        options.frames = megabytes * 1024 * 1024 / 9000;  // about 9 KB of text per frame
        writeTakeFile(makeDemoTake(options), path);
    }
    return path;
}

// Reads a take file of about 200 MB: the host's promise is under 10 s and under three times
// the file size in memory. Reports the heap the loaded take holds per byte of file.
void BM_ReadTakeFile(benchmark::State& state) {
    const std::string& path = takeFile(static_cast<int>(state.range(0)));
    const auto fileBytes = static_cast<double>(std::filesystem::file_size(path));
    double heapRatio = 0;
    for (auto _ : state) {
        const size_t before = HeapInUse();
        Take take = readTakeFile(path);
        heapRatio = static_cast<double>(HeapInUse() - before) / fileBytes;
        benchmark::DoNotOptimize(take.frames.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * fileBytes));
    state.counters["file_MB"] = fileBytes / 1e6;
    state.counters["heap_per_file_byte"] = heapRatio;
}
BENCHMARK(BM_ReadTakeFile)->Arg(200)->Unit(benchmark::kMillisecond)->Iterations(2);

// The demo take (600 frames at 60 Hz, fingers, one prop) exported through the plug-in.
void BM_ExportDemoTake(benchmark::State& state) {
    QPluginLoader loader;
    AbstractExporterFactory* factory = loadExporterFactory(loader, defaultPluginPath());
    const Take take = makeDemoTake({});
    QTemporaryDir folder;
    const auto store = std::make_shared<SettingsStore>(folder.filePath("settings.ini"));
    TakeHost host(take, store);
    factory->initializePlugin(host);
    store->setRunValue("exportFormat", state.range(0) ? "binary" : "ascii");
    const QString output = folder.filePath("demo.fbx");
    for (auto _ : state) runExport(*factory, host, output, {});
    state.counters["frames_per_s"] = benchmark::Counter(
        static_cast<double>(state.iterations() * take.frames.size()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ExportDemoTake)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (!g_takeFile.empty()) std::remove(g_takeFile.c_str());
    return 0;
}
