// The library's log lines: their levels, the place they name, and their formats, which are checked when the library is
// compiled. A file that logs says once, at its head, which numbers are its own:
//
//     CLUS_LOG_PLACE(VirtualServerUtil, 3); // line 39 of this file is logged as .\clus_VirtualServerUtil.cpp(3039)
#ifndef CLUS_PLATFORM_LOG_H
#define CLUS_PLATFORM_LOG_H

#include "core/FormatCheck.h"

#include <winsock2.h>
#include <windows.h>

#include "DebugLog.h"

extern "C" IMAGE_DOS_HEADER __ImageBase; // provided by the linker: this DLL's own module handle

namespace clus {

const unsigned int LogLevelEnter = 0x110;
const unsigned int LogLevelLeave = 0x111;
const unsigned int LogLevelInfo = 0x102;
const unsigned int LogLevelError = 0x1001;
const unsigned int LogLevelWarning = 0x1003;

// The tags of the subsystems' lines, which support and its scripts search for.
namespace LogTags {
constexpr const char* Cluster = ".\\clus_Cluster.cpp";
constexpr const char* GetClusterDiskPaths = ".\\clus_GetClusterDiskPaths.cpp";
constexpr const char* VeritasCluster = ".\\clus_VeritasCluster.cpp";
constexpr const char* VirtualServerUtil = ".\\clus_VirtualServerUtil.cpp";
} // namespace LogTags

// A tag stands for several files: the thousands of a number tell which of them, the rest the line in it.
struct LogPlace {
    const char* tag;
    int file;

    constexpr int Number(int line) const {
        return 1000 * file + line;
    }
};

inline HMODULE ThisModule() {
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

// Logs that a function is left, on whatever path; the number is that of its declaration.
class LeaveLogger {
public:
    LeaveLogger(const char* tag, int number, const wchar_t* text) : m_tag(tag), m_number(number), m_text(text) {
    }
    ~LeaveLogger() {
        DBG::DebugLogEx(ThisModule(), LogLevelLeave, m_tag, m_number, m_text);
    }
    LeaveLogger(const LeaveLogger&) = delete;
    LeaveLogger& operator=(const LeaveLogger&) = delete;

private:
    const char* m_tag;
    int m_number;
    const wchar_t* m_text;
};

} // namespace clus

// `tag` is one of LogTags, `file` the number of this file among those with the tag; docs/log-places.md lists them.
#define CLUS_LOG_PLACE(tag, file) constexpr clus::LogPlace ThisLogPlace = {clus::LogTags::tag, (file)}

#define CLUS_LOG(level, ...)                                                                                        \
    do {                                                                                                            \
        CLUS_CHECK_FORMAT(__VA_ARGS__);                                                                             \
        DBG::DebugLogEx(clus::ThisModule(), (level), ThisLogPlace.tag, ThisLogPlace.Number(__LINE__), __VA_ARGS__); \
    } while (false)

#define LOG_ENTER(...) CLUS_LOG(clus::LogLevelEnter, __VA_ARGS__)
#define LOG_LEAVE(...) CLUS_LOG(clus::LogLevelLeave, __VA_ARGS__)
#define LOG_INFO(...) CLUS_LOG(clus::LogLevelInfo, __VA_ARGS__)
#define LOG_ERROR(...) CLUS_LOG(clus::LogLevelError, __VA_ARGS__)
#define LOG_WARNING(...) CLUS_LOG(clus::LogLevelWarning, __VA_ARGS__)

// For members that log their leaving on every path, at function scope only.
#define LOG_LEAVE_AT_END(text) \
    CLUS_CHECK_FORMAT(text);   \
    const clus::LeaveLogger leaveLogger(ThisLogPlace.tag, ThisLogPlace.Number(__LINE__), (text))
#define LOG_ENTER_AND_LEAVE(text) \
    LOG_ENTER(text);              \
    LOG_LEAVE_AT_END(text)

#endif
