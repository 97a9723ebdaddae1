#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "take.h"

// The poses of a computed take, worked out on a second thread a few frames ahead of the one
// the exporter keys: the exporter asks for the frames in order, each several times in a row.
// A frame the second thread has not begun (the first frames again, a jump, a second thread
// kept from running) is computed on the asking thread, and the look-ahead goes on after it.
// Each pose is computed by the same code whichever thread runs it, so it is the same to the
// bit.
class PoseLookAhead {
public:
    // Poses of frames 0 to frameCount - 1 by `compute`, which must be safe to call from another
    // thread. At most `depth` frames ahead; with `depth` 0 no second thread is started.
    PoseLookAhead(std::function<TakePose(int)> compute, int frameCount, int depth);
    ~PoseLookAhead();
    PoseLookAhead(const PoseLookAhead&) = delete;
    PoseLookAhead& operator=(const PoseLookAhead&) = delete;

    // The pose of `frame`, from 0 to frameCount - 1. Called from one thread only.
    std::shared_ptr<const TakePose> pose(int frame);

    // How far ahead a host computes: a few dozen frames where there is a second core to do it,
    // none on a single core, where the look-ahead would only take turns with the exporter.
    static int defaultDepth();

private:
    struct Slot {
        int frame = -1;
        std::shared_ptr<const TakePose> pose;  // null: computing it failed on the second thread
    };

    std::shared_ptr<const TakePose> takeAhead(std::unique_lock<std::mutex>& lock, int frame);
    int room() const { return m_asked + m_depth - m_next + 1; }
    void work();

    const std::function<TakePose(int)> m_compute;
    const int m_frameCount;
    const int m_depth;
    // The asking thread's own: the frame it asked for last, asked for again and again.
    int m_current = -1;
    std::shared_ptr<const TakePose> m_currentPose;

    std::mutex m_mutex;
    std::condition_variable m_poseReady;
    std::condition_variable m_roomFreed;
    std::vector<Slot> m_slots;  // frame f in slot f % depth
    // Frames m_asked + 1 to m_next - 1 are computed or being computed; the second thread goes
    // on up to m_asked + depth, in order, each into its slot.
    int m_asked = -1;
    int m_next = 0;
    int m_restarts = 0;  // a pose begun before the last jump is dropped, not stored
    bool m_stop = false;
    std::thread m_worker;
};
