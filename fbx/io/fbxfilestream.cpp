#include "fbx/io/fbxfilestream.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "fbx/io/fbxoutputplace.h"

namespace {

// Writes to a pipe whose reader has gone raise SIGPIPE, which would end the whole host; the
// write's EPIPE is the report wanted, so the signal is held back and dropped if it was ours.
class BrokenPipeHeld {
public:
    BrokenPipeHeld() {
        sigemptyset(&mPipe);
        sigaddset(&mPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &mPipe, &mPrevious);
        sigset_t pending;
        sigpending(&pending);
        mWasPending = sigismember(&pending, SIGPIPE) == 1;
    }
    ~BrokenPipeHeld() {
        sigset_t pending;
        sigpending(&pending);
        const timespec now{};
        if (!mWasPending && sigismember(&pending, SIGPIPE) == 1)
            sigtimedwait(&mPipe, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
    }
    BrokenPipeHeld(const BrokenPipeHeld&) = delete;
    BrokenPipeHeld& operator=(const BrokenPipeHeld&) = delete;

private:
    sigset_t mPipe;
    sigset_t mPrevious;
    bool mWasPending = false;
};

}  // namespace

FbxFileStream::~FbxFileStream() {
    Abort();
}

bool FbxFileStream::Open(const std::string& target) {
    Abort();
    mErrno = 0;
    mFlushed = 0;
    mBuffer.clear();
    mName = target == "-" ? "standard output" : target;
    if (target.empty()) {
        Fail(ENOENT);
        return false;
    }
    const FbxOutputPlace place = FbxOutputPlace::Find(target);
    if (place.error) {
        Fail(place.error);
        return false;
    }
    mTarget = place.path;
    mDirect = place.kind != FbxOutputPlace::eReplace;
    if (place.kind == FbxOutputPlace::eStandardOutput) {
        // A copy, so that closing the output leaves the process's standard output open.
        mFd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    } else if (mDirect) {
        mFd = open(mTarget.c_str(), O_WRONLY | O_TRUNC | O_NOCTTY | O_CLOEXEC);
    } else {
        return OpenReplacement(place);
    }
    if (mFd < 0) Fail(errno);
    return mFd >= 0;
}

bool FbxFileStream::OpenReplacement(const FbxOutputPlace& place) {
    mFd = FbxOpenReplacement(place, mTemporary);
    if (mFd < 0) {
        Fail(errno);
        return false;
    }
    mBehindPiece = 0;
    if (mCapacity >= kWriteBehindBuffer) {
        mBehindPiece = std::min(mCapacity, kWriteBehindPiece);
        mWriteBehind.Start(mFd);
    }
    mBuffer.reserve(mWriteBehind.Running() ? mBehindPiece : mCapacity);
    return true;
}

void FbxFileStream::Write(const void* data, size_t size) {
    if (mFd < 0 || Failed()) return;
    const char* bytes = static_cast<const char*>(data);
    if (mDirect) {
        mBuffer.insert(mBuffer.end(), bytes, bytes + size);
        return;
    }
    if (mWriteBehind.Running()) {
        mBuffer.insert(mBuffer.end(), bytes, bytes + size);
        if (mBuffer.size() >= mBehindPiece) FlushBehind();
        return;
    }
    if (mBuffer.size() + size > mCapacity) Flush();
    if (size >= mCapacity) {
        if (!Failed() && WriteAll(bytes, size)) mFlushed += size;
        return;
    }
    mBuffer.insert(mBuffer.end(), bytes, bytes + size);
}

void FbxFileStream::Patch(uint64_t position, const void* data, size_t size) {
    if (mFd < 0 || Failed()) return;
    if (position > Tell() || size > Tell() - position) {
        Fail(EINVAL);
        return;
    }
    const char* bytes = static_cast<const char*>(data);
    if (position < mFlushed) {
        const size_t onDisk = static_cast<size_t>(std::min<uint64_t>(size, mFlushed - position));
        if (mWriteBehind.Running()) {
            mWriteBehind.Patch(position, bytes, onDisk);
        } else if (!WriteAllAt(bytes, onDisk, position)) {
            return;
        }
        bytes += onDisk;
        size -= onDisk;
        position += onDisk;
    }
    if (size > 0) std::memcpy(mBuffer.data() + (position - mFlushed), bytes, size);
}

bool FbxFileStream::Commit() {
    if (mFd < 0) return false;
    const bool committed = mDirect ? CommitDirect() : CommitReplacement();
    if (!committed) Abort();
    return committed;
}

bool FbxFileStream::CommitDirect() {
    {
        BrokenPipeHeld held;
        if (!Failed() && WriteAll(mBuffer.data(), mBuffer.size())) mFlushed += mBuffer.size();
    }
    mBuffer.clear();
    CloseDescriptor();
    return !Failed();
}

// The data reaches the disk before the name does, so a crash of the machine never shows
// an empty or partial file under the name; the folder is synced to keep the new name.
bool FbxFileStream::CommitReplacement() {
    if (mWriteBehind.Running()) {
        FlushBehind();
        if (const int error = mWriteBehind.Finish()) Fail(error);
    }
    Flush();
    if (!Failed() && fsync(mFd) != 0) Fail(errno);
    if (!mTemporary.empty()) CloseDescriptor();
    if (!Failed()) {
        if (const int error = FbxPublishReplacement(mFd, mTemporary, mTarget)) Fail(error);
    }
    if (Failed()) return false;
    mTemporary.clear();
    CloseDescriptor();
    const std::string folder = mTarget.substr(0, mTarget.find_last_of('/') + 1);
    const int folderFd =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd >= 0) {
        fsync(folderFd);
        close(folderFd);
    }
    return !Failed();
}

void FbxFileStream::Abort() {
    if (mWriteBehind.Error() != 0) Fail(mWriteBehind.Error());
    mWriteBehind.Stop();
    CloseDescriptor();
    if (!mTemporary.empty()) unlink(mTemporary.c_str());
    mTemporary.clear();
    mBuffer.clear();
}

std::string FbxFileStream::ErrorText() const {
    if (!Failed()) return {};
    return "Could not write " + mName + ": " + std::strerror(Errno());
}

void FbxFileStream::Flush() {
    if (mDirect || mBuffer.empty() || Failed()) return;
    if (WriteAll(mBuffer.data(), mBuffer.size())) mFlushed += mBuffer.size();
    mBuffer.clear();
}

// A write that failed behind the stream came first, whatever failed since.
void FbxFileStream::Fail(int error) {
    if (mErrno == 0) mErrno = mWriteBehind.Error() != 0 ? mWriteBehind.Error() : error;
}

// The buffer goes to the writing thread whole; the stream goes on in the empty one it gives
// back.
void FbxFileStream::FlushBehind() {
    if (mBuffer.empty() || Failed()) return;
    mFlushed += mBuffer.size();
    mWriteBehind.Append(mBuffer);
    mBuffer.reserve(mBehindPiece);
}

void FbxFileStream::CloseDescriptor() {
    if (mFd < 0) return;
    if (close(mFd) != 0) Fail(errno);
    mFd = -1;
}

bool FbxFileStream::WriteAll(const char* data, size_t size) {
    const int error = FbxWriteAll(mFd, data, size);
    if (error != 0) Fail(error);
    return error == 0;
}

bool FbxFileStream::WriteAllAt(const char* data, size_t size, uint64_t position) {
    const int error = FbxWriteAllAt(mFd, data, size, position);
    if (error != 0) Fail(error);
    return error == 0;
}
