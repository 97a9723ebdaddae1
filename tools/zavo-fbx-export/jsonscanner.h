#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// A JSON syntax error at a place in the text.
class JsonSyntaxError : public std::runtime_error {
public:
    JsonSyntaxError(const std::string& message, int64_t line, int64_t column)
        : std::runtime_error(message), m_line(line), m_column(column) {}
    int64_t line() const { return m_line; }
    int64_t column() const { return m_column; }

private:
    int64_t m_line;
    int64_t m_column;
};

// Reads JSON tokens from a file through a fixed buffer, so that a take of hundreds of
// megabytes never has to be in memory as text. Reports lines and columns (bytes, from 1).
class JsonScanner {
public:
    explicit JsonScanner(int fd);  // reads from an open file, which the caller closes
    explicit JsonScanner(std::string_view text);

    // The next character after white space, not consumed; -1 at the end of the text.
    int peek();
    // Consumes `c` when it is the next character after white space.
    bool consumeIf(char c);
    // Consumes `c` or fails with "expected <what>".
    void expect(char c, const char* what);
    void readString(std::string& out);
    double readNumber();
    bool readBool();
    // Consumes the literal null when it comes next.
    bool consumeNull();
    void skipValue();
    // Fails unless only white space is left.
    void expectEnd();

    [[noreturn]] void fail(const std::string& message) const;
    int64_t line() const { return m_line; }
    int64_t column() const { return m_base + static_cast<int64_t>(m_pos) - m_lineStart + 1; }

private:
    bool fill();
    // Makes at least `count` bytes (or all that are left) available from m_pos on.
    void ensure(size_t count);
    void readLiteral(std::string_view literal);
    void readEscape(std::string& out);
    unsigned readHex4();
    void skipValue(int depth);

    int m_fd = -1;
    std::vector<char> m_buffer;
    size_t m_pos = 0;
    size_t m_end = 0;
    bool m_eof = false;
    int64_t m_base = 0;  // offset in the text of m_buffer[0]
    int64_t m_line = 1;
    int64_t m_lineStart = 0;  // offset of the first byte of the current line
};
