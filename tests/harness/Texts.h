// Lists of lines and of names, as logs and journals are put together from them.
#ifndef HARNESS_TEXTS_H
#define HARNESS_TEXTS_H

#include "Text.h"

#include <sstream>
#include <string>
#include <vector>

namespace harness {

typedef std::vector<std::string> Texts;
typedef std::vector<std::wstring> Names;

inline Texts operator+(Texts left, const Texts& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline bool BeginsWith(const std::string& text, const std::string& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

// The opposite of Lines.
inline Texts Split(const std::string& text) {
    Texts lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

inline std::string TrueOrFalse(bool result) {
    return result ? "true" : "false";
}

// Each name behind a blank: what a query gave, in one comparable text.
inline std::string Spaced(const Names& names) {
    std::string text;
    for (const std::wstring& name : names) {
        text += " " + Utf8(name);
    }
    return text;
}

} // namespace harness

#endif
