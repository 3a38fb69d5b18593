#include "ServerChecks.h"

#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/ResourceTypes.h"
#include "core/ValueList.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>

namespace {

std::wstring TextOf(const Json& text) {
    return text.is_string() ? common::ToUtf16(text.get<std::string>()) : std::wstring();
}

void RequireComplete(const Report& report, const std::string& what) {
    if (report.IsLost()) {
        throw Failure::OfCode(what, report.LostCode(), Errors::ClusterLost);
    }
    if (!report.IsComplete()) {
        throw Failure(Errors::Incomplete, what + ": " + report.Warnings().front());
    }
}

// Whether all that could be the network name's resource can be read, and none of them is.
void RequireNamesReadable(const CCluster& cluster, const std::wstring& server) {
    Report report;
    for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE)) {
        if (ReadResourceType(cluster, name, report) == Json(clus::NetworkNameType)) {
            std::vector<unsigned char> answer;
            DWORD code = 0;
            const ResourceHandle resource = OpenResource(cluster, name);
            if (!QueryResource(resource.get(), CLUSCTL_RESOURCE_GET_NETWORK_NAME, answer, code)) {
                MarkUnread(report, "cannot read the network name of " + Quoted(name), code);
                continue;
            }
            // The library looks for the name in capitals.
            const std::wstring networkName = clus::TextInBuffer(answer.data(), answer.size(), 0);
            if (common::IsSameName(networkName, server)) {
                throw Failure(Errors::NotPossible, "the library does not find the virtual server " +
                                                       Quoted(networkName) + ": its network name has small letters")
                    .Hint("'clusctl doctor' says what to do about it.");
            }
        }
    }
    RequireComplete(report, "cannot tell whether there is a virtual server " + Quoted(server));
}

} // namespace

ServerPlace FindServer(CCluster& cluster, const std::wstring& server) {
    ServerPlace place = {};
    if (!cluster.FindFirstResourceNameByNetworkName(place.networkNameResource, server.c_str())) {
        RequireNamesReadable(cluster, server);
        throw Failure(Errors::ServerNotFound,
                      "the cluster has no virtual server with the network name " + Quoted(server));
    }
    const ResourceHandle resource = RequireResource(cluster, place.networkNameResource);
    place.state = ReadResourceState(resource.get(), place.owner, place.group);
    if (place.state == ClusterResourceStateUnknown) {
        throw Failure::OfCode("cannot read the state of " + Quoted(place.networkNameResource), GetLastError(),
                              Errors::Incomplete);
    }
    return place;
}

NamesByType ReadMembers(const CCluster& cluster, const std::wstring& groupName) {
    Report report;
    NamesByType members;
    for (const std::wstring& name : ListMembers(cluster, groupName)) {
        members[TextOf(ReadResourceType(cluster, name, report))].push_back(name);
    }
    RequireComplete(report, "cannot tell what the group " + Quoted(groupName) + " holds");
    return members;
}

Names FindProductResources(const CCluster& cluster, const std::wstring& server, const ServerPlace& place) {
    ReadMembers(cluster, place.group);
    Names names;
    if (!CVirtualServerUtil::FindKOVAResources(server.c_str(), names)) {
        throw Failure(Errors::Incomplete, "cannot list the product's resources of " + Quoted(server))
            .Hint("The cluster answers now: try again.");
    }
    return names;
}

void RequireOwnedHere(const ServerPlace& place, const std::wstring& server) {
    if (!IsThisComputer(place.owner)) {
        throw Failure(Errors::NotPossible, "the virtual server " + Quoted(server) + " is on the node " +
                                               Quoted(place.owner) + ", not on this one")
            .Hint("Run the command on that node, or move the group " + Quoted(place.group) + " to this one.");
    }
}

void RequireNoOtherDependants(const CCluster& cluster, const Names& resources, const std::string& what) {
    std::string reasons;
    for (const std::wstring& name : resources) {
        const ResourceHandle resource = RequireResource(cluster, name);
        Names dependants;
        const DWORD code = ListRelated(resource.get(), CLUSTER_RESOURCE_ENUM_PROVIDES, dependants);
        if (code != ERROR_SUCCESS) {
            throw FailureOfList(what + ": cannot list what depends on " + Quoted(name), code, Errors::Incomplete);
        }
        std::string others;
        size_t count = 0;
        for (const std::wstring& dependant : dependants) {
            if (std::find(resources.begin(), resources.end(), dependant) == resources.end()) {
                others += (count == 0 ? "" : ", ") + Quoted(dependant);
                ++count;
            }
        }
        if (count != 0) {
            reasons +=
                (reasons.empty() ? "" : "; ") + others + (count == 1 ? " depends on " : " depend on ") + Quoted(name);
        }
    }
    if (!reasons.empty()) {
        throw Failure(Errors::NotPossible, what + ": " + reasons)
            .Hint("Delete these resources, or their dependencies, first.");
    }
}

CLUSTER_NODE_STATE RequireNodeRuns(const CCluster& cluster, const std::wstring& name) {
    const NodeHandle node = OpenNode(cluster, name);
    const CLUSTER_NODE_STATE state = node ? GetClusterNodeState(node.get()) : ClusterNodeStateUnknown;
    if (state == ClusterNodeStateUnknown) {
        throw Failure::OfCode("cannot read the state of the node " + Quoted(name), GetLastError(), Errors::Incomplete);
    }
    if (state == ClusterNodeDown) {
        throw Failure(Errors::NotPossible, "the node " + Quoted(name) + " is down");
    }
    if (state == ClusterNodeJoining) {
        throw Failure(Errors::NotPossible, "the node " + Quoted(name) + " is joining the cluster still")
            .Hint("Wait until it is up, then try again.");
    }
    return state;
}

void RequireNodeStarts(const CCluster& cluster, const std::wstring& name) {
    if (RequireNodeRuns(cluster, name) == ClusterNodePaused) {
        throw Failure::OfCode("the node " + Quoted(name) + " is paused and starts nothing", ERROR_SHARING_PAUSED)
            .Hint("Resume the node, then try again.");
    }
}

DWORD AskAgain(const CCluster& cluster, const std::wstring& name, DWORD(WINAPI* change)(HRESOURCE)) {
    const ResourceHandle resource = OpenResource(cluster, name);
    const DWORD code = resource ? change(resource.get()) : GetLastError();
    return code == ERROR_IO_PENDING ? ERROR_SUCCESS : code;
}
