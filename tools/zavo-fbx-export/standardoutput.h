#pragma once

// Sends what is written to standard output, the plug-in's own progress lines included, to
// another file descriptor for as long as it lives; standard output is restored after.
class StandardOutputRedirect {
public:
    // `target` < 0: to /dev/null.
    explicit StandardOutputRedirect(int target = -1);
    ~StandardOutputRedirect();
    StandardOutputRedirect(const StandardOutputRedirect&) = delete;
    StandardOutputRedirect& operator=(const StandardOutputRedirect&) = delete;

    // The standard output the program was started with, open while this lives; -1 if lost.
    int original() const { return m_saved; }

private:
    int m_saved = -1;
};
