// Why a server is not in the list of this node's servers: the library leaves out what it cannot read.
#ifndef CLUSCTL_SERVERSLEFTOUT_H
#define CLUSCTL_SERVERSLEFTOUT_H

#include "ClusterObjects.h"

// Marks the report incomplete for each of these resources, by asking the cluster again. Throws Failure when that cannot
// be opened any more.
void TellServersLeftOut(const Names& resources, Report& report);

#endif
