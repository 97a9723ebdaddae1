#include "fbx/io/fbxfilestream.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/fbx/io/fbxio_test_util.h"

namespace {

using fbxtest::ReadText;
using fbxtest::TempDir;
using Strings = std::vector<std::string>;

const std::string kContent = "0123456789ABCDEFGHIJ";

// Writes kContent to `target` through a small buffer, then patches its first byte as the
// binary encoding does with record headers. The stream's sentence, "" on success.
std::string WriteThrough(const std::string& target) {
    FbxFileStream stream(8);
    if (!stream.Open(target)) return stream.ErrorText();
    stream.Write(kContent);
    stream.Patch(0, "#", 1);
    return stream.Commit() ? std::string() : stream.ErrorText();
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

// Buffers written on the stream's own thread land in order with every patch, whether a patch
// meets bytes written long ago, bytes on their way, or bytes still buffered; a refused write
// there fails the commit as it would on the caller's thread. Both buffer sizes must agree.
TEST(FbxFileStream, WritesBehindLandInOrderAndFailAsTheyWouldInPlace) {
    std::string expected(1 << 20, '\0');
    for (size_t i = 0; i < expected.size(); ++i) expected[i] = static_cast<char>('a' + i * 7 % 26);
    for (const size_t buffer : {size_t{8}, FbxFileStream::kWriteBehindBuffer}) {
        SCOPED_TRACE(buffer);
        TempDir dir;
        const std::string target = dir.File("take.fbx");
        std::ofstream(target) << "old";
        const auto write = [&](FbxFileStream& stream) {
            std::string patched = expected;
            for (size_t at = 0, piece = 1; at < expected.size();
                 at += piece, piece = piece * 3 % 200001) {
                piece = std::min(piece + 1, expected.size() - at);
                stream.Write(expected.data() + at, piece);
                // Headers patched at the start, just behind the end, and across both.
                for (const size_t back : {at, at / 2, size_t{5}}) {
                    const size_t from = at - std::min(back, at);
                    stream.Patch(from, "#", 1);
                    patched[from] = '#';
                }
            }
            return patched;
        };
        FbxFileStream stream(buffer);
        ASSERT_TRUE(stream.Open(target));
        const std::string patched = write(stream);
        ASSERT_TRUE(stream.Commit()) << stream.ErrorText();
        EXPECT_TRUE(ReadText(target) == patched);
        EXPECT_EQ(Strings{"take.fbx"}, dir.Entries());

        std::ofstream(target) << "old";
        std::string error;
        fbxtest::WithFileSizeLimit(300000, [&] {
            FbxFileStream limited(buffer);
            ASSERT_TRUE(limited.Open(target));
            write(limited);
            EXPECT_FALSE(limited.Commit());
            error = limited.ErrorText();
        });
        EXPECT_EQ("Could not write " + target + ": File too large", error);
        EXPECT_EQ("old", ReadText(target));
        EXPECT_EQ(Strings{"take.fbx"}, dir.Entries());
    }
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
