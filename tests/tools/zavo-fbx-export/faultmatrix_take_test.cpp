// Hostile takes, as JSON take files and BVH files: numbers that are not finite, names that
// break files, frames that collide in time, extreme rates, poses that are missing or unusable,
// impossible sizes and nesting. Each must export a readable file or be refused with a line
// naming the file, and an earlier export must survive a refusal.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <sstream>

#include "demotake.h"
#include "faultcheck.h"
#include "programrun.h"
#include "takewriter.h"

namespace {

constexpr int takeFrames = 5;

// A small take whose text marks one position and one orientation, so that a row can put any
// spelling of a number there: POS (a position coordinate), QW and QX (an orientation's w, x).
Take markedTake() {
    Take take = makeDemoTake({.frames = takeFrames, .fingers = false, .props = 0});
    take.frames[2]->segments[4].position[0] = 12345.25;
    take.frames[2]->segments[5].orientation = {1111.5, 2222.5, 0.0, 0.0};
    return take;
}

QByteArray takeText(const Take& take, const QByteArray& pos = "0.5", const QByteArray& qw = "1",
                    const QByteArray& qx = "0") {
    std::ostringstream out;
    writeTake(take, out);
    return QByteArray::fromStdString(out.str())
        .replace("12345.25", pos)
        .replace("1111.5", qw)
        .replace("2222.5", qx);
}

Take withName(int index, const std::string& name) {
    Take take = markedTake();
    take.segmentNames[static_cast<size_t>(index)] = name;
    return take;
}

Take withRepeatedName() {
    return withName(5, markedTake().segmentNames[4]);
}

// Frame times in milliseconds since the recording started, one per frame.
Take withFrameTimes(const std::vector<int32_t>& times) {
    Take take = markedTake();
    for (size_t i = 0; i < times.size(); ++i) {
        take.frames[i]->frameTime = times[i];
        take.frames[i]->absoluteTime = take.recordStartTime + times[i];
    }
    return take;
}

Take withRate(double rate) {
    Take take = markedTake();
    take.frameRate = rate;
    for (int i = 0; i < takeFrames; ++i) {
        take.frames[static_cast<size_t>(i)]->frameTime = defaultFrameTime(i, rate);
        take.frames[static_cast<size_t>(i)]->absoluteTime =
            take.recordStartTime + defaultFrameTime(i, rate);
    }
    return take;
}

Take withFirstPose(std::optional<TakePose> pose) {
    Take take = markedTake();
    take.frames[0] = std::move(pose);
    return take;
}

TakePose invalidPose() {
    TakePose pose = *markedTake().frames[1];
    pose.valid = false;
    return pose;
}

// Root, spine and head, four frames; the frame lines and the header's counts can be replaced.
QByteArray bvhText(const QByteArray& frameTime = "0.0333333", const QByteArray& frames = "4",
                   const QByteArray& lastValue = "5") {
    QByteArray text =
        "HIERARCHY\nROOT Hips\n{\n OFFSET 0 0 0\n CHANNELS 6 Xposition Yposition Zposition "
        "Zrotation Xrotation Yrotation\n JOINT Spine\n {\n  OFFSET 0 10 0\n  CHANNELS 3 "
        "Zrotation Xrotation Yrotation\n  JOINT Head\n  {\n   OFFSET 0 10 0\n   CHANNELS 3 "
        "Zrotation Xrotation Yrotation\n   End Site\n   {\n    OFFSET 0 5 0\n   }\n  }\n }\n}\n"
        "MOTION\nFrames: " +
        frames + "\nFrame Time: " + frameTime + "\n";
    for (int f = 0; f < 4; ++f)
        text += QByteArray::number(f) + " 90 " + QByteArray::number(f) + " 0 0 0 " +
                QByteArray::number(f * 10) + " 0 0 0 0 " + (f == 2 ? lastValue : "5") + "\n";
    return text;
}

// 30,000 joints, each the child of the one before: a file about 2 MB long.
QByteArray deeplyNestedBvh() {
    constexpr int depth = 30000;
    QByteArray text =
        "HIERARCHY\nROOT Hips\n{\nOFFSET 0 0 0\nCHANNELS 6 Xposition Yposition "
        "Zposition Zrotation Xrotation Yrotation\n";
    for (int j = 0; j < depth; ++j)
        text += "JOINT J" + QByteArray::number(j) +
                "\n{\nOFFSET 0 1 0\nCHANNELS 3 Zrotation Xrotation Yrotation\n";
    text += "End Site\n{\nOFFSET 0 1 0\n}\n" + QByteArray("}\n").repeated(depth + 1);
    text += "MOTION\nFrames: 1\nFrame Time: 0.0333333\n" + QByteArray("0 ").repeated(6 + 3 * depth);
    return text + "\n";
}

QByteArray duplicateJointBvh() {
    return bvhText().replace("JOINT Head", "JOINT Spine");
}

struct TakeRow {
    std::string kind;
    std::string label;
    QByteArray input;  // file contents; empty with a link target below
    const char* extension;
    Expectation expected;
    QStringList extraArguments = {};
    QString linkTarget = {};
};

Expectation refusedNaming(const char* file) {
    return {Outcome::Refused, {file}};
}

std::vector<TakeRow> jsonRows() {
    const Take take = markedTake();
    const Expectation either{Outcome::Either, {}, takeFrames};
    std::vector<TakeRow> rows = {
        {"non-finite numbers", "position 1e999", takeText(take, "1e999"), "json",
         refusedNaming(".json")},
        {"non-finite numbers", "position -1e999", takeText(take, "-1e999"), "json",
         refusedNaming(".json")},
        {"non-finite numbers", "position NaN", takeText(take, "NaN"), "json",
         refusedNaming(".json")},
        {"non-finite numbers", "position Infinity", takeText(take, "Infinity"), "json",
         refusedNaming(".json")},
        {"non-finite numbers", "orientation w 1e999", takeText(take, "0.5", "1e999"), "json",
         refusedNaming(".json")},
        {"non-finite numbers", "orientation x nan", takeText(take, "0.5", "1", "nan"), "json",
         refusedNaming(".json")},
        {"non-finite numbers", "frameRate -1e999",
         takeText(take).replace("\"frameRate\":60", "\"frameRate\":-1e999"), "json",
         refusedNaming(".json")},
        {"overflowing numbers", "orientation [1e300, 1e300, 0, 0]",
         takeText(take, "0.5", "1e300", "1e300"), "json", either},
        {"overflowing numbers", "orientation [0, 0, 0, 0]", takeText(take, "0.5", "0", "0"), "json",
         either},
        {"overflowing numbers", "position 1e308 at scale 100", takeText(take, "1e308"), "json",
         either},
        {"overflowing numbers",
         "--scale 1e308",
         takeText(take),
         "json",
         either,
         {"--scale", "1e308"}},
        {"names",
         "duplicate segment name",
         takeText(withRepeatedName()),
         "json",
         {Outcome::Refused, {".json", "segmentNames[5]"}}},
        {"names", "line break in a name", takeText(withName(4, "Left\nHand")), "json",
         refusedNaming(".json")},
        {"names", "carriage return in a name", takeText(withName(4, "Left\rHand")), "json",
         refusedNaming(".json")},
        {"names", "NUL in a name", takeText(withName(4, std::string("Left\0Hand", 9))), "json",
         refusedNaming(".json")},
        {"names", "tab in a name", takeText(withName(4, "Left\tHand")), "json", either},
        {"frame times",
         "every frame at time 0",
         takeText(withFrameTimes({0, 0, 0, 0, 0})),
         "json",
         {Outcome::Written,
          {},
          takeFrames,
          "4 of 5 frames share a key time with an earlier frame; the file keeps the last of each"}},
        {"frame times",
         "pairs of frames at one time",
         takeText(withFrameTimes({0, 0, 17, 17, 33})),
         "json",
         {Outcome::Written, {}, takeFrames, "2 of 5 frames share a key time"}},
        {"frame times", "every frame before the recording start",
         takeText(withFrameTimes({-5000, -4983, -4967, -4950, -4933})), "json", either},
        {"frame times",
         "every frame before the recording start, real start time",
         takeText(withFrameTimes({-5000, -4983, -4967, -4950, -4933})),
         "json",
         either,
         {"--time-start", "real"}},
        {"frame rates", "1e9 Hz", takeText(withRate(1e9)), "json", either},
        {"frame rates",
         "1e9 Hz, fixed increments",
         takeText(withRate(1e9)),
         "json",
         either,
         {"--time-increment", "fixed"}},
        {"frame rates", "1e-7 Hz", takeText(take).replace("\"frameRate\":60", "\"frameRate\":1e-7"),
         "json", either},
        {"frame rates",
         "1e-7 Hz, fixed increments",
         takeText(take).replace("\"frameRate\":60", "\"frameRate\":1e-7"),
         "json",
         either,
         {"--time-increment", "fixed"}},
        {"frame rates", "1e308 Hz",
         takeText(take).replace("\"frameRate\":60", "\"frameRate\":1e308"), "json", either},
        {"missing poses",
         "first frame without a pose",
         takeText(withFirstPose(std::nullopt)),
         "json",
         {Outcome::Written, {}, takeFrames, "have no usable pose and were left out"}},
        {"missing poses", "first frame invalid", takeText(withFirstPose(invalidPose())), "json",
         either},
        {"missing poses",
         "first frame invalid, no calibration pose",
         takeText(withFirstPose(invalidPose())),
         "json",
         either,
         {"--no-calibration-pose"}},
        {"sizes", "firstFrame 2000000000",
         takeText(take).replace("\"firstFrame\":0", "\"firstFrame\":2000000000"), "json",
         refusedNaming(".json")},
        {"sizes", "nesting 100000 deep",
         "{\"format\":\"zavo-take\",\"version\":1,\"userComment\":" +
             QByteArray("[").repeated(100000),
         "json", refusedNaming(".json")},
    };
    return rows;
}

std::vector<TakeRow> bvhRows() {
    const Expectation refusedWithLine{Outcome::Refused, {".bvh", "line"}};
    const Expectation either{Outcome::Either, {}, 4};
    return {
        {"non-finite numbers", "BVH nan", bvhText("0.0333333", "4", "nan"), "bvh", refusedWithLine},
        {"non-finite numbers", "BVH inf", bvhText("0.0333333", "4", "inf"), "bvh", refusedWithLine},
        {"non-finite numbers", "BVH -inf", bvhText("0.0333333", "4", "-inf"), "bvh",
         refusedWithLine},
        {"non-finite numbers", "BVH 1e999", bvhText("0.0333333", "4", "1e999"), "bvh",
         refusedWithLine},
        {"overflowing numbers",
         "--bvh-unit 1e308",
         bvhText(),
         "bvh",
         either,
         {"--bvh-unit", "1e308"}},
        {"sizes",
         "Frames: 2000000000",
         bvhText("0.0333333", "2000000000"),
         "bvh",
         {Outcome::Refused, {".bvh"}}},
        {"sizes", "Frames: -1", bvhText("0.0333333", "-1"), "bvh", {Outcome::Refused, {".bvh"}}},
        {"sizes", "empty file", "", "bvh", {Outcome::Refused, {".bvh"}}},
        {"sizes",
         "/dev/zero as a BVH file",
         "",
         "bvh",
         {Outcome::Refused, {".bvh"}},
         {},
         "/dev/zero"},
        {"sizes", "30,000 nested joints", deeplyNestedBvh(), "bvh", {Outcome::Either, {}, 1}},
        {"frame rates", "Frame Time: 100000", bvhText("100000"), "bvh", either},
        {"frame rates", "Frame Time: 1e-7", bvhText("1e-7"), "bvh", either},
        {"frame rates", "Frame Time: 0", bvhText("0"), "bvh", either},
        {"frame rates", "Frame Time: -0.0333333", bvhText("-0.0333333"), "bvh", either},
        {"names", "BVH joint name twice", duplicateJointBvh(), "bvh", either},
        {"line ends", "BVH with LF", bvhText(), "bvh", {Outcome::Written, {}, 4}},
        {"line ends",
         "BVH with CRLF",
         bvhText().replace("\n", "\r\n"),
         "bvh",
         {Outcome::Written, {}, 4}},
        {"line ends",
         "BVH with CR only",
         bvhText().replace('\n', '\r'),
         "bvh",
         {Outcome::Written, {}, 4}},
    };
}

void runTakeMatrix(const std::string& name, const std::vector<TakeRow>& rows) {
    QTemporaryDir folder;
    std::vector<FolderState> before;
    std::vector<QStringList> argumentLists;
    for (size_t i = 0; i < rows.size(); ++i) {
        const TakeRow& row = rows[i];
        const QString input = QString("take%1.%2").arg(i).arg(row.extension);
        if (row.linkTarget.isEmpty())
            writeFile(folder.filePath(input), row.input);
        else
            QFile::link(row.linkTarget, folder.filePath(input));
        const QString caseFolder = QString("case%1").arg(i);
        QDir(folder.path()).mkdir(caseFolder);
        writeFile(folder.filePath(caseFolder + "/out.fbx"), "an earlier export");
        before.push_back(folderState(folder.filePath(caseFolder)));
        argumentLists.push_back(QStringList{"--format", "binary"} + row.extraArguments +
                                QStringList{input, caseFolder + "/out.fbx"});
    }
    const std::vector<ProgramRun> runs = runPrograms(folder, argumentLists, 5000);

    MatrixTally tally(name);
    for (size_t i = 0; i < rows.size(); ++i)
        tally.row(rows[i].kind, rows[i].label,
                  unclearOutcome(runs[i], folder.filePath(QString("case%1").arg(i)), "out.fbx",
                                 before[i], rows[i].expected));
    tally.finish();
}

}  // namespace

TEST(TakeFaultMatrix, JsonTakesExportOrAreRefusedNamingTheFile) {
    runTakeMatrix("JSON takes", jsonRows());
}

TEST(TakeFaultMatrix, BvhFilesExportOrAreRefusedNamingFileAndLine) {
    runTakeMatrix("BVH files", bvhRows());
}
