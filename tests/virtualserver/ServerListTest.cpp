// EnumServersOnCurrentNode: which servers, the count protocol, the log, the calls.
#include "ServerFixture.h"

#include <array>
#include <list>

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

using ServerList = ServerTest;

// The servers' names, by the count protocol.
Names ServerNames() {
    Util util;
    int count = 0;
    EXPECT_EQ(util.EnumServersOnCurrentNode(nullptr, &count), Util::ENUM_VS_RESULT_MORE_DATA);
    std::vector<Info> records(static_cast<std::size_t>(count) + 1);
    const int announced = count;
    EXPECT_EQ(util.EnumServersOnCurrentNode(records.data(), &count), Util::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(count, announced);
    Names names;
    for (int i = 0; i < count; ++i) {
        names.push_back(records[static_cast<std::size_t>(i)].m_wsServerName);
    }
    return names;
}
} // namespace

TEST_F(ServerList, HoldsTheServersOfThisNodeInTheClustersOrder) {
    ClusterOf(ThreeServers());
    Util util;
    Guarded<Info, 3> records;
    int count = 3;
    ASSERT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_SUCCESS);
    ASSERT_EQ(count, 2);
    EXPECT_TRUE(records.GuardsIntact());
    EXPECT_TRUE(records.Untouched(2));
    EXPECT_TRUE(records[0].m_bIsOnline);
    EXPECT_STREQ(records[0].m_wsServerName, L"EVS1");
    EXPECT_STREQ(records[0].m_wsServerIP, L"192.0.2.1");
    EXPECT_STREQ(records[0].m_wsDataPath, L"F:\\EVS1");
    EXPECT_EQ(records[0].m_nSmtpInstanceCount, -1);
    EXPECT_FALSE(records[1].m_bIsOnline);
    EXPECT_STREQ(records[1].m_wsServerName, L"EVS2");
    EXPECT_STRNE(records[0].m_wsServerGUID, records[1].m_wsServerGUID);
}

TEST_F(ServerList, OfANullBufferIsTheCountOnly) {
    ClusterOf(ThreeServers());
    Util util;
    for (const int before : {-1, 0, 1, 2, 100}) {
        int count = before;
        EXPECT_EQ(util.EnumServersOnCurrentNode(nullptr, &count), Util::ENUM_VS_RESULT_MORE_DATA);
        EXPECT_EQ(count, 2);
    }
    EXPECT_THAT(TakeMessages(), Contains("I Returning virtual server count 2 only."));
}

TEST_F(ServerList, FitsABufferOfExactlyTheCount) {
    ClusterOf(ThreeServers());
    EXPECT_THAT(ServerNames(), ElementsAre(L"EVS1", L"EVS2"));
}

TEST_F(ServerList, ThatDoesNotFitLeavesTheBufferAloneAndLogsTheCountTwice) {
    ClusterOf(ThreeServers());
    Util util;
    for (const int room : {1, 0, -5}) {
        Guarded<Info, 2> records;
        int count = room;
        EXPECT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_MORE_DATA);
        EXPECT_EQ(count, 2);
        EXPECT_TRUE(records.Untouched(0));
        EXPECT_TRUE(records.Untouched(1));
        EXPECT_THAT(TakeMessages(), Contains("I The buffer is supplied with 2 space, but 2 is needed, returning "
                                             "ENUM_VS_RESULT_MORE_DATA"));
    }
}

TEST_F(ServerList, OfANodeWithoutServersIsEmptyAndASuccess) {
    SetComputerName(L"NODE-C");
    ClusterOf(ThreeServers());
    Util util;
    Guarded<Info> record;
    int count = 0;
    EXPECT_EQ(util.EnumServersOnCurrentNode(record.get(), &count), Util::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(record.Untouched());
}

TEST_F(ServerList, WholeTranscript) {
    ModelBuilder model = OneServer();
    ClusterOf(model);
    Util util;
    Forget();
    Info record;
    int count = 1;
    ASSERT_EQ(util.EnumServersOnCurrentNode(&record, &count), Util::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(TakeLog(), Lines({
                             "> CVirtualServerUtil::EnumServersOnCurrentNode()",
                             "I m_bIsCluster is true, enumerating virtual servers.",
                             "> CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()",
                             "> CCluster::OpenByLPC()",
                             "< CCluster::OpenByLPC()",
                             "I EnumNames, returns 3 resources.",
                             "I Current node is: NODE-A",
                             "I Opening resource:",
                             "I EVS1 IP",
                             "I Skip resource EVS1 IP:IP Address",
                             "I Opening resource:",
                             "I EVS1 Name",
                             "I Skip resource EVS1 Name:Network Name",
                             "I Opening resource:",
                             "I EVS1 Product",
                             "I Process resource EVS1 Product:clusRDLL...",
                             "> CVirtualServerUtil::GetVirtualServerInfo()",
                             "> GetResourceDependencyByType",
                             "> GetResourceDependencyByType",
                             "I Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY",
                             "< CVirtualServerUtil::GetVirtualServerInfo()",
                             "I adding resource EVS1 Product to the return server list.",
                             "I Returning 1 virtual servers data.",
                             "< CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()",
                             "< CVirtualServerUtil::EnumServersOnCurrentNode()",
                         }));
}

TEST_F(ServerList, AsksTheClusterOnlyWhatItNeeds) {
    ClusterOf(OneServer());
    Util util;
    Forget();
    Info record;
    int count = 1;
    ASSERT_EQ(util.EnumServersOnCurrentNode(&record, &count), Util::ENUM_VS_RESULT_SUCCESS);
    std::vector<std::string> calls = TakeClusterCalls();
    for (std::string& call : calls) {
        call.erase(std::min(call.find('('), call.size()));
    }
    EXPECT_THAT(calls,
                ElementsAre("OpenCluster", "ClusterOpenEnum", "ClusterEnum", "ClusterEnum", "ClusterEnum",
                            "ClusterEnum", "ClusterCloseEnum", "GetComputerNameW",
                            // two resources of other types: open, type, close
                            "OpenClusterResource", "ClusterResourceControl", "CloseClusterResource",
                            "OpenClusterResource", "ClusterResourceControl", "CloseClusterResource",
                            // the product resource: type and state, type again, its two dependencies
                            "OpenClusterResource", "ClusterResourceControl", "GetClusterResourceState",
                            "ClusterResourceControl", "ResUtilGetResourceDependency", "ResUtilGetResourceDependency",
                            // network name, data path, mode, data path again, ID, address
                            "ClusterResourceControl", "ClusterResourceControl", "ResUtilFindSzProperty",
                            "ResUtilResourceTypesEqual", "ClusterResourceControl", "ResUtilFindSzProperty",
                            "ClusterResourceControl", "ClusterResourceControl", "ResUtilFindSzProperty",
                            "CloseClusterResource", "CloseClusterResource", "CloseClusterResource", "CloseCluster"));
}

TEST_F(ServerList, FailsWithoutTouchingAnythingWhenTheClusterCannotBeRead) {
    struct {
        const char* call;
        const char* message;
    } const cases[] = {{"OpenCluster", "E Cannot open cluster by LPC."},
                       {"ClusterOpenEnum", "E Cannot enum names on the cluster"},
                       {"ClusterEnum", "E Cannot enum names on the cluster"},
                       {"GetComputerNameW", "E Cannot GetComputerName, code: 5"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call);
        ClusterOf(ThreeServers());
        Util util;
        Forget();
        Platform().FailCall(c.call, ERROR_ACCESS_DENIED);
        Guarded<Info, 2> records;
        int count = 77;
        EXPECT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_FAIL);
        EXPECT_EQ(count, 77);
        EXPECT_TRUE(records.Untouched(0));
        const std::string log = TakeLog();
        EXPECT_THAT(log, ::testing::HasSubstr(std::string(c.message) +
                                              "\n< CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()\n< "
                                              "CVirtualServerUtil::EnumServersOnCurrentNode()"));
    }
}

TEST_F(ServerList, LeavesOutAResourceThatCannotBeOpened) {
    ClusterOf(ThreeServers());
    Platform().FailCall("OpenClusterResource(EVS1 Product)", 5007, 1, FaultMode::FromThenOn);
    EXPECT_THAT(ServerNames(), ElementsAre(L"EVS2"));
    EXPECT_THAT(TakeMessages(), Contains("W Warning, open resource EVS1 Product fail, code: 5007").Times(2));
}

TEST_F(ServerList, DoesNotUseAResourceThatCannotBeOpened) {
    ClusterOf(ThreeServers());
    Util util;
    Platform().FailCall("OpenClusterResource(EVS1 Product)", 5007);
    int count = 0;
    Forget();
    EXPECT_EQ(util.EnumServersOnCurrentNode(nullptr, &count), Util::ENUM_VS_RESULT_MORE_DATA);
    EXPECT_EQ(count, 1);
    EXPECT_THAT(TakeLog(),
                ::testing::HasSubstr(Lines(
                    {"I Opening resource:", "I EVS1 Product", "E Open resource failed:EVS1 Product, err=5007",
                     "W Warning, open resource EVS1 Product fail, code: 5007", "I Opening resource:", "I EVS2 IP"})));
}

// The names that the list is told to lack, joined by commas.
std::string LeftOut() {
    Util util;
    std::array<Info, 3> records;
    int count = static_cast<int>(records.size());
    std::list<std::wstring> names = {L"before"};
    EXPECT_EQ(util.EnumServersOnCurrentNodeEx(records.data(), &count, names), Util::ENUM_VS_RESULT_SUCCESS);
    std::string text;
    for (const std::wstring& name : names) {
        text += (text.empty() ? "" : ", ") + Utf8(name);
    }
    return text;
}

TEST_F(ServerList, TellsWhatItLeavesOut) {
    ClusterOf(ThreeServers());
    EXPECT_EQ(LeftOut(), "");
    Platform().FailCall("OpenClusterResource(EVS1 IP)", 5);
    EXPECT_EQ(LeftOut(), "EVS1 IP");
    AddFault("ClusterResourceControl@EVS1 Name#1=5");
    EXPECT_EQ(LeftOut(), "EVS1 Name");
    AddFault("GetClusterResourceState@EVS1 Product#1=5");
    EXPECT_EQ(LeftOut(), "EVS1 Product");
    AddFault("GetClusterResourceState@EVS3 Product#1=5"); // of another node
    EXPECT_EQ(LeftOut(), "EVS3 Product");
    AddFault("ResUtilGetResourceDependency=5");
    EXPECT_EQ(LeftOut(), "EVS1 Product, EVS2 Product");
}

TEST_F(ServerList, TellsWhatItLeavesOutWhateverTheRoom) {
    ClusterOf(ThreeServers());
    AddFault("OpenClusterResource@EVS2 Product=5");
    Util util;
    Info record;
    int count = 0;
    std::list<std::wstring> names;
    EXPECT_EQ(util.EnumServersOnCurrentNodeEx(nullptr, &count, names), Util::ENUM_VS_RESULT_MORE_DATA);
    EXPECT_THAT(names, ElementsAre(L"EVS2 Product"));
    count = 0;
    EXPECT_EQ(util.EnumServersOnCurrentNodeEx(&record, &count, names), Util::ENUM_VS_RESULT_MORE_DATA);
    EXPECT_THAT(names, ElementsAre(L"EVS2 Product"));
}

TEST_F(ServerList, TellsNothingOfAClusterThatCannotBeRead) {
    ClusterOf(ThreeServers());
    Platform().FailCall("ClusterOpenEnum", 5);
    Util util;
    Info record;
    int count = 1;
    std::list<std::wstring> names = {L"before"};
    EXPECT_EQ(util.EnumServersOnCurrentNodeEx(&record, &count, names), Util::ENUM_VS_RESULT_FAIL);
    EXPECT_THAT(names, ElementsAre(L"before"));
}

TEST_F(ServerList, OfAPlainServerLeavesOutNothing) {
    PlainServer();
    EXPECT_EQ(LeftOut(), "");
}

TEST_F(ServerList, ThatTellsWhatItLeavesOutAsksNothingMore) {
    ClusterOf(ThreeServers());
    Util util;
    std::array<Info, 2> records;
    int count = 2;
    Forget();
    ASSERT_EQ(util.EnumServersOnCurrentNode(records.data(), &count), Util::ENUM_VS_RESULT_SUCCESS);
    const std::vector<std::string> calls = TakeClusterCalls();
    std::list<std::wstring> names;
    ASSERT_EQ(util.EnumServersOnCurrentNodeEx(records.data(), &count, names), Util::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(TakeClusterCalls(), calls);
}

TEST_F(ServerList, LeavesOutAResourceWithoutType) {
    ClusterOf(ThreeServers());
    AddFault("ClusterResourceControl@EVS1 Product=5");
    EXPECT_THAT(ServerNames(), ElementsAre(L"EVS2"));
    EXPECT_THAT(TakeMessages(), Contains("W cannot get resource type for res:EVS1 Product, skip this resource."));
}

TEST_F(ServerList, LeavesOutTheServersOfOtherNodes) {
    ClusterOf(ThreeServers());
    EXPECT_THAT(ServerNames(), ElementsAre(L"EVS1", L"EVS2"));
    EXPECT_THAT(TakeMessages(), Contains("I This resource: EVS3 Product is online on node:NODE-B, skip."));
}

TEST_F(ServerList, TakesANodeOfAnotherLetterCaseForAnotherNode) {
    SetComputerName(L"node-a");
    ClusterOf(ThreeServers());
    EXPECT_TRUE(ServerNames().empty());
}

TEST_F(ServerList, LeavesOutAResourceWhoseStateCannotBeRead) {
    ClusterOf(OneServer());
    Platform().FailCall("GetClusterResourceState", 6, 1, FaultMode::FromThenOn);
    EXPECT_TRUE(ServerNames().empty());
    EXPECT_THAT(TakeMessages(), Contains("I This resource: EVS1 Product is online on node:, skip."));
}

TEST_F(ServerList, LeavesOutAServerThatCannotBeDescribed) {
    ModelBuilder model = ThreeServers();
    model.Group("EVS4", "NODE-A").Resource("Lonely Product", "clusRDLL").Private("KOVA_DATA_PATH", "F:\\");
    ClusterOf(model);
    EXPECT_THAT(ServerNames(), ElementsAre(L"EVS1", L"EVS2"));
    EXPECT_THAT(TakeMessages(), Contains(::testing::StartsWith(
                                    "W Warning, GetVirtualServerInfo for server Lonely Product fail, code: ")));
}

TEST_F(ServerList, LeavesOutAServerWithAnEmptyDataPath) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    model.Group("EVS1", "NODE-A")
        .IpAddress("IP", "192.0.2.1")
        .NetworkName("Name", "EVS1")
        .DependsOn("IP")
        .Resource("Product", "clusRDLL")
        .DependsOn("Name")
        .Private("KOVA_DATA_PATH", "");
    ClusterOf(model);
    EXPECT_TRUE(ServerNames().empty());
    EXPECT_THAT(TakeMessages(), Contains("W KOVA_DATA_PATH string length is 0"));
}

TEST_F(ServerList, HoldsContinuousReplicationServersToo) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    AddServer(model, "EVS1", "NODE-A", "192.0.2.1", "clusRDLLCCR");
    ClusterOf(model);
    EXPECT_THAT(ServerNames(), ElementsAre(L"EVS1"));
    EXPECT_THAT(TakeMessages(), Contains("I Quorum Mode: CLUSTER_QUORUM_CCR"));
}

TEST_F(ServerList, ComparesResourceTypesExactly) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    AddServer(model, "EVS1", "NODE-A", "192.0.2.1");
    ClusterOf(model);
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [&](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD, LPDWORD cb) -> DWORD {
                                       std::memcpy(out, L"CLUSRDLL", 18);
                                       *cb = 18;
                                       return ERROR_SUCCESS;
                                   });
    EXPECT_TRUE(ServerNames().empty());
    EXPECT_THAT(TakeMessages(), Contains("I Skip resource EVS1 Product:CLUSRDLL"));
}

TEST_F(ServerList, ReadsLongNames) {
    for (const std::size_t length : {260u, 5000u}) {
        ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
        AddServer(model, "EVS1", "NODE-A", "192.0.2.1");
        model.Resource(std::string(length, 'x'), "Generic Service");
        ClusterOf(model);
        EXPECT_THAT(ServerNames(), ElementsAre(L"EVS1"));
    }
}

TEST_F(ServerList, OfAPlainServerIsTheServerItself) {
    Load(ThreeServers());
    PlainServer();
    Util util;
    Forget();
    for (const int room : {1, 2, 100}) {
        Guarded<Info, 2> records;
        int count = room;
        ASSERT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_SUCCESS);
        EXPECT_EQ(count, 1);
        EXPECT_STREQ(records[0].m_wsServerName, L"NODE-A");
        EXPECT_STREQ(records[0].m_wsServerIP, L"192.0.2.10");
        EXPECT_TRUE(records[0].m_bIsOnline);
        EXPECT_TRUE(records.Untouched(1));
    }
    EXPECT_THAT(TakeClusterCalls(), ElementsAre()) << "no cluster is asked";
}

TEST_F(ServerList, OfAPlainServerNeedsRoomForOne) {
    Load(ThreeServers());
    PlainServer();
    Util util;
    Forget();
    for (const int room : {0, -1}) {
        Guarded<Info> record;
        int count = room;
        EXPECT_EQ(util.EnumServersOnCurrentNode(record.get(), &count), Util::ENUM_VS_RESULT_MORE_DATA);
        EXPECT_EQ(count, 1);
        EXPECT_TRUE(record.Untouched());
        EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::EnumServersOnCurrentNode()",
                                    "I m_bIsCluster is false, enumerating normal servers.",
                                    "> CVirtualServerUtil::EnumNormalServerOnCurrentNode_()",
                                    "< CVirtualServerUtil::EnumNormalServerOnCurrentNode_()",
                                    "< CVirtualServerUtil::EnumServersOnCurrentNode()"}));
    }
}

TEST_F(ServerList, WholeTranscriptOfTheCount) {
    ClusterOf(GivenCluster("EXCLUS")
                  .Node("NODE-A")
                  .Node("NODE-B")
                  .Group("EVS3", "NODE-B")
                  .Resource("EVS3 Product", "clusRDLL")
                  .Group("EVS4", "NODE-A")
                  .Resource("EVS4 Product", "clusRDLLCCR"));
    Util util;
    Forget();
    int count = 0;
    ASSERT_EQ(util.EnumServersOnCurrentNode(nullptr, &count), Util::ENUM_VS_RESULT_MORE_DATA);
    EXPECT_EQ(TakeLog(), Lines({
                             "> CVirtualServerUtil::EnumServersOnCurrentNode()",
                             "I m_bIsCluster is true, enumerating virtual servers.",
                             "> CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()",
                             "> CCluster::OpenByLPC()",
                             "< CCluster::OpenByLPC()",
                             "I EnumNames, returns 2 resources.",
                             "I Current node is: NODE-A",
                             "I Opening resource:",
                             "I EVS3 Product",
                             "I Process resource EVS3 Product:clusRDLL...",
                             "I This resource: EVS3 Product is online on node:NODE-B, skip.",
                             "I Opening resource:",
                             "I EVS4 Product",
                             "I Process resource EVS4 Product:clusRDLLCCR...",
                             "> CVirtualServerUtil::GetVirtualServerInfo()",
                             "> GetResourceDependencyByType",
                             "E Calling ResUtilGetResourceDEpendency error, resname:Network Name code:5007",
                             "W Cannot get Network name resource",
                             "< CVirtualServerUtil::GetVirtualServerInfo()",
                             "W Warning, GetVirtualServerInfo for server EVS4 Product fail, code: 5007",
                             "I Returning virtual server count 0 only.",
                             "< CVirtualServerUtil::EnumVirtualServerOnCurrentNode_()",
                             "< CVirtualServerUtil::EnumServersOnCurrentNode()",
                         }));
}

TEST_F(ServerList, OfAClusterWithoutResourcesIsEmpty) {
    ClusterOf(GivenCluster("EXCLUS").Node("NODE-A"));
    Util util;
    Forget();
    Guarded<Info> record;
    int count = 1;
    EXPECT_EQ(util.EnumServersOnCurrentNode(record.get(), &count), Util::ENUM_VS_RESULT_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(record.Untouched());
    EXPECT_THAT(TakeMessages(),
                ElementsAre("I m_bIsCluster is true, enumerating virtual servers.", "I EnumNames, returns 0 resources.",
                            "I Current node is: NODE-A", "I Returning 0 virtual servers data."));
}

TEST_F(ServerList, TakesNoOtherStateForOnline) {
    for (const char* state : {"Online", "Offline", "Failed", "OnlinePending", "OfflinePending", "Initializing"}) {
        ClusterOf(OneServer().State(state));
        Util util;
        Info record;
        int count = 1;
        ASSERT_EQ(util.EnumServersOnCurrentNode(&record, &count), Util::ENUM_VS_RESULT_SUCCESS) << state;
        EXPECT_EQ(record.m_bIsOnline, std::string(state) == "Online") << state;
    }
}

TEST_F(ServerList, ThatGrowsBetweenTheTwoCallsNeedsAThird) {
    ClusterOf(OneServer());
    Util util;
    int count = 0;
    EXPECT_EQ(util.EnumServersOnCurrentNode(nullptr, &count), Util::ENUM_VS_RESULT_MORE_DATA);
    ASSERT_EQ(count, 1);
    Load(ThreeServers());
    Guarded<Info, 2> records;
    EXPECT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_MORE_DATA);
    EXPECT_EQ(count, 2);
    EXPECT_TRUE(records.Untouched(0));
    EXPECT_EQ(util.EnumServersOnCurrentNode(records.get(), &count), Util::ENUM_VS_RESULT_SUCCESS);
}
