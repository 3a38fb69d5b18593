#include "FailoverPicture.h"

#include "StateNames.h"

#include "core/ResourceTypes.h"

using namespace picture;

namespace {

Condition ConditionOf(CLUSTER_GROUP_STATE state) {
    switch (state) {
    case ClusterGroupOnline:
        return Condition::Online;
    case ClusterGroupPartialOnline:
        return Condition::Partly;
    case ClusterGroupPending:
        return Condition::Pending;
    case ClusterGroupOffline:
        return Condition::Offline;
    case ClusterGroupFailed:
        return Condition::Failed;
    default:
        return Condition::Unknown;
    }
}

Condition ConditionOf(CLUSTER_RESOURCE_STATE state) {
    switch (state) {
    case ClusterResourceOnline:
        return Condition::Online;
    case ClusterResourceInitializing:
    case ClusterResourcePending:
    case ClusterResourceOnlinePending:
    case ClusterResourceOfflinePending:
        return Condition::Pending;
    case ClusterResourceOffline:
        return Condition::Offline;
    case ClusterResourceFailed:
        return Condition::Failed;
    default:
        return Condition::Unknown;
    }
}

} // namespace

void SetGroupState(Group& group, CLUSTER_GROUP_STATE state) {
    group.state = StateWord(state);
    group.condition = ConditionOf(state);
}

void SetResourceState(Resource& resource, CLUSTER_RESOURCE_STATE state) {
    resource.state = StateWord(state);
    resource.condition = ConditionOf(state);
}

Role RoleOfType(const std::wstring& type) {
    return clus::IsProductType(type.c_str())    ? Role::Product
           : type == clus::InformationStoreType ? Role::Store
           : type == clus::SystemAttendantType  ? Role::Attendant
           : type == clus::NetworkNameType      ? Role::NetworkName
           : type == clus::IpAddressType        ? Role::Address
                                                : Role::Other;
}
