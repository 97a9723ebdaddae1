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

// Deflates whole arrays into zlib streams and remembers the last few by content: every curve of
// a take stores the same key times, so that array is compressed once and its bytes reused.
//
// Arrays announced with Prepare are compressed ahead on a few worker threads while the writer
// goes on; Pack then takes the finished bytes. The compressor is deterministic, so the bytes are
// the same whichever thread made them, and with no workers every array is compressed by Pack.
class FbxArrayPacker {
public:
    // workers: threads compressing prepared arrays; 0 compresses every array in Pack.
    explicit FbxArrayPacker(int workers = DefaultWorkers());
    ~FbxArrayPacker();
    FbxArrayPacker(const FbxArrayPacker&) = delete;
    FbxArrayPacker& operator=(const FbxArrayPacker&) = delete;

    // One fewer than the processor's threads, at most three: the writer keeps one.
    static int DefaultWorkers();

    // Starts compressing raw at a zlib level for a later Pack of the same bytes. Nothing
    // happens without workers or while enough prepared arrays wait already.
    void Prepare(std::vector<uint8_t> raw, int level);
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
    std::shared_ptr<Job> TakePrepared(uint32_t checksum, const uint8_t* raw, size_t size,
                                      int level);
    static void Run(Job& job, Compressor& compressor);
    void Work();

    Compressor mCompressor;
    uint64_t mUses = 0;
    std::vector<Entry> mEntries;
    std::vector<uint8_t> mPacked;  // arrays too large to remember

    const int mWorkerCount;
    std::vector<std::thread> mWorkers;  // started by the first Prepare
    std::mutex mMutex;
    std::condition_variable mChanged;
    std::deque<std::shared_ptr<Job>> mJobs;  // prepared arrays, oldest first
    bool mStopping = false;
};
