#include "Printable.h"

#include <cstddef>

std::string Printable(const std::string& text) {
    static const char digits[] = "0123456789ABCDEF";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        // U+0080 to U+009F are control characters too: C2 80 to C2 9F.
        const bool isC1 = c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (c >= 0x20 && c != 0x7F && !isC1) {
            result += text[i];
            continue;
        }
        const auto code = isC1 ? static_cast<unsigned char>(text[++i]) : c;
        result += "\\x";
        result += digits[code >> 4];
        result += digits[code & 15];
    }
    return result;
}
