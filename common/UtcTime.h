// The time of the day, as files and reports tell it.
#ifndef COMMON_UTCTIME_H
#define COMMON_UTCTIME_H

#include <string>

namespace common {

// For programs: "2026-11-22T16:45:03Z".
std::string UtcNow();

// The same of a moment, in seconds since the beginning of 1970.
std::string UtcTime(unsigned long seconds);

// For people: "2026-11-22 16:45:03 UTC".
std::string ShownUtcNow();

} // namespace common

#endif
