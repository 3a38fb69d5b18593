// Deleting the product's resources of a virtual server.
#include "clus_VirtualServerUtil.h"

#include "platform/Log.h"
#include "virtualserver/ProductResource.h"

CLUS_LOG_PLACE(VirtualServerUtil, 12);

namespace {

// First pass: deletes what this node owns. The names of resources that refuse are kept, and these taken offline.
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

// Second pass: deletes the refusing resources as they come offline. One that does not in time stays, which is no
// failure.
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

} // namespace

bool CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(const wchar_t* lpwsVirtualServerName) {
    LOG_ENTER_AND_LEAVE(L"DeleteKOVAResurceOnCurrentNode");
    CCluster cluster;
    std::list<std::wstring> names;
    std::list<std::wstring> refusing;
    return clus::FindProductResources(cluster, lpwsVirtualServerName, clus::Purpose::Deletion, names) &&
           DeleteOwnedResources(cluster, names, refusing) && DeleteWhenOffline(cluster, refusing);
}
