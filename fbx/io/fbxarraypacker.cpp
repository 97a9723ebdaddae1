#include "fbx/io/fbxarraypacker.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>

namespace {

// Key times and values of a take alternate; a few entries hold both kinds and the odd
// attribute array between them.
constexpr size_t kEntries = 4;
// Larger arrays are compressed each time rather than held twice in memory.
constexpr size_t kLargestRemembered = 64u << 20;

// zlib's levels, where -1 asks for the default (6), on the compressor's scale.
int CompressorLevel(int zlibLevel) {
    return zlibLevel < 0 ? 6 : std::min(zlibLevel, 9);
}

}  // namespace

FbxArrayPacker::~FbxArrayPacker() {
    if (mCompressor) libdeflate_free_compressor(mCompressor);
}

bool FbxArrayPacker::PrepareCompressor(int level) {
    if (mCompressor && mCompressorLevel == level) return true;
    if (mCompressor) libdeflate_free_compressor(mCompressor);
    mCompressor = libdeflate_alloc_compressor(CompressorLevel(level));
    mCompressorLevel = level;
    return mCompressor != nullptr;
}

FbxArrayPacker::Entry& FbxArrayPacker::Victim() {
    if (mEntries.size() < kEntries) return mEntries.emplace_back();
    return *std::min_element(mEntries.begin(), mEntries.end(),
                             [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; });
}

const std::vector<uint8_t>* FbxArrayPacker::Pack(const uint8_t* raw, size_t size, int level) {
    const uint32_t checksum = libdeflate_adler32(1, raw, size);
    for (Entry& entry : mEntries) {
        if (entry.checksum == checksum && entry.level == level && entry.raw.size() == size &&
            std::memcmp(entry.raw.data(), raw, size) == 0) {
            entry.lastUse = ++mUses;
            return &entry.packed;
        }
    }
    if (!PrepareCompressor(level)) return nullptr;
    if (size > kLargestRemembered) {
        Compress(raw, size, mPacked);
        return &mPacked;
    }
    Entry& entry = Victim();
    Compress(raw, size, entry.packed);
    entry.checksum = checksum;
    entry.level = level;
    entry.lastUse = ++mUses;
    entry.raw.assign(raw, raw + size);
    return &entry.packed;
}

void FbxArrayPacker::Compress(const uint8_t* raw, size_t size, std::vector<uint8_t>& packed) {
    packed.resize(libdeflate_zlib_compress_bound(mCompressor, size));
    packed.resize(libdeflate_zlib_compress(mCompressor, raw, size, packed.data(), packed.size()));
}
