#include "CfLexer.h"

#include <algorithm>
#include <cstring>

namespace vcssim {

namespace {

const char* const Hex = "0123456789abcdef";

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsSymbolCharacter(char c) {
    return c != '\0' && std::strchr("(){}=,;@", c) != nullptr;
}

class Lexer {
public:
    explicit Lexer(const std::string& text) : m_text(text) {
    }

    std::vector<CfToken> Split() {
        if (m_text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            m_position = 3;
        }
        std::vector<CfToken> tokens;
        for (;;) {
            SkipBlanksAndComments();
            CfToken token;
            token.line = m_line;
            token.span.begin = m_position;
            if (m_position < m_text.size()) {
                Take(token);
                m_lineIsFresh = false;
            }
            token.span.end = m_position;
            tokens.push_back(token);
            if (token.kind == CfToken::End) {
                return tokens;
            }
        }
    }

private:
    char At(std::size_t position) const {
        return position < m_text.size() ? m_text[position] : '\0';
    }

    bool AtComment() const {
        return (At(m_position) == '/' && At(m_position + 1) == '/') || (m_lineIsFresh && At(m_position) == '#');
    }

    void SkipBlanksAndComments() {
        while (m_position < m_text.size()) {
            const char c = m_text[m_position];
            if (c == '\n') {
                ++m_line;
                m_lineIsFresh = true;
            } else if (AtComment()) {
                m_position = std::min(m_text.find('\n', m_position), m_text.size());
                continue;
            } else if (c != ' ' && c != '\t' && c != '\r') {
                return;
            }
            ++m_position;
        }
    }

    void Take(CfToken& token) {
        const char c = m_text[m_position];
        if (c == '"') {
            TakeString(token);
        } else if (IsSymbolCharacter(c)) {
            token.kind = CfToken::Symbol;
            token.text = c;
            ++m_position;
        } else {
            TakeWord(token);
        }
    }

    void TakeString(CfToken& token) {
        token.kind = CfToken::String;
        for (++m_position;; ++m_position) {
            const char c = At(m_position);
            if (m_position >= m_text.size() || c == '\r' || c == '\n') {
                throw CfError(PlaceInCf(m_text, m_position), "expected '\"' at the end of a text");
            }
            if (c == '"') {
                ++m_position;
                return;
            }
            const char next = At(m_position + 1);
            if (c == '\\' && (next == '"' || next == '\\')) {
                token.text += next;
                ++m_position;
            } else {
                token.text += c;
            }
        }
    }

    void TakeWord(CfToken& token) {
        token.kind = CfToken::Word;
        for (; m_position < m_text.size(); ++m_position) {
            const char c = m_text[m_position];
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '"' || IsSymbolCharacter(c) ||
                (c == '/' && At(m_position + 1) == '/')) {
                break;
            }
            const unsigned char byte = static_cast<unsigned char>(c);
            if (byte < 0x20 || byte == 0x7F) {
                throw CfError(PlaceInCf(m_text, m_position),
                              std::string("unexpected character 0x") + Hex[byte >> 4] + Hex[byte & 15]);
            }
            if (c == '#') {
                throw CfError(PlaceInCf(m_text, m_position), "unexpected character '#'");
            }
            token.text += c;
        }
    }

    const std::string& m_text;
    std::size_t m_position = 0;
    std::size_t m_line = 1;
    bool m_lineIsFresh = true; // nothing but blanks in it so far
};

} // namespace

std::string CfToken::Shown() const {
    if (kind == End) {
        return "the end of the file";
    }
    return (kind == String ? "\"" : "'") + text.substr(0, 60) + (kind == String ? "\"" : "'");
}

CfPlace PlaceInCf(const std::string& text, std::size_t position) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(position, text.size()));
    const std::size_t lineBegin = position == 0 ? 0 : text.rfind('\n', position - 1) + 1; // none: wraps to 0
    return {1 + static_cast<std::size_t>(std::count(text.begin(), end, '\n')), position - lineBegin + 1};
}

std::vector<CfToken> SplitCf(const std::string& text) {
    return Lexer(text).Split();
}

std::string QuotedCf(const std::string& text) {
    const bool isBare = !text.empty() && IsLetter(text[0]) && std::all_of(text.begin(), text.end(), [](char c) {
        return IsLetter(c) || IsDigit(c) || c == '-' || c == '_';
    });
    return isBare ? text : AlwaysQuotedCf(text);
}

std::string AlwaysQuotedCf(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + '"';
}

bool IsCfNumber(const std::string& text) {
    const std::size_t first = !text.empty() && text[0] == '-' ? 1 : 0;
    return text.size() > first && text.size() <= 11 &&
           std::all_of(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), IsDigit);
}

} // namespace vcssim
