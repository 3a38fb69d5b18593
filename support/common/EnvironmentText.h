// Texts with references to environment variables, as the support libraries' settings hold them.
#ifndef ENVIRONMENTTEXT_H
#define ENVIRONMENTTEXT_H

#include <winsock2.h>
#include <windows.h>

#include <string>

// The text with each %NAME% replaced (ExpandEnvironmentStringsW); as it stands when that fails.
inline std::wstring ExpandVariables(const std::wstring& text) {
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

#endif
