#include "common/TemporaryFolder.h"

#include "common/Files.h"

#include <algorithm>

namespace common {

namespace {

// Sorted.
std::vector<std::wstring> EntriesOf(const std::wstring& folder) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
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

// A file, or an empty folder.
void RemoveEntry(const std::wstring& path) {
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!DeleteFileW(path.c_str())) {
        RemoveDirectoryW(path.c_str());
    }
}

} // namespace

TemporaryFolder::TemporaryFolder(const std::wstring& name, PSECURITY_DESCRIPTOR security) {
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), security, FALSE};
    wchar_t temporary[MAX_PATH + 1] = L"";
    if (GetTempPathW(MAX_PATH + 1, temporary) == 0) {
        throw FileError(L"%TEMP%", "found", GetLastError());
    }
    const std::wstring path = temporary + name + L"-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    for (int number = 1;; ++number) {
        m_path = path + std::to_wstring(number);
        if (CreateDirectoryW(m_path.c_str(), &attributes)) {
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
    return EntriesOf(m_path);
}

bool TemporaryFolder::Remove() const {
    return RemoveFolder(m_path, m_last);
}

bool RemoveFolder(const std::wstring& path, const std::wstring& last) {
    const std::wstring begin = path + L"\\";
    for (const std::wstring& name : EntriesOf(path)) {
        if (name != last) {
            RemoveEntry(begin + name);
        }
    }
    if (EntriesOf(path) == std::vector<std::wstring>{last}) {
        RemoveEntry(begin + last);
    }
    return RemoveDirectoryW(path.c_str()) != FALSE;
}

} // namespace common
