// Log levels and macros. The including file defines CLUS_SOURCE_TAG, the name its lines carry, before including this.
#ifndef CLUS_LOG_H
#define CLUS_LOG_H

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

inline HMODULE ThisModule() {
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

// Logs that a function is left, on whatever path; the line number is that of its declaration.
class LeaveLogger {
public:
    LeaveLogger(const char* sourceTag, int line, const wchar_t* text)
        : m_sourceTag(sourceTag), m_line(line), m_text(text) {
    }
    ~LeaveLogger() {
        DBG::DebugLogEx(ThisModule(), LogLevelLeave, m_sourceTag, m_line, m_text);
    }
    LeaveLogger(const LeaveLogger&) = delete;
    LeaveLogger& operator=(const LeaveLogger&) = delete;

private:
    const char* m_sourceTag;
    int m_line;
    const wchar_t* m_text;
};

} // namespace clus

#define CLUS_LOG(level, ...) DBG::DebugLogEx(clus::ThisModule(), (level), CLUS_SOURCE_TAG, __LINE__, __VA_ARGS__)
#define LOG_ENTER(...) CLUS_LOG(clus::LogLevelEnter, __VA_ARGS__)
#define LOG_LEAVE(...) CLUS_LOG(clus::LogLevelLeave, __VA_ARGS__)
#define LOG_INFO(...) CLUS_LOG(clus::LogLevelInfo, __VA_ARGS__)
#define LOG_ERROR(...) CLUS_LOG(clus::LogLevelError, __VA_ARGS__)
#define LOG_WARNING(...) CLUS_LOG(clus::LogLevelWarning, __VA_ARGS__)

// For members that log their leaving on every path, at function scope only; the text must hold no format characters.
#define LOG_LEAVE_AT_END(text) const clus::LeaveLogger leaveLogger(CLUS_SOURCE_TAG, __LINE__, (text))
#define LOG_ENTER_AND_LEAVE(text) \
    LOG_ENTER(text);              \
    LOG_LEAVE_AT_END(text)

#endif
