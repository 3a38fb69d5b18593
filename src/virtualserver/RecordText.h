// Texts of the fixed-size server record.
#ifndef CLUS_VIRTUALSERVER_RECORDTEXT_H
#define CLUS_VIRTUALSERVER_RECORDTEXT_H

#include <algorithm>
#include <cstddef>
#include <cwchar>

namespace clus {

// Copies a text into a record member: cut to the member, terminated, the rest zero.
template <std::size_t Size> void CopyText(wchar_t (&member)[Size], const wchar_t* text) {
    const std::size_t length = std::min(std::wcslen(text), Size - 1);
    std::copy_n(text, length, member);
    std::fill(member + length, member + Size, L'\0');
}

} // namespace clus

#endif
