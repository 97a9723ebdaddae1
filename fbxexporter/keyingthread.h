#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "fbx/scene/fbxtime.h"

// One key of an animated segment's translation or rotation. A Translation or Rotation key holds
// its final X, Y, Z values: only their storage in single precision, which the curves do, lies
// ahead. An Orientation key is a rotation key given as the local rotation (W, X, Y, Z), whose
// Euler angles are formed where the keys are made, off the thread that reads the frames.
struct ChannelKey {
    enum Channel : uint8_t { Translation, Rotation, Orientation };

    int32_t segment;
    Channel channel;
    FbxTime time;
    double values[4];
};

// Makes the keys of an export run on a thread of its own while the host's thread reads and
// transforms the next frames. Keys go into the scene in the order they were added, in batches;
// only this thread touches the scene between start and finish() or cancel().
class KeyingThread {
public:
    // Keys a batch into the scene, in order.
    using KeyBatch = std::function<void(std::span<const ChannelKey>)>;

    // Starts the thread. Throws std::system_error when no thread can be started.
    explicit KeyingThread(KeyBatch keyBatch);
    // Cancels what is not keyed yet.
    ~KeyingThread();
    KeyingThread(const KeyingThread&) = delete;
    KeyingThread& operator=(const KeyingThread&) = delete;

    // Queues a key; waits while the thread is several batches behind.
    void add(const ChannelKey& key) {
        // Field by field: a copy of the whole key would read it back from where it was just
        // put together, which stalls the host's thread on every key.
        ChannelKey& slot = m_filling.emplace_back();
        slot.segment = key.segment;
        slot.channel = key.channel;
        slot.time = key.time;
        for (int i = 0; i < 4; ++i) slot.values[i] = key.values[i];
        if (m_filling.size() >= BatchKeys) handOver();
    }
    // Throws what made the keying fail, if anything did; it then stopped at the failing key.
    void rethrowFailure() const;
    // Waits until every key added so far is in the scene; the thread then waits for more.
    void waitUntilKeyed();
    // Keys what is left and ends the thread. Throws what made the keying fail.
    void finish();
    // Ends the thread promptly, leaving the keys not made yet.
    void cancel();

private:
    static constexpr size_t BatchKeys = 8192;  // a few hundred frames of a full body
    static constexpr size_t MaxQueuedBatches = 3;

    void handOver();
    void run();
    void key(const std::vector<ChannelKey>& batch);
    void stop();

    KeyBatch m_keyBatch;
    std::vector<ChannelKey> m_filling;  // the host thread's
    std::mutex m_mutex;
    std::condition_variable m_work;      // a batch or the end arrived
    std::condition_variable m_progress;  // a batch was taken or keyed
    std::deque<std::vector<ChannelKey>> m_queue;
    std::vector<std::vector<ChannelKey>> m_spare;  // keyed batches, for reuse
    bool m_busy = false;
    bool m_ending = false;
    std::atomic<bool> m_cancelled = false;
    std::atomic<bool> m_failed = false;
    std::exception_ptr m_failure;  // set before m_failed
    std::thread m_thread;
};
