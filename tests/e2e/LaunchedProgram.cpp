#include "LaunchedProgram.h"

#include <cstdlib>
#include <cwchar>

namespace {

const DWORD LookInterval = 10; // milliseconds

// What follows the name and PROGRAM's predecessors, as it was quoted.
wchar_t* AfterArguments(wchar_t* commandLine, int count) {
    wchar_t* at = commandLine;
    for (int i = 0; i < count; ++i) {
        bool isQuoted = false;
        for (; *at != L'\0' && (isQuoted || *at != L' '); ++at) {
            isQuoted = isQuoted != (*at == L'"');
        }
        at += std::wcsspn(at, L" ");
    }
    return at;
}

// The number that a file begins with; 0 without.
long NumberIn(const wchar_t* file) {
    const HANDLE handle = CreateFileW(file, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, 0, nullptr);
    char text[16] = {};
    if (handle != INVALID_HANDLE_VALUE) {
        DWORD read = 0;
        ReadFile(handle, text, sizeof(text) - 1, &read, nullptr);
        CloseHandle(handle);
    }
    return std::strtol(text, nullptr, 10);
}

// Ends the program with this one, however this one ends: it holds the pipe that is read to its end. What the program
// starts is left alone. The handle is kept on purpose.
bool EndWithThisProgram(HANDLE process) {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
    return job != nullptr && SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits)) &&
           AssignProcessToJobObject(job, process);
}

} // namespace

int RunUntil(wchar_t** arguments, DWORD creationFlags, const std::function<bool(const PROCESS_INFORMATION&)>& act) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION program = {};
    if (!CreateProcessW(nullptr, AfterArguments(GetCommandLineW(), 5), nullptr, nullptr, TRUE, creationFlags, nullptr,
                        nullptr, &startup, &program)) {
        return CannotBeDone;
    }
    if (!EndWithThisProgram(program.hProcess)) {
        TerminateProcess(program.hProcess, CannotBeDone);
        return CannotBeDone;
    }
    const long wanted = std::wcstol(arguments[3], nullptr, 10);
    DWORD waited = 0;
    while (NumberIn(arguments[2]) < wanted) {
        waited += LookInterval;
        if (waited > LongestWait || WaitForSingleObject(program.hProcess, LookInterval) == WAIT_OBJECT_0) {
            return CannotBeDone;
        }
    }
    const auto pause = static_cast<DWORD>(std::wcstol(arguments[4], nullptr, 10));
    if (WaitForSingleObject(program.hProcess, pause) == WAIT_OBJECT_0 || !act(program)) {
        return CannotBeDone;
    }
    WaitForSingleObject(program.hProcess, LongestWait);
    DWORD exitCode = CannotBeDone;
    GetExitCodeProcess(program.hProcess, &exitCode);
    return static_cast<int>(exitCode);
}
