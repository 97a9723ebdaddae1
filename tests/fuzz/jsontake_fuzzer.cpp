// The JSON take reader on arbitrary bytes: it must return a take or throw TakeError, nothing
// else (no crash, no other exception, no sanitizer report).
#include "jsontakereader.h"
#include "onlytakeerrors.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return onlyTakeErrors(data, size, [](std::string_view text) {
        (void)readTakeText(text, "fuzz.json").frameCount();
    });
}
