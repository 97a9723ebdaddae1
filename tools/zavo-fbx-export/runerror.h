#pragma once

#include <stdexcept>

// A failed export run (exit status 1); the message says what failed and where.
class RunError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
