#include "DebugLog.h"

#include "LogConfig.h"
#include "LogLine.h"

#include "common/AppendFile.h"
#include "common/Text.h"

#include <atomic>
#include <cstdarg>
#include <cwchar>
#include <new>
#include <string>
#include <vector>

using namespace DebugLogDetail;

namespace {

// The levels that pass, for the test at the head of DebugLogEx. All bits set: the configuration has not been read yet.
const unsigned int MaskUnknown = ~0u;
std::atomic<unsigned int> s_mask{MaskUnknown};

// The process's log.
struct Log {
    Log() {
        InitializeCriticalSection(&lock);
    }

    ~Log() {
        DeleteCriticalSection(&lock);
    }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    CRITICAL_SECTION lock;
    bool isConfigured = false;
    std::atomic<unsigned int> configuredMask{MaskDefault};
    unsigned int maskWithoutFile = MaskDefault;
    common::AppendFile file;
    DebugLogSink sink = nullptr;
    void* sinkContext = nullptr;
    bool isInSink = false;
};

Log& TheLog() {
    // Not destroyed by itself: it must work until the very end of the process. DllMain does it when the DLL is
    // unloaded.
    alignas(Log) static unsigned char s_storage[sizeof(Log)];
    static Log* const log = new (s_storage) Log;
    return *log;
}

class Locked {
public:
    explicit Locked(Log& log) : m_log(log) {
        EnterCriticalSection(&m_log.lock);
    }
    ~Locked() {
        LeaveCriticalSection(&m_log.lock);
    }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    Log& m_log;
};

class LastErrorKept {
public:
    LastErrorKept() : m_code(GetLastError()) {
    }
    ~LastErrorKept() {
        SetLastError(m_code);
    }
    LastErrorKept(const LastErrorKept&) = delete;
    LastErrorKept& operator=(const LastErrorKept&) = delete;

private:
    DWORD m_code;
};

void PublishMask(const Log& log) {
    s_mask.store(log.sink != nullptr ? static_cast<unsigned int>(MaskAll) : log.configuredMask.load(),
                 std::memory_order_release);
}

void WriteToDebugger(const std::wstring& line) {
    OutputDebugStringW((line + L"\n").c_str());
}

void UseDebuggerOnly(Log& log) {
    log.configuredMask = log.maskWithoutFile;
    PublishMask(log);
}

void ReadAndOpen(Log& log) {
    const LogConfig config = ReadLogConfig();
    log.configuredMask = config.mask;
    log.maskWithoutFile = config.maskWithoutFile;
    if (config.file.empty() || config.mask == 0) {
        return;
    }
    log.file = common::AppendFile(config.file);
    const DWORD error = log.file.Open();
    if (error != ERROR_SUCCESS) {
        UseDebuggerOnly(log);
        if (log.configuredMask != 0) {
            WriteToDebugger(L"DebugLog: cannot open " + config.file + L", error " + std::to_wstring(error));
        }
    }
}

// The mask is published last, so that no other thread drops a line by a half-read configuration.
void Configure(Log& log) {
    if (log.isConfigured) {
        return;
    }
    log.isConfigured = true;
    try {
        ReadAndOpen(log);
    } catch (...) {
        // Out of memory: what has been read so far holds.
    }
    PublishMask(log);
}

std::wstring ModulePath(HMODULE module) {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(module, path, MAX_PATH);
    return length == 0 ? std::wstring(L"-") : std::wstring(path, length);
}

void Write(Log& log, const std::wstring& line) {
    if (log.file.IsOpen()) {
        const DWORD error = log.file.Append(common::ToUtf8(line + L"\r\n"));
        if (error == ERROR_SUCCESS) {
            return;
        }
        log.file.Close(); // given up for good
        UseDebuggerOnly(log);
        WriteToDebugger(L"DebugLog: cannot write to the log file, error " + std::to_wstring(error));
    }
    WriteToDebugger(line);
}

void Pass(HMODULE module, unsigned int level, const char* sourceFile, int line, const std::wstring& text) {
    Log& log = TheLog();
    // Composed outside the lock: asking for a module's name may need the loader lock, and a thread that holds the
    // loader lock may be waiting to log.
    const bool isConfigured = (log.configuredMask & MaskOfLevel(level)) != 0;
    std::wstring composed;
    if (isConfigured) {
        composed = LineHead(level, ModulePath(module), sourceFile, line);
        AppendPrintable(composed, text);
    }
    const Locked locked(log);
    if (log.sink != nullptr && !log.isInSink) {
        log.isInSink = true;
        log.sink(log.sinkContext, level, sourceFile, line, text.c_str());
        log.isInSink = false;
    }
    if (isConfigured) {
        Write(log, composed);
    }
}

std::wstring Format(const wchar_t* format, va_list arguments) {
    if (format == nullptr) {
        return L"(null)";
    }
    wchar_t onStack[1024];
    va_list again;
    va_copy(again, arguments);
    const int length = _vsnwprintf(onStack, 1024, format, arguments);
    std::wstring text;
    if (length >= 0 && length < 1024) {
        text.assign(onStack, static_cast<size_t>(length));
    } else {
        va_list measure;
        va_copy(measure, again);
        const int needed = _vscwprintf(format, measure);
        va_end(measure);
        if (needed > 0) {
            std::vector<wchar_t> large(static_cast<size_t>(needed) + 1);
            _vsnwprintf(large.data(), large.size(), format, again);
            text.assign(large.data(), static_cast<size_t>(needed));
        } else {
            // An argument that the runtime cannot convert: the text up to there is better than none.
            onStack[1023] = L'\0';
            text = onStack;
        }
    }
    va_end(again);
    return text;
}

bool IsEnabled(unsigned int level) {
    return (s_mask.load(std::memory_order_acquire) & MaskOfLevel(level)) != 0;
}

} // namespace

namespace DBG {

void DebugLogEx(HMODULE module, unsigned int level, const char* sourceFile, int line, const wchar_t* format, ...) {
    if (!IsEnabled(level)) {
        return;
    }
    const LastErrorKept kept;
    va_list arguments;
    va_start(arguments, format);
    try {
        if (s_mask.load(std::memory_order_acquire) == MaskUnknown) {
            Log& log = TheLog();
            const Locked locked(log);
            Configure(log);
        }
        if (IsEnabled(level)) {
            Pass(module, level, sourceFile, line, Format(format, arguments));
        }
    } catch (...) {
        // Out of memory: the line is lost, the caller goes on.
    }
    va_end(arguments);
}

} // namespace DBG

void DebugLogSetSink(DebugLogSink sink, void* context) {
    const LastErrorKept kept;
    Log& log = TheLog();
    const Locked locked(log);
    Configure(log);
    log.sink = sink;
    log.sinkContext = context;
    PublishMask(log);
}

// A DLL that is unloaded gives back its file and its turns; at the process's end the log works to the last line.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) {
        TheLog().~Log();
    }
    return TRUE;
}
