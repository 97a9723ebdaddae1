#pragma once

#include <cstdio>

// A one-line progress bar on a terminal, redrawn in place and only when it changes.
class ProgressBar {
public:
    // Draws on `stream` only when `enabled` and the stream is a terminal; counts `unit`s
    // ("frame 12 of 600").
    ProgressBar(std::FILE* stream, bool enabled, const char* unit = "frame");
    ~ProgressBar() { finish(); }

    void update(int done, int total);
    // Clears the bar so that later output starts on a clean line.
    void finish();

private:
    std::FILE* m_stream;
    bool m_enabled;
    const char* m_unit;
    bool m_drawn = false;
    int m_lastPermille = -1;
};
