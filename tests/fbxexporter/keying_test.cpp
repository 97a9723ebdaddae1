// Keys made on a thread of their own: the same file as keys made by the host's thread, runs
// that end early, and failures that reach the host.
#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>
#include <QTemporaryDir>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <new>
#include <numeric>
#include <stdexcept>
#include <thread>

#include "exportprobe.h"
#include "keyingthread.h"
#include "parallelfor.h"
#include "synthetictake.h"

namespace {

struct Outcome {
    bool written = false;
    std::string lastError;
    QByteArray bytes;
    bool operator==(const Outcome&) const = default;
};

// Exports a take deterministically with keys made and curves unrolled on threads of their own,
// or all on the host's thread.
template <class Exporter>
Outcome exportTake(const TakeShape& shape, const std::function<void(FakeHost&)>& adjust,
                   bool helperThreads) {
    FakeHost host;
    loadRigidTake(host, shape);
    host.settings.values = {{"exportFormat", "binary"}};
    if (adjust) adjust(host);
    QTemporaryDir dir;
    const QString file = dir.filePath("take.fbx");
    Probe<Exporter> probe(host);
    probe.setHelperThreads(helperThreads);
    qputenv("ZAVO_FBX_DETERMINISTIC", "1");
    probe.run(file);
    Outcome outcome;
    outcome.written = probe.finalize(false);
    qunsetenv("ZAVO_FBX_DETERMINISTIC");
    outcome.lastError = probe.lastError().toStdString();
    QFile written(file);
    if (written.open(QIODevice::ReadOnly)) outcome.bytes = written.readAll();
    return outcome;
}

ChannelKey keyOfSegment(int segment) {
    return {segment, ChannelKey::Rotation, FbxTime(segment), {0, 0, 0}};
}

}  // namespace

// Takes long enough for many batches, so that the host's thread waits for the keying one.
TEST(KeyingThreadRun, SameFileAsAllOnTheHostsThread) {
    const auto fingersAndProps = TakeShape{.frames = 600, .fingers = true, .props = 2};
    const auto unusableAndColliding = [](FakeHost& h) {
        h.frames[3]->valid = false;
        h.frames[90]->orientations[4] = {0, 0, 0, 0};
        h.frames[200]->time = h.frames[199]->time;
        h.frames[250].reset();
    };
    const auto withoutBody = [](FakeHost& h) { h.body = false; };
    // Two segments keying one node, whose curves are then unrolled twice.
    const auto sharedName = [](FakeHost& h) { h.names[5] = h.names[4]; };
    const auto nothingUsable = [](FakeHost& h) {
        for (auto& f : h.frames) f->valid = false;
    };
    const std::vector<std::tuple<const char*, bool, TakeShape, std::function<void(FakeHost&)>>>
        runs = {{"skeleton", true, fingersAndProps, {}},
                {"skeleton, lost frames", true, {.frames = 300}, unusableAndColliding},
                {"nodes", false, fingersAndProps, unusableAndColliding},
                {"nodes, a name shared", false, {.frames = 300}, sharedName},
                {"skeleton without a body", true, {.frames = 300, .props = 3}, withoutBody},
                {"nodes without a body", false, {.frames = 300, .props = 3}, withoutBody},
                {"nothing usable", true, {.frames = 300}, nothingUsable}};
    for (const auto& [what, skeleton, shape, adjust] : runs) {
        SCOPED_TRACE(what);
        const auto run = skeleton ? exportTake<FbxExporterLocal> : exportTake<FbxExporterGlobal>;
        const Outcome onHost = run(shape, adjust, false);
        EXPECT_EQ(onHost.written, !onHost.bytes.isEmpty());
        EXPECT_EQ(run(shape, adjust, true), onHost);
    }
}

TEST(KeyingThreadRun, CancelledAndAbandonedRunsLeaveNoFile) {
    QTemporaryDir dir;
    const QString file = dir.filePath("take.fbx");
    FakeHost host;
    loadRigidTake(host, {.frames = 600, .fingers = true});
    {
        LocalProbe probe(host);
        probe.setHelperThreads(true);
        probe.run(file);
        EXPECT_TRUE(probe.finalize(true));
        EXPECT_EQ(probe.scene(), nullptr);
        // A run after a cancelled one starts afresh.
        probe.run(file);
        EXPECT_EQ(probe.keyCount("Hips"), 600);
        EXPECT_TRUE(probe.finalize(false));
    }
    ASSERT_TRUE(QFile::remove(file));
    {
        // A host that drops the exporter in the middle of a run.
        LocalProbe probe(host);
        probe.setHelperThreads(true);
        probe.run(file);
    }
    EXPECT_FALSE(QFile::exists(file));
}

// The keying thread takes no signals either: the host's stop signals are its own threads'.
TEST(KeyingThread, KeysInOrderAcrossBatches) {
    std::vector<int> keyed;
    bool takesSignals = false;
    KeyingThread keying([&keyed, &takesSignals](std::span<const ChannelKey> keys) {
        sigset_t mask;
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        takesSignals = takesSignals || !sigismember(&mask, SIGINT);
        for (const ChannelKey& key : keys) keyed.push_back(key.segment);
    });
    std::vector<int> added(50000);
    std::iota(added.begin(), added.end(), 0);
    for (int i = 0; i < 30000; ++i) keying.add(keyOfSegment(i));
    keying.waitUntilKeyed();
    EXPECT_TRUE(std::equal(keyed.begin(), keyed.end(), added.begin(), added.begin() + 30000));
    for (int i = 30000; i < 50000; ++i) keying.add(keyOfSegment(i));
    keying.finish();
    EXPECT_EQ(keyed, added);
    EXPECT_FALSE(takesSignals);
}

// The failing key is the last one tried; the host hears of the failure until the run ends.
TEST(KeyingThread, FailureStopsTheKeysAndReachesTheHost) {
    for (const int failing : {0, 511, 512, 20000}) {
        SCOPED_TRACE(failing);
        std::vector<int> keyed;
        KeyingThread keying([&](std::span<const ChannelKey> keys) {
            for (const ChannelKey& key : keys) {
                if (key.segment == failing) throw std::bad_alloc();
                keyed.push_back(key.segment);
            }
        });
        for (int i = 0; i < 40000; ++i) keying.add(keyOfSegment(i));
        keying.waitUntilKeyed();
        EXPECT_THROW(keying.rethrowFailure(), std::bad_alloc);
        EXPECT_THROW(keying.rethrowFailure(), std::bad_alloc);
        EXPECT_THROW(keying.finish(), std::bad_alloc);
        ASSERT_EQ(keyed.size(), static_cast<size_t>(failing));
        EXPECT_EQ(keyed.empty() ? -1 : keyed.back(), failing - 1);
    }
}

TEST(KeyingThread, CancelStopsWithinTheKeysUnderWay) {
    std::promise<void> gate;
    std::shared_future<void> open = gate.get_future().share();
    std::atomic<size_t> keyed = 0;
    KeyingThread keying([&](std::span<const ChannelKey> keys) {
        open.wait();
        keyed += keys.size();
    });
    // Three batches: one under way, two queued.
    for (int i = 0; i < 3 * 8192; ++i) keying.add(keyOfSegment(i));
    std::thread opener([&gate] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        gate.set_value();
    });
    keying.cancel();
    opener.join();
    EXPECT_LE(keyed.load(), 512u);
    EXPECT_NO_THROW(keying.finish());
}

TEST(ParallelFor, EveryIndexOnceAndTheFirstFailure) {
    for (const auto& [count, threads] :
         {std::pair<size_t, unsigned>{0, 2}, {1, 4}, {1000, 1}, {1000, 0}, {1000, 3}}) {
        std::vector<std::atomic<int>> calls(count);
        parallelFor(count, threads, [&calls](size_t i) { ++calls[i]; });
        EXPECT_TRUE(std::all_of(calls.begin(), calls.end(), [](auto& c) { return c == 1; }))
            << count << " on " << threads;
    }
    std::atomic<int> after = 0;
    EXPECT_THROW(parallelFor(100000, 2,
                             [&after](size_t i) {
                                 if (i == 10) throw std::runtime_error("index 10");
                                 if (i > 50000) ++after;
                             }),
                 std::runtime_error);
    // The others stop soon after, rather than finishing the work.
    EXPECT_LT(after.load(), 50000);
}
