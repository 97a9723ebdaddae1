#pragma once

#include <array>
#include <cstdint>

#include "fbx/io/fbxcreationtime.h"

using FbxSourceCheckBlock = std::array<uint8_t, 16>;

// The raw "FileId" value of a binary file created at `time`.
FbxSourceCheckBlock FbxFileIdBlock(const FbxCreationTime& time);

// The 16-byte block that opens the footer of a binary file created at `time`. Readers that
// validate files compare it with "FileId" and "CreationTime", so both derive from one time.
FbxSourceCheckBlock FbxFooterSourceCheckBlock(const FbxCreationTime& time);
