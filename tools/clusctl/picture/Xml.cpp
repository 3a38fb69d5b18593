#include "Xml.h"

#include "Printable.h"
#include "TextWidth.h"

#include <cstddef>

namespace picture {

namespace {

const char Replacement[] = "\xEF\xBF\xBD";

bool IsNoCharacter(char32_t character) {
    return character == 0xFFFD || (character & 0xFFFEU) == 0xFFFE || (character >= 0xFDD0 && character <= 0xFDEF);
}

} // namespace

std::string EscapedXml(const std::string& text) {
    const std::string printable = Printable(text);
    std::string escaped;
    for (std::size_t position = 0; position < printable.size();) {
        const std::size_t begin = position;
        const char32_t character = NextCharacter(printable, position);
        switch (character) {
        case U'&':
            escaped += "&amp;";
            break;
        case U'<':
            escaped += "&lt;";
            break;
        case U'>':
            escaped += "&gt;";
            break;
        case U'"':
            escaped += "&quot;";
            break;
        case U'\'':
            escaped += "&#39;";
            break;
        default:
            escaped += IsNoCharacter(character) ? Replacement : printable.substr(begin, position - begin);
        }
    }
    return escaped;
}

} // namespace picture
