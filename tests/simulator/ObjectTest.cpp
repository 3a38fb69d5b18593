// Opening and closing the cluster and its objects; handles; what the cluster, groups and nodes tell.
#include "SimulatorTest.h"

class ClusterObject : public SimulatorTest {};

TEST_F(ClusterObject, WithoutAModelNoClusterServiceRuns) {
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EPT_S_NOT_REGISTERED));
}

TEST_F(ClusterObject, AClusterThatDoesNotRunCannotBeOpened) {
    ASSERT_EQ(LoadError(Replaced(MailCluster, "\"MAILCLUSTER\"", "\"MAILCLUSTER\", \"running\": false")), "");
    EXPECT_EQ(OpenCluster(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(EPT_S_NOT_REGISTERED));
    EXPECT_EQ(OpenCluster(L"MAILCLUSTER"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE));
}

TEST_F(ClusterObject, AClusterIsOpenedByItsNameOrThatOfANode) {
    Load();
    for (const wchar_t* name : {L"mailcluster", L"NODE-A", L"node-b"}) {
        const ClusterOwner cluster(OpenCluster(name));
        EXPECT_NE(static_cast<HCLUSTER>(cluster), nullptr) << name;
    }
    EXPECT_EQ(OpenCluster(L"ELSEWHERE"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE));
}

TEST_F(ClusterObject, ClusterNameFitsWithItsTerminatorAndNotOneShort) {
    Load();
    wchar_t name[16];
    std::fill(std::begin(name), std::end(name), L'#');
    DWORD cch = 11;
    EXPECT_EQ(GetClusterInformation(m_cluster, name, &cch, nullptr), static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(cch, 11u);
    EXPECT_EQ(name[0], L'#');
    cch = 12;
    EXPECT_EQ(GetClusterInformation(m_cluster, name, &cch, nullptr), 0u);
    EXPECT_EQ(cch, 11u);
    EXPECT_STREQ(name, L"MAILCLUSTER");
    EXPECT_EQ(name[12], L'#') << "more was written than the name and its terminator";
}

TEST_F(ClusterObject, VersionIsThatOfTheProtocol) {
    Load();
    CLUSTERVERSIONINFO info = {};
    info.dwVersionInfoSize = sizeof(info);
    EXPECT_EQ(GetClusterInformation(m_cluster, nullptr, nullptr, &info), 0u);
    EXPECT_EQ(info.MajorVersion, 5u);
    info.dwVersionInfoSize = 0;
    EXPECT_EQ(GetClusterInformation(m_cluster, nullptr, nullptr, &info), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST_F(ClusterObject, ObjectsAreFoundWithoutCaseAndResourcesByIdToo) {
    Load();
    Resource(L"evs1 disk");
    Resource(L"AAAAAAAA-0000-0000-0000-000000000003");
    Group(L"evs1");
    Node(L"node-c");
}

TEST_F(ClusterObject, EachKindHasItsOwnNotFoundCode) {
    Load();
    EXPECT_EQ(OpenClusterResource(m_cluster, L"EVS3"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
    EXPECT_EQ(OpenClusterResource(m_cluster, L""), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
    EXPECT_EQ(OpenClusterGroup(m_cluster, L"EVS3"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_GROUP_NOT_FOUND));
    EXPECT_EQ(OpenClusterNode(m_cluster, L"NODE-A.example.com"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CLUSTER_NODE_NOT_FOUND));
    EXPECT_EQ(OpenClusterResource(m_cluster, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST_F(ClusterObject, HandlesOfObjectsOutliveTheClusterHandle) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 IP");
    const GroupOwner group = Group(L"EVS1");
    m_cluster.Close();

    EXPECT_EQ(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr), ClusterResourceOnline);
    EXPECT_EQ(ListGroup(group, CLUSTER_GROUP_ENUM_CONTAINS).size(), 5u);
    const ClusterOwner again(GetClusterFromResource(resource));
    const ResourceOwner other(OpenClusterResource(again, L"EVS1 Disk"));
    EXPECT_NE(static_cast<HRESOURCE>(other), nullptr);
}

TEST_F(ClusterObject, ClusterFromAResourceIsAHandleOfItsOwn) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 IP");
    ClusterOwner second(GetClusterFromResource(resource));
    EXPECT_NE(static_cast<HCLUSTER>(second), static_cast<HCLUSTER>(m_cluster));
    second.Close();
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_NAME), TextOf(L"EVS1 IP"));
    Resource(L"EVS1 Disk");
}

TEST_F(ClusterObject, HandleValuesAreNeverUsedAgain) {
    Load();
    HRESOURCE first = OpenClusterResource(m_cluster, L"EVS1 IP");
    ASSERT_TRUE(CloseClusterResource(first));
    const ResourceOwner second = Resource(L"EVS1 IP");
    EXPECT_NE(first, static_cast<HRESOURCE>(second));
    EXPECT_FALSE(CloseClusterResource(first));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    ExpectBadHandleCalls(1);
}

TEST_F(ClusterObject, NullClosedAndForeignHandlesGiveSixAndAreCounted) {
    Load();
    const GroupOwner group = Group(L"EVS1");
    const HRESOURCE foreign = reinterpret_cast<HRESOURCE>(static_cast<HGROUP>(group));
    HRESOURCE closed = OpenClusterResource(m_cluster, L"EVS1 IP");
    CloseClusterResource(closed);
    std::size_t calls = 0;
    for (const HRESOURCE bad : {static_cast<HRESOURCE>(nullptr), foreign, closed}) {
        EXPECT_EQ(OnlineClusterResource(bad), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(OfflineClusterResource(bad), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(DeleteClusterResource(bad), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(AddClusterResourceDependency(bad, bad), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(SetControl(bad, CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES, Bytes(4)),
                  static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(GetClusterResourceState(bad, nullptr, nullptr, nullptr, nullptr), ClusterResourceStateUnknown);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(GetClusterFromResource(bad), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        EXPECT_EQ(ClusterResourceOpenEnum(bad, 1), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
        calls += 8;
        EXPECT_EQ(ClusSimBadHandleCalls(), calls);
    }
    EXPECT_EQ(CreateClusterResource(nullptr, L"New", L"IP Address", 0), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(OpenClusterGroup(nullptr, L"EVS1"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(CloseCluster(nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(AddClusterResourceNode(Resource(L"EVS1 IP"), nullptr), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    ExpectBadHandleCalls(calls + 4);
}

TEST_F(ClusterObject, OpenHandlesAreCountedByKind) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 IP");
    const NodeOwner node = Node(L"NODE-A");
    HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_GROUP);
    EXPECT_EQ(ClusSimOpenHandles("cluster"), 1u);
    EXPECT_EQ(ClusSimOpenHandles("resource"), 1u);
    EXPECT_EQ(ClusSimOpenHandles("group"), 0u);
    EXPECT_EQ(ClusSimOpenHandles("node"), 1u);
    EXPECT_EQ(ClusSimOpenHandles("enum"), 1u);
    EXPECT_EQ(ClusSimOpenHandles(nullptr), 4u);
    EXPECT_EQ(ClusterCloseEnum(list), 0u);
    EXPECT_EQ(ClusSimOpenHandles("enum"), 0u);
}

TEST_F(ClusterObject, SuccessAndCodesLeaveMisleadingLastErrors) {
    Load();
    SetLastError(1);
    const ResourceOwner resource = Resource(L"EVS1 IP");
    EXPECT_EQ(GetLastError(), AfterSuccess);
    EXPECT_EQ(DeleteClusterResource(resource), static_cast<DWORD>(ERROR_RESOURCE_ONLINE));
    EXPECT_EQ(GetLastError(), AfterFailure);
    EXPECT_EQ(OnlineClusterResource(resource), 0u);
    EXPECT_EQ(GetLastError(), AfterSuccess);
}

TEST_F(ClusterObject, ANodeThatJoinsIsNeitherUpNorDown) {
    Load(
        R"({"cluster": {"name": "MAILCLUSTER", "coreGroup": "none"}, "nodes": [{"name": "NODE-A"}, {"name": "NODE-B", "state": "joining"}]})");
    EXPECT_EQ(GetClusterNodeState(Node(L"NODE-A")), ClusterNodeUp);
    EXPECT_EQ(GetClusterNodeState(Node(L"NODE-B")), ClusterNodeJoining);
}

TEST_F(ClusterObject, NodesAndGroupsTellTheirStates) {
    Load();
    EXPECT_EQ(GetClusterNodeState(Node(L"NODE-A")), ClusterNodeUp);
    EXPECT_EQ(GetClusterNodeState(Node(L"NODE-B")), ClusterNodeDown);
    EXPECT_EQ(GetClusterNodeState(Node(L"NODE-C")), ClusterNodePaused);
    wchar_t owner[8];
    DWORD cch = 8;
    EXPECT_EQ(GetClusterGroupState(Group(L"EVS1"), owner, &cch), ClusterGroupPartialOnline);
    EXPECT_STREQ(owner, L"NODE-A");
    EXPECT_EQ(cch, 6u);
    EXPECT_EQ(GetClusterGroupState(Group(L"EVS2"), nullptr, nullptr), ClusterGroupOffline);
    cch = 6;
    EXPECT_EQ(GetClusterGroupState(Group(L"EVS1"), owner, &cch), ClusterGroupStateUnknown);
    EXPECT_EQ(cch, 6u);
}

TEST_F(ClusterObject, AGroupIsFailedBeforeItIsPending) {
    const std::string failed =
        Replaced(MailCluster, "\"group\": \"EVS2\"", "\"group\": \"EVS2\", \"state\": \"Failed\"");
    Load(failed);
    EXPECT_EQ(GetClusterGroupState(Group(L"EVS2"), nullptr, nullptr), ClusterGroupFailed);
}

TEST_F(ClusterObject, ThisComputerIsReportedByItsNameAndWrittenBackAsADot) {
    wchar_t computer[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(GetComputerNameW(computer, &cch));
    Load(R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "."}, {"name": "OTHER"}],
             "groups": [{"name": "G", "owner": ".", "preferredOwners": ["."]}],
             "resources": [{"name": "R", "type": "IP Address", "id": "1", "group": "G", "possibleOwners": ["."]}]})");
    EXPECT_THAT(ListCluster(m_cluster, CLUSTER_ENUM_NODE),
                testing::ElementsAre(ListedName{1, computer}, ListedName{1, L"OTHER"}));
    EXPECT_THAT(ListResource(Resource(L"R"), CLUSTER_RESOURCE_ENUM_NODES),
                testing::ElementsAre(ListedName{4, computer}));
    wchar_t owner[MAX_COMPUTERNAME_LENGTH + 1];
    cch = MAX_COMPUTERNAME_LENGTH + 1;
    GetClusterGroupState(Group(L"G"), owner, &cch);
    EXPECT_STREQ(owner, computer);
    const std::string model = ReadModel();
    EXPECT_EQ(model.find(std::string(computer, computer + cch)), std::string::npos);
    EXPECT_EQ(LoadError(model), "");
}
