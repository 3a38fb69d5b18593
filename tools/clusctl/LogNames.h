// Names that the text of a log shows to be names, whether or not the cluster has such an object any more.
#ifndef CLUSCTL_LOGNAMES_H
#define CLUSCTL_LOGNAMES_H

#include <string>
#include <vector>

// In capitals or digits behind a word such as "node" or "user", or in quotation marks behind it; both parts of
// DOMAIN\account; the computer of \\COMPUTER. Each as often as it stands there.
std::vector<std::string> NamesInLog(const std::string& text);

#endif
