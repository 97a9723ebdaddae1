#include "fbx/io/fbxfilestream.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tests/fbxio/fbxio_test_util.h"

namespace {

using fbxtest::ReadText;
using Strings = std::vector<std::string>;

TEST(FbxFileStream, ReplacesTheTargetOnlyOnCommit) {
    fbxtest::TempDir dir;
    const std::string target = dir.File("take.fbx");
    std::ofstream(target) << "old";
    chmod(target.c_str(), 0640);
    FbxFileStream stream(8);
    ASSERT_TRUE(stream.Open(target));
    stream.Write(std::string("0123456789ABCDEFGHIJ"));
    stream.Patch(5, "xxxxxxxxxx", 10);  // half already on disk, half still buffered
    EXPECT_EQ("old", ReadText(target));
    EXPECT_EQ(2u, dir.Entries().size()) << "the new content goes to a file beside the target";
    ASSERT_TRUE(stream.Commit());
    EXPECT_EQ("01234xxxxxxxxxxFGHIJ", ReadText(target));
    EXPECT_EQ(Strings{"take.fbx"}, dir.Entries());
    struct stat info {};
    stat(target.c_str(), &info);
    EXPECT_EQ(0640u, info.st_mode & 0777) << "the replaced file keeps its permissions";

    // A link is followed: the file it names is replaced, the link stays.
    ASSERT_EQ(0, symlink(target.c_str(), dir.File("link.fbx").c_str()));
    ASSERT_TRUE(stream.Open(dir.File("link.fbx")));
    stream.Write(std::string("new"));
    ASSERT_TRUE(stream.Commit());
    EXPECT_EQ("new", ReadText(target));
    lstat(dir.File("link.fbx").c_str(), &info);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
}

}  // namespace
