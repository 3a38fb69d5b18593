// Which lines of the settings file take effect, told by the library's own parser. Pure functions.
#ifndef CLUSCTL_SETTINGSFILELINES_H
#define CLUSCTL_SETTINGSFILELINES_H

#include <cstddef>
#include <string>
#include <vector>

struct SettingsFileEntry {
    std::size_t line; // 1 is the first
    std::wstring key;
    std::wstring value;
    bool counts; // false: the lines before it swallow it, or the limit comes first
};

// The lines that would be an entry if they stood alone, each as the file's lines (with their line feeds) make it count.
std::vector<SettingsFileEntry> SettingsFileEntries(const std::vector<std::string>& lines);

// The first line that does not count any more because the file is too long; 0 when all do.
std::size_t FirstLineBeyondLimit(const std::vector<std::string>& lines);

// The first line with a byte that is no ASCII; 0 when there is none.
std::size_t FirstLineBeyondAscii(const std::vector<std::string>& lines);

#endif
