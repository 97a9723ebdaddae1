#pragma once

#include <string>

#include "commandline.h"

// Converts every input of a batch command line (--output-dir) into DIR/NAME.fbx, --jobs of
// them at once. Each conversion is a run of this program of its own, so that no state of one
// export run can reach another; its messages are passed on whole when it ends. Returns the exit
// status: 0 when every file was written, 1 when any failed, 2 for inputs that would overwrite
// each other, 128 + N after signal N (the runs under way are stopped the same way).
int runBatchCommand(const CommandLine& command);

// The file `input` is converted to: `folder`/NAME.fbx, NAME being the input's file name without
// its last suffix.
std::string batchOutputPath(const std::string& folder, const std::string& input);
