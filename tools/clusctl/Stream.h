// Standard output and standard error: UTF-8 to files and pipes, UTF-16 to a console.
#ifndef CLUSCTL_STREAM_H
#define CLUSCTL_STREAM_H

#include <winsock2.h>
#include <windows.h>

#include <string>

class Stream {
public:
    // `standardHandle`: STD_OUTPUT_HANDLE or STD_ERROR_HANDLE.
    explicit Stream(DWORD standardHandle);

    // Unbuffered. Styles of a text (picture/TerminalPage.h) become those of a console. The Win32 code, 0 when
    // everything was written.
    DWORD Write(const std::string& text) const;

    bool IsConsole() const;

private:
    DWORD WriteStyled(const std::string& text) const;
    DWORD WritePlain(const std::string& text) const;

    HANDLE m_handle;
    bool m_isConsole;
};

#endif
