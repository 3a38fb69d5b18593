// Finding the product's resources in the group of a virtual server.
#include "virtualserver/ProductResource.h"

#include "clus_VirtualServerUtil.h"

#include "core/ResourceTypes.h"
#include "platform/Log.h"

CLUS_LOG_PLACE(VirtualServerUtil, 10);

// For the steps that only the search for switching tells.
#define LOG_PROGRESS(...)                    \
    do {                                     \
        if (purpose == Purpose::Switching) { \
            LOG_INFO(__VA_ARGS__);           \
        }                                    \
    } while (false)

// For what all searches tell but one that only asks.
#define LOG_FAILURE(...)                  \
    do {                                  \
        if (purpose != Purpose::Asking) { \
            LOG_ERROR(__VA_ARGS__);       \
        }                                 \
    } while (false)

namespace clus {

namespace {

// The single-copy resources of the group, or the CCR ones when there are none.
bool ListProductResources(CCluster& cluster, const CClusterGroup& group, const wchar_t* groupName, Purpose purpose,
                          std::list<std::wstring>& names) {
    if (!group.EnumResourceNamesInGroupByType(cluster, names, SingleCopyType)) {
        if (purpose == Purpose::Switching) {
            LOG_ERROR(L"Cannot enum clusRDLL resources for group:%s", groupName);
        } else if (purpose == Purpose::Deletion) {
            LOG_ERROR(L"Cannot enum KOVA resources for group:%s", groupName);
        }
        return false;
    }
    if (!names.empty()) {
        return true;
    }
    // Told as an error by both, although it is none.
    if (purpose == Purpose::Switching) {
        LOG_ERROR(L"No clusRDLL(Non-CCRf) resource found in group:%s, try finding CCR resources", groupName);
    } else if (purpose == Purpose::Deletion) {
        LOG_ERROR(L"No clusRDLL(Non-CCR) resource found in group:%s, try finding CCR resources", groupName);
    }
    if (!group.EnumResourceNamesInGroupByType(cluster, names, CcrType)) {
        LOG_FAILURE(L"Cannot enum clusRDLL(CCR) resources for group:%s", groupName);
        return false;
    }
    return true;
}

} // namespace

bool FindProductResources(CCluster& cluster, const wchar_t* networkName, Purpose purpose,
                          std::list<std::wstring>& names) {
    LOG_PROGRESS(L"Network name: %s", networkName);
    LOG_PROGRESS(L"Opening cluster...");
    if (!cluster.OpenByLPC()) {
        LOG_FAILURE(L"Cannot open cluster");
        return false;
    }
    LOG_PROGRESS(L"Performing FindFirstResourceNameByNetworkName...");
    std::wstring resourceName;
    if (!cluster.FindFirstResourceNameByNetworkName(resourceName, networkName)) {
        if (purpose == Purpose::Switching) {
            LOG_ERROR(L"cannot Find network name %s", networkName);
        } else if (purpose == Purpose::Deletion) {
            LOG_ERROR(L"cannot Find network name");
        }
        return false;
    }
    LOG_PROGRESS(L"Opening resource by name:%s...", resourceName.c_str());
    CClusterResource resNetworkName;
    if (!cluster.OpenResourceByName(resNetworkName, resourceName.c_str())) {
        LOG_FAILURE(L"Cannot open network name resource:%s", resourceName.c_str());
        return false;
    }
    LOG_PROGRESS(L"Getting resource state...");
    std::wstring groupName;
    resNetworkName.GetResourceState(nullptr, &groupName);
    LOG_PROGRESS(L"Opening group: %s...", groupName.c_str());
    CClusterGroup group;
    if (!cluster.OpenGroupByName(group, groupName.c_str())) {
        LOG_FAILURE(L"Cannot open group:%s", groupName.c_str());
        return false;
    }
    LOG_PROGRESS(L"Performing EnumResourceNamesInGroupByType...");
    if (!ListProductResources(cluster, group, groupName.c_str(), purpose, names)) {
        return false;
    }
    if (names.size() > 1) {
        if (purpose == Purpose::Switching) {
            LOG_INFO(L"Warning, more than 1 KOVA resource is found at a group.\n");
        } else if (purpose == Purpose::Deletion) {
            LOG_INFO(L"Warning, more than 1 KOVA resource is found\n");
        }
    }
    return true;
}

} // namespace clus

bool CVirtualServerUtil::FindKOVAResources(const wchar_t* lpwsVirtualServerName, std::list<std::wstring>& names) {
    CCluster cluster;
    std::list<std::wstring> found;
    if (!clus::FindProductResources(cluster, lpwsVirtualServerName, clus::Purpose::Asking, found)) {
        return false;
    }
    names.swap(found);
    return true;
}
