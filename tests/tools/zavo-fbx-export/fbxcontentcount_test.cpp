// The run summary counts what a written file holds: both encodings of one export count alike,
// the binary count (array lengths only, nothing inflated) agrees with the full read, and a
// damaged or foreign file never reads as counted.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <tuple>

#include "fbxcontentcount.h"
#include "fbxfile/fbxbinaryreader.h"

namespace {

QString golden(const char* name) {
    return QDir(ZAVO_GOLDEN_DATA_DIR).filePath(QString::fromLatin1(name));
}

auto numbers(const FbxContentCount& count) {
    return std::tuple(count.nodes, count.curves, count.keys, count.mostKeys);
}

// The same numbers taken from the fully read and inflated file.
FbxContentCount countFromFullRead(const QString& path) {
    fbxfile::File file;
    std::string error;
    FbxContentCount count;
    count.readable = fbxfile::ReadBinaryFile(path.toStdString(), file, error);
    const fbxfile::Record* objects = file.Find("Objects");
    if (!objects) return count;
    count.nodes = static_cast<int64_t>(objects->Children("Model").size());
    for (const fbxfile::Record* curve : objects->Children("AnimationCurve")) {
        const auto keys = static_cast<int64_t>(curve->Find("KeyTime")->values.at(0).ints.size());
        ++count.curves;
        count.keys += keys;
        count.mostKeys = std::max(count.mostKeys, keys);
    }
    return count;
}

TEST(FbxContentCount, BothEncodingsCountAsTheFullReadDoes) {
    const FbxContentCount binary = countFbxContent(golden("small-take-binary.fbx"));
    const FbxContentCount ascii = countFbxContent(golden("small-take-ascii.fbx"));
    const FbxContentCount full = countFromFullRead(golden("small-take-binary.fbx"));
    ASSERT_TRUE(binary.readable && ascii.readable && full.readable);
    EXPECT_GT(full.keys, full.curves);
    EXPECT_EQ(numbers(binary), numbers(full));
    EXPECT_EQ(numbers(ascii), numbers(full));
}

TEST(FbxContentCount, DamagedOrForeignFilesAreNotCounted) {
    QTemporaryDir dir;
    QFile binary(golden("small-take-binary.fbx")), ascii(golden("small-take-ascii.fbx"));
    ASSERT_TRUE(binary.open(QIODevice::ReadOnly) && ascii.open(QIODevice::ReadOnly));
    const QByteArray binaryBytes = binary.readAll(), asciiBytes = ascii.readAll();
    const std::vector<std::pair<const char*, QByteArray>> cases = {
        {"binary cut in the middle", binaryBytes.left(binaryBytes.size() / 2)},
        {"binary without its footer", binaryBytes.left(binaryBytes.size() - 16)},
        {"binary header only", binaryBytes.left(27)},
        {"ascii cut inside a block", asciiBytes.left(asciiBytes.size() / 2)},
        {"no FBX at all", QByteArray("Kaydara FBX Text")},
        {"empty", QByteArray()},
    };
    for (const auto& [name, bytes] : cases) {
        QFile file(dir.filePath(QStringLiteral("f.fbx")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        EXPECT_FALSE(countFbxContent(file.fileName()).readable) << name;
    }
}

}  // namespace
