#pragma once

#include <string>

// The moment a file was created, as broken-down local time. It feeds the header time stamp,
// "CreationTime" and the two source-check blocks; deterministic writes use the zero time
// (every field 0) so that those bytes do not change from run to run.
struct FbxCreationTime {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    static FbxCreationTime Now();
};

// "YYYY-MM-DD hh:mm:ss:mmm" with every field clamped to its range ("CreationTime").
std::string FbxFormatCreationTime(const FbxCreationTime& time);

// The 16 characters that seed the source checks: second, month, hour, day, hundredths,
// year and minute, in this scrambled order.
std::string FbxMangleCreationTime(const FbxCreationTime& time);
