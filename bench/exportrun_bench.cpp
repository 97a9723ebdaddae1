// One export run of a long take in process, its keys and unrolling on helper threads (1) or all
// on the host's thread (0): a demo take at 240 Hz with fingers and two props, Skeleton preset,
// binary. The file is the same either way; only the time differs.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>

#include "demotake.h"
#include "exportsettings.h"
#include "fbxexporterlocal.h"
#include "settingsstore.h"
#include "takehost.h"

namespace {

void BM_ExportRunHelperThreads(benchmark::State& state) {
    const Take take =
        makeDemoTake({.frames = 24000, .frameRate = 240.0, .fingers = true, .props = 2});
    QTemporaryDir folder;
    TakeHost host(take, std::make_shared<SettingsStore>(folder.filePath("settings.ini")));
    const std::unique_ptr<AbstractSettingsSynchronizer> settings(
        host.registerSettings(ExportSettings::defaults(), {}, nullptr));
    settings->setValue(QStringLiteral("exportFormat"), QStringLiteral("binary"));
    FbxExporterLocal exporter(host, settings.get());
    exporter.setHelperThreads(state.range(0) != 0);
    const QString file = folder.filePath("take.fbx");
    for (auto _ : state) {
        exporter.initialize(file);
        for (int f = take.firstFrame; f < take.firstFrame + take.frameCount(); ++f) {
            exporter.exportFrame(f);
        }
        if (!exporter.finalize(false)) state.SkipWithError("the file was not written");
    }
    state.SetItemsProcessed(state.iterations() * take.frameCount());
}
BENCHMARK(BM_ExportRunHelperThreads)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->MeasureProcessCPUTime();

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
