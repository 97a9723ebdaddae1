#include "keyingthread.h"

#include <algorithm>

#include "fbx/io/fbxhelperthread.h"

namespace {

// Keys made between two looks at a cancel: a few frames of a full body.
constexpr size_t KeysBetweenCancelChecks = 512;

}  // namespace

KeyingThread::KeyingThread(KeyBatch keyBatch) : m_keyBatch(std::move(keyBatch)) {
    m_filling.reserve(BatchKeys);
    // Room for every batch that can be in flight: returning one never allocates on the thread.
    m_spare.reserve(MaxQueuedBatches + 2);
    m_thread = FbxStartHelperThread([this] { run(); });
}

KeyingThread::~KeyingThread() {
    cancel();
}

void KeyingThread::handOver() {
    std::unique_lock lock(m_mutex);
    // A host that reads frames faster than they are keyed waits here, so the batches in
    // flight stay few whatever the take's length.
    m_progress.wait(lock, [this] { return m_queue.size() < MaxQueuedBatches; });
    m_queue.push_back(std::move(m_filling));
    m_filling = {};
    if (!m_spare.empty()) {
        m_filling = std::move(m_spare.back());
        m_spare.pop_back();
    }
    lock.unlock();
    m_work.notify_one();
    m_filling.reserve(BatchKeys);
}

void KeyingThread::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_work.wait(lock, [this] { return !m_queue.empty() || m_ending; });
        if (m_queue.empty()) return;
        std::vector<ChannelKey> batch = std::move(m_queue.front());
        m_queue.pop_front();
        m_busy = true;
        lock.unlock();
        m_progress.notify_all();
        key(batch);
        batch.clear();
        lock.lock();
        m_busy = false;
        m_spare.push_back(std::move(batch));
        m_progress.notify_all();
    }
}

void KeyingThread::key(const std::vector<ChannelKey>& batch) {
    try {
        for (size_t i = 0; i < batch.size() && !m_cancelled.load(std::memory_order_relaxed);
             i += KeysBetweenCancelChecks) {
            const size_t count = std::min(KeysBetweenCancelChecks, batch.size() - i);
            m_keyBatch(std::span(batch).subspan(i, count));
        }
    } catch (...) {
        // Keys after a failed one would leave curves out of step; the host hears of it at its
        // next frame or at the end of the run.
        m_failure = std::current_exception();
        m_failed.store(true, std::memory_order_release);
        m_cancelled.store(true, std::memory_order_relaxed);
    }
}

void KeyingThread::rethrowFailure() const {
    if (m_failed.load(std::memory_order_acquire)) std::rethrow_exception(m_failure);
}

void KeyingThread::waitUntilKeyed() {
    if (!m_thread.joinable()) return;
    if (!m_filling.empty()) handOver();
    std::unique_lock lock(m_mutex);
    m_progress.wait(lock, [this] { return m_queue.empty() && !m_busy; });
}

void KeyingThread::finish() {
    if (m_thread.joinable() && !m_filling.empty()) handOver();
    stop();
    rethrowFailure();
}

void KeyingThread::cancel() {
    m_cancelled.store(true, std::memory_order_relaxed);
    stop();
}

void KeyingThread::stop() {
    if (!m_thread.joinable()) return;
    {
        std::lock_guard lock(m_mutex);
        // A cancelled run drops what is queued; a finished one keys it first.
        if (m_cancelled.load(std::memory_order_relaxed)) m_queue.clear();
        m_ending = true;
    }
    m_work.notify_one();
    m_thread.join();
    m_filling.clear();
}
