// A file that somebody asked for, and that replaces nothing.
#ifndef CLUSCTL_NEWFILE_H
#define CLUSCTL_NEWFILE_H

#include <string>

// Throws Failure (AlreadyExists) when there is a file or folder of that name, before anything is read for a new one.
void RequireNoFile(const std::wstring& path);

// The file appears complete or not at all, and replaces none. Throws Failure.
void WriteNewFile(const std::wstring& path, const std::string& bytes);

#endif
