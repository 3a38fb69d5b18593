#include "LogConfig.h"

#include <winsock2.h>
#include <windows.h>

namespace DebugLogDetail {
namespace {

const wchar_t RegistryKey[] = L"SOFTWARE\\clusutil\\DebugLog";

// Also null when the variable is empty: that is how a command prompt removes one.
std::wstring ReadVariable(const wchar_t* name) {
    std::wstring value(256, L'\0');
    for (;;) {
        const DWORD length = GetEnvironmentVariableW(name, &value[0], static_cast<DWORD>(value.size()));
        if (length < value.size()) {
            value.resize(length);
            return value;
        }
        value.resize(length);
    }
}

std::wstring Expand(const std::wstring& text) {
    std::wstring value(text.size() + 256, L'\0');
    for (;;) {
        const DWORD needed = ExpandEnvironmentStringsW(text.c_str(), &value[0], static_cast<DWORD>(value.size()));
        if (needed == 0) {
            return text;
        }
        if (needed <= value.size()) {
            value.resize(needed - 1);
            return value;
        }
        value.resize(needed);
    }
}

std::wstring ReadRegistryText(const wchar_t* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RegistryKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) {
        return std::wstring();
    }
    // 32,767 characters is the longest path there is; a longer value is no configuration of ours.
    wchar_t small[512];
    DWORD bytes = sizeof(small);
    DWORD type = 0;
    const LONG result = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(small), &bytes);
    RegCloseKey(key);
    if (result != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return std::wstring();
    }
    std::wstring value(small, bytes / sizeof(wchar_t));
    value.resize(value.find(L'\0') == std::wstring::npos ? value.size() : value.find(L'\0'));
    return type == REG_EXPAND_SZ ? Expand(value) : value;
}

std::wstring ReadSetting(const wchar_t* variable, const wchar_t* registryValue) {
    const std::wstring value = ReadVariable(variable);
    return value.empty() ? ReadRegistryText(registryValue) : value;
}

// The file is opened later, possibly after the process has changed its current folder.
std::wstring FullPath(const std::wstring& path) {
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), &full[0], nullptr);
        if (length == 0) {
            return path;
        }
        if (length < full.size()) {
            full.resize(length);
            return full;
        }
        full.resize(length);
    }
}

bool ParseLevel(const std::wstring& word, unsigned int& mask) {
    static const struct {
        const wchar_t* word;
        unsigned int mask;
    } levels[] = {
        {L"off", 0},
        {L"error", MaskError},
        {L"warning", MaskError | MaskWarning},
        {L"info", MaskError | MaskWarning | MaskInformation},
        {L"all", MaskAll},
    };
    for (const auto& level : levels) {
        if (lstrcmpiW(level.word, word.c_str()) == 0) {
            mask = level.mask;
            return true;
        }
    }
    return false;
}

} // namespace

LogConfig ReadLogConfig() {
    LogConfig config;
    const std::wstring file = ReadSetting(L"CLUSUTIL_LOG_FILE", L"File");
    if (!file.empty()) {
        config.file = FullPath(file);
        config.mask = MaskAll;
    }
    unsigned int mask = 0;
    if (ParseLevel(ReadSetting(L"CLUSUTIL_LOG_LEVEL", L"Level"), mask)) {
        config.mask = mask;
        config.maskWithoutFile = mask;
    }
    return config;
}

} // namespace DebugLogDetail
