#include "fbx/io/fbxfileversion.h"

#include <cstring>

namespace {

constexpr FbxFileVersion kVersions[] = {
    {"FBX202000", "FBX 2020", "FBX 7.7 file (version 7700), 64-bit record headers", 7700},
    {"FBX201900", "FBX 2019", "FBX 7.7 file (version 7700), 64-bit record headers", 7700},
    {"FBX201800", "FBX 2018", "FBX 7.5 file (version 7500), 64-bit record headers", 7500},
    {"FBX201600", "FBX 2016/2017", "FBX 7.5 file (version 7500), 64-bit record headers", 7500},
    {"FBX201400", "FBX 2014/2015", "FBX 7.4 file (version 7400), 32-bit record headers", 7400},
    {"FBX201300", "FBX 2013", "FBX 7.3 file (version 7300), 32-bit record headers", 7300},
    {"FBX201200", "FBX 2012", "FBX 7.2 file (version 7200), 32-bit record headers", 7200},
    {"FBX201100", "FBX 2011", "FBX 7.1 file (version 7100), 32-bit record headers", 7100},
    // Older generations have no writer here; their names give the newest file.
    {"FBX201000", "FBX 2010", "written as an FBX 7.7 file (version 7700)", 7700},
    {"FBX200900", "FBX 2009", "written as an FBX 7.7 file (version 7700)", 7700},
    {"FBX200611", "FBX 2006", "written as an FBX 7.7 file (version 7700)", 7700},
};

}  // namespace

std::span<const FbxFileVersion> FbxFileVersions() {
    return kVersions;
}

const FbxFileVersion* FbxFindFileVersion(const char* name) {
    if (!name) return nullptr;
    for (const FbxFileVersion& row : kVersions) {
        if (std::strcmp(row.name, name) == 0) return &row;
    }
    return nullptr;
}
