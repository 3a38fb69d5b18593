// Owners that are this computer in another letter case. The library compares the names letter for letter, and takes
// such an owner for another node.
#ifndef CLUSCTL_OWNERSPELLING_H
#define CLUSCTL_OWNERSPELLING_H

#include "Report.h"

#include <clus_Cluster.h>

#include <string>

// Whether a node's name, as the cluster tells it of an owner, is this computer's but for letter case.
bool IsSpelledOtherwise(const std::wstring& owner);

// Warns when a node's name, as the cluster tells it of an owner, is this computer's but for letter case; once for each
// spelling.
void WarnOfOwnerSpelling(const std::wstring& owner, Report& report);

// Asks the owner of each group for that. One that cannot be read marks the report incomplete: servers may be left out.
void WarnOfOwnerSpellings(const CCluster& cluster, Report& report);

#endif
