// How often a test ends its writers by force.
#ifndef HARNESS_KILLS_H
#define HARNESS_KILLS_H

#include <winsock2.h>
#include <windows.h>

#include <cwchar>

namespace harness {

// `usual` unless the environment variable CLUSUTIL_KILLS, as ./dev sweep sets it, names another number.
inline int KillCount(int usual) {
    wchar_t text[16] = L"";
    const DWORD length = GetEnvironmentVariableW(L"CLUSUTIL_KILLS", text, 16);
    const int named = length != 0 && length < 16 ? _wtoi(text) : 0;
    return named > 0 ? named : usual;
}

} // namespace harness

#endif
