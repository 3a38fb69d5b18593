// Texts of the harness: UTF-8 inside, UTF-16 at the platform's border.
#ifndef HARNESS_TEXT_H
#define HARNESS_TEXT_H

#include "common/Text.h"

#include <string>
#include <vector>

namespace harness {

// "NULL" for a null pointer.
std::string Utf8(const wchar_t* text);
inline std::string Utf8(const std::wstring& text) {
    return common::ToUtf8(text);
}
inline std::wstring Utf16(const std::string& text) {
    return common::ToUtf16(text);
}

// Lines joined by line feeds, so that a failing comparison shows a line-by-line diff.
std::string Lines(const std::vector<std::string>& lines);

// The names of capture files, "ha-" and hexadecimal digits, with XXXX in place of the digits.
std::string WithoutTempNames(const std::string& text);

} // namespace harness

#endif
