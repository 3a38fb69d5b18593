// Listing the servers of this node.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "platform/ComputerName.h"
#include "platform/Log.h"

#include <algorithm>
#include <list>

CLUS_LOG_PLACE(VirtualServerUtil, 6);

using clus::ComputerName;
using clus::IsProductType;

namespace {

// Whether a resource is the product's and owned by this node. `state` is valid then.
bool IsServedHere(CClusterResource& resource, const wchar_t* name, const ComputerName& computer,
                  CClusterResource::RES_STATE& state) {
    const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
    if (!type) {
        LOG_WARNING(L"cannot get resource type for res:%s, skip this resource.", name);
        return false;
    }
    if (!IsProductType(type)) {
        LOG_INFO(L"Skip resource %s:%s", name, type);
        return false;
    }
    LOG_INFO(L"Process resource %s:%s...", name, type);
    std::wstring owner;
    state = resource.GetResourceState(&owner, nullptr);
    if (owner != computer.c_str()) {
        LOG_INFO(L"This resource: %s is online on node:%s, skip.", name, owner.c_str());
        return false;
    }
    return true;
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
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()");
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_ERROR(L"Cannot open cluster by LPC.");
        return ENUM_VS_RESULT_FAIL;
    }
    std::list<std::wstring> names;
    if (!cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names)) {
        LOG_ERROR(L"Cannot enum names on the cluster");
        return ENUM_VS_RESULT_FAIL;
    }
    LOG_INFO(L"EnumNames, returns %d resources.", static_cast<int>(names.size()));
    ComputerName computer;
    if (!computer.Read()) {
        LOG_ERROR(L"Cannot GetComputerName, code: %d", GetLastError());
        return ENUM_VS_RESULT_FAIL;
    }
    LOG_INFO(L"Current node is: %s", computer.c_str());

    std::list<CClusterVirtualServerInfo> servers; // records are large: a list never holds them twice while it grows
    for (const std::wstring& name : names) {
        LOG_INFO(L"Opening resource:");
        LOG_INFO(L"%s", name.c_str());
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            LOG_WARNING(L"Warning, open resource %s fail, code: %d", name.c_str(), GetLastError());
            continue;
        }
        CClusterResource::RES_STATE state = CClusterResource::RES_STATE_UNKNOWN;
        if (!IsServedHere(resource, name.c_str(), computer, state)) {
            continue;
        }
        servers.emplace_back();
        servers.back().m_bIsOnline = state == CClusterResource::RES_STATE_ONLINE;
        if (!GetVirtualServerInfo(resource.GetResourceHandle(), servers.back(), true, false)) {
            LOG_WARNING(L"Warning, GetVirtualServerInfo for server %s fail, code: %d", name.c_str(), GetLastError());
            servers.pop_back();
            continue;
        }
        LOG_INFO(L"adding resource %s to the return server list.", name.c_str());
    }

    const int count = static_cast<int>(servers.size());
    if (!pBuffer) {
        *pCount = count;
        LOG_INFO(L"Returning virtual server count %d only.", count);
        return ENUM_VS_RESULT_MORE_DATA;
    }
    if (*pCount < count) {
        *pCount = count; // before the line is logged, so that both numbers in it are the count
        LOG_INFO(L"The buffer is supplied with %d space, but %d is needed, returning ENUM_VS_RESULT_MORE_DATA", *pCount,
                 count);
        return ENUM_VS_RESULT_MORE_DATA;
    }
    *pCount = count;
    std::copy(servers.begin(), servers.end(), pBuffer);
    LOG_INFO(L"Returning %d virtual servers data.", count);
    return ENUM_VS_RESULT_SUCCESS;
}
