#pragma once

#include <string>
#include <string_view>

#include "take.h"

// Reads a take file (JSON, "zavo-take" version 1) as a stream, so that long takes load in
// about the memory their poses need. Throws TakeError naming the file, frame and field.
Take readTakeFile(const std::string& path);
// The same for a take held in memory; `name` stands for the file in messages.
Take readTakeText(std::string_view text, const std::string& name);
