// Reading the state of a group or a resource with the names that come with it, of whatever length.
#include "ClusterObjects.h"

#include "ClusterApi.h"

#include <vector>

CLUSTER_GROUP_STATE ReadGroupState(HGROUP group, std::wstring& owner) {
    std::vector<wchar_t> node(64);
    for (;;) {
        auto length = static_cast<DWORD>(node.size());
        SetLastError(ERROR_SUCCESS); // of a group whose state the cluster itself does not know
        const CLUSTER_GROUP_STATE state = GetClusterGroupState(group, node.data(), &length);
        if (state != ClusterGroupStateUnknown) {
            owner = node.data();
            return state;
        }
        if (GetLastError() != ERROR_MORE_DATA || length < node.size()) {
            return state;
        }
        node.resize(length + 1);
    }
}

CLUSTER_RESOURCE_STATE ReadResourceState(HRESOURCE resource, std::wstring& owner, std::wstring& group) {
    std::vector<wchar_t> node(64);
    std::vector<wchar_t> groupName(256);
    for (;;) {
        auto nodeLength = static_cast<DWORD>(node.size());
        auto groupLength = static_cast<DWORD>(groupName.size());
        SetLastError(ERROR_SUCCESS);
        const CLUSTER_RESOURCE_STATE state =
            GetClusterResourceState(resource, node.data(), &nodeLength, groupName.data(), &groupLength);
        if (state != ClusterResourceStateUnknown) {
            owner = node.data();
            group = groupName.data();
            return state;
        }
        if (GetLastError() != ERROR_MORE_DATA || (nodeLength < node.size() && groupLength < groupName.size())) {
            return state;
        }
        node.resize(nodeLength + 1);
        groupName.resize(groupLength + 1);
    }
}
