#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

// Writes `size` bytes at `data` to `fd` (at `position` for the second), resuming after
// interruptions and short writes. Returns 0, or the errno of the call that failed.
int FbxWriteAll(int fd, const char* data, size_t size);
int FbxWriteAllAt(int fd, const char* data, size_t size, uint64_t position);

// The write calls of one output file, made in the order they were queued on a thread of
// their own, so that copying a buffer into the system's file cache overlaps the encoding of
// the next one. The first failure is kept and the writes queued after it are dropped.
class FbxWriteBehind {
public:
    FbxWriteBehind() = default;
    ~FbxWriteBehind() { Stop(); }
    FbxWriteBehind(const FbxWriteBehind&) = delete;
    FbxWriteBehind& operator=(const FbxWriteBehind&) = delete;

    // Starts writing to `fd`, from its current offset on.
    void Start(int fd);
    bool Running() const { return mThread.joinable(); }

    // Queues the bytes of `buffer` after those queued before and leaves an empty buffer in
    // its place (one written before, keeping its capacity). Waits while two buffers are
    // queued already, which bounds the memory held.
    void Append(std::vector<char>& buffer);
    // Queues an overwrite of `size` bytes at the absolute `position`, after the writes
    // queued before it.
    void Patch(uint64_t position, const void* data, size_t size);
    // Waits until every queued write is made and ends the thread. Returns the first failure's
    // errno, 0 when every write succeeded.
    int Finish();
    // Ends the thread, dropping the writes not yet made and any failure.
    void Stop();

    // The errno of the first failed write so far; 0 while none failed.
    int Error() const { return mError.load(std::memory_order_acquire); }

private:
    struct Write {
        std::vector<char> bytes;
        bool patch = false;
        uint64_t position = 0;  // of a patch
    };

    void Work();
    void Make(const Write& write);
    void Keep(int error);
    int End(bool drop);

    int mFd = -1;
    uint64_t mWritten = 0;  // offset of the next appended buffer
    std::thread mThread;
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<Write> mQueue;
    std::vector<std::vector<char>> mSpare;  // written buffers, for Append to hand back
    size_t mQueuedBuffers = 0;              // appended buffers queued or being written
    bool mStopping = false;
    std::atomic<int> mError{0};
};
