#include "FolderTest.h"

#include <winsock2.h>
#include <windows.h>

FolderTest::FolderTest() {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    m_folder = temporary + (L"common test folder " + std::to_wstring(GetCurrentProcessId()));
    EXPECT_TRUE(CreateDirectoryW(m_folder.c_str(), nullptr)) << GetLastError();
}

FolderTest::~FolderTest() {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(Path(L"*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring path = Path(found.cFileName);
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (!DeleteFileW(path.c_str())) {
                RemoveDirectoryW(path.c_str());
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    EXPECT_TRUE(RemoveDirectoryW(m_folder.c_str())) << GetLastError();
}
