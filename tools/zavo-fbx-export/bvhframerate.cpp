#include "bvhframerate.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace {

// The rates of the standard time modes, the NTSC ones as their exact fractions.
constexpr double standardRates[] = {120.0,
                                    100.0,
                                    60.0,
                                    50.0,
                                    48.0,
                                    30.0,
                                    30000.0 / 1001.0,
                                    25.0,
                                    24.0,
                                    1000.0,
                                    24000.0 / 1001.0,
                                    96.0,
                                    72.0,
                                    60000.0 / 1001.0,
                                    120000.0 / 1001.0};

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

int printedDecimals(std::string_view text) {
    size_t i = 0;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    int digits = 0, decimals = 0;
    for (; i < text.size() && isDigit(text[i]); ++i) ++digits;
    if (i < text.size() && text[i] == '.')
        for (++i; i < text.size() && isDigit(text[i]); ++i) ++decimals;
    if (digits + decimals == 0) return -1;
    if (i == text.size()) return decimals;
    if (text[i] != 'e' && text[i] != 'E') return -1;
    if (++i < text.size() && text[i] == '+') ++i;
    int exponent = 0;
    const auto [ptr, ec] = std::from_chars(text.data() + i, text.data() + text.size(), exponent);
    if (i == text.size() || ec != std::errc() || ptr != text.data() + text.size()) return -1;
    return std::max(0, decimals - exponent);
}

BvhFrameRate bvhFrameRate(const BvhClip& clip) {
    const BvhFrameRate asPrinted{1.0 / clip.frameTime, false};
    const int decimals = printedDecimals(clip.frameTimeText);
    if (decimals < 0) return asPrinted;
    // Half a unit of the last printed place, widened by a hair for the binary fractions.
    const double halfUnit = 0.5 * std::pow(10.0, -decimals) * (1.0 + 1e-9);
    BvhFrameRate best = asPrinted;
    double bestDistance = halfUnit;
    for (double rate : standardRates) {
        const double distance = std::abs(1.0 / rate - clip.frameTime);
        if (distance <= bestDistance) {
            best = {rate, true};
            bestDistance = distance;
        }
    }
    return best;
}
