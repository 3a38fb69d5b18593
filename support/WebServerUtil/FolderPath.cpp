#include "FolderPath.h"

#include "../common/EnvironmentText.h"

#include <winsock2.h>
#include <windows.h>

namespace {

std::wstring Resolve(const std::wstring& path) {
    std::wstring full(path.size() + MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), &full[0], nullptr);
        if (length < full.size()) {
            full.resize(length);
            return full;
        }
        full.resize(length);
    }
}

bool IsAbsolute(const std::wstring& path) {
    return path.size() >= 2 &&
           ((path[1] == L':' && (path.size() == 2 || path[2] == L'\\')) || path.compare(0, 2, L"\\\\") == 0);
}

} // namespace

std::wstring ComparableFolder(const std::wstring& path) {
    std::wstring folder = ExpandVariables(path);
    for (wchar_t& c : folder) {
        if (c == L'/') {
            c = L'\\';
        }
    }
    if (!IsAbsolute(folder)) {
        return std::wstring();
    }
    if (folder.size() == 2) {
        folder += L'\\'; // a bare "C:" would mean that drive's current folder
    }
    folder = Resolve(folder);
    while (!folder.empty() && folder.back() == L'\\') {
        folder.pop_back();
    }
    if (!folder.empty()) {
        std::wstring upper(folder.size(), L'\0');
        LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, folder.c_str(), static_cast<int>(folder.size()), &upper[0],
                     static_cast<int>(upper.size()));
        folder.swap(upper);
    }
    return folder;
}

bool IsSameOrAbove(const std::wstring& outer, const std::wstring& inner) {
    return !outer.empty() && inner.compare(0, outer.size(), outer) == 0 &&
           (inner.size() == outer.size() || inner[outer.size()] == L'\\');
}
