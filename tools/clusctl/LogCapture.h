// The library's debug log as this tool uses it: the reasons it gives for a failure, and the lines that --verbose shows.
#ifndef CLUSCTL_LOGCAPTURE_H
#define CLUSCTL_LOGCAPTURE_H

#include "Stream.h"

#include <string>
#include <vector>

// Receives the process's log lines while it lives. There is one at a time.
class LogCapture {
public:
    // Lines are also written to `verbose` when it is given; it must outlive this object.
    explicit LogCapture(const Stream* verbose);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // False when the DebugLog.dll in use does not hand out its lines: the product's own may not.
    bool IsAvailable() const;

    // Whether the lines appear on standard error as they are logged.
    bool IsShown() const;

    // The errors and warnings so far, oldest first, each once.
    const std::vector<std::string>& Problems() const;

private:
    static void Receive(void* context, unsigned int level, const char* sourceFile, int line, const wchar_t* text);
    void Take(unsigned int level, const std::wstring& text);

    const Stream* m_verbose;
    bool m_isAvailable;
    std::vector<std::string> m_problems;
};

#endif
