#include "common/Files.h"

#include "common/Text.h"

namespace common {

namespace {

const int MostAttempts = 200;
const DWORD Pause = 5; // milliseconds
const std::size_t LongestName = 255;

std::string Reason(DWORD code) {
    switch (code) {
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return "the disk is full";
    case ERROR_ACCESS_DENIED:
        return "access is denied";
    case ERROR_FILE_NOT_FOUND:
        return "there is no such file";
    case ERROR_PATH_NOT_FOUND:
        return "there is no such folder";
    case ERROR_FILENAME_EXCED_RANGE:
        return "the name is too long";
    default:
        return "error";
    }
}

// Of a name that no file can have, systems say that there is none, or that something is wrong with it.
DWORD CodeOf(const std::wstring& path, DWORD code) {
    const bool isOfName = code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND || code == ERROR_INVALID_NAME;
    const std::size_t separator = path.find_last_of(L"\\/");
    const std::size_t length = path.size() - (separator == std::wstring::npos ? 0 : separator + 1);
    return isOfName && length > LongestName ? static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE) : code;
}

// Somebody may just be looking at the file.
bool IsPassing(DWORD code) {
    return code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION;
}

// The Win32 code.
DWORD WriteFlushed(const std::wstring& path, const std::string& bytes) {
    const Handle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return GetLastError();
    }
    for (std::size_t done = 0; done < bytes.size();) {
        DWORD count = 0;
        if (!WriteFile(file.get(), bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &count, nullptr)) {
            return GetLastError();
        }
        if (count == 0) {
            return ERROR_DISK_FULL;
        }
        done += count;
    }
    return FlushFileBuffers(file.get()) ? ERROR_SUCCESS : GetLastError();
}

} // namespace

FileError::FileError(const std::wstring& path, const char* attempt, DWORD code)
    : std::runtime_error(ToUtf8(path) + ": cannot be " + attempt + ": " + Reason(CodeOf(path, code)) + " (" +
                         std::to_string(CodeOf(path, code)) + ")"),
      m_path(path), m_attempt(attempt), m_code(CodeOf(path, code)) {
}

std::wstring FullPath(const std::wstring& path) {
    std::wstring full(path.size() + MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), &full[0], nullptr);
        if (length == 0) {
            return path;
        }
        const bool fits = length < full.size();
        full.resize(length);
        if (fits) {
            return full;
        }
    }
}

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

Handle OpenForReading(const std::wstring& path) {
    Handle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) {
        throw FileError(path, "read", GetLastError());
    }
    return file;
}

std::string ReadToEnd(const Handle& file, const std::wstring& path) {
    std::string bytes;
    char block[65536];
    for (;;) {
        DWORD count = 0;
        if (!ReadFile(file.get(), block, sizeof(block), &count, nullptr)) {
            throw FileError(path, "read", GetLastError());
        }
        if (count == 0) {
            return bytes;
        }
        bytes.append(block, count);
    }
}

std::string ReadWholeFile(const std::wstring& path) {
    return ReadToEnd(OpenForReading(path), path);
}

void WriteWholeFile(const std::wstring& path, const std::string& bytes, const std::wstring& suffix) {
    const std::wstring beside = path + suffix;
    const DWORD code = WriteFlushed(beside, bytes);
    if (code != ERROR_SUCCESS) {
        DeleteFileW(beside.c_str());
        throw FileError(path, "written", code);
    }
    try {
        MoveFileOver(beside, path);
    } catch (const FileError&) {
        DeleteFileW(beside.c_str());
        throw;
    }
}

void MoveFileOver(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1; !MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
         ++attempt) {
        const DWORD code = GetLastError();
        if (attempt == MostAttempts || !IsPassing(code)) {
            throw FileError(to, "replaced", code);
        }
        Sleep(Pause);
    }
}

void RemoveFile(const std::wstring& path) {
    if (!DeleteFileW(path.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) {
        throw FileError(path, "removed", GetLastError());
    }
}

} // namespace common
