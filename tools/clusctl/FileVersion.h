// The version of a program or DLL, as its version resource has it.
#ifndef CLUSCTL_FILEVERSION_H
#define CLUSCTL_FILEVERSION_H

#include <string>

// "1.0.0.0"; empty when the file has none.
std::string FileVersion(const std::wstring& path);

#endif
