#include "fbx/io/fbxwritebehind.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "fbx/io/fbxhelperthread.h"

namespace {

// Appended buffers queued or under way at once: one being written while the next waits.
constexpr size_t kQueuedBuffers = 2;

}  // namespace

int FbxWriteAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = write(fd, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return written < 0 ? errno : EIO;
        data += written;
        size -= static_cast<size_t>(written);
    }
    return 0;
}

int FbxWriteAllAt(int fd, const char* data, size_t size, uint64_t position) {
    while (size > 0) {
        const ssize_t written = pwrite(fd, data, size, static_cast<off_t>(position));
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return written < 0 ? errno : EIO;
        data += written;
        position += static_cast<uint64_t>(written);
        size -= static_cast<size_t>(written);
    }
    return 0;
}

void FbxWriteBehind::Start(int fd) {
    Stop();
    mFd = fd;
    mWritten = static_cast<uint64_t>(std::max<off_t>(lseek(fd, 0, SEEK_CUR), 0));
    mStopping = false;
    mThread = FbxStartHelperThread([this] { Work(); });
}

void FbxWriteBehind::Append(std::vector<char>& buffer) {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [&] { return mQueuedBuffers < kQueuedBuffers; });
    Write write;
    write.bytes.swap(buffer);
    mQueue.push_back(std::move(write));
    ++mQueuedBuffers;
    if (!mSpare.empty()) {
        buffer.swap(mSpare.back());
        mSpare.pop_back();
    }
    mChanged.notify_all();
}

void FbxWriteBehind::Patch(uint64_t position, const void* data, size_t size) {
    const char* bytes = static_cast<const char*>(data);
    const std::lock_guard lock(mMutex);
    mQueue.push_back({std::vector<char>(bytes, bytes + size), true, position});
    mChanged.notify_all();
}

int FbxWriteBehind::Finish() {
    return End(false);
}

void FbxWriteBehind::Stop() {
    End(true);
}

// The first failure, which is forgotten with the thread.
int FbxWriteBehind::End(bool drop) {
    if (!mThread.joinable()) return 0;
    {
        const std::lock_guard lock(mMutex);
        if (drop) mQueue.clear();
        mStopping = true;
    }
    mChanged.notify_all();
    mThread.join();
    mQueue.clear();
    mSpare.clear();
    mQueuedBuffers = 0;
    return mError.exchange(0);
}

void FbxWriteBehind::Work() {
    std::unique_lock lock(mMutex);
    for (;;) {
        mChanged.wait(lock, [&] { return mStopping || !mQueue.empty(); });
        if (mQueue.empty()) return;
        Write write = std::move(mQueue.front());
        mQueue.pop_front();
        lock.unlock();
        if (Error() == 0) Make(write);
        lock.lock();
        if (!write.patch) {
            --mQueuedBuffers;
            write.bytes.clear();
            mSpare.push_back(std::move(write.bytes));
        }
        mChanged.notify_all();
    }
}

// After each buffer the system is asked to start putting it on the disk, so that the sync
// before the file takes its name waits for the last buffers only. Where it cannot be asked,
// the sync does all of it, as without the request.
void FbxWriteBehind::Make(const Write& write) {
    if (write.patch) {
        Keep(FbxWriteAllAt(mFd, write.bytes.data(), write.bytes.size(), write.position));
        return;
    }
    Keep(FbxWriteAll(mFd, write.bytes.data(), write.bytes.size()));
    sync_file_range(mFd, static_cast<off_t>(mWritten), static_cast<off_t>(write.bytes.size()),
                    SYNC_FILE_RANGE_WRITE);
    mWritten += write.bytes.size();
}

void FbxWriteBehind::Keep(int error) {
    if (error != 0) mError.store(error, std::memory_order_release);
}
