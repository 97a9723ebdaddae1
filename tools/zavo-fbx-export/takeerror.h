#pragma once

#include <stdexcept>
#include <string>

// A take that cannot be read or built; the message names the file and, where it applies, the
// frame and field ("walk.json: frames[12].segments[3]: expected 7 numbers, found 6").
class TakeError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
