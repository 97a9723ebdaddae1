#include "fbx/io/fbxarraypacker.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

// Arrays like a take's: key values that drift, and repeats of earlier arrays.
std::vector<std::vector<uint8_t>> Arrays() {
    std::mt19937 random(11);
    std::vector<std::vector<uint8_t>> arrays;
    for (int a = 0; a < 12; ++a) {
        std::vector<uint8_t> bytes(4096 + 512 * static_cast<size_t>(a));
        uint8_t value = static_cast<uint8_t>(a);
        for (uint8_t& byte : bytes) {
            value = static_cast<uint8_t>(value + random() % 3);
            byte = value;
        }
        arrays.push_back(bytes);
    }
    arrays.push_back(arrays[2]);
    arrays.push_back(arrays[2]);
    return arrays;
}

// Whatever is prepared, in whatever order, with or without workers: every array packs to the
// bytes a single thread makes, whether its prepared copy or the array itself is packed.
TEST(FbxArrayPackerTest, PreparedArraysPackToTheSameBytes) {
    const std::vector<std::vector<uint8_t>> arrays = Arrays();
    std::vector<std::vector<uint8_t>> expected;
    FbxArrayPacker single(0);
    for (const auto& array : arrays) {
        EXPECT_EQ(0u, single.Prepare(array, 1)) << "nothing is prepared without workers";
        expected.push_back(*single.Pack(array.data(), array.size(), 1));
        ASSERT_FALSE(expected.back().empty());
    }
    const struct {
        const char* name;
        int workers;
        size_t ahead;   // arrays prepared before the first is packed
        bool skipSome;  // some prepared arrays are never asked for
    } rows[] = {
        {"one worker", 1, 3, false},        {"three workers", 3, 6, false},
        {"beyond the bound", 1, 12, false}, {"prepared, not asked", 2, 4, true},
        {"prepare nothing", 2, 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        FbxArrayPacker packer(row.workers);
        std::vector<uint64_t> tickets(arrays.size(), 0);
        size_t prepared = 0;
        for (size_t i = 0; i < arrays.size(); ++i) {
            for (; prepared < arrays.size() && prepared < i + row.ahead; ++prepared) {
                tickets[prepared] = packer.Prepare(arrays[prepared], 1);
            }
            if (row.skipSome && i % 4 == 1) continue;
            const std::vector<uint8_t>* packed = packer.PackPrepared(tickets[i]);
            EXPECT_EQ(packed == nullptr, tickets[i] == 0) << "array " << i;
            if (!packed) packed = packer.Pack(arrays[i].data(), arrays[i].size(), 1);
            ASSERT_NE(packed, nullptr);
            EXPECT_EQ(*packed, expected[i]) << "array " << i;
        }
    }
}

// A ticket is good once: arrays asked for out of order drop the ones prepared before them,
// and an array packed from its prepared copy is remembered for a later Pack at its level.
TEST(FbxArrayPackerTest, TicketsAreTakenOnceAndInOrder) {
    const std::vector<std::vector<uint8_t>> arrays = Arrays();
    FbxArrayPacker single(0);
    FbxArrayPacker packer(1);
    const uint64_t first = packer.Prepare(arrays[0], 1);
    const uint64_t second = packer.Prepare(arrays[1], 1);
    ASSERT_NE(0u, first);
    ASSERT_NE(0u, second);
    EXPECT_NE(first, second);
    ASSERT_NE(nullptr, packer.PackPrepared(second));
    EXPECT_EQ(nullptr, packer.PackPrepared(first)) << "dropped when a later one was taken";
    EXPECT_EQ(nullptr, packer.PackPrepared(second)) << "taken already";
    EXPECT_EQ(nullptr, packer.PackPrepared(0));
    EXPECT_EQ(*packer.Pack(arrays[1].data(), arrays[1].size(), 1),
              *single.Pack(arrays[1].data(), arrays[1].size(), 1));
    EXPECT_EQ(*packer.Pack(arrays[1].data(), arrays[1].size(), 9),
              *single.Pack(arrays[1].data(), arrays[1].size(), 9))
        << "another level is compressed again";
}

}  // namespace
