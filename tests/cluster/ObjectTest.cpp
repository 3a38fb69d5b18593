// Opening resources, groups and nodes of an open cluster, and creating resources.
#include "ClusterFixture.h"

#include "clus_VeritasCluster.h"
#include "clus_VirtualServerUtil.h"

#include <type_traits>

using namespace harness;

namespace {

// A copy would close the same handle twice.
static_assert(!std::is_copy_constructible<CCluster>::value && !std::is_copy_assignable<CCluster>::value, "no copy");
static_assert(!std::is_copy_constructible<CClusterResource>::value && !std::is_copy_assignable<CClusterResource>::value,
              "no copy");

using ClusterObjects = OpenClusterTest;

TEST_F(ClusterObjects, OpensAResourceByNameInAnyLetterCase) {
    CClusterResource resource;
    EXPECT_TRUE(cluster.OpenResourceByName(resource, L"evs1 DISK"));
    EXPECT_NE(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"OpenClusterResource(evs1 DISK)"}));
}

TEST_F(ClusterObjects, AResourceThatDoesNotOpenIsLoggedWithItsCode) {
    CClusterResource resource;
    EXPECT_FALSE(cluster.OpenResourceByName(resource, L"EVS9"));
    EXPECT_EQ(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E Open resource failed:EVS9, err=5007"}));
}

TEST_F(ClusterObjects, OpeningIntoAResourceThatHoldsAHandleKeepsThatHandle) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const HRESOURCE handle = resource.GetResourceHandle();
    EXPECT_FALSE(cluster.OpenResourceByName(resource, L"EVS1 Disk"));
    EXPECT_EQ(resource.GetResourceHandle(), handle);
    EXPECT_EQ(TakeLog(), Lines({"E resource has alreay been opened."}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ClusterObjects, OpensAGroupByName) {
    CClusterGroup group;
    EXPECT_TRUE(cluster.OpenGroupByName(group, L"EVS1"));
    EXPECT_NE(group.GetGroupHandle(), nullptr);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"OpenClusterGroup(EVS1)"}));
}

TEST_F(ClusterObjects, AGroupThatDoesNotOpenIsLoggedWithItsCode) {
    CClusterGroup group;
    EXPECT_FALSE(cluster.OpenGroupByName(group, L"EVS9"));
    EXPECT_EQ(group.GetGroupHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E Open group failed, code:5013"}));
}

TEST_F(ClusterObjects, OpeningIntoAGroupThatHoldsAHandleKeepsThatHandle) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const HGROUP handle = group.GetGroupHandle();
    EXPECT_FALSE(cluster.OpenGroupByName(group, L"Cluster Group"));
    EXPECT_EQ(group.GetGroupHandle(), handle);
    EXPECT_EQ(TakeLog(), Lines({"E Group has already been opened."}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ClusterObjects, OpensANodeByName) {
    {
        CClusterNode node;
        EXPECT_EQ(node.GetNodeHandle(), nullptr);
        EXPECT_TRUE(cluster.OpenNodeByName(node, L"NODE-B"));
        EXPECT_NE(node.GetNodeHandle(), nullptr);
    }
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"OpenClusterNode(NODE-B)", "CloseClusterNode(NODE-B)"}));
}

TEST_F(ClusterObjects, ANodeThatDoesNotOpenIsNotLoggedAndKeepsWhatItHeld) {
    CClusterNode node;
    ASSERT_TRUE(cluster.OpenNodeByName(node, L"NODE-A"));
    const HNODE handle = node.GetNodeHandle();
    EXPECT_FALSE(cluster.OpenNodeByName(node, L"NODE-Z"));
    EXPECT_EQ(node.GetNodeHandle(), handle);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"OpenClusterNode(NODE-A)", "OpenClusterNode(NODE-Z)=5042"}));
}

TEST_F(ClusterObjects, OpeningANodeOverwritesAHeldHandleWithoutClosingIt) {
    HNODE first = nullptr;
    {
        CClusterNode node;
        ASSERT_TRUE(cluster.OpenNodeByName(node, L"NODE-A"));
        first = node.GetNodeHandle();
        EXPECT_TRUE(cluster.OpenNodeByName(node, L"NODE-B"));
        EXPECT_NE(node.GetNodeHandle(), first);
    }
    EXPECT_EQ(TakeJournal(), Lines({"OpenClusterNode(NODE-A)", "OpenClusterNode(NODE-B)", "CloseClusterNode(NODE-B)"}));
    EXPECT_TRUE(CloseClusterNode(first));
}

TEST_F(ClusterObjects, HandlesStayUsableAfterTheClusterIsClosed) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    cluster.Close();
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false), L"IP Address");
}

TEST_F(ClusterObjects, GroupsAndNodesStayUsableAfterTheClusterIsClosed) {
    cluster.Load(ExchangeCluster().IpAddress("Spare IP", "10.0.0.9").PossibleOwner("NODE-A"));
    CClusterResource resource;
    CClusterGroup group;
    CClusterNode node;
    cluster.Open(resource, L"Spare IP");
    cluster.Open(group, L"Cluster Group");
    ASSERT_TRUE(cluster.OpenNodeByName(node, L"NODE-B"));
    cluster.Close();
    NameList names;
    EXPECT_TRUE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"Cluster Name"}));
    EXPECT_EQ(resource.AddOwner(node.GetNodeHandle()), DWORD(ERROR_SUCCESS));
}

TEST_F(ClusterObjects, ThroughAClosedClusterDoNotOpen) {
    cluster.Close();
    Forget();
    CClusterResource resource;
    CClusterGroup group;
    CClusterNode node;
    EXPECT_FALSE(cluster.OpenResourceByName(resource, L"EVS1 IP"));
    EXPECT_FALSE(cluster.OpenGroupByName(group, L"EVS1"));
    EXPECT_FALSE(cluster.OpenNodeByName(node, L"NODE-A"));
    EXPECT_EQ(TakeLog(), Lines({"E Open resource failed:EVS1 IP, err=6", "E Open group failed, code:6"}));
    Cluster().ClearJournal(); // the null handle is no open one
}

TEST_F(ClusterObjects, ThroughAClosedClusterPassTheNullHandleOn) {
    cluster.Close();
    Names asked;
    const auto openGroup = PatchImport(clusapi, OpenClusterGroup, [&](HCLUSTER handle, LPCWSTR name) -> HGROUP {
        asked.push_back(handle ? L"a handle" : name);
        return nullptr;
    });
    const auto openNode = PatchImport(clusapi, OpenClusterNode, [&](HCLUSTER handle, LPCWSTR name) -> HNODE {
        asked.push_back(handle ? L"a handle" : name);
        return nullptr;
    });
    CClusterGroup group;
    CClusterNode node;
    EXPECT_FALSE(cluster.OpenGroupByName(group, L"EVS1"));
    EXPECT_FALSE(cluster.OpenNodeByName(node, L"NODE-A"));
    EXPECT_EQ(asked, (Names{L"EVS1", L"NODE-A"}));
}

// Callers lay these classes out by the headers alone.
TEST(PublicClasses, HaveNoVirtualMembers) {
    EXPECT_FALSE(std::is_polymorphic_v<CCluster>);
    EXPECT_FALSE(std::is_polymorphic_v<CClusterGroup>);
    EXPECT_FALSE(std::is_polymorphic_v<CClusterNode>);
    EXPECT_FALSE(std::is_polymorphic_v<CClusterResource>);
    EXPECT_FALSE(std::is_polymorphic_v<CVeritasCluster>);
    EXPECT_FALSE(std::is_polymorphic_v<CVirtualServerUtil>);
}

// Creating
// -------------------------------------------------------------------------------------------------------------------

TEST_F(ClusterObjects, CreatesAnOfflineResourceInTheGroup) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    CClusterResource resource;
    EXPECT_TRUE(CCluster::CreateResource(group, resource, L"EVS1 IP 2", L"IP Address"));
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::CreateResource", "< CCluster::CreateResource"}));
    EXPECT_EQ(TakeJournal(), Lines({"CreateClusterResource(EVS1,EVS1 IP 2,IP Address,0)"}));
    std::wstring groupName;
    EXPECT_EQ(resource.GetResourceState(nullptr, &groupName), CClusterResource::RES_STATE_OFFLINE);
    EXPECT_EQ(groupName, L"EVS1");
}

TEST_F(ClusterObjects, AResourceThatCannotBeCreatedIsLogged) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    CClusterResource resource;
    EXPECT_FALSE(CCluster::CreateResource(group, resource, L"EVS1 IP", L"IP Address"));
    EXPECT_EQ(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::CreateResource", "E Cannot create resource:EVS1 IP type:IP Address",
                                "< CCluster::CreateResource"}));
    EXPECT_EQ(TakeJournal(), Lines({"CreateClusterResource(EVS1,EVS1 IP,IP Address,0)=5010"}));
}

TEST_F(ClusterObjects, CreatingOverwritesAHeldHandleWithoutClosingIt) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const HRESOURCE first = resource.GetResourceHandle();
    EXPECT_TRUE(CCluster::CreateResource(group, resource, L"EVS1 IP 2", L"IP Address"));
    EXPECT_NE(resource.GetResourceHandle(), first);
    resource.Close();
    EXPECT_EQ(TakeJournal(),
              Lines({"CreateClusterResource(EVS1,EVS1 IP 2,IP Address,0)", "CloseClusterResource(EVS1 IP 2)"}));
    EXPECT_TRUE(CloseClusterResource(first));
}

TEST_F(ClusterObjects, AResourceCreatedIntoAHeldOneHasItsOwnName) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const HRESOURCE first = resource.GetResourceHandle();
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 IP");
    EXPECT_TRUE(CCluster::CreateResource(group, resource, L"EVS1 IP 2", L"IP Address"));
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 IP 2");
    EXPECT_TRUE(CloseClusterResource(first));
}

} // namespace
