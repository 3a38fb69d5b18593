// The debug log's file, written by this tool itself: the library's own writer does not know what is secret.
#ifndef CLUSCTL_LOGFILE_H
#define CLUSCTL_LOGFILE_H

#include <winsock2.h>
#include <windows.h>

#include <string>

class LogFile {
public:
    // Opens the file that --log, or else CLUSUTIL_LOG_FILE or the log's registry key, names, and takes it away from the
    // log library. Without a file nothing is written. To be called before the first line is logged.
    explicit LogFile(const std::wstring& option);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    // `word` names the level. The first line that cannot be written is told on standard error; the work goes on.
    void Write(unsigned int level, const char* word, const char* sourceFile, int line, const std::string& text);

private:
    HANDLE m_file = INVALID_HANDLE_VALUE;
    bool m_hasWarned = false;
    int m_detail = 0; // 0 nothing, 1 errors, 2 warnings too, 3 information too, 4 everything
};

#endif
