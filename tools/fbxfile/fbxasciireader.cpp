#include "fbxfile/fbxasciireader.h"

#include <cctype>
#include <cstdlib>
#include <stdexcept>

namespace fbxfile {

namespace {

// Walks the text record by record; the first violation throws its description.
class AsciiParser {
public:
    explicit AsciiParser(const std::string& text) : mText(text) {}

    void Parse(File& file) {
        if (mText.compare(0, 6, "; FBX ") != 0) Fail("no \"; FBX \" header line");
        if (mText.find('\0') != std::string::npos) Fail("NUL byte in the text");
        file.root.hasBlock = true;
        ReadList(0, file.root.children);
    }

private:
    [[noreturn]] void Fail(const std::string& what) const {
        int line = 1;
        for (size_t i = 0; i < mPos && i < mText.size(); ++i) line += mText[i] == '\n';
        throw std::runtime_error(what + " (line " + std::to_string(line) + ")");
    }

    bool AtEnd() const { return mPos >= mText.size(); }
    char Peek() const { return AtEnd() ? '\0' : mText[mPos]; }

    void SkipBlanks() {
        while (Peek() == ' ' || Peek() == '\t') ++mPos;
    }
    void SkipSpace() {
        while (Peek() == ' ' || Peek() == '\t' || Peek() == '\n') ++mPos;
    }

    // Records up to the '}' closing a block at `depth`, or the end of the text at depth 0.
    void ReadList(int depth, std::vector<Record>& records) {
        for (;;) {
            SkipSpace();
            if (AtEnd()) {
                if (depth > 0) Fail("block not closed at the end of the text");
                return;
            }
            if (Peek() == ';') {
                SkipComment();
            } else if (Peek() == '}') {
                if (depth == 0) Fail("'}' without an open block");
                ++mPos;
                return;
            } else {
                records.push_back(ReadRecord(depth));
            }
        }
    }

    // A comment runs to the line's end; a carriage return would end it early for many readers.
    void SkipComment() {
        while (!AtEnd() && Peek() != '\n') {
            if (Peek() == '\r') Fail("carriage return in a comment line");
            ++mPos;
        }
    }

    Record ReadRecord(int depth) {
        Record record;
        while (std::isalnum(static_cast<unsigned char>(Peek())) || Peek() == '_' || Peek() == '|')
            record.name += mText[mPos++];
        if (record.name.empty() || Peek() != ':') Fail("expected a record name and ':'");
        ++mPos;
        SkipBlanks();
        // A first value too long for the line goes on the next, indented with blanks (records
        // are indented with tabs).
        if (Peek() == '\n' && mText.compare(mPos, 2, "\n ") == 0) SkipSpace();
        if (Peek() == '\n' || AtEnd()) return record;
        if (Peek() != '{') ReadValues(record);
        if (Peek() == '{') {
            ++mPos;
            record.hasBlock = true;
            ReadList(depth + 1, record.children);
            if (!record.values.empty() && record.values[0].type == '*') CloseArray(record);
        }
        SkipBlanks();
        if (!AtEnd() && Peek() != '\n') Fail("unexpected text after record " + record.name);
        return record;
    }

    // Comma-separated values; a line may end after a comma and the list goes on.
    void ReadValues(Record& record) {
        for (;;) {
            record.values.push_back(ReadValue());
            SkipBlanks();
            if (Peek() != ',') break;
            ++mPos;
            SkipSpace();
        }
        if (!AtEnd() && Peek() != '\n' && Peek() != '{') Fail("expected ',' or the line's end");
    }

    Value ReadValue() {
        Value value;
        if (Peek() == '"') {
            value.type = 'S';
            value.bytes = ReadString();
        } else if (Peek() == '*') {
            ++mPos;
            value.type = '*';
            value.ints.push_back(static_cast<int64_t>(ReadNumber()));
        } else {
            const size_t start = mPos;
            while (std::isalnum(static_cast<unsigned char>(Peek())) || Peek() == '.' ||
                   Peek() == '-' || Peek() == '+')
                ++mPos;
            const std::string token = mText.substr(start, mPos - start);
            if (token.size() == 1 && std::isalpha(static_cast<unsigned char>(token[0]))) {
                value.type = 'C';
                value.ints.push_back(token[0]);
            } else {
                mPos = start;
                value.type = 'D';
                value.reals.push_back(ReadNumber());
            }
        }
        return value;
    }

    double ReadNumber() {
        const char* begin = mText.c_str() + mPos;
        char* end = nullptr;
        const double number = std::strtod(begin, &end);
        if (end == begin) Fail("expected a value");
        mPos += static_cast<size_t>(end - begin);
        return number;
    }

    // A quoted string: no raw quote or line end inside; &quot; &lf; &cr; stand for them.
    std::string ReadString() {
        std::string bytes;
        for (++mPos;; ++mPos) {
            if (AtEnd() || Peek() == '\n' || Peek() == '\r') Fail("string not closed on its line");
            if (Peek() == '"') break;
            bytes += Peek();
        }
        ++mPos;
        for (const auto& [escape, character] :
             {std::pair{"&quot;", '"'}, std::pair{"&lf;", '\n'}, std::pair{"&cr;", '\r'}}) {
            for (size_t at = bytes.find(escape); at != std::string::npos;
                 at = bytes.find(escape, at + 1))
                bytes.replace(at, std::char_traits<char>::length(escape), 1, character);
        }
        return bytes;
    }

    // "Name: *N { a: v1,v2,... }" becomes one 'd' value of N numbers.
    void CloseArray(Record& record) {
        const int64_t count = record.values[0].ints[0];
        if (record.values.size() != 1 || record.children.size() != 1 ||
            record.children[0].name != "a")
            Fail("array " + record.name + " is not \"*N { a: ... }\"");
        Value array;
        array.type = 'd';
        for (const Value& element : record.children[0].values) {
            if (element.type != 'D') Fail("non-number in array " + record.name);
            array.reals.push_back(element.reals[0]);
        }
        if (static_cast<int64_t>(array.reals.size()) != count)
            Fail("array " + record.name + " announces " + std::to_string(count) +
                 " values, holds " + std::to_string(array.reals.size()));
        array.count = array.reals.size();
        record.values = {array};
        record.children.clear();
        record.hasBlock = false;
    }

    const std::string& mText;
    size_t mPos = 0;
};

}  // namespace

bool ReadAsciiText(const std::string& text, File& file, std::string& error) {
    try {
        AsciiParser(text).Parse(file);
        return true;
    } catch (const std::runtime_error& violation) {
        error = violation.what();
        return false;
    }
}

bool ReadAsciiFile(const std::string& path, File& file, std::string& error) {
    const std::vector<uint8_t> bytes = ReadAllBytes(path);
    return ReadAsciiText(std::string(bytes.begin(), bytes.end()), file, error);
}

}  // namespace fbxfile
