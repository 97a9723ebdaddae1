#include "fbxcontentcount.h"

#include <QFile>
#include <algorithm>
#include <fstream>
#include <string>

#include "fbxfile/fbxbinaryreader.h"
#include "mappedfile.h"

namespace {

constexpr std::string_view BinarySignature("Kaydara FBX Binary  \0", 21);

// Reads the file's structure only: arrays give their lengths and are never inflated, so that a
// file of any size costs little more than its record headers.
FbxContentCount countBinary(const MappedFile& mapped) {
    FbxContentCount count;
    fbxfile::File file;
    std::string error;
    const fbxfile::ReadOptions structureOnly{.compressMinimumSize = std::nullopt,
                                             .arrayContents = false};
    if (!fbxfile::ReadBinaryBytes(mapped.text(), file, error, structureOnly)) return count;
    count.readable = true;
    const fbxfile::Record* objects = file.Find("Objects");
    if (!objects) return count;
    count.nodes = static_cast<int64_t>(objects->Children("Model").size());
    for (const fbxfile::Record* curve : objects->Children("AnimationCurve")) {
        ++count.curves;
        const fbxfile::Record* times = curve->Child("KeyTime");
        const int64_t keys =
            times && !times->values.empty() ? static_cast<int64_t>(times->values[0].count) : 0;
        count.keys += keys;
        count.mostKeys = std::max(count.mostKeys, keys);
    }
    return count;
}

std::string_view trimmed(std::string_view line) {
    while (!line.empty() && (line.front() == '\t' || line.front() == ' ')) line.remove_prefix(1);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    return line;
}

FbxContentCount countAscii(std::ifstream& file) {
    FbxContentCount count;
    std::string line;
    int depth = 0;
    bool inObjects = false;
    while (std::getline(file, line)) {
        const std::string_view text = trimmed(line);
        if (text.empty() || text.front() == ';') continue;
        if (depth == 0 && text.rfind("Objects:", 0) == 0) inObjects = true;
        if (inObjects && depth == 1 && text.rfind("Model:", 0) == 0) ++count.nodes;
        if (inObjects && depth == 1 && text.rfind("AnimationCurve:", 0) == 0) ++count.curves;
        if (inObjects && depth == 2 && text.rfind("KeyTime: *", 0) == 0) {
            const int64_t keys = std::atoll(std::string(text.substr(10)).c_str());
            count.keys += keys;
            count.mostKeys = std::max(count.mostKeys, keys);
        }
        if (text.back() == '{') ++depth;
        if (text == "}" && --depth == 0) inObjects = false;
    }
    count.readable = depth == 0;
    return count;
}

}  // namespace

FbxContentCount countFbxContent(const QString& path) {
    const std::string name = QFile::encodeName(path).toStdString();
    {
        const MappedFile mapped(name);
        if (mapped.text().substr(0, BinarySignature.size()) == BinarySignature)
            return countBinary(mapped);
    }
    std::ifstream file(name, std::ios::binary);
    char head[5] = {};
    if (!file.read(head, sizeof head) || std::string_view(head, sizeof head) != "; FBX") return {};
    file.seekg(0);
    return countAscii(file);
}
