#include "ModelFile.h"

#include "ModelJson.h"
#include "Text.h"

#include <cstdio>
#include <cstring>

namespace clussim {

namespace {

class FileHandle {
public:
    explicit FileHandle(HANDLE handle) : m_handle(handle) {
    }
    ~FileHandle() {
        if (m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    explicit operator bool() const {
        return m_handle != INVALID_HANDLE_VALUE;
    }
    HANDLE get() const {
        return m_handle;
    }

private:
    HANDLE m_handle;
};

bool ReadAll(HANDLE file, std::string& text) {
    char block[65536];
    for (;;) {
        DWORD cb = 0;
        if (!ReadFile(file, block, sizeof(block), &cb, nullptr)) {
            return false;
        }
        if (cb == 0) {
            return true;
        }
        text.append(block, cb);
    }
}

Code WriteFlushed(const std::wstring& path, const std::string& text) {
    const FileHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return GetLastError();
    }
    std::size_t done = 0;
    while (done < text.size()) {
        DWORD cb = 0;
        if (!WriteFile(file.get(), text.data() + done, static_cast<DWORD>(text.size() - done), &cb, nullptr)) {
            return GetLastError();
        }
        if (cb == 0) {
            return ERROR_DISK_FULL;
        }
        done += cb;
    }
    return FlushFileBuffers(file.get()) ? static_cast<Code>(ERROR_SUCCESS) : GetLastError();
}

// A file that somebody is just looking at cannot be replaced, so this tries for a while.
Code Replace(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return ERROR_SUCCESS;
        }
        const Code code = GetLastError();
        if ((code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION) || attempt == 100) {
            return code;
        }
        Sleep(5);
    }
}

} // namespace

std::wstring ThisComputer() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &cch);
    return name;
}

bool ModelFile::Stamp::operator==(const Stamp& other) const {
    return indexHigh == other.indexHigh && indexLow == other.indexLow && size == other.size &&
           std::memcmp(&written, &other.written, sizeof(written)) == 0;
}

void ModelFile::SetPath(const std::wstring& path) {
    m_path = path;
    m_mutex.SetPath(path);
    m_told.clear();
    Forget();
}

void ModelFile::Forget() {
    m_model.reset();
    m_stamp = Stamp();
}

void ModelFile::Tell(const std::string& message) {
    if (message == m_told) {
        return;
    }
    m_told = message;
    const std::string line = "clussim: " + Utf8(m_path) + ": " + message + "\n";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    OutputDebugStringW(Wide(line).c_str());
}

Model* ModelFile::Current() {
    if (m_path.empty()) {
        return nullptr;
    }
    const FileMutex::Turn turn(m_mutex);
    const FileHandle file(CreateFileW(m_path.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!file || !GetFileInformationByHandle(file.get(), &information)) {
        Tell("cannot be opened, error " + std::to_string(GetLastError()));
        Forget();
        return nullptr;
    }
    Stamp stamp;
    stamp.indexHigh = information.nFileIndexHigh;
    stamp.indexLow = information.nFileIndexLow;
    stamp.written = information.ftLastWriteTime;
    stamp.size = information.nFileSizeLow;
    if (m_model && stamp == m_stamp) {
        return m_model.get();
    }
    Forget();
    std::string text;
    if (!ReadAll(file.get(), text)) {
        Tell("cannot be read, error " + std::to_string(GetLastError()));
        return nullptr;
    }
    try {
        m_model = clussim::ReadModel(text, ThisComputer());
    } catch (const ModelError& error) {
        Tell(error.what());
        return nullptr;
    }
    m_stamp = stamp;
    m_told.clear();
    return m_model.get();
}

Code ModelFile::Write() {
    // Only whoever has the turn writes, so one name will do: what a dead process left there is overwritten.
    const std::wstring temporary = m_path + L".new";
    Code code = WriteFlushed(temporary, WriteModel(*m_model));
    if (code == ERROR_SUCCESS) {
        code = Replace(temporary, m_path);
    }
    if (code != ERROR_SUCCESS) {
        DeleteFileW(temporary.c_str());
    }
    return code;
}

} // namespace clussim
