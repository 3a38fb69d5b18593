// What the members that create, switch, delete and describe the product's own cluster resource have in common.
#ifndef CLUS_VIRTUALSERVER_PRODUCTRESOURCE_H
#define CLUS_VIRTUALSERVER_PRODUCTRESOURCE_H

#include "clus_Cluster.h"

#include <list>
#include <string>

namespace clus {

// What the product's resources are searched for: the log lines differ, the search does not.
enum class Purpose {
    Switching, // tells each step
    Deletion,
    Asking // tells nothing: the caller does
};

// The product resources in a virtual server's group: those of the single-copy type, or the CCR ones when there are
// none. Opens the cluster.
bool FindProductResources(CCluster& cluster, const wchar_t* networkName, Purpose purpose,
                          std::list<std::wstring>& names);

} // namespace clus

#endif
