#pragma once

#include <string>
#include <vector>

#include "fbxfile/fbxbinaryreader.h"

// What a written file holds, one line per record, so that two writers (or two versions of one)
// can be compared by content rather than by bytes: compressed arrays are compared inflated.
namespace fbxtest {

// One line per top-level record of a binary file and per record one level below, depth first:
// its path ("Objects#0/AnimationCurve#3"), each value as its text when short, else its type,
// length and digest, and for the lower level a digest of all it holds (inflated arrays
// included). The footer's check bytes end the list.
std::vector<std::string> BinaryContentLines(const fbxfile::File& file);

// One line per top-level record of an ASCII file and per record one level below: its path, line
// count and a digest of its text.
std::vector<std::string> AsciiContentLines(const std::string& text);

}  // namespace fbxtest
