// Bringing the product's resources of a virtual server online, and taking them offline.
#include "clus_VirtualServerUtil.h"

#include "platform/Log.h"
#include "virtualserver/ProductResource.h"

CLUS_LOG_PLACE(VirtualServerUtil, 11);

namespace {

const DWORD PollInterval = 1000; // milliseconds

enum class Direction {
    On,
    Off
};

CClusterResource::RES_STATE StateReached(Direction direction) {
    return direction == Direction::On ? CClusterResource::RES_STATE_ONLINE : CClusterResource::RES_STATE_OFFLINE;
}

// Issues the switch and tells its outcome. False unless the state is reached or pending.
bool IssueSwitch(CClusterResource& resource, const wchar_t* name, Direction direction,
                 CClusterResource::RES_STATE& state) {
    if (direction == Direction::On) {
        LOG_INFO(L"online-ing resource: %s...", name);
        state = resource.OnlineResource();
        if (state == CClusterResource::RES_STATE_ONLINE) {
            LOG_INFO(L"Resource %s is on-line.", name);
            return true;
        }
        if (state == CClusterResource::RES_STATE_ONLINE_PENDING) {
            LOG_INFO(L"Resource %s is on-line pending.", name);
            return true;
        }
    } else {
        LOG_INFO(L"offline-ing resource: %s...", name);
        state = resource.OfflineResource();
        if (state == CClusterResource::RES_STATE_OFFLINE) {
            LOG_INFO(L"Resource %s is off-line.", name);
            return true;
        }
        if (state == CClusterResource::RES_STATE_OFFLINE_PENDING) {
            LOG_INFO(L"Resource %s is off-line pending.", name);
            return true;
        }
    }
    if (state != CClusterResource::RES_STATE_UNKNOWN) {
        LOG_ERROR(L"Unexpected OfflineResource Result, abort."); // for both directions
    }
    return false;
}

// Polls until the state is reached or the time, in milliseconds, is over. The time is tested for zero only: one that is
// no multiple of the interval wraps around, and the wait ends with the state.
bool AwaitSwitch(CClusterResource& resource, DWORD timeout, CClusterResource::RES_STATE reached,
                 CClusterResource::RES_STATE state) {
    for (DWORD remaining = timeout; remaining != 0 && state != reached; remaining -= PollInterval) {
        Sleep(PollInterval);
        state = resource.GetResourceState(nullptr, nullptr);
    }
    return state == reached;
}

void TellResult(const wchar_t* name, Direction direction, bool succeeded) {
    if (direction == Direction::On) {
        if (succeeded) {
            LOG_INFO(L"Resource: %s, is online/online pending", name);
        } else {
            LOG_ERROR(L"Fail to bring resource: %s online", name);
        }
    } else if (succeeded) {
        LOG_INFO(L"Resource: %s, is offline/offline pending", name);
    } else {
        LOG_ERROR(L"Fail to bring resource: %s offline", name);
    }
}

// Once false the result stays false, and the later resources still get their attempt.
bool SwitchProductResources(const wchar_t* networkName, bool wait, DWORD timeout, Direction direction) {
    CCluster cluster;
    std::list<std::wstring> names;
    if (!clus::FindProductResources(cluster, networkName, clus::Purpose::Switching, names)) {
        return false;
    }
    bool result = true;
    for (const std::wstring& name : names) {
        LOG_INFO(L"Open resource: %s", name.c_str());
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            LOG_ERROR(L"Cannot open KOVA resource:%s, abort", name.c_str());
            return false;
        }
        CClusterResource::RES_STATE state = CClusterResource::RES_STATE_UNKNOWN;
        if (!IssueSwitch(resource, name.c_str(), direction, state)) {
            result = false;
        }
        // Waited for even when the switch was refused: somebody else may bring about the state.
        if (wait && timeout != 0 && !AwaitSwitch(resource, timeout, StateReached(direction), state)) {
            result = false;
        }
        TellResult(name.c_str(), direction, result);
    }
    return result;
}

} // namespace

bool CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode(const wchar_t* lpwsVirtualServerName, bool bWait,
                                                         DWORD dwWaitTimeout) {
    LOG_ENTER_AND_LEAVE(L"TurnOnKOVAResourceOnCurrentNode");
    return SwitchProductResources(lpwsVirtualServerName, bWait, dwWaitTimeout, Direction::On);
}

bool CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode(const wchar_t* lpwsVirtualServerName, bool bWait,
                                                          DWORD dwWaitTimeout) {
    LOG_ENTER_AND_LEAVE(L"CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode");
    return SwitchProductResources(lpwsVirtualServerName, bWait, dwWaitTimeout, Direction::Off);
}
