#include "DelayedLibraries.h"

#ifdef __MINGW32__

#include "Failure.h"
#include "Stream.h"
#include "Text.h"

#include <windows.h>

#include <delayimp.h>

#include <Interception.h>

#include <string>

namespace {

const char Hint[] = "The DLLs of the installation have to lie beside clusctl.exe, all of one version.";
const wchar_t* const NeededLibraries[] = {L"clusutil.dll", L"clusapi.dll"};

[[noreturn]] void EndFor(const DelayLoadInfo& call) {
    const std::string function = call.dlp.fImportByName ? call.dlp.szProcName : std::to_string(call.dlp.dwOrdinal);
    Stream(STD_ERROR_HANDLE)
        .Write(std::string("clusctl: ") + call.szDll + " does not offer " + function + ": " +
               ErrorText(call.dwLastError) + "\n  " + Hint + "\n");
    ExitProcess(ExitFailed); // nothing can be thrown through the linker's code that called this
}

// Told by the run-time's loader of delayed DLLs, on the thread that calls one of their functions for the first time.
FARPROC WINAPI Watch(unsigned event, PDelayLoadInfo call) {
    thread_local DWORD lastError = ERROR_SUCCESS; // is the caller's, which the library may log
    switch (event) {
    case dliStartProcessing:
        lastError = GetLastError();
        break;
    case dliNoteEndProcessing:
        SetLastError(lastError);
        break;
    case dliNotePreGetProcAddress:
        return call->dlp.fImportByName ? recording::Interception::Replacement(call->szDll, call->dlp.szProcName)
                                       : nullptr;
    case dliFailLoadLib:
    case dliFailGetProc:
        EndFor(*call);
    default:
        break;
    }
    return nullptr;
}

} // namespace

void LoadLibraries() {
    __pfnDliNotifyHook2 = Watch;
    __pfnDliFailureHook2 = Watch;
    for (const wchar_t* const name : NeededLibraries) {
        if (LoadLibraryW(name) == nullptr) {
            throw Failure::OfCode("cannot load " + Printable(name) + " or a DLL that it needs", GetLastError())
                .Hint(Hint);
        }
    }
}

#else

void LoadLibraries() {
}

#endif
