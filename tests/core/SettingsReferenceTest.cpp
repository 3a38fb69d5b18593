// The table of arbitrary files, compared with the format acted out on one character array that is cut up like
// std::wcstok does.
#include "core/SettingsFile.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

typedef std::map<std::wstring, std::wstring> Table;

// std::wcstok as the C standard defines it; the platform's takes other arguments.
wchar_t* NextField(wchar_t* text, wchar_t** rest) {
    wchar_t* field = text ? text : *rest;
    if (!field) {
        return nullptr;
    }
    field += std::wcsspn(field, L"\t\n");
    *rest = nullptr;
    if (!*field) {
        return nullptr;
    }
    wchar_t* end = std::wcspbrk(field, L"\t\n");
    if (end) {
        *end = L'\0';
        *rest = end + 1;
    }
    return field;
}

std::wstring WithoutQuotes(const wchar_t* field) {
    if (field[0] != L'"') {
        return field;
    }
    std::wstring value = field + 1;
    const bool closed = !value.empty() && value[value.size() - 1] == L'"';
    return value.substr(0, value.size() - (closed ? 1 : 0)).substr(0, 1024);
}

Table ReferenceTable(const std::vector<std::string>& lines) {
    static wchar_t text[10241];
    std::wmemset(text, L'\0', 10241);
    std::vector<wchar_t*> starts;
    std::size_t used = 0;
    std::size_t total = 0;
    for (const std::string& line : lines) {
        total += line.size() + 1;
        if (total > 10240) {
            break;
        }
        starts.push_back(text + used);
        for (const char byte : line) {
            text[used++] = static_cast<unsigned char>(byte);
        }
    }
    Table table;
    for (wchar_t* start : starts) {
        wchar_t* rest = nullptr;
        const wchar_t* key = NextField(start, &rest);
        if (!key || key[0] == L'#') {
            continue;
        }
        const wchar_t* value = NextField(nullptr, &rest);
        if (!value) {
            continue;
        }
        NextField(nullptr, &rest);
        if (!WithoutQuotes(value).empty()) {
            table[key] = WithoutQuotes(value);
        }
    }
    return table;
}

// What reading in pieces of 8,191 characters makes of a file.
std::vector<std::string> Pieces(const std::string& file) {
    std::vector<std::string> lines;
    std::string line;
    for (const char byte : file) {
        line += byte;
        if (byte == '\n' || line.size() == 8191) {
            lines.push_back(line);
            line.clear();
        }
    }
    if (!line.empty()) {
        lines.push_back(line);
    }
    return lines;
}

std::string Visible(const std::string& file) {
    std::string text;
    for (const char byte : file) {
        text += byte == '\t' ? "\\t" : byte == '\n' ? "\\n" : std::string(1, byte);
    }
    return text;
}

std::string RandomFile(std::mt19937& random, const std::string& alphabet, std::size_t length) {
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::string file;
    for (std::size_t i = 0; i < length; ++i) {
        file += alphabet[pick(random)];
    }
    return file;
}

TEST(SettingsReference, EveryFileOfSixCharactersGivesTheReferenceTable) {
    const std::string alphabet = "ab\t\n#\"";
    std::size_t entries = 0;
    for (std::size_t length = 0; length <= 6; ++length) {
        std::size_t count = 1;
        for (std::size_t i = 0; i < length; ++i) {
            count *= alphabet.size();
        }
        for (std::size_t number = 0; number < count; ++number) {
            std::string file;
            for (std::size_t rest = number, i = 0; i < length; ++i, rest /= alphabet.size()) {
                file += alphabet[rest % alphabet.size()];
            }
            const Table expected = ReferenceTable(Pieces(file));
            entries += expected.size();
            ASSERT_EQ(clus::ParseSettings(Pieces(file)), expected) << Visible(file);
        }
    }
    EXPECT_GT(entries, 1000u);
}

TEST(SettingsReference, RandomSmallFilesGiveTheReferenceTable) {
    std::mt19937 random(20);
    std::uniform_int_distribution<std::size_t> length(0, 80);
    for (int run = 0; run < 20000; ++run) {
        const std::string file = RandomFile(random, "abcAB \t\t\t\n\n\n#\"\r", length(random));
        ASSERT_EQ(clus::ParseSettings(Pieces(file)), ReferenceTable(Pieces(file))) << Visible(file);
    }
}

TEST(SettingsReference, RandomBytesGiveTheReferenceTable) {
    std::string alphabet;
    for (int byte = 0; byte < 256; ++byte) {
        alphabet += static_cast<char>(byte);
    }
    alphabet += std::string(30, '\t') + std::string(30, '\n') + std::string(10, '"') + std::string(5, '#');
    std::mt19937 random(21);
    std::uniform_int_distribution<std::size_t> length(0, 12000);
    for (int run = 0; run < 200; ++run) {
        const std::string file = RandomFile(random, alphabet, length(random));
        ASSERT_EQ(clus::ParseSettings(Pieces(file)), ReferenceTable(Pieces(file))) << "run " << run;
    }
}

TEST(SettingsReference, LongLinesGiveTheReferenceTable) {
    std::mt19937 random(22);
    std::uniform_int_distribution<std::size_t> length(0, 2500);
    const std::string delimiters = "\t\t\n";
    for (int run = 0; run < 300; ++run) {
        std::string file;
        while (file.size() < 11000) {
            file += std::string(run % 3 == 0 ? "\"" : "") + std::string(length(random), 'v') + (run % 2 ? "\"" : "");
            file += delimiters[random() % delimiters.size()];
        }
        ASSERT_EQ(clus::ParseSettings(Pieces(file)), ReferenceTable(Pieces(file))) << "run " << run;
    }
}

} // namespace
