#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct libdeflate_compressor;

// Deflates whole arrays into zlib streams and remembers the last few by content: every curve of
// a take stores the same key times, so that array is compressed once and its bytes reused.
class FbxArrayPacker {
public:
    FbxArrayPacker() = default;
    ~FbxArrayPacker();
    FbxArrayPacker(const FbxArrayPacker&) = delete;
    FbxArrayPacker& operator=(const FbxArrayPacker&) = delete;

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

    bool PrepareCompressor(int level);
    Entry& Victim();
    void Compress(const uint8_t* raw, size_t size, std::vector<uint8_t>& packed);

    libdeflate_compressor* mCompressor = nullptr;
    int mCompressorLevel = -2;
    uint64_t mUses = 0;
    std::vector<Entry> mEntries;
    std::vector<uint8_t> mPacked;  // arrays too large to remember
};
