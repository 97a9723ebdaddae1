#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

static_assert(std::endian::native == std::endian::little,
              "binary FBX files are little-endian; this writer stores host values directly");

// Per-level bookkeeping of the binary record stream: for every open list of records, where
// the current record starts and how many values (and value bytes) it holds so far. The
// record header stores end offset, value count and value-list length in slots whose width
// depends on the file version (4 bytes up to 7400, 8 bytes from 7500).
class FbxIOInternalImpl {
public:
    virtual ~FbxIOInternalImpl() = default;

    virtual size_t SlotWidth() const = 0;
    size_t HeaderSize() const { return 3 * SlotWidth(); }
    // A null record: a header of zeros and an empty name.
    size_t NullRecordSize() const { return HeaderSize() + 1; }

    // Levels: 1 after construction (the top-level list); a block adds one.
    virtual void PushLevel() = 0;
    virtual void PopLevel() = 0;
    virtual size_t LevelCount() const = 0;

    // The current record of the innermost level. Setters return false when the value does not
    // fit the slot width (a file too large for 32-bit record headers).
    virtual bool SetRecordStart(uint64_t position) = 0;
    virtual uint64_t GetRecordStart() const = 0;
    virtual bool HasRecord() const = 0;
    virtual void ClearRecord() = 0;
    virtual bool SetEndOffset(uint64_t position) = 0;
    virtual uint64_t GetEndOffset() const = 0;
    virtual bool AddValue(uint64_t bytes) = 0;
    virtual uint64_t GetValueCount() const = 0;
    virtual uint64_t GetValueSize() const = 0;

    // The record header of the current record as it is stored in the file (HeaderSize()
    // bytes): end offset, value count, value-list length.
    virtual void EncodeHeader(uint8_t* out) const = 0;
};

template <typename Slot>
class FbxIOInternalImplT final : public FbxIOInternalImpl {
public:
    FbxIOInternalImplT() : mLevels(1) {}

    size_t SlotWidth() const override { return sizeof(Slot); }
    void PushLevel() override { mLevels.emplace_back(); }
    void PopLevel() override {
        if (mLevels.size() > 1) mLevels.pop_back();
    }
    size_t LevelCount() const override { return mLevels.size(); }

    bool SetRecordStart(uint64_t position) override {
        Top() = Level{};
        Top().hasRecord = true;
        return Store(Top().start, position);
    }
    uint64_t GetRecordStart() const override { return Top().start; }
    bool HasRecord() const override { return Top().hasRecord; }
    void ClearRecord() override { Top() = Level{}; }
    bool SetEndOffset(uint64_t position) override { return Store(Top().end, position); }
    uint64_t GetEndOffset() const override { return Top().end; }
    bool AddValue(uint64_t bytes) override {
        Level& level = Top();
        return Store(level.count, uint64_t{level.count} + 1) &&
               Store(level.size, uint64_t{level.size} + bytes);
    }
    uint64_t GetValueCount() const override { return Top().count; }
    uint64_t GetValueSize() const override { return Top().size; }

    void EncodeHeader(uint8_t* out) const override {
        const Slot slots[3] = {Top().end, Top().count, Top().size};
        std::memcpy(out, slots, sizeof slots);
    }

private:
    struct Level {
        Slot start = 0;
        Slot end = 0;
        Slot count = 0;
        Slot size = 0;
        bool hasRecord = false;
    };

    static bool Store(Slot& slot, uint64_t value) {
        if (value > std::numeric_limits<Slot>::max()) return false;
        slot = static_cast<Slot>(value);
        return true;
    }
    Level& Top() { return mLevels.back(); }
    const Level& Top() const { return mLevels.back(); }

    std::vector<Level> mLevels;
};

// Record headers of FBX 7100 to 7400 files.
using FbxIOInternalImpl32 = FbxIOInternalImplT<uint32_t>;
// Record headers of FBX 7500 and later files.
using FbxIOInternalImpl64 = FbxIOInternalImplT<uint64_t>;
