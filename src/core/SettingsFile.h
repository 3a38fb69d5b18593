// The settings file "cfg_ProductRegistry.txt": lines of KEY <TAB> VALUE, "#" for comments. Pure functions.
//
// The lines are split in place, in one text, and a scan may run on into the following lines. So of several key-value
// lines in a row only the first, third, fifth and so on take effect. Installations rely on the format as it is: their
// entry stands on the first line or right behind a comment.
#ifndef CLUS_CORE_SETTINGSFILE_H
#define CLUS_CORE_SETTINGSFILE_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace clus {

const std::size_t SettingsPieceCharacters = 8191; // a longer line is read as several
const std::size_t SettingsTextCharacters = 10240; // all lines together, each counted with one character more
const std::size_t SettingsValueCharacters = 1024; // of a quoted value

typedef std::map<std::wstring, std::wstring> SettingsTable;

// The table of key and value that the lines define. Each line keeps its line feed; each byte becomes one character.
SettingsTable ParseSettings(const std::vector<std::string>& lines);

} // namespace clus

#endif
