// The calls that move groups, fail resources and pause nodes; what is kept of it in a model file.
#include "SimulatorTest.h"

using testing::HasSubstr;
using testing::Not;

namespace {

// Two nodes that are up, and on which everything may run; what fails is acted on.
std::string TwoNodes() {
    std::string model = Replaced(MailCluster, R"({"name": "NODE-B", "state": "down"})", R"({"name": "NODE-B"})");
    model = Replaced(model, R"(, "possibleOwners": ["NODE-A"])", "");
    return Replaced(model, R"("MAILCLUSTER")", R"("MAILCLUSTER", "behaviour": {"failures": "acted-on"})");
}

DWORD Code(unsigned long code) {
    return static_cast<DWORD>(code);
}

} // namespace

class GroupMove : public SimulatorTest {
protected:
    std::wstring OwnerOf(const wchar_t* group) {
        wchar_t node[100] = L"";
        DWORD cch = 100;
        EXPECT_NE(GetClusterGroupState(Group(group), node, &cch), ClusterGroupStateUnknown);
        return node;
    }
};

TEST_F(GroupMove, GoesToTheNodeThatIsNamed) {
    Load(TwoNodes());
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), Node(L"NODE-B")), 0u);
    EXPECT_EQ(OwnerOf(L"EVS1"), L"NODE-B");
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOnline);
    EXPECT_EQ(StateOf(L"EVS1 SA"), ClusterResourceOffline) << "it was offline before";
}

TEST_F(GroupMove, GoesToTheNextNodeWithoutAName) {
    Load(TwoNodes());
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), nullptr), 0u);
    EXPECT_EQ(OwnerOf(L"EVS1"), L"NODE-B");
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), nullptr), 0u);
    EXPECT_EQ(OwnerOf(L"EVS1"), L"NODE-A");
}

TEST_F(GroupMove, GoesToTheMostPreferredNodeWithoutAName) {
    Load(R"({"cluster": {"name": "C", "coreGroup": "none"},
        "nodes": [{"name": "N1"}, {"name": "N2"}, {"name": "N3"}],
        "groups": [{"name": "G", "owner": "N2", "preferredOwners": ["N3", "N2"]}]})");
    EXPECT_EQ(MoveClusterGroup(Group(L"G"), nullptr), 0u);
    EXPECT_EQ(OwnerOf(L"G"), L"N3") << "behind N2 is N1";
}

TEST_F(GroupMove, IsRefusedWithTheCodeOfItsReason) {
    Load();
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), Node(L"NODE-B")), Code(ERROR_CLUSTER_NODE_DOWN));
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), Node(L"NODE-C")), Code(ERROR_CLUSTER_NODE_PAUSED));
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), nullptr), Code(ERROR_HOST_NODE_NOT_AVAILABLE));
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), Node(L"NODE-A")), 0u) << "it is there";
    EXPECT_EQ(MoveClusterGroup(nullptr, nullptr), Code(ERROR_INVALID_HANDLE));
    ExpectBadHandleCalls(1);
    EXPECT_EQ(OwnerOf(L"EVS1"), L"NODE-A");
}

TEST_F(GroupMove, ThatTakesTimeIsPendingAndNotToBeMixedWithAnother) {
    Load(Replaced(TwoNodes(), "\"private\": {\"Name\": \"MAIL1\"}",
                  "\"private\": {\"Name\": \"MAIL1\"}, \"offlineMs\": 5000"));
    ClusSimUseManualClock();
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), Node(L"NODE-B")), Code(ERROR_IO_PENDING));
    EXPECT_EQ(OwnerOf(L"EVS1"), L"NODE-A");
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS1"), Node(L"NODE-B")), Code(ERROR_INVALID_STATE));
    EXPECT_EQ(OnlineClusterGroup(Group(L"EVS1"), nullptr), Code(ERROR_INVALID_STATE));
    EXPECT_EQ(OfflineClusterGroup(Group(L"EVS1")), Code(ERROR_INVALID_STATE));
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Disk")), Code(ERROR_INVALID_STATE));
    ClusSimAdvanceClock(5000);
    EXPECT_EQ(OwnerOf(L"EVS1"), L"NODE-B");
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOnline);
}

TEST_F(GroupMove, OnlineAndOfflineConcernAllOfTheGroup) {
    Load(TwoNodes());
    EXPECT_EQ(OfflineClusterGroup(Group(L"EVS1")), 0u);
    EXPECT_EQ(StateOf(L"EVS1 Disk"), ClusterResourceOffline);
    EXPECT_EQ(OnlineClusterGroup(Group(L"EVS1"), nullptr), 0u);
    EXPECT_EQ(StateOf(L"EVS1 Store"), ClusterResourceOnline);
    EXPECT_EQ(OnlineClusterGroup(Group(L"EVS2"), nullptr), Code(ERROR_SHARING_PAUSED));
    Load(Replaced(TwoNodes(), R"(["EVS1 Name", "EVS1 Disk"])",
                  R"(["EVS1 Name", "EVS1 Disk"], "possibleOwners": ["NODE-A"])"));
    EXPECT_EQ(OnlineClusterGroup(Group(L"EVS1"), Node(L"NODE-B")), Code(ERROR_HOST_NODE_NOT_GROUP_OWNER))
        << "the attendant, which is offline, may run on NODE-A only";
}

TEST_F(GroupMove, AFailedResourceIsRestartedWhereFailuresAreActedOn) {
    Load(TwoNodes());
    EXPECT_EQ(FailClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOnline);
    EXPECT_THAT(ReadModel(), HasSubstr("\"restartsAt\""));
    EXPECT_EQ(FailClusterResource(Resource(L"EVS1 Store")), Code(ERROR_RESMON_INVALID_STATE)) << "it is offline";
}

TEST_F(GroupMove, OnlyWhatIsOnlineFailsOnRequest) {
    Load(Replaced(TwoNodes(), "\"private\": {\"Name\": \"MAIL1\"}",
                  "\"private\": {\"Name\": \"MAIL1\"}, \"offlineMs\": 5000"));
    ClusSimUseManualClock();
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 Name")), Code(ERROR_IO_PENDING));
    EXPECT_EQ(FailClusterResource(Resource(L"EVS1 Name")), Code(ERROR_RESMON_INVALID_STATE));
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOfflinePending);
}

TEST_F(GroupMove, AFailedResourceStaysSoWhereFailuresAreLeft) {
    Load();
    EXPECT_EQ(FailClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceFailed);
    EXPECT_EQ(StateOf(L"EVS1 Name"), ClusterResourceOnline) << "nothing follows from it";
    EXPECT_THAT(ReadModel(), Not(HasSubstr("\"restartsAt\"")));
}

TEST_F(GroupMove, ANodeIsPausedAndResumed) {
    Load();
    EXPECT_EQ(PauseClusterNode(Node(L"NODE-A")), 0u);
    EXPECT_EQ(GetClusterNodeState(Node(L"NODE-A")), ClusterNodePaused);
    EXPECT_EQ(PauseClusterNode(Node(L"NODE-A")), 0u) << "it is";
    EXPECT_EQ(PauseClusterNode(Node(L"NODE-B")), Code(ERROR_CLUSTER_NODE_DOWN));
    EXPECT_EQ(ResumeClusterNode(Node(L"NODE-A")), 0u);
    EXPECT_EQ(ResumeClusterNode(Node(L"NODE-A")), Code(ERROR_CLUSTER_NODE_NOT_PAUSED));
    EXPECT_EQ(ResumeClusterNode(Node(L"NODE-B")), Code(ERROR_CLUSTER_NODE_DOWN));
}

TEST_F(GroupMove, ThePersistentStateIsWhatWasAskedForLast) {
    Load(TwoNodes());
    const auto isWanted = [this](const wchar_t* name) {
        const Bytes list = Control(Resource(name), CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES);
        DWORD value = 7;
        EXPECT_EQ(ResUtilFindDwordProperty(const_cast<unsigned char*>(list.data()), static_cast<DWORD>(list.size()),
                                           L"PersistentState", &value),
                  0u);
        return value;
    };
    EXPECT_EQ(isWanted(L"EVS1 Name"), 1u);
    EXPECT_EQ(isWanted(L"EVS1 Store"), 0u);
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(isWanted(L"EVS1 IP"), 0u);
    EXPECT_EQ(isWanted(L"EVS1 Name"), 1u) << "it only went down with the other one";
    EXPECT_THAT(ReadModel(), HasSubstr("\"PersistentState\": 1"));
    ASSERT_EQ(LoadError(ReadModel()), "");
    EXPECT_EQ(isWanted(L"EVS1 Name"), 1u);
}

TEST_F(GroupMove, TheSameEventsGiveTheSameModel) {
    const std::string model = Replaced(TwoNodes(), "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"clock\": 13000000000000");
    std::string first;
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(LoadError(model), "");
        m_cluster = ClusterOwner(OpenCluster(nullptr));
        ResourceOwner made(CreateClusterResource(Group(L"EVS1"), L"EVS1 New", L"Generic Service", 0));
        EXPECT_EQ(ClusSimHappen("fail", "EVS1 IP", nullptr, nullptr, 0), 0u);
        EXPECT_EQ(ClusSimHappen("wait", "30", nullptr, nullptr, 0), 0u);
        EXPECT_EQ(ClusSimHappen("node-down", "NODE-A", nullptr, nullptr, 0), 0u);
        if (round == 0) {
            first = ReadModel();
        }
    }
    EXPECT_EQ(ReadModel(), first) << "the new resource's ID too";
    EXPECT_THAT(first, HasSubstr("\"clock\": 13000000030000"));
}

TEST_F(GroupMove, RequiredDependenciesAreNeededToComeOnline) {
    Load(TwoNodes());
    const ResourceOwner name(CreateClusterResource(Group(L"EVS1"), L"Lone Name", L"Network Name", 0));
    EXPECT_EQ(OnlineClusterResource(name), Code(ERROR_DEPENDENCY_NOT_FOUND));
    EXPECT_EQ(StateOf(L"Lone Name"), ClusterResourceOffline);
    EXPECT_EQ(AddClusterResourceDependency(name, Resource(L"EVS1 IP")), 0u);
    EXPECT_EQ(OnlineClusterResource(name), 0u);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 Store")), 0u) << "it has all that it needs";
    EXPECT_THAT(ReadModel(), Not(HasSubstr("requiredDependencies")));
}

TEST_F(GroupMove, RequiredDependenciesAreNotLookedAtWhereTheyAreIgnored) {
    Load(Replaced(TwoNodes(), "\"failures\": \"acted-on\"",
                  "\"failures\": \"acted-on\", \"requiredDependencies\": \"ignored\""));
    const ResourceOwner name(CreateClusterResource(Group(L"EVS1"), L"Lone Name", L"Network Name", 0));
    EXPECT_EQ(OnlineClusterResource(name), 0u);
    EXPECT_THAT(ReadModel(), HasSubstr("\"requiredDependencies\": \"ignored\""));
}

TEST_F(GroupMove, ModelsThatSayItWronglyAreRefused) {
    const struct {
        const char* from;
        const char* to;
        const char* error;
    } cases[] = {
        {"\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"quorum\": \"odd\"",
         "cluster.quorum: \"shared\" or \"majority\" is expected"},
        {"\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"clock\": -1", "cluster.clock: "},
        {"\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"failures\": \"no\"}",
         "cluster.behaviour.failures: \"left\" or \"acted-on\" is expected"},
        {"\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"failoversUsedUp\": \"no\"}",
         "cluster.behaviour.failoversUsedUp: \"group-offline\" or \"resource-failed\" is expected"},
        {"\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"behaviour\": {\"requiredDependencies\": \"no\"}",
         "cluster.behaviour.requiredDependencies: \"ignored\" or \"enforced\" is expected"},
        {"\"owner\": \"NODE-C\"", "\"owner\": \"NODE-C\", \"movingTo\": \"NODE-X\"",
         "groups[1].movingTo: there is no node NODE-X"},
        {"\"owner\": \"NODE-C\"", "\"owner\": \"NODE-C\", \"failoversAt\": [\"now\"]",
         "groups[1].failoversAt[0]: a time is expected"},
        {"\"private\": {\"Name\": \"MAIL1\"}", "\"common\": {\"PersistentState\": 2}",
         "resources[1].common.PersistentState: 0 or 1 is expected"},
    };
    for (const auto& wrong : cases) {
        EXPECT_THAT(LoadError(Replaced(MailCluster, wrong.from, wrong.to)), HasSubstr(wrong.error));
    }
}
