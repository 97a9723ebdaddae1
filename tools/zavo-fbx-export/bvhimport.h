#pragma once

#include <string>
#include <vector>

#include "take.h"

// How a BVH file becomes a take.
struct BvhImportOptions {
    double metresPerUnit = 0.01;  // the file's length unit
    double frameRate = 0.0;       // frames per second; 0: from the file's Frame Time
    bool verbose = false;         // also tell how the joints were matched and folded
};

// Reads a BVH file into a take. `notes` receives lines for the user: the frame rate when it
// was read from a rounded Frame Time and, when verbose, the naming scheme, the joints folded
// into a bone and the worst joint position error that folding causes in the Skeleton preset.
Take importBvhTake(const std::string& path, const BvhImportOptions& options,
                   std::vector<std::string>& notes);
