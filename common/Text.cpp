#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

namespace common {

std::string ToUtf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int needed = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(needed), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, &result[0], needed, nullptr, nullptr);
    return result;
}

std::wstring ToUtf16(const std::string& text) {
    const int length = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, &result[0], needed);
    return result;
}

bool IsUtf8(const std::string& text) {
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) != 0;
}

std::wstring Folded(const std::wstring& text) {
    std::wstring folded(text);
    bool isAscii = true;
    for (wchar_t& c : folded) {
        if (c >= L'a' && c <= L'z') {
            c = static_cast<wchar_t>(c - L'a' + L'A');
        }
        isAscii = isAscii && c < 0x80;
    }
    if (!isAscii) {
        LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.c_str(), static_cast<int>(text.size()), &folded[0],
                     static_cast<int>(folded.size()));
    }
    return folded;
}

bool IsSameName(const std::wstring& one, const std::wstring& other) {
    return Folded(one) == Folded(other);
}

bool IsSameName(const std::string& one, const std::string& other) {
    return IsSameName(ToUtf16(one), ToUtf16(other));
}

std::string HexDigits(const void* bytes, std::size_t count) {
    std::string digits(count * 2, '0');
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char byte = static_cast<const unsigned char*>(bytes)[i];
        digits[i * 2] = "0123456789abcdef"[byte >> 4];
        digits[i * 2 + 1] = "0123456789abcdef"[byte & 15];
    }
    return digits;
}

} // namespace common
