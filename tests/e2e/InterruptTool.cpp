// Runs a program on a console of its own and interrupts it:
//
//   interrupt-tool ctrl-c|twice|kill FILE NUMBER PAUSE PROGRAM [ARGUMENT ...]
//
// PAUSE milliseconds after FILE begins with that number. "twice" presses Ctrl+C two times, "kill" ends the
// program without asking it. The exit code is the program's; 99 when it ended before, or nothing could be done.
#include <windows.h>

#include <cstdlib>
#include <cwchar>
#include <string>

namespace {

const int CannotInterrupt = 99;
const DWORD LookInterval = 10;   // milliseconds
const DWORD BetweenKeys = 500;   // milliseconds
const DWORD LongestWait = 40000; // milliseconds
const UINT KilledExitCode = 1;   // as of "taskkill /F"

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

// On the console of the program, which this one joins.
bool PressCtrlC(DWORD process) {
    FreeConsole();
    return AttachConsole(process) && SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE) &&
           GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

bool Interrupt(const std::wstring& how, const PROCESS_INFORMATION& program) {
    if (how == L"kill") {
        return TerminateProcess(program.hProcess, KilledExitCode) != FALSE;
    }
    if (!PressCtrlC(program.dwProcessId)) {
        return false;
    }
    if (how == L"twice") {
        Sleep(BetweenKeys);
        return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != FALSE;
    }
    return true;
}

} // namespace

int wmain(int argumentCount, wchar_t** arguments) {
    if (argumentCount < 6) {
        return CannotInterrupt;
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION program = {};
    if (!CreateProcessW(nullptr, AfterArguments(GetCommandLineW(), 5), nullptr, nullptr, TRUE, CREATE_NEW_CONSOLE,
                        nullptr, nullptr, &startup, &program)) {
        return CannotInterrupt;
    }
    const long wanted = std::wcstol(arguments[3], nullptr, 10);
    DWORD waited = 0;
    while (NumberIn(arguments[2]) < wanted) {
        waited += LookInterval;
        if (waited > LongestWait || WaitForSingleObject(program.hProcess, LookInterval) == WAIT_OBJECT_0) {
            return CannotInterrupt;
        }
    }
    const auto pause = static_cast<DWORD>(std::wcstol(arguments[4], nullptr, 10));
    if (WaitForSingleObject(program.hProcess, pause) == WAIT_OBJECT_0 || !Interrupt(arguments[1], program)) {
        return CannotInterrupt;
    }
    WaitForSingleObject(program.hProcess, LongestWait);
    DWORD exitCode = CannotInterrupt;
    GetExitCodeProcess(program.hProcess, &exitCode);
    return static_cast<int>(exitCode);
}
