#include "core/ServerName.h"

#include "core/Character.h"

#include <algorithm>
#include <cctype>
#include <cwctype>

namespace clus {

std::wstring WideUpper(const wchar_t* text) {
    std::wstring upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c))); });
    return upper;
}

bool StartsLikeHostName(const wchar_t* text) {
    return IsNarrow(text[0]) && std::isalpha(static_cast<int>(text[0])) != 0;
}

std::wstring UpperFirstLabel(const wchar_t* text) {
    std::wstring label(text);
    label.erase(std::min(label.find(L'.'), label.size()));
    std::transform(label.begin(), label.end(), label.begin(), NarrowUpper);
    return label;
}

} // namespace clus
