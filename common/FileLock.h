// One process at a time for a file.
#ifndef COMMON_FILELOCK_H
#define COMMON_FILELOCK_H

#include "common/Handle.h"

#include <string>

namespace common {

// Stands for a file, which need not exist; its folder must. All processes of the computer, whatever their account, get
// the same lock for the same file, however they spell the path to its folder. Nothing is written for it, so that it
// serves readers of a folder that they may not write to.
class FileLock {
public:
    // Of no file: there is never a turn.
    FileLock() = default;
    explicit FileLock(const std::wstring& path) : m_path(path) {
    }

    // Held while the object lives. A turn may be taken again by the thread that has it. A process that dies gives its
    // turn up; whoever is next has to find the files whole.
    class Turn {
    public:
        // Waits as long as others have it, `timeout` milliseconds at most. The lock must outlive the turn.
        explicit Turn(FileLock& lock, DWORD timeout = INFINITE);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        explicit operator bool() const {
            return m_mutex != nullptr;
        }
        // Why there is none: the Win32 code, WAIT_TIMEOUT when the time ran out.
        DWORD Code() const {
            return m_code;
        }

    private:
        HANDLE m_mutex = nullptr;
        DWORD m_code = ERROR_SUCCESS;
    };

private:
    DWORD Open();

    std::wstring m_path;
    Handle m_mutex; // opened at the first turn
};

} // namespace common

#endif
