#pragma once

#include <string_view>
#include <vector>

// Whitespace between the words of a BVH file.
inline bool isBvhBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

// A BVH line ends at LF, CRLF or a lone CR.
inline bool isBvhLineEnd(char c) {
    return c == '\n' || c == '\r';
}

// The numbers of a run of whole lines of a BVH motion section, read but not yet checked
// against the header: the checks need the frames and lines before the run.
struct BvhFrameLines {
    std::vector<double> values;
    std::vector<int> counts;  // the numbers on each line read, blank lines included
    // The first word that is no finite number, on the line after the last one counted.
    bool hasBadWord = false;
    std::string_view badWord;
};

// Reads the numbers of the frame lines of `text` in `parts` runs of whole lines, each but the
// first on a thread of its own. A run stops at its first word that is no finite number, or
// once it holds more than `most` numbers, the most that a well-formed section holds.
std::vector<BvhFrameLines> readBvhFrameLines(std::string_view text, int parts, size_t most);
