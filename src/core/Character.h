// Single characters, mapped as the C runtime maps single bytes; needs no platform header.
#ifndef CLUS_CORE_CHARACTER_H
#define CLUS_CORE_CHARACTER_H

#include <cctype>

namespace clus {

// The narrow functions are defined for single bytes only.
inline bool IsNarrow(wchar_t character) {
    return static_cast<unsigned long>(character) <= 0xFF;
}

// Upper-cased by the narrow mapping: letters outside the single-byte range stay.
inline wchar_t NarrowUpper(wchar_t character) {
    return IsNarrow(character) ? static_cast<wchar_t>(std::toupper(static_cast<int>(character))) : character;
}

} // namespace clus

#endif
