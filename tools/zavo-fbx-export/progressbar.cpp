#include "progressbar.h"

#include <unistd.h>

#include <string>

namespace {
constexpr int BarWidth = 40;
}

ProgressBar::ProgressBar(std::FILE* stream, bool enabled, const char* unit)
    : m_stream(stream), m_enabled(enabled && ::isatty(::fileno(stream))), m_unit(unit) {}

void ProgressBar::update(int done, int total) {
    if (!m_enabled || total <= 0) return;
    const int permille = static_cast<int>(1000LL * done / total);
    if (permille == m_lastPermille) return;
    m_lastPermille = permille;
    const int filled = permille * BarWidth / 1000;
    const std::string bar = std::string(filled, '#') + std::string(BarWidth - filled, '.');
    std::fprintf(m_stream, "\r[%s] %3d%%  %s %d of %d", bar.c_str(), permille / 10, m_unit, done,
                 total);
    std::fflush(m_stream);
    m_drawn = true;
}

void ProgressBar::finish() {
    if (!m_drawn) return;
    std::fprintf(m_stream, "\r\033[K");
    std::fflush(m_stream);
    m_drawn = false;
}
