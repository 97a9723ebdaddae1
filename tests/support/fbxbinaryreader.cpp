#include "tests/support/fbxbinaryreader.h"

#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <type_traits>

namespace fbxtest {

namespace {

constexpr char kSignature[] = "Kaydara FBX Binary  ";
constexpr uint8_t kMagic[16] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};
constexpr size_t kHeaderSize = 27;

size_t ElementSize(char type) {
    switch (type) {
        case 'd':
        case 'l':
            return 8;
        case 'f':
        case 'i':
            return 4;
        case 'h':
            return 2;
        case 'b':
        case 'c':
            return 1;
        default:
            return 0;
    }
}

template <typename T>
T Load(const uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

class Parser {
public:
    Parser(const std::vector<uint8_t>& bytes, const ReadOptions& options)
        : mBytes(bytes), mOptions(options) {}

    bool Parse(File& file) {
        if (mBytes.size() < kHeaderSize || std::memcmp(mBytes.data(), kSignature, 20) != 0 ||
            mBytes[20] != 0x00 || mBytes[21] != 0x1A || mBytes[22] != 0x00) {
            return Fail(0, "bad file signature");
        }
        file.version = Load<uint32_t>(&mBytes[23]);
        file.fileSize = mBytes.size();
        mSlot = file.version >= 7500 ? 8 : 4;
        uint64_t pos = kHeaderSize;
        file.root.hasBlock = true;
        return ReadList(pos, mBytes.size(), file.root.children) && ReadFooter(pos, file);
    }

    const std::string& Error() const { return mError; }

private:
    bool Fail(uint64_t at, const std::string& what) {
        if (mError.empty()) mError = what + " (offset " + std::to_string(at) + ")";
        return false;
    }

    bool Need(uint64_t pos, uint64_t size, uint64_t limit, const char* what) {
        if (pos > limit || size > limit - pos) return Fail(pos, std::string("truncated ") + what);
        return true;
    }

    uint64_t Slot(uint64_t pos) const {
        return mSlot == 8 ? Load<uint64_t>(&mBytes[pos]) : Load<uint32_t>(&mBytes[pos]);
    }

    // Records up to and including the null record that ends the list.
    bool ReadList(uint64_t& pos, uint64_t limit, std::vector<Record>& records) {
        while (true) {
            if (!Need(pos, 3 * mSlot + 1, limit, "record header")) return false;
            const uint64_t end = Slot(pos);
            const uint64_t count = Slot(pos + mSlot);
            const uint64_t length = Slot(pos + 2 * mSlot);
            const uint8_t nameLength = mBytes[pos + 3 * mSlot];
            if (end == 0 && count == 0 && length == 0 && nameLength == 0) {
                pos += 3 * mSlot + 1;
                return true;
            }
            Record record;
            if (!ReadRecord(pos, limit, end, count, length, record)) return false;
            records.push_back(std::move(record));
        }
    }

    bool ReadRecord(uint64_t& pos, uint64_t limit, uint64_t end, uint64_t count, uint64_t length,
                    Record& record) {
        record.offset = pos;
        if (end <= pos || end > limit) return Fail(pos, "end offset out of range");
        const uint8_t nameLength = mBytes[pos + 3 * mSlot];
        pos += 3 * mSlot + 1;
        if (!Need(pos, nameLength, end, "record name")) return false;
        record.name.assign(reinterpret_cast<const char*>(&mBytes[pos]), nameLength);
        if (record.name.find('\0') != std::string::npos) return Fail(pos, "NUL in record name");
        pos += nameLength;
        const uint64_t valuesStart = pos;
        for (uint64_t i = 0; i < count; ++i) {
            Value value;
            if (!ReadValue(pos, end, value)) return false;
            record.values.push_back(std::move(value));
        }
        if (pos - valuesStart != length) {
            return Fail(record.offset, "value-list length " + std::to_string(length) +
                                           " but values take " + std::to_string(pos - valuesStart) +
                                           " in " + record.name);
        }
        if (pos < end) {
            record.hasBlock = true;
            if (!ReadList(pos, end, record.children)) return false;
        }
        if (pos != end) return Fail(record.offset, "children do not end at end offset");
        return true;
    }

    bool ReadValue(uint64_t& pos, uint64_t limit, Value& value) {
        if (!Need(pos, 1, limit, "value type")) return false;
        value.type = static_cast<char>(mBytes[pos++]);
        switch (value.type) {
            case 'C':
                return Scalar<uint8_t>(pos, limit, value);
            case 'Y':
                return Scalar<int16_t>(pos, limit, value);
            case 'I':
                return Scalar<int32_t>(pos, limit, value);
            case 'L':
                return Scalar<int64_t>(pos, limit, value);
            case 'F':
                return Scalar<float>(pos, limit, value);
            case 'D':
                return Scalar<double>(pos, limit, value);
            case 'S':
            case 'R':
                return Blob(pos, limit, value);
            default:
                if (ElementSize(value.type) > 0) return Array(pos, limit, value);
                return Fail(pos - 1, std::string("unknown value type '") + value.type + "'");
        }
    }

    template <typename T>
    bool Scalar(uint64_t& pos, uint64_t limit, Value& value) {
        if (!Need(pos, sizeof(T), limit, "value")) return false;
        const T scalar = Load<T>(&mBytes[pos]);
        pos += sizeof(T);
        if constexpr (std::is_floating_point_v<T>) {
            value.data = static_cast<double>(scalar);
        } else {
            value.data = static_cast<int64_t>(scalar);
        }
        return true;
    }

    bool Blob(uint64_t& pos, uint64_t limit, Value& value) {
        if (!Need(pos, 4, limit, "string length")) return false;
        const uint32_t size = Load<uint32_t>(&mBytes[pos]);
        pos += 4;
        if (!Need(pos, size, limit, "string")) return false;
        value.data = std::string(reinterpret_cast<const char*>(&mBytes[pos]), size);
        pos += size;
        return true;
    }

    bool Array(uint64_t& pos, uint64_t limit, Value& value) {
        if (!Need(pos, 12, limit, "array header")) return false;
        const uint64_t at = pos;
        const uint32_t count = Load<uint32_t>(&mBytes[pos]);
        const uint32_t encoding = Load<uint32_t>(&mBytes[pos + 4]);
        const uint32_t stored = Load<uint32_t>(&mBytes[pos + 8]);
        pos += 12;
        if (!Need(pos, stored, limit, "array data")) return false;
        const size_t elementSize = ElementSize(value.type);
        const uint64_t raw = uint64_t{count} * elementSize;
        value.arrayEncoding = encoding;
        if (!CheckCompressionRule(at, raw, encoding)) return false;
        std::vector<uint8_t> data;
        if (encoding == 0) {
            if (stored != raw) return Fail(at, "raw array length does not match its count");
            data.assign(mBytes.begin() + pos, mBytes.begin() + pos + stored);
        } else if (encoding != 1) {
            return Fail(at, "unknown array encoding");
        } else if (!Inflate(&mBytes[pos], stored, raw, data)) {
            return Fail(at, "compressed array does not inflate to its count");
        }
        pos += stored;
        Widen(value, data, count);
        return true;
    }

    bool CheckCompressionRule(uint64_t at, uint64_t raw, uint32_t encoding) {
        if (!mOptions.compressMinimumSize) return true;
        const bool expected =
            mOptions.expectCompression && raw > 1023 && raw >= *mOptions.compressMinimumSize;
        if ((encoding == 1) != expected) {
            return Fail(at, std::string("array of ") + std::to_string(raw) + " bytes " +
                                (expected ? "not compressed" : "compressed"));
        }
        return true;
    }

    static bool Inflate(const uint8_t* in, uint32_t size, uint64_t raw, std::vector<uint8_t>& out) {
        out.resize(raw + 1);
        z_stream z{};
        if (inflateInit(&z) != Z_OK) return false;
        z.next_in = const_cast<Bytef*>(in);
        z.avail_in = size;
        z.next_out = out.data();
        z.avail_out = static_cast<uInt>(out.size());
        const int result = inflate(&z, Z_FINISH);
        const bool complete = result == Z_STREAM_END && z.avail_in == 0 && z.total_out == raw;
        inflateEnd(&z);
        out.resize(raw);
        return complete;
    }

    static void Widen(Value& value, const std::vector<uint8_t>& data, uint32_t count) {
        if (value.type == 'd' || value.type == 'f') {
            std::vector<double> numbers(count);
            for (uint32_t i = 0; i < count; ++i) {
                numbers[i] =
                    value.type == 'd' ? Load<double>(&data[i * 8]) : Load<float>(&data[i * 4]);
            }
            value.data = std::move(numbers);
            return;
        }
        std::vector<int64_t> numbers(count);
        for (uint32_t i = 0; i < count; ++i) {
            switch (value.type) {
                case 'l':
                    numbers[i] = Load<int64_t>(&data[i * 8]);
                    break;
                case 'i':
                    numbers[i] = Load<int32_t>(&data[i * 4]);
                    break;
                case 'h':
                    numbers[i] = Load<int16_t>(&data[i * 2]);
                    break;
                default:
                    numbers[i] = data[i];
            }
        }
        value.data = std::move(numbers);
    }

    // Source-check block, 1 to 16 zero bytes up to a multiple of 16, section length 0, the
    // version, 120 zero bytes and the magic, which ends the file.
    bool ReadFooter(uint64_t pos, File& file) {
        if (!Need(pos, 16, mBytes.size(), "footer check block")) return false;
        std::memcpy(file.footerCheck, &mBytes[pos], 16);
        pos += 16;
        const uint64_t padding = 16 - pos % 16;
        if (!Need(pos, padding + 144, mBytes.size(), "footer")) return false;
        for (uint64_t i = 0; i < padding; ++i) {
            if (mBytes[pos + i] != 0) return Fail(pos + i, "non-zero footer padding");
        }
        pos += padding;
        if (Load<uint32_t>(&mBytes[pos]) != 0) return Fail(pos, "footer section length not 0");
        if (Load<uint32_t>(&mBytes[pos + 4]) != file.version) {
            return Fail(pos + 4, "footer version differs from header");
        }
        for (uint64_t i = 8; i < 128; ++i) {
            if (mBytes[pos + i] != 0) return Fail(pos + i, "non-zero footer block");
        }
        pos += 128;
        if (std::memcmp(&mBytes[pos], kMagic, 16) != 0) return Fail(pos, "bad footer magic");
        if (pos + 16 != mBytes.size()) return Fail(pos + 16, "bytes after the footer magic");
        return true;
    }

    const std::vector<uint8_t>& mBytes;
    ReadOptions mOptions;
    uint64_t mSlot = 8;
    std::string mError;
};

}  // namespace

int64_t Value::Int() const {
    if (const auto* number = std::get_if<int64_t>(&data)) return *number;
    return static_cast<int64_t>(std::get<double>(data));
}

double Value::Double() const {
    if (const auto* number = std::get_if<double>(&data)) return *number;
    return static_cast<double>(std::get<int64_t>(data));
}

const std::string& Value::String() const {
    return std::get<std::string>(data);
}
const std::vector<int64_t>& Value::Ints() const {
    return std::get<std::vector<int64_t>>(data);
}
const std::vector<double>& Value::Doubles() const {
    return std::get<std::vector<double>>(data);
}

size_t Value::ArraySize() const {
    if (const auto* ints = std::get_if<std::vector<int64_t>>(&data)) return ints->size();
    return std::get<std::vector<double>>(data).size();
}

std::string Value::Text() const {
    const auto number = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.9g", value);
        return std::string(text);
    };
    std::string text(1, type);
    if (const auto* integer = std::get_if<int64_t>(&data)) return text + std::to_string(*integer);
    if (const auto* real = std::get_if<double>(&data)) return text + number(*real);
    if (const auto* bytes = std::get_if<std::string>(&data)) return text + *bytes;
    text += '[';
    if (const auto* ints = std::get_if<std::vector<int64_t>>(&data)) {
        for (size_t i = 0; i < ints->size(); ++i)
            text += (i ? "," : "") + std::to_string((*ints)[i]);
    } else {
        const auto& reals = Doubles();
        for (size_t i = 0; i < reals.size(); ++i) text += (i ? "," : "") + number(reals[i]);
    }
    return text + ']';
}

std::vector<std::string> Texts(const std::vector<Value>& values) {
    std::vector<std::string> texts;
    for (const Value& value : values) texts.push_back(value.Text());
    return texts;
}

const Record* Record::Child(const std::string& childName) const {
    for (const Record& child : children) {
        if (child.name == childName) return &child;
    }
    return nullptr;
}

std::vector<const Record*> Record::Children(const std::string& childName) const {
    std::vector<const Record*> found;
    for (const Record& child : children) {
        if (child.name == childName) found.push_back(&child);
    }
    return found;
}

const Record* Record::Find(const std::string& path) const {
    const Record* record = this;
    size_t start = 0;
    while (record && start <= path.size()) {
        const size_t slash = path.find('/', start);
        const std::string part = path.substr(start, slash - start);
        record = record->Child(part);
        if (slash == std::string::npos) break;
        start = slash + 1;
    }
    return record;
}

std::vector<uint8_t> ReadAllBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

bool ReadBinaryBytes(const std::vector<uint8_t>& bytes, File& file, std::string& error,
                     const ReadOptions& options) {
    Parser parser(bytes, options);
    file = File{};
    const bool ok = parser.Parse(file);
    error = parser.Error();
    return ok;
}

bool ReadBinaryFile(const std::string& path, File& file, std::string& error,
                    const ReadOptions& options) {
    return ReadBinaryBytes(ReadAllBytes(path), file, error, options);
}

}  // namespace fbxtest
