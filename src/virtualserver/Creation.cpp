// Creating the product's own cluster resource.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/PropertyList.h"
#include "core/ResourceTypes.h"
#include "platform/Log.h"
#include "platform/Owner.h"
#include "virtualserver/ProductResource.h"

#include <cwchar>
#include <list>

CLUS_LOG_PLACE(VirtualServerUtil, 9);

using clus::CcrType;
using clus::DataPathProperty;
using clus::InformationStoreType;
using clus::SingleCopyType;
using clus::SystemAttendantType;

namespace {

// What of the virtual server's group the new resource is built on. Closed in the reverse order.
struct ServerParts {
    CClusterResource networkName;
    std::wstring groupName;
    CClusterGroup group;
    CClusterResource attendant;
    CClusterResource store;
    CClusterResource disk; // single copy only
};

bool OpenServerGroup(CCluster& cluster, const wchar_t* virtualServerName, ServerParts& parts) {
    std::wstring resourceName;
    if (!cluster.FindFirstResourceNameByNetworkName(resourceName, virtualServerName)) {
        LOG_ERROR(L"cannot Find network name");
        return false;
    }
    if (!cluster.OpenResourceByName(parts.networkName, resourceName.c_str())) {
        LOG_ERROR(L"Cannot open network name resource:%s", resourceName.c_str());
        return false;
    }
    if (!parts.networkName.IsOnlineOnCurrentNode(&parts.groupName)) {
        LOG_ERROR(L"The virtual sever is offline, cannot create resource");
        return false;
    }
    LOG_INFO(L"Get group %s ", parts.groupName.c_str());
    if (!cluster.OpenGroupByName(parts.group, parts.groupName.c_str())) {
        LOG_ERROR(L"Cannot open group:%s", parts.groupName.c_str());
        return false;
    }
    return true;
}

// A group holds at most one product resource of either type.
bool HoldsNoProductResource(CCluster& cluster, const ServerParts& parts) {
    std::list<std::wstring> existing;
    if (!parts.group.EnumResourceNamesInGroupByType(cluster, existing, SingleCopyType)) {
        LOG_ERROR(L"Cannot enum KOVA SCC resources for group:%s", parts.groupName.c_str());
        return false;
    }
    if (!existing.empty()) {
        LOG_ERROR(L"There's already other KOVA resources present, abort resource creating.");
        return false;
    }
    if (!parts.group.EnumResourceNamesInGroupByType(cluster, existing, CcrType)) {
        LOG_ERROR(L"Cannot enum KOVA CCR attendant resources for group:%s", parts.groupName.c_str());
        return false;
    }
    if (!existing.empty()) {
        LOG_ERROR(L"There's already other KOVA resources present, abort resource creating.");
        return false;
    }
    return true;
}

bool OpenSystemAttendant(CCluster& cluster, ServerParts& parts) {
    std::list<std::wstring> attendants;
    if (!parts.group.EnumResourceNamesInGroupByType(cluster, attendants, SystemAttendantType)) {
        LOG_ERROR(L"Cannot enum System attendant resources for group:%s", parts.groupName.c_str());
        return false;
    }
    if (attendants.empty()) {
        LOG_ERROR(L"No system attendant resource found in group:%s, cannot create KOVA resource",
                  parts.groupName.c_str());
        return false;
    }
    if (attendants.size() > 1) {
        LOG_INFO(L"Warning, more than 1 system attendant found, use the 1st one");
    }
    LOG_INFO(L"Get system attendant %s ", attendants.front().c_str());
    if (!cluster.OpenResourceByName(parts.attendant, attendants.front().c_str())) {
        LOG_ERROR(L"Cannot open system attendant resource:%s, abort", attendants.front().c_str());
        return false;
    }
    return true;
}

bool OpenStore(CCluster& cluster, ServerParts& parts) {
    std::list<std::wstring> stores;
    if (!parts.group.EnumResourceNamesInGroupByType(cluster, stores, InformationStoreType)) {
        LOG_ERROR(L"Cannot enum store resources for group:%s", parts.groupName.c_str());
        return false;
    }
    if (stores.empty()) {
        LOG_ERROR(L"No store resource found in group:%s, cannot create KOVA resource", parts.groupName.c_str());
        return false;
    }
    if (stores.size() > 1) {
        LOG_INFO(L"Warning, more than 1 store found, use the 1st one");
    }
    LOG_INFO(L"Get Store: %s ", stores.front().c_str());
    if (!cluster.OpenResourceByName(parts.store, stores.front().c_str())) {
        LOG_ERROR(L"Cannot open store resource:%s, abort", stores.front().c_str());
        return false;
    }
    return true;
}

// The disk resource named, or else the one that the System Attendant depends on.
bool OpenSharedDisk(CCluster& cluster, const wchar_t* diskName, ServerParts& parts) {
    if (diskName[0] != L'\0') {
        if (!cluster.OpenResourceByName(parts.disk, diskName)) {
            return false;
        }
    } else if (!parts.attendant.GetResourceStorageDependency(parts.disk)) {
        LOG_ERROR(L"Cannot open cluster disk, abort");
        return false;
    }
    if (!parts.disk.IsOnlineOnCurrentNode(nullptr)) {
        LOG_ERROR(L"Shared disk is not online on current node, abort");
        return false;
    }
    return true;
}

bool AddDependencies(CClusterResource& created, ServerParts& parts, bool singleCopy) {
    if (singleCopy && !created.AddDependency(parts.disk.GetResourceHandle())) {
        LOG_ERROR(L"Cannot add disk dependency,abort");
        return false;
    }
    if (!created.AddDependency(parts.store.GetResourceHandle())) {
        LOG_ERROR(L"Cannot add store dependency,abort");
        return false;
    }
    if (!created.AddDependency(parts.networkName.GetResourceHandle())) {
        LOG_ERROR(L"Cannot add network name dependency,abort");
        return false;
    }
    return true;
}

// Makes the node a possible owner of the resource. A cluster that keeps refusing is given up on: the node is left out.
void AddPossibleOwner(CClusterResource& created, const CClusterNode& node, const wchar_t* nodeName) {
    const DWORD retryInterval = 5000;
    for (int attempts = 60; --attempts > 0;) {
        const DWORD code = created.AddOwner(node.GetNodeHandle());
        LOG_INFO(L"AddOwner returns: %d (5010 is Object already exist, not error)", code);
        if (code == ERROR_SUCCESS || code == ERROR_OBJECT_ALREADY_EXISTS) {
            LOG_INFO(L"AddOwner operation ok.");
            return;
        }
        LOG_INFO(L"Retrying adding node %s to possible owner list", nodeName);
        Sleep(retryInterval);
    }
}

// Those of the System Attendant.
bool AddPossibleOwners(const CCluster& cluster, CClusterResource& created, const ServerParts& parts) {
    std::list<std::wstring> nodes;
    if (!parts.attendant.EnumNames(CLUSTER_RESOURCE_ENUM_NODES, nodes)) {
        LOG_ERROR(L"Cannot enum nodes in the cluster,abort");
        return false;
    }
    for (const std::wstring& nodeName : nodes) {
        LOG_INFO(L"Adding node %s as its possible owner", nodeName.c_str());
        CClusterNode node;
        if (!cluster.OpenNodeByName(node, nodeName.c_str())) {
            LOG_ERROR(L"Error Opening node:%s", nodeName.c_str());
            return false;
        }
        AddPossibleOwner(created, node, nodeName.c_str());
    }
    return true;
}

} // namespace

bool CVirtualServerUtil::CreateKOVAResource(const wchar_t* lpwsDataRootPath, const wchar_t* lpwsKOVAResourceName,
                                            const wchar_t* lpwsDataPath, const wchar_t* lpwsVirtualServerName,
                                            const wchar_t* szVirtualDiskLetter, int nQuorumMode) {
    LOG_ENTER_AND_LEAVE(L"CreateKOVAResource_");
    CCluster cluster;
    CClusterResource created;
    // Deletes what was created, on failure and when an exception passes. Without a resource the deletion fails
    // harmlessly.
    struct RollBack {
        CClusterResource& created;
        bool success;
        ~RollBack() {
            if (!success) {
                LOG_INFO(L"Deleting unsuccessfully created resource.");
                created.DeleteResource();
            }
        }
    } rollBack = {created, false};
    rollBack.success = CreateKOVAResource_(cluster, created, lpwsDataRootPath, lpwsKOVAResourceName, lpwsDataPath,
                                           lpwsVirtualServerName, szVirtualDiskLetter, nQuorumMode);
    return rollBack.success;
}

bool CVirtualServerUtil::CreateKOVAResource_(CCluster& cluster, CClusterResource& created,
                                             const wchar_t* lpwsDataRootPath, const wchar_t* lpwsKOVAResourceName,
                                             const wchar_t* lpwsDataPath, const wchar_t* lpwsVirtualServerName,
                                             const wchar_t* szVirtualDiskLetter, int nQuorumMode) {
    const bool singleCopy = nQuorumMode == CLUSTER_QUORUM_SINGLE_COPY;
    if (!lpwsKOVAResourceName) {
        LOG_ERROR(L"NULL KOVA resource name");
        return false;
    }
    if (!lpwsVirtualServerName) {
        LOG_ERROR(L"NULL virtual server name");
        return false;
    }
    if (singleCopy && !szVirtualDiskLetter) {
        LOG_ERROR(L"Quorum mode is single copy cluster but szVirtualDiskLetter is NULL!");
        return false;
    }
    if (!cluster.OpenByLPC()) {
        LOG_ERROR(L"Cannot open cluster");
        return false;
    }
    ServerParts parts;
    if (!OpenServerGroup(cluster, lpwsVirtualServerName, parts) || !HoldsNoProductResource(cluster, parts) ||
        !OpenSystemAttendant(cluster, parts) || !OpenStore(cluster, parts) ||
        (singleCopy && !OpenSharedDisk(cluster, szVirtualDiskLetter, parts))) {
        return false;
    }
    if (!singleCopy && nQuorumMode != CLUSTER_QUORUM_CCR) {
        LOG_ERROR(L"Unexpected cluster quorum type %d", nQuorumMode);
        return false;
    }
    if (!CCluster::CreateResource(parts.group, created, lpwsKOVAResourceName, singleCopy ? SingleCopyType : CcrType)) {
        LOG_ERROR(L"Cannot create KOVA resource, abort");
        return false;
    }
    if (!AddDependencies(created, parts, singleCopy) || !AddPossibleOwners(cluster, created, parts)) {
        return false;
    }
    std::wstring ccrDataPath;
    const wchar_t* dataPath = lpwsDataPath;
    if (!singleCopy) {
        if (lpwsDataRootPath) {
            ConcatCCRDataPath(lpwsDataRootPath, lpwsVirtualServerName, ccrDataPath);
        }
        dataPath = lpwsDataRootPath ? ccrDataPath.c_str() : nullptr;
    }
    if (!SetKOVAProeprty_(created.GetResourceHandle(), DataPathProperty, dataPath)) {
        LOG_ERROR(L"Cannot set private property KOVA_DATA_PATH to %s", dataPath ? dataPath : L"");
        return false;
    }
    // The text names another action than the value sets; both are what installations have.
    if (!created.SetDWORDProperty(CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, L"RestartAction", 1)) {
        LOG_ERROR(L"Cannot set common property RestartAction to ClusterResourceDontRestart");
    }
    return true;
}

int CVirtualServerUtil::SetKOVAProeprty_(HRESOURCE hResource, const wchar_t* lpwsName, const wchar_t* lpwsValue) {
    LOG_ENTER_AND_LEAVE(L"SetKOVAProeprty_");
    if (!lpwsName || !lpwsValue) {
        return 0;
    }
    const std::size_t cchName = std::wcslen(lpwsName);
    const std::size_t cchValue = std::wcslen(lpwsValue);
    const DWORD cb = static_cast<DWORD>(clus::TextPropertyListSize(cchName, cchValue));
    const clus::LocalMemoryOwner block(LocalAlloc(LPTR, cb));
    if (!block) {
        LOG_ERROR(L"Error calling local alloc:%d", GetLastError());
        return 0;
    }
    clus::WriteTextPropertyList(static_cast<unsigned char*>(block.get()), lpwsName, cchName, lpwsValue, cchValue);
    return ClusterResourceControl(hResource, nullptr, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, block.get(), cb, nullptr,
                                  0, nullptr) == ERROR_SUCCESS
               ? 1
               : 0;
}
