#include "clus_ProductResource.h"

#define CLUS_SOURCE_TAG ".\\clus_VirtualServerUtil.cpp"
#include "clus_Log.h"
#include "clus_ResourceTypes.h"

namespace clus {

const ResourceSwitch SwitchOn = {&CClusterResource::OnlineResource,
                                 CClusterResource::RES_STATE_ONLINE,
                                 CClusterResource::RES_STATE_ONLINE_PENDING,
                                 L"online-ing resource: %s...",
                                 L"Resource %s is on-line.",
                                 L"Resource %s is on-line pending.",
                                 L"Resource: %s, is online/online pending",
                                 L"Fail to bring resource: %s online"};

const ResourceSwitch SwitchOff = {&CClusterResource::OfflineResource,
                                  CClusterResource::RES_STATE_OFFLINE,
                                  CClusterResource::RES_STATE_OFFLINE_PENDING,
                                  L"offline-ing resource: %s...",
                                  L"Resource %s is off-line.",
                                  L"Resource %s is off-line pending.",
                                  L"Resource: %s, is offline/offline pending",
                                  L"Fail to bring resource: %s offline"};

const FindTexts FindToSwitch = {true, L"cannot Find network name %s", L"Cannot enum clusRDLL resources for group:%s",
                                L"No clusRDLL(Non-CCRf) resource found in group:%s, try finding CCR resources",
                                L"Warning, more than 1 KOVA resource is found at a group.\n"};

const FindTexts FindToDelete = {false, L"cannot Find network name", L"Cannot enum KOVA resources for group:%s",
                                L"No clusRDLL(Non-CCR) resource found in group:%s, try finding CCR resources",
                                L"Warning, more than 1 KOVA resource is found\n"};

bool FindProductResources(CCluster& cluster, const wchar_t* networkName, const FindTexts& texts,
                          std::list<std::wstring>& names) {
    const auto progress = [&texts](const wchar_t* format, const wchar_t* argument) {
        if (texts.showsProgress) {
            LOG_INFO(format, argument);
        }
    };
    progress(L"Network name: %s", networkName);
    progress(L"Opening cluster...", nullptr);
    if (!cluster.OpenByLPC()) {
        LOG_ERROR(L"Cannot open cluster");
        return false;
    }
    progress(L"Performing FindFirstResourceNameByNetworkName...", nullptr);
    std::wstring resourceName;
    if (!cluster.FindFirstResourceNameByNetworkName(resourceName, networkName)) {
        LOG_ERROR(texts.noNetworkName, networkName);
        return false;
    }
    progress(L"Opening resource by name:%s...", resourceName.c_str());
    CClusterResource resNetworkName;
    if (!cluster.OpenResourceByName(resNetworkName, resourceName.c_str())) {
        LOG_ERROR(L"Cannot open network name resource:%s", resourceName.c_str());
        return false;
    }
    progress(L"Getting resource state...", nullptr);
    std::wstring groupName;
    resNetworkName.GetResourceState(nullptr, &groupName);
    progress(L"Opening group: %s...", groupName.c_str());
    CClusterGroup group;
    if (!cluster.OpenGroupByName(group, groupName.c_str())) {
        LOG_ERROR(L"Cannot open group:%s", groupName.c_str());
        return false;
    }
    progress(L"Performing EnumResourceNamesInGroupByType...", nullptr);
    if (!group.EnumResourceNamesInGroupByType(cluster, names, SingleCopyType)) {
        LOG_ERROR(texts.cannotEnum, groupName.c_str());
        return false;
    }
    if (names.empty()) {
        LOG_ERROR(texts.noneFound, groupName.c_str());
        if (!group.EnumResourceNamesInGroupByType(cluster, names, CcrType)) {
            LOG_ERROR(L"Cannot enum clusRDLL(CCR) resources for group:%s", groupName.c_str());
            return false;
        }
    }
    if (names.size() > 1) {
        LOG_INFO(texts.severalFound);
    }
    return true;
}

bool SwitchProductResources(const wchar_t* networkName, bool wait, DWORD timeout, const ResourceSwitch& how) {
    const DWORD pollInterval = 1000;
    CCluster cluster;
    std::list<std::wstring> names;
    if (!FindProductResources(cluster, networkName, FindToSwitch, names)) {
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
        LOG_INFO(how.progressText, name.c_str());
        CClusterResource::RES_STATE state = (resource.*how.operation)();
        if (state == how.reached) {
            LOG_INFO(how.reachedText, name.c_str());
        } else if (state == how.pending) {
            LOG_INFO(how.pendingText, name.c_str());
        } else {
            result = false;
            if (state != CClusterResource::RES_STATE_UNKNOWN) {
                LOG_ERROR(L"Unexpected OfflineResource Result, abort."); // for both directions
            }
        }
        if (wait && timeout != 0) {
            // Tested for zero only: a time-out that is no multiple of the interval wraps around, and the wait ends with
            // the state.
            for (DWORD remaining = timeout; remaining != 0 && state != how.reached; remaining -= pollInterval) {
                Sleep(pollInterval);
                state = resource.GetResourceState(nullptr, nullptr);
            }
            if (state != how.reached) {
                result = false;
            }
        }
        if (result) {
            LOG_INFO(how.successText, name.c_str());
        } else {
            LOG_ERROR(how.failureText, name.c_str());
        }
    }
    return result;
}

bool DeleteOwnedResources(CCluster& cluster, const std::list<std::wstring>& names, std::list<std::wstring>& refusing) {
    for (const std::wstring& name : names) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            LOG_ERROR(L"Cannot open KOVA resource:%s, abort", name.c_str());
            return false;
        }
        if (!resource.IsOnCurrentNode(nullptr)) {
            LOG_INFO(L"KOVA resource:%s is not on current node, skip.", name.c_str());
            continue;
        }
        LOG_INFO(L"try deleting KOVA resource:%s...", name.c_str());
        if (resource.DeleteResource()) {
            LOG_INFO(L"Deleting resource %s successful", name.c_str());
            continue;
        }
        const DWORD code = GetLastError();
        refusing.push_back(name);
        LOG_INFO(L"Deleting resource %s unsuccessful, code:%d trying to offline the resource then try again",
                 name.c_str(), code);
        LOG_INFO(L"Turning KOVA resource:%s offline...", name.c_str());
        switch (resource.OfflineResource()) {
        case CClusterResource::RES_STATE_OFFLINE:
            LOG_INFO(L"KOVA resource:%s offlined successfully", name.c_str());
            break;
        case CClusterResource::RES_STATE_OFFLINE_PENDING:
            LOG_INFO(L"KOVA resource:%s is offline pending.", name.c_str());
            break;
        case CClusterResource::RES_STATE_UNKNOWN:
            LOG_WARNING(L"KOVA resource:%s offline unsuccessful", name.c_str());
            break;
        default:
            LOG_WARNING(L"Unexpected offlineResource Result");
            break;
        }
    }
    return true;
}

bool DeleteWhenOffline(CCluster& cluster, const std::list<std::wstring>& names) {
    const int interval = 6000;
    for (const std::wstring& name : names) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            LOG_ERROR(L"Cannot open KOVA resource:%s, abort", name.c_str());
            return false;
        }
        CClusterResource::RES_STATE state = resource.GetResourceState(nullptr, nullptr);
        for (int budget = 30 * interval; budget > 0 && state != CClusterResource::RES_STATE_OFFLINE;
             budget -= interval) {
            Sleep(interval);
            state = resource.GetResourceState(nullptr, nullptr);
        }
        if (state != CClusterResource::RES_STATE_OFFLINE) {
            LOG_ERROR(L"Error bring resource %s, off-line, abort delete", name.c_str());
            continue;
        }
        if (!resource.DeleteResource()) {
            LOG_ERROR(L"Error deleting resource %s, code: %d", name.c_str(), GetLastError());
            return false;
        }
    }
    return true;
}

void AddPossibleOwner(CClusterResource& resource, const CClusterNode& node, const wchar_t* nodeName) {
    const DWORD retryInterval = 5000;
    for (int attempts = 60; --attempts > 0;) {
        const DWORD code = resource.AddOwner(node.GetNodeHandle());
        LOG_INFO(L"AddOwner returns: %d (5010 is Object already exist, not error)", code);
        if (code == ERROR_SUCCESS || code == ERROR_OBJECT_ALREADY_EXISTS) {
            LOG_INFO(L"AddOwner operation ok.");
            return;
        }
        LOG_INFO(L"Retrying adding node %s to possible owner list", nodeName);
        Sleep(retryInterval);
    }
}

} // namespace clus
