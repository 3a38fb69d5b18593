// Runs log_writer.exe with an environment of its own, as its debugger.
#ifndef LOGWRITERPROCESS_H
#define LOGWRITERPROCESS_H

#include "ChildProcess.h"

#include "common/TemporaryFolder.h"

#include <memory>
#include <string>
#include <vector>

using harness::Variables;

struct ChildResult {
    DWORD exitCode = 0xffffffff;
    std::vector<std::string> debugLines; // what it wrote to the debugger channel, without line ends
};

// Starts the program and reads its debugger channel until it ends.
ChildResult RunLogWriter(const std::wstring& arguments, const Variables& variables);

// Starts the program without a debugger.
std::unique_ptr<harness::ChildProcess> StartLogWriter(const std::wstring& arguments, const Variables& variables);

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
