#include "common/UtcTime.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>

namespace common {

namespace {

const std::uint64_t SecondsTo1970 = 11644473600; // since 1601
const std::uint64_t TicksInSecond = 10000000;

std::string TextOf(const SYSTEMTIME& time) {
    char text[40];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02uZ", time.wYear, time.wMonth, time.wDay, time.wHour,
                  time.wMinute, time.wSecond);
    return text;
}

} // namespace

std::string UtcNow() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    return TextOf(now);
}

std::string UtcTime(unsigned long seconds) {
    const std::uint64_t ticks = (SecondsTo1970 + seconds) * TicksInSecond;
    const FILETIME fileTime = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME time = {};
    FileTimeToSystemTime(&fileTime, &time);
    return TextOf(time);
}

std::string ShownUtcNow() {
    const std::string now = UtcNow();
    return now.substr(0, 10) + " " + now.substr(11, 8) + " UTC";
}

} // namespace common
