#pragma once

#include <cstdint>
#include <string>

// A product version: numbers, the build time (seconds since 1970) and free text.
struct NuVersion {
    int major = 0;
    int minor = 0;
    int revision = 0;
    int build = 0;
    uint32_t buildTime = 0;
    std::string extra;
};

// "major.minor.revision.build", then the extra text after a blank when there is one.
std::string NuVersion_toString(const NuVersion& version);
