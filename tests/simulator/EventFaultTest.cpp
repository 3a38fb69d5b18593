// Events of the fault language: what happens to the cluster between two calls.
#include "SimulatorTest.h"

using testing::HasSubstr;

class EventFault : public SimulatorTest {};

TEST_F(EventFault, AGroupMovesJustBeforeACall) {
    const std::string model = Replaced(MailCluster, "\"state\": \"down\"", "\"state\": \"up\"");
    Load(Replaced(model, R"(, "possibleOwners": ["NODE-A"])", ""));
    ASSERT_TRUE(ClusSimAddFault("GetClusterGroupState@EVS1#2=event:\"move EVS1 NODE-B\""));
    const GroupOwner group = Group(L"EVS1");
    const auto owner = [&group] { return OwnerOf(group); };
    EXPECT_EQ(owner(), L"NODE-A");
    EXPECT_EQ(owner(), L"NODE-B");
    EXPECT_THAT(ReadJournal(), HasSubstr(R"("call": "GetClusterGroupState", "event": "move EVS1 NODE-B"})"));
}

TEST_F(EventFault, TheServiceStopsAtTheThirdCallWhateverItIs) {
    Load();
    ASSERT_TRUE(ClusSimAddFault("*#3=event:\"quorum-loss\""));
    const GroupOwner group = Group(L"EVS1");
    const ResourceOwner resource = Resource(L"EVS1 IP");
    DWORD cb = 0;
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, nullptr, 0, &cb),
              static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE));
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EPT_S_NOT_REGISTERED));
}

TEST_F(EventFault, AResourceVanishesInTheMidstOfAnEnumerationAndAnotherAppears) {
    Load();
    ASSERT_TRUE(ClusSimAddFault("OpenClusterResource#2=event:\"vanish EVS1 IP\""));
    ASSERT_TRUE(ClusSimAddFault("OpenClusterResource#3=event:\"appear EVS1 Extra\""));
    const std::vector<ListedName> before = ListCluster(m_cluster, CLUSTER_ENUM_RESOURCE);
    Resource(L"EVS1 SA");
    EXPECT_EQ(OpenClusterResource(m_cluster, L"EVS1 IP"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
    EXPECT_EQ(StateOf(L"Extra"), ClusterResourceOffline);
    EXPECT_EQ(ListCluster(m_cluster, CLUSTER_ENUM_RESOURCE).size(), before.size());
}

TEST_F(EventFault, OnlyEventsBefallAnyCallAndToolsAreToldOtherwise) {
    EXPECT_TRUE(Accepts("*#2=event:\"service-stop\""));
    EXPECT_FALSE(Accepts("*#2=5"));
    EXPECT_FALSE(Accepts("OpenCluster=5,event:\"service-stop\""));
    EXPECT_FALSE(Accepts("OpenCluster=event:service-stop"));
}
