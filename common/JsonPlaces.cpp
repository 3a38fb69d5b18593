#include "common/JsonPlaces.h"

#include "common/Json.h"

#include <algorithm>

namespace common {

namespace {

// Goes over a well-formed text, value by value.
class Scanner {
public:
    explicit Scanner(const std::string& text) : m_text(text) {
    }

    // The position of the value that is named, from the value that begins here.
    std::size_t Find(const std::string& place) {
        SkipBlanks();
        const std::size_t begin = m_at;
        if (place.empty()) {
            return begin;
        }
        return Here() == '[' ? FindInList(place, begin) : Here() == '{' ? FindInObject(place, begin) : begin;
    }

private:
    char Here() const {
        return m_at < m_text.size() ? m_text[m_at] : '\0';
    }

    void SkipBlanks() {
        m_at = std::min(m_text.find_first_not_of(" \t\r\n", m_at), m_text.size());
    }

    std::size_t FindInList(const std::string& place, std::size_t begin) {
        const std::size_t close = place.find(']');
        if (place.front() != '[' || close == std::string::npos) {
            return begin;
        }
        const std::string wanted = place.substr(1, close - 1);
        ++m_at;
        for (std::size_t i = 0; SkipBlanks(), Here() != ']' && Here() != '\0'; ++i) {
            if (std::to_string(i) == wanted) {
                return Find(WithoutDot(place.substr(close + 1)));
            }
            SkipValue();
            SkipComma();
        }
        return begin;
    }

    std::size_t FindInObject(const std::string& place, std::size_t begin) {
        ++m_at;
        while (SkipBlanks(), Here() == '"') {
            const std::string name = Text();
            SkipBlanks();
            ++m_at; // the colon
            const char behind = name.size() < place.size() ? place[name.size()] : '.';
            if (place.compare(0, name.size(), name) == 0 && (behind == '.' || behind == '[')) {
                return Find(WithoutDot(place.substr(std::min(name.size(), place.size()))));
            }
            SkipValue();
            SkipComma();
        }
        return begin;
    }

    static std::string WithoutDot(const std::string& place) {
        return !place.empty() && place.front() == '.' ? place.substr(1) : place;
    }

    // The text in quotes that begins here.
    std::string Text() {
        const std::size_t begin = m_at;
        SkipText();
        return ParseJson(m_text.substr(begin, m_at - begin)).get<std::string>();
    }

    void SkipText() {
        for (++m_at; Here() != '"' && Here() != '\0'; ++m_at) {
            m_at += Here() == '\\' ? 1 : 0;
        }
        ++m_at;
    }

    void SkipValue() {
        SkipBlanks();
        std::size_t depth = 0;
        do {
            const char c = Here();
            if (c == '"') {
                SkipText();
                continue;
            }
            depth += c == '[' || c == '{' ? 1 : 0;
            depth -= (c == ']' || c == '}') && depth > 0 ? 1 : 0;
            ++m_at;
        } while (m_at < m_text.size() && (depth > 0 || (Here() != ',' && Here() != ']' && Here() != '}')));
    }

    void SkipComma() {
        SkipBlanks();
        m_at += Here() == ',' ? 1 : 0;
    }

    const std::string& m_text;
    std::size_t m_at = 0;
};

} // namespace

TextPlace FindJsonPlace(const std::string& text, const std::string& place) {
    const std::size_t at = Scanner(text).Find(place);
    const auto begin = text.begin();
    const auto position = begin + static_cast<std::ptrdiff_t>(at);
    TextPlace found;
    found.line = static_cast<std::size_t>(std::count(begin, position, '\n')) + 1;
    const std::size_t lineEnd = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
    found.column = lineEnd == std::string::npos ? at + 1 : at - lineEnd;
    return found;
}

} // namespace common
