#include "MarkupCheck.h"

#include <cstring>

namespace {

template <class Char> class MarkupScanner {
public:
    explicit MarkupScanner(const std::basic_string<Char>& text) : m_text(text) {
    }

    bool Scan() {
        if (m_text.find(Char()) != npos) {
            return false;
        }
        for (m_at = m_text.find('<'); m_at != npos; m_at = m_text.find('<', m_at)) {
            if (!PassConstruct()) {
                return false;
            }
        }
        return m_hasElement && m_depth == 0;
    }

private:
    static const size_t npos = std::basic_string<Char>::npos;

    bool PassConstruct() {
        if (StartsWith("<!--")) {
            return PassBehind("-->", 4);
        }
        if (StartsWith("<![CDATA[")) {
            return PassBehind("]]>", 9);
        }
        if (StartsWith("<?")) {
            return PassBehind("?>", 2);
        }
        if (StartsWith("<!")) {
            return false;
        }
        if (StartsWith("</")) {
            return m_depth-- > 0 && PassBehind(">", 2);
        }
        return PassStartTag();
    }

    bool PassStartTag() {
        Char quote = 0;
        for (size_t i = m_at + 1; i < m_text.size(); ++i) {
            const Char c = m_text[i];
            if (c == '<') {
                return false;
            }
            if (quote != 0) {
                quote = c == quote ? Char() : quote;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>') {
                m_depth += m_text[i - 1] == '/' ? 0 : 1;
                m_hasElement = true;
                m_at = i + 1;
                return true;
            }
        }
        return false;
    }

    bool StartsWith(const char* ascii) const {
        for (size_t i = 0; ascii[i] != '\0'; ++i) {
            if (m_at + i >= m_text.size() || m_text[m_at + i] != static_cast<Char>(ascii[i])) {
                return false;
            }
        }
        return true;
    }

    bool PassBehind(const char* ascii, size_t skip) {
        const std::basic_string<Char> end(ascii, ascii + std::strlen(ascii));
        const size_t found = m_text.find(end, m_at + skip);
        m_at = found + end.size();
        return found != npos;
    }

    const std::basic_string<Char>& m_text;
    size_t m_at = 0;
    long long m_depth = 0;
    bool m_hasElement = false;
};

template <class Char> bool Scan(const std::basic_string<Char>& text) {
    return MarkupScanner<Char>(text).Scan();
}

} // namespace

bool HasCompleteMarkup(const std::string& bytes) {
    if (bytes.compare(0, 2, "\xff\xfe") != 0) {
        return Scan(bytes);
    }
    if (bytes.size() % sizeof(char16_t) != 0) {
        return false;
    }
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(&text[0], bytes.data(), bytes.size());
    return Scan(text);
}
