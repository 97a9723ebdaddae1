#include "takewriter.h"

#include <QDateTime>
#include <charconv>
#include <fstream>

#include "takeerror.h"

namespace {

class TakeJsonWriter {
public:
    explicit TakeJsonWriter(std::ostream& out) : m_out(out) {}

    void number(double value) {
        char text[32];
        const auto result = std::to_chars(text, text + sizeof text, value);
        m_out.write(text, result.ptr - text);
    }
    void integer(int64_t value) { m_out << value; }
    void string(const std::string& text) {
        m_out << '"';
        for (const char c : text) {
            if (c == '"' || c == '\\') {
                m_out << '\\' << c;
            } else if (static_cast<unsigned char>(c) < 0x20) {
                static const char hex[] = "0123456789abcdef";
                m_out << "\\u00" << hex[(c >> 4) & 0xF] << hex[c & 0xF];
            } else {
                m_out << c;
            }
        }
        m_out << '"';
    }
    void strings(const std::vector<std::string>& texts) {
        m_out << '[';
        for (size_t i = 0; i < texts.size(); ++i) {
            if (i) m_out << ',';
            string(texts[i]);
        }
        m_out << ']';
    }
    void states(const SegmentState* first, size_t count) {
        m_out << '[';
        for (size_t i = 0; i < count; ++i) {
            if (i) m_out << ',';
            m_out << '[';
            for (int c = 0; c < 7; ++c) {
                if (c) m_out << ',';
                number(c < 3 ? first[i].position[c] : first[i].orientation[c - 3]);
            }
            m_out << ']';
        }
        m_out << ']';
    }
    void pose(const TakePose& pose) {
        m_out << "{\"valid\":" << (pose.valid ? "true" : "false") << ",\"absoluteTime\":";
        integer(pose.absoluteTime);
        m_out << ",\"frameTime\":" << pose.frameTime << ",\"poseOffset\":[" << pose.poseOffset[0]
              << ',' << pose.poseOffset[1] << "],\"segments\":";
        states(pose.segments.data(), pose.segments.size());
        if (pose.hasFingers()) {
            m_out << ",\"fingers\":{\"left\":";
            states(pose.fingers.data(), TakePose::FingersPerHand);
            m_out << ",\"right\":";
            states(pose.fingers.data() + TakePose::FingersPerHand, TakePose::FingersPerHand);
            m_out << '}';
        }
        m_out << '}';
    }

private:
    std::ostream& m_out;
};

std::string isoTime(int64_t milliseconds, int utcOffset) {
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::OffsetFromUTC, utcOffset)
        .toString(Qt::ISODateWithMs)
        .toStdString();
}

void writeHeader(const Take& take, TakeJsonWriter& json, std::ostream& out) {
    out << "{\"format\":\"zavo-take\",\"version\":1,\"frameRate\":";
    json.number(take.frameRate);
    out << ",\n\"recordStartTime\":";
    json.string(isoTime(take.recordStartTime, take.recordStartUtcOffset));
    out << ",\n\"userComment\":";
    json.string(take.userComment);
    out << ",\n\"hasBody\":" << (take.hasBody ? "true" : "false")
        << ",\n\"firstFrame\":" << take.firstFrame << ",\n\"segmentNames\":";
    json.strings(take.segmentNames);
    if (take.props) {
        out << ",\n\"props\":[";
        for (size_t i = 0; i < take.props->size(); ++i) out << (i ? "," : "") << (*take.props)[i];
        out << ']';
    }
    if (!take.fingerNames[0].empty()) {
        out << ",\n\"fingerSegmentNames\":{\"left\":";
        json.strings(take.fingerNames[0]);
        out << ",\"right\":";
        json.strings(take.fingerNames[1]);
        out << '}';
    }
    out << ",\n\"joints\":[";
    for (size_t i = 0; i < take.joints.size(); ++i)
        out << (i ? "," : "") << "{\"parent\":" << take.joints[i].parent
            << ",\"child\":" << take.joints[i].child << '}';
    out << ']';
}

}  // namespace

void writeTake(const Take& take, std::ostream& out) {
    TakeJsonWriter json(out);
    writeHeader(take, json, out);
    if (take.nullPose) {
        out << ",\n\"nullPose\":";
        json.pose(*take.nullPose);
    }
    out << ",\n\"frames\":[";
    for (size_t i = 0; i < take.frames.size(); ++i) {
        out << (i ? ",\n" : "\n");
        if (take.frames[i])
            json.pose(*take.frames[i]);
        else
            out << "null";
    }
    out << "\n]}\n";
}

void writeTakeFile(const Take& take, const std::string& path) {
    std::ofstream out(path, std::ios::binary);
    writeTake(take, out);
    out.flush();
    if (!out) throw TakeError(path + ": cannot write the take");
}
