#pragma once

#include <string_view>

#include "bvhclip.h"

// The frame rate of a clip. Frame Time is printed rounded (120 fps as 0.008333), so a
// standard rate that rounds to the printed value at the precision it was printed with is the
// clip's rate; otherwise the rate is 1 / Frame Time as it stands.
struct BvhFrameRate {
    double rate = 0.0;
    bool standard = false;  // a standard rate read from the rounded Frame Time
};

BvhFrameRate bvhFrameRate(const BvhClip& clip);

// Decimal places of a printed number ("0.008333" 6, "8.3e-3" 4, "25" 0); -1 when the text is
// no plain decimal number.
int printedDecimals(std::string_view text);
