#include "common/UtcTime.h"

#include <windows.h>

#include <cstdio>

namespace common {

std::string UtcNow() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char text[40];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02uZ", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute, now.wSecond);
    return text;
}

std::string ShownUtcNow() {
    const std::string now = UtcNow();
    return now.substr(0, 10) + " " + now.substr(11, 8) + " UTC";
}

} // namespace common
