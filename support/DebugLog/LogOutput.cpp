#include "LogOutput.h"

namespace DebugLogDetail {
namespace {

// Longest wait for another process's line. After that lines are written without waiting: a stopped process must not
// stop the others.
const DWORD TurnTimeoutMs = 2000;

// The same name for the same file in every process.
std::wstring TurnName(const std::wstring& path) {
    std::wstring folded(path);
    LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, path.c_str(), static_cast<int>(path.size()), &folded[0],
                 static_cast<int>(folded.size()));
    unsigned long long hash = 14695981039346656037ull;
    for (const wchar_t c : folded) {
        hash = (hash ^ c) * 1099511628211ull;
    }
    std::wstring name = L"Global\\clusutil.DebugLog.";
    for (int shift = 60; shift >= 0; shift -= 4) {
        name += L"0123456789abcdef"[(hash >> shift) & 15];
    }
    return name;
}

std::string ToUtf8(const std::wstring& text) {
    std::string bytes;
    const int needed =
        WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
    if (needed > 0) {
        bytes.resize(static_cast<size_t>(needed));
        WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), &bytes[0], needed, nullptr,
                            nullptr);
    }
    return bytes;
}

} // namespace

bool LogFile::Open(const std::wstring& path) {
    // Without FILE_WRITE_DATA every write is an append, done as one step by the local file systems.
    m_file = CreateFileW(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
    if (m_file == INVALID_HANDLE_VALUE) {
        return false;
    }
    // On a network share an append is "seek, then write", so the processes take turns. A mutex that another account
    // keeps from us is no reason not to log.
    m_turn = CreateMutexW(nullptr, FALSE, TurnName(path).c_str());
    return true;
}

bool LogFile::IsOpen() const {
    return m_file != INVALID_HANDLE_VALUE;
}

bool LogFile::WriteLine(const std::wstring& line) {
    const std::string bytes = ToUtf8(line + L"\r\n");
    const DWORD turn = m_turn != nullptr ? WaitForSingleObject(m_turn, TurnTimeoutMs) : WAIT_FAILED;
    DWORD written = 0;
    const bool done = WriteFile(m_file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != FALSE &&
                      written == bytes.size();
    const DWORD error = GetLastError();
    if (turn == WAIT_OBJECT_0 || turn == WAIT_ABANDONED) {
        ReleaseMutex(m_turn);
    } else {
        GiveUpTurns();
    }
    if (!done) {
        Close();
        SetLastError(error);
    }
    return done;
}

void LogFile::Close() {
    CloseHandle(m_file);
    m_file = INVALID_HANDLE_VALUE;
    GiveUpTurns();
}

void LogFile::GiveUpTurns() {
    if (m_turn != nullptr) {
        CloseHandle(m_turn);
        m_turn = nullptr;
    }
}

void WriteToDebugger(const std::wstring& line) {
    OutputDebugStringW((line + L"\n").c_str());
}

} // namespace DebugLogDetail
