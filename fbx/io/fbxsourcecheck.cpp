#include "fbx/io/fbxsourcecheck.h"

#include <string>

namespace {

constexpr FbxSourceCheckBlock kFirstSeed = {0x58, 0xab, 0xa9, 0xf0, 0x6c, 0xa2, 0xd8, 0x3f,
                                            0x4d, 0x47, 0x49, 0xa3, 0xb4, 0xb2, 0xe7, 0x3d};
constexpr FbxSourceCheckBlock kSecondSeed = {0xe2, 0x4f, 0x7b, 0x5f, 0xcd, 0xe4, 0xc8, 0x6d,
                                             0xdb, 0xd8, 0xfb, 0xd7, 0x40, 0x58, 0xc6, 0x78};

// One pass of the chain: a running byte accumulator folds the mixing bytes into the block.
void Pass(FbxSourceCheckBlock& block, const uint8_t* mix) {
    uint8_t accumulator = 64;
    for (size_t i = 0; i < block.size(); ++i) {
        accumulator ^= mix[i] ^ block[i];
        block[i] = accumulator;
    }
}

const uint8_t* Bytes(const std::string& text) {
    return reinterpret_cast<const uint8_t*>(text.data());
}

}  // namespace

FbxSourceCheckBlock FbxFileIdBlock(const FbxCreationTime& time) {
    const std::string mangled = FbxMangleCreationTime(time);
    FbxSourceCheckBlock block = kFirstSeed;
    Pass(block, Bytes(mangled));
    return block;
}

FbxSourceCheckBlock FbxFooterSourceCheckBlock(const FbxCreationTime& time) {
    const std::string mangled = FbxMangleCreationTime(time);
    FbxSourceCheckBlock block = FbxFileIdBlock(time);
    Pass(block, kSecondSeed.data());
    Pass(block, Bytes(mangled));
    return block;
}
