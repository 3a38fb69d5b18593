#include "VcsTable.h"

#include <sstream>

namespace {

const wchar_t Around[] = L" \t\r|";

std::wstring Bare(const std::wstring& text) {
    const size_t begin = text.find_first_not_of(Around);
    return begin == std::wstring::npos ? std::wstring() : text.substr(begin, text.find_last_not_of(Around) - begin + 1);
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
