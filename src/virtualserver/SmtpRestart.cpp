// The restart of an Exchange SMTP instance.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "core/Text.h"
#include "platform/ComputerName.h"
#include "platform/Log.h"

#include <list>

CLUS_LOG_PLACE(VirtualServerUtil, 13);

using clus::ComputerName;
using clus::EqualNoCase;
using clus::SmtpInstanceType;

namespace {

// Takes one online SMTP instance offline and brings it online again; true when the switch-on was issued.
bool RestartSmtpInstance(CClusterResource& instance, const wchar_t* name) {
    const int interval = 1000;
    LOG_INFO(L"Try to offline SMTP virtual server instance...");
    CClusterResource::RES_STATE state = instance.OfflineResource();
    for (int budget = 120000; budget > 0; budget -= interval) {
        switch (state) {
        case CClusterResource::RES_STATE_OFFLINE:
            LOG_INFO(L"Resource %s is offlined, online it again.", name);
            instance.OnlineResource();
            return true;
        case CClusterResource::RES_STATE_OFFLINE_PENDING:
            LOG_INFO(L"Resource %s is offline pending.", name);
            Sleep(interval);
            state = instance.GetResourceState(nullptr, nullptr);
            break;
        case CClusterResource::RES_STATE_UNKNOWN:
            LOG_INFO(L"Resource %s is failed to offline.", name);
            return false;
        default:
            // The state is not read again: the line repeats until the budget is used up, which support recognises.
            LOG_ERROR(L"Unexpected OfflineResource Result, resource state = %d.", static_cast<int>(state));
            break;
        }
    }
    return false;
}

// Restarts the first SMTP instance that is online on this node.
bool RestartFirstSmtpInstanceOfThisNode() {
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_WARNING(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), fail to open cluster by LPC");
        return false;
    }
    ComputerName computer;
    computer.Read();
    LOG_INFO(L"Current node is: %s", computer.c_str());
    std::list<std::wstring> names;
    if (!cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names)) {
        LOG_WARNING(L"CVirtualServerUtil::EnumVirtualServerOnCurrentNode_(), fail to enum names on the cluster");
        return false;
    }
    LOG_INFO(L"EnumNames, returns %d resources.", static_cast<int>(names.size()));
    for (const std::wstring& name : names) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            LOG_WARNING(L"Warning, open resource %s fail, code: %d", name.c_str(), GetLastError());
            continue;
        }
        const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
        if (!type || !EqualNoCase(type, SmtpInstanceType)) {
            continue;
        }
        std::wstring owner;
        const CClusterResource::RES_STATE state = resource.GetResourceState(&owner, nullptr);
        if (EqualNoCase(owner, computer.c_str()) && state == CClusterResource::RES_STATE_ONLINE) {
            return RestartSmtpInstance(resource, name.c_str());
        }
    }
    return false;
}

} // namespace

bool CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode() {
    LOG_ENTER(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource()");
    const bool bSuccess = RestartFirstSmtpInstanceOfThisNode();
    LOG_LEAVE(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), bSuccess=%d", bSuccess);
    return bSuccess;
}
