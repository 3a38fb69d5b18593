// Everything that support asks for, in one archive.
#ifndef CLUSCTL_SUPPORTBUNDLE_H
#define CLUSCTL_SUPPORTBUNDLE_H

#include "Json.h"
#include "LogCapture.h"

#include <string>
#include <vector>

struct BundleRequest {
    bool anonymises = false;
    bool allowsWritableTools = false;
};

struct SupportBundle {
    std::string archive;             // its bytes
    Json manifest = Json::object();  // format, created, clusctl, cluster, anonymised, files, missing
    std::vector<std::string> unread; // what belongs into it and cannot be read: sentences
};

// Reads all of it; nothing is changed. Throws Failure when the whole is too large.
SupportBundle MakeSupportBundle(const LogCapture& log, const BundleRequest& request);

#endif
