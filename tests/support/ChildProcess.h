// Runs log_writer.exe with an environment of its own, as its debugger.
#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include "common/TemporaryFolder.h"

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

// A file in a folder of its own, both of which are deleted at the end. There is none until somebody writes it.
class TemporaryFile {
public:
    const std::wstring& Path() const {
        return m_path;
    }
    std::string Bytes() const; // empty when there is no file
    // Lines without "\r\n"; fails the test when the file does not end with one.
    std::vector<std::string> Lines() const;

private:
    const common::TemporaryFolder m_folder{L"clusutil-log"};
    const std::wstring m_path = m_folder.File(L"log.txt");
};

#endif
