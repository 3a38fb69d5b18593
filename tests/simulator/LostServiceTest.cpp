// What calls on open handles give once the service is lost, handles that go stale, and events by the clock.
#include "SimulatorTest.h"

using testing::HasSubstr;

class LostService : public SimulatorTest {
protected:
    void LoadWith(const std::string& behaviour) {
        Load(Replaced(MailCluster, "\"name\": \"MAILCLUSTER\"",
                      "\"name\": \"MAILCLUSTER\", \"behaviour\": {" + behaviour + "}"));
    }

    DWORD NameCode(HRESOURCE resource) {
        DWORD cb = 0;
        unsigned char name[200];
        return ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, name, sizeof(name),
                                      &cb);
    }

    DWORD Happen(const char* event) {
        return ClusSimHappen(event, nullptr, nullptr, nullptr, 0);
    }
};

TEST_F(LostService, OpenHandlesGiveTheCodeThatTheModelNames) {
    for (const DWORD code : {1717u, 1722u, 1723u, 1726u, 1753u, 6u}) {
        LoadWith("\"lost\": " + std::to_string(code));
        const ResourceOwner resource = Resource(L"EVS1 IP");
        const GroupOwner group = Group(L"EVS1");
        const NodeOwner node = Node(L"NODE-A");
        Happen("quorum-loss");
        EXPECT_EQ(NameCode(resource), code);
        EXPECT_EQ(OnlineClusterResource(resource), code);
        EXPECT_EQ(GetClusterGroupState(group, nullptr, nullptr), ClusterGroupStateUnknown);
        EXPECT_EQ(GetLastError(), code);
        EXPECT_EQ(GetClusterNodeState(node), ClusterNodeStateUnknown);
        EXPECT_EQ(GetLastError(), code);
        EXPECT_EQ(ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE), nullptr);
        EXPECT_EQ(GetLastError(), code);
        EXPECT_EQ(OpenClusterGroup(m_cluster, L"EVS1"), nullptr);
        EXPECT_EQ(GetLastError(), code);
        EXPECT_EQ(OpenCluster(nullptr), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(EPT_S_NOT_REGISTERED)) << "who comes anew is told otherwise";
    }
    EXPECT_EQ(LoadError(R"({"cluster": {"name": "C", "behaviour": {"lost": 0}}, "nodes": [{"name": "N"}]})"),
              "cluster.behaviour.lost: a code other than 0 is expected");
}

TEST_F(LostService, HandlesReconnectWhenItStartsAgainUnlessTheyGoStale) {
    for (const bool goStale : {false, true}) {
        LoadWith(goStale ? "\"handles\": \"go-stale\"" : "\"handles\": \"reconnect\"");
        const HRESOURCE resource = OpenClusterResource(m_cluster, L"EVS1 IP");
        Happen("quorum-loss");
        EXPECT_EQ(NameCode(resource), static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE));
        EXPECT_EQ(ClusSimHappen("node-up", "NODE-A", nullptr, nullptr, 0), 0u);
        EXPECT_EQ(NameCode(resource), goStale ? static_cast<DWORD>(ERROR_INVALID_HANDLE) : 0u);
        const ClusterOwner anew(OpenCluster(nullptr));
        EXPECT_NE(anew, nullptr);
        const ResourceOwner reopened(OpenClusterResource(anew, L"EVS1 IP"));
        EXPECT_EQ(NameCode(reopened), 0u);
        EXPECT_TRUE(CloseClusterResource(resource)) << "a stale handle is there to be closed";
    }
}

TEST_F(LostService, HandlesGoStaleAndReconnectBetweenTwoCalls) {
    Load();
    ASSERT_TRUE(ClusSimAddFault("ClusterResourceControl#2=event:\"handles-stale\""));
    ASSERT_TRUE(ClusSimAddFault("ClusterResourceControl#4=event:\"handles-reconnect\""));
    const ResourceOwner resource = Resource(L"EVS1 IP");
    EXPECT_EQ(NameCode(resource), 0u);
    EXPECT_EQ(NameCode(resource), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(OpenClusterResource(m_cluster, L"EVS1 IP"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(NameCode(resource), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(NameCode(resource), 0u);
}

class TimedEvent : public LostService {};

TEST_F(TimedEvent, HappensWhenItsTimeHasCome) {
    ClusSimUseManualClock();
    const std::string model = Replaced(MailCluster, "\"state\": \"down\"", "\"state\": \"up\"");
    Load(Replaced(model, R"(, "possibleOwners": ["NODE-A"])", ""));
    ASSERT_TRUE(ClusSimAddFault("time@5=event:\"move EVS1 NODE-B\""));
    ASSERT_TRUE(ClusSimAddFault("time@8=event:\"fail EVS1 IP\""));
    ASSERT_TRUE(ClusSimAddFault("time@9=event:\"quorum-loss\""));
    const GroupOwner group = Group(L"EVS1");
    const auto owner = [&group] { return OwnerOf(group); };
    EXPECT_EQ(owner(), L"NODE-A");
    ClusSimAdvanceClock(4999);
    EXPECT_EQ(owner(), L"NODE-A");
    ClusSimAdvanceClock(1);
    EXPECT_EQ(owner(), L"NODE-B");
    ClusSimAdvanceClock(2999);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOnline);
    ClusSimAdvanceClock(1);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceFailed);
    EXPECT_EQ(owner(), L"NODE-B");
    ClusSimAdvanceClock(1000);
    EXPECT_EQ(owner(), L"");
}

TEST_F(TimedEvent, HappensAtItsOwnTimeHoweverFarTheClockGoes) {
    ClusSimUseManualClock();
    Load(Replaced(MailCluster, "\"name\": \"MAILCLUSTER\"", "\"name\": \"MAILCLUSTER\", \"clock\": 1000000"));
    ClusSimRecordEvents(1);
    ASSERT_TRUE(ClusSimAddFault("time@20=event:\"node-up NODE-B\""));
    ASSERT_TRUE(ClusSimAddFault("time@10=event:\"node-pause NODE-A\""));
    EXPECT_EQ(ClusSimHappen("wait", "60", nullptr, nullptr, 0), 0u);
    std::vector<char> text(ClusSimReadEvents(nullptr, 0));
    ClusSimReadEvents(text.data(), text.size());
    EXPECT_THAT(text.data(), HasSubstr("{\"at\":1010000,\"kind\":\"node\",\"name\":\"NODE-A\",\"what\":\"is paused\""));
    EXPECT_THAT(text.data(), HasSubstr("{\"at\":1020000,\"kind\":\"node\",\"name\":\"NODE-B\",\"what\":\"comes up\""));
    EXPECT_THAT(ReadModel(), HasSubstr("\"clock\": 1060000"));
}

TEST_F(TimedEvent, IsNothingButAnEventAtAWholeNumberOfSeconds) {
    EXPECT_TRUE(Accepts("time@0=event:\"service-stop\""));
    EXPECT_FALSE(Accepts("time@5=5"));
    EXPECT_FALSE(Accepts("time=event:\"service-stop\""));
    EXPECT_FALSE(Accepts("time@soon=event:\"service-stop\""));
    EXPECT_FALSE(Accepts("time@-1=event:\"service-stop\""));
    EXPECT_FALSE(Accepts("time@5#2=event:\"service-stop\""));
}
