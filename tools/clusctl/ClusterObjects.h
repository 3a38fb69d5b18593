// Nodes, groups and resources of the open cluster as records for a report.
#ifndef CLUSCTL_CLUSTEROBJECTS_H
#define CLUSCTL_CLUSTEROBJECTS_H

#include "ClusterApi.h"
#include "Report.h"

#include <list>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

typedef std::list<std::wstring> Names;

struct HandleCloser {
    void operator()(HRESOURCE handle) const {
        CloseClusterResource(handle);
    }
    void operator()(HGROUP handle) const {
        CloseClusterGroup(handle);
    }
    void operator()(HNODE handle) const {
        CloseClusterNode(handle);
    }
};

typedef std::unique_ptr<std::remove_pointer<HRESOURCE>::type, HandleCloser> ResourceHandle;
typedef std::unique_ptr<std::remove_pointer<HGROUP>::type, HandleCloser> GroupHandle;
typedef std::unique_ptr<std::remove_pointer<HNODE>::type, HandleCloser> NodeHandle;

// Marks the report incomplete; `what` is what could not be done. With the meaning of the code unless it is 0, which may
// be that the cluster was lost.
void MarkUnread(Report& report, const std::string& what, DWORD code);

// The same of a list, and the failure for want of one. A list of a cluster that was lost may say only that its handle
// is none (ERROR_INVALID_HANDLE).
void MarkUnlisted(Report& report, const std::string& what, DWORD code);
Failure FailureOfList(const std::string& what, DWORD code, const ErrorKind& otherwise);

// Throws Failure, with the system's reason, when the local cluster cannot be opened.
void OpenLocalCluster(CCluster& cluster);
Failure FailureToOpenCluster(DWORD code);

// Null, with the reason as last error, when it cannot be opened. Unlike the library's classes, nothing is logged: a log
// may change the last error.
ResourceHandle OpenResource(const CCluster& cluster, const std::wstring& name);
GroupHandle OpenGroup(const CCluster& cluster, const std::wstring& name);
NodeHandle OpenNode(const CCluster& cluster, const std::wstring& name);

// The same. Throw Failure when there is none of that name, or it cannot be opened.
ResourceHandle RequireResource(const CCluster& cluster, const std::wstring& name);
GroupHandle RequireGroup(const CCluster& cluster, const std::wstring& name);

// All names of one kind, in the cluster's order. Throws Failure when they cannot be listed.
Names ListNames(const CCluster& cluster, CCluster::CCLUSTER_OBJ_ENUM kind);
Names ListResourceTypes(const CCluster& cluster);
Names ListObjects(const CCluster& cluster, DWORD mask, const char* plural); // of any kind

// The cluster's name, however long. Throws Failure.
std::wstring ReadClusterName(const CCluster& cluster);

// The whole answer of a control code to a resource. False when the resource refuses; `code` then holds the reason.
bool QueryResource(HRESOURCE resource, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code);

// The same of a group.
bool QueryGroup(HGROUP group, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code);

// The same of a node's interface on a network.
bool QueryInterface(HNETINTERFACE card, DWORD controlCode, std::vector<unsigned char>& answer, DWORD& code);

// CLUSCTL_RESOURCE_GET_CLASS_INFO. The Win32 code; `resourceClass` is untouched on failure.
DWORD ReadResourceClass(HRESOURCE resource, DWORD& resourceClass);

// The same; class unknown (0) when it cannot be read.
DWORD ResourceClass(HRESOURCE resource);

// However long the names. ClusterResourceStateUnknown, with the reason as last error, when it cannot be read; the names
// are untouched then.
CLUSTER_RESOURCE_STATE ReadResourceState(HRESOURCE resource, std::wstring& owner, std::wstring& group);

// ClusterGroupStateUnknown, with the reason as last error, when it cannot be read; `owner` is untouched then.
CLUSTER_GROUP_STATE ReadGroupState(HGROUP group, std::wstring& owner);

// Append the names of one kind (CLUSTER_GROUP_ENUM_..., CLUSTER_RESOURCE_ENUM_...). The Win32 code; not all names are
// there when it is a failure.
DWORD ListInGroup(HGROUP group, DWORD kind, Names& names);
DWORD ListRelated(HRESOURCE resource, DWORD kind, Names& names);

// The resources of a group. Throws Failure when there is no such group, or it cannot be read whole.
Names ListMembers(const CCluster& cluster, const std::wstring& groupName);

// How much to read of a resource.
enum class ResourceParts {
    Line,             // name, type, group, owner, state
    Detail,           // besides id, dependsOn, dependants, possibleOwners, restartAction, restartMeaning,
                      // privateProperties (secrets masked), networkName, diskDevice
    DetailWithSecrets // with secrets as they are
};

// What cannot be read is null, and marks the report incomplete. So of the following.
Json ReadResource(const CCluster& cluster, const std::wstring& name, ResourceParts parts, Report& report);

Json ReadResourceType(const CCluster& cluster, const std::wstring& name, Report& report);

// The titles of a resource in detail.
const Columns& ResourceTitles();

// name, owner, state, resources (their number); with `detail` also members and disks.
Json ReadGroup(const CCluster& cluster, const std::wstring& name, bool detail, Report& report);

// name and state ("up", "down", "paused", "joining", "unknown") of each node.
Json ReadNodes(const CCluster& cluster, Report& report);

#endif
