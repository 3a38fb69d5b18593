// GetVirtualServerInfo: what describes a server, and what is missed when it lacks.
#include "ServerFixture.h"

#include "clus_Cluster.h"

using namespace harness;
using ::testing::Contains;
using ::testing::ElementsAre;

namespace {

using ServerInfo = ServerTest;

// GetVirtualServerInfo of a resource of the cluster, opened for the purpose.
bool Describe(LibraryTest& test, const wchar_t* name, Info& info, bool dataPath = true, bool smtp = false) {
    CCluster cluster;
    CClusterResource resource;
    EXPECT_TRUE(cluster.OpenByLPC());
    EXPECT_TRUE(cluster.OpenResourceByName(resource, name));
    test.Forget();
    const bool result = Util::GetVirtualServerInfo(resource.GetResourceHandle(), info, dataPath, smtp);
    EXPECT_TRUE(resource.GetResourceState(nullptr, nullptr) != CClusterResource::RES_STATE_UNKNOWN)
        << "the handle stays the caller's and open";
    return result;
}

// A failing description ends with this message and the leaving line.
void ExpectRefused(LibraryTest& test, const std::string& message) {
    Info info;
    EXPECT_FALSE(Describe(test, L"EVS1 Product", info));
    EXPECT_THAT(test.TakeLog(), ::testing::EndsWith(Lines({message, "< CVirtualServerUtil::GetVirtualServerInfo()"})));
}

} // namespace

TEST_F(ServerInfo, ComesFromTheProductResourceAndWhatItDependsOn) {
    ClusterOf(OneServer());
    Guarded<Info> info;
    new (info.get()) Info;
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", *info));
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
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", info, false));
    EXPECT_STREQ(info.m_wsDataPath, L"");
    const auto reads = [this] {
        const std::vector<std::string> calls = TakeClusterCalls();
        return std::count_if(calls.begin(), calls.end(),
                             [](const std::string& call) { return call.find("KOVA_DATA_PATH") != std::string::npos; });
    };
    EXPECT_EQ(reads(), 1);
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", info, true));
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
    EXPECT_FALSE(Describe(*this, L"EVS1 IP", info));
    EXPECT_THAT(TakeMessages(), ElementsAre("W This is not a KOVA resource, its type is: IP Address"));
}

// What cannot be read, by a fault of the cluster or a failing call of the library.
struct Missing {
    const char* name;
    const char* message;
    const char* fault; // empty: the call fails
    const char* call = "";
    DWORD code = 0;
    unsigned occurrence = 1;
    FaultMode mode = FaultMode::Once;

    friend void PrintTo(const Missing& row, std::ostream* out) {
        *out << row.name;
    }
};

const Missing AllMissing[] = {
    {"TheType", "W NULL resource type", "ClusterResourceControl@EVS1 Product=5"},
    {"TheNetworkNameResource", "W Cannot get Network name resource", "", "ResUtilGetResourceDependency", 5007},
    {"TheAddressResource", "W Cannot get IP address resource", "", "ResUtilGetResourceDependency", 5007, 2},
    {"TheNetworkName", "W Cannot get RES_PROP_NETWORK_NAME property.", "ClusterResourceControl@0x01000169=5"},
    {"TheDataPath", "W Cannot get KOVA_DATA_PATH property.", "", "ResUtilFindSzProperty", 2},
    {"AKnownQuorumMode", "W Unexpected cluster quorum mode!", "", "ResUtilResourceTypesEqual", 0, 1,
     FaultMode::FromThenOn},
    {"TheId", "W Cannot get RES_PROP_GUID property.", "ClusterResourceControl@0x01000039=5"},
    {"TheAddress", "W Cannot get IP Address property.", "", "ResUtilFindSzProperty", 2, 3}};

using ServerInfoNeeds = ServerTestWith<Missing>;

TEST_P(ServerInfoNeeds, AndIsRefusedWithout) {
    const Missing& row = GetParam();
    ClusterOf(OneServer());
    if (*row.fault) {
        AddFault(row.fault);
    } else {
        Platform().FailCall(row.call, row.code, row.occurrence, row.mode);
    }
    ExpectRefused(*this, row.message);
}

INSTANTIATE_TEST_SUITE_P(Each, ServerInfoNeeds, ::testing::ValuesIn(AllMissing), RowName());

TEST_F(ServerInfo, NeedsTheDataPathTheSecondTimeToo) {
    ClusterOf(OneServer());
    Platform().FailCall("ResUtilFindSzProperty", 2, 2);
    Info info;
    EXPECT_FALSE(Describe(*this, L"EVS1 Product", info));
    EXPECT_THAT(TakeMessages(),
                ElementsAre("I Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY", "W Cannot get KOVA_DATA_PATH property."));
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
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", *info));
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
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", info, true, true));
    EXPECT_EQ(info.m_nSmtpInstanceCount, 1);
    EXPECT_EQ(info.m_dwSmtpInstanceIds[0], 7u);
    EXPECT_THAT(TakeLog(),
                ::testing::HasSubstr(Lines({"W CVirtualServerUtil::GetVirtualServerInfo(), should not get SMTP "
                                            "Instance IDs in PLATFORM_E2K7!",
                                            "< CVirtualServerUtil::GetVirtualServerInfo()",
                                            "> CVirtualServerUtil::CheckIsClusterByRegKey()"})));
}

TEST_F(ServerInfo, AskedForSmtpInstancesDependsOnThem) {
    ClusterOf(OneServer());
    ASSERT_TRUE(Util::CheckIsClusterByRegKey());
    Platform().FailCall("OpenClusterGroup", 5);
    Info info;
    EXPECT_FALSE(Describe(*this, L"EVS1 Product", info, true, true));
    EXPECT_STREQ(info.m_wsServerIP, L"192.0.2.1");
}

TEST_F(ServerInfo, OnAPlainServerHasNoSmtpInstances) {
    Load(OneServer());
    PlainServer();
    Info info;
    info.m_nSmtpInstanceCount = 5;
    EXPECT_TRUE(Describe(*this, L"EVS1 Product", info, false, true));
    EXPECT_STREQ(info.m_wsDataPath, L"");
    EXPECT_EQ(info.m_nSmtpInstanceCount, -1);
}

TEST_F(ServerInfo, OfAPoisonedRecordEndsEachTextWithZeros) {
    ClusterOf(OneServer());
    Guarded<Info> info;
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", *info));
    EXPECT_TRUE(info.GuardsIntact());
    const auto zeroFrom = [](const wchar_t* member, std::size_t length, std::size_t size) {
        return std::all_of(member + length, member + size, [](wchar_t c) { return c == L'\0'; });
    };
    EXPECT_TRUE(zeroFrom(info->m_wsServerName, 4, 512));
    EXPECT_TRUE(zeroFrom(info->m_wsServerIP, 9, 511));
    EXPECT_TRUE(zeroFrom(info->m_wsDataPath, 7, 512));
    EXPECT_TRUE(zeroFrom(info->m_wsServerGUID, 36, 512));
    EXPECT_TRUE(IsPoison(&info->m_bIsOnline, 1));
    EXPECT_TRUE(IsPoison(&info->m_nSmtpInstanceCount, 4));
    EXPECT_TRUE(IsPoison(info->m_dwSmtpInstanceIds, sizeof(info->m_dwSmtpInstanceIds)));
}

// Clusters that lack something

TEST_F(ServerInfo, NeedsWhatTheProductResourceDependsOn) {
    const auto product = [](ModelBuilder model) {
        return model.Resource("EVS1 Product", "clusRDLL").DependsOn("Name").Private("KOVA_DATA_PATH", "F:\\");
    };
    const ModelBuilder group = GivenCluster("EXCLUS").Node("NODE-A").Group("EVS1", "NODE-A");
    ClusterOf(product(ModelBuilder(group).IpAddress("Name", "192.0.2.1")));
    ExpectRefused(*this, "W Cannot get Network name resource");
    ClusterOf(product(ModelBuilder(group).NetworkName("Name", "EVS1")));
    ExpectRefused(*this, "W Cannot get IP address resource");
    ClusterOf(product(ModelBuilder(group).Resource("IP", "IP Address").NetworkName("Name", "EVS1").DependsOn("IP")));
    ExpectRefused(*this, "W Cannot get IP Address property.");
}

TEST_F(ServerInfo, NeedsTheDataPathProperty) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    model.Group("EVS1", "NODE-A").IpAddress("IP", "192.0.2.1").NetworkName("Name", "EVS1").DependsOn("IP");
    ClusterOf(model.Resource("EVS1 Product", "clusRDLL").DependsOn("Name"));
    ExpectRefused(*this, "W Cannot get KOVA_DATA_PATH property.");
}

TEST_F(ServerInfo, RefusesAnEmptyDataPathThoughItIsNotAskedFor) {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A");
    model.Group("EVS1", "NODE-A").IpAddress("IP", "192.0.2.1").NetworkName("Name", "EVS1").DependsOn("IP");
    ClusterOf(model.Resource("EVS1 Product", "clusRDLL").DependsOn("Name").Private("KOVA_DATA_PATH", ""));
    for (const bool dataPath : {true, false}) {
        Info info;
        EXPECT_FALSE(Describe(*this, L"EVS1 Product", info, dataPath));
        EXPECT_THAT(TakeMessages(), ElementsAre("W KOVA_DATA_PATH string length is 0"));
    }
}

// The second reading of the data path

using DataPathReading = ServerTest;

// Changes the first character of what the second reading gives.
class SecondReading {
public:
    explicit SecondReading(wchar_t first) : m_first(first) {
    }

private:
    wchar_t m_first;
    int m_reads = 0;
    ImportPatch<DWORD(PVOID, DWORD, LPCWSTR, LPWSTR*), struct FindTextTag> m_patch{
        FindImports(LibraryModule(), "resutils.dll", "ResUtilFindSzProperty"),
        [this](PVOID list, DWORD size, LPCWSTR name, LPWSTR* value) {
            const DWORD code = m_patch.Next(list, size, name, value);
            if (std::wcscmp(name, L"KOVA_DATA_PATH") == 0 && ++m_reads == 2) {
                (*value)[0] = m_first;
            }
            return code;
        }};
};

TEST_F(DataPathReading, TheSecondOneCounts) {
    ClusterOf(OneServer());
    const SecondReading second(L'G');
    Info info;
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", info));
    EXPECT_STREQ(info.m_wsDataPath, L"G:\\EVS1");
}

TEST_F(DataPathReading, TheSecondOneMayNotBeEmpty) {
    ClusterOf(OneServer());
    const SecondReading second(L'\0');
    Info info;
    EXPECT_FALSE(Describe(*this, L"EVS1 Product", info));
    EXPECT_THAT(TakeMessages(),
                ElementsAre("I Quorum Mode: CLUSTER_QUORUM_SINGLE_COPY", "W KOVA_DATA_PATH string length is 0"));
}

// The calls

TEST_F(ServerInfo, AsksForEachThingInItsOrder) {
    ClusterOf(OneServer("clusRDLLCCR"));
    Info info;
    ASSERT_TRUE(Describe(*this, L"EVS1 Product", info));
    const std::string name = "Network Name of EVS1 Product";
    const std::string address = "IP Address of " + name;
    EXPECT_THAT(
        TakeClusterCalls(),
        ElementsAre("ClusterResourceControl(EVS1 Product,GET_RESOURCE_TYPE,128)",
                    "ResUtilGetResourceDependency(EVS1 Product,Network Name)",
                    "ResUtilGetResourceDependency(" + name + ",IP Address)",
                    "ClusterResourceControl(" + name + ",GET_NETWORK_NAME,128)",
                    "ClusterResourceControl(EVS1 Product,GET_PRIVATE_PROPERTIES,128)",
                    "ResUtilFindSzProperty(KOVA_DATA_PATH)", "ResUtilResourceTypesEqual(clusRDLL,EVS1 Product)=0",
                    "ResUtilResourceTypesEqual(clusRDLLCCR,EVS1 Product)=1",
                    "ClusterResourceControl(EVS1 Product,GET_PRIVATE_PROPERTIES,128)",
                    "ResUtilFindSzProperty(KOVA_DATA_PATH)", "ClusterResourceControl(" + name + ",GET_ID,128)",
                    "ClusterResourceControl(" + address + ",GET_PRIVATE_PROPERTIES,128)",
                    "ResUtilFindSzProperty(Address)", "CloseClusterResource(" + address + ")",
                    "CloseClusterResource(" + name + ")",
                    // the caller's handle is closed by the caller alone
                    "GetClusterResourceState(EVS1 Product)=2", "CloseClusterResource(EVS1 Product)", "CloseCluster()"));
}
