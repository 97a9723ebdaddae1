#pragma once

#include <signal.h>

#include <thread>
#include <utility>

// Starts a helper thread (the writer's, the export run's) that leaves every signal to the host's
// threads. A stop signal then never lands in a helper while the host's thread holds it back
// around a step that must not be cut short (putting the finished file in place).
template <typename Body>
std::thread FbxStartHelperThread(Body&& body) {
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    struct Restore {
        const sigset_t& mask;
        ~Restore() { pthread_sigmask(SIG_SETMASK, &mask, nullptr); }
    } restore{previous};
    return std::thread(std::forward<Body>(body));
}
