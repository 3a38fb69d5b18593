// Nodes, groups and resources of the open cluster as records for a report.
#ifndef CLUSCTL_CLUSTEROBJECTS_H
#define CLUSCTL_CLUSTEROBJECTS_H

#include "ClusterApi.h"
#include "Report.h"

#include <list>
#include <string>
#include <vector>

typedef std::list<std::wstring> Names;

// Throws Failure, with the system's reason, when the local cluster cannot be opened.
void OpenLocalCluster(CCluster& cluster);

// Throws Failure when there is none of that name, or it cannot be opened.
void RequireResource(const CCluster& cluster, CClusterResource& resource, const std::wstring& name);

// All names of one kind, in the cluster's order. Throws Failure when they cannot be listed.
Names ListNames(const CCluster& cluster, CCluster::CCLUSTER_OBJ_ENUM kind);

// The whole answer of a control code to a resource. False when the resource refuses; `code` then holds the reason.
bool QueryResource(HRESOURCE resource, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code);

// CLUSCTL_RESOURCE_GET_CLASS_INFO; class unknown (0) when it cannot be read.
DWORD ResourceClass(HRESOURCE resource);

// ClusterGroupStateUnknown, with the reason as last error, when it cannot be read; `owner` is untouched then.
CLUSTER_GROUP_STATE ReadGroupState(HGROUP group, std::wstring& owner);

// Appends the nodes that a group prefers. False when they cannot be listed.
bool ListPreferredOwners(HGROUP group, Names& names);

// name, type, group, owner, state; with `detail` also id, dependsOn, dependants, possibleOwners, restartAction,
// restartMeaning, privateProperties, networkName, diskDevice. What cannot be read is null.
Json ReadResource(const CCluster& cluster, const std::wstring& name, bool detail);

// The titles of a resource in detail.
const Columns& ResourceTitles();

// name, owner, state, resources (their number); with `detail` also members and disks.
Json ReadGroup(CCluster& cluster, const std::wstring& name, bool detail);

#endif
