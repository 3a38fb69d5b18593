#include "core/ToolOutput.h"

#include "core/Character.h"
#include "core/Text.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>

namespace clus {

namespace {

const wchar_t Delimiters[] = L" \t\n";
const std::size_t AttributeValueColumn = 3;

// Splits one line in place, up to its limit, with the runtime's wcstok.
class LineSplitter {
public:
    LineSplitter(const wchar_t* line, std::size_t length) {
        const std::size_t count = std::min(length, LineCharactersSplit);
        std::wmemcpy(m_line, line, count);
        m_line[count] = L'\0';
    }
    LineSplitter(const LineSplitter&) = delete;
    LineSplitter& operator=(const LineSplitter&) = delete;

    // The next token, or null behind the last one.
    const wchar_t* Next() {
        wchar_t* const start = m_started ? nullptr : m_line;
        m_started = true;
#if defined(__MINGW32__) && !defined(_UCRT)
        return std::wcstok(start, Delimiters); // keeps its position per thread
#else
        return std::wcstok(start, Delimiters, &m_position);
#endif
    }
    // Where in the line a token begins.
    std::size_t PositionOf(const wchar_t* token) const {
        return static_cast<std::size_t>(token - m_line);
    }

private:
    wchar_t m_line[LineCharactersSplit + 1];
    bool m_started = false;
#if !defined(__MINGW32__) || defined(_UCRT)
    wchar_t* m_position = nullptr;
#endif
};

bool StartsWithNoCase(const wchar_t* text, const wchar_t* upperPrefix) {
    for (; *upperPrefix; ++text, ++upperPrefix) {
        if (NarrowUpper(*text) != *upperPrefix) {
            return false;
        }
    }
    return true;
}

bool IsDelimiter(wchar_t c) {
    return std::wcschr(Delimiters, c) != nullptr; // of a null character too, which ends a line
}

// Tokens in the part of each line that is split, and no fewer than are found there.
std::size_t CountTokens(const std::wstring& text) {
    std::size_t count = 0;
    std::size_t column = 0;
    bool inToken = false;
    for (const wchar_t c : text) {
        const bool wasInToken = inToken;
        inToken = column++ < LineCharactersSplit && !IsDelimiter(c);
        count += inToken && !wasInToken ? 1 : 0;
        column = c == L'\n' ? 0 : column;
    }
    return count;
}

} // namespace

void SplitOutput(const std::wstring& text, std::vector<std::wstring>& tokens) {
    tokens.reserve(tokens.size() + CountTokens(text)); // a list that grows holds large outputs several times
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        LineSplitter line(text.data() + start, end - start);
        while (const wchar_t* token = line.Next()) {
            tokens.emplace_back(token);
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
    LineSplitter line(text.data() + start, end - start);
    const wchar_t* token = line.Next();
    for (std::size_t column = 0; token && column < AttributeValueColumn; ++column) {
        token = line.Next();
    }
    if (!token) {
        return false;
    }
    const std::size_t valueStart = start + line.PositionOf(token);
    std::size_t valueEnd = end;
    while (valueEnd > valueStart && std::iswspace(static_cast<std::wint_t>(text[valueEnd - 1]))) {
        --valueEnd;
    }
    value.assign(text, valueStart, valueEnd - valueStart);
    return true;
}

} // namespace clus
