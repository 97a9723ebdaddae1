#include "bvhmotion.h"

#include <algorithm>
#include <cmath>
#include <future>

#include "bvhclip.h"
#include "signalsheldback.h"

namespace {

// Where the line after the one holding `pos` begins, or the end of the text.
size_t nextLineStart(std::string_view text, size_t pos) {
    while (pos < text.size() && !isBvhLineEnd(text[pos])) ++pos;
    if (pos < text.size() && text[pos] == '\r') ++pos;
    if (pos < text.size() && text[pos] == '\n') ++pos;
    return pos;
}

// Reads the word at `pos` as a finite number and moves `pos` past it; false when it is none.
// A short decimal, most words of a clip, is read as it is scanned.
bool readNumber(std::string_view text, size_t& pos, double& value) {
    const char* const end = text.data() + text.size();
    const char* const stop = bvhShortDecimal(text.data() + pos, end, value);
    if (stop && (stop == end || isBvhBlank(*stop))) {
        pos = static_cast<size_t>(stop - text.data());
        return true;
    }
    const size_t start = pos;
    while (pos < text.size() && !isBvhBlank(text[pos])) ++pos;
    return bvhNumber(text.substr(start, pos - start), value) && std::isfinite(value);
}

// Reads whole lines in one pass over the text, words and line ends alike: the run is the
// size of the clip, so a second pass to find each line's end would be felt.
BvhFrameLines readRun(std::string_view text, size_t most, size_t reserve) {
    BvhFrameLines lines;
    lines.values.reserve(reserve);
    size_t pos = 0;
    size_t lineStart = 0;
    size_t lineValues = 0;
    while (pos < text.size()) {
        if (isBvhLineEnd(text[pos])) {
            lines.counts.push_back(static_cast<int>(lines.values.size() - lineValues));
            if (lines.values.size() > most) return lines;
            pos = nextLineStart(text, pos);
            lineStart = pos;
            lineValues = lines.values.size();
        } else if (isBvhBlank(text[pos])) {
            ++pos;
        } else {
            const size_t start = pos;
            double value = 0.0;
            if (!readNumber(text, pos, value)) {
                lines.hasBadWord = true;
                lines.badWord = text.substr(start, pos - start);
                return lines;
            }
            lines.values.push_back(value);
        }
    }
    // The last line, when no line end closes it.
    if (pos > lineStart) lines.counts.push_back(static_cast<int>(lines.values.size() - lineValues));
    return lines;
}

}  // namespace

std::vector<BvhFrameLines> readBvhFrameLines(std::string_view text, int parts, size_t most) {
    // Runs of about equal size, each beginning where a line begins.
    std::vector<size_t> starts{0};
    for (int k = 1; k < parts; ++k) {
        const size_t start = nextLineStart(text, text.size() / parts * k);
        if (start > starts.back() && start < text.size()) starts.push_back(start);
    }
    starts.push_back(text.size());
    // Each run has room for its share of the numbers by its share of the text, and a little
    // more for lines a little longer than the others.
    const auto run = [&](size_t k) {
        const size_t bytes = starts[k + 1] - starts[k];
        const double share = 1.05 * static_cast<double>(bytes) / static_cast<double>(text.size());
        const size_t reserve =
            std::min(most, static_cast<size_t>(share * static_cast<double>(most)));
        return readRun(text.substr(starts[k], bytes), most, reserve);
    };
    std::vector<std::future<BvhFrameLines>> others;
    {
        const SignalsHeldBack helpersTakeNoSignals;
        for (size_t k = 1; k + 1 < starts.size(); ++k)
            others.push_back(std::async(std::launch::async, run, k));
    }
    std::vector<BvhFrameLines> runs;
    runs.push_back(run(0));
    for (auto& other : others) runs.push_back(other.get());
    return runs;
}
