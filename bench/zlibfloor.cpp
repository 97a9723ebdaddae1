// The floor of today's array encoding for a written file: zlib level 1 over its key arrays
// (KeyTime and KeyValueFloat), every value array compressed and the key times that curves
// share compressed once. Prints the seconds the compression took, wall clock and processor
// time (the steadier of the two on a shared machine).
//
//   zlib_floor FILE.fbx   (binary FBX 7.5 or later)
#include <zlib.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

template <typename T>
T read(const Bytes& file, size_t at) {
    T value;
    std::memcpy(&value, file.data() + at, sizeof value);
    return value;
}

// Walks the records from `at` to `end`, collecting the inflated key arrays: every value array,
// and each distinct key-time array once.
bool walk(const Bytes& file, size_t at, size_t end, std::vector<Bytes>& arrays,
          std::set<Bytes>& times) {
    while (at + 25 <= end) {
        const auto recordEnd = read<uint64_t>(file, at);
        const auto values = read<uint64_t>(file, at + 8);
        const auto valueBytes = read<uint64_t>(file, at + 16);
        const size_t nameLength = file[at + 24];
        if (recordEnd == 0) return true;
        if (recordEnd > end) return false;
        const std::string name(file.begin() + static_cast<ptrdiff_t>(at + 25),
                               file.begin() + static_cast<ptrdiff_t>(at + 25 + nameLength));
        const size_t first = at + 25 + nameLength;
        if ((name == "KeyTime" || name == "KeyValueFloat") && values == 1) {
            const auto count = read<uint32_t>(file, first + 1);
            const auto encoding = read<uint32_t>(file, first + 5);
            const auto stored = read<uint32_t>(file, first + 9);
            Bytes raw(count * (file[first] == 'l' ? 8u : 4u));
            uLongf size = raw.size();
            if (encoding == 1) {
                if (uncompress(raw.data(), &size, file.data() + first + 13, stored) != Z_OK) {
                    return false;
                }
            } else {
                std::memcpy(raw.data(), file.data() + first + 13, raw.size());
            }
            if (name == "KeyValueFloat" || times.insert(raw).second)
                arrays.push_back(std::move(raw));
        }
        if (!walk(file, first + valueBytes, recordEnd, arrays, times)) return false;
        at = recordEnd;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: zlib_floor FILE.fbx\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const Bytes file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<Bytes> arrays;
    std::set<Bytes> times;
    if (file.size() < 27 || read<uint32_t>(file, 23) < 7500 ||
        !walk(file, 27, file.size(), arrays, times)) {
        std::fprintf(stderr, "%s: not a binary FBX file of version 7500 or later\n", argv[1]);
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t cpuStart = std::clock();
    Bytes packed;
    for (const Bytes& raw : arrays) {
        uLongf size = compressBound(raw.size());
        packed.resize(size);
        compress2(packed.data(), &size, raw.data(), raw.size(), 1);
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    const double cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    std::printf("%.3f %.3f\n", seconds.count(), cpu);
    return 0;
}
