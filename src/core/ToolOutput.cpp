#include "core/ToolOutput.h"

#include "core/Character.h"
#include "core/Text.h"

#include <algorithm>
#include <cwctype>

namespace clus {

namespace {

const std::size_t AttributeValueColumn = 3;

bool IsDelimiter(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\n';
}

// Most characters of a token are beyond the blank, and decided by one comparison.
bool IsInToken(wchar_t c) {
    return c > L' ' || (c != L'\0' && !IsDelimiter(c));
}

bool StartsWithNoCase(const wchar_t* text, const wchar_t* upperPrefix) {
    for (; *upperPrefix; ++text, ++upperPrefix) {
        if (NarrowUpper(*text) != *upperPrefix) {
            return false;
        }
    }
    return true;
}

// Tokens in the part of each line that is split, and no fewer than are found there.
std::size_t CountTokens(const std::wstring& text) {
    std::size_t count = 0;
    std::size_t column = 0;
    bool inToken = false;
    for (const wchar_t c : text) {
        const bool wasInToken = inToken;
        inToken = column++ < LineCharactersSplit && IsInToken(c);
        count += inToken && !wasInToken ? 1 : 0;
        column = c == L'\n' ? 0 : column;
    }
    return count;
}

} // namespace

bool LineTokens::Next() {
    std::size_t begin = m_position;
    while (begin < m_line.size() && IsDelimiter(m_line[begin])) {
        ++begin;
    }
    std::size_t end = begin;
    while (end < m_line.size() && IsInToken(m_line[end])) {
        ++end;
    }
    m_begin = begin;
    m_position = end;
    return end > begin;
}

void SplitOutput(const std::wstring& text, std::vector<std::wstring>& tokens) {
    tokens.reserve(tokens.size() + CountTokens(text)); // a list that grows holds large outputs several times
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        LineTokens line(std::wstring_view(text).substr(start, end - start));
        while (line.Next()) {
            tokens.emplace_back(line.Token());
        }
        start = end + 1;
    }
}

bool IsErrorText(const wchar_t* text) {
    return StartsWithNoCase(text, L"VCS WARNING") || StartsWithNoCase(text, L"VCS ERROR");
}

bool IsErrorList(const std::vector<std::wstring>& tokens) {
    if (tokens.size() < 2 || EqualNoCase(tokens[0], L"VCS")) {
        return false;
    }
    return EqualNoCase(tokens[1], L"WARNING") || EqualNoCase(tokens[1], L"ERROR");
}

std::wstring Conditions(const std::vector<std::pair<std::wstring, std::wstring>>& pairs) {
    std::wstring conditions;
    for (const auto& pair : pairs) {
        conditions += L" " + pair.first + L"=" + pair.second + L" ";
    }
    return conditions;
}

bool ShownAttributeValue(const std::wstring& text, std::wstring& value) {
    const std::size_t headerEnd = text.find(L'\n');
    if (headerEnd == std::wstring::npos) {
        return false;
    }
    const std::size_t start = headerEnd + 1;
    const std::size_t end = std::min(text.find(L'\n', start), text.size());
    LineTokens line(std::wstring_view(text).substr(start, end - start));
    for (std::size_t column = 0; column <= AttributeValueColumn; ++column) {
        if (!line.Next()) {
            return false;
        }
    }
    const std::size_t valueStart = start + line.Position();
    std::size_t valueEnd = end;
    while (valueEnd > valueStart && std::iswspace(static_cast<std::wint_t>(text[valueEnd - 1]))) {
        --valueEnd;
    }
    value.assign(text, valueStart, valueEnd - valueStart);
    return true;
}

} // namespace clus
