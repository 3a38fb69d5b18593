#include "common/Environment.h"

#include <winsock2.h>
#include <windows.h>

namespace common {

std::wstring EnvironmentVariable(const wchar_t* name) {
    std::wstring value(256, L'\0');
    for (;;) {
        const DWORD length = GetEnvironmentVariableW(name, &value[0], static_cast<DWORD>(value.size()));
        const bool fits = length < value.size();
        value.resize(length); // of one that does not fit: with its terminator
        if (fits) {
            return value;
        }
    }
}

std::wstring ExpandVariables(const std::wstring& text) {
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

} // namespace common
