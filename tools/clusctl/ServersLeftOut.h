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

// Marks the report incomplete for each of these resources, by asking the cluster again. Throws Failure when that cannot
// be opened any more.
void TellServersLeftOut(const Names& resources, Report& report);

#endif
