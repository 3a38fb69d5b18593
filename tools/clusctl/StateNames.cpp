#include "StateNames.h"

#include "simulator/cluster/ModelStates.h"

#include <cstddef>

namespace {

struct ResourceState {
    CLUSTER_RESOURCE_STATE state;
    CClusterResource::RES_STATE ofLibrary;
    const char* word;
};

const ResourceState UnknownState = {ClusterResourceStateUnknown, CClusterResource::RES_STATE_UNKNOWN, "unknown"};

const ResourceState ResourceStates[] = {
    {ClusterResourceInherited, CClusterResource::RES_STATE_UNKNOWN, "unknown"},
    {ClusterResourceInitializing, CClusterResource::RES_STATE_INITIALIZING, "initializing"},
    {ClusterResourceOnline, CClusterResource::RES_STATE_ONLINE, "online"},
    {ClusterResourceOffline, CClusterResource::RES_STATE_OFFLINE, "offline"},
    {ClusterResourceFailed, CClusterResource::RES_STATE_FAILED, "failed"},
    {ClusterResourcePending, CClusterResource::RES_STATE_PENDING, "pending"},
    {ClusterResourceOnlinePending, CClusterResource::RES_STATE_ONLINE_PENDING, "online pending"},
    {ClusterResourceOfflinePending, CClusterResource::RES_STATE_OFFLINE_PENDING, "offline pending"},
};

const ResourceState& Find(CLUSTER_RESOURCE_STATE state) {
    for (const ResourceState& known : ResourceStates) {
        if (known.state == state) {
            return known;
        }
    }
    return UnknownState;
}

// Tables of the other kinds hold pairs of a state and its name.
template <typename State> struct Named {
    State state;
    const char* name;
};

template <typename State, std::size_t Size>
const char* NameIn(const Named<State> (&table)[Size], State state, const char* otherwise) {
    for (const Named<State>& known : table) {
        if (known.state == state) {
            return known.name;
        }
    }
    return otherwise;
}

const Named<CLUSTER_GROUP_STATE> GroupStates[] = {
    {ClusterGroupOnline, "online"},   {ClusterGroupOffline, "offline"},
    {ClusterGroupFailed, "failed"},   {ClusterGroupPartialOnline, "partly online"},
    {ClusterGroupPending, "pending"},
};

const Named<CLUSTER_NODE_STATE> NodeStates[] = {
    {ClusterNodeUp, "up"},
    {ClusterNodePaused, "paused"},
    {ClusterNodeDown, "down"},
    {ClusterNodeJoining, "joining"},
};

const Named<DWORD> ServiceStates[] = {
    {SERVICE_RUNNING, "running"},
    {SERVICE_START_PENDING, "start pending"},
    {SERVICE_STOPPED, "stopped"},
};

} // namespace

const char* StateWord(CLUSTER_RESOURCE_STATE state) {
    return Find(state).word;
}

const char* StateWord(CClusterResource::RES_STATE state) {
    for (const ResourceState& known : ResourceStates) {
        if (known.ofLibrary == state) {
            return known.word;
        }
    }
    return UnknownState.word;
}

const char* StateWord(CLUSTER_GROUP_STATE state) {
    return NameIn(GroupStates, state, "unknown");
}

const char* StateWord(CLUSTER_NODE_STATE state) {
    return NameIn(NodeStates, state, "unknown");
}

const char* ModelState(CLUSTER_RESOURCE_STATE state) {
    return clussim::NameOf(clussim::ResourceStates, state, "Unknown");
}

const char* ModelState(CLUSTER_NODE_STATE state) {
    return clussim::NameOf(clussim::NodeStates, state, "down");
}

const char* ServiceStateWord(DWORD state) {
    return NameIn(ServiceStates, state, "not running");
}
