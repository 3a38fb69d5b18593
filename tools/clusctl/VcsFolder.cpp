#include "VcsFolder.h"

#include "Failure.h"
#include "Text.h"
#include "VcsToolFiles.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <sddl.h>

namespace {

const wchar_t FolderName[] = L"clusctl-vcs";
const wchar_t UseName[] = L"in-use";
const wchar_t ProbeName[] = L"probe";
const size_t ProbeBytes = 65536;
const char Hint[] = "The output of the VCS tools goes through that folder: TEMP names where it is made.";

std::wstring CurrentFolder() {
    std::wstring folder(GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), &folder[0]));
    return folder;
}

common::Handle OpenUnshared(const std::wstring& path, DWORD disposition) {
    return common::Handle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr));
}

// For this account, administrators and the system, whatever the folder above allows.
class OwnersOnly {
public:
    OwnersOnly() {
        const std::wstring list = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;" + ThisAccount() + L")";
        if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(list.c_str(), SDDL_REVISION_1, &m_descriptor,
                                                                  nullptr)) {
            throw Failure::OfCode("cannot make a folder of this account's own", GetLastError());
        }
    }
    ~OwnersOnly() {
        LocalFree(m_descriptor);
    }
    OwnersOnly(const OwnersOnly&) = delete;
    OwnersOnly& operator=(const OwnersOnly&) = delete;

    PSECURITY_DESCRIPTOR get() const {
        return m_descriptor;
    }

private:
    PSECURITY_DESCRIPTOR m_descriptor = nullptr;
};

// Writes some more than the unit in which any file system gives out room. The Win32 code.
DWORD Probe(const std::wstring& path) {
    const common::Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                          FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!file) {
        return GetLastError();
    }
    const std::vector<char> bytes(ProbeBytes, 'x');
    DWORD written = 0;
    if (!WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        return GetLastError();
    }
    return written == bytes.size() ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

// What ended runs have left. A folder of anybody else is not touched, nor one that leads elsewhere.
void RemoveLeftFolders() {
    wchar_t temporary[MAX_PATH + 1] = L"";
    GetTempPathW(MAX_PATH + 1, temporary);
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((std::wstring(temporary) + FolderName + L"-*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring folder = std::wstring(temporary) + found.cFileName;
        const bool isPlain = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                             (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
        if (isPlain && HasTrustedOwner(folder) && OpenUnshared(folder + L"\\" + UseName, OPEN_EXISTING)) {
            common::RemoveFolder(folder);
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
}

} // namespace

VcsFolder::VcsFolder() : m_former(CurrentFolder()) {
    RemoveLeftFolders();
    try {
        m_folder = std::make_unique<common::TemporaryFolder>(FolderName, OwnersOnly().get());
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot create the folder " + Quoted(error.Path()), error.Code()).Hint(Hint);
    }
    m_use = OpenUnshared(m_folder->File(UseName), CREATE_NEW);
    DWORD code = m_use ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
    if (code == ERROR_SUCCESS) {
        code = Probe(m_folder->File(ProbeName));
    }
    for (const wchar_t* const variable : {L"VCSSIM_MAIN_CF", L"VCSSIM_FAULTS", L"VCSSIM_JOURNAL"}) {
        NameAbsolutely(variable);
    }
    if (code == ERROR_SUCCESS && !SetCurrentDirectoryW(m_folder->Path().c_str())) {
        code = GetLastError();
    }
    if (code != ERROR_SUCCESS) {
        m_use.Close();
        throw Failure::OfCode("cannot write to the folder " + Quoted(m_folder->Path()), code).Hint(Hint);
    }
}

VcsFolder::~VcsFolder() {
    SetCurrentDirectoryW(m_former.c_str()); // the system keeps a folder that is the current one
    for (const Variable& variable : m_variables) {
        if (common::EnvironmentVariable(variable.name) == variable.absolute) { // no rehearsal has set it since
            SetEnvironmentVariableW(variable.name, variable.given.c_str());
        }
    }
    m_use.Close();
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
