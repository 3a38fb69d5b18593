// Listing the servers of this node.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "platform/ComputerName.h"
#include "platform/ControlReply.h"
#include "platform/Log.h"
#include "platform/NameEnumeration.h"

#include <algorithm>
#include <list>

CLUS_LOG_PLACE(VirtualServerUtil, 6);

using clus::ComputerName;
using clus::ControlReply;
using clus::IsProductType;

namespace {

typedef std::list<CClusterVirtualServerInfo> Records; // large ones: a list never holds them twice while it grows
typedef std::list<std::wstring> Names;

enum class Served {
    Here,
    NotHere,
    Unknown // it cannot be read far enough
};

// Whether a resource is the product's and owned by this node. `state` is valid when it is.
Served WhereServed(CClusterResource& resource, const wchar_t* name, const ComputerName& computer, ControlReply& reply,
                   CClusterResource::RES_STATE& state) {
    const wchar_t* type = reply.AskForText(resource.GetResourceHandle(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
    if (!type) {
        LOG_WARNING(L"cannot get resource type for res:%s, skip this resource.", name);
        return Served::Unknown;
    }
    if (!IsProductType(type)) {
        LOG_INFO(L"Skip resource %s:%s", name, type);
        return Served::NotHere;
    }
    LOG_INFO(L"Process resource %s:%s...", name, type);
    std::wstring owner;
    state = resource.GetResourceState(&owner, nullptr);
    if (owner != computer.c_str()) {
        LOG_INFO(L"This resource: %s is online on node:%s, skip.", name, owner.c_str());
        return owner.empty() ? Served::Unknown : Served::NotHere;
    }
    return Served::Here;
}

// Appends the record of a resource that makes a server of this node. False when it may make one and cannot be read.
bool AppendServer(const CCluster& cluster, const wchar_t* name, const ComputerName& computer, ControlReply& reply,
                  Records& servers) {
    LOG_INFO(L"Opening resource:");
    LOG_INFO(L"%s", name);
    CClusterResource resource;
    if (!cluster.OpenResourceByName(resource, name)) {
        LOG_WARNING(L"Warning, open resource %s fail, code: %d", name, GetLastError());
        return false;
    }
    CClusterResource::RES_STATE state = CClusterResource::RES_STATE_UNKNOWN;
    const Served served = WhereServed(resource, name, computer, reply, state);
    if (served != Served::Here) {
        return served == Served::NotHere;
    }
    servers.emplace_back();
    servers.back().m_bIsOnline = state == CClusterResource::RES_STATE_ONLINE;
    if (!CVirtualServerUtil::GetVirtualServerInfo(resource.GetResourceHandle(), servers.back(), true, false)) {
        LOG_WARNING(L"Warning, GetVirtualServerInfo for server %s fail, code: %d", name, GetLastError());
        servers.pop_back();
        return false;
    }
    LOG_INFO(L"adding resource %s to the return server list.", name);
    return true;
}

// Appends the servers of this node and, if asked for, the names of the resources that may make one and cannot be read.
bool ReadServers(CCluster& cluster, Records& servers, Names* leftOut) {
    if (!cluster.OpenByLPC()) {
        LOG_ERROR(L"Cannot open cluster by LPC.");
        return false;
    }
    clus::NameStore names;
    if (!clus::AppendClusterNames(cluster.GetHandle(), CLUSTER_ENUM_RESOURCE, names)) {
        LOG_ERROR(L"Cannot enum names on the cluster");
        return false;
    }
    LOG_INFO(L"EnumNames, returns %d resources.", static_cast<int>(names.size()));
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"Cannot GetComputerName, code: %d", GetLastError());
        return false;
    }
    LOG_INFO(L"Current node is: %s", computer.c_str());
    ControlReply reply;
    for (const wchar_t* name : names) {
        if (!AppendServer(cluster, name, computer, reply, servers) && leftOut) {
            leftOut->emplace_back(name);
        }
    }
    return true;
}

// Lists the virtual servers of this node; `leftOut`, which may be null, is only appended to.
CVirtualServerUtil::ENUM_VS_RESULT ListVirtualServers(CClusterVirtualServerInfo* pBuffer, int* pCount, Names* leftOut) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()");
    CCluster cluster;
    Records servers;
    if (!ReadServers(cluster, servers, leftOut)) {
        return CVirtualServerUtil::ENUM_VS_RESULT_FAIL;
    }
    const int count = static_cast<int>(servers.size());
    if (!pBuffer) {
        *pCount = count;
        LOG_INFO(L"Returning virtual server count %d only.", count);
        return CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA;
    }
    if (*pCount < count) {
        *pCount = count; // before the line is logged, so that both numbers in it are the count
        LOG_INFO(L"The buffer is supplied with %d space, but %d is needed, returning ENUM_VS_RESULT_MORE_DATA", *pCount,
                 count);
        return CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA;
    }
    *pCount = count;
    std::copy(servers.begin(), servers.end(), pBuffer);
    LOG_INFO(L"Returning %d virtual servers data.", count);
    return CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS;
}

} // namespace

CVirtualServerUtil::ENUM_VS_RESULT CVirtualServerUtil::EnumServersOnCurrentNode(CClusterVirtualServerInfo* pBuffer,
                                                                                int* pCount) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumServersOnCurrentNode()");
    if (m_bIsCluster) {
        LOG_INFO(L"m_bIsCluster is true, enumerating virtual servers.");
        return EnumVirtualServerOnCurrentNode_(pBuffer, pCount);
    }
    LOG_INFO(L"m_bIsCluster is false, enumerating normal servers.");
    return EnumNormalServerOnCurrentNode_(pBuffer, pCount);
}

CVirtualServerUtil::ENUM_VS_RESULT CVirtualServerUtil::EnumServersOnCurrentNodeEx(CClusterVirtualServerInfo* pBuffer,
                                                                                  int* pCount,
                                                                                  std::list<std::wstring>& leftOut) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumServersOnCurrentNodeEx()");
    Names found;
    const ENUM_VS_RESULT result =
        m_bIsCluster ? ListVirtualServers(pBuffer, pCount, &found) : EnumNormalServerOnCurrentNode_(pBuffer, pCount);
    if (result != ENUM_VS_RESULT_FAIL) {
        leftOut.swap(found);
    }
    return result;
}

CVirtualServerUtil::ENUM_VS_RESULT
CVirtualServerUtil::EnumNormalServerOnCurrentNode_(CClusterVirtualServerInfo* pBuffer, int* pCount) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumNormalServerOnCurrentNode_()");
    const bool fits = *pCount >= 1;
    *pCount = 1;
    if (!fits) {
        return ENUM_VS_RESULT_MORE_DATA;
    }
    pBuffer[0] = m_normalServer;
    return ENUM_VS_RESULT_SUCCESS;
}

CVirtualServerUtil::ENUM_VS_RESULT
CVirtualServerUtil::EnumVirtualServerOnCurrentNode_(CClusterVirtualServerInfo* pBuffer, int* pCount) {
    return ListVirtualServers(pBuffer, pCount, nullptr);
}
