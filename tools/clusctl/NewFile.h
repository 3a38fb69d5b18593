// A file, or a folder of files, that somebody asked for and that replaces nothing.
#ifndef CLUSCTL_NEWFILE_H
#define CLUSCTL_NEWFILE_H

#include <string>
#include <vector>

struct NewFolderFile {
    std::wstring name;
    std::string bytes;
};

// For what is written in the same folder until it is complete. A name of this process's own, which nothing has that one
// of the same number has left: several may write at once, and only one of them makes the file. It does not grow with
// that of the file.
std::wstring FreshNameBeside(const std::wstring& path);

// Throws Failure (AlreadyExists) when there is a file or folder of that name, before anything is read for a new one.
void RequireNoFile(const std::wstring& path);

// The file appears complete or not at all, and replaces none. Throws Failure.
void WriteNewFile(const std::wstring& path, const std::string& bytes);

// The same for a folder with these files in it.
void WriteNewFolder(const std::wstring& path, const std::vector<NewFolderFile>& files);

#endif
