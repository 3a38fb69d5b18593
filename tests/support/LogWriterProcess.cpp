#include "LogWriterProcess.h"

#include "common/Files.h"

#include <cstring>
#include <cwchar>

#include <gtest/gtest.h>

namespace {

std::wstring CommandLine(const std::wstring& arguments) {
    return L"\"" + harness::ProgramFolder() + L"log_writer.exe\" " + arguments;
}

// The log's variables that are not given are removed.
Variables WithoutOthers(Variables variables) {
    variables.insert({L"CLUSUTIL_LOG_FILE", L""});
    variables.insert({L"CLUSUTIL_LOG_LEVEL", L""});
    return variables;
}

std::string ReadDebugString(HANDLE process, const OUTPUT_DEBUG_STRING_INFO& info) {
    std::string text(info.nDebugStringLength * (info.fUnicode != 0 ? sizeof(wchar_t) : 1u), '\0');
    SIZE_T read = 0;
    ReadProcessMemory(process, info.lpDebugStringData, &text[0], text.size(), &read);
    text.resize(read);
    if (info.fUnicode != 0) {
        std::string narrow;
        for (size_t i = 0; i + 1 < text.size(); i += 2) {
            narrow += text[i + 1] == '\0' ? text[i] : '?';
        }
        text.swap(narrow);
    }
    text.resize(strnlen(text.data(), text.size()));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
        text.pop_back();
    }
    return text;
}

} // namespace

ChildResult RunLogWriter(const std::wstring& arguments, const Variables& variables) {
    ChildResult result;
    harness::ChildProcess process(CommandLine(arguments), WithoutOthers(variables), {}, DEBUG_ONLY_THIS_PROCESS);
    for (bool running = process.get() != nullptr; running;) {
        DEBUG_EVENT event = {};
        if (!WaitForDebugEvent(&event, 60000)) {
            ADD_FAILURE() << "no debug event, error " << GetLastError();
            break;
        }
        DWORD answer = DBG_CONTINUE;
        switch (event.dwDebugEventCode) {
        case OUTPUT_DEBUG_STRING_EVENT:
            result.debugLines.push_back(ReadDebugString(process.get(), event.u.DebugString));
            break;
        case EXCEPTION_DEBUG_EVENT:
            if (event.u.Exception.ExceptionRecord.ExceptionCode != static_cast<DWORD>(EXCEPTION_BREAKPOINT)) {
                answer = static_cast<DWORD>(DBG_EXCEPTION_NOT_HANDLED);
            }
            break;
        case CREATE_PROCESS_DEBUG_EVENT:
            CloseHandle(event.u.CreateProcessInfo.hFile);
            break;
        case LOAD_DLL_DEBUG_EVENT:
            CloseHandle(event.u.LoadDll.hFile);
            break;
        case EXIT_PROCESS_DEBUG_EVENT:
            result.exitCode = event.u.ExitProcess.dwExitCode;
            running = false;
            break;
        default:
            break;
        }
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
    }
    return result;
}

std::unique_ptr<harness::ChildProcess> StartLogWriter(const std::wstring& arguments, const Variables& variables) {
    return std::make_unique<harness::ChildProcess>(CommandLine(arguments), WithoutOthers(variables));
}

std::string TemporaryFile::Bytes() const {
    return common::FileExists(m_path) ? common::ReadWholeFile(m_path) : std::string();
}

std::vector<std::string> TemporaryFile::Lines() const {
    std::vector<std::string> lines;
    const std::string bytes = Bytes();
    size_t start = 0;
    for (size_t end = bytes.find("\r\n"); end != std::string::npos; end = bytes.find("\r\n", start)) {
        lines.push_back(bytes.substr(start, end - start));
        start = end + 2;
    }
    EXPECT_EQ(start, bytes.size()) << "the last line is torn";
    return lines;
}
