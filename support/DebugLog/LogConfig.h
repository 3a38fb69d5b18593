// Which levels the log lets through and where it writes: environment first, then registry, then defaults.
#ifndef LOGCONFIG_H
#define LOGCONFIG_H

#include <string>

namespace DebugLogDetail {

// Environment variables, each of which goes before its registry value.
const wchar_t FileVariable[] = L"CLUSUTIL_LOG_FILE";
const wchar_t LevelVariable[] = L"CLUSUTIL_LOG_LEVEL";

// One bit per class of levels.
enum : unsigned int {
    MaskError = 1,
    MaskWarning = 2,
    MaskInformation = 4,
    MaskTrace = 8,
    MaskDefault = MaskError | MaskWarning,
    MaskAll = MaskError | MaskWarning | MaskInformation | MaskTrace
};

struct LogConfig {
    unsigned int mask = MaskDefault;            // levels that pass
    unsigned int maskWithoutFile = MaskDefault; // levels that pass when the file cannot be used
    std::wstring file;                          // full path, empty: debugger channel
};

// Reads the process's configuration. Throws std::bad_alloc only.
LogConfig ReadLogConfig();

} // namespace DebugLogDetail

#endif
