#include "BareCalls.h"
#include "BareSupport.h"
#include "BenchCommands.h"

#include <deque>
#include <set>

namespace bench {

namespace {

NameList NamesOf(HCLUSTER cluster, DWORD kind) {
    HCLUSENUM list = ClusterOpenEnum(cluster, kind);
    Require(list != nullptr, "ClusterOpenEnum");
    DWORD type = 0;
    NameList names = CollectNames(LongestName, [&](DWORD index, wchar_t* text, DWORD* cch) {
        return ClusterEnum(list, index, &type, text, cch);
    });
    ClusterCloseEnum(list);
    return names;
}

NameList RelatedTo(HRESOURCE resource, DWORD kind) {
    HRESENUM list = ClusterResourceOpenEnum(resource, kind);
    Require(list != nullptr, "ClusterResourceOpenEnum");
    DWORD type = 0;
    NameList names = CollectNames(LongestName, [&](DWORD index, wchar_t* text, DWORD* cch) {
        return ClusterResourceEnum(list, index, &type, text, cch);
    });
    ClusterResourceCloseEnum(list);
    return names;
}

// Calls visit(group) for every group, after its state and what is related to it have been read.
template <typename Visit> void ReadGroups(HCLUSTER cluster, DWORD related, Visit visit) {
    for (const std::wstring& name : NamesOf(cluster, CLUSTER_ENUM_GROUP)) {
        HGROUP group = OpenClusterGroup(cluster, name.c_str());
        Require(group != nullptr, "OpenClusterGroup");
        wchar_t node[LongestName];
        DWORD cchNode = LongestName;
        Require(GetClusterGroupState(group, node, &cchNode) != ClusterGroupStateUnknown, "GetClusterGroupState");
        HGROUPENUM list = ClusterGroupOpenEnum(group, related);
        Require(list != nullptr, "ClusterGroupOpenEnum");
        DWORD type = 0;
        CollectNames(LongestName, [&](DWORD index, wchar_t* text, DWORD* cch) {
            return ClusterGroupEnum(list, index, &type, text, cch);
        });
        ClusterGroupCloseEnum(list);
        visit(group);
        CloseClusterGroup(group);
    }
}

// Calls visit(resource, type) for every resource, after its type and where it is have been read.
template <typename Visit> void ReadResources(HCLUSTER cluster, Visit visit) {
    for (const std::wstring& name : ResourceNames(cluster)) {
        HRESOURCE resource = OpenResource(cluster, name);
        const Reply type(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
        wchar_t node[LongestName];
        wchar_t group[LongestName];
        DWORD cchNode = LongestName;
        DWORD cchGroup = LongestName;
        Require(GetClusterResourceState(resource, node, &cchNode, group, &cchGroup) != ClusterResourceStateUnknown,
                "GetClusterResourceState");
        visit(resource, type.Text());
        CloseClusterResource(resource);
    }
}

void ReadSnapshot(HCLUSTER cluster) {
    std::set<std::wstring> types;
    ReadResources(cluster, [&types](HRESOURCE resource, const wchar_t* type) {
        const Reply id(resource, CLUSCTL_RESOURCE_GET_ID);
        RelatedTo(resource, CLUSTER_RESOURCE_ENUM_DEPENDS);
        RelatedTo(resource, CLUSTER_RESOURCE_ENUM_NODES);
        const Reply common(resource, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES, LargeReplyBytes);
        const Reply own(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, LargeReplyBytes);
        const Reply flags(resource, CLUSCTL_RESOURCE_GET_FLAGS);
        if (types.insert(type).second) {
            const Reply typeClass(resource, CLUSCTL_RESOURCE_GET_CLASS_INFO);
        }
        if (std::wstring(type) == L"Physical Disk") {
            const Reply disk(resource, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, LargeReplyBytes);
        }
    });
    for (const std::wstring& name : NamesOf(cluster, CLUSTER_ENUM_NODE)) {
        HNODE node = OpenClusterNode(cluster, name.c_str());
        Require(node != nullptr, "OpenClusterNode");
        Require(GetClusterNodeState(node) != ClusterNodeStateUnknown, "GetClusterNodeState");
        CloseClusterNode(node);
    }
    ReadGroups(cluster, CLUSTER_GROUP_ENUM_NODES, [](HGROUP group) {
        unsigned char reply[LargeReplyBytes];
        DWORD cb = 0;
        Require(ClusterGroupControl(group, nullptr, CLUSCTL_GROUP_GET_COMMON_PROPERTIES, nullptr, 0, reply,
                                    LargeReplyBytes, &cb) == ERROR_SUCCESS,
                "ClusterGroupControl");
    });
}

} // namespace

void RunBareCommand(const std::string& command) {
    if (command == "servers") {
        std::deque<CClusterVirtualServerInfo> records; // grows without copies: a record takes 4 KB
        Require(BareEnumServers([&records]() -> CClusterVirtualServerInfo& { return records.emplace_back(); }) > 0,
                "no server is found");
        return;
    }
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    if (command == "groups") {
        ReadGroups(cluster, CLUSTER_GROUP_ENUM_CONTAINS, [](HGROUP) {});
    } else if (command == "resources") {
        ReadResources(cluster, [](HRESOURCE, const wchar_t*) {});
    } else {
        Require(command == "snapshot", "there is no such command");
        ReadSnapshot(cluster);
    }
    CloseCluster(cluster);
}

} // namespace bench
