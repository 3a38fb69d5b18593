#include "common/TemporaryFolder.h"

#include "common/Files.h"

#include <algorithm>

namespace common {

TemporaryFolder::TemporaryFolder(const std::wstring& name) {
    wchar_t temporary[MAX_PATH + 1] = L"";
    if (GetTempPathW(MAX_PATH + 1, temporary) == 0) {
        throw FileError(L"%TEMP%", "found", GetLastError());
    }
    const std::wstring path = temporary + name + L"-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    for (int number = 1;; ++number) {
        m_path = path + std::to_wstring(number);
        if (CreateDirectoryW(m_path.c_str(), nullptr)) {
            return;
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS) {
            throw FileError(m_path, "created", GetLastError());
        }
    }
}

TemporaryFolder::~TemporaryFolder() {
    Remove();
}

std::vector<std::wstring> TemporaryFolder::Entries() const {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(File(L"*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name != L"." && name != L"..") {
                names.push_back(name);
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool TemporaryFolder::Remove() const {
    for (const std::wstring& name : Entries()) {
        const std::wstring path = File(name);
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (!DeleteFileW(path.c_str())) {
            RemoveDirectoryW(path.c_str());
        }
    }
    return RemoveDirectoryW(m_path.c_str()) != FALSE;
}

} // namespace common
