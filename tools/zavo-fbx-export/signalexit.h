#pragma once

#include <string>

// Makes SIGINT, SIGTERM and SIGHUP end the program at once, in whatever phase the export is,
// with one line on standard error ("OUTPUT: cancelled") and exit status 128 + the signal.
// Nothing of the run reaches OUTPUT before the FBX writer links the finished file into place,
// which it does with these signals blocked, so the file that was there stays and nothing is
// left beside it. A signal that arrives once that file is in place ends the program with
// status 0 and a line saying so: the save is whole and the run counts as finished.
void exitOnStoppingSignals(const std::string& output);
