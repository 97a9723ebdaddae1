#include "jsonscanner.h"

#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace {

constexpr size_t BufferSize = 1 << 20;
// Longest number text accepted; far beyond the 17 significant digits a double holds.
constexpr size_t MaxNumberLength = 512;
constexpr int MaxDepth = 512;

// What may belong to a number's text, taken wide (letters too) so that "nan", "inf" or "0x1F"
// are refused whole, by name.
bool isNumberChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '+' || c == '.';
}

size_t skipDigits(std::string_view text, size_t at) {
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
    return at;
}

// JSON's number grammar: -?(0|[1-9][0-9]*)(.[0-9]+)?([eE][+-]?[0-9]+)?. Nothing else, so no
// nan, inf, hexadecimal, leading '+' or leading zeros reaches a pose.
bool isJsonNumber(std::string_view text) {
    size_t at = text.starts_with('-') ? 1 : 0;
    if (at == text.size()) return false;
    if (text[at] == '0') {
        ++at;
    } else {
        const size_t digits = skipDigits(text, at);
        if (digits == at) return false;
        at = digits;
    }
    if (at < text.size() && text[at] == '.') {
        const size_t digits = skipDigits(text, at + 1);
        if (digits == at + 1) return false;
        at = digits;
    }
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
        const size_t digits = skipDigits(text, at);
        if (digits == at) return false;
        at = digits;
    }
    return at == text.size();
}

void appendUtf8(std::string& out, unsigned codePoint) {
    if (codePoint < 0x80) {
        out.push_back(static_cast<char>(codePoint));
    } else if (codePoint < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (codePoint >> 6)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else if (codePoint < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (codePoint >> 12)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (codePoint >> 18)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (codePoint & 0x3F)));
    }
}

}  // namespace

JsonScanner::JsonScanner(int fd) : m_fd(fd), m_buffer(BufferSize) {}

JsonScanner::JsonScanner(std::string_view text)
    : m_buffer(text.begin(), text.end()), m_end(text.size()), m_eof(true) {}

bool JsonScanner::fill() {
    m_base += static_cast<int64_t>(m_end);
    m_pos = m_end = 0;
    ensure(1);
    return m_end > 0;
}

void JsonScanner::ensure(size_t count) {
    if (m_end - m_pos >= count || m_eof) return;
    std::memmove(m_buffer.data(), m_buffer.data() + m_pos, m_end - m_pos);
    m_base += static_cast<int64_t>(m_pos);
    m_end -= m_pos;
    m_pos = 0;
    while (m_end < count && !m_eof) {
        const ssize_t got = ::read(m_fd, m_buffer.data() + m_end, m_buffer.size() - m_end);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail(std::string("cannot read: ") + std::strerror(errno));
        if (got == 0) m_eof = true;
        m_end += static_cast<size_t>(got);
    }
}

int JsonScanner::peek() {
    for (;;) {
        if (m_pos == m_end && !fill()) return -1;
        const char c = m_buffer[m_pos];
        if (c == '\n') {
            ++m_line;
            m_lineStart = m_base + static_cast<int64_t>(m_pos) + 1;
        } else if (c != ' ' && c != '\t' && c != '\r') {
            return static_cast<unsigned char>(c);
        }
        ++m_pos;
    }
}

bool JsonScanner::consumeIf(char c) {
    if (peek() != static_cast<unsigned char>(c)) return false;
    ++m_pos;
    return true;
}

void JsonScanner::expect(char c, const char* what) {
    if (!consumeIf(c)) fail(std::string("expected ") + what);
}

void JsonScanner::readString(std::string& out) {
    expect('"', "a string");
    out.clear();
    for (;;) {
        if (m_pos == m_end && !fill()) fail("unterminated string");
        const char c = m_buffer[m_pos];
        if (c == '"') {
            ++m_pos;
            return;
        }
        if (static_cast<unsigned char>(c) < 0x20) fail("control character in a string");
        if (c == '\\') {
            readEscape(out);
        } else {
            out.push_back(c);
            ++m_pos;
        }
    }
}

void JsonScanner::readEscape(std::string& out) {
    ensure(2);
    if (m_end - m_pos < 2) fail("unterminated string");
    const char c = m_buffer[m_pos + 1];
    m_pos += 2;
    switch (c) {
        case '"':
            out.push_back('"');
            return;
        case '\\':
            out.push_back('\\');
            return;
        case '/':
            out.push_back('/');
            return;
        case 'b':
            out.push_back('\b');
            return;
        case 'f':
            out.push_back('\f');
            return;
        case 'n':
            out.push_back('\n');
            return;
        case 'r':
            out.push_back('\r');
            return;
        case 't':
            out.push_back('\t');
            return;
        case 'u':
            break;
        default:
            fail(std::string("invalid escape \\") + c);
    }
    unsigned codePoint = readHex4();
    if (codePoint >= 0xD800 && codePoint < 0xDC00) {
        ensure(2);
        if (m_end - m_pos < 2 || m_buffer[m_pos] != '\\' || m_buffer[m_pos + 1] != 'u')
            fail("unpaired surrogate in \\u escape");
        m_pos += 2;
        const unsigned low = readHex4();
        if (low < 0xDC00 || low >= 0xE000) fail("unpaired surrogate in \\u escape");
        codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
    } else if (codePoint >= 0xDC00 && codePoint < 0xE000) {
        fail("unpaired surrogate in \\u escape");
    }
    appendUtf8(out, codePoint);
}

unsigned JsonScanner::readHex4() {
    ensure(4);
    if (m_end - m_pos < 4) fail("unterminated string");
    unsigned value = 0;
    const auto* first = m_buffer.data() + m_pos;
    const auto [ptr, ec] = std::from_chars(first, first + 4, value, 16);
    if (ec != std::errc() || ptr != first + 4) fail("invalid \\u escape");
    m_pos += 4;
    return value;
}

double JsonScanner::readNumber() {
    if (peek() < 0) fail("expected a number");
    ensure(MaxNumberLength + 1);
    size_t length = 0;
    while (m_pos + length < m_end && isNumberChar(m_buffer[m_pos + length])) ++length;
    if (length == 0) fail("expected a number");
    if (length > MaxNumberLength) fail("number too long");
    const char* first = m_buffer.data() + m_pos;
    if (!isJsonNumber({first, length}))
        fail("expected a JSON number, found " + std::string(first, length));
    double value = 0.0;
    const auto [ptr, ec] = std::from_chars(first, first + length, value);
    if (ec == std::errc::result_out_of_range) fail("number out of range");
    if (ec != std::errc() || ptr != first + length)
        fail("invalid number " + std::string(first, length));
    m_pos += length;
    return value;
}

void JsonScanner::readLiteral(std::string_view literal) {
    peek();
    ensure(literal.size());
    if (std::string_view(m_buffer.data() + m_pos, std::min(literal.size(), m_end - m_pos)) !=
        literal)
        fail("expected " + std::string(literal));
    m_pos += literal.size();
}

bool JsonScanner::readBool() {
    const int c = peek();
    if (c == 't') {
        readLiteral("true");
        return true;
    }
    if (c != 'f') fail("expected true or false");
    readLiteral("false");
    return false;
}

bool JsonScanner::consumeNull() {
    if (peek() != 'n') return false;
    readLiteral("null");
    return true;
}

void JsonScanner::skipValue() {
    skipValue(0);
}

void JsonScanner::skipValue(int depth) {
    if (depth > MaxDepth) fail("nesting too deep");
    const int c = peek();
    if (c == '{' || c == '[') {
        const char close = c == '{' ? '}' : ']';
        ++m_pos;
        if (consumeIf(close)) return;
        do {
            if (c == '{') {
                std::string key;
                readString(key);
                expect(':', "':'");
            }
            skipValue(depth + 1);
        } while (consumeIf(','));
        expect(close, close == '}' ? "',' or '}'" : "',' or ']'");
    } else if (c == '"') {
        std::string text;
        readString(text);
    } else if (c == 't' || c == 'f') {
        readBool();
    } else if (!consumeNull()) {
        readNumber();
    }
}

void JsonScanner::expectEnd() {
    if (peek() >= 0) fail("unexpected text after the end of the take");
}

void JsonScanner::fail(const std::string& message) const {
    throw JsonSyntaxError(message, line(), column());
}
