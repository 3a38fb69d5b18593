// UTF-8 and UTF-16.
#ifndef CLUSSIM_TEXT_H
#define CLUSSIM_TEXT_H

#include <string>

namespace clussim {

std::wstring Wide(const std::string& utf8);
std::string Utf8(const std::wstring& text);

} // namespace clussim

#endif
