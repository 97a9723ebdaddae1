#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fbx/io/fbxwritebehind.h"

struct FbxOutputPlace;

// Buffered output file for the FBX writers.
//
// A regular file (or a name that does not exist yet) is written into an unnamed file in its
// folder and put in place by Commit() in one step (see FbxOutputPlace), so a failed or
// stopped write never leaves a partial file under the name, nor anything beside it, and the
// file that was there survives. Pipes, devices and standard output ("-") cannot be replaced:
// their bytes are kept in memory and written in order by Commit(), so the headers patched
// late still reach a reader that cannot seek.
//
// Bytes already written can be overwritten with Patch(); the binary encoding uses it to fill
// in record headers once a record's size is known. The first failing system call is kept
// (Failed(), ErrorText()) and makes every later write a no-op. With a buffer of at least
// kWriteBehindBuffer bytes, a file's bytes are written on a thread of their own (see
// FbxWriteBehind) in pieces of at most kWriteBehindPiece, small enough that little is left to
// write when the file is committed; a failure there shows at a later call, at Commit() at the
// latest.
class FbxFileStream {
public:
    static constexpr size_t kWriteBehindBuffer = 64 * 1024;
    static constexpr size_t kWriteBehindPiece = 2 * 1024 * 1024;

    explicit FbxFileStream(size_t bufferSize = 64 * 1024) { SetBufferSize(bufferSize); }
    ~FbxFileStream();
    FbxFileStream(const FbxFileStream&) = delete;
    FbxFileStream& operator=(const FbxFileStream&) = delete;

    // Opens the output for `target` ("-": standard output). Returns false (with ErrorText())
    // when nothing could be created; the target is untouched then.
    bool Open(const std::string& target);
    bool IsOpen() const { return mFd >= 0; }
    // Takes effect at the next Open(); 0 makes every write a system call.
    void SetBufferSize(size_t bytes) { mCapacity = bytes > 0 ? bytes : 1; }

    void Write(const void* data, size_t size);
    void Write(const std::string& text) { Write(text.data(), text.size()); }
    void WriteByte(uint8_t value) { Write(&value, 1); }
    // Overwrites `size` bytes at the absolute position `position` (< Tell()).
    void Patch(uint64_t position, const void* data, size_t size);
    uint64_t Tell() const { return mFlushed + mBuffer.size(); }

    // Writes what is left, syncs and puts the file in place. Returns false when any write
    // failed; the unfinished file is gone then and the target keeps its old content.
    bool Commit();
    // Drops the unfinished file without touching the target.
    void Abort();

    bool Failed() const { return Errno() != 0; }
    int Errno() const { return mErrno != 0 ? mErrno : mWriteBehind.Error(); }
    // The first failure as a sentence naming the output and the system's reason ("Could not
    // write /data/take.fbx: No space left on device"); empty while nothing failed.
    std::string ErrorText() const;

private:
    bool OpenReplacement(const FbxOutputPlace& place);
    bool CommitDirect();
    bool CommitReplacement();
    void Flush();
    void Fail(int error);
    void CloseDescriptor();
    bool WriteAll(const char* data, size_t size);
    bool WriteAllAt(const char* data, size_t size, uint64_t position);
    void FlushBehind();

    std::vector<char> mBuffer;
    size_t mCapacity = 1;
    size_t mBehindPiece = 0;  // bytes handed to the writing thread at once
    uint64_t mFlushed = 0;
    int mFd = -1;
    int mErrno = 0;
    bool mDirect = false;    // a pipe, device or standard output: written at Commit()
    std::string mName;       // the output as the caller named it, for messages
    std::string mTarget;     // the file that is replaced: the name with links followed
    std::string mTemporary;  // the replacement's name where it cannot be unnamed
    FbxWriteBehind mWriteBehind;
};
