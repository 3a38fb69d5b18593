#include "PrivateFolder.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <stdexcept>

namespace harness {

PrivateFolder::PrivateFolder(Use use) {
    static unsigned count = 0;
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    BOOL created = FALSE;
    do { // over folders that crashed processes of the same number left
        m_path = std::wstring(temporary) + L"clusutil-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                 std::to_wstring(++count);
        created = CreateDirectoryW(m_path.c_str(), nullptr);
    } while (!created && GetLastError() == ERROR_ALREADY_EXISTS);
    if (!created) {
        throw std::runtime_error("cannot create a temporary folder");
    }
    if (use == Use::CurrentDirectory) {
        wchar_t former[MAX_PATH];
        GetCurrentDirectoryW(MAX_PATH, former);
        m_formerDirectory = former;
        SetCurrentDirectoryW(m_path.c_str());
    }
}

PrivateFolder::~PrivateFolder() {
    if (!m_formerDirectory.empty()) {
        SetCurrentDirectoryW(m_formerDirectory.c_str());
    }
    for (const std::wstring& entry : Entries()) {
        SetFileAttributesW(File(entry).c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(File(entry).c_str());
    }
    RemoveDirectoryW(m_path.c_str());
}

std::vector<std::wstring> PrivateFolder::Entries() const {
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

} // namespace harness
