// Runs a program on a console of its own and interrupts it:
//
//   interrupt-tool ctrl-c|twice|close|logoff|kill FILE NUMBER PAUSE PROGRAM [ARGUMENT ...]
//
// PAUSE milliseconds after FILE begins with that number. "twice" presses Ctrl+C two times, "close" closes the
// console, "logoff" ends the session, "kill" ends the program without asking it. The exit code is the program's; 99
// when it ended before, or nothing could be done.
#include "LaunchedProgram.h"

#include <string>

namespace {

const DWORD BetweenKeys = 500; // milliseconds
const UINT KilledExitCode = 1; // as of "taskkill /F"

// On the console of the program, which this one joins.
bool PressCtrlC(DWORD process) {
    FreeConsole();
    return AttachConsole(process) && SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE) &&
           GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

// What the console's host does when its window is closed or the session ends, which Wine's does not do by itself: a
// thread in the program tells its handlers. System DLLs lie at the same address in all processes.
bool Tell(HANDLE process, DWORD event) {
    const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernelbase.dll"), "CtrlRoutine")));
    if (routine == nullptr) {
        return false;
    }
    const HANDLE thread = CreateRemoteThread(process, nullptr, 0, routine,
                                             reinterpret_cast<void*>(static_cast<ULONG_PTR>(event)), 0, nullptr);
    return thread != nullptr && CloseHandle(thread);
}

bool Interrupt(const std::wstring& how, const PROCESS_INFORMATION& program) {
    if (how == L"kill") {
        return TerminateProcess(program.hProcess, KilledExitCode) != FALSE;
    }
    if (how == L"close" || how == L"logoff") {
        return Tell(program.hProcess, how == L"close" ? CTRL_CLOSE_EVENT : CTRL_LOGOFF_EVENT);
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
        return CannotBeDone;
    }
    const std::wstring how = arguments[1];
    return RunUntil(arguments, CREATE_NEW_CONSOLE,
                    [&how](const PROCESS_INFORMATION& program) { return Interrupt(how, program); });
}
