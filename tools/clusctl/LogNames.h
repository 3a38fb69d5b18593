// Names that the text of a log shows to be names, whether or not the cluster has such an object any more.
#ifndef CLUSCTL_LOGNAMES_H
#define CLUSCTL_LOGNAMES_H

#include <string>
#include <vector>

struct LogName {
    std::string name;
    bool isIdentity; // an account, its domain, or a computer, which are this installation's whatever else has the word
};

// In capitals or digits behind a word such as "node" or "user", or in quotation marks behind it; both parts of
// DOMAIN\account; the computer of \\COMPUTER. Each as often as it stands there.
std::vector<LogName> NamesInLog(const std::string& text);

#endif
