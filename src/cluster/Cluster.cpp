// The cluster session: opening, enumerating, opening and finding objects, creating resources.
#include "clus_Cluster.h"

#include "core/ResourceTypes.h"
#include "core/Text.h"
#include "platform/ControlReply.h"
#include "platform/LocalBuffer.h"
#include "platform/Log.h"
#include "platform/NameEnumeration.h"
#include "platform/Owner.h"

#include <algorithm>

CLUS_LOG_PLACE(Cluster, 1);

using clus::AppendClusterNames;
using clus::ControlReply;
using clus::Equal;
using clus::LastErrorKeeper;
using clus::LocalBuffer;
using clus::NameStore;
using clus::NetworkNameType;

namespace {

// False also for a resource that does not open.
bool IsOfType(const CCluster& cluster, const wchar_t* name, const wchar_t* type, ControlReply& reply) {
    CClusterResource resource;
    return cluster.OpenResourceByName(resource, name) &&
           Equal(reply.AskForText(resource.GetResourceHandle(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE), type);
}

} // namespace

CCluster::CCluster() : m_hCluster(nullptr) {
}

CCluster::~CCluster() {
    Close();
}

bool CCluster::OpenByLPC() {
    LOG_ENTER(L"CCluster::OpenByLPC()");
    if (m_hCluster) {
        LOG_WARNING(L"Warning, the cluster has already been opened, return success.");
        LOG_LEAVE(L"CCluster::OpenByLPC()");
        return true;
    }
    m_hCluster = OpenCluster(nullptr);
    if (!m_hCluster) {
        LOG_LEAVE(L"CCluster::OpenByLPC(), err=%d", GetLastError()); // a node without a cluster is no error here
    }
    LOG_LEAVE(L"CCluster::OpenByLPC()");
    return m_hCluster != nullptr;
}

bool CCluster::OpenByRPC(const wchar_t* lpcwClusterName) {
    if (!lpcwClusterName) {
        LOG_ERROR(L"lpcwClusterName is NULL, cannot open RPC handle");
        return false;
    }
    if (m_hCluster) {
        LOG_ERROR(L"Already opened, return false");
        return false;
    }
    m_hCluster = OpenCluster(lpcwClusterName);
    return m_hCluster != nullptr;
}

void CCluster::Close() {
    if (m_hCluster) {
        const LastErrorKeeper keeper;
        CloseCluster(m_hCluster);
        m_hCluster = nullptr;
    }
}

HCLUSTER CCluster::GetHandle() const {
    return m_hCluster;
}

bool CCluster::GetClusterName(std::wstring& name) {
    LocalBuffer buffer;
    buffer.EnsureCharacters(16);
    DWORD cch = buffer.Characters();
    const DWORD first = GetClusterInformation(m_hCluster, buffer.Text(), &cch, nullptr);
    if (first == ERROR_MORE_DATA) {
        ++cch;
        if (buffer.EnsureCharacters(cch)) {
            GetClusterInformation(m_hCluster, buffer.Text(), &cch, nullptr);
        }
    }
    // The first call alone decides: callers rely on names of more than 15 characters being refused.
    if (first != ERROR_SUCCESS || !buffer.pData) {
        LOG_ERROR(L"CCluster::GetClusterName() returns error, code:%d", GetLastError());
        return false;
    }
    name = buffer.TerminatedText();
    return true;
}

bool CCluster::GetClusterNameResourceGUID(std::wstring& clusterName, std::wstring& resourceId) {
    LOG_ENTER_AND_LEAVE(L"CCluster::GetClusterNameResourceGUID()");
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_WARNING(L"Cannot cluster.OpenByLPC()");
        return false;
    }
    std::wstring name;
    if (!cluster.GetClusterName(name)) {
        LOG_WARNING(L"cluster.GetClusterName");
        return false;
    }
    CClusterResource resNetworkName;
    if (!cluster.OpenNetworkNameResourceByNetworkName(resNetworkName, name.c_str())) {
        LOG_WARNING(L"cannot cluster.OpenNetworkNameResourceByNetworkName()");
        return false;
    }
    const wchar_t* id = resNetworkName.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false);
    if (!id) {
        LOG_WARNING(L"cannot resNetworkName.GetSystemStringProperty()");
        return false;
    }
    resourceId = id;
    clusterName.swap(name);
    return true;
}

bool CCluster::EnumNames(CCLUSTER_OBJ_ENUM kind, std::list<std::wstring>& names) const {
    if (!m_hCluster) {
        return false;
    }
    DWORD mask = 0;
    switch (kind) {
    case CCLUSTER_OBJ_RESOURCE:
        mask = CLUSTER_ENUM_RESOURCE;
        break;
    case CCLUSTER_OBJ_NODE:
        mask = CLUSTER_ENUM_NODE;
        break;
    case CCLUSTER_OBJ_GROUP:
        mask = CLUSTER_ENUM_GROUP;
        break;
    default:
        LOG_ERROR(L"Warning, unexpected type_enum value:%d", static_cast<int>(kind));
        break;
    }
    return AppendClusterNames(m_hCluster, mask, names);
}

bool CCluster::EnumResourceNamesByType(const wchar_t* resourceType, std::list<std::wstring>& names) {
    if (!m_hCluster) {
        return false;
    }
    NameStore all;
    if (!AppendClusterNames(m_hCluster, CLUSTER_ENUM_RESOURCE, all)) {
        names.insert(names.end(), all.begin(), all.end());
        return false;
    }
    ControlReply reply;
    names.remove_if([&](const std::wstring& name) { return !IsOfType(*this, name.c_str(), resourceType, reply); });
    for (const wchar_t* name : all) {
        if (IsOfType(*this, name, resourceType, reply)) {
            names.emplace_back(name);
        }
    }
    LOG_LEAVE(L"CCluster::EnumResourceNamesByType()");
    return true;
}

bool CCluster::OpenResourceByName(CClusterResource& resource, const wchar_t* name) const {
    if (resource.m_hResource) {
        LOG_ERROR(L"resource has alreay been opened.");
        return false;
    }
    resource.SetResourceHandle(OpenClusterResource(m_hCluster, name));
    if (!resource.m_hResource) {
        LOG_ERROR(L"Open resource failed:%s, err=%d", name, GetLastError());
        return false;
    }
    return true;
}

bool CCluster::OpenGroupByName(CClusterGroup& group, const wchar_t* name) const {
    if (group.m_hGroup) {
        LOG_ERROR(L"Group has already been opened.");
        return false;
    }
    group.SetGroupHandle(OpenClusterGroup(m_hCluster, name));
    if (!group.m_hGroup) {
        LOG_ERROR(L"Open group failed, code:%d", GetLastError());
        return false;
    }
    return true;
}

bool CCluster::OpenNodeByName(CClusterNode& node, const wchar_t* name) const {
    HNODE hNode = OpenClusterNode(m_hCluster, name);
    if (!hNode) {
        return false;
    }
    node.m_hNode = hNode;
    return true;
}

bool CCluster::FindFirstResourceNameByNetworkName(std::wstring& resourceName, const wchar_t* networkName) {
    LOG_ENTER(L"CCluster::FindFirstResourceNameByNetworkName");
    LOG_LEAVE_AT_END(
        L"CClusterResource::FindFirstResourceNameByNetworkName"); // the class word differs, as in every release
    std::wstring wanted(networkName ? networkName : L"");
    std::transform(wanted.begin(), wanted.end(), wanted.begin(),
                   [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c; });
    if (!m_hCluster) {
        LOG_ERROR(L"Cluster handle is NULL");
        return false;
    }
    NameStore names;
    if (!AppendClusterNames(m_hCluster, CLUSTER_ENUM_RESOURCE, names)) {
        LOG_ERROR(L"EnumNames failed");
        return false;
    }
    ControlReply reply;
    for (const wchar_t* name : names) {
        CClusterResource resource;
        if (!OpenResourceByName(resource, name)) {
            LOG_ERROR(L"Unable to open resource: %s", name);
            continue;
        }
        const wchar_t* type = reply.AskForText(resource.m_hResource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
        if (!type) {
            LOG_ERROR(L"Unable to get resource type for res: %s", name);
            continue;
        }
        if (!Equal(type, NetworkNameType)) {
            continue;
        }
        const wchar_t* found = reply.AskForText(resource.m_hResource, CLUSCTL_RESOURCE_GET_NETWORK_NAME);
        if (!found) {
            LOG_ERROR(L"Unable to get resource property NETWORK NAME for res: %s", name);
            continue;
        }
        if (networkName && Equal(found, wanted.c_str())) {
            resourceName = name;
            LOG_INFO(L"Network name found: %s for res:", name);
            return true;
        }
    }
    return false;
}

bool CCluster::OpenNetworkNameResourceByNetworkName(CClusterResource& resource, const wchar_t* networkName) {
    LOG_ENTER_AND_LEAVE(L"CCluster::OpenNetworkNameResourceByNetworkName");
    std::wstring resourceName;
    return FindFirstResourceNameByNetworkName(resourceName, networkName) &&
           OpenResourceByName(resource, resourceName.c_str());
}

bool CCluster::OpenGroupByNetworkName(CClusterGroup& group, const wchar_t* networkName) {
    CClusterResource resNetworkName;
    if (!OpenNetworkNameResourceByNetworkName(resNetworkName, networkName)) {
        return false;
    }
    std::wstring groupName;
    if (resNetworkName.GetResourceState(nullptr, &groupName) == CClusterResource::RES_STATE_UNKNOWN) {
        return false;
    }
    return OpenGroupByName(group, groupName.c_str());
}

bool CCluster::CreateResource(CClusterGroup& group, CClusterResource& resource, const wchar_t* name,
                              const wchar_t* type) {
    LOG_ENTER_AND_LEAVE(L"CCluster::CreateResource");
    HRESOURCE hResource = CreateClusterResource(group.GetGroupHandle(), name, type, 0);
    if (!hResource) {
        LOG_ERROR(L"Cannot create resource:%s type:%s", name, type);
        return false;
    }
    resource.SetResourceHandle(hResource);
    return true;
}
