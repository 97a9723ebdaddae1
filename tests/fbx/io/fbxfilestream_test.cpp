#include "fbx/io/fbxfilestream.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <csignal>
#include <thread>

#include "tests/fbx/io/fbxio_test_util.h"

namespace {

using fbxtest::ReadText;
using fbxtest::TempDir;
using Strings = std::vector<std::string>;

const std::string kContent = "0123456789ABCDEFGHIJ";
const std::string kPatched = "#123456789ABCDEFGHIJ";

// Writes kContent to `target` through a small buffer, then patches its first byte as the
// binary encoding does with record headers. The stream's sentence, "" on success.
std::string WriteThrough(const std::string& target) {
    FbxFileStream stream(8);
    if (!stream.Open(target)) return stream.ErrorText();
    stream.Write(kContent);
    stream.Patch(0, "#", 1);
    return stream.Commit() ? std::string() : stream.ErrorText();
}

bool IsKind(const std::string& path, mode_t kind, bool followLinks = true) {
    struct stat info {};
    const int result = followLinks ? stat(path.c_str(), &info) : lstat(path.c_str(), &info);
    return result == 0 && (info.st_mode & S_IFMT) == kind;
}

bool Blocked(int signal) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

TEST(FbxFileStream, ReplacesTheTargetOnlyOnCommit) {
    TempDir dir;
    const std::string target = dir.File("take.fbx");
    std::ofstream(target) << "old";
    chmod(target.c_str(), 0640);
    FbxFileStream stream(8);
    ASSERT_TRUE(stream.Open(target));
    stream.Write(kContent);
    stream.Patch(5, "xxxxxxxxxx", 10);  // half already on disk, half still buffered
    EXPECT_EQ("old", ReadText(target));
    EXPECT_EQ(Strings{"take.fbx"}, dir.Entries()) << "the new content has no name yet";
    ASSERT_TRUE(stream.Commit());
    EXPECT_EQ("01234xxxxxxxxxxFGHIJ", ReadText(target));
    EXPECT_EQ(Strings{"take.fbx"}, dir.Entries());
    struct stat info {};
    stat(target.c_str(), &info);
    EXPECT_EQ(0640u, info.st_mode & 0777) << "the replaced file keeps its permissions";
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) EXPECT_FALSE(Blocked(signal));
}

TEST(FbxFileStream, EachKindOfOutput) {
    TempDir dir;
    const std::string longName(255, 'n');
    EXPECT_EQ("", WriteThrough(dir.File(longName))) << "the temporary name is never longer";
    EXPECT_EQ(kPatched, ReadText(dir.File(longName)));

    // Links are written through: the file they name is replaced, dangling or not.
    std::ofstream(dir.File("take.fbx")) << "old";
    ASSERT_EQ(0, symlink(dir.File("take.fbx").c_str(), dir.File("link.fbx").c_str()));
    ASSERT_EQ(0, symlink("made.fbx", dir.File("dangling.fbx").c_str()));
    for (const char* link : {"link.fbx", "dangling.fbx"}) {
        EXPECT_EQ("", WriteThrough(dir.File(link)));
        EXPECT_TRUE(IsKind(dir.File(link), S_IFLNK, false)) << link;
        EXPECT_EQ(kPatched, ReadText(dir.File(link)));
    }
    EXPECT_EQ((Strings{"dangling.fbx", "link.fbx", "made.fbx", longName, "take.fbx"}),
              dir.Entries());

    // A pipe receives the whole file in order, and stays a pipe.
    const std::string fifo = dir.File("pipe");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    std::string received;
    std::thread reader([&] { received = ReadText(fifo); });
    EXPECT_EQ("", WriteThrough(fifo));
    reader.join();
    EXPECT_EQ(kPatched, received);
    EXPECT_TRUE(IsKind(fifo, S_IFIFO));

    EXPECT_EQ("", WriteThrough("/dev/null"));
    EXPECT_TRUE(IsKind("/dev/null", S_IFCHR));
    for (const char* standardOutput : {"-", "/dev/stdout"}) {
        testing::internal::CaptureStdout();
        const std::string error = WriteThrough(standardOutput);
        EXPECT_EQ(kPatched, testing::internal::GetCapturedStdout()) << standardOutput;
        EXPECT_EQ("", error);
    }
}

TEST(FbxFileStream, RefusalsNameTheOutputAndTheReason) {
    TempDir dir;
    std::ofstream(dir.File("take.fbx")) << "old";
    ASSERT_EQ(0, symlink("loop.fbx", dir.File("loop.fbx").c_str()));
    const std::vector<std::pair<std::string, std::string>> refusals = {
        {dir.File("gone/take.fbx"), "No such file or directory"},
        {dir.File(""), "Is a directory"},
        {dir.File("take.fbx/inner.fbx"), "Not a directory"},
        {dir.File("loop.fbx"), "Too many levels of symbolic links"},
        {"/dev/full", "No space left on device"}};
    for (const auto& [target, reason] : refusals) {
        EXPECT_EQ("Could not write " + target + ": " + reason, WriteThrough(target));
        EXPECT_EQ("old", ReadText(dir.File("take.fbx")));
        EXPECT_EQ((Strings{"loop.fbx", "take.fbx"}), dir.Entries()) << target;
    }
    EXPECT_EQ("Could not write : No such file or directory", WriteThrough(""));
}

// What only some machines allow: root passes permission bits, and marking a file immutable
// needs a capability and a file system that keeps the flag.
TEST(FbxFileStream, RefusalsOfTheFileSystem) {
    TempDir dir;
    const std::string target = dir.File("take.fbx");
    std::ofstream(target) << "old";
    int tried = 0;
    if (geteuid() != 0) {
        chmod(dir.File("").c_str(), 0500);
        EXPECT_EQ("Could not write " + target + ": Permission denied", WriteThrough(target));
        chmod(dir.File("").c_str(), 0700);
        ++tried;
    }
    const int fd = open(target.c_str(), O_RDONLY);
    int flags = 0;
    if (ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0) {
        flags |= FS_IMMUTABLE_FL;
        if (ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0) {
            EXPECT_EQ("Could not write " + target + ": Operation not permitted",
                      WriteThrough(target));
            flags &= ~FS_IMMUTABLE_FL;
            ioctl(fd, FS_IOC_SETFLAGS, &flags);
            ++tried;
        }
    }
    close(fd);
    EXPECT_EQ("old", ReadText(target));
    EXPECT_EQ(Strings{"take.fbx"}, dir.Entries());
    if (tried == 0) GTEST_SKIP() << "running as root without immutable files: nothing refuses";
}

// A process killed in the middle of a write leaves the old file and nothing beside it.
TEST(FbxFileStream, KilledWriteLeavesNothing) {
    TempDir dir;
    const std::string target = dir.File("take.fbx");
    std::ofstream(target) << "old";
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FbxFileStream stream(8);
        if (stream.Open(target)) stream.Write(std::string(1 << 20, 'x'));
        raise(SIGKILL);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ("old", ReadText(target));
    EXPECT_EQ(Strings{"take.fbx"}, dir.Entries());
}

}  // namespace
