#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct libdeflate_compressor;

// Deflates whole arrays into zlib streams and remembers the last few by content, so that an
// array a take stores more than once is compressed once and its bytes reused.
//
// Arrays announced with Prepare are compressed ahead on a few worker threads while the writer
// goes on; PackPrepared then takes the finished bytes, and the writer compresses later
// prepared arrays itself rather than wait for a worker. The compressor is deterministic, so
// the bytes are the same whichever thread made them; with no workers nothing is prepared.
class FbxArrayPacker {
public:
    // workers: threads compressing prepared arrays; 0 compresses every array in Pack.
    explicit FbxArrayPacker(int workers = DefaultWorkers());
    ~FbxArrayPacker();
    FbxArrayPacker(const FbxArrayPacker&) = delete;
    FbxArrayPacker& operator=(const FbxArrayPacker&) = delete;

    // One fewer than the processor threads the process may run on, at most three: the writer
    // keeps one.
    static int DefaultWorkers();

    // A buffer for the bytes of an array to Prepare: one the packer is done with, its old bytes
    // still in it so that resizing it to an array of the same size costs nothing.
    std::vector<uint8_t> Buffer();
    // Starts compressing raw at a zlib level. Returns the ticket PackPrepared takes, or 0 when
    // nothing was started (no workers, an array too large, or enough prepared arrays wait).
    uint64_t Prepare(std::vector<uint8_t> raw, int level);
    // The zlib stream of the array prepared under `ticket`, empty when it could not be made;
    // the arrays prepared before it were not asked for and are dropped. Null when the ticket
    // is not (or no longer) prepared. Valid until the next call.
    const std::vector<uint8_t>* PackPrepared(uint64_t ticket);
    // The zlib stream of `size` bytes at `raw`, at a zlib compression level (-1 for the
    // default); null when the compressor cannot be made. Valid until the next call.
    const std::vector<uint8_t>* Pack(const uint8_t* raw, size_t size, int level);

private:
    struct Entry {
        uint32_t checksum = 0;
        int level = 0;
        uint64_t lastUse = 0;
        std::vector<uint8_t> raw;
        std::vector<uint8_t> packed;
    };
    struct Job {
        uint64_t ticket = 0;
        Entry entry;
        bool taken = false;
        bool done = false;
        bool failed = false;
    };
    // A compressor for one level, made on first use.
    struct Compressor {
        libdeflate_compressor* compressor = nullptr;
        int level = -2;
        ~Compressor();
        bool Prepare(int level);
        bool Compress(const uint8_t* raw, size_t size, std::vector<uint8_t>& packed) const;
    };

    Entry& Victim();
    void Recycle(Entry& entry);
    std::shared_ptr<Job> NextUntaken();
    void Finish(Job& job, std::unique_lock<std::mutex>& lock);
    static void Run(Job& job, Compressor& compressor);
    // Runs `job` with the lock released, then marks it done and tells the waiters.
    void RunUnlocked(Job& job, Compressor& compressor, std::unique_lock<std::mutex>& lock);
    void Work();

    Compressor mCompressor;
    uint64_t mUses = 0;
    std::vector<Entry> mEntries;
    std::vector<uint8_t> mPacked;  // arrays too large to remember
    // Buffers of forgotten arrays, for the next prepared ones: fresh memory would be cleared
    // by the system page by page and then again by the vector.
    std::vector<std::vector<uint8_t>> mSpareRaw;
    std::vector<std::vector<uint8_t>> mSparePacked;

    const int mWorkerCount;
    std::vector<std::thread> mWorkers;  // started by the first Prepare
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<std::shared_ptr<Job>> mJobs;  // prepared arrays, oldest first
    uint64_t mLastTicket = 0;
    bool mStopping = false;
};
