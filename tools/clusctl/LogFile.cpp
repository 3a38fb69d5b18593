#include "LogFile.h"

#include "Stream.h"
#include "Text.h"

#include "common/Environment.h"

#include <DebugLog.h>

#include <cstdio>
#include <cwchar>

namespace {

const wchar_t RegistryKey[] = L"SOFTWARE\\clusutil\\DebugLog";
const wchar_t FileVariable[] = L"CLUSUTIL_LOG_FILE";
const wchar_t LevelVariable[] = L"CLUSUTIL_LOG_LEVEL";

enum Detail {
    DetailNothing,
    DetailErrors,
    DetailWarnings,
    DetailInformation,
    DetailEverything
};

std::wstring RegistryText(const wchar_t* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RegistryKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) {
        return std::wstring();
    }
    wchar_t value[4096] = {};
    DWORD size = sizeof(value) - sizeof(wchar_t);
    DWORD type = 0;
    const LONG result = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(value), &size);
    RegCloseKey(key);
    if (result != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return std::wstring();
    }
    wchar_t expanded[4096] = {};
    if (type == REG_EXPAND_SZ && ExpandEnvironmentStringsW(value, expanded, 4096) != 0) {
        return expanded;
    }
    return value;
}

std::wstring Setting(const wchar_t* variable, const wchar_t* registryValue) {
    const std::wstring value = common::EnvironmentVariable(variable);
    return value.empty() ? RegistryText(registryValue) : value;
}

int DetailOfWord(const std::wstring& word) {
    static const wchar_t* const words[] = {L"off", L"error", L"warning", L"info", L"all"};
    for (int detail = DetailNothing; detail <= DetailEverything; ++detail) {
        if (_wcsicmp(word.c_str(), words[detail]) == 0) {
            return detail;
        }
    }
    return DetailEverything;
}

int DetailOfLevel(unsigned int level) {
    switch (level) {
    case DBG::LEVEL_ERROR:
        return DetailErrors;
    case DBG::LEVEL_INFORMATION:
        return DetailInformation;
    default:
        return (level & 0x1000) != 0 ? DetailWarnings : DetailEverything;
    }
}

std::string Head(const char* word) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    char head[96];
    std::snprintf(head, sizeof(head), "%04u-%02u-%02uT%02u:%02u:%02u.%03u %lu %lu ", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, now.wMilliseconds, GetCurrentProcessId(), GetCurrentThreadId());
    return head + std::string(word);
}

} // namespace

LogFile::LogFile(const std::wstring& option) {
    const std::wstring path = option.empty() ? Setting(FileVariable, L"File") : option;
    if (path.empty()) {
        // What goes to a debugger instead is not masked either: command lines, which are information, are left out.
        const std::wstring level = Setting(LevelVariable, L"Level");
        if (!level.empty() && DetailOfWord(level) >= DetailInformation) {
            SetEnvironmentVariableW(LevelVariable, L"warning");
        }
        return;
    }
    m_file = CreateFileW(path.c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
    m_detail = DetailOfWord(Setting(LevelVariable, L"Level"));
    // The log library is left a file that keeps nothing.
    SetEnvironmentVariableW(FileVariable, L"NUL");
}

LogFile::~LogFile() {
    if (m_file != INVALID_HANDLE_VALUE) {
        CloseHandle(m_file);
    }
}

void LogFile::Write(unsigned int level, const char* word, const char* sourceFile, int line, const std::string& text) {
    if (m_file == INVALID_HANDLE_VALUE || DetailOfLevel(level) > m_detail) {
        return;
    }
    const std::string source = sourceFile == nullptr ? "-" : sourceFile;
    const size_t separator = source.find_last_of("\\/");
    const std::string written = Head(word) + " clusutil.dll " +
                                (separator == std::string::npos ? source : source.substr(separator + 1)) + "(" +
                                std::to_string(line) + "): " + text + "\r\n";
    // One write that appends: several processes may share the file.
    DWORD count = 0;
    const BOOL isWritten = WriteFile(m_file, written.data(), static_cast<DWORD>(written.size()), &count, nullptr);
    if ((isWritten && count == written.size()) || m_hasWarned) {
        return;
    }
    const DWORD code = isWritten ? static_cast<DWORD>(ERROR_DISK_FULL) : GetLastError();
    m_hasWarned = true;
    Stream(STD_ERROR_HANDLE).Write("clusctl: warning: the log file is incomplete: " + ErrorText(code) + "\n");
}
