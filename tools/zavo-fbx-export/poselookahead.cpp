#include "poselookahead.h"

#include "usablecores.h"

PoseLookAhead::PoseLookAhead(std::function<TakePose(int)> compute, int frameCount, int depth)
    : m_compute(std::move(compute)),
      m_frameCount(frameCount),
      m_depth(depth),
      m_slots(static_cast<size_t>(depth)) {
    if (depth > 0) m_worker = std::thread([this] { work(); });
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
        if (frame > m_asked && frame <= m_asked + m_depth) {
            pose = takeAhead(lock, frame);
        } else {
            // A jump: the second thread drops what it is computing and goes on after `frame`.
            m_next = frame + 1;
            ++m_restarts;
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

// Waits for `frame`, which the second thread has computed or will compute next: the frames
// before it are not needed any more, so their room is free.
std::shared_ptr<const TakePose> PoseLookAhead::takeAhead(std::unique_lock<std::mutex>& lock,
                                                         int frame) {
    Slot& slot = m_slots[static_cast<size_t>(frame % m_depth)];
    if (slot.frame != frame) {
        m_asked = frame - 1;
        m_roomFreed.notify_one();
        m_poseReady.wait(lock, [&] { return slot.frame == frame; });
    }
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
