#include "platform/ToolProcess.h"

#include "platform/CriticalSection.h"
#include "platform/Log.h"
#include "platform/Owner.h"

CLUS_LOG_PLACE(VeritasCluster, 1);

namespace clus {

namespace {

// From opening an inheritable capture file to making it private again: a tool that another thread starts meanwhile
// would inherit the file and keep it from being read and deleted.
CriticalSection ToolStartLock;

// A scanner looks into each new file for a moment, and the capture file is shared with nobody.
const DWORD SharingPause = 50;      // milliseconds
const DWORD SharingPatience = 1000; // in all

// The capture file, inheritable. The lock is held, and given up between two tries.
HANDLE OpenCaptureFile(const wchar_t* fileName) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    for (DWORD waited = 0;; waited += SharingPause) {
        const HANDLE file =
            CreateFileW(fileName, GENERIC_READ | GENERIC_WRITE, 0, &inheritable, CREATE_ALWAYS, 0, nullptr);
        if (file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION || waited >= SharingPatience) {
            return file;
        }
        ToolStartLock.Leave();
        Sleep(SharingPause);
        ToolStartLock.Enter();
    }
}

} // namespace

bool RunTool(wchar_t* commandLine, const wchar_t* captureFileName, ToolProcess& process) {
    HandleOwner capture;
    PROCESS_INFORMATION information = {};
    {
        const CriticalSectionGuard guard(ToolStartLock);
        capture.reset(OpenCaptureFile(captureFileName));
        if (!capture) {
            return true; // never seen: a failed open gives the invalid handle, and the tool is run without redirection
        }
        STARTUPINFOW startup = {};
        if (capture.get() == INVALID_HANDLE_VALUE) {
            process.captureError = GetLastError();
        } else {
            startup.cb = sizeof(startup);
            startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
            startup.wShowWindow = SW_HIDE;
            // The selector and not the handle it stands for: no tool may wait for input.
            startup.hStdInput = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(STD_INPUT_HANDLE));
            startup.hStdOutput = capture.get();
            startup.hStdError = capture.get();
        }
        if (!CreateProcessW(nullptr, commandLine, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                            &information)) {
            process.startError = GetLastError();
            capture.reset(); // inheritable still, so within the lock
            return process.startError == ERROR_SUCCESS;
        }
        if (capture.get() != INVALID_HANDLE_VALUE) {
            SetHandleInformation(capture.get(), HANDLE_FLAG_INHERIT, 0);
        }
    }
    process.started = true;
    const HandleOwner thread(information.hThread);
    const HandleOwner tool(information.hProcess); // closed first
    WaitForSingleObject(tool.get(), INFINITE);
    process.exitCodeKnown = GetExitCodeProcess(tool.get(), &process.exitCode) != FALSE;
    if (process.exitCodeKnown) {
        LOG_INFO(L"Process exit code: %d", process.exitCode);
    } else {
        LOG_WARNING(L"Cannot get process exit code, error code: %d", GetLastError());
    }
    return true;
}

} // namespace clus
