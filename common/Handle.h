// Owner of a handle that CloseHandle closes.
#ifndef COMMON_HANDLE_H
#define COMMON_HANDLE_H

#include <winsock2.h>
#include <windows.h>

namespace common {

class Handle {
public:
    Handle() = default;
    // Takes over what CreateFileW, CreateMutexW and the like gave: INVALID_HANDLE_VALUE and null are no handle. The
    // last-error value stays.
    explicit Handle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {
    }
    ~Handle() {
        Close();
    }
    Handle(Handle&& other) noexcept : m_handle(other.m_handle) {
        other.m_handle = nullptr;
    }
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            Close();
            m_handle = other.m_handle;
            other.m_handle = nullptr;
        }
        return *this;
    }

    explicit operator bool() const {
        return m_handle != nullptr;
    }
    // Null when there is none.
    HANDLE get() const {
        return m_handle;
    }
    void Close() {
        if (m_handle != nullptr) {
            CloseHandle(m_handle);
            m_handle = nullptr;
        }
    }

private:
    HANDLE m_handle = nullptr;
};

} // namespace common

#endif
