#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Structural reader of binary FBX 7 files. It shares no code with the writer: it walks a whole
// file, checks every structural rule a strict reader relies on, and returns the record tree so
// that tests can look at values and the reference host can count what a file holds.
namespace fbxfile {

// One value of a record, scalar ('C', 'Y', 'I', 'L', 'F', 'D'), bytes ('S', 'R') or array
// ('b', 'c', 'h', 'i', 'l', 'f', 'd', inflated). Numbers are widened to int64 or double.
struct Value {
    char type = 0;
    std::string bytes;
    std::vector<int64_t> ints;
    std::vector<double> reals;
    uint64_t count = 0;  // elements of an array, read even when its contents are not

    int64_t Int() const { return ints.at(0); }
    const std::string& String() const { return bytes; }
    // Type letter and value as text ("I232", "SModel", "d[1,2.5]"): lets tests compare whole
    // value lists at once.
    std::string Text() const;
};

// The texts of the values, separated by blanks.
std::string Texts(const std::vector<Value>& values);

struct Record {
    std::string name;
    std::vector<Value> values;
    std::vector<Record> children;
    bool hasBlock = false;  // the record carries a child list (ended by a null record)
    uint64_t offset = 0;

    const Record* Child(const std::string& childName) const;  // the first one, or null
    std::vector<const Record*> Children(const std::string& childName) const;
    // Descends along "A/B/C" from this record; null when a step is missing.
    const Record* Find(const std::string& path) const;
};

struct ReadOptions {
    // Arrays of at least this many raw bytes (and at least 1024) must be compressed and all
    // smaller ones must not; nullopt skips the check.
    std::optional<uint32_t> compressMinimumSize = 1024;
    // False: arrays keep their element count only, nothing is inflated; for a quick look at the
    // structure of a large file.
    bool arrayContents = true;
};

struct File {
    uint32_t version = 0;
    Record root;  // the top-level records are its children
    std::string footerCheck;

    const Record* Find(const std::string& path) const { return root.Find(path); }
};

// Reads and checks `path`. On the first violation returns false and describes it (with the
// byte offset) in `error`.
bool ReadBinaryFile(const std::string& path, File& file, std::string& error,
                    const ReadOptions& options = {});
bool ReadBinaryBytes(std::string_view bytes, File& file, std::string& error,
                     const ReadOptions& options = {});
bool ReadBinaryBytes(const std::vector<uint8_t>& bytes, File& file, std::string& error,
                     const ReadOptions& options = {});

std::vector<uint8_t> ReadAllBytes(const std::string& path);

}  // namespace fbxfile
