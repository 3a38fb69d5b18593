#include "LogConfig.h"

#include "common/Environment.h"
#include "common/Files.h"

#include <cwchar>

#include <winsock2.h>
#include <windows.h>

namespace DebugLogDetail {
namespace {

const wchar_t RegistryKey[] = L"SOFTWARE\\clusutil\\DebugLog";
const DWORD MaxValueBytes = 0x10000; // the longest path there is

std::wstring ReadRegistryText(const wchar_t* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, RegistryKey, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) {
        return std::wstring();
    }
    std::wstring value;
    DWORD type = 0;
    DWORD bytes = 0;
    LONG result = RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes);
    if (result == ERROR_SUCCESS && bytes <= MaxValueBytes) {
        try {
            value.resize(bytes / sizeof(wchar_t) + 1);
        } catch (...) {
            RegCloseKey(key);
            throw;
        }
        bytes = static_cast<DWORD>(value.size() * sizeof(wchar_t));
        result = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value[0]), &bytes);
    }
    RegCloseKey(key);
    if (result != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return std::wstring();
    }
    // The stored text may or may not include its terminator.
    value.resize(wcsnlen(value.c_str(), bytes / sizeof(wchar_t)));
    return type == REG_EXPAND_SZ ? common::ExpandVariables(value) : value;
}

std::wstring ReadSetting(const wchar_t* variable, const wchar_t* registryValue) {
    const std::wstring value = common::EnvironmentVariable(variable);
    return value.empty() ? ReadRegistryText(registryValue) : value;
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
        if (_wcsicmp(level.word, word.c_str()) == 0) {
            mask = level.mask;
            return true;
        }
    }
    return false;
}

} // namespace

LogConfig ReadLogConfig() {
    LogConfig config;
    const std::wstring file = ReadSetting(FileVariable, L"File");
    if (!file.empty()) {
        // Opened later, possibly after the process has changed its current folder.
        config.file = common::FullPath(file);
        config.mask = MaskAll;
    }
    unsigned int mask = 0;
    if (ParseLevel(ReadSetting(LevelVariable, L"Level"), mask)) {
        config.mask = mask;
        config.maskWithoutFile = mask;
    }
    return config;
}

} // namespace DebugLogDetail
