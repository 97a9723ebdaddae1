#include "fbx/io/fbxfilestream.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tests/fbxio/fbxio_test_util.h"

namespace {

using fbxtest::ReadText;
using fbxtest::TempDir;

void WriteTextFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

TEST(FbxFileStream, ReplacesTheTargetOnlyOnCommit) {
    TempDir dir;
    const std::string target = dir.File("take.fbx");
    WriteTextFile(target, "old");
    chmod(target.c_str(), 0640);
    FbxFileStream stream(8);
    ASSERT_TRUE(stream.Open(target));
    stream.Write(std::string("0123456789ABCDEFGHIJ"));
    stream.Patch(5, "xxxxxxxxxx", 10);  // half already on disk, half still buffered
    EXPECT_EQ("old", ReadText(target));
    EXPECT_EQ(2u, dir.Entries().size()) << "the new content goes to a file beside the target";
    ASSERT_TRUE(stream.Commit());
    EXPECT_EQ("01234xxxxxxxxxxFGHIJ", ReadText(target));
    EXPECT_EQ(std::vector<std::string>{"take.fbx"}, dir.Entries());
    struct stat info {};
    stat(target.c_str(), &info);
    EXPECT_EQ(0640u, info.st_mode & 0777) << "the replaced file keeps its permissions";

    ASSERT_TRUE(stream.Open(target));
    stream.Write(std::string("unfinished"));
    stream.Abort();
    EXPECT_EQ("01234xxxxxxxxxxFGHIJ", ReadText(target));
    EXPECT_EQ(std::vector<std::string>{"take.fbx"}, dir.Entries());
}

TEST(FbxFileStream, WritesThroughSymbolicLinks) {
    TempDir dir;
    const std::string real = dir.File("real.fbx");
    const std::string link = dir.File("link.fbx");
    WriteTextFile(real, "old");
    ASSERT_EQ(0, symlink(real.c_str(), link.c_str()));
    FbxFileStream stream;
    ASSERT_TRUE(stream.Open(link));
    stream.Write(std::string("new"));
    ASSERT_TRUE(stream.Commit());
    EXPECT_EQ("new", ReadText(real));
    struct stat info {};
    lstat(link.c_str(), &info);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
}

TEST(FbxFileStream, FailuresKeepTheFirstErrorAndTheOldFile) {
    TempDir dir;
    FbxFileStream stream;
    EXPECT_FALSE(stream.Open(dir.File("missing/take.fbx")));
    EXPECT_EQ(ENOENT, stream.Errno());
    WriteTextFile(dir.File("plain"), "x");
    EXPECT_FALSE(stream.Open(dir.File("plain/take.fbx")));
    EXPECT_EQ(ENOTDIR, stream.Errno());
    EXPECT_FALSE(stream.Open(""));

    // A device cannot be replaced by a rename: it is written in place, and stays a device.
    ASSERT_TRUE(stream.Open("/dev/full"));
    stream.Write(std::string(100, 'x'));
    EXPECT_FALSE(stream.Commit());
    EXPECT_EQ(ENOSPC, stream.Errno());
    EXPECT_EQ("No space left on device", stream.ErrorText());
    struct stat info {};
    ASSERT_EQ(0, stat("/dev/full", &info));
    EXPECT_TRUE(S_ISCHR(info.st_mode));
}

}  // namespace
