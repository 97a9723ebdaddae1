#include "fbx/io/fbxfilestream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

// A name beside the target that no other writer of this process or another one uses.
std::string TemporaryNameFor(const std::string& target) {
    static std::atomic<unsigned> counter{0};
    return target + ".tmp" + std::to_string(getpid()) + "-" + std::to_string(counter++);
}

// Writes through a symbolic link land in the file it names; the link itself stays.
std::string ResolveLink(const std::string& target) {
    struct stat info {};
    if (lstat(target.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return target;
    char resolved[PATH_MAX];
    return realpath(target.c_str(), resolved) ? std::string(resolved) : target;
}

}  // namespace

FbxFileStream::~FbxFileStream() {
    Abort();
}

bool FbxFileStream::Open(const std::string& target) {
    Abort();
    mErrno = 0;
    mFlushed = 0;
    mBuffer.clear();
    mBuffer.reserve(mCapacity);
    mName = target;
    if (target.empty()) {
        Fail(ENOENT);
        return false;
    }
    mTarget = ResolveLink(target);
    struct stat info {};
    const bool exists = stat(mTarget.c_str(), &info) == 0;
    if (exists && !S_ISREG(info.st_mode)) {
        mFd = open(mTarget.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        do {
            mTemporary = TemporaryNameFor(mTarget);
            mFd = open(mTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        } while (mFd < 0 && errno == EEXIST);
        if (mFd >= 0 && exists) fchmod(mFd, info.st_mode & 07777);
    }
    if (mFd < 0) {
        Fail(errno);
        mTemporary.clear();
        return false;
    }
    return true;
}

void FbxFileStream::Write(const void* data, size_t size) {
    if (mFd < 0 || Failed()) return;
    const char* bytes = static_cast<const char*>(data);
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
        if (!WriteAllAt(bytes, onDisk, position)) return;
        bytes += onDisk;
        size -= onDisk;
        position += onDisk;
    }
    if (size > 0) std::memcpy(mBuffer.data() + (position - mFlushed), bytes, size);
}

bool FbxFileStream::Commit() {
    if (mFd < 0) return false;
    Flush();
    if (!mTemporary.empty() && !Failed() && fsync(mFd) != 0) Fail(errno);
    CloseDescriptor();
    if (!mTemporary.empty() && !Failed() && rename(mTemporary.c_str(), mTarget.c_str()) != 0) {
        Fail(errno);
    }
    if (Failed()) {
        Abort();
        return false;
    }
    mTemporary.clear();
    return true;
}

void FbxFileStream::Abort() {
    CloseDescriptor();
    if (!mTemporary.empty()) unlink(mTemporary.c_str());
    mTemporary.clear();
    mBuffer.clear();
}

std::string FbxFileStream::ErrorText() const {
    if (!mErrno) return {};
    return "Could not write " + mName + ": " + std::strerror(mErrno);
}

void FbxFileStream::Flush() {
    if (mBuffer.empty() || Failed()) return;
    if (WriteAll(mBuffer.data(), mBuffer.size())) mFlushed += mBuffer.size();
    mBuffer.clear();
}

void FbxFileStream::Fail(int error) {
    if (mErrno == 0) mErrno = error;
}

void FbxFileStream::CloseDescriptor() {
    if (mFd < 0) return;
    if (close(mFd) != 0) Fail(errno);
    mFd = -1;
}

bool FbxFileStream::WriteAll(const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = write(mFd, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            Fail(written < 0 ? errno : EIO);
            return false;
        }
        data += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool FbxFileStream::WriteAllAt(const char* data, size_t size, uint64_t position) {
    while (size > 0) {
        const ssize_t written = pwrite(mFd, data, size, static_cast<off_t>(position));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            Fail(written < 0 ? errno : EIO);
            return false;
        }
        data += written;
        position += static_cast<uint64_t>(written);
        size -= static_cast<size_t>(written);
    }
    return true;
}
