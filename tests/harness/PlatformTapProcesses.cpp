// The calls with which clusutil.dll runs tools: processes, capture files, and the C runtime's files.
#include "TappedCall.h"

#include <cstdio>
#include <io.h>

namespace harness {

namespace {

std::string Hex(DWORD number) {
    char text[9];
    std::snprintf(text, sizeof(text), "%lx", static_cast<unsigned long>(number));
    return text;
}

std::string FileName(LPCWSTR name) {
    return WithoutTempNames(Utf8(name));
}

void TapFiles(PlatformTap& tap) {
    TAP("kernel32", GetTempFileNameW, Null, ([](LPCWSTR folder, LPCWSTR prefix, UINT unique, LPWSTR) {
            return Joined({Utf8(folder), Utf8(prefix), Number(unique)});
        }),
        nullptr);
    TAP("kernel32", CreateFileW, Invalid,
        ([](LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
            HANDLE) {
            const bool inherited = security && security->bInheritHandle;
            return Joined({FileName(name), Hex(access), Number(share), inherited ? "inherited" : "private",
                           Number(disposition), Number(flags)});
        }),
        ([&tap](HANDLE result, LPCWSTR name, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
            if (result != INVALID_HANDLE_VALUE) {
                tap.HandleOpened(result, FileName(name));
            }
        }));
    TAP("kernel32", SetHandleInformation, Null, ([&tap](HANDLE handle, DWORD mask, DWORD flags) {
            return Joined({tap.LabelOf(handle), Number(mask), Number(flags)});
        }),
        nullptr);
    // Noted before the close: another thread may get the same handle right after it.
    TAP_INSTEAD("kernel32", CloseHandle, CloseFalse, ([&tap](HANDLE handle) { return tap.LabelOf(handle); }), nullptr,
                ([&tap](HANDLE handle) {
                    tap.HandleClosed(handle);
                    return CloseHandle(handle);
                }));
    TAP(
        "kernel32", DeleteFileW, CloseFalse, [](LPCWSTR name) { return FileName(name); }, nullptr);
}

void TapProcesses(PlatformTap& tap) {
    TAP_INSTEAD("kernel32", CreateProcessW, Null,
                ([](LPCWSTR, LPWSTR commandLine, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID,
                    LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION) { return Utf8(commandLine); }),
                ([&tap](BOOL result, LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID,
                        LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION process) {
                    if (result) {
                        tap.HandleOpened(process->hProcess, "process");
                        tap.HandleOpened(process->hThread, "thread");
                        if (!tap.processes) {
                            tap.WatchChild(process->hProcess);
                        }
                    }
                }),
                ([&tap](LPCWSTR application, LPWSTR commandLine, LPSECURITY_ATTRIBUTES processAttributes,
                        LPSECURITY_ATTRIBUTES threadAttributes, BOOL inherit, DWORD flags, LPVOID environment,
                        LPCWSTR directory, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process) -> BOOL {
                    if (tap.processes) {
                        return tap.processes->Create({application, commandLine, processAttributes, threadAttributes,
                                                      inherit, flags, environment, directory, startup},
                                                     process);
                    }
                    return CreateProcessW(application, commandLine, processAttributes, threadAttributes, inherit, flags,
                                          environment, directory, startup, process);
                }));
    TAP_INSTEAD("kernel32", WaitForSingleObject, Invalid, ([&tap](HANDLE handle, DWORD milliseconds) {
                    return Joined({tap.LabelOf(handle), milliseconds == INFINITE ? "INFINITE" : Number(milliseconds)});
                }),
                nullptr, ([&tap](HANDLE handle, DWORD milliseconds) {
                    return tap.processes ? tap.processes->Wait(handle, milliseconds)
                                         : WaitForSingleObject(handle, milliseconds);
                }));
    TAP_INSTEAD("kernel32", GetExitCodeProcess, Null,
                ([&tap](HANDLE process, LPDWORD) { return tap.LabelOf(process); }), nullptr,
                ([&tap](HANDLE process, LPDWORD code) {
                    return tap.processes ? tap.processes->ExitCode(process, code) : GetExitCodeProcess(process, code);
                }));
}

// Variadic in the header; the library always passes the file name, the mode, the sharing and nothing or one more.
typedef int OpenFunction(const wchar_t*, int, int, int);
typedef int ReadFunction(int, void*, unsigned);
typedef int CloseFunction(int);

void TapRuntimeFiles(PlatformTap& tap) {
    Add<struct wsopen_tap, OpenFunction>(
        tap, {AnyCRuntime, "_wsopen", FailureForm::Invalid,
              [](const wchar_t* name, int mode, int share, int) {
                  return Joined({FileName(name), Hex(static_cast<DWORD>(mode)), Hex(static_cast<DWORD>(share))});
              },
              [&tap](int result, const wchar_t* name, int, int, int) {
                  if (result >= 0) {
                      tap.FileOpened(result, FileName(name));
                  }
              },
              nullptr});
    Add<struct read_tap, ReadFunction>(tap, {AnyCRuntime, "_read", FailureForm::Invalid,
                                             [](int, void*, unsigned size) { return Number(size); }, nullptr, nullptr});
    Add<struct close_tap, CloseFunction>(tap, {AnyCRuntime, "_close", FailureForm::CloseInvalid,
                                               [](int) { return std::string(); }, nullptr,
                                               [&tap](int file) {
                                                   tap.FileClosed(file);
                                                   return _close(file);
                                               }});
}

} // namespace

void InstallProcessTapTable(PlatformTap& tap) {
    tap.Label(INVALID_HANDLE_VALUE, "INVALID");
    TapFiles(tap);
    TapProcesses(tap);
    TapRuntimeFiles(tap);
}

} // namespace harness
