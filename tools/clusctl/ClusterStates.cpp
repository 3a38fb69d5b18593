// Reading the state of a group or a resource with the names that come with it, of whatever length.
#include "ClusterObjects.h"

#include "ClusterApi.h"

#include "common/AnswerRoom.h"

#include <vector>

CLUSTER_GROUP_STATE ReadGroupState(HGROUP group, std::wstring& owner) {
    std::vector<wchar_t> node(64);
    for (;;) {
        auto length = static_cast<DWORD>(node.size());
        SetLastError(ERROR_SUCCESS); // of a group whose state the cluster itself does not know
        const CLUSTER_GROUP_STATE state = GetClusterGroupState(group, node.data(), &length);
        if (state != ClusterGroupStateUnknown) {
            owner = common::NameIn(node);
            return state;
        }
        if (GetLastError() != ERROR_MORE_DATA || !common::GrowForName(node, length)) {
            return state;
        }
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
            owner = common::NameIn(node);
            group = common::NameIn(groupName);
            return state;
        }
        if (GetLastError() != ERROR_MORE_DATA) {
            return state;
        }
        const bool nodeGrows = common::GrowForName(node, nodeLength);
        const bool groupGrows = common::GrowForName(groupName, groupLength);
        if (!nodeGrows && !groupGrows) {
            return state;
        }
    }
}
