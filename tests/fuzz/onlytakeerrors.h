#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "takeerror.h"

// Runs `read` on the fuzzer's bytes as text: refusing them with a TakeError is what bad input
// must get; any other exception is a finding and aborts.
template <typename Read>
int onlyTakeErrors(const uint8_t* data, size_t size, const Read& read) {
    try {
        read(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const TakeError&) {
    } catch (const std::exception& unexpected) {
        std::fprintf(stderr, "unexpected failure: %s\n", unexpected.what());
        std::abort();
    }
    return 0;
}
