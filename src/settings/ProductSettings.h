// The product's settings: where its registry key is, and what is read from there for more than one subsystem.
#ifndef CLUS_SETTINGS_PRODUCTSETTINGS_H
#define CLUS_SETTINGS_PRODUCTSETTINGS_H

#include <string>

namespace clus {

// The compiled-in path of the product's key under HKEY_LOCAL_MACHINE.
extern const wchar_t DefaultProductRegistryKey[];

// The path in force: the compiled-in one, or what the settings file beside the host executable names. The file is read
// at the first call, once per process whatever the outcome. Thread-safe; logs nothing.
const std::wstring& ProductRegistryKey();

// Whether "IsCluster" is 1 below the path in force. Read at the first call, once per process; a key that cannot be
// opened settles the answer too. Thread-safe; logs nothing.
bool IsClusterDeployment();

// "DataRootPath" of the compiled-in key, whatever the settings file names; empty when absent or no text. Read anew at
// each call.
std::wstring DataRootPath();

} // namespace clus

#endif
