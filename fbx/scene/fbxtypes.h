#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// Basic value types of the FBX scene model.

using FbxChar = char;
using FbxUChar = unsigned char;
using FbxShort = int16_t;
using FbxUShort = uint16_t;
using FbxInt = int32_t;
using FbxUInt = uint32_t;
using FbxUInt32 = uint32_t;
using FbxLongLong = int64_t;
using FbxULongLong = uint64_t;
using FbxInt64 = int64_t;
using FbxUInt64 = uint64_t;
using FbxFloat = float;
using FbxDouble = double;
using FbxBool = bool;
using FbxEnum = int32_t;

// Fixed-size vector of doubles: positions, Euler angles, colours.
template <int N>
struct FbxVectorTemplate {
    double mData[N] = {};

    constexpr FbxVectorTemplate() = default;
    constexpr double& operator[](int i) { return mData[i]; }
    constexpr double operator[](int i) const { return mData[i]; }
    double* Buffer() { return mData; }
    const double* Buffer() const { return mData; }
    friend constexpr bool operator==(const FbxVectorTemplate& a, const FbxVectorTemplate& b) {
        for (int i = 0; i < N; ++i) {
            if (a.mData[i] != b.mData[i]) {
                return false;
            }
        }
        return true;
    }
};

struct FbxDouble2 : FbxVectorTemplate<2> {
    constexpr FbxDouble2() = default;
    constexpr FbxDouble2(double x, double y) { mData[0] = x, mData[1] = y; }
};

struct FbxDouble3 : FbxVectorTemplate<3> {
    constexpr FbxDouble3() = default;
    constexpr explicit FbxDouble3(double v) { mData[0] = mData[1] = mData[2] = v; }
    constexpr FbxDouble3(double x, double y, double z) { mData[0] = x, mData[1] = y, mData[2] = z; }
};

struct FbxDouble4 : FbxVectorTemplate<4> {
    constexpr FbxDouble4() = default;
    constexpr FbxDouble4(double x, double y, double z, double w) {
        mData[0] = x, mData[1] = y, mData[2] = z, mData[3] = w;
    }
};

using FbxVector4 = FbxDouble4;

// Owning character string (UTF-8 bytes).
class FbxString {
public:
    FbxString() = default;
    FbxString(const char* text) : mText(text ? text : "") {}
    FbxString(const char* text, size_t length) : mText(text ? std::string(text, length) : "") {}
    FbxString(std::string text) : mText(std::move(text)) {}
    FbxString(std::string_view text) : mText(text) {}

    const char* Buffer() const { return mText.c_str(); }
    const char* c_str() const { return mText.c_str(); }
    size_t size() const { return mText.size(); }
    size_t Size() const { return mText.size(); }
    bool IsEmpty() const { return mText.empty(); }
    const std::string& Std() const { return mText; }
    std::string_view View() const { return mText; }
    char operator[](size_t i) const { return mText[i]; }

    FbxString& operator+=(const FbxString& other) {
        mText += other.mText;
        return *this;
    }
    friend FbxString operator+(FbxString a, const FbxString& b) { return a += b; }
    friend FbxString operator+(FbxString a, const char* b) { return a += FbxString(b); }
    friend bool operator==(const FbxString& a, const FbxString& b) { return a.mText == b.mText; }
    // Lengths first: unequal names are told apart without comparing bytes.
    friend bool operator==(const FbxString& a, const char* b) {
        return a.View() == std::string_view(b ? b : "");
    }
    friend auto operator<=>(const FbxString& a, const FbxString& b) { return a.mText <=> b.mText; }

private:
    std::string mText;
};

template <>
struct std::hash<FbxString> {
    size_t operator()(const FbxString& s) const noexcept {
        return std::hash<std::string>{}(s.Std());
    }
};
