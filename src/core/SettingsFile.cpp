#include "core/SettingsFile.h"

namespace clus {

namespace {

// One text with all lines in it, cut into fields by terminators written over their delimiters.
class SettingsText {
public:
    explicit SettingsText(const std::vector<std::string>& lines) {
        std::size_t total = 0;
        for (const std::string& line : lines) {
            total += line.size() + 1;
            if (total > SettingsTextCharacters) {
                break;
            }
            m_lineStarts.push_back(m_text.size());
            for (const char byte : line) {
                m_text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
            }
        }
    }

    const std::vector<std::size_t>& LineStarts() const {
        return m_lineStarts;
    }

    // The next field at or after `position`, moved behind it; empty when a terminator comes first.
    std::wstring TakeField(std::size_t& position) {
        while (At(position) != L'\0' && IsDelimiter(At(position))) {
            ++position;
        }
        const std::size_t start = position;
        while (At(position) != L'\0' && !IsDelimiter(At(position))) {
            ++position;
        }
        std::wstring field = m_text.substr(start, position - start);
        if (At(position) != L'\0') {
            m_text[position++] = L'\0';
        }
        return field;
    }

private:
    wchar_t At(std::size_t position) const {
        return position < m_text.size() ? m_text[position] : L'\0';
    }
    static bool IsDelimiter(wchar_t character) {
        return character == L'\t' || character == L'\n';
    }

    std::wstring m_text;
    std::vector<std::size_t> m_lineStarts;
};

std::wstring Unquoted(const std::wstring& field) {
    if (field.empty() || field.front() != L'"') {
        return field;
    }
    std::wstring value = field.substr(1);
    if (!value.empty() && value.back() == L'"') {
        value.pop_back();
    }
    if (value.size() > SettingsValueCharacters) {
        value.resize(SettingsValueCharacters);
    }
    return value;
}

} // namespace

SettingsTable ParseSettings(const std::vector<std::string>& lines) {
    SettingsTable table;
    SettingsText text(lines);
    for (const std::size_t start : text.LineStarts()) {
        std::size_t position = start;
        const std::wstring key = text.TakeField(position);
        if (key.empty() || key.front() == L'#') {
            continue;
        }
        const std::wstring value = Unquoted(text.TakeField(position));
        text.TakeField(position); // refused, but cut off all the same
        if (!value.empty()) {
            table[key] = value;
        }
    }
    return table;
}

} // namespace clus
