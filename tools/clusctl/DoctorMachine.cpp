// The doctor's look at this computer: libraries and their versions, runs that were ended, files that were left.
#include "DoctorParts.h"

#include "FileVersion.h"
#include "LogCapture.h"
#include "RunMarker.h"
#include "Text.h"
#include "VcsFolder.h"

#include <winsock2.h>
#include <windows.h>

namespace {

const wchar_t* const ProductLibraries[] = {L"clusutil.dll", L"DebugLog.dll", L"CommonUtil.dll", L"WebServerUtil.dll"};
// The run-time is that of the compiler which built the library.
const wchar_t* const OtherLibraries[] = {L"clusapi.dll",        L"resutils.dll",        L"libstdc++-6.dll",
                                         L"libgcc_s_seh-1.dll", L"libwinpthread-1.dll", L"vcruntime140.dll",
                                         L"msvcp140.dll",       L"ucrtbase.dll",        L"msvcrt.dll"};

std::wstring PathOf(HMODULE module) {
    std::wstring path(32768, L'\0'); // the longest there is
    path.resize(GetModuleFileNameW(module, &path[0], static_cast<DWORD>(path.size())));
    return path;
}

// Of one that is loaded. Its version; empty when it has none.
std::string LookAtLibrary(const wchar_t* name, Findings& findings) {
    const HMODULE module = GetModuleHandleW(name);
    if (module == nullptr) {
        return std::string();
    }
    const std::wstring path = PathOf(module);
    std::string version = FileVersion(path);
    findings.Add("library", Printable(std::wstring(name)),
                 (version.empty() ? "It has no version" : "It is of version " + version) + ", and is " +
                     QuotedPath(path) + ".");
    return version;
}

// Those that the library needs are loaded with it, or clusctl has ended.
void LookAtLibraries(const LogCapture& log, Findings& findings) {
    std::string wanted;
    for (const wchar_t* const name : ProductLibraries) {
        const std::string version = LookAtLibrary(name, findings);
        wanted = wanted.empty() ? version : wanted;
        if (version != wanted) {
            findings.Add("library-version-differs", Printable(std::wstring(name)),
                         "clusutil.dll is of version " + wanted + ".", "copy the DLLs of one release there");
        }
    }
    for (const wchar_t* const name : OtherLibraries) {
        LookAtLibrary(name, findings);
    }
    if (!log.IsAvailable()) {
        findings.Add("log-not-handed-out", "DebugLog.dll", "It does not hand out its lines.");
    }
}

void LookAtLeftRuns(Findings& findings) {
    const KilledRuns killed;
    for (const std::string& sentence : killed.Sentences()) {
        findings.Add("run-ended", "clusctl", AsSentence(sentence),
                     "look at what it was about, then let a command that changes something succeed");
    }
}

// The library leaves the captured output of a VCS tool only when its process is ended in the middle.
void LookAtLeftFiles(Findings& findings) {
    const std::wstring folder = VcsFolder::CallersFolder();
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"\\ha-*.tmp").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    size_t count = 0;
    do {
        ++count;
    } while (FindNextFileW(search, &found));
    FindClose(search);
    findings.Add("capture-files-left", QuotedPath(folder),
                 std::to_string(count) + (count == 1 ? " file" : " files") +
                     " of the kind ha-*.tmp: what VCS tools said in runs that were ended.",
                 "del " + QuotedPath(folder + L"\\ha-*.tmp") + ", while no program of the product runs");
}

} // namespace

void DiagnoseMachine(const LogCapture& log, Findings& findings) {
    LookAtLibraries(log, findings);
    LookAtLeftRuns(findings);
    LookAtLeftFiles(findings);
}
