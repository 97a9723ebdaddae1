#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/fbxbinaryreader.h"

namespace fbxtest {

// A fresh folder per test, removed with everything in it afterwards.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "fbxio-XXXXXX").string();
        mPath = mkdtemp(pattern.data()) ? pattern : std::string();
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::permissions(mPath, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(mPath, ignored);
    }
    std::string File(const std::string& name) const { return mPath + "/" + name; }
    const std::string& Path() const { return mPath; }
    // Names in the folder, to see that no temporary file is left behind.
    std::vector<std::string> Entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mPath)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string mPath;
};

inline std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Reads a binary file with the structural reader; a violation fails the test.
inline File ReadChecked(const std::string& path, const ReadOptions& options = {}) {
    File file;
    std::string error;
    EXPECT_TRUE(ReadBinaryFile(path, file, error, options)) << path << ": " << error;
    return file;
}

// Runs `body` while the file system refuses every byte of a file past `limit` (the process's
// file size limit); writes beyond it fail as on a full disk.
template <typename Body>
void WithFileSizeLimit(size_t limit, const Body& body) {
    struct rlimit saved {};
    getrlimit(RLIMIT_FSIZE, &saved);
    struct rlimit reduced = saved;
    reduced.rlim_cur = limit;
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &reduced));
    body();
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);
}

}  // namespace fbxtest
