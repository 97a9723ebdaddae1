#include "fbxcontentcount.h"

#include <QFile>
#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

namespace {

constexpr char BinaryMagic[] = "Kaydara FBX Binary  \0\x1a\0";
constexpr size_t BinaryMagicSize = 23;
constexpr size_t BinaryHeaderSize = 27;

// The header of one binary record: where it ends, its values and its children.
struct Record {
    uint64_t end = 0;  // 0: the null record closing a list
    std::string name;
    uint64_t valuesStart = 0;
    uint64_t childrenStart = 0;
};

class BinaryFbx {
public:
    BinaryFbx(std::ifstream& file, uint64_t size, bool wide)
        : m_file(file), m_size(size), m_wide(wide) {}

    bool record(uint64_t pos, Record& record) {
        const uint64_t slot = m_wide ? 8 : 4;
        uint64_t end = 0, values = 0, valuesLength = 0;
        unsigned char nameLength = 0;
        if (!read(pos, end, slot) || !read(pos + slot, values, slot) ||
            !read(pos + 2 * slot, valuesLength, slot) || !read(pos + 3 * slot, nameLength, 1))
            return false;
        record.end = end;
        record.name.assign(nameLength, '\0');
        if (nameLength && !readBytes(pos + 3 * slot + 1, record.name.data(), nameLength))
            return false;
        record.valuesStart = pos + 3 * slot + 1 + nameLength;
        record.childrenStart = record.valuesStart + valuesLength;
        return end == 0 || (end > pos && end <= m_size);
    }

    // Visits the children of `parent`; stops at the null record or a damaged one.
    template <typename Visit>
    bool children(const Record& parent, Visit&& visit) {
        for (uint64_t pos = parent.childrenStart; pos < parent.end;) {
            Record child;
            if (!record(pos, child)) return false;
            if (child.end == 0) break;
            visit(child);
            pos = child.end;
        }
        return true;
    }

    // Element count of the array value that opens `record`, or -1.
    int64_t arrayLength(const Record& record) {
        char type = 0;
        uint32_t length = 0;
        if (!read(record.valuesStart, type, 1) || !std::strchr("fdlib", type) || type == '\0' ||
            !read(record.valuesStart + 1, length, 4))
            return -1;
        return length;
    }

    template <typename T>
    bool read(uint64_t pos, T& value, uint64_t size) {
        uint64_t raw = 0;
        if (!readBytes(pos, &raw, size)) return false;
        std::memcpy(&value, &raw, sizeof(T));
        return true;
    }

private:
    bool readBytes(uint64_t pos, void* out, uint64_t size) {
        if (pos + size > m_size) return false;
        m_file.seekg(static_cast<std::streamoff>(pos));
        return static_cast<bool>(
            m_file.read(static_cast<char*>(out), static_cast<std::streamsize>(size)));
    }

    std::ifstream& m_file;
    uint64_t m_size;
    bool m_wide;
};

void countCurve(BinaryFbx& fbx, const Record& curve, FbxContentCount& count) {
    ++count.curves;
    fbx.children(curve, [&](const Record& field) {
        if (field.name != "KeyTime") return;
        const int64_t keys = std::max<int64_t>(0, fbx.arrayLength(field));
        count.keys += keys;
        count.mostKeys = std::max(count.mostKeys, keys);
    });
}

FbxContentCount countBinary(std::ifstream& file, uint64_t size) {
    FbxContentCount count;
    BinaryFbx fbx(file, size, false);
    uint32_t version = 0;
    if (!fbx.read(BinaryMagicSize, version, 4)) return count;
    BinaryFbx records(file, size, version >= 7500);
    bool ok = true;
    for (uint64_t pos = BinaryHeaderSize; ok && pos < size;) {
        Record top;
        if (!records.record(pos, top) || top.end == 0) break;
        if (top.name == "Objects")
            ok = records.children(top, [&](const Record& object) {
                if (object.name == "Model") ++count.nodes;
                if (object.name == "AnimationCurve") countCurve(records, object, count);
            });
        pos = top.end;
    }
    count.readable = ok;
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
    std::ifstream file(QFile::encodeName(path).toStdString(), std::ios::binary);
    char head[BinaryMagicSize] = {};
    if (!file.read(head, BinaryMagicSize)) return {};
    if (std::memcmp(head, BinaryMagic, BinaryMagicSize) == 0) {
        file.seekg(0, std::ios::end);
        const auto size = static_cast<uint64_t>(file.tellg());
        return countBinary(file, size);
    }
    if (std::string_view(head, 5) != "; FBX") return {};
    file.seekg(0);
    return countAscii(file);
}
