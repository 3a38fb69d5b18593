// Whole files: each of them is the old one or the new one at any moment.
#ifndef COMMON_FILES_H
#define COMMON_FILES_H

#include "common/Handle.h"

#include <stdexcept>
#include <string>

namespace common {

// "C:\a.txt: cannot be read: there is no such file (2)".
class FileError : public std::runtime_error {
public:
    // `attempt` is a literal that follows "cannot be": "read".
    FileError(const std::wstring& path, const char* attempt, DWORD code);

    const std::wstring& Path() const {
        return m_path;
    }
    const char* Attempt() const {
        return m_attempt;
    }
    // The Win32 code.
    DWORD Code() const {
        return m_code;
    }

private:
    std::wstring m_path;
    const char* m_attempt;
    DWORD m_code;
};

// The absolute path; the path as it stands when there is none.
std::wstring FullPath(const std::wstring& path);

// A folder exists too.
bool FileExists(const std::wstring& path);

// All below throw FileError.

// Keeps nobody from changing, replacing or deleting the file.
Handle OpenForReading(const std::wstring& path);

// The bytes from the file's position to its end. `path` is for the error.
std::string ReadToEnd(const Handle& file, const std::wstring& path);

std::string ReadWholeFile(const std::wstring& path);

// A new file, flushed, takes the old one's place. It is written beside it, under its name with `suffix`, and gone when
// it cannot be completed. Whoever is stopped in between leaves the old file or the new one, and perhaps the one beside
// it, which the next one overwrites. Only one may write at a time, unless each has a suffix of its own.
void WriteWholeFile(const std::wstring& path, const std::string& bytes, const std::wstring& suffix = L".new");

// Replaces the file at `to`. Tries for a second when somebody is just looking at one of them.
void MoveFileOver(const std::wstring& from, const std::wstring& to);

// Fine if there is none.
void RemoveFile(const std::wstring& path);

} // namespace common

#endif
