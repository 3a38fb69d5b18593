// The debug log's file, written by this tool itself: the library's own writer does not know what is secret.
#ifndef CLUSCTL_LOGFILE_H
#define CLUSCTL_LOGFILE_H

#include "common/AppendFile.h"

#include <string>

// The file that this process writes, or would if it could be opened; empty when there is none.
const std::wstring& DebugLogPath();

class LogFile {
public:
    // Opens the file that --log, or else CLUSUTIL_LOG_FILE or the log's registry key, names, and takes it away from the
    // log library. Without a file nothing is written. To be called before the first line is logged.
    explicit LogFile(const std::wstring& option);

    // The first line that cannot be written is told on standard error; the work goes on.
    void Write(unsigned int level, const char* sourceFile, int line, const std::string& text);

private:
    common::AppendFile m_file;
    unsigned int m_mask = 0; // the levels that are written
    bool m_hasWarned = false;
};

#endif
