// Texts: UTF-16 as the platform uses it, UTF-8 in files and in everything that is printed.
#ifndef COMMON_TEXT_H
#define COMMON_TEXT_H

#include <cstddef>
#include <string>

namespace common {

// What is no valid text becomes U+FFFD. Null characters are kept.
std::string ToUtf8(const std::wstring& text);
std::wstring ToUtf16(const std::string& text);

// Whether UTF-8 holds nothing that ToUtf16 would have to replace.
bool IsUtf8(const std::string& text);

// The text in one letter case, for comparing names.
std::wstring Folded(const std::wstring& text);

// Whether two names differ in nothing but letter case, if at all. Narrow ones are UTF-8.
bool IsSameName(const std::wstring& one, const std::wstring& other);
bool IsSameName(const std::string& one, const std::string& other);

// Two lower-case hexadecimal digits per byte.
std::string HexDigits(const void* bytes, std::size_t count);

} // namespace common

#endif
