#include "fbx/io/fbxio.h"

#include <algorithm>
#include <cstring>

#include "fbx/io/fbxsourcecheck.h"

namespace {

// File signature and footer constants that readers of binary files look for.
constexpr char kBinarySignature[] = "Kaydara FBX Binary  ";
constexpr uint8_t kSignatureTail[] = {0x00, 0x1A, 0x00};
constexpr uint8_t kFooterMagic[] = {0xf8, 0x5a, 0x8c, 0x6a, 0xde, 0xf5, 0xd9, 0x7e,
                                    0xec, 0xe9, 0x0c, 0xe3, 0x75, 0x8f, 0x29, 0x0b};

// Field names are one length byte and the bytes; a quoted name loses its quotes.
std::string StripQuotes(const char* name) {
    std::string text = name ? name : "";
    if (!text.empty() && text.front() == '"') {
        text = text.size() >= 2 ? text.substr(1, text.size() - 2) : std::string();
    }
    return text;
}

// ASCII field names end at ':' and values follow blanks, so neither may appear in a name.
std::string AsciiFieldName(const char* name) {
    std::string text = StripQuotes(name);
    for (char& c : text) {
        if (std::strchr(" \t\r\n:,;{}\"", c)) c = '_';
    }
    return text;
}

// A comment runs to the end of its line, and readers also end lines at NUL and form feeds:
// those characters are written as entities, the line breaks in the form strings use.
std::string CommentText(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            escaped += "&lf;";
        } else if (c == '\r') {
            escaped += "&cr;";
        } else if ((byte < 0x20 && c != '\t') || byte == 0x7f) {
            escaped += "&#" + std::to_string(byte) + ";";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace

FbxIO::FbxIO(EImplementation implementation, int timeCodeDefinition)
    : mImplementation(implementation), mLevels(1), mTimeCodeDefinition(timeCodeDefinition) {
    ResetRecords();
}

void FbxIO::ResetRecords() {
    mLevels.assign(1, Level{});
    if (mImplementation == eImpl32) {
        mImpl = std::make_unique<InternalImpl32>();
    } else {
        mImpl = std::make_unique<InternalImpl64>();
    }
}

FbxIO::~FbxIO() = default;

FbxIO::EImplementation FbxIO::ImplementationForVersion(int version) {
    return version >= 7500 ? eImpl64 : eImpl32;
}

// The buffer is allocated in one piece when the file opens; a larger cache gains nothing, and
// an absurd setting must not make that allocation fail.
void FbxIO::CacheSize(int megabytes) {
    constexpr int kMaxCacheMegabytes = 256;
    mCacheBytes = static_cast<size_t>(std::clamp(megabytes, 0, kMaxCacheMegabytes)) * 1024 * 1024;
}

bool FbxIO::ProjectCreateEmpty(const char* fileName, int version, bool binary) {
    ProjectCancel();
    mStatus.Clear();
    ResetRecords();
    mVersion = version;
    mBinary = binary;
    mTagged = {};
    mCreationTime = FbxCreationTime::Now();
    mStream.SetBufferSize(mCacheBytes);
    if (!mStream.Open(fileName ? fileName : "")) {
        FailWrite();
        return false;
    }
    WriteFileHeader();
    CheckStream();
    if (mStatus.Error()) ProjectCancel();
    return !mStatus.Error();
}

void FbxIO::WriteFileHeader() {
    if (mBinary) {
        mStream.Write(kBinarySignature, 20);
        mStream.Write(kSignatureTail, sizeof kSignatureTail);
        const uint32_t version = mVersion < 6000 ? 3000 : static_cast<uint32_t>(mVersion);
        mStream.Write(&version, sizeof version);
        return;
    }
    const std::string title = " FBX " + std::to_string(mVersion / 1000) + "." +
                              std::to_string(mVersion % 1000 / 100) + "." +
                              std::to_string(mVersion % 100) + " project file";
    WriteComments(title.c_str());
    WriteComments(" ----------------------------------------------------");
    WriteComments("");
}

bool FbxIO::ProjectClose() {
    if (!mStream.IsOpen()) {
        mStatus.SetCode(FbxStatus::eFailure, "File not opened");
        return false;
    }
    while (!mStatus.Error() && mLevels.size() > 1) FieldWriteBlockEnd();
    if (!mStatus.Error() && mLevels.back().fieldOpen) FieldWriteEnd();
    if (mBinary && !mStatus.Error()) {
        BinaryEndList();
        WriteFooter();
        CheckStream();
    }
    if (mStatus.Error()) {
        mStream.Abort();
        return false;
    }
    if (!mStream.Commit()) {
        FailWrite();
        return false;
    }
    return true;
}

void FbxIO::ProjectCancel() {
    mStream.Abort();
}

void FbxIO::WriteFooter() {
    const FbxSourceCheckBlock check = FbxFooterSourceCheckBlock(mCreationTime);
    mStream.Write(check.data(), check.size());
    const uint8_t zeros[128] = {};
    mStream.Write(zeros, 16 - mStream.Tell() % 16);
    const uint32_t sectionLength = 0;
    const uint32_t version = static_cast<uint32_t>(mVersion);
    mStream.Write(&sectionLength, sizeof sectionLength);
    mStream.Write(&version, sizeof version);
    mStream.Write(zeros, 120);
    mStream.Write(kFooterMagic, sizeof kFooterMagic);
}

bool FbxIO::Ready() {
    if (mStatus.Error()) return false;
    if (!mStream.IsOpen()) {
        mStatus.SetCode(FbxStatus::eFailure, "File not opened");
        return false;
    }
    return true;
}

void FbxIO::CheckStream() {
    if (mStream.Failed()) FailWrite();
}

// The stream's sentence carries the output's name and the system's reason, which is what a
// user needs to act (free space, fix permissions); it is passed on unchanged.
void FbxIO::FailWrite() {
    mStatus.SetCode(FbxStatus::eFailure, mStream.ErrorText().c_str());
}

void FbxIO::FieldWriteBegin(const char* name) {
    if (!Ready()) return;
    Level& level = mLevels.back();
    if (level.fieldOpen) {
        mStatus.SetCode(FbxStatus::eFailure, "Begin Field error: last field not closed");
    }
    level.fieldOpen = true;
    level.values = 0;
    if (mBinary) {
        BinaryFieldBegin(StripQuotes(name));
    } else {
        const int depth = AsciiDepth();
        mStream.Write(AsciiIndent() + AsciiFieldName(name) + ": ");
        mColumn = depth * depth + 4;
    }
    CheckStream();
}

void FbxIO::FieldWriteEnd() {
    if (!Ready()) return;
    Level& level = mLevels.back();
    if (!level.fieldOpen) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, kFieldNotOpened);
        return;
    }
    level.fieldOpen = false;
    if (!mBinary) AsciiNewLine();
    CheckStream();
}

void FbxIO::FieldWriteBlockBegin() {
    if (!Ready()) return;
    if (!mLevels.back().fieldOpen) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, kFieldNotOpened);
        return;
    }
    if (mBinary) {
        mImpl->PushLevel();
    } else {
        mStream.Write(" {");
        AsciiNewLine();
    }
    mLevels.emplace_back();
    CheckStream();
}

void FbxIO::FieldWriteBlockEnd() {
    if (!Ready()) return;
    if (mLevels.size() < 2) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Write field error : Block not opened");
        return;
    }
    if (mLevels.back().fieldOpen) FieldWriteEnd();
    mLevels.pop_back();
    if (mBinary) {
        BinaryEndList();
    } else {
        mStream.Write(AsciiIndent() + "}");
    }
    CheckStream();
}

void FbxIO::WriteComments(std::string_view text) {
    if (!mStream.IsOpen()) {
        mStatus.SetCode(FbxStatus::eFailure, "File not opened");
        return;
    }
    if (mStatus.Error() || mBinary) return;
    std::string line = AsciiIndent();
    if (!text.empty()) line.append(";").append(CommentText(text));
    mStream.Write(line);
    AsciiNewLine();
    CheckStream();
}

void FbxIO::AsciiNewLine() {
    mStream.WriteByte('\n');
}

void FbxIO::BinaryFieldBegin(const std::string& name) {
    if (name.size() > 255) {
        mStatus.SetCode(FbxStatus::eInvalidParameter, "Field name too long");
        return;
    }
    BinaryCompleteRecord();
    if (!mImpl->SetRecordStart(mStream.Tell())) {
        mStatus.SetCode(FbxStatus::eFailure, "File too large for its record headers");
        return;
    }
    const uint8_t zeros[24] = {};
    mStream.Write(zeros, mImpl->HeaderSize());
    mStream.WriteByte(static_cast<uint8_t>(name.size()));
    mStream.Write(name);
}

// The end offset, value count and value-list length are known only now: write them into the
// header left blank at the record's start.
void FbxIO::BinaryCompleteRecord() {
    if (!mImpl->HasRecord()) return;
    if (!mImpl->SetEndOffset(mStream.Tell())) {
        mStatus.SetCode(FbxStatus::eFailure, "File too large for its record headers");
        return;
    }
    uint8_t header[24];
    mImpl->EncodeHeader(header);
    mStream.Patch(mImpl->GetRecordStart(), header, mImpl->HeaderSize());
    mImpl->ClearRecord();
}

void FbxIO::BinaryEndList() {
    BinaryCompleteRecord();
    const uint8_t zeros[25] = {};
    mStream.Write(zeros, mImpl->NullRecordSize());
    mImpl->PopLevel();
}
