// ZIP archives of plain files, in memory. What is read may come from anywhere.
#ifndef CLUSCTL_ARCHIVE_ZIPARCHIVE_H
#define CLUSCTL_ARCHIVE_ZIPARCHIVE_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace archive {

struct File {
    std::string name; // see IsPlainName
    std::string bytes;
};

// The archive is none, is damaged, or passes the bounds; what() is the sentence for the user.
class ArchiveError : public std::runtime_error {
public:
    explicit ArchiveError(const std::string& what) : std::runtime_error(what) {
    }
};

const std::size_t MostFiles = 64;
const std::size_t MostBytes = std::size_t{256} * 1024 * 1024; // of all files together, as they are without compression

// Whether a name is one of a file and of nothing else on any system: letters, digits, dots, dashes and underscores, 64
// at most, no dot at either end, and no name of a device ("NUL", "COM1.txt").
bool IsPlainName(const std::string& name);

// Whether bytes begin as an archive does.
bool LooksLikeZip(const std::string& bytes);

// The archive of these files, in their order; the same bytes for the same files. Throws ArchiveError when a name is not
// plain, or stands twice in any letter case, or the files pass the bounds.
std::string WriteZip(const std::vector<File>& files);

// The files of an archive. Throws ArchiveError, also when a name is not plain or stands twice.
std::vector<File> ReadZip(const std::string& bytes);

} // namespace archive

#endif
