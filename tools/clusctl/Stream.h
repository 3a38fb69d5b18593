// Standard output and standard error: UTF-8 to files and pipes, UTF-16 to a console.
#ifndef CLUSCTL_STREAM_H
#define CLUSCTL_STREAM_H

#include <winsock2.h>
#include <windows.h>

#include <string>

// What a text may hold to change how the following is shown on a console. Elsewhere they are written as they are: a
// text for a file has none.
namespace Styles {
const char Plain[] = "\x1B[0m";
const char Bold[] = "\x1B[1m";
const char Reverse[] = "\x1B[7m";
const char Red[] = "\x1B[31m";
const char Green[] = "\x1B[32m";
const char Yellow[] = "\x1B[33m";
} // namespace Styles

class Stream {
public:
    // `standardHandle`: STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
    explicit Stream(DWORD standardHandle);

    // Unbuffered. The Win32 code, 0 when everything was written.
    DWORD Write(const std::string& text) const;

    bool IsConsole() const;

private:
    DWORD WriteStyled(const std::string& text) const;
    DWORD WritePlain(const std::string& text) const;

    HANDLE m_handle;
    bool m_isConsole;
};

#endif
