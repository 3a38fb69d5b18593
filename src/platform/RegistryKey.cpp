#include "platform/RegistryKey.h"

#include <algorithm>

namespace clus {

RegistryKey::RegistryKey(const wchar_t* path, REGSAM access) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, &key) == ERROR_SUCCESS) {
        m_key.reset(key);
    }
}

bool RegistryKey::ReadDword(const wchar_t* name, DWORD& value) const {
    DWORD type = REG_DWORD;
    DWORD stored = 0;
    DWORD cb = sizeof(stored);
    if (RegQueryValueExW(m_key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&stored), &cb) != ERROR_SUCCESS ||
        type != REG_DWORD || cb != sizeof(stored)) {
        return false;
    }
    value = stored;
    return true;
}

bool RegistryKey::ReadBytes(const wchar_t* name, void* data, DWORD cb) const {
    return RegQueryValueExW(m_key.get(), name, nullptr, nullptr, static_cast<BYTE*>(data), &cb) == ERROR_SUCCESS;
}

bool RegistryKey::ReadText(const wchar_t* name, wchar_t* text, DWORD cchText, DWORD cbLimit) const {
    DWORD type = REG_SZ;
    DWORD cb = cbLimit;
    const LONG code = RegQueryValueExW(m_key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text), &cb);
    if (code != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) {
        text[0] = L'\0';
        return false;
    }
    text[std::min(cb / static_cast<DWORD>(sizeof(wchar_t)), cchText - 1)] = L'\0';
    return true;
}

} // namespace clus
