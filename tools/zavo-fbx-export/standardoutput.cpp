#include "standardoutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

StandardOutputRedirect::StandardOutputRedirect(int target) {
    std::fflush(stdout);
    const int sink = target >= 0 ? target : ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    m_saved = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (sink >= 0 && m_saved >= 0) ::dup2(sink, STDOUT_FILENO);
    if (target < 0 && sink >= 0) ::close(sink);
}

StandardOutputRedirect::~StandardOutputRedirect() {
    std::fflush(stdout);
    if (m_saved < 0) return;
    ::dup2(m_saved, STDOUT_FILENO);
    ::close(m_saved);
}
