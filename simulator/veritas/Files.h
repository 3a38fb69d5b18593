// The files beside the main.cf: one process at a time, and each of them whole at any moment.
#ifndef VCSSIM_FILES_H
#define VCSSIM_FILES_H

#include <winsock2.h>
#include <windows.h>

#include <stdexcept>
#include <string>

namespace vcssim {

class FileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Held while the object lives; a process that dies gives it up.
class FileLock {
public:
    // Waits as long as another process holds it. FileError when the file cannot be opened for any other reason.
    explicit FileLock(const std::wstring& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    HANDLE m_file = INVALID_HANDLE_VALUE;
};

bool FileExists(const std::wstring& path);

// All of these throw FileError.
std::string ReadWholeFile(const std::wstring& path);
void WriteWholeFile(const std::wstring& path,
                    const std::string& bytes); // a new file, flushed, takes the old one's place
void MoveFileOver(const std::wstring& from, const std::wstring& to);
void RemoveFile(const std::wstring& path); // fine if there is none

} // namespace vcssim

#endif
