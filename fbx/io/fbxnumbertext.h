#pragma once

#include <charconv>
#include <string_view>
#include <type_traits>

// A number in the text form of ASCII FBX files: integers in decimal, doubles with 15 and
// floats with 7 significant digits ("%.15g" / "%.7g"). Formatting never depends on the
// process locale.
class FbxNumberText {
public:
    template <typename T>
    explicit FbxNumberText(T value) {
        std::to_chars_result result;
        if constexpr (std::is_same_v<T, double>) {
            result =
                std::to_chars(mText, mText + sizeof mText, value, std::chars_format::general, 15);
        } else if constexpr (std::is_same_v<T, float>) {
            result =
                std::to_chars(mText, mText + sizeof mText, value, std::chars_format::general, 7);
        } else {
            result = std::to_chars(mText, mText + sizeof mText, value);
        }
        mSize = static_cast<size_t>(result.ptr - mText);
    }

    std::string_view View() const { return {mText, mSize}; }

private:
    char mText[40];
    size_t mSize = 0;
};
