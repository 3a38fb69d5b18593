// What has to hold before the library is asked to change something for a virtual server: a reason that is told
// beforehand needs no look into the log.
#ifndef CLUSCTL_SERVERCHECKS_H
#define CLUSCTL_SERVERCHECKS_H

#include "ClusterObjects.h"

#include <map>
#include <string>

// Where a virtual server is: what is known of its Network Name resource.
struct ServerPlace {
    std::wstring networkNameResource;
    std::wstring group;
    std::wstring owner;
    CLUSTER_RESOURCE_STATE state;
};

// Throws Failure: ServerNotFound, or Incomplete when what cannot be read may be it.
ServerPlace FindServer(CCluster& cluster, const std::wstring& server);

typedef std::map<std::wstring, Names> NamesByType;

// The resources of a group. Throws Failure (Incomplete) unless all of them can be read.
NamesByType ReadMembers(const CCluster& cluster, const std::wstring& group);

// The product's resources of a virtual server, as the library finds them. Throws Failure (Incomplete) when it may have
// passed one over because it could not be read.
Names FindProductResources(const CCluster& cluster, const std::wstring& server, const ServerPlace& place);

// Throws Failure (NotPossible, with the node to go to) unless the virtual server is this node's.
void RequireOwnedHere(const ServerPlace& place, const std::wstring& server);

// Throws Failure (NotPossible) when resources besides these depend on one of them: the cluster deletes none that others
// depend on, but the library takes all of these offline before it tries.
void RequireNoOtherDependants(const CCluster& cluster, const Names& resources, const std::string& what);

// The state of a node. Throws Failure (NotPossible) when it is down: what it is said to own and do is then only what
// the cluster remembers. Throws Failure with the cluster's code when the state cannot be read.
CLUSTER_NODE_STATE RequireNodeRuns(const CCluster& cluster, const std::wstring& node);

// The same, and throws Failure (NodePaused) when the node is paused, which keeps what it owns and starts nothing.
void RequireNodeStarts(const CCluster& cluster, const std::wstring& node);

// After the library could not change a resource, which tells no code: asks the cluster for the same once more. The
// code, ERROR_SUCCESS also when the change is under way now.
DWORD AskAgain(const CCluster& cluster, const std::wstring& name, DWORD(WINAPI* change)(HRESOURCE));

#endif
