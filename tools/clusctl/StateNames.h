// The names of states, one table for each kind of object.
#ifndef CLUSCTL_STATENAMES_H
#define CLUSCTL_STATENAMES_H

#include "ClusterApi.h"

// For people and in JSON: "online", "offline pending", "partly online". "unknown" for a state that has no name there.
const char* StateWord(CLUSTER_RESOURCE_STATE state);
const char* StateWord(CClusterResource::RES_STATE state);
const char* StateWord(CLUSTER_GROUP_STATE state);
const char* StateWord(CLUSTER_NODE_STATE state);

// In the cluster simulator's model file: "OfflinePending" of a resource; "up", "paused" or "down" of a node.
const char* ModelState(CLUSTER_RESOURCE_STATE state);
const char* ModelState(CLUSTER_NODE_STATE state);

// Of a Windows service, SERVICE_RUNNING and so on: "running", "start pending", "stopped", else "not running".
const char* ServiceStateWord(DWORD state);

#endif
