#pragma once

#include "commandline.h"
#include "take.h"

// The program's two jobs. Both throw RunError (exit status 1) or TakeError for a bad take.

// Exports the take the command line names; prints warnings and the summary.
void runExportCommand(const CommandLine& command);
// Shows the plug-in's options page in a dialog; needs a QApplication.
void runOptionsCommand(const CommandLine& command);

// The take the command line names: the demo take, a BVH clip or a take file.
Take loadTake(const CommandLine& command);
