// UTF-8, UTF-16, and letter case.
#ifndef CLUSSIM_TEXT_H
#define CLUSSIM_TEXT_H

#include <string>

namespace clussim {

std::wstring Wide(const std::string& utf8);
std::string Utf8(const std::wstring& text);

// The text in one letter case, for comparing names.
std::wstring Folded(const std::wstring& text);

} // namespace clussim

#endif
