#pragma once

#include <ostream>
#include <string>

#include "take.h"

// Writes `take` as a take file (JSON, one pose per line) that reads back to the same take:
// numbers in their shortest exact form, every pose field spelled out.
void writeTake(const Take& take, std::ostream& out);
// The same into a file; throws TakeError when it cannot be written.
void writeTakeFile(const Take& take, const std::string& path);
