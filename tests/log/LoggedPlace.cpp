#include "LoggedPlace.h"

#include <winsock2.h>
#include <windows.h>

#include <fstream>
#include <functional>
#include <stdexcept>

namespace harness {

namespace {

const int MostLinesOfAStatement = 6;

// Visits the folder's C++ files, those of its folders too, as (name of the folder, name of the file, path).
void ForEachSource(const std::string& folder,
                   const std::function<void(const std::string&, const std::string&, const std::string&)>& visit) {
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA((folder + "/*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot list " + folder);
    }
    do {
        const std::string name = found.cFileName;
        const std::string path = folder + "/" + name;
        const std::size_t dot = name.rfind('.');
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            if (dot != std::string::npos && name.substr(dot) == ".cpp") {
                visit(folder.substr(folder.rfind('/') + 1), name, path);
            }
        } else if (name != "." && name != "..") {
            ForEachSource(path, visit);
        }
    } while (FindNextFileA(search, &found));
    FindClose(search);
}

// The text between the quotes of the first wide literal; empty when there is none.
std::string FirstLiteral(const std::string& code) {
    const std::size_t start = code.find("L\"");
    if (start == std::string::npos) {
        return "";
    }
    std::string text;
    for (std::size_t i = start + 2; i < code.size() && code[i] != '"'; ++i) {
        if (code[i] != '\\') {
            text += code[i];
        } else if (++i < code.size()) {
            text += code[i] == 'n' ? '\n' : code[i];
        }
    }
    return text;
}

// The format of the logging statement that line `number` belongs to; empty when none does. Compilers give a statement
// of several lines the number of its first or of its last one.
std::string FormatAt(const std::vector<std::string>& lines, int number) {
    if (number < 1 || number > static_cast<int>(lines.size())) {
        return "";
    }
    int first = number;
    while (first > 1 && number - first < MostLinesOfAStatement &&
           lines[static_cast<std::size_t>(first - 1)].find("LOG_") == std::string::npos) {
        --first;
    }
    std::string statement;
    for (int i = first; i <= static_cast<int>(lines.size()) && i < first + MostLinesOfAStatement; ++i) {
        const std::string& line = lines[static_cast<std::size_t>(i - 1)];
        statement += line + "\n";
        if (line.find(");") != std::string::npos) {
            return i >= number && statement.find("LOG_") != std::string::npos ? FirstLiteral(statement) : "";
        }
    }
    return "";
}

} // namespace

bool CanMake(const std::string& format, const std::string& text) {
    if (format.empty()) {
        return text.empty();
    }
    if (format[0] != '%') {
        return !text.empty() && text[0] == format[0] && CanMake(format.substr(1), text.substr(1));
    }
    const std::size_t end = format.find_first_not_of("0123456789", 1);
    const std::string rest = end == std::string::npos ? "" : format.substr(end + 1);
    for (std::size_t length = 0; length <= text.size(); ++length) {
        if (CanMake(rest, text.substr(length))) {
            return true;
        }
    }
    return false;
}

LoggedPlaces::LoggedPlaces(const std::string& folder) {
    const std::string head = "CLUS_LOG_PLACE(";
    ForEachSource(folder, [&](const std::string& room, const std::string& name, const std::string& path) {
        Source source;
        source.name = room + "/" + name;
        std::string tag;
        int thousand = 0;
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            const std::size_t comma = line.find(", ");
            if (line.compare(0, head.size(), head) == 0 && comma != std::string::npos) {
                tag = ".\\clus_" + line.substr(head.size(), comma - head.size()) + ".cpp";
                thousand = std::stoi(line.substr(comma + 2));
            }
            source.lines.push_back(line);
        }
        if (!tag.empty() && !m_sources.emplace(std::make_pair(tag, thousand), source).second) {
            throw std::runtime_error(source.name + " shares its numbers with another file");
        }
    });
}

std::string LoggedPlaces::Misled(const LogLine& line) {
    const std::string place = line.sourceTag + "(" + std::to_string(line.line) + ")";
    const auto found = m_sources.find({line.sourceTag, line.line / 1000});
    if (found == m_sources.end()) {
        return place + " is in no file: " + line.text;
    }
    const std::string format = FormatAt(found->second.lines, line.line % 1000);
    if (format.empty() || !CanMake(format, line.text)) {
        return place + ", in " + found->second.name + ", does not log: " + line.text + "\n  but: " + format;
    }
    m_reached.insert(found->second.name);
    return "";
}

std::set<std::string> LoggedPlaces::Files() const {
    std::set<std::string> files;
    for (const auto& source : m_sources) {
        files.insert(source.second.name);
    }
    return files;
}

} // namespace harness
