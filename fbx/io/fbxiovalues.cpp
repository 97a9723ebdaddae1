// Scalar values of FbxIO in both encodings.
#include <charconv>
#include <limits>

#include "fbx/io/fbxio.h"
#include "fbx/io/fbxnumbertext.h"

namespace {

constexpr int kAsciiLineLimit = 120;
constexpr int kDefaultTimeCodeDefinition = 127;

// Binary strings of the form class "::" name are stored name, 0x00 0x01, class.
std::string SwapSeparator(std::string_view text) {
    const size_t at = text.find("::");
    if (at == std::string_view::npos) return std::string(text);
    std::string swapped(text.substr(at + 2));
    swapped += '\0';
    swapped += '\x01';
    swapped += text.substr(0, at);
    return swapped;
}

std::string EscapeAscii(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (char c : text) {
        if (c == '"') {
            escaped += "&quot;";
        } else if (c == '\n') {
            escaped += "&lf;";
        } else if (c == '\r') {
            escaped += "&cr;";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string Base64(const uint8_t* data, size_t size) {
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((size + 2) / 3 * 4);
    for (size_t i = 0; i < size; i += 3) {
        const uint32_t chunk = uint32_t{data[i]} << 16 |
                               (i + 1 < size ? uint32_t{data[i + 1]} << 8 : 0) |
                               (i + 2 < size ? uint32_t{data[i + 2]} : 0);
        text += digits[chunk >> 18 & 63];
        text += digits[chunk >> 12 & 63];
        text += i + 1 < size ? digits[chunk >> 6 & 63] : '=';
        text += i + 2 < size ? digits[chunk & 63] : '=';
    }
    return text;
}

}  // namespace

bool FbxIO::BeginValue() {
    if (!Ready()) return false;
    // A value outside a field is still written; the error ends the write at the next call.
    if (!mLevels.back().fieldOpen) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, kFieldNotOpened);
    }
    return true;
}

void FbxIO::BinaryValue(char type, const void* payload, size_t size) {
    mStream.WriteByte(static_cast<uint8_t>(type));
    mStream.Write(payload, size);
    if (!mImpl->AddValue(1 + size)) {
        mStatus.SetCode(FbxStatus::eFailure, "File too large for its record headers");
    }
}

void FbxIO::BinaryBlob(char type, const void* data, size_t size) {
    if (size > std::numeric_limits<uint32_t>::max()) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Value too large");
        return;
    }
    const uint32_t length = static_cast<uint32_t>(size);
    mStream.WriteByte(static_cast<uint8_t>(type));
    mStream.Write(&length, sizeof length);
    mStream.Write(data, size);
    if (!mImpl->AddValue(1 + sizeof length + size)) {
        mStatus.SetCode(FbxStatus::eFailure, "File too large for its record headers");
    }
}

// Values are separated by "," (strings by ", "); once the line passes its limit the list goes on
// in a new line indented by depth * depth + 4 blanks. The column counts each value's text and,
// for strings only, the separator in front of it.
void FbxIO::AsciiValue(std::string_view text, std::string_view separator, bool countSeparator) {
    Level& level = mLevels.back();
    const bool first = level.values == 0;
    mColumn += static_cast<int>(text.size() + (first || !countSeparator ? 0 : separator.size()));
    if (!first) mStream.Write(separator.data(), separator.size());
    if (mColumn > kAsciiLineLimit) {
        const int indent = AsciiDepth() * AsciiDepth() + 4;
        mStream.WriteByte('\n');
        mStream.Write(std::string(static_cast<size_t>(indent), ' '));
        mColumn = indent;
    }
    mStream.Write(text.data(), text.size());
    ++level.values;
}

void FbxIO::AsciiString(std::string_view text) {
    std::string quoted = "\"";
    quoted.append(EscapeAscii(text)).append("\"");
    AsciiValue(quoted, ", ", true);
}

// Raw bytes in ASCII: a lone "," and then base64 chunks, one quoted chunk per line.
void FbxIO::AsciiRaw(const void* data, size_t size) {
    constexpr size_t kChunk = 76;
    const std::string text = Base64(static_cast<const uint8_t*>(data), size);
    mStream.WriteByte(',');
    size_t at = 0;
    do {
        if (at > 0) mStream.WriteByte(',');
        mStream.Write("\n \"" + text.substr(at, kChunk) + "\"");
        at += kChunk;
    } while (at < text.size());
    ++mLevels.back().values;
}

void FbxIO::FieldWriteI(int value) {
    if (!BeginValue()) return;
    const int32_t v = value;
    mBinary ? BinaryValue('I', &v, sizeof v) : AsciiValue(FbxNumberText(v).View());
    CheckStream();
}

void FbxIO::FieldWriteUI(unsigned int value) {
    if (!BeginValue()) return;
    const uint32_t v = value;
    mBinary ? BinaryValue('I', &v, sizeof v) : AsciiValue(FbxNumberText(v).View());
    CheckStream();
}

void FbxIO::FieldWriteB(bool value) {
    FieldWriteI(value ? 1 : 0);
}

void FbxIO::FieldWriteLL(long long value) {
    if (!BeginValue()) return;
    const int64_t v = value;
    mBinary ? BinaryValue('L', &v, sizeof v) : AsciiValue(FbxNumberText(v).View());
    CheckStream();
}

void FbxIO::FieldWriteULL(unsigned long long value) {
    if (!BeginValue()) return;
    const uint64_t v = value;
    mBinary ? BinaryValue('L', &v, sizeof v) : AsciiValue(FbxNumberText(v).View());
    CheckStream();
}

void FbxIO::FieldWriteD(double value) {
    if (!BeginValue()) return;
    mBinary ? BinaryValue('D', &value, sizeof value) : AsciiValue(FbxNumberText(value).View());
    CheckStream();
}

void FbxIO::FieldWriteF(float value) {
    if (!BeginValue()) return;
    mBinary ? BinaryValue('F', &value, sizeof value) : AsciiValue(FbxNumberText(value).View());
    CheckStream();
}

void FbxIO::FieldWriteShort(short value) {
    if (!BeginValue()) return;
    const int16_t v = value;
    mBinary ? BinaryValue('Y', &v, sizeof v) : AsciiValue(FbxNumberText(v).View());
    CheckStream();
}

void FbxIO::FieldWriteUShort(unsigned short value) {
    if (!BeginValue()) return;
    const uint16_t v = value;
    mBinary ? BinaryValue('Y', &v, sizeof v) : AsciiValue(FbxNumberText(v).View());
    CheckStream();
}

void FbxIO::FieldWriteByte(signed char value) {
    if (!BeginValue()) return;
    mBinary ? BinaryValue('C', &value, 1) : AsciiValue(FbxNumberText(int{value}).View());
    CheckStream();
}

void FbxIO::FieldWriteUByte(unsigned char value) {
    if (!BeginValue()) return;
    mBinary ? BinaryValue('C', &value, 1) : AsciiValue(FbxNumberText(unsigned{value}).View());
    CheckStream();
}

// A character field (such as a shading letter) is one byte in binary and the bare letter in
// ASCII.
void FbxIO::FieldWriteCH(char value) {
    if (!BeginValue()) return;
    mBinary ? BinaryValue('C', &value, 1) : AsciiValue(std::string_view(&value, 1));
    CheckStream();
}

void FbxIO::WriteString(const char* value) {
    if (!BeginValue()) return;
    const std::string_view text = value ? value : "";
    if (mBinary) {
        const std::string stored = SwapSeparator(text);
        BinaryBlob('S', stored.data(), stored.size());
    } else {
        AsciiString(text);
    }
    CheckStream();
}

void FbxIO::FieldWriteS(const char* value) {
    WriteString(value);
}
void FbxIO::FieldWriteC(const char* value) {
    WriteString(value);
}

void FbxIO::FieldWriteR(const void* data, size_t size) {
    if (!data && size > 0) {
        if (Ready()) mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid raw data");
        return;
    }
    if (!BeginValue()) return;
    mBinary ? BinaryBlob('R', data, size) : AsciiRaw(data, size);
    CheckStream();
}

// FBX 7 sections store times as integer ticks, in the legacy unit unless the time-code
// definition was changed (or the file is a 7600 one); older sections store seconds.
void FbxIO::FieldWriteT(const FbxTime& time) {
    if (mVersion <= 2000) {
        FieldWriteD(time.GetSecondDouble());
        return;
    }
    FieldWriteLL(FileTimeTicks(time.Get()));
}

long long FbxIO::FileTimeTicks(long long ticks) const {
    const bool legacy = mTimeCodeDefinition == kDefaultTimeCodeDefinition && mVersion != 7600;
    return legacy ? FbxTCToLegacy(ticks) : ticks;
}

void FbxIO::FieldWriteTS(const FbxTimeSpan& span) {
    FieldWriteT(span.GetStart());
    FieldWriteT(span.GetStop());
}

void FbxIO::FieldWriteDn(const double* values, int count) {
    if (!values && count > 0) {
        if (Ready()) mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid values");
        return;
    }
    for (int i = 0; i < count; ++i) FieldWriteD(values[i]);
}

void FbxIO::FieldWriteFn(const float* values, int count) {
    if (!values && count > 0) {
        if (Ready()) mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid values");
        return;
    }
    for (int i = 0; i < count; ++i) FieldWriteF(values[i]);
}
