#include "signalexit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>

namespace {

// A message formed before any signal can arrive: the handler may only write and end.
struct Message {
    char text[4096];
    size_t length = 0;

    void set(const std::string& line) {
        length = std::min(line.size(), sizeof text);
        std::memcpy(text, line.data(), length);
    }
    void write() const {
        ssize_t ignored = ::write(STDERR_FILENO, text, length);
        (void)ignored;
    }
};

Message g_cancelled;
Message g_saved;
// The output as it was before the run: the handler compares it with what is there now.
char g_output[4096];
bool g_watchOutput = false;
bool g_outputExisted = false;
dev_t g_device = 0;
ino_t g_inode = 0;

// True when a regular file other than the one found before the run now stands at the output:
// the writer links the new file into place only once it is whole, so the save has completed.
bool outputReplaced() {
    if (!g_watchOutput) return false;
    struct stat now {};
    if (::stat(g_output, &now) != 0 || !S_ISREG(now.st_mode)) return false;
    return !g_outputExisted || now.st_dev != g_device || now.st_ino != g_inode;
}

void exitNow(int signal) {
    // Stop signals arriving in two threads at once end the program once: the later handler
    // waits for the first one's exit.
    static std::atomic_flag ending = ATOMIC_FLAG_INIT;
    if (ending.test_and_set()) {
        for (;;) ::pause();
    }
    if (outputReplaced()) {
        g_saved.write();
        ::_exit(0);
    }
    g_cancelled.write();
    ::_exit(128 + signal);
}

// Records the output's identity (through a symlink, its target's). Only a regular file, or a
// name not taken yet, is replaced as a whole; pipes, devices and standard output are not.
void recordOutput(const std::string& output) {
    g_watchOutput = false;
    if (output == "-" || output.size() >= sizeof g_output) return;
    struct stat before {};
    if (::stat(output.c_str(), &before) == 0) {
        if (!S_ISREG(before.st_mode)) return;
        g_outputExisted = true;
        g_device = before.st_dev;
        g_inode = before.st_ino;
    } else {
        g_outputExisted = false;
    }
    std::memcpy(g_output, output.c_str(), output.size() + 1);
    g_watchOutput = true;
}

}  // namespace

void exitOnStoppingSignals(const std::string& output) {
    g_cancelled.set("zavo-fbx-export: " + output + ": cancelled\n");
    g_saved.set("zavo-fbx-export: " + output +
                ": saved before the signal arrived; the run counts as finished\n");
    recordOutput(output);
    struct sigaction action {};
    action.sa_handler = exitNow;
    // A second signal waits behind the first, which ends the program anyway.
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&action.sa_mask, signal);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}
