#include "fbx/io/fbxcreationtime.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>

FbxCreationTime FbxCreationTime::Now() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    FbxCreationTime time;
    time.year = local.tm_year + 1900;
    time.month = local.tm_mon + 1;
    time.day = local.tm_mday;
    time.hour = local.tm_hour;
    time.minute = local.tm_min;
    time.second = local.tm_sec;
    time.millisecond =
        static_cast<int>(duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000);
    return time;
}

std::string FbxFormatCreationTime(const FbxCreationTime& time) {
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d:%03d",
                  std::clamp(time.year, 0, 9999), std::clamp(time.month, 1, 12),
                  std::clamp(time.day, 1, 31), std::clamp(time.hour, 0, 23),
                  std::clamp(time.minute, 0, 59), std::clamp(time.second, 0, 59),
                  std::clamp(time.millisecond, 0, 999));
    return text;
}

std::string FbxMangleCreationTime(const FbxCreationTime& time) {
    char text[64];
    const auto two = [](int value) { return std::clamp(value, 0, 99); };
    std::snprintf(text, sizeof text, "%02d%02d%02d%02d%02d%04d%02d", two(time.second),
                  two(time.month), two(time.hour), two(time.day), two(time.millisecond / 10),
                  std::clamp(time.year, 0, 9999), two(time.minute));
    return text;
}
