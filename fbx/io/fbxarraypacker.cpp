#include "fbx/io/fbxarraypacker.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "fbx/io/fbxhelperthread.h"
#include "fbx/io/fbxprocessorthreads.h"

namespace {

// Key times and values of a take alternate; a few entries hold both kinds and the odd
// attribute array between them.
constexpr size_t kEntries = 4;
// Larger arrays are compressed each time rather than held twice in memory.
constexpr size_t kLargestRemembered = 64u << 20;
// Prepared arrays waiting or under way per compressing thread (the workers and the writer's):
// enough to keep them all busy while the writer goes on, few enough to bound the memory
// they hold.
constexpr size_t kPreparedPerThread = 3;

// zlib's levels, where -1 asks for the default (6), on the compressor's scale.
int CompressorLevel(int zlibLevel) {
    return zlibLevel < 0 ? 6 : std::min(zlibLevel, 9);
}

bool SameArray(const std::vector<uint8_t>& kept, uint32_t checksum, int level, uint32_t keptSum,
               int keptLevel, const uint8_t* raw, size_t size) {
    return keptSum == checksum && keptLevel == level && kept.size() == size &&
           std::memcmp(kept.data(), raw, size) == 0;
}

}  // namespace

FbxArrayPacker::Compressor::~Compressor() {
    if (compressor) libdeflate_free_compressor(compressor);
}

bool FbxArrayPacker::Compressor::Prepare(int zlibLevel) {
    if (compressor && level == zlibLevel) return true;
    if (compressor) libdeflate_free_compressor(compressor);
    compressor = libdeflate_alloc_compressor(CompressorLevel(zlibLevel));
    level = zlibLevel;
    return compressor != nullptr;
}

bool FbxArrayPacker::Compressor::Compress(const uint8_t* raw, size_t size,
                                          std::vector<uint8_t>& packed) const {
    packed.resize(libdeflate_zlib_compress_bound(compressor, size));
    packed.resize(libdeflate_zlib_compress(compressor, raw, size, packed.data(), packed.size()));
    return !packed.empty();
}

FbxArrayPacker::FbxArrayPacker(int workers) : mWorkerCount(std::max(workers, 0)) {}

FbxArrayPacker::~FbxArrayPacker() {
    {
        const std::lock_guard lock(mMutex);
        mStopping = true;
    }
    mChanged.notify_all();
    for (std::thread& worker : mWorkers) worker.join();
}

int FbxArrayPacker::DefaultWorkers() {
    const int threads = static_cast<int>(FbxProcessorThreads());
    return std::clamp(threads - 1, 0, 3);
}

std::vector<uint8_t> FbxArrayPacker::Buffer() {
    if (mSpareRaw.empty()) return {};
    std::vector<uint8_t> buffer = std::move(mSpareRaw.back());
    mSpareRaw.pop_back();
    return buffer;
}

void FbxArrayPacker::Recycle(Entry& entry) {
    const size_t spares = kPreparedPerThread * static_cast<size_t>(mWorkerCount + 1);
    if (entry.raw.capacity() > 0 && mSpareRaw.size() < spares) {
        mSpareRaw.push_back(std::move(entry.raw));
    }
    if (entry.packed.capacity() > 0 && mSparePacked.size() < spares) {
        mSparePacked.push_back(std::move(entry.packed));
    }
}

uint64_t FbxArrayPacker::Prepare(std::vector<uint8_t> raw, int level) {
    if (mWorkerCount == 0 || raw.size() > kLargestRemembered) return 0;
    auto job = std::make_shared<Job>();
    job->entry.level = level;
    job->entry.raw = std::move(raw);
    if (!mSparePacked.empty()) {
        job->entry.packed = std::move(mSparePacked.back());
        mSparePacked.pop_back();
    }
    {
        const std::lock_guard lock(mMutex);
        if (mJobs.size() >= kPreparedPerThread * static_cast<size_t>(mWorkerCount + 1)) return 0;
        job->ticket = ++mLastTicket;
        mJobs.push_back(job);
    }
    while (mWorkers.size() < static_cast<size_t>(mWorkerCount)) {
        mWorkers.push_back(FbxStartHelperThread([this] { Work(); }));
    }
    mChanged.notify_one();
    return job->ticket;
}

// The checksum is taken here, off the writer's thread: it lets a later Pack of the same bytes
// find the array among the remembered ones.
void FbxArrayPacker::Run(Job& job, Compressor& compressor) {
    Entry& entry = job.entry;
    entry.checksum = libdeflate_adler32(1, entry.raw.data(), entry.raw.size());
    job.failed = !compressor.Prepare(entry.level) ||
                 !compressor.Compress(entry.raw.data(), entry.raw.size(), entry.packed);
}

// The oldest prepared array no thread has started, marked as taken; null when there is none.
// Called locked.
std::shared_ptr<FbxArrayPacker::Job> FbxArrayPacker::NextUntaken() {
    const auto next = std::find_if(mJobs.begin(), mJobs.end(),
                                   [](const std::shared_ptr<Job>& job) { return !job->taken; });
    if (next == mJobs.end()) return nullptr;
    (*next)->taken = true;
    return *next;
}

void FbxArrayPacker::Work() {
    Compressor compressor;
    std::unique_lock lock(mMutex);
    for (;;) {
        if (mStopping) return;
        std::shared_ptr<Job> job = NextUntaken();
        if (!job) {
            mChanged.wait(lock);
            continue;
        }
        RunUnlocked(*job, compressor, lock);
    }
}

void FbxArrayPacker::RunUnlocked(Job& job, Compressor& compressor,
                                 std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    Run(job, compressor);
    lock.lock();
    job.done = true;
    mChanged.notify_all();
}

// Finishes `job`: compresses it here when no worker has started it, and while a worker is at
// it compresses the next prepared arrays instead of waiting, so the writer's thread does its
// share. Called locked.
void FbxArrayPacker::Finish(Job& job, std::unique_lock<std::mutex>& lock) {
    if (!job.taken) {
        job.taken = true;
        RunUnlocked(job, mCompressor, lock);
        return;
    }
    while (!job.done) {
        std::shared_ptr<Job> other = NextUntaken();
        if (!other) {
            mChanged.wait(lock);
            continue;
        }
        RunUnlocked(*other, mCompressor, lock);
    }
}

const std::vector<uint8_t>* FbxArrayPacker::PackPrepared(uint64_t ticket) {
    if (ticket == 0) return nullptr;
    std::unique_lock lock(mMutex);
    const auto match = std::find_if(mJobs.begin(), mJobs.end(),
                                    [&](const auto& job) { return job->ticket == ticket; });
    if (match == mJobs.end()) return nullptr;
    const std::shared_ptr<Job> job = *match;
    mJobs.erase(mJobs.begin(), match + 1);
    Finish(*job, lock);
    lock.unlock();
    if (job->failed) {
        mPacked.clear();
        return &mPacked;
    }
    Entry& kept = Victim();
    Recycle(kept);
    kept = std::move(job->entry);
    kept.lastUse = ++mUses;
    return &kept.packed;
}

FbxArrayPacker::Entry& FbxArrayPacker::Victim() {
    if (mEntries.size() < kEntries) return mEntries.emplace_back();
    return *std::min_element(mEntries.begin(), mEntries.end(),
                             [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; });
}

const std::vector<uint8_t>* FbxArrayPacker::Pack(const uint8_t* raw, size_t size, int level) {
    const uint32_t checksum = libdeflate_adler32(1, raw, size);
    for (Entry& entry : mEntries) {
        if (SameArray(entry.raw, checksum, level, entry.checksum, entry.level, raw, size)) {
            entry.lastUse = ++mUses;
            return &entry.packed;
        }
    }
    if (!mCompressor.Prepare(level)) return nullptr;
    if (size > kLargestRemembered) {
        mCompressor.Compress(raw, size, mPacked);
        return &mPacked;
    }
    Entry& entry = Victim();
    mCompressor.Compress(raw, size, entry.packed);
    entry.checksum = checksum;
    entry.level = level;
    entry.lastUse = ++mUses;
    entry.raw.assign(raw, raw + size);
    return &entry.packed;
}
