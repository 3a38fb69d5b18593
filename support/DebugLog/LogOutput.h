// Where log lines end up: a file shared with other processes, or the debugger channel.
#ifndef LOGOUTPUT_H
#define LOGOUTPUT_H

#include <string>

#include <winsock2.h>
#include <windows.h>

namespace DebugLogDetail {

// Appends whole lines to one file. Has no destructor on purpose: the handles live as long as the process, so that lines
// logged while it ends still arrive.
class LogFile {
public:
    // False when the file cannot be opened for appending.
    bool Open(const std::wstring& path);

    bool IsOpen() const;

    // Writes the line (UTF-16, without line end) as UTF-8 in one piece. False when it could not be written completely;
    // the file is closed then, and the last-error value says why.
    bool WriteLine(const std::wstring& line);

private:
    void Close();
    void GiveUpTurns();

    HANDLE m_file = INVALID_HANDLE_VALUE;
    HANDLE m_turn = nullptr;
};

void WriteToDebugger(const std::wstring& line);

} // namespace DebugLogDetail

#endif
