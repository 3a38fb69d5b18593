// Folder paths in a form that can be compared.
#ifndef FOLDERPATH_H
#define FOLDERPATH_H

#include <string>

// Environment variables expanded, one backslash between the parts, "." and ".." resolved, upper case, no separator at
// the end. Empty for anything that is not an absolute path with a drive letter or a UNC path.
std::wstring ComparableFolder(const std::wstring& path);

// Whether `outer` is `inner` or a folder above it; both comparable.
bool IsSameOrAbove(const std::wstring& outer, const std::wstring& inner);

#endif
