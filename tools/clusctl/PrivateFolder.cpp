#include "PrivateFolder.h"

#include "Failure.h"
#include "Text.h"
#include "VcsToolFiles.h"

#include "common/Files.h"

#include <sddl.h>

#include <algorithm>

namespace {

const wchar_t UseName[] = L"in-use";
const ULONGLONG LongestBeginning = 60; // seconds for which a folder may lack that file

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

// Seconds since something in it changed.
ULONGLONG AgeOf(const WIN32_FIND_DATAW& folder) {
    const auto seconds = [](const FILETIME& time) {
        return (static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime) / 10000000;
    };
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return seconds(now) - std::min(seconds(now), seconds(folder.ftLastWriteTime));
}

// Calls use(path, found) for each folder of this kind but those that lead elsewhere.
template <typename Use> void ForEachFolder(const std::wstring& kind, Use use) {
    wchar_t temporary[MAX_PATH + 1] = L"";
    GetTempPathW(MAX_PATH + 1, temporary);
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((temporary + kind + L"-*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
            (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
            use(std::wstring(temporary) + found.cFileName, found);
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
}

bool IsLeft(const std::wstring& folder) {
    return static_cast<bool>(OpenUnshared(folder + L"\\" + UseName, OPEN_EXISTING));
}

// What ended runs have left, and what others had open when a run removed its folder. A folder of anybody else is not
// touched.
void RemoveLeftFolders(const std::wstring& kind) {
    ForEachFolder(kind, [](const std::wstring& folder, const WIN32_FIND_DATAW& found) {
        if (!HasTrustedOwner(folder)) {
            return;
        }
        if (IsLeft(folder)) {
            common::RemoveFolder(folder, UseName);
        } else if (AgeOf(found) > LongestBeginning) {
            RemoveDirectoryW(folder.c_str()); // an empty one, which somebody had as his current folder
        }
    });
}

} // namespace

PrivateFolder::PrivateFolder(const std::wstring& kind) {
    RemoveLeftFolders(kind);
    try {
        m_folder = std::make_unique<common::TemporaryFolder>(kind, OwnersOnly().get());
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot create the folder " + Quoted(error.Path()), error.Code());
    }
    m_folder->RemoveLast(UseName);
    m_use = OpenUnshared(m_folder->File(UseName), CREATE_NEW);
    if (!m_use) {
        throw Failure::OfCode("cannot write to the folder " + Quoted(m_folder->Path()), GetLastError());
    }
}

PrivateFolder::~PrivateFolder() {
    m_use.Close();
}

std::vector<std::wstring> PrivateFolder::Left(const std::wstring& kind) {
    std::vector<std::wstring> folders;
    ForEachFolder(kind, [&folders](const std::wstring& folder, const WIN32_FIND_DATAW&) {
        if (IsLeft(folder)) {
            folders.push_back(folder);
        }
    });
    return folders;
}
