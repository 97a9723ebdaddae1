#include "bvhclip.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>
#include <numbers>
#include <sstream>

#include "takeerror.h"

namespace {

// A word of the hierarchy and the line it stands on.
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

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

// Splits the text into words; tolerates any mix of CR, LF and blanks.
class BvhLexer {
public:
    BvhLexer(std::string_view text, const std::string& name) : m_text(text), m_name(name) {}

    Token next() {
        skipBlanks();
        const size_t start = m_pos;
        while (m_pos < m_text.size() && !isBlank(m_text[m_pos])) ++m_pos;
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
    double number() {
        const Token token = next();
        double value = 0.0;
        const auto [ptr, ec] =
            std::from_chars(token.text.data(), token.text.data() + token.text.size(), value);
        if (token.text.empty() || ec != std::errc() || ptr != token.text.data() + token.text.size())
            fail(token, "expected a number");
        return value;
    }
    // The rest of the current line after the position, trimmed.
    std::string_view restOfLine() {
        while (m_pos < m_text.size() && (m_text[m_pos] == ' ' || m_text[m_pos] == '\t')) ++m_pos;
        const size_t start = m_pos;
        while (m_pos < m_text.size() && m_text[m_pos] != '\n') ++m_pos;
        std::string_view line = m_text.substr(start, m_pos - start);
        while (!line.empty() && isBlank(line.back())) line.remove_suffix(1);
        return line;
    }
    size_t position() const { return m_pos; }
    int line() const { return m_line; }
    [[noreturn]] void fail(const Token& token, const std::string& message) const {
        std::string text = m_name + ": line " + std::to_string(token.line) + ": " + message;
        if (token.text.empty()) {
            text += ", found the end of the file";
        } else {
            text += ", found '";
            text += token.text;
            text += '\'';
        }
        throw TakeError(text);
    }

private:
    void skipBlanks() {
        while (m_pos < m_text.size() && isBlank(m_text[m_pos])) {
            if (m_text[m_pos] == '\n') ++m_line;
            ++m_pos;
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
    BvhParser(std::string_view text, const std::string& name)
        : m_lexer(text, name), m_text(text), m_name(name) {}

    BvhClip parse() {
        m_lexer.expect("HIERARCHY");
        m_lexer.expect("ROOT");
        readJoint(-1);
        if (equalsIgnoringCase(m_lexer.peek().text, "ROOT"))
            m_lexer.fail(m_lexer.peek(), "expected MOTION (only one ROOT is supported)");
        m_lexer.expect("MOTION");
        readMotionHeader();
        readFrames();
        return std::move(m_clip);
    }

private:
    void readJoint(int parent) {
        BvhJoint joint;
        joint.parent = parent;
        const int line = m_lexer.line();
        joint.name = std::string(m_lexer.restOfLine());
        if (!joint.name.empty() && joint.name.back() == '{') {
            joint.name.pop_back();
            while (!joint.name.empty() && isBlank(joint.name.back())) joint.name.pop_back();
        } else {
            m_lexer.expect("{");
        }
        if (joint.name.empty()) m_lexer.fail({"", line}, "expected a joint name");
        m_lexer.expect("OFFSET");
        joint.offset = {m_lexer.number(), m_lexer.number(), m_lexer.number()};
        readChannels(joint);
        const int index = static_cast<int>(m_clip.joints.size());
        m_clip.joints.push_back(std::move(joint));
        readChildren(index);
    }

    void readChannels(BvhJoint& joint) {
        m_lexer.expect("CHANNELS");
        const Token countToken = m_lexer.peek();
        const double count = m_lexer.number();
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

    void readChildren(int parent) {
        for (;;) {
            const Token token = m_lexer.next();
            if (token.text == "}") return;
            if (equalsIgnoringCase(token.text, "JOINT")) {
                readJoint(parent);
            } else if (equalsIgnoringCase(token.text, "End")) {
                m_lexer.expect("Site");
                m_lexer.expect("{");
                m_lexer.expect("OFFSET");
                for (int i = 0; i < 3; ++i) m_lexer.number();  // where the bone ends; no motion
                m_lexer.expect("}");
            } else {
                m_lexer.fail(token, "expected JOINT, End Site or '}'");
            }
        }
    }

    void readMotionHeader() {
        m_lexer.expect("Frames:");
        const Token framesToken = m_lexer.peek();
        const double frames = m_lexer.number();
        if (frames < 1 || frames != static_cast<int>(frames))
            m_lexer.fail(framesToken, "expected a frame count of at least 1");
        m_clip.frameCount = static_cast<int>(frames);
        m_lexer.expect("Frame");
        m_lexer.expect("Time:");
        const Token timeToken = m_lexer.peek();
        m_clip.frameTime = m_lexer.number();
        if (!(m_clip.frameTime > 0.0)) m_lexer.fail(timeToken, "expected a frame time above 0");
        m_lexer.restOfLine();
    }

    void readFrames() {
        m_clip.values.reserve(static_cast<size_t>(m_clip.frameCount) * m_clip.channelCount);
        size_t pos = m_lexer.position();
        if (pos < m_text.size() && m_text[pos] == '\n') ++pos;
        int line = m_lexer.line();
        int frame = 0;
        while (pos < m_text.size()) {
            size_t end = m_text.find('\n', pos);
            if (end == std::string_view::npos) end = m_text.size();
            ++line;
            readFrameLine(m_text.substr(pos, end - pos), line, frame);
            pos = end + 1;
        }
        if (frame < m_clip.frameCount)
            throw TakeError(m_name + ": line " + std::to_string(line) + ": the file ends after " +
                            std::to_string(frame) + " of " + std::to_string(m_clip.frameCount) +
                            " frames");
    }

    void readFrameLine(std::string_view text, int line, int& frame) {
        const size_t before = m_clip.values.size();
        const char* p = text.data();
        const char* end = text.data() + text.size();
        for (;;) {
            while (p < end && isBlank(*p)) ++p;
            if (p == end) break;
            double value = 0.0;
            const auto [ptr, ec] = std::from_chars(p, end, value);
            if (ec != std::errc() || (ptr < end && !isBlank(*ptr)))
                throw TakeError(m_name + ": line " + std::to_string(line) + ": frame " +
                                std::to_string(frame) + ": expected a number");
            m_clip.values.push_back(value);
            p = ptr;
        }
        const size_t count = m_clip.values.size() - before;
        if (count == 0) return;
        if (frame >= m_clip.frameCount)
            throw TakeError(m_name + ": line " + std::to_string(line) + ": more frames than the " +
                            std::to_string(m_clip.frameCount) + " that Frames: announces");
        if (count != static_cast<size_t>(m_clip.channelCount))
            throw TakeError(m_name + ": line " + std::to_string(line) + ": frame " +
                            std::to_string(frame) + ": expected " +
                            std::to_string(m_clip.channelCount) + " numbers, found " +
                            std::to_string(count));
        ++frame;
    }

    BvhLexer m_lexer;
    std::string_view m_text;
    const std::string& m_name;
    BvhClip m_clip;
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

}  // namespace

BvhClip parseBvh(std::string_view text, const std::string& name) {
    return BvhParser(text, name).parse();
}

BvhClip readBvhFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw TakeError(path + ": cannot open");
    std::ostringstream text;
    text << file.rdbuf();
    if (!file && !file.eof()) throw TakeError(path + ": cannot read");
    return parseBvh(text.str(), path);
}

std::vector<BvhJointPose> bvhForwardKinematics(const BvhClip& clip, int frame) {
    std::vector<BvhJointPose> poses(clip.joints.size());
    const double* values =
        frame < 0 ? nullptr : clip.values.data() + static_cast<size_t>(frame) * clip.channelCount;
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
    return poses;
}
