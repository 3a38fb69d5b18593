// What the library reads of the settings, by names and limits that its files keep to themselves. A test asks the
// library at each of them.
#ifndef CLUSCTL_SETTINGSLIMITS_H
#define CLUSCTL_SETTINGSLIMITS_H

#include <winsock2.h>
#include <windows.h>

namespace settings {

// In the folder "config" beside the program, or else beside it.
const wchar_t FileName[] = L"cfg_ProductRegistry.txt";
const wchar_t KeyName[] = L"RegKeyProductCurrentVersion";

// Bytes of a text that the library has room for, the terminator included.
const DWORD ShortText = 2048;
const DWORD LongText = 4096; // "DataRootPath"

} // namespace settings

#endif
