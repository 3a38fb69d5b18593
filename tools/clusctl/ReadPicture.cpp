#include "ReadPicture.h"

#include "ClusterInUse.h"
#include "ClusterObjects.h"
#include "FailoverPicture.h"
#include "OwnerSpelling.h"
#include "Progress.h"
#include "StateNames.h"
#include "Text.h"

#include "core/ValueList.h"

#include <memory>
#include <utility>

using namespace picture;

namespace {

// Empty, and said, when the resource does not tell it.
std::wstring ReadText(HRESOURCE resource, DWORD controlCode, const std::string& what, Report& report) {
    std::vector<unsigned char> answer;
    DWORD code = 0;
    if (!QueryResource(resource, controlCode, answer, code)) {
        MarkUnread(report, what, code);
        return std::wstring();
    }
    return clus::TextInBuffer(answer.data(), answer.size(), 0);
}

Group ReadOneGroup(const CCluster& cluster, const std::wstring& name, Report& report) {
    Group result;
    result.name = common::ToUtf8(name);
    result.state = StateWord(ClusterGroupStateUnknown);
    const GroupHandle group = OpenGroup(cluster, name);
    if (!group) {
        MarkUnread(report, "cannot open the group " + Quoted(name), GetLastError());
        return result;
    }
    std::wstring owner;
    const CLUSTER_GROUP_STATE state = ReadGroupState(group.get(), owner);
    if (state == ClusterGroupStateUnknown) {
        MarkUnread(report, "cannot read the state of the group " + Quoted(name), GetLastError());
        return result;
    }
    SetGroupState(result, state);
    result.node = common::ToUtf8(owner);
    result.isOwnerMisspelt = IsSpelledOtherwise(owner);
    return result;
}

void ReadDependencies(HRESOURCE handle, Resource& resource, Report& report) {
    Names names;
    const DWORD code = ListRelated(handle, CLUSTER_RESOURCE_ENUM_DEPENDS, names);
    if (code != ERROR_SUCCESS) {
        MarkUnlisted(report, "cannot list the dependencies of " + Quoted(resource.name), code);
        resource.hasDependenciesRead = false;
        return;
    }
    for (const std::wstring& name : names) {
        resource.dependsOn.push_back(common::ToUtf8(name));
    }
}

Resource ReadOneResource(const CCluster& cluster, const std::wstring& name, Report& report) {
    Resource result;
    result.name = common::ToUtf8(name);
    result.state = StateWord(ClusterResourceStateUnknown);
    const ResourceHandle handle = OpenResource(cluster, name);
    if (!handle) {
        MarkUnread(report, "cannot open the resource " + Quoted(name), GetLastError());
        result.hasDependenciesRead = false;
        return result;
    }
    const std::wstring type =
        ReadText(handle.get(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, "cannot read the type of " + Quoted(name), report);
    result.type = common::ToUtf8(type);
    result.role = RoleOfType(type);
    std::wstring owner;
    std::wstring group;
    const CLUSTER_RESOURCE_STATE state = ReadResourceState(handle.get(), owner, group);
    if (state == ClusterResourceStateUnknown) {
        MarkUnread(report, "cannot read the state of " + Quoted(name), GetLastError());
    } else {
        SetResourceState(result, state);
        result.node = common::ToUtf8(owner);
        result.group = common::ToUtf8(group);
    }
    if (result.role == Role::NetworkName) {
        result.networkName = common::ToUtf8(ReadText(handle.get(), CLUSCTL_RESOURCE_GET_NETWORK_NAME,
                                                     "cannot read the network name of " + Quoted(name), report));
    }
    ReadDependencies(handle.get(), result, report);
    return result;
}

template <typename Object> std::string Stored(const std::vector<Object>& objects, const std::wstring& name) {
    std::string exact = common::ToUtf8(name);
    const std::wstring folded = common::Folded(name);
    std::string found;
    for (const Object& object : objects) {
        if (object.name == exact) {
            return exact;
        }
        if (found.empty() && common::Folded(common::ToUtf16(object.name)) == folded) {
            found = object.name;
        }
    }
    return found;
}

} // namespace

ClusterPicture ReadFailoverPicture(const LogCapture* log, Report& report) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    ClusterPicture result;
    result.kind = Kind::Failover;
    result.name = common::ToUtf8(ReadClusterName(cluster));
    for (const Json& record : ReadNodes(cluster, report)) {
        Node node;
        node.name = record["name"].get<std::string>();
        node.state = record["state"].get<std::string>();
        node.isUp = node.state == StateWord(ClusterNodeUp);
        result.nodes.push_back(node);
    }
    for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
        result.groups.push_back(ReadOneGroup(cluster, name, report));
    }
    const Names names = ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE);
    const auto progress = log == nullptr ? nullptr : std::make_unique<CountedProgress>(*log, "resources", names.size());
    for (const std::wstring& name : names) {
        if (progress) {
            progress->Next();
        }
        result.resources.push_back(ReadOneResource(cluster, name, report));
    }
    return result;
}

ClusterPicture ReadPicture(const LogCapture& log, Report& report) {
    return ClusterInUse() == Answering::Vcs ? ReadVcsPicture(log) : ReadFailoverPicture(&log, report);
}

std::string StoredGroup(const ClusterPicture& cluster, const std::wstring& name) {
    return Stored(cluster.groups, name);
}

std::string StoredResource(const ClusterPicture& cluster, const std::wstring& name) {
    return Stored(cluster.resources, name);
}
