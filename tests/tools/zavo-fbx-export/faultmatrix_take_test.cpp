// Hostile takes, as JSON take files and BVH files: numbers that are not finite, names that
// break files, frames that collide in time, extreme rates, poses that are missing or unusable,
// impossible sizes and nesting. Each must export a readable file or be refused with a line
// naming the file, and an earlier export must survive a refusal.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <sstream>
#include <string_view>

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

// Rows of one matrix: each input file is written beside the case folders, as take<i>.<ext>.
class TakeRows {
public:
    TakeRows(const QTemporaryDir& root, const char* extension)
        : m_root(root), m_extension(extension) {}

    void add(const char* kind, const std::string& label, const QByteArray& input,
             const Expectation& expected, const QStringList& extraArguments = {}) {
        writeFile(m_root.filePath(nextInput()), input);
        addRow(kind, label, expected, extraArguments);
    }
    // A row whose input is a link to `target`.
    void addLink(const char* kind, const std::string& label, const QString& target,
                 const Expectation& expected) {
        QFile::link(target, m_root.filePath(nextInput()));
        addRow(kind, label, expected, {});
    }
    const std::vector<MatrixRow>& rows() const { return m_rows; }

private:
    QString nextInput() const { return QString("take%1.%2").arg(m_rows.size()).arg(m_extension); }
    void addRow(const char* kind, const std::string& label, const Expectation& expected,
                const QStringList& extraArguments) {
        const QString input = nextInput();
        m_rows.push_back({kind, label,
                          QStringList{"--format", "binary"} + extraArguments +
                              QStringList{input, caseFolder(m_root, m_rows.size()) + "/out.fbx"},
                          expected});
    }

    const QTemporaryDir& m_root;
    const char* m_extension;
    std::vector<MatrixRow> m_rows;
};

}  // namespace

TEST(TakeFaultMatrix, JsonTakesExportOrAreRefusedNamingTheFile) {
    QTemporaryDir root;
    TakeRows rows(root, "json");
    const Take take = markedTake();
    const Expectation refused{Outcome::Refused, {".json"}}, either{Outcome::Either, {}, takeFrames};
    const auto withFrameRate = [&](const QByteArray& rate) {
        return takeText(take).replace("\"frameRate\":60", "\"frameRate\":" + rate);
    };
    for (const char* word : {"1e999", "-1e999", "NaN", "Infinity"})
        rows.add("non-finite numbers", std::string("position ") + word, takeText(take, word),
                 refused);
    rows.add("non-finite numbers", "orientation w 1e999", takeText(take, "0.5", "1e999"), refused);
    rows.add("non-finite numbers", "orientation x nan", takeText(take, "0.5", "1", "nan"), refused);
    rows.add("non-finite numbers", "frameRate -1e999", withFrameRate("-1e999"), refused);

    rows.add("overflowing numbers", "orientation [1e300, 1e300, 0, 0]",
             takeText(take, "0.5", "1e300", "1e300"), either);
    rows.add("overflowing numbers", "orientation [0, 0, 0, 0]", takeText(take, "0.5", "0", "0"),
             either);
    rows.add("overflowing numbers", "position 1e308 at scale 100", takeText(take, "1e308"), either);
    rows.add("overflowing numbers", "--scale 1e308", takeText(take), either, {"--scale", "1e308"});

    rows.add("names", "duplicate segment name", takeText(withName(5, take.segmentNames[4])),
             {Outcome::Refused, {".json", "segmentNames[5]"}});
    for (const auto& [label, name] :
         {std::pair<const char*, std::string_view>{"line break", "Left\nHand"},
          {"carriage return", "Left\rHand"},
          {"NUL", std::string_view("Left\0Hand", 9)}})
        rows.add("names", std::string(label) + " in a name",
                 takeText(withName(4, std::string(name))), refused);
    rows.add("names", "tab in a name", takeText(withName(4, "Left\tHand")), either);

    rows.add("frame times", "every frame at time 0", takeText(withFrameTimes({0, 0, 0, 0, 0})),
             {Outcome::Written,
              {},
              takeFrames,
              "4 of 5 frames share a key time with an earlier frame; the file keeps the last of "
              "each"});
    rows.add("frame times", "pairs of frames at one time",
             takeText(withFrameTimes({0, 0, 17, 17, 33})),
             {Outcome::Written, {}, takeFrames, "2 of 5 frames share a key time"});
    const QByteArray early = takeText(withFrameTimes({-5000, -4983, -4967, -4950, -4933}));
    rows.add("frame times", "every frame before the recording start", early, either);
    rows.add("frame times", "every frame before the recording start, real start time", early,
             either, {"--time-start", "real"});

    for (const auto& [label, text] :
         {std::pair{"1e9 Hz", takeText(withRate(1e9))}, {"1e-7 Hz", withFrameRate("1e-7")}}) {
        rows.add("frame rates", label, text, either);
        rows.add("frame rates", std::string(label) + ", fixed increments", text, either,
                 {"--time-increment", "fixed"});
    }
    rows.add("frame rates", "1e308 Hz", withFrameRate("1e308"), either);

    rows.add("missing poses", "first frame without a pose", takeText(withFirstPose(std::nullopt)),
             {Outcome::Written, {}, takeFrames, "have no usable pose and were left out"});
    rows.add("missing poses", "first frame invalid", takeText(withFirstPose(invalidPose())),
             either);
    rows.add("missing poses", "first frame invalid, no calibration pose",
             takeText(withFirstPose(invalidPose())), either, {"--no-calibration-pose"});

    rows.add("sizes", "firstFrame 2000000000",
             takeText(take).replace("\"firstFrame\":0", "\"firstFrame\":2000000000"), refused);
    rows.add("sizes", "nesting 100000 deep",
             "{\"format\":\"zavo-take\",\"version\":1,\"userComment\":" +
                 QByteArray("[").repeated(100000),
             refused);
    runMatrix("JSON takes", root, rows.rows(), 5000);
}

TEST(TakeFaultMatrix, BvhFilesExportOrAreRefusedNamingFileAndLine) {
    QTemporaryDir root;
    TakeRows rows(root, "bvh");
    const Expectation refused{Outcome::Refused, {".bvh"}}, either{Outcome::Either, {}, 4};
    for (const char* word : {"nan", "inf", "-inf", "1e999"})
        rows.add("non-finite numbers", std::string("BVH ") + word, bvhText("0.0333333", "4", word),
                 {Outcome::Refused, {".bvh", "line"}});
    rows.add("overflowing numbers", "--bvh-unit 1e308", bvhText(), either, {"--bvh-unit", "1e308"});

    rows.add("sizes", "Frames: 2000000000", bvhText("0.0333333", "2000000000"), refused);
    rows.add("sizes", "Frames: -1", bvhText("0.0333333", "-1"), refused);
    rows.add("sizes", "empty file", "", refused);
    rows.addLink("sizes", "/dev/zero as a BVH file", "/dev/zero",
                 {Outcome::Refused, {".bvh", "line 1: expected HIERARCHY"}});
    // Joints nest to any depth.
    rows.add("sizes", "30,000 nested joints", deeplyNestedBvh(), {Outcome::Written, {}, 1});

    for (const char* frameTime : {"100000", "1e-7", "0", "-0.0333333"})
        rows.add("frame rates", std::string("Frame Time: ") + frameTime, bvhText(frameTime),
                 either);
    rows.add("names", "BVH joint name twice", bvhText().replace("JOINT Head", "JOINT Spine"),
             either);
    for (const auto& [label, end] : {std::pair{"LF", "\n"}, {"CRLF", "\r\n"}, {"CR only", "\r"}})
        rows.add("line ends", std::string("BVH with ") + label, bvhText().replace("\n", end),
                 {Outcome::Written, {}, 4});
    runMatrix("BVH files", root, rows.rows(), 5000);
}
