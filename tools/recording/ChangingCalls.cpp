#include "ChangingCalls.h"

#include "CallTable.h"

#include <cstddef>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace recording {

namespace {

const char ClusApi[] = "clusapi.dll";
const char ResUtils[] = "resutils.dll";

struct Row {
    const char* library;
    const char* name;
    Result result;
};

// In the order of their names. What asks or changes depending on a code that goes in is not among them.
constexpr Row Rows[] = {
    {ClusApi, "AddClusterGroupDependency", Result::Code},
    {ClusApi, "AddClusterGroupDependencyEx", Result::Code},
    {ClusApi, "AddClusterGroupSetDependency", Result::Code},
    {ClusApi, "AddClusterGroupSetDependencyEx", Result::Code},
    {ClusApi, "AddClusterGroupToGroupSetDependency", Result::Code},
    {ClusApi, "AddClusterGroupToGroupSetDependencyEx", Result::Code},
    {ClusApi, "AddClusterNode", Result::Handle},
    {ClusApi, "AddClusterNodeEx", Result::Handle},
    {ClusApi, "AddClusterResourceDependencyEx", Result::Code},
    {ClusApi, "AddClusterResourceNodeEx", Result::Code},
    {ClusApi, "AddClusterStorageNode", Result::Code},
    {ClusApi, "AddCrossClusterGroupSetDependency", Result::Code},
    {ClusApi, "AddResourceToClusterSharedVolumes", Result::Code},
    {ClusApi, "BackupClusterDatabase", Result::Code},
    {ClusApi, "CancelClusterGroupOperation", Result::Code},
    {ClusApi, "ChangeClusterResourceGroupEx", Result::Code},
    {ClusApi, "ChangeClusterResourceGroupEx2", Result::Code},
    {ClusApi, "ClusterAddGroupToAffinityRule", Result::Code},
    {ClusApi, "ClusterAddGroupToGroupSet", Result::Code},
    {ClusApi, "ClusterAddGroupToGroupSetWithDomains", Result::Code},
    {ClusApi, "ClusterAddGroupToGroupSetWithDomainsEx", Result::Code},
    {ClusApi, "ClusterCreateAffinityRule", Result::Code},
    {ClusApi, "ClusterRegBatchAddCommand", Result::Code},
    {ClusApi, "ClusterRegCloseBatch", Result::Code},
    {ClusApi, "ClusterRegCloseBatchEx", Result::Code},
    {ClusApi, "ClusterRegCreateKey", Result::Code},
    {ClusApi, "ClusterRegCreateKeyEx", Result::Code},
    {ClusApi, "ClusterRegDeleteKey", Result::Code},
    {ClusApi, "ClusterRegDeleteKeyEx", Result::Code},
    {ClusApi, "ClusterRegDeleteValue", Result::Code},
    {ClusApi, "ClusterRegDeleteValueEx", Result::Code},
    {ClusApi, "ClusterRegSetKeySecurity", Result::Code},
    {ClusApi, "ClusterRegSetKeySecurityEx", Result::Code},
    {ClusApi, "ClusterRegSetValue", Result::Code},
    {ClusApi, "ClusterRegSetValueEx", Result::Code},
    {ClusApi, "ClusterRegSyncDatabase", Result::Code},
    {ClusApi, "ClusterRemoveAffinityRule", Result::Code},
    {ClusApi, "ClusterRemoveGroupFromAffinityRule", Result::Code},
    {ClusApi, "ClusterRemoveGroupFromGroupSet", Result::Code},
    {ClusApi, "ClusterRemoveGroupFromGroupSetEx", Result::Code},
    {ClusApi, "ClusterSetAccountAccess", Result::Code},
    {ClusApi, "ClusterSharedVolumeSetSnapshotState", Result::Code},
    {ClusApi, "ClusterUpgradeFunctionalLevel", Result::Code},
    {ClusApi, "CreateCluster", Result::Handle},
    {ClusApi, "CreateClusterAvailabilitySet", Result::Handle},
    {ClusApi, "CreateClusterGroupEx", Result::Handle},
    {ClusApi, "CreateClusterGroupSet", Result::Handle},
    {ClusApi, "CreateClusterNameAccount", Result::Code},
    {ClusApi, "CreateClusterResourceEx", Result::Handle},
    {ClusApi, "CreateClusterResourceType", Result::Code},
    {ClusApi, "CreateClusterResourceTypeEx", Result::Code},
    {ClusApi, "DeleteClusterGroupEx", Result::Code},
    {ClusApi, "DeleteClusterGroupSet", Result::Code},
    {ClusApi, "DeleteClusterGroupSetEx", Result::Code},
    {ClusApi, "DeleteClusterResourceEx", Result::Code},
    {ClusApi, "DeleteClusterResourceType", Result::Code},
    {ClusApi, "DeleteClusterResourceTypeEx", Result::Code},
    {ClusApi, "DestroyCluster", Result::Code},
    {ClusApi, "DestroyClusterGroup", Result::Code},
    {ClusApi, "DestroyClusterGroupEx", Result::Code},
    {ClusApi, "EvictClusterNodeEx", Result::Code},
    {ClusApi, "EvictClusterNodeEx2", Result::Code},
    {ClusApi, "FailClusterResourceEx", Result::Code},
    {ClusApi, "MoveClusterGroupEx", Result::Code},
    {ClusApi, "MoveClusterGroupEx2", Result::Code},
    {ClusApi, "OfflineClusterGroupEx", Result::Code},
    {ClusApi, "OfflineClusterGroupEx2", Result::Code},
    {ClusApi, "OfflineClusterResourceEx", Result::Code},
    {ClusApi, "OfflineClusterResourceEx2", Result::Code},
    {ClusApi, "OnlineClusterGroupEx", Result::Code},
    {ClusApi, "OnlineClusterGroupEx2", Result::Code},
    {ClusApi, "OnlineClusterResourceEx", Result::Code},
    {ClusApi, "OnlineClusterResourceEx2", Result::Code},
    {ClusApi, "PauseClusterNodeEx", Result::Code},
    {ClusApi, "PauseClusterNodeEx2", Result::Code},
    {ClusApi, "RemoveClusterGroupDependency", Result::Code},
    {ClusApi, "RemoveClusterGroupDependencyEx", Result::Code},
    {ClusApi, "RemoveClusterGroupSetDependency", Result::Code},
    {ClusApi, "RemoveClusterGroupSetDependencyEx", Result::Code},
    {ClusApi, "RemoveClusterGroupToGroupSetDependency", Result::Code},
    {ClusApi, "RemoveClusterGroupToGroupSetDependencyEx", Result::Code},
    {ClusApi, "RemoveClusterNameAccount", Result::Code},
    {ClusApi, "RemoveClusterResourceDependencyEx", Result::Code},
    {ClusApi, "RemoveClusterResourceNodeEx", Result::Code},
    {ClusApi, "RemoveClusterStorageNode", Result::Code},
    {ClusApi, "RemoveCrossClusterGroupSetDependency", Result::Code},
    {ClusApi, "RemoveResourceFromClusterSharedVolumes", Result::Code},
    {ClusApi, "RepairClusterNameAccount", Result::Code},
    {ClusApi, "RestartClusterResource", Result::Code},
    {ClusApi, "RestartClusterResourceEx", Result::Code},
    {ClusApi, "RestoreClusterDatabase", Result::Code},
    {ClusApi, "ResumeClusterNodeEx", Result::Code},
    {ClusApi, "ResumeClusterNodeEx2", Result::Code},
    {ClusApi, "SetClusterGroupNameEx", Result::Code},
    {ClusApi, "SetClusterGroupNodeList", Result::Code},
    {ClusApi, "SetClusterGroupNodeListEx", Result::Code},
    {ClusApi, "SetClusterGroupSetDependencyExpression", Result::Code},
    {ClusApi, "SetClusterGroupSetDependencyExpressionEx", Result::Code},
    {ClusApi, "SetClusterNameEx", Result::Code},
    {ClusApi, "SetClusterNetworkNameEx", Result::Code},
    {ClusApi, "SetClusterNetworkPriorityOrder", Result::Code},
    {ClusApi, "SetClusterQuorumResourceEx", Result::Code},
    {ClusApi, "SetClusterResourceDependencyExpression", Result::Code},
    {ClusApi, "SetClusterResourceNameEx", Result::Code},
    {ClusApi, "SetClusterServiceAccountPassword", Result::Code},
    {ClusApi, "SetGroupDependencyExpression", Result::Code},
    {ClusApi, "SetGroupDependencyExpressionEx", Result::Code},
    {ResUtils, "ClusterClearBackupStateForSharedVolume", Result::Code},
    {ResUtils, "ClusterPrepareSharedVolumeForBackup", Result::Code},
    {ResUtils, "ResUtilSetBinaryValue", Result::Code},
    {ResUtils, "ResUtilSetDwordValue", Result::Code},
    {ResUtils, "ResUtilSetExpandSzValue", Result::Code},
    {ResUtils, "ResUtilSetMultiSzValue", Result::Code},
    {ResUtils, "ResUtilSetPrivatePropertyList", Result::Code},
    {ResUtils, "ResUtilSetPropertyParameterBlock", Result::Code},
    {ResUtils, "ResUtilSetPropertyParameterBlockEx", Result::Code},
    {ResUtils, "ResUtilSetPropertyTable", Result::Code},
    {ResUtils, "ResUtilSetPropertyTableEx", Result::Code},
    {ResUtils, "ResUtilSetQwordValue", Result::Code},
    {ResUtils, "ResUtilSetSzValue", Result::Code},
    {ResUtils, "ResUtilSetUnknownProperties", Result::Code},
    {ResUtils, "ResUtilSetValueEx", Result::Code},
};

std::vector<Call>& Calls();

// Its callers take their arguments away again, and look for the result where any function of theirs leaves it.
template <std::size_t number> Slot WINAPI Entry() {
    const Call& call = Calls()[number];
    return Intercept(call, nullptr, [](void* which, const Slot*) {
        return Failed(*static_cast<const Call*>(which), ERROR_ACCESS_DENIED);
    });
}

template <std::size_t... number> std::vector<Call> MakeCalls(std::index_sequence<number...>) {
    return {{Rows[number].library,
             Rows[number].name,
             Rows[number].result,
             Effect::Changes,
             {},
             reinterpret_cast<void*>(&Entry<number>),
             nullptr}...};
}

std::vector<Call>& Calls() {
    static std::vector<Call> calls = [] {
        std::vector<Call> made = MakeCalls(std::make_index_sequence<std::size(Rows)>());
        for (Call& call : made) {
            call.original = &call; // in the place of the function, which is never called
        }
        return made; // moved: the rows stay where they are
    }();
    return calls;
}

} // namespace

const Call* FindChangingCall(const std::string& name) {
    static const std::unordered_map<std::string, const Call*> byName = [] {
        std::unordered_map<std::string, const Call*> map;
        for (const Call& call : Calls()) {
            map[call.name] = &call;
        }
        return map;
    }();
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : found->second;
}

Slot Failed(const Call& call, DWORD code) {
    if (call.result == Result::Code) {
        return code;
    }
    SetLastError(code);
    return call.result == Result::State ? static_cast<DWORD>(-1) : 0;
}

} // namespace recording
