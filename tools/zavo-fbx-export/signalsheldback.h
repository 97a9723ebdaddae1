#pragma once

#include <signal.h>

// While alive, the calling thread takes no signals, and threads it starts meanwhile take none
// ever: the program's stop signals then always land in the main thread, which holds them back
// around the step that puts a finished file in place, and never in two threads at once.
class SignalsHeldBack {
public:
    SignalsHeldBack() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

private:
    sigset_t m_previous;
};
