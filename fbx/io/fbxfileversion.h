#pragma once

#include <span>

// The FBX 7 file versions the writer can produce, named as the "ExportFileVersion" setting
// names them. Several names share one file version; the record headers are 32-bit below
// version 7500 and 64-bit from it.
struct FbxFileVersion {
    const char* name;         // "FBX202000"
    const char* label;        // "FBX 2020", shown to users
    const char* description;  // what reads the file
    int version;              // 7700
};

inline constexpr const char* FBX_DEFAULT_FILE_VERSION = "FBX202000";

// Newest first, in the order of the setting's enumeration.
std::span<const FbxFileVersion> FbxFileVersions();

// The row named `name`, or null when it names no version.
const FbxFileVersion* FbxFindFileVersion(const char* name);
