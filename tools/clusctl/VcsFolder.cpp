#include "VcsFolder.h"

#include "Failure.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Files.h"

namespace {

const wchar_t FolderName[] = L"clusctl-vcs";
const wchar_t ProbeName[] = L"probe";
const char Hint[] = "The output of the VCS tools goes through that folder: TEMP names where it is made.";

std::wstring g_former; // while a folder lives

std::wstring CurrentFolder() {
    std::wstring folder(GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), &folder[0]));
    return folder;
}

// Writes some more than the unit in which any file system gives out room. The Win32 code.
DWORD Probe(const std::wstring& path) {
    const common::Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                          FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!file) {
        return GetLastError();
    }
    static const char bytes[65536] = {}; // no memory of the heap: this is asked while the library reports a run
    DWORD written = 0;
    if (!WriteFile(file.get(), bytes, sizeof(bytes), &written, nullptr)) {
        return GetLastError();
    }
    return written == sizeof(bytes) ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

} // namespace

VcsFolder::VcsFolder() : m_former(CurrentFolder()) {
    try {
        m_folder = std::make_unique<PrivateFolder>(FolderName);
    } catch (Failure& failure) {
        throw failure.Hint(Hint);
    }
    DWORD code = Probe(m_folder->File(ProbeName));
    for (const wchar_t* const variable : {L"VCSSIM_MAIN_CF", L"VCSSIM_FAULTS", L"VCSSIM_JOURNAL"}) {
        NameAbsolutely(variable);
    }
    if (code == ERROR_SUCCESS && !SetCurrentDirectoryW(m_folder->Path().c_str())) {
        code = GetLastError();
    }
    if (code != ERROR_SUCCESS) {
        throw Failure::OfCode("cannot write to the folder " + Quoted(m_folder->Path()), code).Hint(Hint);
    }
    g_former = m_former;
}

VcsFolder::~VcsFolder() {
    SetCurrentDirectoryW(m_former.c_str()); // the system keeps a folder that is the current one
    for (const Variable& variable : m_variables) {
        if (common::EnvironmentVariable(variable.name) == variable.absolute) {
            SetEnvironmentVariableW(variable.name, variable.given.c_str());
        }
    }
    g_former.clear();
}

std::wstring VcsFolder::CallersFolder() {
    return g_former.empty() ? CurrentFolder() : g_former;
}

std::vector<std::wstring> VcsFolder::LeftFolders() {
    return PrivateFolder::Left(FolderName);
}

void VcsFolder::NameAbsolutely(const wchar_t* variable) {
    const std::wstring given = common::EnvironmentVariable(variable);
    if (!given.empty()) {
        m_variables.push_back({variable, given, common::FullPath(given)});
        SetEnvironmentVariableW(variable, m_variables.back().absolute.c_str());
    }
}

unsigned long ProbeCurrentFolder() {
    return Probe(ProbeName);
}
