#include "ChildProcess.h"

#include <cwchar>

#include <gtest/gtest.h>

namespace harness {

namespace {

std::wstring EnvironmentBlock(const Variables& changes) {
    std::wstring block;
    wchar_t* const current = GetEnvironmentStringsW();
    for (const wchar_t* entry = current; *entry != L'\0'; entry += std::wcslen(entry) + 1) {
        const std::wstring text(entry);
        if (changes.count(text.substr(0, text.find(L'=', 1))) == 0) { // the system's own names begin with one
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

} // namespace

std::wstring ProgramPath() {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
    return path;
}

std::wstring ProgramFolder() {
    const std::wstring path = ProgramPath();
    return path.substr(0, path.find_last_of(L'\\') + 1);
}

ChildProcess::ChildProcess(const std::wstring& commandLine, const Variables& changes, const ChildStreams& streams,
                           DWORD flags) {
    std::wstring line = commandLine;
    std::wstring environment = EnvironmentBlock(changes);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    const bool isRedirected = streams.output != nullptr || streams.errors != nullptr;
    startup.dwFlags = isRedirected ? STARTF_USESTDHANDLES : 0;
    startup.hStdOutput = streams.output;
    startup.hStdError = streams.errors;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, &line[0], nullptr, nullptr, isRedirected, flags | CREATE_UNICODE_ENVIRONMENT,
                        &environment[0], nullptr, &startup, &process)) {
        ADD_FAILURE() << "the child process does not start, error " << GetLastError();
        return;
    }
    const common::Handle thread(process.hThread);
    m_process = common::Handle(process.hProcess);
}

ChildProcess::~ChildProcess() {
    Stop();
}

DWORD ChildProcess::Wait() {
    EXPECT_EQ(WaitForSingleObject(m_process.get(), 60000), static_cast<DWORD>(WAIT_OBJECT_0));
    DWORD code = 0xFFFFFFFF;
    GetExitCodeProcess(m_process.get(), &code);
    return code;
}

bool ChildProcess::RunsFor(DWORD milliseconds) const {
    return WaitForSingleObject(m_process.get(), milliseconds) == WAIT_TIMEOUT;
}

void ChildProcess::Stop() {
    if (RunsFor(0)) {
        TerminateProcess(m_process.get(), 9999);
        WaitForSingleObject(m_process.get(), 10000);
    }
}

} // namespace harness
