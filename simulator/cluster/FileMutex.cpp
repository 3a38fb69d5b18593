#include "FileMutex.h"

#include "Text.h"

namespace clussim {

namespace {

std::wstring MutexName(const std::wstring& path) {
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), &full[0], nullptr));
    unsigned long long hash = 14695981039346656037ULL;
    for (const wchar_t c : Folded(full)) {
        hash = (hash ^ c) * 1099511628211ULL;
    }
    return L"clussim-" + std::to_wstring(hash);
}

} // namespace

FileMutex::~FileMutex() {
    SetPath(L"");
}

void FileMutex::SetPath(const std::wstring& path) {
    if (m_mutex) {
        CloseHandle(m_mutex);
    }
    m_mutex = path.empty() ? nullptr : CreateMutexW(nullptr, FALSE, MutexName(path).c_str());
}

FileMutex::Turn::Turn(const FileMutex& mutex) : m_mutex(mutex.m_mutex) {
    // The turn of a dead process is simply taken over: the files are whole at any moment.
    if (m_mutex && WaitForSingleObject(m_mutex, INFINITE) == WAIT_FAILED) {
        m_mutex = nullptr;
    }
}

FileMutex::Turn::~Turn() {
    if (m_mutex) {
        ReleaseMutex(m_mutex);
    }
}

} // namespace clussim
