// One process at a time for a file.
#ifndef CLUSSIM_FILEMUTEX_H
#define CLUSSIM_FILEMUTEX_H

#include <winsock2.h>
#include <windows.h>

#include <string>

namespace clussim {

class FileMutex {
public:
    FileMutex() = default;
    ~FileMutex();
    FileMutex(const FileMutex&) = delete;
    FileMutex& operator=(const FileMutex&) = delete;

    // The file it stands for; empty for none. The mutex is named by the full path.
    void SetPath(const std::wstring& path);

    // A turn may be taken again by the thread that has it. A process that dies gives its turn up.
    class Turn {
    public:
        explicit Turn(const FileMutex& mutex);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        explicit operator bool() const {
            return m_mutex != nullptr;
        }

    private:
        HANDLE m_mutex;
    };

private:
    HANDLE m_mutex = nullptr;
};

} // namespace clussim

#endif
