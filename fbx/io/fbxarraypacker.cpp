#include "fbx/io/fbxarraypacker.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// Key times and values of a take alternate; a few entries hold both kinds and the odd
// attribute array between them.
constexpr size_t kEntries = 4;
// Larger arrays are compressed each time rather than held twice in memory.
constexpr size_t kLargestRemembered = 64u << 20;
// Prepared arrays waiting or under way per worker: enough to keep the workers busy while
// the writer goes on, few enough to bound the memory they hold.
constexpr size_t kPreparedPerWorker = 3;

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
    const int threads = static_cast<int>(std::thread::hardware_concurrency());
    return std::clamp(threads - 1, 0, 3);
}

void FbxArrayPacker::Prepare(std::vector<uint8_t> raw, int level) {
    if (mWorkerCount == 0 || raw.size() > kLargestRemembered) return;
    auto job = std::make_shared<Job>();
    job->entry.checksum = libdeflate_adler32(1, raw.data(), raw.size());
    job->entry.level = level;
    job->entry.raw = std::move(raw);
    {
        const std::lock_guard lock(mMutex);
        if (mJobs.size() >= kPreparedPerWorker * static_cast<size_t>(mWorkerCount)) return;
        mJobs.push_back(std::move(job));
    }
    while (mWorkers.size() < static_cast<size_t>(mWorkerCount)) {
        mWorkers.emplace_back([this] { Work(); });
    }
    mChanged.notify_one();
}

void FbxArrayPacker::Run(Job& job, Compressor& compressor) {
    const Entry& entry = job.entry;
    job.failed = !compressor.Prepare(entry.level) ||
                 !compressor.Compress(entry.raw.data(), entry.raw.size(), job.entry.packed);
}

void FbxArrayPacker::Work() {
    Compressor compressor;
    std::unique_lock lock(mMutex);
    for (;;) {
        const auto next = std::find_if(mJobs.begin(), mJobs.end(),
                                       [](const std::shared_ptr<Job>& job) { return !job->taken; });
        if (mStopping) return;
        if (next == mJobs.end()) {
            mChanged.wait(lock);
            continue;
        }
        std::shared_ptr<Job> job = *next;
        job->taken = true;
        lock.unlock();
        Run(*job, compressor);
        lock.lock();
        job->done = true;
        mChanged.notify_all();
    }
}

// The prepared job for these bytes, finished (by this thread when no worker took it yet);
// jobs prepared before it were not asked for and are dropped. Null when none matches.
std::shared_ptr<FbxArrayPacker::Job> FbxArrayPacker::TakePrepared(uint32_t checksum,
                                                                  const uint8_t* raw, size_t size,
                                                                  int level) {
    std::unique_lock lock(mMutex);
    const auto match = std::find_if(mJobs.begin(), mJobs.end(), [&](const auto& job) {
        const Entry& e = job->entry;
        return SameArray(e.raw, checksum, level, e.checksum, e.level, raw, size);
    });
    if (match == mJobs.end()) return nullptr;
    std::shared_ptr<Job> job = *match;
    mJobs.erase(mJobs.begin(), match + 1);
    if (!job->taken) {
        job->taken = true;
        lock.unlock();
        Run(*job, mCompressor);
        return job;
    }
    mChanged.wait(lock, [&] { return job->done; });
    return job;
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
    if (mWorkerCount > 0) {
        if (std::shared_ptr<Job> job = TakePrepared(checksum, raw, size, level)) {
            if (job->failed) return nullptr;
            Entry& entry = Victim();
            entry = std::move(job->entry);
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
