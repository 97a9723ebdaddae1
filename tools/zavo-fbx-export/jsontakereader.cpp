#include "jsontakereader.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDateTime>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "jsonscanner.h"
#include "takeerror.h"

namespace {

// Where in the take the reader is: object keys and list indices.
struct PathPart {
    std::string_view key;  // empty for a list element
    size_t index = 0;
};

// Which per-pose times the file gave; the others follow from the frame index.
struct PoseTimes {
    bool frameTime = false;
    bool absoluteTime = false;
};

class TakeJsonReader {
public:
    explicit TakeJsonReader(JsonScanner& scanner) : m_scanner(scanner) {}

    Take read();
    std::string pathText() const;

private:
    template <typename Member>
    void readObject(const char* what, Member&& member);
    template <typename Element>
    void readList(const char* what, Element&& element);

    void readTopMember(Take& take, const std::string& key);
    void readPose(TakePose& pose, PoseTimes& times);
    void readPoseMember(TakePose& pose, PoseTimes& times, const std::string& key);
    void readStates(std::vector<SegmentState>& states, size_t expected);
    void readState(SegmentState& state);
    void readFingers(std::vector<SegmentState>& fingers);
    void readFingerNames(Take& take);
    void readFrames(Take& take);
    void readJoints(Take& take);
    void readRecordStartTime(Take& take);
    std::vector<std::string> readStrings();
    int64_t readInteger(double min, double max);
    std::string readString();
    void resolveTimes(Take& take) const;

    void push(std::string_view key) { m_path.push_back({key, 0}); }
    void push(size_t index) { m_path.push_back({{}, index}); }
    void pop() { m_path.pop_back(); }

    JsonScanner& m_scanner;
    std::vector<PathPart> m_path;
    std::string m_key;
    std::vector<PoseTimes> m_frameTimes;
    PoseTimes m_nullPoseTimes;
    size_t m_segmentHint = 0;
};

template <typename Member>
void TakeJsonReader::readObject(const char* what, Member&& member) {
    m_scanner.expect('{', what);
    if (m_scanner.consumeIf('}')) return;
    do {
        m_scanner.readString(m_key);
        m_scanner.expect(':', "':'");
        member(m_key);
    } while (m_scanner.consumeIf(','));
    m_scanner.expect('}', "',' or '}'");
}

template <typename Element>
void TakeJsonReader::readList(const char* what, Element&& element) {
    m_scanner.expect('[', what);
    if (m_scanner.consumeIf(']')) return;
    size_t index = 0;
    do {
        push(index);
        element(index++);
        pop();
    } while (m_scanner.consumeIf(','));
    m_scanner.expect(']', "',' or ']'");
}

std::string TakeJsonReader::pathText() const {
    std::string text;
    for (const PathPart& part : m_path) {
        if (part.key.empty()) {
            text += '[' + std::to_string(part.index) + ']';
        } else {
            if (!text.empty()) text += '.';
            text += part.key;
        }
    }
    return text;
}

int64_t TakeJsonReader::readInteger(double min, double max) {
    const double value = m_scanner.readNumber();
    if (value != std::trunc(value)) m_scanner.fail("expected an integer");
    if (value < min || value > max) m_scanner.fail("integer out of range");
    return static_cast<int64_t>(value);
}

std::string TakeJsonReader::readString() {
    std::string text;
    m_scanner.readString(text);
    return text;
}

std::vector<std::string> TakeJsonReader::readStrings() {
    std::vector<std::string> strings;
    readList("a list of names", [&](size_t) { strings.push_back(readString()); });
    return strings;
}

Take TakeJsonReader::read() {
    Take take;
    bool seen[5] = {};  // format, version, frameRate, segmentNames, frames
    static constexpr std::string_view required[5] = {"format", "version", "frameRate",
                                                     "segmentNames", "frames"};
    readObject("'{' (a take is one JSON object)", [&](const std::string& key) {
        for (int i = 0; i < 5; ++i)
            if (key == required[i]) seen[i] = true;
        readTopMember(take, key);
    });
    m_scanner.expectEnd();
    for (int i = 0; i < 5; ++i)
        if (!seen[i]) throw TakeError("missing field " + std::string(required[i]));
    resolveTimes(take);
    return take;
}

void TakeJsonReader::readTopMember(Take& take, const std::string& key) {
    if (key == "format") {
        push("format");
        const std::string format = readString();
        if (format != "zavo-take")
            m_scanner.fail("expected \"zavo-take\", found \"" + format + "\"");
    } else if (key == "version") {
        push("version");
        const int64_t version = readInteger(-1e9, 1e9);
        if (version != 1)
            m_scanner.fail("version " + std::to_string(version) +
                           " is not supported (this program reads version 1)");
    } else if (key == "frameRate") {
        push("frameRate");
        take.frameRate = m_scanner.readNumber();
        if (!(take.frameRate > 0.0)) m_scanner.fail("expected a number above 0");
    } else if (key == "recordStartTime") {
        push("recordStartTime");
        readRecordStartTime(take);
    } else if (key == "userComment") {
        push("userComment");
        take.userComment = readString();
    } else if (key == "hasBody") {
        push("hasBody");
        take.hasBody = m_scanner.readBool();
    } else if (key == "firstFrame") {
        push("firstFrame");
        take.firstFrame = static_cast<int>(readInteger(0, 2147483647.0));
    } else if (key == "segmentNames") {
        push("segmentNames");
        take.segmentNames = readStrings();
    } else if (key == "props") {
        push("props");
        take.props.emplace();
        readList("a list of segment indices",
                 [&](size_t) { take.props->push_back(static_cast<int>(readInteger(-1e9, 1e9))); });
    } else if (key == "fingerSegmentNames") {
        push("fingerSegmentNames");
        readFingerNames(take);
    } else if (key == "joints") {
        push("joints");
        readJoints(take);
    } else if (key == "nullPose") {
        push("nullPose");
        take.nullPose.reset();
        if (!m_scanner.consumeNull()) readPose(take.nullPose.emplace(), m_nullPoseTimes);
    } else if (key == "frames") {
        push("frames");
        readFrames(take);
    } else {
        push(key);  // unknown fields are left for newer readers
        m_scanner.skipValue();
    }
    pop();
}

void TakeJsonReader::readRecordStartTime(Take& take) {
    const std::string text = readString();
    const QDateTime time = QDateTime::fromString(QString::fromStdString(text), Qt::ISODateWithMs);
    if (!time.isValid() || time.timeSpec() == Qt::LocalTime)
        m_scanner.fail(
            "expected an ISO 8601 time with a zone, such as "
            "2026-04-30T14:03:12.250Z, found \"" +
            text + "\"");
    take.recordStartTime = time.toMSecsSinceEpoch();
    take.recordStartUtcOffset = time.offsetFromUtc();
}

void TakeJsonReader::readFingerNames(Take& take) {
    readObject("'{' with left and right", [&](const std::string& key) {
        if (key != "left" && key != "right") m_scanner.fail("expected left or right");
        const int hand = key == "left" ? 0 : 1;
        push(hand == 0 ? "left" : "right");
        take.fingerNames[hand] = readStrings();
        if (take.fingerNames[hand].size() != TakePose::FingersPerHand)
            m_scanner.fail("expected 20 names, found " +
                           std::to_string(take.fingerNames[hand].size()));
        pop();
    });
    if (take.fingerNames[0].empty() != take.fingerNames[1].empty())
        m_scanner.fail("expected names for both hands");
}

void TakeJsonReader::readJoints(Take& take) {
    readList("a list of joints", [&](size_t) {
        TakeJoint& joint = take.joints.emplace_back();
        bool parent = false, child = false;
        readObject("'{' with parent and child", [&](const std::string& key) {
            if (key == "parent" || key == "child") {
                push(key == "parent" ? "parent" : "child");
                (key == "parent" ? joint.parent : joint.child) =
                    static_cast<int>(readInteger(-1e9, 1e9));
                (key == "parent" ? parent : child) = true;
                pop();
            } else {
                m_scanner.skipValue();
            }
        });
        if (!parent || !child)
            m_scanner.fail(parent ? "missing field child" : "missing field parent");
    });
}

void TakeJsonReader::readFrames(Take& take) {
    take.frames.clear();
    m_frameTimes.clear();
    readList("a list of poses", [&](size_t) {
        std::optional<TakePose>& frame = take.frames.emplace_back();
        PoseTimes& times = m_frameTimes.emplace_back();
        if (!m_scanner.consumeNull()) readPose(frame.emplace(), times);
    });
}

void TakeJsonReader::readPose(TakePose& pose, PoseTimes& times) {
    bool segments = false;
    readObject("'{' (a pose) or null", [&](const std::string& key) {
        segments = segments || key == "segments";
        readPoseMember(pose, times, key);
    });
    if (!segments) m_scanner.fail("missing field segments");
}

void TakeJsonReader::readPoseMember(TakePose& pose, PoseTimes& times, const std::string& key) {
    if (key == "valid") {
        push("valid");
        pose.valid = m_scanner.readBool();
    } else if (key == "absoluteTime") {
        push("absoluteTime");
        pose.absoluteTime = readInteger(-9.0e15, 9.0e15);
        times.absoluteTime = true;
    } else if (key == "frameTime") {
        push("frameTime");
        pose.frameTime = static_cast<int32_t>(readInteger(-2147483648.0, 2147483647.0));
        times.frameTime = true;
    } else if (key == "poseOffset") {
        push("poseOffset");
        size_t count = 0;
        readList("a list of 2 integers", [&](size_t i) {
            const auto value = static_cast<int32_t>(readInteger(-2147483648.0, 2147483647.0));
            if (i < 2) pose.poseOffset[i] = value;
            ++count;
        });
        if (count != 2) m_scanner.fail("expected 2 integers, found " + std::to_string(count));
    } else if (key == "segments") {
        push("segments");
        readStates(pose.segments, 0);
        m_segmentHint = pose.segments.size();
    } else if (key == "fingers") {
        push("fingers");
        readFingers(pose.fingers);
    } else {
        push(key);
        m_scanner.skipValue();
    }
    pop();
}

// Reads a list of segment states; `expected` (when not 0) is the exact count required.
void TakeJsonReader::readStates(std::vector<SegmentState>& states, size_t expected) {
    states.clear();
    states.reserve(expected ? expected : m_segmentHint);
    readList("a list of segment states", [&](size_t) { readState(states.emplace_back()); });
    if (expected && states.size() != expected)
        m_scanner.fail("expected " + std::to_string(expected) + " finger poses, found " +
                       std::to_string(states.size()));
}

void TakeJsonReader::readState(SegmentState& state) {
    m_scanner.expect('[', "a list of 7 numbers");
    size_t count = 0;
    if (!m_scanner.consumeIf(']')) {
        do {
            const double value = m_scanner.readNumber();
            if (count < 3)
                state.position[count] = value;
            else if (count < 7)
                state.orientation[count - 3] = value;
            ++count;
        } while (m_scanner.consumeIf(','));
        m_scanner.expect(']', "',' or ']'");
    }
    if (count != 7) m_scanner.fail("expected 7 numbers, found " + std::to_string(count));
}

void TakeJsonReader::readFingers(std::vector<SegmentState>& fingers) {
    std::vector<SegmentState> hands[2];
    readObject("'{' with left and right", [&](const std::string& key) {
        if (key != "left" && key != "right") m_scanner.fail("expected left or right");
        const int hand = key == "left" ? 0 : 1;
        push(hand == 0 ? "left" : "right");
        readStates(hands[hand], TakePose::FingersPerHand);
        pop();
    });
    if (hands[0].empty() || hands[1].empty()) m_scanner.fail("expected both hands");
    fingers.clear();
    fingers.reserve(2 * TakePose::FingersPerHand);
    fingers.insert(fingers.end(), hands[0].begin(), hands[0].end());
    fingers.insert(fingers.end(), hands[1].begin(), hands[1].end());
}

void TakeJsonReader::resolveTimes(Take& take) const {
    if (take.nullPose) {
        if (!m_nullPoseTimes.frameTime) take.nullPose->frameTime = 0;
        if (!m_nullPoseTimes.absoluteTime)
            take.nullPose->absoluteTime = take.recordStartTime + take.nullPose->frameTime;
    }
    for (size_t i = 0; i < take.frames.size(); ++i) {
        if (!take.frames[i]) continue;
        TakePose& pose = *take.frames[i];
        if (!m_frameTimes[i].frameTime)
            pose.frameTime = defaultFrameTime(static_cast<int64_t>(i), take.frameRate);
        if (!m_frameTimes[i].absoluteTime)
            pose.absoluteTime = take.recordStartTime + pose.frameTime;
    }
}

Take readTake(JsonScanner& scanner, const std::string& name) {
    TakeJsonReader reader(scanner);
    Take take;
    try {
        take = reader.read();
    } catch (const JsonSyntaxError& error) {
        const std::string path = reader.pathText();
        throw TakeError(name + ": " + (path.empty() ? "" : path + ": ") + error.what() + " (line " +
                        std::to_string(error.line()) + ", column " +
                        std::to_string(error.column()) + ")");
    } catch (const TakeError& error) {
        throw TakeError(name + ": " + error.what());
    }
    if (const std::string problem = takeProblem(take); !problem.empty())
        throw TakeError(name + ": " + problem);
    return take;
}

}  // namespace

Take readTakeFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) throw TakeError(path + ": cannot open: " + std::strerror(errno));
    try {
        JsonScanner scanner(fd);
        Take take = readTake(scanner, path);
        ::close(fd);
        return take;
    } catch (...) {
        ::close(fd);
        throw;
    }
}

Take readTakeText(std::string_view text, const std::string& name) {
    JsonScanner scanner(text);
    return readTake(scanner, name);
}
