// The restart of an Exchange SMTP instance.
#include "clus_VirtualServerUtil.h"

#include "clus_Cluster.h"
#include "core/ResourceTypes.h"
#include "core/Text.h"
#include "platform/ComputerName.h"
#include "platform/ControlReply.h"
#include "platform/Log.h"
#include "platform/NameEnumeration.h"

CLUS_LOG_PLACE(VirtualServerUtil, 13);

#define LOG_UNLESS_ASKING(LOG, ...)       \
    do {                                  \
        if (purpose != Purpose::Asking) { \
            LOG(__VA_ARGS__);             \
        }                                 \
    } while (false)

using clus::ComputerName;
using clus::EqualNoCase;
using clus::SmtpInstanceType;

namespace {

// Takes one online SMTP instance offline and brings it online again; true when the switch-on was issued.
bool RestartSmtpInstance(CClusterResource& instance, const std::wstring& name) {
    const int interval = 1000;
    LOG_INFO(L"Try to offline SMTP virtual server instance...");
    CClusterResource::RES_STATE state = instance.OfflineResource();
    for (int budget = 120000; budget > 0; budget -= interval) {
        switch (state) {
        case CClusterResource::RES_STATE_OFFLINE:
            LOG_INFO(L"Resource %s is offlined, online it again.", name.c_str());
            instance.OnlineResource();
            return true;
        case CClusterResource::RES_STATE_OFFLINE_PENDING:
            LOG_INFO(L"Resource %s is offline pending.", name.c_str());
            Sleep(interval);
            state = instance.GetResourceState(nullptr, nullptr);
            break;
        case CClusterResource::RES_STATE_UNKNOWN:
            LOG_INFO(L"Resource %s is failed to offline.", name.c_str());
            return false;
        default:
            // The state is not read again: the line repeats until the budget is used up, which support recognises.
            LOG_ERROR(L"Unexpected OfflineResource Result, resource state = %d.", static_cast<int>(state));
            break;
        }
    }
    return false;
}

// What the instance is searched for: an asker is told nothing by the log.
enum class Purpose {
    Restart,
    Asking
};

// Calls use(resource, name) for the first SMTP instance that is online on this node, and gives its result; `none` when
// there is no such instance. False when the cluster cannot be read.
template <typename Use> bool UseFirstSmtpInstanceOfThisNode(Purpose purpose, bool none, const Use& use) {
    CCluster cluster;
    if (!cluster.OpenByLPC()) {
        LOG_UNLESS_ASKING(
            LOG_WARNING,
            L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), fail to open cluster by LPC");
        return false;
    }
    ComputerName computer;
    computer.Read();
    LOG_UNLESS_ASKING(LOG_INFO, L"Current node is: %s", computer.c_str());
    clus::NameStore names;
    if (!clus::AppendClusterNames(cluster.GetHandle(), CLUSTER_ENUM_RESOURCE, names)) {
        LOG_UNLESS_ASKING(LOG_WARNING,
                          L"CVirtualServerUtil::EnumVirtualServerOnCurrentNode_(), fail to enum names on the cluster");
        return false;
    }
    LOG_UNLESS_ASKING(LOG_INFO, L"EnumNames, returns %d resources.", static_cast<int>(names.size()));
    clus::ControlReply reply;
    for (const wchar_t* name : names) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name)) {
            LOG_UNLESS_ASKING(LOG_WARNING, L"Warning, open resource %s fail, code: %d", name, GetLastError());
            continue;
        }
        const wchar_t* type = reply.AskForText(resource.GetResourceHandle(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
        if (!type || !EqualNoCase(type, SmtpInstanceType)) {
            continue;
        }
        std::wstring owner;
        const CClusterResource::RES_STATE state = resource.GetResourceState(&owner, nullptr);
        if (EqualNoCase(owner, computer.c_str()) && state == CClusterResource::RES_STATE_ONLINE) {
            return use(resource, name);
        }
    }
    return none;
}

} // namespace

bool CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode() {
    LOG_ENTER(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource()");
    const bool bSuccess = UseFirstSmtpInstanceOfThisNode(Purpose::Restart, false, RestartSmtpInstance);
    LOG_LEAVE(L"CVirtualServerUtil::GetFirstSmtpVirtualServerInstanceResource(), bSuccess=%d", bSuccess);
    return bSuccess;
}

bool CVirtualServerUtil::FindSmtpVirtualServerInstanceResourceOnCurrentNode(std::wstring& resourceName) {
    std::wstring found;
    if (!UseFirstSmtpInstanceOfThisNode(Purpose::Asking, true, [&found](CClusterResource&, const std::wstring& name) {
            found = name;
            return true;
        })) {
        return false;
    }
    resourceName.swap(found);
    return true;
}
