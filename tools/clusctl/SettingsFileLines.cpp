#include "SettingsFileLines.h"

#include "core/SettingsFile.h"

#include <algorithm>

namespace {

const char Marker = '\x01'; // no key begins with it

bool IsBeyondAscii(char byte) {
    return static_cast<unsigned char>(byte) > 0x7F;
}

} // namespace

std::vector<SettingsFileEntry> SettingsFileEntries(const std::vector<std::string>& lines) {
    std::vector<SettingsFileEntry> entries;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const clus::SettingsTable alone = clus::ParseSettings({lines[i]});
        if (alone.empty()) {
            continue;
        }
        // The same lines up to this one, whose key is made one of its own: does the parser find it?
        std::vector<std::string> marked(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        marked[i][marked[i].find_first_not_of("\t\n")] = Marker;
        const clus::SettingsTable found = clus::ParseSettings(marked);
        const auto& entry = *alone.begin();
        const std::wstring key = wchar_t(Marker) + entry.first.substr(1);
        entries.push_back({i + 1, entry.first, entry.second, found.count(key) != 0});
    }
    return entries;
}

std::size_t FirstLineBeyondLimit(const std::vector<std::string>& lines) {
    std::size_t total = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        total += lines[i].size() + 1;
        if (total > clus::SettingsTextCharacters) {
            return i + 1;
        }
    }
    return 0;
}

std::size_t FirstLineBeyondAscii(const std::vector<std::string>& lines) {
    const auto found = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return std::any_of(line.begin(), line.end(), IsBeyondAscii);
    });
    return found == lines.end() ? 0 : static_cast<std::size_t>(found - lines.begin()) + 1;
}
