// Whether an Exchange store is online on this node.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "platform/ComputerName.h"
#include "platform/Log.h"

#include <list>

CLUS_LOG_PLACE(VirtualServerUtil, 8);

using clus::ComputerName;
using clus::InformationStoreType;

bool CVirtualServerUtil::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode() {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::IsAtLeastOneExchangeResourceDLLOnlineOnCurrentNode()");
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_WARNING(L"Calling CCluster::OpenByLPC() fail");
        return false;
    }
    std::list<std::wstring> stores;
    if (!cluster.EnumResourceNamesByType(InformationStoreType, stores)) {
        LOG_WARNING(L"Calling CCluster::EnumResourceNamesByType fail");
        return false;
    }
    ComputerName computer;
    if (!computer.Read()) {
        LOG_WARNING(L"Calling GetComputerName fail");
        return false;
    }
    LOG_INFO(L"Got computer name:: %s", computer.c_str());
    for (const std::wstring& name : stores) {
        LOG_INFO(L"Found store: %s", name.c_str());
        CClusterResource store;
        if (!cluster.OpenResourceByName(store, name.c_str())) {
            LOG_WARNING(L"cannot open store: %s, skip this one", name.c_str());
            continue;
        }
        std::wstring owner;
        const CClusterResource::RES_STATE state = store.GetResourceState(&owner, nullptr);
        if (owner != computer.c_str()) {
            LOG_INFO(L"Skip this store, reason: the node is on node: %s", owner.c_str());
            continue;
        }
        if (state == CClusterResource::RES_STATE_ONLINE) {
            return true;
        }
        LOG_INFO(L"Skip this store, reason: the node is not online");
    }
    return false;
}
