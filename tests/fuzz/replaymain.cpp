// Replays a harness over the given files and every file of the given folders, so that the seed
// corpus and every input that once failed run in the ordinary test suite. A finding aborts, failing
// the test.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<uint8_t> readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace

int main(int argc, char** argv) {
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> files;
        if (std::filesystem::is_regular_file(argv[i])) files.push_back(argv[i]);
        if (std::filesystem::is_directory(argv[i]))  // a folder may be missing: no regressions yet
            for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
                if (entry.is_regular_file()) files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            std::printf("%s\n", file.c_str());
            std::fflush(stdout);
            const std::vector<uint8_t> bytes = readFile(file);
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++replayed;
        }
    }
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
