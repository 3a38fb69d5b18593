// The end of a log file.
#ifndef CLUSCTL_LASTLINES_H
#define CLUSCTL_LASTLINES_H

#include <cstddef>
#include <string>

// So many lines at most, from the last four megabytes, without the secrets that they hold (LogSecrets). Throws
// common::FileError.
std::string LastLines(const std::wstring& file, std::size_t most);

#endif
