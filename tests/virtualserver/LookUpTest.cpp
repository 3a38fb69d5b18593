// QueryServerInfo: one server by name or address, on a cluster and on a plain server.
#include "ServerFixture.h"

#include <cstddef>
#include <cstring>

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

using ServerLookUp = ServerTest;

// What QueryServerInfo says of `name`; its log begins anew.
bool Find(LibraryTest& test, Util& util, const wchar_t* name, Info& info) {
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = name;
    test.Forget();
    return util.QueryServerInfo(request, info);
}

TEST_F(ServerLookUp, FindsAServerOfThisNodeByNameAndByAddress) {
    ClusterOf(ThreeServers());
    Util util;
    for (const wchar_t* name : {L"EVS2", L"evs2", L"evs2.example.com", L"192.0.2.2"}) {
        CClusterVirtualServerLookupRequest request;
        request.m_wsNameOrIP = name;
        Info info;
        EXPECT_TRUE(util.QueryServerInfo(request, info)) << Utf8(name);
        EXPECT_STREQ(info.m_wsServerName, L"EVS2");
        EXPECT_FALSE(info.m_bIsOnline);
    }
}

TEST_F(ServerLookUp, SaysWhetherTheServerIsOnline) {
    ClusterOf(ThreeServers());
    Util util;
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = L"EVS1";
    Info info;
    ASSERT_TRUE(util.QueryServerInfo(request, info));
    EXPECT_TRUE(info.m_bIsOnline);
}

TEST_F(ServerLookUp, GivesTheWholeRecord) {
    ClusterOf(ThreeServers());
    Util util;
    Info info;
    ASSERT_TRUE(Find(*this, util, L"EVS2", info));
    EXPECT_STREQ(info.m_wsServerName, L"EVS2");
    EXPECT_STREQ(info.m_wsServerIP, L"192.0.2.2");
    EXPECT_STREQ(info.m_wsDataPath, L"F:\\EVS2");
    EXPECT_EQ(std::wcslen(info.m_wsServerGUID), 36u);
    EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
}

TEST_F(ServerLookUp, DoesNotFindTheServersOfOtherNodes) {
    ClusterOf(ThreeServers());
    Util util;
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = L"EVS3";
    Info info;
    EXPECT_FALSE(util.QueryServerInfo(request, info));
    SetComputerName(L"NODE-C");
    request.m_wsNameOrIP = L"EVS1";
    EXPECT_FALSE(util.QueryServerInfo(request, info));
}

TEST_F(ServerLookUp, SkipsSilentlyWhatCannotBeRead) {
    ClusterOf(ThreeServers());
    Util util;
    Platform().FailCall("OpenClusterResource(EVS1 Product)", 5007);
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = L"EVS2";
    Info info;
    Forget();
    EXPECT_TRUE(util.QueryServerInfo(request, info));
    EXPECT_THAT(TakeMessages(), ::testing::Not(Contains(::testing::StartsWith("W Warning, open resource"))));
}

TEST_F(ServerLookUp, DoesNotUseAResourceThatCannotBeOpened) {
    ClusterOf(ThreeServers());
    Util util;
    Platform().FailCall("OpenClusterResource(EVS1 Product)", 5007);
    Info info;
    EXPECT_TRUE(Find(*this, util, L"EVS2", info));
    EXPECT_EQ(TakeMessages(), (Texts{"E Open resource failed:EVS1 Product, err=5007",
                                     "I Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY", "I Finding EVS2"}));
}

TEST_F(ServerLookUp, FailsSilentlyWhenTheClusterCannotBeRead) {
    const struct {
        const char* name;
        const char* call;
        Texts messages; // of the calls beneath, none of its own
    } cases[] = {{"the cluster is not opened", "OpenCluster", {}},
                 {"its resources are not listed", "ClusterOpenEnum", {"E calling ClusterOpenEnum failed"}},
                 {"this node is not known", "GetComputerNameW", {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ClusterOf(ThreeServers());
        Util util;
        Forget();
        Platform().FailCall(c.call, 5);
        CClusterVirtualServerLookupRequest request;
        request.m_wsNameOrIP = L"EVS1";
        Info info;
        info.m_bIsOnline = true;
        EXPECT_FALSE(util.QueryServerInfo(request, info));
        EXPECT_FALSE(info.m_bIsOnline);
        ASSERT_FALSE(Log().Entries().empty());
        EXPECT_EQ(Log().Entries().front().Compact(), "> CVirtualServerUtil::QueryServerInfoFromCluster_()");
        EXPECT_EQ(Log().Entries().back().Compact(), "< CVirtualServerUtil::QueryServerInfoFromCluster_()");
        EXPECT_EQ(TakeMessages(), c.messages);
    }
}

TEST_F(ServerLookUp, OfAPlainServerFindsOnlyTheServerItself) {
    Load(ThreeServers());
    PlainServer();
    Util util;
    for (const wchar_t* name : {L"NODE-A", L"node-a.example.com", L"localhost", L"192.0.2.10"}) {
        CClusterVirtualServerLookupRequest request;
        request.m_wsNameOrIP = name;
        Info info;
        EXPECT_TRUE(util.QueryServerInfo(request, info)) << Utf8(name);
        EXPECT_STREQ(info.m_wsServerIP, L"192.0.2.10");
    }
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = L"EVS1";
    Guarded<Info> info;
    EXPECT_FALSE(util.QueryServerInfo(request, *info));
    EXPECT_TRUE(info.Untouched());
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::QueryServerInfoFromRegistry_()\n"));
}

TEST_F(ServerLookUp, WholeTranscript) {
    ClusterOf(ThreeServers());
    Util util;
    Info info;
    ASSERT_TRUE(Find(*this, util, L"evs2.example.com", info));
    const std::vector<std::string> described = {"> CVirtualServerUtil::GetVirtualServerInfo()",
                                                "> GetResourceDependencyByType",
                                                "> GetResourceDependencyByType",
                                                "I Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY",
                                                "< CVirtualServerUtil::GetVirtualServerInfo()",
                                                "> CVirtualServerUtil::IsTheSameVirtualServer()",
                                                "I Finding evs2.example.com",
                                                "< CVirtualServerUtil::IsTheSameVirtualServer()"};
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::QueryServerInfoFromCluster_()", "> CCluster::OpenByLPC()",
                                "< CCluster::OpenByLPC()"}) +
                             Lines(described) + Lines(described) +
                             Lines({"< CVirtualServerUtil::QueryServerInfoFromCluster_()"}));
}

TEST_F(ServerLookUp, AsksTheClusterNothingMoreOnceTheServerIsFound) {
    ClusterOf(ThreeServers());
    Util util;
    Info info;
    ASSERT_TRUE(Find(*this, util, L"EVS1", info));
    EXPECT_THAT(TakeClusterCalls(), ::testing::Not(Contains(::testing::HasSubstr("EVS2"))));
}

TEST_F(ServerLookUp, SkipsSilentlyWhatHasNoTypeStateOrDescription) {
    for (const char* fault : {"ClusterResourceControl@EVS1 Product=5", "GetClusterResourceState@EVS1 Product=6",
                              "ClusterResourceControl@EVS1 Name=5"}) {
        ClusterOf(ThreeServers());
        Util util;
        AddFault(fault);
        Info info;
        EXPECT_FALSE(Find(*this, util, L"EVS1", info)) << fault;
        EXPECT_TRUE(Find(*this, util, L"EVS2", info)) << fault;
        for (const std::string& message : TakeMessages()) {
            EXPECT_EQ(message.find("EVS1 Product"), std::string::npos) << fault << ": " << message;
        }
    }
}

TEST_F(ServerLookUp, TakesANodeOfAnotherLetterCaseForAnotherNode) {
    SetComputerName(L"node-a");
    ClusterOf(ThreeServers());
    Util util;
    Info info;
    EXPECT_FALSE(Find(*this, util, L"EVS1", info));
}

TEST_F(ServerLookUp, DoesNotFindAnAddressThatIsNoServersOwn) {
    ClusterOf(ThreeServers());
    Util util;
    Platform().FailCall("gethostbyaddr", WSAHOST_NOT_FOUND, 1, FaultMode::FromThenOn);
    Info info;
    EXPECT_FALSE(Find(*this, util, L"192.0.2.77", info));
    EXPECT_STREQ(info.m_wsServerName, L"EVS2") << "the last one compared";
}

TEST_F(ServerLookUp, ComparesInTheClustersOrder) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    for (const char* name : {"MIKE", "ZULU", "ALPHA"}) {
        AddServer(model, name, "NODE-A", "192.0.2.1");
    }
    ClusterOf(model);
    Util util;
    Info info;
    EXPECT_FALSE(Find(*this, util, L"EVS1", info));
    Names opened;
    for (const std::string& call : TakeClusterCalls()) {
        for (const wchar_t* name : {L"MIKE", L"ZULU", L"ALPHA"}) {
            if (call.find("OpenClusterResource(" + Utf8(name) + " Product)") == 0) {
                opened.push_back(name);
            }
        }
    }
    EXPECT_EQ(opened, (Names{L"MIKE", L"ZULU", L"ALPHA"}));
}

TEST_F(ServerLookUp, OfAPlainServerCopiesItsWholeRecord) {
    Load(ThreeServers());
    PlainServer();
    Util util;
    Info own;
    int count = 1;
    ASSERT_EQ(util.EnumServersOnCurrentNode(&own, &count), Util::ENUM_VS_RESULT_SUCCESS);
    Guarded<Info> info;
    ASSERT_TRUE(Find(*this, util, L"192.0.2.10", *info));
    EXPECT_TRUE(info.GuardsIntact());
    EXPECT_EQ(
        std::memcmp(reinterpret_cast<const char*>(info.get()) + offsetof(Info, m_nSmtpInstanceCount),
                    reinterpret_cast<const char*>(&own) + offsetof(Info, m_nSmtpInstanceCount),
                    offsetof(Info, m_wsServerGUID) + sizeof(own.m_wsServerGUID) - offsetof(Info, m_nSmtpInstanceCount)),
        0);
    EXPECT_TRUE(info->m_bIsOnline);
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::QueryServerInfoFromRegistry_()",
                                "> CVirtualServerUtil::IsTheSameVirtualServer()", "I Finding 192.0.2.10",
                                "I lpwsNameOrIP == info.m_wsServerIP, return true)",
                                "< CVirtualServerUtil::IsTheSameVirtualServer()",
                                "< CVirtualServerUtil::QueryServerInfoFromRegistry_()"}));
    EXPECT_THAT(TakeClusterCalls(), ElementsAre());
}

} // namespace
