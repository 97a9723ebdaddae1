#include "poselookahead.h"

#include "signalsheldback.h"
#include "usablecores.h"

PoseLookAhead::PoseLookAhead(std::function<TakePose(int)> compute, int frameCount, int depth)
    : m_compute(std::move(compute)),
      m_frameCount(frameCount),
      m_depth(depth),
      m_slots(static_cast<size_t>(depth)) {
    if (depth > 0) {
        const SignalsHeldBack helperTakesNoSignals;
        m_worker = std::thread([this] { work(); });
    }
}

PoseLookAhead::~PoseLookAhead() {
    if (!m_worker.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_roomFreed.notify_one();
    m_worker.join();
}

int PoseLookAhead::defaultDepth() {
    return usableCores() > 1 ? 64 : 0;
}

std::shared_ptr<const TakePose> PoseLookAhead::pose(int frame) {
    if (frame == m_current) return m_currentPose;
    std::shared_ptr<const TakePose> pose;
    if (m_depth > 0) {
        std::unique_lock lock(m_mutex);
        if (frame > m_asked && frame < m_next) {
            pose = takeAhead(lock, frame);
        } else {
            // Not begun on the second thread (it lags, or the exporter jumped): computed here
            // rather than waited for, and the second thread goes on after it. What it is
            // computing now is dropped unless it is the frame before.
            if (frame != m_next) ++m_restarts;
            m_next = frame + 1;
        }
        m_asked = frame;
        // Woken only when there is room for a batch: a wake-up per frame would cost more than
        // a pose.
        if (room() >= (m_depth + 1) / 2) m_roomFreed.notify_one();
    }
    if (!pose) pose = std::make_shared<const TakePose>(m_compute(frame));
    m_current = frame;
    m_currentPose = pose;
    return pose;
}

// Waits for `frame`, which the second thread has computed or is computing.
std::shared_ptr<const TakePose> PoseLookAhead::takeAhead(std::unique_lock<std::mutex>& lock,
                                                         int frame) {
    Slot& slot = m_slots[static_cast<size_t>(frame % m_depth)];
    m_poseReady.wait(lock, [&] { return slot.frame == frame; });
    slot.frame = -1;
    return std::move(slot.pose);
}

void PoseLookAhead::work() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_roomFreed.wait(
            lock, [&] { return m_stop || (m_next < m_frameCount && room() >= (m_depth + 1) / 2); });
        while (!m_stop && m_next < m_frameCount && room() > 0) {
            const int frame = m_next++;
            const int restarts = m_restarts;
            lock.unlock();
            std::shared_ptr<const TakePose> pose;
            try {
                pose = std::make_shared<const TakePose>(m_compute(frame));
            } catch (...) {
                // The asking thread computes the frame again and meets the failure itself.
            }
            lock.lock();
            if (restarts != m_restarts) continue;
            m_slots[static_cast<size_t>(frame % m_depth)] = {frame, std::move(pose)};
            m_poseReady.notify_one();
        }
        if (m_stop) return;
    }
}
