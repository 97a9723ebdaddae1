#pragma once

#include <string>

#include "fbxfile/fbxbinaryreader.h"

// Structural reader of ASCII FBX 7 files, sharing no code with the writer. It reads
// the whole text strictly (record names, quoted strings, numbers, arrays and their counts,
// blocks, comment lines) into the same record tree as the binary reader.
namespace fbxfile {

// Reads and checks an ASCII text. Strings come back unescaped as 'S', numbers as 'D', bare
// letters as 'C', arrays as 'd'. On the first violation returns false and describes it (with
// the line) in `error`.
bool ReadAsciiText(const std::string& text, File& file, std::string& error);
bool ReadAsciiFile(const std::string& path, File& file, std::string& error);

}  // namespace fbxfile
