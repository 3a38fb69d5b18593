// The library's debug log as this tool uses it: the reasons it gives for a failure, and the lines that --verbose shows.
#ifndef CLUSCTL_LOGCAPTURE_H
#define CLUSCTL_LOGCAPTURE_H

#include "LogFile.h"
#include "Secrets.h"
#include "Stream.h"
#include "ToolRuns.h"

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

// Receives the process's log lines while it lives. There is one at a time.
class LogCapture {
public:
    // Lines are also written, without secrets, to `verbose` when it is given, which must outlive this object, and to
    // the log file: `logFile`, or when that is empty the configured one.
    LogCapture(const Stream* verbose, const std::wstring& logFile);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // False when the DebugLog.dll in use does not hand out its lines: the product's own may not.
    bool IsAvailable() const;

    // Whether the lines appear on standard error as they are logged.
    bool IsShown() const;

    // The errors and warnings so far, oldest first, each once.
    const std::vector<std::string>& Problems() const;

    // The command-line tools that the library ran so far.
    const ToolRuns& Tools() const;

private:
    static void Receive(void* context, unsigned int level, const char* sourceFile, int line, const wchar_t* text);
    void Take(unsigned int level, const char* sourceFile, int line, const std::wstring& text);

    const Stream* m_verbose;
    bool m_isAvailable;
    std::unique_ptr<LogFile> m_file;
    LogSecrets m_secrets;
    ToolRuns m_tools;
    std::vector<std::string> m_problems;
    std::unordered_set<std::string> m_known; // the same, to look them up
};

#endif
