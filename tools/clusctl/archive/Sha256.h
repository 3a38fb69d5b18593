// SHA-256.
#ifndef CLUSCTL_ARCHIVE_SHA256_H
#define CLUSCTL_ARCHIVE_SHA256_H

#include <string>

namespace archive {

// 64 hexadecimal digits, in lower case.
std::string Sha256(const std::string& bytes);

} // namespace archive

#endif
