#include "Text.h"

#include <cctype>

namespace harness {

std::string Utf8(const wchar_t* text) {
    return text ? Utf8(std::wstring(text)) : "NULL";
}

std::string Lines(const std::vector<std::string>& lines) {
    std::string result;
    for (const std::string& line : lines) {
        result += line;
        result += '\n';
    }
    return result;
}

std::string WithoutTempNames(const std::string& text) {
    std::string result;
    std::size_t start = 0;
    for (std::size_t at = text.find("ha-"); at != std::string::npos; at = text.find("ha-", start)) {
        std::size_t end = at + 3;
        while (end < text.size() && std::isxdigit(static_cast<unsigned char>(text[end])) != 0) {
            ++end;
        }
        const bool isName = end > at + 3 && text.compare(end, 4, ".tmp") == 0;
        result.append(text, start, at + 3 - start);
        start = at + 3;
        if (isName) {
            result += "XXXX";
            start = end;
        }
    }
    return result.append(text, start, std::string::npos);
}

} // namespace harness
