#include <gtest/gtest.h>

#include <signal.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "demotake.h"
#include "poselookahead.h"

namespace {

constexpr int Frames = 300;

bool sameBits(const std::vector<SegmentState>& a, const std::vector<SegmentState>& b) {
    return a.size() == b.size() &&
           std::memcmp(a.data(), b.data(), a.size() * sizeof(SegmentState)) == 0;
}

bool samePose(const TakePose& a, const TakePose& b) {
    return a.frameTime == b.frameTime && a.absoluteTime == b.absoluteTime &&
           sameBits(a.segments, b.segments) && sameBits(a.fingers, b.fingers);
}

// The order the exporter asks in: the first usable frame, then each frame several times.
std::vector<int> exporterOrder() {
    std::vector<int> order{0};
    for (int f = 0; f < Frames; ++f) order.insert(order.end(), {f, f, f});
    return order;
}

}  // namespace

// Whatever the order and however far ahead, every pose is the one computed directly.
TEST(PoseLookAhead, GivesEachFrameItsOwnPoseInAnyOrder) {
    const Take take = makeComputedDemoTake({.frames = Frames, .fingers = true, .props = 2});
    const std::vector<std::pair<const char*, std::vector<int>>> orders = {
        {"exporter", exporterOrder()},
        {"back to the start", {0, 1, 2, 3, 0, 1, 2, 150, 151, 1, 2}},
        {"jumps past the look-ahead", {5, 200, 201, 202, 40, 299, 298, 0}},
        {"every other frame", {0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 100, 102}},
        {"backwards", {299, 298, 297, 296, 295, 10, 9, 8}},
    };
    for (const int depth : {0, 1, 2, 7, 64}) {
        for (const auto& [name, order] : orders) {
            PoseLookAhead poses(take.computePose, Frames, depth);
            for (const int frame : order)
                ASSERT_TRUE(samePose(*poses.pose(frame), take.computePose(frame)))
                    << name << ", depth " << depth << ", frame " << frame;
        }
    }
}

// The point of looking ahead: poses the second thread has computed are handed over, not
// computed again on the asking thread. The second thread takes no signals: the program's stop
// signals are the main thread's.
TEST(PoseLookAhead, HandsOverThePosesComputedAhead) {
    constexpr int Depth = 16;
    const Take take = makeComputedDemoTake({.frames = Frames});
    const std::thread::id asking = std::this_thread::get_id();
    std::atomic<int> onAskingThread = 0, ahead = 0, aheadTakingSignals = 0;
    PoseLookAhead poses(
        [&](int frame) {
            const bool onAsking = std::this_thread::get_id() == asking;
            ++(onAsking ? onAskingThread : ahead);
            sigset_t mask;
            pthread_sigmask(SIG_SETMASK, nullptr, &mask);
            if (!onAsking && !sigismember(&mask, SIGINT)) ++aheadTakingSignals;
            return take.computePose(frame);
        },
        Frames, Depth);
    for (int waited = 0; ahead < Depth && waited < 10000; ++waited)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_EQ(ahead, Depth);
    for (int frame = 0; frame < Depth; ++frame)
        for (int again = 0; again < 3; ++again) poses.pose(frame);
    EXPECT_EQ(onAskingThread, 0);
    EXPECT_EQ(aheadTakingSignals, 0);
}

// A pose that cannot be computed fails on the asking thread, as it would without a look-ahead,
// and the frames after it still come.
TEST(PoseLookAhead, FailsOnTheAskingThread) {
    const Take take = makeComputedDemoTake({.frames = 20});
    for (const int depth : {0, 4}) {
        PoseLookAhead poses(
            [&](int frame) {
                if (frame == 5) throw std::runtime_error("no pose");
                return take.computePose(frame);
            },
            20, depth);
        for (int frame = 0; frame < 5; ++frame) poses.pose(frame);
        EXPECT_THROW(poses.pose(5), std::runtime_error) << "depth " << depth;
        EXPECT_TRUE(samePose(*poses.pose(6), take.computePose(6))) << "depth " << depth;
    }
}
