#include "Files.h"

#include "../cluster/Text.h"

namespace vcssim {

namespace {

using clussim::Utf8;

class Handle {
public:
    explicit Handle(HANDLE handle) : m_handle(handle) {
    }
    ~Handle() {
        Close();
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE get() const {
        return m_handle;
    }
    explicit operator bool() const {
        return m_handle != INVALID_HANDLE_VALUE;
    }
    void Close() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
            m_handle = INVALID_HANDLE_VALUE;
        }
    }

private:
    HANDLE m_handle;
};

[[noreturn]] void Fail(const std::wstring& path, const char* what, DWORD code) {
    const char* const reason = code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL ? "the disk is full"
                               : code == ERROR_ACCESS_DENIED                             ? "access is denied"
                               : code == ERROR_FILE_NOT_FOUND                            ? "there is no such file"
                               : code == ERROR_PATH_NOT_FOUND                            ? "there is no such folder"
                                                                                         : "error";
    throw FileError(Utf8(path) + ": cannot be " + what + ": " + reason + " (" + std::to_string(code) + ")");
}

// Somebody may just be looking at the file.
bool IsPassing(DWORD code) {
    return code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION;
}

} // namespace

FileLock::FileLock(const std::wstring& path) {
    for (int denied = 0;; Sleep(3)) {
        m_file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                             FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        const DWORD code = GetLastError();
        if (m_file != INVALID_HANDLE_VALUE) {
            return;
        }
        // A file that is just being deleted answers like one that may not be opened.
        denied = code == ERROR_ACCESS_DENIED ? denied + 1 : 0;
        if (denied == 100 || (code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION)) {
            Fail(path, "locked", code);
        }
    }
}

FileLock::~FileLock() {
    if (m_file != INVALID_HANDLE_VALUE) {
        CloseHandle(m_file);
    }
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string ReadWholeFile(const std::wstring& path) {
    const Handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        Fail(path, "read", GetLastError());
    }
    std::string bytes;
    char block[65536];
    for (;;) {
        DWORD cb = 0;
        if (!ReadFile(file.get(), block, sizeof(block), &cb, nullptr)) {
            Fail(path, "read", GetLastError());
        }
        if (cb == 0) {
            return bytes;
        }
        bytes.append(block, cb);
    }
}

void WriteWholeFile(const std::wstring& path, const std::string& bytes) {
    const std::wstring temporary = path + L".new";
    Handle file(
        CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        Fail(path, "written", GetLastError());
    }
    DWORD code = ERROR_SUCCESS;
    for (std::size_t done = 0; code == ERROR_SUCCESS && done < bytes.size();) {
        DWORD cb = 0;
        if (!WriteFile(file.get(), bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &cb, nullptr)) {
            code = GetLastError();
        } else if (cb == 0) {
            code = ERROR_DISK_FULL;
        }
        done += cb;
    }
    if (code == ERROR_SUCCESS && !FlushFileBuffers(file.get())) {
        code = GetLastError();
    }
    file.Close();
    if (code != ERROR_SUCCESS) {
        DeleteFileW(temporary.c_str());
        Fail(path, "written", code);
    }
    MoveFileOver(temporary, path);
}

void MoveFileOver(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1; !MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
         ++attempt) {
        const DWORD code = GetLastError();
        if (attempt == 100 || !IsPassing(code)) {
            if (from == to + L".new") {
                DeleteFileW(from.c_str());
            }
            Fail(to, "replaced", code);
        }
        Sleep(5);
    }
}

void RemoveFile(const std::wstring& path) {
    if (!DeleteFileW(path.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) {
        Fail(path, "removed", GetLastError());
    }
}

} // namespace vcssim
