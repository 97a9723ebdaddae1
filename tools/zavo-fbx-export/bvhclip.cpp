#include "bvhclip.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <new>
#include <numbers>
#include <unordered_map>

#include "bvhmotion.h"
#include "takeerror.h"
#include "usablecores.h"

namespace {

// A word of the file and the line it stands on.
struct Token {
    std::string_view text;
    int line = 0;
};

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

bool isControl(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u < 0x20 || u == 0x7f;
}

// A word as a message shows it: control bytes escaped, a long word cut short.
std::string quoted(std::string_view word) {
    constexpr size_t shown = 40;
    std::string text = "'";
    for (char c : word.substr(0, shown)) {
        if (isControl(c)) {
            static constexpr char digits[] = "0123456789abcdef";
            const auto u = static_cast<unsigned char>(c);
            text += "\\x";
            text += digits[u >> 4];
            text += digits[u & 15];
        } else {
            text += c;
        }
    }
    return text + (word.size() > shown ? "...'" : "'");
}

std::string found(std::string_view word) {
    return word.empty() ? "found the end of the file" : "found " + quoted(word);
}

// Splits the text into words and counts lines; a line ends at LF, CRLF or a lone CR.
class BvhLexer {
public:
    BvhLexer(std::string_view text, const std::string& name) : m_text(text), m_name(name) {}

    Token next() {
        skipBlanks();
        const size_t start = m_pos;
        while (m_pos < m_text.size() && !isBvhBlank(m_text[m_pos])) ++m_pos;
        return {m_text.substr(start, m_pos - start), m_line};
    }
    Token peek() {
        const size_t pos = m_pos;
        const int line = m_line;
        const Token token = next();
        m_pos = pos;
        m_line = line;
        return token;
    }
    void expect(std::string_view word) {
        const Token token = next();
        if (!equalsIgnoringCase(token.text, word)) fail(token, "expected " + std::string(word));
    }
    double number(const char* what = "a number") {
        const Token token = next();
        double value = 0.0;
        if (!bvhNumber(token.text, value)) fail(token, std::string("expected ") + what);
        if (!std::isfinite(value)) fail(token, "expected a finite number");
        return value;
    }
    // The rest of the current line, trimmed; the position stays before the line end.
    std::string_view restOfLine() {
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t')) ++m_pos;
        const size_t start = m_pos;
        while (m_pos < m_text.size() && !isBvhLineEnd(m_text[m_pos])) ++m_pos;
        std::string_view line = m_text.substr(start, m_pos - start);
        while (!line.empty() && isBvhBlank(line.back())) line.remove_suffix(1);
        return line;
    }
    // Moves past the end of the current line.
    void skipLineEnd() {
        if (m_pos < m_text.size() && m_text[m_pos] == '\r') ++m_pos;
        if (m_pos < m_text.size() && m_text[m_pos] == '\n') ++m_pos;
        ++m_line;
    }
    size_t position() const { return m_pos; }
    int line() const { return m_line; }
    [[noreturn]] void fail(int line, const std::string& message) const {
        throw TakeError(m_name + ": line " + std::to_string(line) + ": " + message);
    }
    [[noreturn]] void fail(const Token& token, const std::string& message) const {
        fail(token.line, message + ", " + found(token.text));
    }

private:
    void skipBlanks() {
        while (m_pos < m_text.size() && isBvhBlank(m_text[m_pos])) {
            const char c = m_text[m_pos++];
            // CRLF counts once, at its LF.
            if (c == '\n' || (c == '\r' && (m_pos == m_text.size() || m_text[m_pos] != '\n')))
                ++m_line;
        }
    }

    std::string_view m_text;
    const std::string& m_name;
    size_t m_pos = 0;
    int m_line = 1;
};

bool channelFromName(std::string_view name, BvhChannel& channel) {
    static constexpr std::pair<std::string_view, BvhChannel> names[] = {
        {"Xposition", BvhChannel::XPosition}, {"Yposition", BvhChannel::YPosition},
        {"Zposition", BvhChannel::ZPosition}, {"Xrotation", BvhChannel::XRotation},
        {"Yrotation", BvhChannel::YRotation}, {"Zrotation", BvhChannel::ZRotation}};
    for (const auto& [text, value] : names)
        if (equalsIgnoringCase(name, text)) {
            channel = value;
            return true;
        }
    return false;
}

class BvhParser {
public:
    BvhParser(std::string_view text, const std::string& name, int parts)
        : m_lexer(text, name), m_text(text), m_parts(parts) {}

    BvhClip parse() {
        m_lexer.expect("HIERARCHY");
        m_lexer.expect("ROOT");
        readHierarchy();
        if (equalsIgnoringCase(m_lexer.peek().text, "ROOT"))
            m_lexer.fail(m_lexer.peek(), "expected MOTION (only one ROOT is supported)");
        m_lexer.expect("MOTION");
        readMotionHeader();
        readFrames();
        return std::move(m_clip);
    }

private:
    // Joints nest as deep as the file likes, so the open ones are kept on a list rather than
    // on the call stack.
    void readHierarchy() {
        std::vector<int> open{readJoint(-1)};
        while (!open.empty()) {
            const Token token = m_lexer.next();
            if (token.text == "}") {
                open.pop_back();
            } else if (equalsIgnoringCase(token.text, "JOINT")) {
                open.push_back(readJoint(open.back()));
            } else if (equalsIgnoringCase(token.text, "End")) {
                readEndSite();
            } else {
                m_lexer.fail(token, "expected JOINT, End Site or '}'");
            }
        }
    }

    // Reads a joint's name, offset and channels, up to its children; returns its index.
    int readJoint(int parent) {
        BvhJoint joint;
        joint.parent = parent;
        const int line = m_lexer.line();
        joint.name = std::string(m_lexer.restOfLine());
        const bool braceOnLine = !joint.name.empty() && joint.name.back() == '{';
        if (braceOnLine) {
            joint.name.pop_back();
            while (!joint.name.empty() && isBvhBlank(joint.name.back())) joint.name.pop_back();
        }
        const int index = static_cast<int>(m_clip.joints.size());
        checkName(joint.name, index, line);
        if (!braceOnLine) m_lexer.expect("{");
        m_lexer.expect("OFFSET");
        joint.offset = {m_lexer.number(), m_lexer.number(), m_lexer.number()};
        readChannels(joint);
        m_clip.joints.push_back(std::move(joint));
        return index;
    }

    // The name matches body segments and stands in messages, so it must be one of its own
    // and printable.
    void checkName(const std::string& name, int index, int line) {
        const std::string joint = "joint " + std::to_string(index);
        if (name.empty()) m_lexer.fail(line, joint + ": expected a name");
        if (std::any_of(name.begin(), name.end(), isControl))
            m_lexer.fail(line, joint + ": expected a name without control characters, found " +
                                   quoted(name));
        std::string key = name;
        std::transform(key.begin(), key.end(), key.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        const auto [known, added] = m_names.emplace(std::move(key), index);
        if (!added)
            m_lexer.fail(line, joint + ": expected a name of its own, found " + quoted(name) +
                                   ", the name of joint " + std::to_string(known->second));
    }

    void readChannels(BvhJoint& joint) {
        m_lexer.expect("CHANNELS");
        const Token countToken = m_lexer.peek();
        const double count = m_lexer.number("a channel count from 0 to 6");
        if (count < 0 || count > 6 || count != static_cast<int>(count))
            m_lexer.fail(countToken, "expected a channel count from 0 to 6");
        joint.firstChannel = m_clip.channelCount;
        for (int i = 0; i < static_cast<int>(count); ++i) {
            const Token token = m_lexer.next();
            BvhChannel channel;
            if (!channelFromName(token.text, channel))
                m_lexer.fail(token, "expected a channel name such as Zrotation");
            joint.channels.push_back(channel);
        }
        m_clip.channelCount += static_cast<int>(count);
    }

    void readEndSite() {
        m_lexer.expect("Site");
        m_lexer.expect("{");
        m_lexer.expect("OFFSET");
        for (int i = 0; i < 3; ++i) m_lexer.number();  // where the bone ends; no motion
        m_lexer.expect("}");
    }

    void readMotionHeader() {
        m_lexer.expect("Frames:");
        const Token framesToken = m_lexer.peek();
        const double frames = m_lexer.number("a frame count");
        if (frames < 1 || frames > INT_MAX || frames != std::floor(frames))
            m_lexer.fail(framesToken,
                         "expected a frame count from 1 to " + std::to_string(INT_MAX));
        m_lexer.expect("Frame");
        m_lexer.expect("Time:");
        const Token timeToken = m_lexer.peek();
        m_clip.frameTime = m_lexer.number("a frame time");
        if (!(m_clip.frameTime > 0.0)) m_lexer.fail(timeToken, "expected a frame time above 0");
        m_clip.frameTimeText = std::string(timeToken.text);
        if (const std::string_view rest = m_lexer.restOfLine(); !rest.empty())
            m_lexer.fail(timeToken.line,
                         "expected the end of the line after the frame time, " + found(rest));
        checkFrameCount(framesToken, static_cast<int>(frames));
        m_clip.frameCount = static_cast<int>(frames);
    }

    // A frame needs at least one digit and one separator per channel; a count the rest of the
    // file cannot hold is refused before any room is made for it.
    void checkFrameCount(const Token& framesToken, int frames) {
        if (m_clip.channelCount == 0)
            m_lexer.fail(framesToken.line, "expected a hierarchy with at least one channel");
        const size_t left = m_text.size() - m_lexer.position();
        const size_t most = (left + 1) / (2 * static_cast<size_t>(m_clip.channelCount));
        if (static_cast<size_t>(frames) > most)
            m_lexer.fail(framesToken, "expected at most " + std::to_string(most) +
                                          " frames, as many as the rest of the file can hold");
    }

    void readFrames() {
        m_lexer.skipLineEnd();
        const int firstLine = m_lexer.line();
        const size_t most =
            static_cast<size_t>(m_clip.frameCount) * static_cast<size_t>(m_clip.channelCount);
        std::vector<BvhFrameLines> runs =
            readBvhFrameLines(m_text.substr(m_lexer.position()), motionParts(), most);
        int line = firstLine;
        int frame = 0;
        std::vector<int> runFrames;
        for (const BvhFrameLines& run : runs) {
            const int before = frame;
            checkFrameLines(run, line, frame);
            runFrames.push_back(frame - before);
        }
        if (frame < m_clip.frameCount)
            m_lexer.fail(std::max(firstLine, line - 1),
                         "expected " + std::to_string(m_clip.frameCount) +
                             " frames as Frames: says, found the end of the file after " +
                             std::to_string(frame));
        for (size_t k = 0; k < runs.size(); ++k)
            m_clip.values.append(std::move(runs[k].values), runFrames[k], m_clip.channelCount);
    }

    // A clip of a few megabytes is read on one thread; a longer one in a part per core.
    int motionParts() const {
        if (m_parts > 0) return m_parts;
        constexpr size_t leastPart = 4 << 20;
        const size_t bytes = m_text.size() - m_lexer.position();
        return static_cast<int>(std::clamp<size_t>(
            std::min<size_t>(bytes / leastPart, static_cast<size_t>(usableCores())), 1, 8));
    }

    // Checks a run of frame lines read ahead, from line `line` and frame `frame` on, the way a
    // reading front to back meets them: a line of numbers is a frame, a blank line nothing.
    void checkFrameLines(const BvhFrameLines& run, int& line, int& frame) {
        for (const int count : run.counts) {
            if (count > 0) {
                if (frame >= m_clip.frameCount)
                    m_lexer.fail(line, "expected the end of the file after the " +
                                           std::to_string(m_clip.frameCount) +
                                           " frames that Frames: announces, found more");
                if (count != m_clip.channelCount)
                    m_lexer.fail(line, "frame " + std::to_string(frame) + ": expected " +
                                           std::to_string(m_clip.channelCount) +
                                           " numbers, found " + std::to_string(count));
                ++frame;
            }
            ++line;
        }
        if (run.hasBadWord)
            m_lexer.fail(line, "frame " + std::to_string(frame) + ": expected a finite number, " +
                                   found(run.badWord));
    }

    BvhLexer m_lexer;
    std::string_view m_text;
    int m_parts;
    BvhClip m_clip;
    std::unordered_map<std::string, int> m_names;  // lower-case name to joint index
};

takemath::Quat channelRotation(BvhChannel channel, double degrees) {
    const double radians = degrees * std::numbers::pi / 180.0;
    switch (channel) {
        case BvhChannel::XRotation:
            return takemath::axisAngle({1, 0, 0}, radians);
        case BvhChannel::YRotation:
            return takemath::axisAngle({0, 1, 0}, radians);
        default:
            return takemath::axisAngle({0, 0, 1}, radians);
    }
}

// Whether the first block read already shows that this is no BVH text (a device, a binary
// file), so that reading on is futile.
bool plainlyNoBvh(std::string_view head) {
    const auto word = std::find_if_not(head.begin(), head.end(), isBvhBlank);
    if (word == head.end()) return false;  // only blanks so far
    return !equalsIgnoringCase(std::string_view(word, head.end()).substr(0, 9), "HIERARCHY");
}

// The bytes of a regular file, or 0 for a file of another kind.
size_t regularFileSize(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return static_cast<size_t>(status.st_size);
}

// The text of a BVH file, read rather than mapped: a mapped file cut short while it is parsed
// would end the program with a bus error. The first block comes alone, so that a device or a
// file of another kind ends there rather than filling the memory; a regular file's rest follows
// in one read, anything written since in further blocks.
std::string readBvhText(std::ifstream& file, const std::string& path) {
    std::string text;
    std::string block(1 << 16, '\0');
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) ||
           file.gcount() > 0) {
        const bool first = text.empty();
        text.append(block.data(), static_cast<size_t>(file.gcount()));
        if (!first) continue;
        if (plainlyNoBvh(text)) return text;
        if (const size_t size = regularFileSize(path); size > text.size()) {
            const size_t read = text.size();
            text.resize(size);
            file.read(text.data() + read, static_cast<std::streamsize>(size - read));
            text.resize(read + static_cast<size_t>(file.gcount()));
        }
    }
    if (file.bad()) throw TakeError(path + ": cannot read");
    return text;
}

}  // namespace

// Most numbers of a clip are short decimals such as -12.3456: their digits make an integer
// and their decimals a power of ten that a double holds exactly, so that one division rounds
// the number just as the library's reading does, only faster.
const char* bvhShortDecimal(const char* begin, const char* end, double& value) {
    static constexpr double powersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                             1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    constexpr long mostDigits = 15;  // below 2^53, so every such integer is exact
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool negative = begin < end && *begin == '-';
    const char* pos = negative ? begin + 1 : begin;
    uint64_t digits = 0;  // wraps harmlessly on a word of too many digits, which is refused
    const char* const whole = pos;
    while (pos < end && isDigit(*pos)) digits = digits * 10 + static_cast<uint64_t>(*pos++ - '0');
    const long wholeCount = pos - whole;
    long decimals = 0;
    if (pos < end && *pos == '.') {
        const char* const fraction = ++pos;
        while (pos < end && isDigit(*pos))
            digits = digits * 10 + static_cast<uint64_t>(*pos++ - '0');
        decimals = pos - fraction;
        if (decimals == 0) return nullptr;
    }
    if (wholeCount == 0 || wholeCount + decimals > mostDigits) return nullptr;
    value = static_cast<double>(digits) / powersOfTen[decimals];
    if (negative) value = -value;
    return pos;
}

void BvhMotionValues::append(std::vector<double> run, int frames, int channelCount) {
    if (frames == 0) return;  // blank lines only
    m_size += run.size();
    m_runs.push_back({std::move(run), m_frames, static_cast<size_t>(channelCount)});
    m_frames += frames;
}

bool bvhNumber(std::string_view word, double& value) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-') word.remove_prefix(1);
    const char* wordEnd = word.data() + word.size();
    if (bvhShortDecimal(word.data(), wordEnd, value) == wordEnd) return true;
    const auto [ptr, ec] = std::from_chars(word.data(), wordEnd, value);
    if (word.empty() || ptr != wordEnd) return false;
    // Beyond the range of a double: infinite, for the caller to refuse.
    if (ec == std::errc::result_out_of_range) value = HUGE_VAL;
    return ec == std::errc() || ec == std::errc::result_out_of_range;
}

BvhClip parseBvh(std::string_view text, const std::string& name, int motionParts) {
    return BvhParser(text, name, motionParts).parse();
}

BvhClip readBvhFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw TakeError(path + ": cannot open");
    try {
        return parseBvh(readBvhText(file, path), path);
    } catch (const std::bad_alloc&) {
        throw TakeError(path + ": too large to read into memory");
    }
}

std::vector<BvhJointPose> bvhForwardKinematics(const BvhClip& clip, int frame) {
    std::vector<BvhJointPose> poses;
    bvhForwardKinematics(clip, frame, poses);
    return poses;
}

void bvhForwardKinematics(const BvhClip& clip, int frame, std::vector<BvhJointPose>& poses) {
    poses.resize(clip.joints.size());
    const double* values = frame < 0 ? nullptr : clip.values.frame(frame);
    for (size_t j = 0; j < clip.joints.size(); ++j) {
        const BvhJoint& joint = clip.joints[j];
        takemath::Vec3 translation = joint.offset;
        takemath::Quat rotation;
        for (size_t c = 0; values && c < joint.channels.size(); ++c) {
            const double value = values[joint.firstChannel + static_cast<int>(c)];
            switch (joint.channels[c]) {
                case BvhChannel::XPosition:
                    translation.x = value;
                    break;
                case BvhChannel::YPosition:
                    translation.y = value;
                    break;
                case BvhChannel::ZPosition:
                    translation.z = value;
                    break;
                default:
                    rotation = rotation * channelRotation(joint.channels[c], value);
            }
        }
        if (joint.parent < 0) {
            poses[j] = {translation, rotation};
        } else {
            const BvhJointPose& parent = poses[static_cast<size_t>(joint.parent)];
            poses[j] = {parent.position + takemath::rotate(parent.orientation, translation),
                        parent.orientation * rotation};
        }
    }
}
