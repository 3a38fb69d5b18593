// The cluster's networks and what holds its quorum, as members of a model.
#ifndef CLUSCTL_CLUSTERNETWORKS_H
#define CLUSCTL_CLUSTERNETWORKS_H

#include "ClusterObjects.h"

// Adds "networks" and "networkInterfaces", where there are any. Of a part nothing would be known but that addresses
// lack a network: when one cannot be read, none is there, which is marked in the model ("unread" of the cluster), and
// the report is marked incomplete. Throws Failure when the cluster is lost.
void AddNetworks(const CCluster& cluster, Json& model, Report& report);

// Adds to "cluster" who goes on when nodes are lost, and marks among `resources` the one that holds the quorum. When
// the cluster does not tell, which is marked as well, a core disk counts as it. `model` says which generation the
// cluster is of.
void AddQuorum(const CCluster& cluster, Json& model, Json& resources, Report& report);

#endif
