// Creating, deleting, bringing online and taking offline; the state call; the clock.
#include "SimulatorTest.h"

using testing::HasSubstr;

class ResourceLife : public SimulatorTest {
protected:
    // The mail cluster with further members for one of its resources, which is named by its ID's last digit.
    static std::string With(int id, const std::string& members) {
        const std::string text = "-00000000000" + std::to_string(id) + "\"";
        return Replaced(MailCluster, text, text + ", " + members);
    }
};

TEST_F(ResourceLife, ANewResourceIsOfflineWithAllNodesAsPossibleOwners) {
    Load();
    const ResourceOwner made(CreateClusterResource(Group(L"EVS2"), L"New Name", L"network name", 0));
    ASSERT_NE(static_cast<HRESOURCE>(made), nullptr);
    EXPECT_EQ(StateOf(L"new name"), ClusterResourceOffline);
    EXPECT_EQ(ListResource(made, CLUSTER_RESOURCE_ENUM_NODES).size(), 3u);
    EXPECT_EQ(ListResource(made, CLUSTER_RESOURCE_ENUM_DEPENDS).size(), 0u);
    EXPECT_EQ(Control(made, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE), TextOf(L"Network Name"));
    EXPECT_EQ(Control(made, CLUSCTL_RESOURCE_GET_ID).size(), 74u);
    EXPECT_EQ(ListGroup(Group(L"EVS2"), CLUSTER_GROUP_ENUM_CONTAINS).back().name, L"New Name");
}

TEST_F(ResourceLife, CreationIsRefusedWithTheCodeOfItsReason) {
    Load();
    const GroupOwner group = Group(L"EVS1");
    const struct {
        const wchar_t* name;
        const wchar_t* type;
        DWORD flags;
        DWORD code;
    } cases[] = {
        {L"evs2 ip", L"IP Address", 0, ERROR_OBJECT_ALREADY_EXISTS},
        {L"AAAAAAAA-0000-0000-0000-000000000006", L"IP Address", 0, ERROR_OBJECT_ALREADY_EXISTS},
        {L"New", L"No Such Type", 0, 5078},
        {L"New", L"IP Address", 2, ERROR_INVALID_PARAMETER},
        {L"", L"IP Address", 0, ERROR_INVALID_NAME},
        {L"  ", L"IP Address", 0, ERROR_INVALID_NAME},
        {nullptr, L"IP Address", 0, ERROR_INVALID_PARAMETER},
        {L"New", nullptr, 0, ERROR_INVALID_PARAMETER},
    };
    for (const auto& refused : cases) {
        EXPECT_EQ(CreateClusterResource(group, refused.name, refused.type, refused.flags), nullptr);
        EXPECT_EQ(GetLastError(), refused.code);
    }
    EXPECT_EQ(ListCluster(m_cluster, CLUSTER_ENUM_RESOURCE).size(), 6u);
}

TEST_F(ResourceLife, OnlyAnOfflineOrFailedResourceWithoutDependantsIsDeleted) {
    Load(With(6, "\"state\": \"Failed\""));
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS1 IP")), static_cast<DWORD>(ERROR_RESOURCE_ONLINE));
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_DEPENDENT_RESOURCE_EXISTS));
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS2 IP")), 0u);
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS1 Store")), 0u);
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS1 SA")), 0u) << "its dependant is gone";
    EXPECT_EQ(ListResource(Resource(L"EVS1 Name"), CLUSTER_RESOURCE_ENUM_PROVIDES).size(), 0u);
}

TEST_F(ResourceLife, TheCodeForARunningResourceIsTheModels) {
    Load(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"deleteOnline\": 5023}"));
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS1 IP")), static_cast<DWORD>(ERROR_INVALID_STATE));
}

TEST_F(ResourceLife, AHandleOfADeletedResourceIsStaleAndStillToBeClosed) {
    Load();
    ResourceOwner stale = Resource(L"EVS2 IP");
    EXPECT_EQ(DeleteClusterResource(stale), 0u);
    const DWORD gone = ERROR_RESOURCE_NOT_AVAILABLE;
    EXPECT_EQ(DeleteClusterResource(stale), gone);
    EXPECT_EQ(OnlineClusterResource(stale), gone);
    EXPECT_EQ(OfflineClusterResource(stale), gone);
    EXPECT_EQ(GetClusterResourceState(stale, nullptr, nullptr, nullptr, nullptr), ClusterResourceStateUnknown);
    EXPECT_EQ(GetLastError(), gone);
    // A new resource of the same name is another one.
    const ResourceOwner again(CreateClusterResource(Group(L"EVS2"), L"EVS2 IP", L"IP Address", 0));
    EXPECT_EQ(OnlineClusterResource(stale), gone);
    EXPECT_EQ(ClusSimOpenHandles("resource"), 2u);
}

TEST_F(ResourceLife, OnlineBringsUpWhatTheResourceDependsOn) {
    Load();
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), 0u);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnline);
    EXPECT_EQ(StateOf(L"EVS1 Store"), ClusterResourceOnline);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), 0u) << "it is online already";
}

TEST_F(ResourceLife, OfflineTakesDependantsDownFirst) {
    Load();
    ASSERT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), 0u);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    for (const wchar_t* name : {L"EVS1 IP", L"EVS1 Name", L"EVS1 SA", L"EVS1 Store"}) {
        EXPECT_EQ(StateOf(name), ClusterResourceOffline) << name;
    }
    EXPECT_EQ(StateOf(L"EVS1 Disk"), ClusterResourceOnline);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u) << "it is offline already";
}

TEST_F(ResourceLife, AFailureToComeOnlineEndsInFailed) {
    Load(With(4, "\"failsOnline\": true"));
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), 5942u) << "what it depends on failed";
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceFailed);
    EXPECT_EQ(StateOf(L"EVS1 Store"), ClusterResourceOffline);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_RESMON_ONLINE_FAILED));
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_RESOURCE_FAILED));
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceFailed);
}

TEST_F(ResourceLife, OfflineOfAFailedResourceSucceedsWhenTheModelSaysSo) {
    Load(Replaced(With(6, "\"state\": \"Failed\""), "\"MAILCLUSTER\"",
                  "\"MAILCLUSTER\", \"behaviour\": {\"offlineFailed\": 0}"));
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS2 IP")), 0u);
    EXPECT_EQ(StateOf(L"EVS2 IP"), ClusterResourceOffline);
}

TEST_F(ResourceLife, ThePossibleOwnersAndThePausedNodeAreRespected) {
    Load(Replaced(MailCluster, "\"possibleOwners\": [\"NODE-A\"]", "\"possibleOwners\": [\"NODE-B\"]"));
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_HOST_NODE_NOT_RESOURCE_OWNER));
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOffline);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS2 IP")), static_cast<DWORD>(ERROR_SHARING_PAUSED));
}

TEST_F(ResourceLife, AnAsynchronousOnlineEndsWhenTheClockPasses) {
    Load(With(4, "\"onlineMs\": 1000"));
    ClusSimUseManualClock();
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_IO_PENDING));
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnlinePending);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_INVALID_STATE));
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_INVALID_STATE));
    EXPECT_EQ(DeleteClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_RESOURCE_ONLINE));
    ClusSimAdvanceClock(999);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnlinePending);
    ClusSimAdvanceClock(1);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnline);
}

TEST_F(ResourceLife, WaitingForAnAsynchronousProviderIsAsynchronousToo) {
    Load(Replaced(With(4, "\"onlineMs\": 1000"), "-000000000005\"", "-000000000005\", \"onlineMs\": 500"));
    ClusSimUseManualClock();
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), static_cast<DWORD>(ERROR_IO_PENDING));
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnlinePending);
    ClusSimAdvanceClock(1000);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnline);
    EXPECT_EQ(StateOf(L"EVS1 Store"), ClusterResourceOnlinePending);
    ClusSimAdvanceClock(500);
    EXPECT_EQ(StateOf(L"EVS1 Store"), ClusterResourceOnline);
}

TEST_F(ResourceLife, AnAsynchronousFailureTakesItsDependantsAlong) {
    Load(With(4, "\"onlineMs\": 1000, \"failsOnline\": true"));
    ClusSimUseManualClock();
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), static_cast<DWORD>(ERROR_IO_PENDING));
    ClusSimAdvanceClock(1000);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceFailed);
    EXPECT_EQ(StateOf(L"EVS1 Store"), ClusterResourceFailed);
}

TEST_F(ResourceLife, AnAsynchronousOfflineEndsWhenTheClockPasses) {
    Load(With(2, "\"offlineMs\": 300"));
    ClusSimUseManualClock();
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), static_cast<DWORD>(ERROR_IO_PENDING));
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOfflinePending);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOfflinePending);
    ClusSimAdvanceClock(300);
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOffline);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOffline);
}

TEST_F(ResourceLife, AResourceThatStaysPendingNeverEnds) {
    Load(With(4, "\"staysPending\": true"));
    ClusSimUseManualClock();
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_IO_PENDING));
    ClusSimAdvanceClock(0xFFFFFFFF);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnlinePending);
}

TEST_F(ResourceLife, TheRealClockEndsTransitionsToo) {
    Load(With(4, "\"onlineMs\": 30"));
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), static_cast<DWORD>(ERROR_IO_PENDING));
    for (int i = 0; i < 200 && StateOf(L"EVS1 SA") != ClusterResourceOnline; ++i) {
        Sleep(10);
    }
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOnline);
}

TEST_F(ResourceLife, StateTellsOwnerAndGroup) {
    Load();
    wchar_t node[8];
    wchar_t group[8];
    std::fill(std::begin(node), std::end(node), L'#');
    DWORD cchNode = 7;
    DWORD cchGroup = 5;
    EXPECT_EQ(GetClusterResourceState(Resource(L"EVS1 SA"), node, &cchNode, group, &cchGroup), ClusterResourceOffline);
    EXPECT_STREQ(node, L"NODE-A");
    EXPECT_EQ(node[7], L'#');
    EXPECT_STREQ(group, L"EVS1");
    EXPECT_EQ(cchNode, 6u);
    EXPECT_EQ(cchGroup, 4u);
}

TEST_F(ResourceLife, StateWithATooShortBufferFailsAndTellsBothLengths) {
    Load();
    wchar_t node[8];
    wchar_t group[8];
    const ResourceOwner resource = Resource(L"EVS1 IP");
    DWORD cchNode = 6;
    DWORD cchGroup = 8;
    EXPECT_EQ(GetClusterResourceState(resource, node, &cchNode, group, &cchGroup), ClusterResourceStateUnknown);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(cchNode, 6u);
    EXPECT_EQ(cchGroup, 4u);
}

TEST_F(ResourceLife, StateIgnoresACountWithoutABuffer) {
    Load();
    DWORD cchNode = 0;
    DWORD cchGroup = 0;
    EXPECT_EQ(GetClusterResourceState(Resource(L"EVS1 IP"), nullptr, &cchNode, nullptr, &cchGroup),
              ClusterResourceOnline);
}

TEST_F(ResourceLife, EveryStateOfTheModelIsReported) {
    const std::pair<const char*, int> states[] = {{"Unknown", -1},  {"Inherited", 0},       {"Initializing", 1},
                                                  {"Online", 2},    {"Offline", 3},         {"Failed", 4},
                                                  {"Pending", 128}, {"OnlinePending", 129}, {"OfflinePending", 130}};
    for (const auto& state : states) {
        const std::string member = "\"state\": \"" + std::string(state.first) + "\"";
        ASSERT_EQ(LoadError(With(6, member)), "");
        const ClusterOwner cluster(OpenCluster(nullptr));
        const ResourceOwner resource(OpenClusterResource(cluster, L"EVS2 IP"));
        EXPECT_EQ(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr), state.second);
        EXPECT_THAT(ReadModel(), HasSubstr(member));
    }
}
