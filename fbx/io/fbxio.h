#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fbx/io/fbxarraypacker.h"
#include "fbx/io/fbxcreationtime.h"
#include "fbx/io/fbxfilestream.h"
#include "fbx/io/fbxiointernalimpl.h"
#include "fbx/scene/fbxstatus.h"
#include "fbx/scene/fbxtime.h"

// Field-level writer of FBX 7 files: turns a stream of nested fields (a name, typed values and
// an optional block of child fields) into the binary or the ASCII encoding of one file.
//
// Calling order for one field: FieldWriteBegin, any number of value writes, optionally
// FieldWriteBlockBegin ... child fields ... FieldWriteBlockEnd, then FieldWriteEnd.
//
// Errors are kept in GetStatus(); the first one sticks and every later write returns at
// once, so a caller may run a whole section and check the status once. The file appears
// under its name only when ProjectClose() succeeds (see FbxFileStream).
struct FbxIOArrayType;

class FbxIO {
public:
    using InternalImpl32 = FbxIOInternalImpl32;
    using InternalImpl64 = FbxIOInternalImpl64;
    enum EImplementation { eImpl32, eImpl64 };

    // Elements [first, first + count) of a streamed array, written into `out`.
    template <typename T>
    using ArraySource = std::function<void(T* out, size_t first, size_t count)>;

    // The record-header width is fixed here; time values are converted to the legacy unit
    // when `timeCodeDefinition` is the default one (127).
    explicit FbxIO(EImplementation implementation = eImpl64,
                   int timeCodeDefinition = FbxTCGetDefinition());
    ~FbxIO();
    FbxIO(const FbxIO&) = delete;
    FbxIO& operator=(const FbxIO&) = delete;

    // Record headers of 4 bytes up to version 7400, 8 bytes from 7500 on.
    static EImplementation ImplementationForVersion(int version);

    // Opens the output (beside the target, see FbxFileStream) and writes the file header.
    // The creation time is taken now; SetCreationTime replaces it (deterministic files).
    bool ProjectCreateEmpty(const char* fileName, int version, bool binary);
    // Ends the top-level list, writes the binary footer and moves the file into place.
    // False when any error occurred: the unfinished file is removed.
    bool ProjectClose();
    // Removes the unfinished file, keeping whatever was under the target name.
    void ProjectCancel();
    bool IsOpen() const { return mStream.IsOpen(); }

    void SetCreationTime(const FbxCreationTime& time) { mCreationTime = time; }
    const FbxCreationTime& GetCreationTime() const { return mCreationTime; }
    int GetFileVersion() const { return mVersion; }
    bool IsBinary() const { return mBinary; }
    FbxStatus& GetStatus() { return mStatus; }
    // Ticks as this file stores times: in the legacy unit when the time-code definition is
    // the default one and the version is not 7600, unchanged otherwise.
    long long FileTimeTicks(long long ticks) const;

    void FieldWriteBegin(const char* name);
    void FieldWriteEnd();
    void FieldWriteBlockBegin();
    void FieldWriteBlockEnd();
    // ASCII comment line (";text"); nothing in binary. Line breaks and other control
    // characters in the text (names of the user's objects) are escaped, so a comment is
    // always exactly one line.
    void WriteComments(std::string_view text);

    void FieldWriteI(int value);
    void FieldWriteUI(unsigned int value);
    void FieldWriteB(bool value);
    void FieldWriteLL(long long value);
    void FieldWriteULL(unsigned long long value);
    void FieldWriteD(double value);
    void FieldWriteF(float value);
    void FieldWriteShort(short value);
    void FieldWriteUShort(unsigned short value);
    void FieldWriteByte(signed char value);
    void FieldWriteUByte(unsigned char value);
    void FieldWriteCH(char value);
    void FieldWriteS(const char* value);
    void FieldWriteC(const char* value);
    void FieldWriteR(const void* data, size_t size);
    void FieldWriteT(const FbxTime& time);
    void FieldWriteTS(const FbxTimeSpan& span);
    void FieldWrite3D(const double* values) { FieldWriteDn(values, 3); }
    void FieldWrite4D(const double* values) { FieldWriteDn(values, 4); }
    void FieldWrite3F(const float* values) { FieldWriteFn(values, 3); }
    void FieldWrite4F(const float* values) { FieldWriteFn(values, 4); }
    void FieldWriteDn(const double* values, int count);
    void FieldWriteFn(const float* values, int count);

    // One-value fields: open the field, write the value, close it.
    void FieldWriteI(const char* name, int value);
    void FieldWriteUI(const char* name, unsigned int value);
    void FieldWriteB(const char* name, bool value);
    void FieldWriteLL(const char* name, long long value);
    void FieldWriteULL(const char* name, unsigned long long value);
    void FieldWriteD(const char* name, double value);
    void FieldWriteF(const char* name, float value);
    void FieldWriteShort(const char* name, short value);
    void FieldWriteUShort(const char* name, unsigned short value);
    void FieldWriteByte(const char* name, signed char value);
    void FieldWriteUByte(const char* name, unsigned char value);
    void FieldWriteCH(const char* name, char value);
    void FieldWriteS(const char* name, const char* value);
    void FieldWriteC(const char* name, const char* value);
    void FieldWriteR(const char* name, const void* data, size_t size);
    void FieldWriteT(const char* name, const FbxTime& time);
    void FieldWriteTS(const char* name, const FbxTimeSpan& span);
    void FieldWrite3D(const char* name, const double* values);
    void FieldWrite4D(const char* name, const double* values);
    void FieldWrite3F(const char* name, const float* values);
    void FieldWrite4F(const char* name, const float* values);

    // Arrays of `count` elements of `valuesPerElement` values each; `stride` is the distance
    // in bytes between elements (0: tightly packed). One array is one value of the field.
    void FieldWriteArrayD(int count, const double* values, int valuesPerElement = 1,
                          int stride = 0);
    void FieldWriteArrayF(int count, const float* values, int valuesPerElement = 1, int stride = 0);
    void FieldWriteArrayI(int count, const int* values, int valuesPerElement = 1, int stride = 0);
    void FieldWriteArrayUI(int count, const unsigned int* values, int valuesPerElement = 1,
                           int stride = 0);
    void FieldWriteArrayLL(int count, const long long* values, int valuesPerElement = 1,
                           int stride = 0);
    void FieldWriteArrayULL(int count, const unsigned long long* values, int valuesPerElement = 1,
                            int stride = 0);
    void FieldWriteArrayB(int count, const bool* values, int valuesPerElement = 1, int stride = 0);
    void FieldWriteArrayBytes(int count, const unsigned char* values, int valuesPerElement = 1,
                              int stride = 0);
    void FieldWriteArraySBytes(int count, const signed char* values, int valuesPerElement = 1,
                               int stride = 0);
    void FieldWriteArrayShort(int count, const short* values, int valuesPerElement = 1,
                              int stride = 0);
    void FieldWriteArrayUShort(int count, const unsigned short* values, int valuesPerElement = 1,
                               int stride = 0);

    // Streamed arrays: the elements are produced in pieces, so large arrays (key times of a
    // long take) are written without a full copy in memory.
    void FieldWriteArrayD(size_t count, const ArraySource<double>& source);
    void FieldWriteArrayI(size_t count, const ArraySource<int32_t>& source);
    void FieldWriteArrayLL(size_t count, const ArraySource<int64_t>& source);
    // `prepared`: the ticket PrepareArrayF gave for these elements; its compressed bytes are
    // taken without reading the source again (0: none).
    void FieldWriteArrayF(size_t count, const ArraySource<float>& source, uint64_t prepared = 0);
    // Announces the float array a later FieldWriteArrayF writes, so that compressing it can
    // start ahead on a worker thread. Returns the ticket for that write; 0 for an array that
    // is not compressed or was not taken on.
    uint64_t PrepareArrayF(size_t count, const ArraySource<float>& source);
    // An array whose elements lie in memory. A `contentTag` other than 0 vouches for the
    // content: an array written with the tag of the last tagged array holds the same elements,
    // so its compressed bytes are reused without reading or comparing them.
    void FieldWriteArrayLL(std::span<const int64_t> values, uint64_t contentTag = 0);

    // Array compression: zlib streams for arrays of at least the minimum size (and at least
    // 1024 bytes), at the given zlib level.
    void CompressArrays(bool enable) { mCompressArrays = enable; }
    void CompressMinimumSize(int bytes) { mCompressMinimumSize = bytes; }
    void CompressLevel(int level) { mCompressLevel = level; }
    // Size of the output buffer in megabytes; 0 writes through at once. Takes effect when
    // the project is created.
    void CacheSize(int megabytes);

private:
    static constexpr const char* kFieldNotOpened = "Write field error : Field not opened";

    struct Level {
        bool fieldOpen = false;
        int values = 0;  // values written into the open field
    };

    void ResetRecords();
    bool Ready();
    bool BeginValue();
    void CheckStream();
    void FailWrite();

    void WriteFileHeader();
    void BinaryFieldBegin(const std::string& name);
    void BinaryCompleteRecord();
    void BinaryEndList();
    void BinaryValue(char type, const void* payload, size_t size);
    void BinaryBlob(char type, const void* data, size_t size);
    void WriteFooter();

    void AsciiValue(std::string_view text, std::string_view separator = ",",
                    bool countSeparator = false);
    void AsciiString(std::string_view text);
    void AsciiRaw(const void* data, size_t size);
    void AsciiNewLine();
    std::string AsciiIndent() const { return std::string(mLevels.size() - 1, '\t'); }
    int AsciiDepth() const { return static_cast<int>(mLevels.size()) - 1; }

    void WriteString(const char* value);
    template <typename Write>
    void WriteNamed(const char* name, const Write& write);
    using RawSource = std::function<void(void* out, size_t first, size_t count)>;
    // What is known of an array beyond its element source.
    struct ArrayOrigin {
        const void* whole = nullptr;  // every element, when they lie in memory at once
        uint64_t prepared = 0;        // the packer's ticket of a prepared copy
        uint64_t contentTag = 0;      // see FieldWriteArrayLL
    };
    // The compressed bytes of the last tagged array.
    struct TaggedArray {
        uint64_t tag = 0;
        char code = 0;
        size_t count = 0;
        int level = 0;
        std::vector<uint8_t> packed;
    };
    void FieldWriteArray(const FbxIOArrayType& type, size_t count, const RawSource& source,
                         const ArrayOrigin& origin);
    bool Compresses(uint64_t rawBytes) const;
    void BinaryArray(const FbxIOArrayType& type, size_t count, const RawSource& source,
                     const ArrayOrigin& origin);
    uint64_t BinaryArrayData(const FbxIOArrayType& type, size_t count, const RawSource& source,
                             const ArrayOrigin& origin);
    const std::vector<uint8_t>* PackArray(const FbxIOArrayType& type, size_t count,
                                          const RawSource& source, const ArrayOrigin& origin);
    void AsciiArray(const FbxIOArrayType& type, size_t count, const RawSource& source);
    template <typename T>
    void FieldWritePacked(const FbxIOArrayType& type, int count, const T* values,
                          int valuesPerElement, int stride);

    EImplementation mImplementation;
    FbxStatus mStatus;
    FbxFileStream mStream;
    std::unique_ptr<FbxIOInternalImpl> mImpl;
    std::vector<Level> mLevels;
    FbxCreationTime mCreationTime;
    int mTimeCodeDefinition;
    int mVersion = 0;
    bool mBinary = true;
    int mColumn = 0;
    bool mCompressArrays = true;
    int mCompressMinimumSize = 1024;
    int mCompressLevel = 1;
    size_t mCacheBytes = 8 * 1024 * 1024;
    std::vector<uint8_t> mArrayChunk;
    std::vector<uint8_t> mArrayRaw;  // a compressed array, gathered whole
    TaggedArray mTagged;
    FbxArrayPacker mArrayPacker;
};
