// What the members that read the product's registry key have in common.
#ifndef CLUS_VIRTUALSERVER_HOSTSETTINGS_H
#define CLUS_VIRTUALSERVER_HOSTSETTINGS_H

#include "platform/RegistryKey.h"

namespace clus {

// Registry texts are read into 2,048 characters, of which most may fill this many bytes: 1,023 characters and their
// terminator.
const DWORD RegistryTextCharacters = 2048;
const DWORD ShortRegistryTextBytes = 2048;

// "HomeDir", from the open product key.
bool ReadHomeDir(const RegistryKey& key, wchar_t (&text)[RegistryTextCharacters]);

} // namespace clus

#endif
