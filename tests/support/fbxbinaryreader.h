#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// Structural reader of binary FBX 7 files for tests. It shares no code with the writer: it
// walks a whole file, checks every structural rule a strict reader relies on, and returns
// the record tree so that tests can look at values.
namespace fbxtest {

// One value of a record. Scalars keep their type letter ('C', 'Y', 'I', 'F', 'D', 'L');
// strings and raw data ('S', 'R') keep their bytes; arrays ('f', 'd', 'l', 'i', 'b', 'c', 'h')
// are inflated and widened to double or int64.
struct Value {
    char type = 0;
    std::variant<int64_t, double, std::string, std::vector<int64_t>, std::vector<double>> data;
    uint32_t arrayEncoding = 0;  // arrays: 0 raw, 1 zlib

    bool IsArray() const { return type >= 'a' && type <= 'z'; }
    int64_t Int() const;
    double Double() const;  // also widens integer scalars
    const std::string& String() const;
    const std::vector<int64_t>& Ints() const;
    const std::vector<double>& Doubles() const;
    size_t ArraySize() const;
    // Type letter and value as text ("I232", "SModel", "d[1,2.5]"): lets tests compare whole
    // value lists at once.
    std::string Text() const;
};

std::vector<std::string> Texts(const std::vector<Value>& values);

struct Record {
    std::string name;
    std::vector<Value> values;
    std::vector<Record> children;
    bool hasBlock = false;  // the record carries a child list (ended by a null record)
    uint64_t offset = 0;

    // First child with this name, or null.
    const Record* Child(const std::string& childName) const;
    std::vector<const Record*> Children(const std::string& childName) const;
    // Descends along "A/B/C" from this record.
    const Record* Find(const std::string& path) const;
};

struct ReadOptions {
    // Arrays of at least this many raw bytes (and at least 1024) must be compressed and all
    // smaller ones must not; nullopt skips the check (compression off, or unknown settings).
    std::optional<uint32_t> compressMinimumSize = 1024;
    bool expectCompression = true;
};

struct File {
    uint32_t version = 0;
    Record root;  // name empty; the top-level records are its children
    uint8_t footerCheck[16] = {};
    uint64_t fileSize = 0;

    const Record* Find(const std::string& path) const { return root.Find(path); }
};

// Reads and checks `path`. On the first violation returns false and describes it (with the
// byte offset) in `error`.
bool ReadBinaryFile(const std::string& path, File& file, std::string& error,
                    const ReadOptions& options = {});
bool ReadBinaryBytes(const std::vector<uint8_t>& bytes, File& file, std::string& error,
                     const ReadOptions& options = {});

std::vector<uint8_t> ReadAllBytes(const std::string& path);

}  // namespace fbxtest
