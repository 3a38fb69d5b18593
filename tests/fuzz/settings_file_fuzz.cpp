// Splits arbitrary settings files and compares the table with the format's definition acted out literally: one
// character array, cut in place by wcstok.
#include "FuzzInput.h"

#include "core/SettingsFile.h"

#include <cwchar>
#include <map>
#include <string>
#include <vector>

namespace {

std::vector<std::string> ReadLines(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> lines;
    std::string line;
    for (std::size_t i = 0; i < size; ++i) {
        line += static_cast<char>(data[i]);
        if (line.size() == 8191 || line.back() == '\n') {
            lines.push_back(line);
            line.clear();
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

std::wstring StripQuotes(const wchar_t* field) {
    if (*field != L'"') {
        return field;
    }
    const wchar_t* end = field + std::wcslen(field);
    if (end - field > 1 && end[-1] == L'"') {
        --end;
    }
    return std::wstring(field + 1, end).substr(0, 1024);
}

std::map<std::wstring, std::wstring> Reference(const std::vector<std::string>& lines) {
    std::vector<wchar_t> text(10241, L'\0');
    std::vector<wchar_t*> starts;
    wchar_t* end = text.data();
    std::size_t total = 0;
    for (const std::string& line : lines) {
        total += line.size() + 1;
        if (total > 10240) {
            break;
        }
        starts.push_back(end);
        for (const char byte : line) {
            *end++ = static_cast<unsigned char>(byte);
        }
    }
    std::map<std::wstring, std::wstring> table;
    for (wchar_t* start : starts) {
        wchar_t* rest = nullptr;
        const wchar_t* key = std::wcstok(start, L"\t\n", &rest);
        if (!key || *key == L'#') {
            continue;
        }
        const wchar_t* value = std::wcstok(nullptr, L"\t\n", &rest);
        if (!value) {
            continue;
        }
        std::wcstok(nullptr, L"\t\n", &rest);
        const std::wstring stripped = StripQuotes(value);
        if (!stripped.empty()) {
            table[key] = stripped;
        }
    }
    return table;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> lines = ReadLines(data, size);
    const clus::SettingsTable table = clus::ParseSettings(lines);
    FUZZ_CHECK(table == Reference(lines));
    for (const auto& entry : table) {
        FUZZ_CHECK(!entry.first.empty() && !entry.second.empty());
        FUZZ_CHECK(entry.first.front() != L'#');
        FUZZ_CHECK(entry.first.find_first_of(L"\t\n") == std::wstring::npos);
        FUZZ_CHECK(entry.second.find_first_of(L"\t\n") == std::wstring::npos);
    }
    return 0;
}
