#include "ShownValues.h"

#include <sstream>

namespace {

const char MessageStart[] = "VCS ";

// Calls `take` for each line that is no header and no message.
template <typename Take> void EachLine(const std::string& table, Take take) {
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        const bool isMessage =
            line.compare(0, sizeof(MessageStart) - 1, MessageStart) == 0 && line.find(" V-16-") != std::string::npos;
        if (!line.empty() && line.front() != '#' && !isMessage) {
            take(line);
        }
    }
}

// Takes the next word off the line, with the blanks behind it, which fill the column. False when there is none.
bool TakeWord(std::string& line, std::string& word) {
    const std::size_t end = line.find_first_of(" \t");
    word = line.substr(0, end);
    line.erase(0, end == std::string::npos ? end : line.find_first_not_of(' ', end));
    return !word.empty();
}

} // namespace

std::vector<std::string> ShownValue::Parts() const {
    std::vector<std::string> parts;
    if (value.empty()) {
        return parts;
    }
    std::size_t begin = 0;
    for (std::size_t tab = value.find('\t'); tab != std::string::npos; tab = value.find('\t', begin)) {
        parts.push_back(value.substr(begin, tab - begin));
        begin = tab + 1;
    }
    parts.push_back(value.substr(begin));
    return parts;
}

std::vector<ShownValue> ReadShownValues(const std::string& table, TableForm form) {
    std::vector<ShownValue> values;
    EachLine(table, [&](std::string line) {
        ShownValue row;
        if ((form == TableForm::Value || TakeWord(line, row.object)) && TakeWord(line, row.attribute) &&
            (form != TableForm::ObjectSystemValue || TakeWord(line, row.system))) {
            row.value = line;
            values.push_back(row);
        }
    });
    return values;
}

std::vector<std::vector<std::string>> ReadRows(const std::string& table, std::size_t fewest) {
    std::vector<std::vector<std::string>> rows;
    EachLine(table, [&](const std::string& line) {
        std::istringstream words(line);
        std::vector<std::string> row;
        for (std::string word; words >> word;) {
            row.push_back(word);
        }
        if (row.size() >= fewest) {
            rows.push_back(row);
        }
    });
    return rows;
}
