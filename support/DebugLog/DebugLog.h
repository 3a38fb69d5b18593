// The product's debug log. This is the default implementation of the interface; the product's own DebugLog.dll can take
// its place.
#ifndef DEBUGLOG_H
#define DEBUGLOG_H

#include <winsock2.h>
#include <windows.h>

#if defined(DEBUGLOG_BUILD)
#define DEBUGLOG_API __declspec(dllexport)
#else
#define DEBUGLOG_API __declspec(dllimport)
#endif

namespace DBG {

// Levels. Other numbers are allowed: with bit 0x1000 they count as warnings, without it as entry/leaving lines.
const unsigned int LEVEL_INFORMATION = 0x102; // values found, progress, decisions
const unsigned int LEVEL_ENTRY = 0x110;       // entering a function
const unsigned int LEVEL_LEAVING = 0x111;     // leaving a function
const unsigned int LEVEL_ERROR = 0x1001;      // a call failed, an argument is null
const unsigned int LEVEL_WARNING = 0x1003;    // a failure that the caller survives

// Writes one line. `format` is a wide printf format of the platform's C runtime: %s takes wide text, %S narrow text.
// Where the line goes and which levels pass is configuration (docs/support-libraries.md). A level that does not pass
// costs one comparison: neither `format` nor the arguments are touched.
//
// Keeps the caller's last-error value. Never throws. A null `sourceFile` or `format` and a null %s argument are
// survived. May be called on any thread at any time, also while the process is ending.
DEBUGLOG_API void DebugLogEx(HMODULE module, unsigned int level, const char* sourceFile, int line,
                             const wchar_t* format, ...);

} // namespace DBG

// Receives every line that this process logs, whatever the configured level, besides the configured destination. `text`
// is the formatted text without a line end; it is valid during the call only. Called on the logging thread, one call at
// a time. What the sink itself logs goes to the configured destination only. The sink must not throw, nor wait for
// another thread that logs.
typedef void (*DebugLogSink)(void* context, unsigned int level, const char* sourceFile, int line, const wchar_t* text);

// Replaces the process's sink; null removes it. When the function returns, the previous sink is not running and will
// not be called again (a sink that removes itself excepted).
//
// Optional: the product's own DebugLog.dll may lack it. Look it up with
// GetProcAddress(GetModuleHandleW(L"DebugLog.dll"), "DebugLogSetSink") and do without it when that gives null; linking
// to it directly ties a program to this implementation.
extern "C" DEBUGLOG_API void DebugLogSetSink(DebugLogSink sink, void* context);

#endif
