// Texts that may be null, and their comparison; needs no platform header.
#ifndef CLUS_CORE_TEXT_H
#define CLUS_CORE_TEXT_H

#include <cwchar>
#include <string>

namespace clus {

// Null counts as empty.
inline std::wstring TextOf(const wchar_t* text) {
    return text ? text : L"";
}

// Exact comparison; null equals nothing.
inline bool Equal(const wchar_t* left, const wchar_t* right) {
    return left && right && std::wcscmp(left, right) == 0;
}

// In any letter case, as the C runtime maps letters. Neither may be null.
inline bool EqualNoCase(const wchar_t* left, const wchar_t* right) {
#if defined(_WIN32)
    return _wcsicmp(left, right) == 0;
#else
    return wcscasecmp(left, right) == 0;
#endif
}

inline bool EqualNoCase(const std::wstring& left, const wchar_t* right) {
    return EqualNoCase(left.c_str(), right);
}

} // namespace clus

#endif
