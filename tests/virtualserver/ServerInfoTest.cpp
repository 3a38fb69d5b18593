// GetVirtualServerInfo, GetSMTPInstanceInfo, AtLeastOneExchangeResourceDLLOnlineOnCurrentNode, QueryServerInfo.
#include "ServerFixture.h"

#include "clus_Cluster.h"

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

const char SmtpType[] = "Microsoft Exchange SMTP Server Instance";
const char StoreType[] = "Microsoft Exchange Information Store";

class ServerInfo : public ServerTest {
protected:
    ModelBuilder OneServer(const std::string& type = "clusRDLL") {
        ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A").Node("NODE-B");
        AddServer(model, "EVS1", "NODE-A", "192.0.2.1", type);
        return model;
    }

    // GetVirtualServerInfo of a resource of the cluster, opened for the purpose.
    bool Describe(const wchar_t* name, Info& info, bool dataPath = true, bool smtp = false) {
        CCluster cluster;
        CClusterResource resource;
        EXPECT_TRUE(cluster.OpenByLPC());
        EXPECT_TRUE(cluster.OpenResourceByName(resource, name));
        Forget();
        const bool result = Util::GetVirtualServerInfo(resource.GetResourceHandle(), info, dataPath, smtp);
        EXPECT_TRUE(resource.GetResourceState(nullptr, nullptr) != CClusterResource::RES_STATE_UNKNOWN)
            << "the handle stays the caller's and open";
        return result;
    }

    // A failing description ends with this message and the leaving line.
    void ExpectRefused(const std::string& message) {
        Info info;
        EXPECT_FALSE(Describe(L"EVS1 Product", info));
        EXPECT_THAT(TakeLog(), ::testing::EndsWith(Lines({message, "< CVirtualServerUtil::GetVirtualServerInfo()"})));
    }
};

typedef ServerInfo SmtpInstances;
typedef ServerInfo StoreOnline;
typedef ServerInfo ServerLookUp;

} // namespace

TEST_F(ServerInfo, ComesFromTheProductResourceAndWhatItDependsOn) {
    ClusterOf(OneServer());
    Guarded<Info> info;
    new (info.get()) Info;
    ASSERT_TRUE(Describe(L"EVS1 Product", *info));
    EXPECT_TRUE(info.GuardsIntact());
    EXPECT_FALSE(info->m_bIsOnline) << "not this function's business";
    EXPECT_EQ(info->m_nSmtpInstanceCount, -1);
    EXPECT_STREQ(info->m_wsServerName, L"EVS1");
    EXPECT_STREQ(info->m_wsServerIP, L"192.0.2.1");
    EXPECT_STREQ(info->m_wsDataPath, L"F:\\EVS1");
    EXPECT_EQ(std::wcslen(info->m_wsServerGUID), 36u);
}

TEST_F(ServerInfo, WithoutTheDataPathReadsItOnceAndKeepsTheRecords) {
    ClusterOf(OneServer());
    Info info;
    ASSERT_TRUE(Describe(L"EVS1 Product", info, false));
    EXPECT_STREQ(info.m_wsDataPath, L"");
    const auto reads = [this] {
        const std::vector<std::string> calls = TakeClusterCalls();
        return std::count_if(calls.begin(), calls.end(),
                             [](const std::string& call) { return call.find("KOVA_DATA_PATH") != std::string::npos; });
    };
    EXPECT_EQ(reads(), 1);
    ASSERT_TRUE(Describe(L"EVS1 Product", info, true));
    EXPECT_EQ(reads(), 2);
}

TEST_F(ServerInfo, OfANullHandleIsRefused) {
    Info info;
    EXPECT_FALSE(Util::GetVirtualServerInfo(nullptr, info, true, false));
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::GetVirtualServerInfo()", "E Resource handle is NULL, return.",
                                "< CVirtualServerUtil::GetVirtualServerInfo()"}));
}

TEST_F(ServerInfo, OfAnotherResourceIsRefused) {
    ClusterOf(OneServer());
    Info info;
    EXPECT_FALSE(Describe(L"EVS1 IP", info));
    EXPECT_THAT(TakeMessages(), ElementsAre("W This is not a KOVA resource, its type is: IP Address"));
}

TEST_F(ServerInfo, NeedsTheType) {
    ClusterOf(OneServer());
    AddFault("ClusterResourceControl@EVS1 Product=5");
    ExpectRefused("W NULL resource type");
}

TEST_F(ServerInfo, NeedsTheNetworkNameResource) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilGetResourceDependency", 5007);
    ExpectRefused("W Cannot get Network name resource");
}

TEST_F(ServerInfo, NeedsTheAddressResource) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilGetResourceDependency", 5007, 2);
    ExpectRefused("W Cannot get IP address resource");
}

TEST_F(ServerInfo, NeedsTheNetworkName) {
    ClusterOf(OneServer());
    AddFault("ClusterResourceControl@0x01000169=5");
    ExpectRefused("W Cannot get RES_PROP_NETWORK_NAME property.");
}

TEST_F(ServerInfo, NeedsTheDataPath) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilFindSzProperty", 2);
    ExpectRefused("W Cannot get KOVA_DATA_PATH property.");
}

TEST_F(ServerInfo, NeedsTheDataPathTheSecondTimeToo) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilFindSzProperty", 2, 2);
    Info info;
    EXPECT_FALSE(Describe(L"EVS1 Product", info));
    EXPECT_THAT(TakeMessages(),
                ElementsAre("I Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY", "W Cannot get KOVA_DATA_PATH property."));
}

TEST_F(ServerInfo, NeedsAKnownQuorumMode) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilResourceTypesEqual", 0, 1, FaultMode::FromThenOn);
    ExpectRefused("W Unexpected cluster quorum mode!");
}

TEST_F(ServerInfo, NeedsTheId) {
    ClusterOf(OneServer());
    AddFault("ClusterResourceControl@0x01000039=5");
    ExpectRefused("W Cannot get RES_PROP_GUID property.");
}

TEST_F(ServerInfo, NeedsTheAddress) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilFindSzProperty", 2, 3);
    ExpectRefused("W Cannot get IP Address property.");
}

TEST_F(ServerInfo, TextsAreCutToTheRecord) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    model.Group("EVS1", "NODE-A")
        .IpAddress("IP", std::string(600, '1'))
        .NetworkName("Name", std::string(600, 'N'))
        .DependsOn("IP")
        .Resource("EVS1 Product", "clusRDLL")
        .DependsOn("Name")
        .Private("KOVA_DATA_PATH", std::string(5000, 'D'));
    ClusterOf(model);
    Guarded<Info> info;
    ASSERT_TRUE(Describe(L"EVS1 Product", *info));
    EXPECT_TRUE(info.GuardsIntact());
    EXPECT_EQ(std::wstring(info->m_wsServerIP), std::wstring(510, L'1'));
    EXPECT_EQ(std::wstring(info->m_wsServerName), std::wstring(511, L'N'));
    EXPECT_EQ(std::wstring(info->m_wsDataPath), std::wstring(511, L'D'));
}

TEST_F(ServerInfo, AskedForSmtpInstancesWarnsLeavesAndThenCollectsThem) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 7u);
    ClusterOf(model);
    ASSERT_TRUE(Util::CheckIsClusterByRegKey());
    Info info;
    ASSERT_TRUE(Describe(L"EVS1 Product", info, true, true));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 1);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[0], 7u);
    EXPECT_THAT(TakeLog(),
                ::testing::HasSubstr(Lines({"W CVirtualServerUtil::GetVirtualServerInfo(), should not get SMTP "
                                            "Instance IDs in PLATFORM_E2K7!",
                                            "< CVirtualServerUtil::GetVirtualServerInfo()",
                                            "> CVirtualServerUtil::CheckIsClusterByRegKey()"})));
}

TEST_F(SmtpInstances, AreThoseOfTheServersGroup) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 1u);
    model.Resource("SMTP 100", SmtpType).Private("ProtocolInstanceId", 100u);
    AddServer(model, "EVS2", "NODE-A", "192.0.2.2");
    model.Resource("SMTP other", SmtpType).Private("ProtocolInstanceId", 5u);
    ClusterOf(model);
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"evs1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 2);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[0], 1u);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[1], 100u);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
}

TEST_F(SmtpInstances, MayBeNone) {
    ClusterOf(OneServer());
    Info info;
    ASSERT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 0);
}

TEST_F(SmtpInstances, FitUpTo128) {
    for (const unsigned count : {128u, 129u}) {
        ModelBuilder model = OneServer();
        for (unsigned i = 0; i < count; ++i) {
            model.Resource("SMTP " + std::to_string(i), SmtpType).Private("ProtocolInstanceId", 1000 + i);
        }
        ClusterOf(model);
        Guarded<Info> info;
        new (info.get()) Info;
        EXPECT_EQ(Util::GetSMTPInstanceInfo(L"EVS1", *info), count == 128);
        EXPECT_TRUE(info.GuardsIntact());
        EXPECT_EQ(info->m_nSmtpInstanceCount, 128);
        EXPECT_EQ(info->m_dwSmtpInstanceIds[127], 1127u);
        EXPECT_STREQ(info->m_wsServerIP, L"");
    }
}

TEST_F(SmtpInstances, ThatCannotBeReadKeepTheOnesBefore) {
    ModelBuilder model = OneServer();
    model.Resource("SMTP 1", SmtpType).Private("ProtocolInstanceId", 1u);
    model.Resource("SMTP 2", SmtpType).Private("ProtocolInstanceId", "two");
    ClusterOf(model);
    Info info;
    EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 1);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
}

TEST_F(SmtpInstances, AreNotCollectedOnAPlainServer) {
    Load(OneServer());
    PlainServer();
    Forget();
    Info info;
    info.m_nSmtpInstanceCount = 3;
    EXPECT_TRUE(Util::GetSMTPInstanceInfo(L"EVS1", info));
    EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
    EXPECT_EQ(TakeLog(), Lines({"> CVirtualServerUtil::CheckIsClusterByRegKey()",
                                "< CVirtualServerUtil::CheckIsClusterByRegKey()"}));
}

TEST_F(SmtpInstances, FailAtEachStep) {
    for (const char* call : {"OpenCluster", "ClusterOpenEnum", "OpenClusterResource(EVS1 Name)",
                             "GetClusterResourceState", "OpenClusterGroup", "ClusterGroupOpenEnum"}) {
        SCOPED_TRACE(call);
        ClusterOf(OneServer());
        Platform().FailCall(call, 5);
        Info info;
        EXPECT_FALSE(Util::GetSMTPInstanceInfo(L"EVS1", info));
        EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
        EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CVirtualServerUtil::GetSMTPInstanceInfo()\n"));
    }
}

TEST_F(StoreOnline, IsTrueForAStoreThatIsOnlineHere) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType);
    ClusterOf(model);
    EXPECT_TRUE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_EQ(
        TakeLog(),
        Lines({"> CVirtualServerUtil::IsAtLeastOneExchangeResourceDLLOnlineOnCurrentNode()", "> CCluster::OpenByLPC()",
               "< CCluster::OpenByLPC()", "< CCluster::EnumResourceNamesByType()", "I Got computer name:: NODE-A",
               "I Found store: Store", "< CVirtualServerUtil::IsAtLeastOneExchangeResourceDLLOnlineOnCurrentNode()"}));
}

TEST_F(StoreOnline, SkipsStoresElsewhereAndOffline) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType).State("Offline");
    AddServer(model, "EVS2", "NODE-B", "192.0.2.2");
    model.Resource("Store 2", StoreType);
    ClusterOf(model);
    EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(),
                ElementsAre("I Got computer name:: NODE-A", "I Found store: Store",
                            "I Skip this store, reason: the node is not online", "I Found store: Store 2",
                            "I Skip this store, reason: the node is on node: NODE-B"));
}

TEST_F(StoreOnline, SkipsAStoreThatCannotBeOpened) {
    ModelBuilder model = OneServer();
    model.Resource("Store", StoreType).Resource("Store 2", StoreType);
    ClusterOf(model);
    Platform().FailCall("OpenClusterResource(Store)", 5007, 2); // the first opening is the search by type
    EXPECT_TRUE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
    EXPECT_THAT(TakeMessages(), Contains("W cannot open store: Store, skip this one"));
}

TEST_F(StoreOnline, IsFalseWhenTheClusterCannotBeRead) {
    struct {
        const char* call;
        const char* message;
    } const cases[] = {{"OpenCluster", "W Calling CCluster::OpenByLPC() fail"},
                       {"ClusterOpenEnum", "W Calling CCluster::EnumResourceNamesByType fail"},
                       {"GetComputerNameW", "W Calling GetComputerName fail"}};
    for (const auto& c : cases) {
        ClusterOf(OneServer());
        Platform().FailCall(c.call, 5);
        EXPECT_FALSE(Util::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode());
        EXPECT_THAT(TakeMessages(), Contains(c.message));
    }
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

TEST_F(ServerLookUp, FailsSilentlyWhenTheClusterCannotBeRead) {
    for (const char* call : {"OpenCluster", "ClusterOpenEnum", "GetComputerNameW"}) {
        ClusterOf(ThreeServers());
        Util util;
        Forget();
        Platform().FailCall(call, 5);
        CClusterVirtualServerLookupRequest request;
        request.m_wsNameOrIP = L"EVS1";
        Info info;
        info.m_bIsOnline = true;
        EXPECT_FALSE(util.QueryServerInfo(request, info));
        EXPECT_FALSE(info.m_bIsOnline);
        const std::string log = TakeLog();
        EXPECT_THAT(log, ::testing::StartsWith("> CVirtualServerUtil::QueryServerInfoFromCluster_()"));
        EXPECT_THAT(log, ::testing::EndsWith("< CVirtualServerUtil::QueryServerInfoFromCluster_()\n"));
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
