// Texts. Names, paths and values are UTF-16 inside this tool, as the platform and the library take and give them. UTF-8
// is everything that is read or printed: messages, JSON, log lines, what the VCS tools say, files. A text changes over
// when it comes in (CommandLine, Password) or goes out (Json, Quoted and Printable).
#ifndef CLUSCTL_TEXT_H
#define CLUSCTL_TEXT_H

#include "picture/Printable.h"

#include <string>

// As of picture/Printable.h.
std::string Printable(const std::wstring& text);

// Letters of ASCII in lower case.
std::string Lower(std::string text);

bool StartsWith(const std::string& text, const std::string& start);

// Characters, not bytes.
size_t CharacterCount(const std::string& text);

// The printable text in double quotes, its middle left out when it is very long.
std::string Quoted(const std::string& text);
std::string Quoted(const std::wstring& text);

// The path in double quotes, whole however long it is: somebody is to find the file.
std::string QuotedPath(const std::wstring& path);

// The printable text, its end left out when it is longer.
std::string Shortened(const std::string& text, size_t longest);

// The system's text for a Win32 code, printable, without the full stop; empty when there is none.
std::string SystemText(unsigned long code);

// "error 5007 (Cluster resource not found)"; the number alone when the system has no text for it.
std::string ErrorText(unsigned long code);

#endif
