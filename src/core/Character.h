// Characters and texts compared by the mappings of the C runtime; needs no platform header.
#ifndef CLUS_CORE_CHARACTER_H
#define CLUS_CORE_CHARACTER_H

#include <cctype>
#include <cwchar>
#include <string>

namespace clus {

// The narrow functions are defined for single bytes only.
inline bool IsNarrow(wchar_t character) {
    return static_cast<unsigned long>(character) <= 0xFF;
}

// Upper-cased by the narrow mapping: letters outside the single-byte range stay.
inline wchar_t NarrowUpper(wchar_t character) {
    return IsNarrow(character) ? static_cast<wchar_t>(std::toupper(static_cast<int>(character))) : character;
}

// Exact comparison; null equals nothing.
inline bool Equal(const wchar_t* left, const wchar_t* right) {
    return left && right && std::wcscmp(left, right) == 0;
}

inline bool EqualNoCase(const wchar_t* left, const wchar_t* right) {
#if defined(_WIN32)
    return _wcsicmp(left, right) == 0;
#else
    return wcscasecmp(left, right) == 0;
#endif
}

// A text that may be null, which counts as empty.
inline std::wstring Text(const wchar_t* text) {
    return text ? text : L"";
}

inline bool EqualNoCase(const std::wstring& left, const wchar_t* right) {
    return EqualNoCase(left.c_str(), right);
}

} // namespace clus

#endif
