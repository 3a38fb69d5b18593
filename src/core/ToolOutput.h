// What the VCS tools print, and conditions for their command lines. Needs no platform header.
#ifndef CLUS_CORE_TOOLOUTPUT_H
#define CLUS_CORE_TOOLOUTPUT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace clus {

// Of a longer line only this many characters are split, so that no line costs more than that.
const std::size_t LineCharactersSplit = 511;

// The tokens of one line: what lies between blanks and tabs, up to the limit. A null character ends the line.
class LineTokens {
public:
    explicit LineTokens(std::wstring_view line) : m_line(line.substr(0, LineCharactersSplit)) {
    }

    // Goes to the next token; false behind the last one.
    bool Next();

    // The token that Next went to, and where in the line it begins.
    std::wstring_view Token() const {
        return m_line.substr(m_begin, m_position - m_begin);
    }
    std::size_t Position() const {
        return m_begin;
    }

private:
    std::wstring_view m_line;
    std::size_t m_begin = 0;
    std::size_t m_position = 0; // behind the token
};

// Appends the tokens of all lines: what lies between blanks, tabs and line ends. A null character ends its line.
void SplitOutput(const std::wstring& text, std::vector<std::wstring>& tokens);

// Whether a text begins with a warning or an error of VCS, in any letter case.
bool IsErrorText(const wchar_t* text);

// Whether a token list is an error report: its second token is the word WARNING or ERROR, in any letter case. Not so
// when the first one is VCS: a message of VCS passes as data, and callers rely on it.
bool IsErrorList(const std::vector<std::wstring>& tokens);

// The conditions " name=value " of all pairs, as they stand.
std::wstring Conditions(const std::vector<std::pair<std::wstring, std::wstring>>& pairs);

// The value shown by the first row below the header of an attribute display: from the fourth column on, without the
// blanks behind it. False, with `value` untouched, when there is none.
bool ShownAttributeValue(const std::wstring& text, std::wstring& value);

} // namespace clus

#endif
