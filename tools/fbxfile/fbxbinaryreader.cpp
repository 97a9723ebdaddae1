#include "fbxfile/fbxbinaryreader.h"

#include <zlib.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fbxfile {

namespace {

// With their final NUL: 23 bytes.
constexpr char kSignature[] = "Kaydara FBX Binary  \0\x1a";
constexpr char kMagic[] = "\xf8\x5a\x8c\x6a\xde\xf5\xd9\x7e\xec\xe9\x0c\xe3\x75\x8f\x29\x0b";

// Bytes per element of a scalar or array type letter; 0 for strings and unknown letters.
size_t ElementSize(char type) {
    const size_t at = type ? std::string("CbcYhIiFfLlDd").find(type) : std::string::npos;
    return at == std::string::npos ? 0 : at < 3 ? 1 : at < 5 ? 2 : at < 9 ? 4 : 8;
}

template <typename T>
T Load(const char* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// Appends the little-endian elements of the value's type in `data`, widened.
void Widen(Value& value, std::string_view data, size_t size) {
    const char lower = static_cast<char>(std::tolower(value.type));
    for (const char* at = data.data(); at < data.data() + data.size(); at += size) {
        if (lower == 'f' || lower == 'd') {
            value.reals.push_back(lower == 'f' ? Load<float>(at) : Load<double>(at));
        } else {
            value.ints.push_back(size == 1   ? int64_t{Load<uint8_t>(at)}
                                 : size == 2 ? Load<int16_t>(at)
                                 : size == 4 ? Load<int32_t>(at)
                                             : Load<int64_t>(at));
        }
    }
}

// Walks the file from the header to the magic; the first violation throws its description.
class Parser {
public:
    Parser(std::string_view bytes, const ReadOptions& options) : mBytes(bytes), mOptions(options) {}

    void Parse(File& file) {
        if (Bytes(23, "header") != std::string(kSignature, sizeof kSignature)) {
            Fail(0, "bad file signature");
        }
        file.version = static_cast<uint32_t>(Unsigned(4, mBytes.size(), "header"));
        mSlot = file.version >= 7500 ? 8 : 4;
        file.root.hasBlock = true;
        ReadList(mBytes.size(), file.root.children);
        ReadFooter(file);
    }

private:
    [[noreturn]] static void Fail(uint64_t at, const std::string& what) {
        throw std::runtime_error(what + " (offset " + std::to_string(at) + ")");
    }

    std::string_view Bytes(uint64_t size, const char* what, uint64_t limit = UINT64_MAX) {
        limit = std::min<uint64_t>(limit, mBytes.size());
        if (mPos > limit || size > limit - mPos) Fail(mPos, std::string("truncated ") + what);
        mPos += size;
        return mBytes.substr(mPos - size, size);
    }

    uint64_t Unsigned(size_t size, uint64_t limit, const char* what) {
        uint64_t value = 0;
        std::memcpy(&value, Bytes(size, what, limit).data(), size);
        return value;
    }

    // Records up to and including the null record (all header fields zero) that ends the list.
    void ReadList(uint64_t limit, std::vector<Record>& records) {
        while (true) {
            Record record;
            record.offset = mPos;
            const uint64_t end = Unsigned(mSlot, limit, "record header");
            const uint64_t count = Unsigned(mSlot, limit, "record header");
            const uint64_t length = Unsigned(mSlot, limit, "record header");
            const uint64_t nameLength = Unsigned(1, limit, "record header");
            if (end == 0 && count == 0 && length == 0 && nameLength == 0) return;
            if (end <= record.offset || end > limit) Fail(record.offset, "end offset out of range");
            record.name = std::string(Bytes(nameLength, "record name", end));
            const uint64_t valuesStart = mPos;
            for (uint64_t i = 0; i < count; ++i) record.values.push_back(ReadValue(end));
            if (mPos - valuesStart != length) {
                Fail(record.offset, "value-list length " + std::to_string(length) +
                                        " but values take " + std::to_string(mPos - valuesStart));
            }
            record.hasBlock = mPos < end;
            if (record.hasBlock) ReadList(end, record.children);
            if (mPos != end) Fail(record.offset, "children do not end at end offset");
            records.push_back(std::move(record));
        }
    }

    Value ReadValue(uint64_t limit) {
        Value value;
        value.type = static_cast<char>(Unsigned(1, limit, "value type"));
        const size_t size = ElementSize(value.type);
        if (value.type == 'S' || value.type == 'R') {
            value.bytes = std::string(Bytes(Unsigned(4, limit, "string length"), "string", limit));
        } else if (size == 0) {
            Fail(mPos - 1, std::string("unknown value type '") + value.type + "'");
        } else if (std::isupper(value.type)) {
            Widen(value, Bytes(size, "value", limit), size);
        } else {
            ReadArray(value, size, limit);
        }
        return value;
    }

    // Count, encoding (0 raw, 1 zlib) and stored length, then the elements.
    void ReadArray(Value& value, size_t size, uint64_t limit) {
        const uint64_t at = mPos;
        const uint64_t count = Unsigned(4, limit, "array header");
        const uint64_t encoding = Unsigned(4, limit, "array header");
        const uint64_t stored = Unsigned(4, limit, "array header");
        const std::string_view storedBytes = Bytes(stored, "array data", limit);
        const uint64_t raw = count * size;
        value.count = count;
        const bool compress = raw > 1023 && raw >= mOptions.compressMinimumSize.value_or(0);
        if (mOptions.compressMinimumSize && (encoding == 1) != compress) {
            Fail(at, "array of " + std::to_string(raw) + " bytes " +
                         (compress ? "not compressed" : "compressed"));
        }
        if (encoding > 1) Fail(at, "unknown array encoding");
        if (encoding == 0 && stored != raw) Fail(at, "raw array length does not match its count");
        if (!mOptions.arrayContents) return;
        std::string data(storedBytes);
        if (encoding == 1) {
            std::string inflated(raw, '\0');
            uLongf inflatedSize = static_cast<uLongf>(raw);
            uLong consumed = static_cast<uLong>(stored);
            if (uncompress2(reinterpret_cast<Bytef*>(inflated.data()), &inflatedSize,
                            reinterpret_cast<const Bytef*>(data.data()), &consumed) != Z_OK ||
                inflatedSize != raw || consumed != stored) {
                Fail(at, "compressed array does not inflate to its count");
            }
            data = std::move(inflated);
        }
        Widen(value, data, size);
    }

    // Source-check block, 1 to 16 zero bytes up to a multiple of 16, a zero word, the
    // version, 120 zero bytes and the magic, which ends the file.
    void ReadFooter(File& file) {
        file.footerCheck = std::string(Bytes(16, "footer check block"));
        std::string expected(16 - mPos % 16 + 144, '\0');
        std::memcpy(&expected[expected.size() - 140], &file.version, 4);
        std::memcpy(&expected[expected.size() - 16], kMagic, 16);
        const uint64_t start = mPos;
        const std::string_view footer = Bytes(expected.size(), "footer");
        const auto differs = std::mismatch(expected.begin(), expected.end(), footer.begin());
        if (differs.first != expected.end()) {
            Fail(start + static_cast<uint64_t>(differs.first - expected.begin()),
                 "bad footer byte (padding, version, zero block or magic)");
        }
        if (mPos != mBytes.size()) Fail(mPos, "bytes after the footer magic");
    }

    const std::string_view mBytes;
    ReadOptions mOptions;
    uint64_t mSlot = 8;
    uint64_t mPos = 0;
};

}  // namespace

std::string Value::Text() const {
    std::string text(1, type);
    if (type == 'S' || type == 'R') return text + bytes;
    if (std::islower(type)) text += '[';
    for (int64_t number : ints) text.append(std::to_string(number)).append(",");
    for (double number : reals) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.9g,", number);
        text += digits;
    }
    if (text.back() == ',') text.pop_back();
    return std::islower(type) ? text + ']' : text;
}

std::string Texts(const std::vector<Value>& values) {
    std::string text;
    for (const Value& value : values) text.append(text.empty() ? "" : " ").append(value.Text());
    return text;
}

std::vector<const Record*> Record::Children(const std::string& childName) const {
    std::vector<const Record*> found;
    for (const Record& child : children) {
        if (child.name == childName) found.push_back(&child);
    }
    return found;
}

const Record* Record::Child(const std::string& childName) const {
    const std::vector<const Record*> found = Children(childName);
    return found.empty() ? nullptr : found[0];
}

const Record* Record::Find(const std::string& path) const {
    const size_t slash = path.find('/');
    const Record* child = Child(path.substr(0, slash));
    return child && slash != std::string::npos ? child->Find(path.substr(slash + 1)) : child;
}

std::vector<uint8_t> ReadAllBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

bool ReadBinaryBytes(std::string_view bytes, File& file, std::string& error,
                     const ReadOptions& options) {
    file = File{};
    error.clear();
    try {
        Parser(bytes, options).Parse(file);
        return true;
    } catch (const std::runtime_error& violation) {
        error = violation.what();
        return false;
    }
}

bool ReadBinaryBytes(const std::vector<uint8_t>& bytes, File& file, std::string& error,
                     const ReadOptions& options) {
    return ReadBinaryBytes(
        std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), file, error,
        options);
}

bool ReadBinaryFile(const std::string& path, File& file, std::string& error,
                    const ReadOptions& options) {
    return ReadBinaryBytes(ReadAllBytes(path), file, error, options);
}

}  // namespace fbxfile
