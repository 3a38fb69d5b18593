#include "VcsTable.h"

#include "core/ToolSecrets.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace {

const wchar_t Around[] = L" \t\r|";

std::wstring Bare(const std::wstring& text) {
    const size_t begin = text.find_first_not_of(Around);
    return begin == std::wstring::npos ? std::wstring() : text.substr(begin, text.find_last_not_of(Around) - begin + 1);
}

// Without quotes, which hold a text together on a command line only, and with one backslash where there are several, as
// tools print them.
std::set<std::wstring> WordsOf(const std::wstring& text) {
    std::wstring plain;
    for (const wchar_t c : text) {
        if (c != L'"' && (c != L'\\' || plain.empty() || plain.back() != L'\\')) {
            plain += c;
        }
    }
    std::wistringstream words(plain);
    std::set<std::wstring> found;
    for (std::wstring word; words >> word;) {
        found.insert(word);
    }
    return found;
}

// Whether it says no more than the words that it has: no -add, no %-1, no {1}, no \".
bool IsPlain(const std::wstring& given) {
    const wchar_t lastAscii = 0x7F;
    const bool isAscii = std::all_of(given.begin(), given.end(), [](wchar_t c) { return c <= lastAscii; });
    const std::set<std::wstring> words = WordsOf(given);
    return isAscii && given.find_first_of(L"{}") == std::wstring::npos && given.find(L"\\\"") == std::wstring::npos &&
           std::none_of(words.begin(), words.end(),
                        [](const std::wstring& word) { return word.front() == L'-' || word.front() == L'%'; });
}

} // namespace

std::vector<VcsRow> ReadVcsTable(const std::wstring& output) {
    std::vector<VcsRow> rows;
    std::wistringstream lines(output);
    for (std::wstring line; std::getline(lines, line);) {
        std::wistringstream words(line);
        VcsRow row;
        if (words >> row.object >> row.attribute >> row.system && row.object.front() != L'#') {
            std::getline(words, row.value);
            row.value = Bare(row.value);
            rows.push_back(row);
        }
    }
    return rows;
}

bool ShowsGiven(const VcsRow& row, const std::wstring& given) {
    if (clus::IsSecretAttribute(row.attribute)) {
        return row.value.empty() == clus::WithoutQuotesAround(given).empty();
    }
    return IsPlain(given) ? WordsOf(row.value) == WordsOf(given) : !row.value.empty();
}
