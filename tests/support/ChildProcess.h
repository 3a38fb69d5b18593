// Runs log_writer.exe with an environment of its own, as its debugger.
#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <map>
#include <string>
#include <vector>

#include <winsock2.h>
#include <windows.h>

typedef std::map<std::wstring, std::wstring> Variables; // an empty value removes the variable

struct ChildResult {
    DWORD exitCode = 0xffffffff;
    std::vector<std::string> debugLines; // what it wrote to the debugger channel, without line ends
};

// Starts the program and reads its debugger channel until it ends.
ChildResult RunLogWriter(const std::wstring& arguments, const Variables& variables);

// Starts the program without a debugger. The caller waits for and closes the process handle; null on failure.
HANDLE StartLogWriter(const std::wstring& arguments, const Variables& variables);

// A file name in the temporary folder that is deleted at the end.
class TemporaryFile {
public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::wstring& Path() const {
        return m_path;
    }
    std::string Bytes() const;
    // Lines without "\r\n"; fails the test when the file does not end with one.
    std::vector<std::string> Lines() const;

private:
    std::wstring m_path;
};

#endif
