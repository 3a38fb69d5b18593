// The servers of this node as the library lists them, and why one is not in the list: it leaves out what it cannot
// read.
#ifndef CLUSCTL_SERVERSLEFTOUT_H
#define CLUSCTL_SERVERSLEFTOUT_H

#include "ClusterObjects.h"

#include <clus_VirtualServerUtil.h>

#include <vector>

struct ServersHere {
    std::vector<CClusterVirtualServerInfo> servers;
    Names leftOut; // resources that may make a server of this node, and are not in the list
};

// False when the library cannot list them.
bool ListServersHere(ServersHere& here);

// Why the library could list nothing: it only says that it could not.
[[noreturn]] void FailToListServers();

// Why the library makes no server of a resource that it leaves out, by asking the cluster again. Empty when that cannot
// be told, or it makes one now: then the report is marked incomplete; and of a resource that makes none.
std::string WhyLeftOut(const CCluster& cluster, const std::wstring& name, Report& report);

// Marks the report incomplete for each of these resources. Throws Failure when the cluster cannot be opened any more.
void TellServersLeftOut(const Names& resources, Report& report);

#endif
