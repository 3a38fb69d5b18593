// The doctor's look at this computer: libraries and their versions, runs that were ended, files that were left.
#include "DoctorParts.h"

#include "LoadedLibraries.h"
#include "LogCapture.h"
#include "RunMarker.h"
#include "Text.h"
#include "VcsFolder.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <set>

namespace {

// Those that the library needs are loaded with it, or clusctl has ended.
void LookAtLibraries(const LogCapture& log, Findings& findings) {
    std::string wanted;
    for (const LoadedLibrary& library : LoadedLibraries()) {
        const std::string name = Printable(std::wstring(library.name));
        findings.Add("library", name,
                     (library.version.empty() ? "It has no version" : "It is of version " + library.version) +
                         ", and is " + QuotedPath(library.path) + ".");
        wanted = wanted.empty() ? library.version : wanted;
        if (library.isProducts && library.version != wanted) {
            findings.Add("library-version-differs", name, "clusutil.dll is of version " + wanted + ".",
                         "copy the DLLs of one release there");
        }
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

void LookForLeftFiles(const std::wstring& folder, Findings& findings) {
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

// The folder in which the system starts services.
std::wstring ServicesFolder() {
    wchar_t folder[MAX_PATH] = {};
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    return length < MAX_PATH ? folder : L"";
}

// The library leaves the captured output of a VCS tool only when its process is ended in the middle, in the folder in
// which it runs: what that was of another program nobody can tell, but where it is likely.
void LookAtLeftFiles(Findings& findings) {
    std::vector<std::wstring> folders = {VcsFolder::CallersFolder(), ServicesFolder()};
    for (const std::vector<std::wstring>& more : {FoldersOfSettings(), VcsFolder::LeftFolders()}) {
        folders.insert(folders.end(), more.begin(), more.end());
    }
    std::set<std::wstring> seen;
    for (const std::wstring& folder : folders) {
        const std::wstring bare = folder.substr(0, folder.find_last_not_of(L"\\/") + 1);
        if (!bare.empty() && seen.insert(common::Folded(bare)).second) {
            LookForLeftFiles(bare, findings);
        }
    }
}

} // namespace

void DiagnoseMachine(const LogCapture& log, Findings& findings) {
    LookAtLibraries(log, findings);
    LookAtLeftRuns(findings);
    LookAtLeftFiles(findings);
}
