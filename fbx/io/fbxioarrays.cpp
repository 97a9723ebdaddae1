// Array values of FbxIO: binary (raw or zlib-compressed) and ASCII.
#include <cstring>
#include <limits>
#include <vector>

#include "fbx/io/fbxio.h"
#include "fbx/io/fbxnumbertext.h"

// The letter and element size of one array type, and its ASCII element form.
struct FbxIOArrayType {
    char code;
    size_t size;
    void (*append)(const uint8_t* element, std::string& out);
};

namespace {

constexpr size_t kChunkElements = 4096;
constexpr size_t kAsciiArrayLine = 2048;
constexpr uint32_t kMaxArrayBytes = std::numeric_limits<uint32_t>::max();

template <typename T>
void AppendElement(const uint8_t* element, std::string& out) {
    T value;
    std::memcpy(&value, element, sizeof value);
    if constexpr (sizeof(T) == 1) {
        out += FbxNumberText(int{value}).View();
    } else {
        out += FbxNumberText(value).View();
    }
}

template <typename T, char Code>
constexpr FbxIOArrayType kArray{Code, sizeof(T), &AppendElement<T>};

// The element source as raw bytes; an empty source stays empty, so it is reported, not called.
template <typename T>
std::function<void(void*, size_t, size_t)> Untyped(const FbxIO::ArraySource<T>& source) {
    if (!source) return {};
    return [&source](void* out, size_t first, size_t n) { source(static_cast<T*>(out), first, n); };
}

}  // namespace

void FbxIO::FieldWriteArray(const FbxIOArrayType& type, size_t count, const RawSource& source,
                            const ArrayOrigin& origin) {
    if (!BeginValue()) return;
    if (count > 0 && !source) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid array");
        return;
    }
    if (count > kMaxArrayBytes / type.size) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Array too large");
        return;
    }
    mArrayChunk.resize(kChunkElements * type.size);
    if (mBinary) {
        BinaryArray(type, count, source, origin);
    } else {
        AsciiArray(type, count, source);
    }
    CheckStream();
}

bool FbxIO::Compresses(uint64_t rawBytes) const {
    const uint64_t minimum =
        static_cast<uint64_t>(mCompressMinimumSize > 0 ? mCompressMinimumSize : 0);
    return mCompressArrays && rawBytes > 1023 && rawBytes >= minimum;
}

uint64_t FbxIO::PrepareArrayF(size_t count, const ArraySource<float>& source) {
    const uint64_t bytes = uint64_t{count} * sizeof(float);
    if (!mBinary || !source || bytes > kMaxArrayBytes || !Compresses(bytes)) return 0;
    std::vector<uint8_t> raw = mArrayPacker.Buffer();
    raw.resize(count * sizeof(float));
    for (size_t first = 0; first < count; first += kChunkElements) {
        source(reinterpret_cast<float*>(raw.data()) + first, first,
               std::min(kChunkElements, count - first));
    }
    return mArrayPacker.Prepare(std::move(raw), mCompressLevel);
}

// Type letter, then count, encoding and stored length, then the data. The stored length is
// known only after compressing, so the header is patched then.
void FbxIO::BinaryArray(const FbxIOArrayType& type, size_t count, const RawSource& source,
                        const ArrayOrigin& origin) {
    const uint64_t raw = count * type.size;
    mStream.WriteByte(static_cast<uint8_t>(type.code));
    const uint64_t headerAt = mStream.Tell();
    uint32_t header[3] = {static_cast<uint32_t>(count), Compresses(raw) ? 1u : 0u,
                          static_cast<uint32_t>(raw)};
    mStream.Write(header, sizeof header);
    const uint64_t stored = BinaryArrayData(type, count, source, origin);
    if (mStatus.Error()) return;
    if (stored > kMaxArrayBytes) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Array too large");
        return;
    }
    if (stored != raw) {
        header[2] = static_cast<uint32_t>(stored);
        mStream.Patch(headerAt, header, sizeof header);
    }
    if (!mImpl->AddValue(1 + sizeof header + stored)) {
        mStatus.SetCode(FbxStatus::eFailure, "File too large for its record headers");
    }
}

uint64_t FbxIO::BinaryArrayData(const FbxIOArrayType& type, size_t count, const RawSource& source,
                                const ArrayOrigin& origin) {
    const uint64_t raw = count * type.size;
    if (!Compresses(raw) && origin.whole) {
        mStream.Write(origin.whole, raw);
        return raw;
    }
    if (!Compresses(raw)) {
        for (size_t first = 0; first < count; first += kChunkElements) {
            const size_t n = std::min(kChunkElements, count - first);
            source(mArrayChunk.data(), first, n);
            mStream.Write(mArrayChunk.data(), n * type.size);
        }
        return raw;
    }
    const std::vector<uint8_t>* packed = PackArray(type, count, source, origin);
    if (!packed || packed->empty()) {
        CheckStream();  // a write that failed before the compressor is the first error
        mStatus.SetCode(FbxStatus::eFailure, "Error writing compressed array data");
        return 0;
    }
    mStream.Write(packed->data(), packed->size());
    return packed->size();
}

// Compressed arrays are deflated whole in one call, which is faster than streaming and lets
// the packer reuse the bytes of an array it has seen. The bytes come, cheapest first, from the
// last tagged array, from a prepared copy, or from the elements gathered now.
const std::vector<uint8_t>* FbxIO::PackArray(const FbxIOArrayType& type, size_t count,
                                             const RawSource& source, const ArrayOrigin& origin) {
    const bool tagged = origin.contentTag != 0;
    if (tagged && mTagged.tag == origin.contentTag && mTagged.code == type.code &&
        mTagged.count == count && mTagged.level == mCompressLevel) {
        return &mTagged.packed;
    }
    const std::vector<uint8_t>* packed = mArrayPacker.PackPrepared(origin.prepared);
    if (!packed) {
        const auto* raw = static_cast<const uint8_t*>(origin.whole);
        if (!raw) {
            mArrayRaw.resize(count * type.size);
            for (size_t first = 0; first < count; first += kChunkElements) {
                source(mArrayRaw.data() + first * type.size, first,
                       std::min(kChunkElements, count - first));
            }
            raw = mArrayRaw.data();
        }
        packed = mArrayPacker.Pack(raw, count * type.size, mCompressLevel);
    }
    if (tagged && packed && !packed->empty()) {
        mTagged = {origin.contentTag, type.code, count, mCompressLevel, *packed};
    }
    return packed;
}

// "*<count> {", the elements on an "a: " line one tab deeper, then "}". Long element lists
// continue on lines that start in column 0, the form every ASCII reader accepts.
void FbxIO::AsciiArray(const FbxIOArrayType& type, size_t count, const RawSource& source) {
    Level& level = mLevels.back();
    if (level.values > 0) mStream.WriteByte(',');
    std::string head = "*";
    head.append(std::to_string(count)).append(" {\n").append(AsciiIndent()).append("\ta: ");
    mStream.Write(head);
    std::string text;
    size_t lineLength = 0;
    for (size_t first = 0; first < count; first += kChunkElements) {
        const size_t n = std::min(kChunkElements, count - first);
        source(mArrayChunk.data(), first, n);
        for (size_t i = 0; i < n; ++i) {
            if (first + i > 0) {
                text += ',';
                ++lineLength;
            }
            if (lineLength > kAsciiArrayLine) {
                text += '\n';
                lineLength = 0;
            }
            const size_t before = text.size();
            type.append(mArrayChunk.data() + i * type.size, text);
            lineLength += text.size() - before;
        }
        mStream.Write(text);
        text.clear();
    }
    mStream.WriteByte('\n');
    mStream.Write(AsciiIndent() + "}");
    ++level.values;
}

template <typename T>
void FbxIO::FieldWritePacked(const FbxIOArrayType& type, int count, const T* values,
                             int valuesPerElement, int stride) {
    if (count < 0 || valuesPerElement < 1 || stride < 0 || (count > 0 && !values)) {
        if (Ready()) mStatus.SetCode(FbxStatus::eInvalidParameter, "Invalid array");
        return;
    }
    const size_t per = static_cast<size_t>(valuesPerElement);
    const size_t elementBytes = stride > 0 ? static_cast<size_t>(stride) : per * sizeof(T);
    const auto* base = reinterpret_cast<const uint8_t*>(values);
    ArrayOrigin origin;
    if (stride == 0) origin.whole = values;
    const auto source = [&](void* out, size_t first, size_t n) {
        auto* target = static_cast<uint8_t*>(out);
        if (stride == 0) {
            std::memcpy(target, base + first * sizeof(T), n * sizeof(T));
            return;
        }
        for (size_t i = 0; i < n; ++i) {
            const size_t index = first + i;
            const uint8_t* from = base + index / per * elementBytes + index % per * sizeof(T);
            std::memcpy(target + i * sizeof(T), from, sizeof(T));
        }
    };
    FieldWriteArray(type, static_cast<size_t>(count) * per, source, origin);
}

void FbxIO::FieldWriteArrayD(int count, const double* values, int perElement, int stride) {
    FieldWritePacked(kArray<double, 'd'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayF(int count, const float* values, int perElement, int stride) {
    FieldWritePacked(kArray<float, 'f'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayI(int count, const int* values, int perElement, int stride) {
    FieldWritePacked(kArray<int32_t, 'i'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayUI(int count, const unsigned int* values, int perElement, int stride) {
    FieldWritePacked(kArray<uint32_t, 'i'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayLL(int count, const long long* values, int perElement, int stride) {
    FieldWritePacked(kArray<int64_t, 'l'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayULL(int count, const unsigned long long* values, int perElement,
                               int stride) {
    FieldWritePacked(kArray<uint64_t, 'l'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayB(int count, const bool* values, int perElement, int stride) {
    FieldWritePacked(kArray<uint8_t, 'b'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayBytes(int count, const unsigned char* values, int perElement,
                                 int stride) {
    FieldWritePacked(kArray<uint8_t, 'c'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArraySBytes(int count, const signed char* values, int perElement,
                                  int stride) {
    FieldWritePacked(kArray<int8_t, 'c'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayShort(int count, const short* values, int perElement, int stride) {
    FieldWritePacked(kArray<int16_t, 'h'>, count, values, perElement, stride);
}
void FbxIO::FieldWriteArrayUShort(int count, const unsigned short* values, int perElement,
                                  int stride) {
    FieldWritePacked(kArray<uint16_t, 'h'>, count, values, perElement, stride);
}

void FbxIO::FieldWriteArrayD(size_t count, const ArraySource<double>& source) {
    FieldWriteArray(kArray<double, 'd'>, count, Untyped(source), {});
}
void FbxIO::FieldWriteArrayF(size_t count, const ArraySource<float>& source, uint64_t prepared) {
    FieldWriteArray(kArray<float, 'f'>, count, Untyped(source), {.prepared = prepared});
}
void FbxIO::FieldWriteArrayI(size_t count, const ArraySource<int32_t>& source) {
    FieldWriteArray(kArray<int32_t, 'i'>, count, Untyped(source), {});
}
void FbxIO::FieldWriteArrayLL(size_t count, const ArraySource<int64_t>& source) {
    FieldWriteArray(kArray<int64_t, 'l'>, count, Untyped(source), {});
}
void FbxIO::FieldWriteArrayLL(std::span<const int64_t> values, uint64_t contentTag) {
    const auto source = [values](void* out, size_t first, size_t n) {
        std::memcpy(out, values.data() + first, n * sizeof(int64_t));
    };
    FieldWriteArray(kArray<int64_t, 'l'>, values.size(), source,
                    {.whole = values.data(), .contentTag = contentTag});
}
