#include "common/AppendFile.h"

namespace common {

namespace {

const DWORD LongestWait = 2000; // milliseconds

} // namespace

AppendFile::AppendFile(const std::wstring& path) : m_path(path), m_lock(path) {
}

DWORD AppendFile::Open() {
    // Without FILE_WRITE_DATA every write is an append, done as one step by the local file systems. On a network share
    // it is "seek, then write": hence the turns.
    m_file = Handle(CreateFileW(m_path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
    return m_file ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
}

void AppendFile::Close() {
    m_file.Close();
}

DWORD AppendFile::Append(const std::string& lines) {
    if (!m_file) {
        const DWORD code = Open();
        if (code != ERROR_SUCCESS) {
            return code;
        }
    }
    FileLock none;
    const FileLock::Turn turn(m_takesTurns ? m_lock : none, LongestWait);
    m_takesTurns = static_cast<bool>(turn);
    DWORD written = 0;
    if (!WriteFile(m_file.get(), lines.data(), static_cast<DWORD>(lines.size()), &written, nullptr)) {
        return GetLastError();
    }
    return written == lines.size() ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

} // namespace common
