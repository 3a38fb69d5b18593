#include "ChildProcess.h"

#include "common/Files.h"

#include <cstring>
#include <cwchar>

#include <gtest/gtest.h>

namespace {

std::wstring ProgramPath() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path);
    return folder.substr(0, folder.find_last_of(L'\\') + 1) + L"log_writer.exe";
}

// This process's environment with the given changes.
std::wstring EnvironmentBlock(Variables changes) {
    changes.insert({L"CLUSUTIL_LOG_FILE", L""});
    changes.insert({L"CLUSUTIL_LOG_LEVEL", L""});
    std::wstring block;
    wchar_t* const current = GetEnvironmentStringsW();
    for (const wchar_t* entry = current; *entry != L'\0'; entry += wcslen(entry) + 1) {
        const std::wstring text(entry);
        if (changes.count(text.substr(0, text.find(L'=', 1))) == 0) {
            block += text + L'\0';
        }
    }
    FreeEnvironmentStringsW(current);
    for (const auto& change : changes) {
        if (!change.second.empty()) {
            block += change.first + L"=" + change.second + L'\0';
        }
    }
    return block + L'\0';
}

bool Start(const std::wstring& arguments, const Variables& variables, DWORD flags, PROCESS_INFORMATION& process) {
    std::wstring commandLine = L"\"" + ProgramPath() + L"\" " + arguments;
    std::wstring environment = EnvironmentBlock(variables);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    return CreateProcessW(nullptr, &commandLine[0], nullptr, nullptr, FALSE, flags | CREATE_UNICODE_ENVIRONMENT,
                          &environment[0], nullptr, &startup, &process) != FALSE;
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
    PROCESS_INFORMATION process = {};
    if (!Start(arguments, variables, DEBUG_ONLY_THIS_PROCESS, process)) {
        ADD_FAILURE() << "cannot start log_writer.exe, error " << GetLastError();
        return result;
    }
    for (bool running = true; running;) {
        DEBUG_EVENT event = {};
        if (!WaitForDebugEvent(&event, 60000)) {
            ADD_FAILURE() << "no debug event, error " << GetLastError();
            TerminateProcess(process.hProcess, 99);
            break;
        }
        DWORD answer = DBG_CONTINUE;
        switch (event.dwDebugEventCode) {
        case OUTPUT_DEBUG_STRING_EVENT:
            result.debugLines.push_back(ReadDebugString(process.hProcess, event.u.DebugString));
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
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return result;
}

HANDLE StartLogWriter(const std::wstring& arguments, const Variables& variables) {
    PROCESS_INFORMATION process = {};
    if (!Start(arguments, variables, 0, process)) {
        return nullptr;
    }
    CloseHandle(process.hThread);
    return process.hProcess;
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
