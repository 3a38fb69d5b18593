#include "common/FileLock.h"

#include "common/Files.h"
#include "common/Text.h"

#include <sddl.h>

#include <utility>

namespace common {

namespace {

// Names the file by its folder's identity and its own name: other than the identity of the file, that stays when the
// file is replaced.
DWORD MutexName(const std::wstring& path, std::wstring& name) {
    const std::wstring full = FullPath(path);
    const std::size_t begin = full.find_last_of(L"\\/") + 1; // npos + 1 is 0
    const Handle folder(CreateFileW(full.substr(0, begin).c_str(), FILE_READ_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION identity = {};
    if (!folder || !GetFileInformationByHandle(folder.get(), &identity)) {
        const DWORD code = GetLastError();
        return code == ERROR_FILE_NOT_FOUND ? static_cast<DWORD>(ERROR_PATH_NOT_FOUND) : code; // a folder is missing
    }
    unsigned long long hash = 14695981039346656037ULL;
    for (const wchar_t c : Folded(full.substr(begin))) {
        hash = (hash ^ c) * 1099511628211ULL;
    }
    name = L"Global\\clusutil.file";
    for (const unsigned long long part : {static_cast<unsigned long long>(identity.dwVolumeSerialNumber),
                                          static_cast<unsigned long long>(identity.nFileIndexHigh),
                                          static_cast<unsigned long long>(identity.nFileIndexLow), hash}) {
        name += L"." + std::to_wstring(part);
    }
    return ERROR_SUCCESS;
}

// Every account may take turns.
Handle OpenMutexForAll(const std::wstring& name) {
    const DWORD access = SYNCHRONIZE | MUTEX_MODIFY_STATE;
    Handle mutex(OpenMutexW(access, FALSE, name.c_str()));
    if (mutex) {
        return mutex;
    }
    SECURITY_ATTRIBUTES security = {sizeof(security), nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;;GA;;;SY)(A;;0x100001;;;WD)", SDDL_REVISION_1,
                                                              &security.lpSecurityDescriptor, nullptr)) {
        return Handle();
    }
    mutex = Handle(CreateMutexW(&security, FALSE, name.c_str()));
    const DWORD code = GetLastError();
    LocalFree(security.lpSecurityDescriptor);
    SetLastError(code);
    // Another process may have been faster, whose mutex is open for turns only.
    return !mutex && code == ERROR_ACCESS_DENIED ? Handle(OpenMutexW(access, FALSE, name.c_str())) : std::move(mutex);
}

} // namespace

DWORD FileLock::Open() {
    if (m_mutex) {
        return ERROR_SUCCESS;
    }
    if (m_path.empty()) {
        return ERROR_PATH_NOT_FOUND;
    }
    std::wstring name;
    const DWORD code = MutexName(m_path, name);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    m_mutex = OpenMutexForAll(name);
    return m_mutex ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
}

FileLock::Turn::Turn(FileLock& lock, DWORD timeout) : m_code(lock.Open()) {
    if (m_code != ERROR_SUCCESS) {
        return;
    }
    switch (WaitForSingleObject(lock.m_mutex.get(), timeout)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
        m_mutex = lock.m_mutex.get();
        break;
    case WAIT_TIMEOUT:
        m_code = WAIT_TIMEOUT;
        break;
    default:
        m_code = GetLastError();
        break;
    }
}

FileLock::Turn::~Turn() {
    if (m_mutex != nullptr) {
        ReleaseMutex(m_mutex);
    }
}

} // namespace common
