// The last-error value after a failure, as docs/callers.md tells it: of the call that failed, after all that is closed.
#include "ClusterFixture.h"

using namespace harness;

namespace {

// What a member answers, as true and false.
typedef bool (*Operation)(CCluster& cluster, CClusterGroup& group, CClusterResource& disk);

struct Failure {
    const char* name;
    const char* call; // fails with 5
    Operation operation;
    bool result;
    DWORD lastError; // 0: as it was before
};

const Failure Failures[] = {
    {"TypeInAListThatCannotBeOpened", "ClusterOpenEnum",
     [](CCluster& cluster, CClusterGroup&, CClusterResource&) {
         NameList names;
         return cluster.EnumResourceNamesByType(L"Physical Disk", names);
     },
     false, ERROR_ACCESS_DENIED},
    {"ClusterName", "GetClusterInformation",
     [](CCluster& cluster, CClusterGroup&, CClusterResource&) {
         std::wstring name;
         return cluster.GetClusterName(name);
     },
     false, ERROR_SUCCESS},
    {"ClusterNameAndIdWithoutCluster", "OpenCluster",
     [](CCluster&, CClusterGroup&, CClusterResource&) {
         std::wstring name;
         std::wstring id;
         return CCluster::GetClusterNameResourceGUID(name, id);
     },
     false, ERROR_ACCESS_DENIED},
    {"NetworkNameInAListThatCannotBeOpened", "ClusterOpenEnum",
     [](CCluster& cluster, CClusterGroup&, CClusterResource&) {
         std::wstring name;
         return cluster.FindFirstResourceNameByNetworkName(name, L"EVS1");
     },
     false, ERROR_ACCESS_DENIED},
    {"GroupByNetworkNameThatDoesNotOpen", "OpenClusterGroup",
     [](CCluster& cluster, CClusterGroup&, CClusterResource&) {
         CClusterGroup found;
         return cluster.OpenGroupByNetworkName(found, L"EVS1");
     },
     false, ERROR_ACCESS_DENIED},
    {"GroupByNetworkNameWithoutState", "GetClusterResourceState",
     [](CCluster& cluster, CClusterGroup&, CClusterResource&) {
         CClusterGroup found;
         return cluster.OpenGroupByNetworkName(found, L"EVS1");
     },
     false, ERROR_ACCESS_DENIED},
    {"NamesInAGroup", "ClusterGroupOpenEnum",
     [](CCluster&, CClusterGroup& group, CClusterResource&) {
         NameList names;
         return group.EnumResourceNamesInGroup(names);
     },
     false, ERROR_ACCESS_DENIED},
    {"NamesInAGroupOfAType", "OpenClusterResource",
     [](CCluster& cluster, CClusterGroup& group, CClusterResource&) {
         NameList names;
         return group.EnumResourceNamesInGroupByType(cluster, names, L"Physical Disk");
     },
     false, ERROR_ACCESS_DENIED},
    {"WalkThroughAGroup", "ClusterGroupOpenEnum",
     [](CCluster& cluster, CClusterGroup& group, CClusterResource&) {
         return group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr);
     },
     true, ERROR_ACCESS_DENIED},
    {"StorageOfAGroup", "ClusterGroupOpenEnum",
     [](CCluster& cluster, CClusterGroup& group, CClusterResource&) {
         NameList names;
         return group.EnumStorageResourceNamesInGroup(cluster, names);
     },
     true, ERROR_ACCESS_DENIED},
    {"Here", "GetClusterResourceState",
     [](CCluster&, CClusterGroup&, CClusterResource& disk) { return disk.IsOnCurrentNode(nullptr); }, false,
     ERROR_ACCESS_DENIED},
    {"OnlineHere", "GetClusterResourceState",
     [](CCluster&, CClusterGroup&, CClusterResource& disk) { return disk.IsOnlineOnCurrentNode(nullptr); }, false,
     ERROR_ACCESS_DENIED},
    {"DependentNetworkName", "ResUtilGetResourceDependency",
     [](CCluster&, CClusterGroup&, CClusterResource& disk) {
         std::wstring name;
         return disk.GetDependentNetworkName(name);
     },
     false, ERROR_ACCESS_DENIED},
    {"Type", "ClusterResourceControl",
     [](CCluster&, CClusterGroup&, CClusterResource& disk) {
         return disk.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false) != nullptr;
     },
     false, ERROR_SUCCESS},
};

using LastError = OpenClusterTestWith<Failure>;

TEST_P(LastError, IsThatOfTheFailure) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    CClusterResource disk;
    cluster.Open(disk, L"EVS1 Disk");
    Platform().FailCall(GetParam().call, ERROR_ACCESS_DENIED);
    SetLastError(ERROR_SUCCESS);
    const bool result = GetParam().operation(cluster, group, disk);
    const DWORD lastError = GetLastError();
    EXPECT_EQ(result, GetParam().result);
    EXPECT_EQ(lastError, GetParam().lastError);
    EXPECT_THAT(TakeJournal(), ::testing::HasSubstr(GetParam().call));
}

INSTANTIATE_TEST_SUITE_P(Failures, LastError, ::testing::ValuesIn(Failures), RowName());

using LastErrorOfState = OpenClusterTest;

TEST_F(LastErrorOfState, IsMoreDataForATooLongName) {
    const std::string node(16, 'N');
    cluster.Load(GivenCluster().Node(node).Group("G", node).Disk("D", "F:"));
    CClusterResource disk;
    cluster.Open(disk, L"D");
    std::wstring owner;
    SetLastError(ERROR_SUCCESS);
    const CClusterResource::RES_STATE state = disk.GetResourceState(&owner, nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_MORE_DATA));
    EXPECT_EQ(state, CClusterResource::RES_STATE_UNKNOWN);
}

} // namespace
