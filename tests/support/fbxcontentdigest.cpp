#include "tests/support/fbxcontentdigest.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

namespace fbxtest {
namespace {

constexpr size_t kShortValue = 64;

// FNV-1a, 64 bits: stable across platforms and runs, which std::hash is not.
class Digest {
public:
    void Add(const void* data, size_t size) {
        const auto* bytes = static_cast<const uint8_t*>(data);
        for (size_t i = 0; i < size; ++i) mHash = (mHash ^ bytes[i]) * 0x100000001b3ull;
    }
    std::string Hex() const {
        char text[17];
        std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(mHash));
        return text;
    }

private:
    uint64_t mHash = 0xcbf29ce484222325ull;
};

void AddValue(const fbxfile::Value& value, Digest& digest) {
    digest.Add(&value.type, 1);
    digest.Add(value.bytes.data(), value.bytes.size());
    digest.Add(value.ints.data(), value.ints.size() * sizeof(int64_t));
    digest.Add(value.reals.data(), value.reals.size() * sizeof(double));
}

// Names and values of the record and of everything below it.
void AddTree(const fbxfile::Record& record, Digest& digest) {
    digest.Add(record.name.data(), record.name.size() + 1);
    for (const fbxfile::Value& value : record.values) AddValue(value, digest);
    const uint64_t children = record.children.size();
    digest.Add(&children, sizeof children);
    for (const fbxfile::Record& child : record.children) AddTree(child, digest);
}

// Control bytes (the name-class separator) as \xNN, so that the lists stay plain text.
std::string Printable(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x20 && static_cast<unsigned char>(c) < 0x7f) {
            out += c;
        } else {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02x",
                          static_cast<unsigned>(static_cast<unsigned char>(c)));
            out += escaped;
        }
    }
    return out;
}

std::string ValueLine(const fbxfile::Value& value) {
    const bool array = std::strchr("bchilfd", value.type) != nullptr;
    if (!array && value.bytes.size() <= kShortValue) return Printable(value.Text());
    Digest digest;
    AddValue(value, digest);
    const size_t length = value.bytes.size() + value.ints.size() + value.reals.size();
    return std::string(1, value.type) + "#" + std::to_string(length) + ":" + digest.Hex();
}

// Records down to `depth` get a line of their own; deeper ones count in their parent's digest.
void AddRecord(const fbxfile::Record& record, const std::string& path, int depth,
               std::vector<std::string>& lines) {
    std::string line = path;
    for (const fbxfile::Value& value : record.values) line += " " + ValueLine(value);
    if (depth == 0) {
        Digest tree;
        for (const fbxfile::Record& child : record.children) AddTree(child, tree);
        lines.push_back(line + " {" + std::to_string(record.children.size()) + ":" + tree.Hex() +
                        "}");
        return;
    }
    lines.push_back(line);
    std::map<std::string, int> seen;
    for (const fbxfile::Record& child : record.children) {
        const int index = seen[child.name]++;
        AddRecord(child, path + "/" + child.name + "#" + std::to_string(index), depth - 1, lines);
    }
}

// A record name at the start of the line or after one tab (array continuation lines start with
// a number, deeper records with more tabs).
bool StartsSection(std::string_view line) {
    if (!line.empty() && line[0] == '\t') line.remove_prefix(1);
    if (line.empty() || !std::isalpha(static_cast<unsigned char>(line[0]))) return false;
    const size_t colon = line.find(':');
    return colon != std::string_view::npos &&
           line.substr(0, colon).find_first_of(" \t,") == std::string_view::npos;
}

}  // namespace

std::vector<std::string> BinaryContentLines(const fbxfile::File& file) {
    std::vector<std::string> lines{"version " + std::to_string(file.version)};
    std::map<std::string, int> seen;
    for (const fbxfile::Record& record : file.root.children) {
        const int index = seen[record.name]++;
        AddRecord(record, record.name + "#" + std::to_string(index), 1, lines);
    }
    Digest footer;
    footer.Add(file.footerCheck.data(), file.footerCheck.size());
    lines.push_back("footer " + footer.Hex());
    return lines;
}

std::vector<std::string> AsciiContentLines(const std::string& text) {
    std::vector<std::string> lines;
    std::string section = "(header)";
    std::string name = section;
    Digest digest;
    size_t count = 0;
    const auto flush = [&] {
        if (count > 0) lines.push_back(name + " " + std::to_string(count) + " " + digest.Hex());
        digest = Digest();
        count = 0;
    };
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find('\n', at);
        end = end == std::string::npos ? text.size() : end + 1;
        const std::string_view line(text.data() + at, end - at);
        if (StartsSection(line)) {
            flush();
            const std::string record(
                line.substr(line[0] == '\t', line.find(':') - (line[0] == '\t')));
            if (line[0] != '\t') section = record;
            name = line[0] == '\t' ? section + "/" + record : record;
        }
        digest.Add(line.data(), line.size());
        ++count;
        at = end;
    }
    flush();
    return lines;
}

}  // namespace fbxtest
