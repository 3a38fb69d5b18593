// Takes arbitrary bytes for the output of a VCS tool and compares splitting, error rules, conditions and attribute
// value with their definitions acted out literally: line by line, through a buffer of 512 characters.
#include "FuzzInput.h"

#include "core/NameColumn.h"
#include "core/ToolOutput.h"

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <cwctype>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

typedef std::vector<std::wstring> Tokens;
typedef std::vector<std::pair<std::wstring, std::wstring>> Pairs;

const std::size_t BufferCharacters = 512;

// One character per byte, as captured output is read.
std::wstring TextOf(const std::uint8_t* data, std::size_t size) {
    return std::wstring(data, data + size);
}

Tokens LinesOf(const std::wstring& text) {
    std::wistringstream stream(text);
    Tokens lines;
    std::wstring line;
    while (std::getline(stream, line)) {
        lines.push_back(line);
    }
    return lines;
}

struct Token {
    std::wstring text;
    std::size_t position;
};

std::vector<Token> SplitLine(const std::wstring& line) {
    wchar_t buffer[BufferCharacters] = {};
    std::wcsncpy(buffer, line.c_str(), BufferCharacters - 1);
    buffer[BufferCharacters - 1] = L'\0';
    std::vector<Token> tokens;
    std::size_t position = std::wcsspn(buffer, L" \t\n");
    while (buffer[position] != L'\0') {
        const std::size_t length = std::wcscspn(buffer + position, L" \t\n");
        tokens.push_back({std::wstring(buffer + position, length), position});
        position += length;
        position += std::wcsspn(buffer + position, L" \t\n");
    }
    return tokens;
}

Tokens Split(const std::wstring& text) {
    Tokens tokens;
    for (const std::wstring& line : LinesOf(text)) {
        for (const Token& token : SplitLine(line)) {
            tokens.push_back(token.text);
        }
    }
    return tokens;
}

std::wstring UpperCased(std::wstring text) {
    for (wchar_t& character : text) {
        character = static_cast<wchar_t>(std::toupper(static_cast<int>(character)));
    }
    return text;
}

bool TextIsError(const wchar_t* text) {
    const std::wstring upper = UpperCased(text);
    return upper.find(L"VCS WARNING") == 0 || upper.find(L"VCS ERROR") == 0;
}

bool ListIsError(const Tokens& tokens) {
    if (tokens.size() < 2) {
        return false;
    }
    if (UpperCased(tokens[0]) == L"VCS") {
        return false;
    }
    const std::wstring second = UpperCased(tokens[1]);
    return second == L"WARNING" || second == L"ERROR";
}

std::wstring ConditionsOf(const Pairs& pairs) {
    std::wstring text;
    for (const auto& pair : pairs) {
        text.append(L" ").append(pair.first).append(L"=").append(pair.second).append(L" ");
    }
    return text;
}

bool AttributeValue(const std::wstring& text, std::wstring& value) {
    const Tokens lines = LinesOf(text);
    if (lines.size() < 2) {
        return false;
    }
    const std::vector<Token> tokens = SplitLine(lines[1]);
    if (tokens.size() < 4) {
        return false;
    }
    std::wstring rest = lines[1].substr(tokens[3].position);
    while (!rest.empty() && std::iswspace(static_cast<std::wint_t>(rest.back()))) {
        rest.pop_back();
    }
    value = rest;
    return true;
}

// Every two lines are a name and its value.
Pairs PairsOf(const Tokens& lines) {
    Pairs pairs;
    for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
        pairs.emplace_back(lines[i], lines[i + 1]);
    }
    return pairs;
}

void CheckErrorRules(const std::wstring& text) {
    const Tokens tokens = Split(text);
    FUZZ_CHECK(clus::IsErrorText(text.c_str()) == TextIsError(text.c_str()));
    FUZZ_CHECK(clus::IsErrorList(tokens) == ListIsError(tokens));
}

// A list of names, taken line by line: the first of every two tokens, each once, behind those that were there.
void CheckNameColumn(const Tokens& lines, const Tokens& tokens) {
    clus::NameColumn column;
    for (const std::wstring& line : lines) {
        column.AddLine(line);
    }
    FUZZ_CHECK(column.IsError() == ListIsError(tokens));
    if (column.IsError()) {
        return;
    }
    Tokens expected = {L"a", L"a"};
    for (std::size_t i = 0; i < tokens.size(); i += 2) {
        if (std::find(expected.begin(), expected.end(), tokens[i]) == expected.end()) {
            expected.push_back(tokens[i]);
        }
    }
    Tokens names = {L"a", L"a"};
    column.MoveTo(names);
    FUZZ_CHECK(names == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = TextOf(data, size);
    const Tokens lines = LinesOf(text);

    Tokens expected = {L"earlier entry"};
    Tokens tokens = expected;
    for (std::wstring& token : Split(text)) {
        expected.push_back(std::move(token));
    }
    clus::SplitOutput(text, tokens);
    FUZZ_CHECK(tokens == expected);

    CheckErrorRules(text);
    CheckNameColumn(lines, Split(text));
    for (const std::wstring& line : lines) {
        CheckErrorRules(line);
    }

    const Pairs pairs = PairsOf(lines);
    FUZZ_CHECK(clus::Conditions(pairs) == ConditionsOf(pairs));

    std::wstring expectedValue = L"untouched";
    std::wstring value = expectedValue;
    FUZZ_CHECK(clus::ShownAttributeValue(text, value) == AttributeValue(text, expectedValue));
    FUZZ_CHECK(value == expectedValue);
    return 0;
}
