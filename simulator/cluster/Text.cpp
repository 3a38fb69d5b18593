#include "Text.h"

#include <winsock2.h>
#include <windows.h>

namespace clussim {

std::wstring Wide(const std::string& utf8) {
    const int cb = static_cast<int>(utf8.size());
    std::wstring text(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), cb, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), cb, &text[0], static_cast<int>(text.size()));
    return text;
}

std::string Utf8(const std::wstring& text) {
    const int cch = static_cast<int>(text.size());
    std::string utf8(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), cch, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), cch, &utf8[0], static_cast<int>(utf8.size()), nullptr, nullptr);
    return utf8;
}

std::wstring Folded(const std::wstring& text) {
    std::wstring folded(text);
    bool ascii = true;
    for (wchar_t& c : folded) {
        if (c >= L'a' && c <= L'z') {
            c = static_cast<wchar_t>(c - L'a' + L'A');
        }
        ascii = ascii && c < 0x80;
    }
    if (!ascii) {
        LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.c_str(), static_cast<int>(text.size()), &folded[0],
                     static_cast<int>(folded.size()));
    }
    return folded;
}

} // namespace clussim
