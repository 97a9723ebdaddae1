#include "signalexit.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

namespace {

// Formed before any signal can arrive: the handler may only write and end.
char g_message[4096];
size_t g_length = 0;

void exitNow(int signal) {
    ssize_t ignored = ::write(STDERR_FILENO, g_message, g_length);
    (void)ignored;
    ::_exit(128 + signal);
}

}  // namespace

void exitOnStoppingSignals(const std::string& output) {
    const std::string message = "zavo-fbx-export: " + output + ": cancelled\n";
    g_length = std::min(message.size(), sizeof g_message);
    std::memcpy(g_message, message.data(), g_length);
    struct sigaction action {};
    action.sa_handler = exitNow;
    // A second signal waits behind the first, which ends the program anyway.
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&action.sa_mask, signal);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}
