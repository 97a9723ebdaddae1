// The JSON take reader on arbitrary bytes: it must return a take or throw TakeError, nothing
// else (no crash, no other exception, no sanitizer report).
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "jsontakereader.h"
#include "takeerror.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const Take take = readTakeText(text, "fuzz.json");
        (void)take.frameCount();
    } catch (const TakeError&) {
    } catch (const std::exception& unexpected) {
        std::fprintf(stderr, "unexpected failure: %s\n", unexpected.what());
        std::abort();
    }
    return 0;
}
