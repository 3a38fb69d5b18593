// The doctor's look at the failover cluster: can it be asked, is this one of its nodes, which groups may be servers.
#include "DoctorParts.h"

#include "Deployment.h"
#include "ModelSettings.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/ResourceTypes.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

const wchar_t* const ComparedTypes[] = {clus::SingleCopyType,       clus::CcrType,
                                        clus::NetworkNameType,      clus::IpAddressType,
                                        clus::InformationStoreType, clus::SystemAttendantType};

const wchar_t* const ServerTypes[] = {clus::SingleCopyType, clus::CcrType, clus::InformationStoreType,
                                      clus::SystemAttendantType};

bool IsOneOf(const wchar_t* const* begin, const wchar_t* const* end, const std::wstring& type) {
    return std::any_of(begin, end, [&type](const wchar_t* other) { return common::IsSameName(type, other); });
}

void DiagnosePlainServer(const std::wstring& wanted, Findings& findings) {
    CVirtualServerUtil util;
    const auto info = std::make_unique<CClusterVirtualServerInfo>();
    if (!CVirtualServerUtil::GetNormalServerInfo(*info)) {
        findings.Add("plain-server-incomplete", Printable(ComputerName()),
                     "Its home directory or its computer name cannot be read.",
                     "run the product's set-up, or mend the values named above");
    } else {
        findings.Add("plain-server", Printable(std::wstring(info->m_wsServerName)),
                     "It is the one server here, at " + Printable(std::wstring(info->m_wsServerIP)) + ", data in " +
                         Quoted(std::wstring(info->m_wsDataPath)) + ".");
    }
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = wanted;
    if (wanted.empty() || util.QueryServerInfo(request, *info)) {
        return;
    }
    if (findings.Worst() == FindingLevel::Error) {
        findings.Add("server-unread", Printable(wanted), "This computer counts as a plain server, and is not it.",
                     "mend the errors that are told above");
    } else {
        throw Failure(Errors::ServerNotFound, "this plain server is not " + Quoted(wanted));
    }
}

void DiagnoseThisNode(const Json& nodes, Findings& findings) {
    const std::wstring computer = ComputerName();
    for (const Json& node : nodes) {
        const std::wstring name = TextMember(node, "name");
        if (name == computer) {
            findings.Add("node-name", Printable(name), "The cluster spells this node as the computer is called.");
            return;
        }
        if (common::IsSameName(name, computer)) {
            findings.Add("node-name-case", Printable(name),
                         "The computer is called " + Quoted(computer) + ": letter case differs.",
                         "let the node leave the cluster and join it again under the name " + Printable(computer));
            return;
        }
    }
    findings.Add("node-missing", Printable(computer), "The cluster has no node of this computer's name.",
                 "run clusctl on a node of the cluster");
}

void DiagnoseNodes(const CCluster& cluster, Findings& findings) {
    Report unread;
    Json nodes;
    try {
        nodes = ReadNodes(cluster, unread);
    } catch (const Failure& failure) {
        unread.MarkIncomplete(failure.what());
    }
    if (!unread.IsComplete()) {
        findings.AddQuestion("node-unread", "nodes", AsSentence(unread.Warnings().front()), "clusctl nodes");
    }
    if (nodes.is_array()) {
        DiagnoseThisNode(nodes, findings);
    }
    for (const Json& node : nodes) {
        const std::string name = Printable(TextMember(node, "name"));
        const std::string state = node["state"].get<std::string>();
        if (state == "paused") {
            findings.Add("node-paused", name, "It is paused.", "cluster node " + name + " /resume");
        } else if (state == "down") {
            findings.Add("node-down", name, "It is down.", "net start clussvc, on " + name);
        } else if (state == "joining") {
            findings.Add("node-joining", name, "It is joining the cluster.",
                         "wait until clusctl nodes shows it up; when it stays so for minutes, see the log of the "
                         "cluster service on " +
                             name);
        }
    }
}

void DiagnoseTypes(const CCluster& cluster, const std::vector<Json>& resources, Findings& findings) {
    for (const Json& resource : resources) {
        const std::wstring type = TextMember(resource, "type");
        for (const wchar_t* const known : ComparedTypes) {
            if (type != known && common::IsSameName(type, known)) {
                findings.SetGroup(TextMember(resource, "group"));
                findings.Add("type-case", Printable(TextMember(resource, "name")),
                             "Its type is " + Quoted(type) + ", not " + Quoted(std::wstring(known)) + ".",
                             "register the resource type as " + Quoted(std::wstring(known)) +
                                 " and create the resource again");
            }
        }
    }
    findings.SetGroup(std::wstring());
    const wchar_t* const wanted =
        CVirtualServerUtil::GetClusterQuorumModeByRegKey() == CVirtualServerUtil::CLUSTER_QUORUM_CCR
            ? clus::CcrType
            : clus::SingleCopyType;
    try {
        const Names types = ListResourceTypes(cluster);
        if (std::find(types.begin(), types.end(), wanted) == types.end()) {
            findings.Add("product-type-missing", Printable(std::wstring(wanted)),
                         "The cluster has no resource type of that name.", "run the product's set-up on a node");
        }
    } catch (const Failure& failure) {
        findings.Add("types-unlisted", Printable(std::wstring(wanted)), AsSentence(failure.what()),
                     "ask again, elevated");
    }
}

// All resources, as far as they can be read. False when they cannot be listed.
bool ReadResources(const CCluster& cluster, std::vector<Json>& resources, Findings& findings) {
    try {
        for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE)) {
            Report unread;
            resources.push_back(ReadResource(cluster, name, ResourceParts::Line, unread));
            if (!unread.IsComplete()) {
                findings.AddQuestion("resource-unread", Printable(name), AsSentence(unread.Warnings().front()),
                                     "clusctl resources " + Quoted(name));
            }
        }
        return true;
    } catch (const Failure& failure) {
        findings.AddQuestion("resources-unlisted", "resources", AsSentence(failure.what()), "clusctl resources");
        return false;
    }
}

// In the order in which their first resource comes.
std::vector<ServerGroup> GroupsOf(const std::vector<Json>& resources) {
    std::vector<ServerGroup> groups;
    for (const Json& resource : resources) {
        const std::wstring name = TextMember(resource, "group");
        auto found = std::find_if(groups.begin(), groups.end(),
                                  [&name](const ServerGroup& group) { return group.name == name; });
        if (found == groups.end()) {
            found = groups.insert(found, {name, {}});
        }
        found->members.push_back(resource);
    }
    for (const Json& resource : resources) {
        const std::wstring name = TextMember(resource, "group");
        for (ServerGroup& group : groups) {
            const bool isMember = group.name == name;
            group.isWhole = group.isWhole && !name.empty() && !(isMember && TextMember(resource, "type").empty());
        }
    }
    return groups;
}

bool CouldBeServer(const ServerGroup& group) {
    return !group.name.empty() && std::any_of(group.members.begin(), group.members.end(), [](const Json& member) {
        return IsOneOf(std::begin(ServerTypes), std::end(ServerTypes), TextMember(member, "type"));
    });
}

// Which of its Network Name resources tell no name: the wanted one may be theirs.
void TellUnreadNames(const CCluster& cluster, const ServerGroup& group, Findings& findings) {
    for (const Json& member : group.members) {
        std::wstring networkName;
        const bool isNamed = TextMember(member, "type") == clus::NetworkNameType;
        if (isNamed && !ReadNetworkName(cluster, member, networkName)) {
            const std::wstring name = TextMember(member, "name");
            findings.SetGroup(group.name);
            findings.AddQuestion("network-name-unread", Printable(name), "The cluster does not tell its network name.",
                                 "clusctl resources " + Quoted(name));
        }
    }
    findings.SetGroup(std::wstring());
}

// Whether it is the group of that name, or one with a Network Name resource of it.
bool IsWanted(const CCluster& cluster, const ServerGroup& group, const std::wstring& wanted) {
    if (wanted.empty() || common::IsSameName(group.name, wanted)) {
        return true;
    }
    return std::any_of(group.members.begin(), group.members.end(), [&](const Json& member) {
        std::wstring networkName;
        return ReadNetworkName(cluster, member, networkName) && common::IsSameName(networkName, wanted);
    });
}

void DiagnoseGroups(CCluster& cluster, const ClusterHealth& health, const std::wstring& wanted, Findings& findings) {
    std::vector<Json> resources;
    if (!ReadResources(cluster, resources, findings)) {
        return;
    }
    DiagnoseTypes(cluster, resources, findings);
    ServersHere here;
    const bool isListed = ListServersHere(here);
    bool isFound = false;
    const std::vector<ServerGroup> groups = GroupsOf(resources);
    for (const ServerGroup& group : groups) {
        if (CouldBeServer(group) && IsWanted(cluster, group, wanted)) {
            isFound = true;
            DiagnoseServer(cluster, group, isListed ? &here : nullptr, health, findings);
        }
    }
    findings.SetGroup(std::wstring());
    for (const ServerGroup& group : groups) {
        if (!isFound && CouldBeServer(group)) {
            TellUnreadNames(cluster, group, findings);
        }
    }
    if (!isFound) {
        TellNoServer(wanted, "clusctl groups", findings);
    }
}

} // namespace

bool ReadNetworkName(const CCluster& cluster, const Json& resource, std::wstring& networkName) {
    if (TextMember(resource, "type") != clus::NetworkNameType) {
        return false;
    }
    CClusterResource opened(OpenClusterResource(cluster.GetHandle(), TextMember(resource, "name").c_str()));
    const wchar_t* const text = opened.GetResourceHandle() == nullptr
                                    ? nullptr
                                    : opened.GetSystemStringProperty(CClusterResource::RES_PROP_NETWORK_NAME, false);
    networkName = text == nullptr ? L"" : text;
    return text != nullptr;
}

void DiagnoseFailoverCluster(const LogCapture& log, const std::wstring& wanted, Findings& findings) {
    const bool isDeployed = CVirtualServerUtil::CheckIsClusterByRegKey();
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        const DWORD code = GetLastError();
        if (isDeployed || ReadIntendedCluster() == IntendedCluster::One) {
            findings.Add("cluster-not-open", "cluster",
                         "This computer's cluster cannot be opened: " + ErrorText(code) + ".", "net start clussvc");
        } else {
            DiagnosePlainServer(wanted, findings);
        }
        return;
    }
    findings.Add("cluster-open", "cluster", "This computer's cluster can be opened.");
    if (!isDeployed) {
        findings.Add("cluster-not-deployed", "cluster", "There is one, and the registry does not say so.",
                     "reg add " + Quoted(L"HKLM\\" + ProductKey()) + " /v IsCluster /t REG_DWORD /d 1 /f");
    }
    DiagnoseNodes(cluster, findings);
    const ClusterHealth health = ReadClusterHealth(log);
    DiagnoseProblems(health, std::wstring(), findings);
    DiagnoseGroups(cluster, health, wanted, findings);
    if (wanted.empty()) {
        DiagnoseOtherProblems(health, findings);
    }
    TellUnreadHealth(health, findings);
}
