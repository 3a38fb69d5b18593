#include "ClusterFixture.h"

using namespace harness;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

using ClusterSession = OpenClusterTest;

class ClusterOpening : public ClusterTest {
protected:
    ClusterOpening() {
        Load(ExchangeCluster());
    }
};

// Opening and closing
// ----------------------------------------------------------------------------------------------------

TEST_F(ClusterOpening, StartsClosed) {
    CCluster cluster;
    EXPECT_EQ(cluster.GetHandle(), nullptr);
    cluster.Close();
    EXPECT_EQ(TakeJournal(), "");
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ClusterOpening, OpensTheLocalCluster) {
    CCluster cluster;
    EXPECT_TRUE(cluster.OpenByLPC());
    EXPECT_NE(cluster.GetHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()"}));
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()"}));
}

TEST_F(ClusterOpening, AFailureToOpenTheLocalClusterIsLoggedAtTheLeavingLevel) {
    Platform().FailCall("OpenCluster()", 1753);
    CCluster cluster;
    EXPECT_FALSE(cluster.OpenByLPC());
    EXPECT_EQ(cluster.GetHandle(), nullptr);
    EXPECT_EQ(TakeLog(),
              Lines({"> CCluster::OpenByLPC()", "< CCluster::OpenByLPC(), err=1753", "< CCluster::OpenByLPC()"}));
}

TEST_F(ClusterOpening, OpeningTheLocalClusterTwiceSucceedsAndKeepsTheHandle) {
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    const HCLUSTER handle = cluster.GetHandle();
    Forget();
    EXPECT_TRUE(cluster.OpenByLPC());
    EXPECT_EQ(cluster.GetHandle(), handle);
    EXPECT_EQ(TakeJournal(), "");
    EXPECT_EQ(TakeLog(),
              Lines({"> CCluster::OpenByLPC()", "W Warning, the cluster has already been opened, return success.",
                     "< CCluster::OpenByLPC()"}));
}

TEST_F(ClusterOpening, OpensAClusterByName) {
    CCluster cluster;
    EXPECT_TRUE(cluster.OpenByRPC(L"EXCLUS"));
    EXPECT_NE(cluster.GetHandle(), nullptr);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster(EXCLUS)"}));
}

TEST_F(ClusterOpening, AFailureToOpenByNameIsNotLogged) {
    Platform().FailCall("OpenCluster", 1722);
    CCluster cluster;
    EXPECT_FALSE(cluster.OpenByRPC(L"ELSEWHERE"));
    EXPECT_EQ(cluster.GetHandle(), nullptr);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster(ELSEWHERE)=1722"}));
}

TEST_F(ClusterOpening, OpeningByNameNeedsAName) {
    CCluster cluster;
    EXPECT_FALSE(cluster.OpenByRPC(nullptr));
    EXPECT_EQ(TakeLog(), Lines({"E lpcwClusterName is NULL, cannot open RPC handle"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ClusterOpening, OpeningByNameWhileOpenFailsAndKeepsTheHandle) {
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    const HCLUSTER handle = cluster.GetHandle();
    Forget();
    EXPECT_FALSE(cluster.OpenByRPC(L"EXCLUS"));
    EXPECT_EQ(cluster.GetHandle(), handle);
    EXPECT_EQ(TakeLog(), Lines({"E Already opened, return false"}));
    EXPECT_FALSE(cluster.OpenByRPC(nullptr));
    EXPECT_EQ(TakeLog(), Lines({"E lpcwClusterName is NULL, cannot open RPC handle"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ClusterOpening, CloseIsRepeatableAndOpeningAgainWorks) {
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    cluster.Close();
    EXPECT_EQ(cluster.GetHandle(), nullptr);
    cluster.Close();
    EXPECT_TRUE(cluster.OpenByRPC(L"EXCLUS"));
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()", "CloseCluster()", "OpenCluster(EXCLUS)"}));
}

TEST_F(ClusterOpening, AFailingCloseIsIgnoredAndTheHandleForgotten) {
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    Forget();
    Platform().FailCall("CloseCluster", 6);
    cluster.Close();
    EXPECT_EQ(cluster.GetHandle(), nullptr);
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ClusterOpening, DestructionClosesAndKeepsTheLastError) {
    Platform().FailCall("CloseCluster", 6);
    {
        CCluster cluster;
        ASSERT_TRUE(cluster.OpenByLPC());
        SetLastError(ImpossibleCode);
    }
    EXPECT_EQ(GetLastError(), ImpossibleCode);
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()", "CloseCluster()=6"}));
}

// Cluster name
// -------------------------------------------------------------------------------------------------------------

class ClusterNameLength : public ClusterTest, public ::testing::WithParamInterface<int> {};

TEST_P(ClusterNameLength, UpToFifteenCharactersAreReturned) {
    const std::string name(static_cast<std::size_t>(GetParam()), 'N');
    Load(GivenCluster(name).Node("NODE-A"));
    CCluster cluster;
    ASSERT_TRUE(cluster.OpenByLPC());
    Forget();
    std::wstring text = L"before";
    const bool fits = GetParam() <= 15;
    EXPECT_EQ(cluster.GetClusterName(text), fits);
    if (fits) {
        EXPECT_EQ(Utf8(text), name);
        EXPECT_EQ(TakeJournal(), Lines({"GetClusterInformation(16)"}));
        EXPECT_EQ(TakeLog(), "");
    } else {
        // The second call fills the buffer all the same; callers rely on the refusal.
        EXPECT_EQ(text, L"before");
        EXPECT_EQ(TakeJournal(), Lines({"GetClusterInformation(16)=234",
                                        "GetClusterInformation(" + std::to_string(GetParam() + 1) + ")"}));
        EXPECT_THAT(TakeLog(), StartsWith("E CCluster::GetClusterName() returns error, code:"));
    }
}

INSTANTIATE_TEST_SUITE_P(Boundary, ClusterNameLength, ::testing::Values(1, 14, 15, 16, 17, 63),
                         ::testing::PrintToStringParamName());

TEST_F(ClusterSession, AClusterNameThatCannotBeReadIsLoggedWithTheLastErrorNotTheCode) {
    Platform().FailCall("GetClusterInformation", 1726);
    std::wstring name = L"before";
    SetLastError(4711);
    EXPECT_FALSE(cluster.GetClusterName(name));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({"E CCluster::GetClusterName() returns error, code:4711"}));
    EXPECT_EQ(TakeJournal(), Lines({"GetClusterInformation(16)=1726"}));
}

TEST_F(ClusterSession, TheSecondReadOfALongClusterNameIsNotLookedAt) {
    int calls = 0;
    const auto patch =
        PatchImport(clusapi, GetClusterInformation, [&](HCLUSTER, LPWSTR, LPDWORD cch, LPCLUSTERVERSIONINFO) -> DWORD {
            *cch = 20;
            SetLastError(4711);
            return ++calls == 1 ? ERROR_MORE_DATA : ERROR_ACCESS_DENIED;
        });
    std::wstring name;
    EXPECT_FALSE(cluster.GetClusterName(name));
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(TakeLog(), Lines({"E CCluster::GetClusterName() returns error, code:4711"}));
}

TEST_F(ClusterSession, TheClusterNameSurvivesMissingMemory) {
    std::wstring name = L"before";
    Heap().FailLocalAlloc(1);
    EXPECT_FALSE(cluster.GetClusterName(name));
    EXPECT_TRUE(Heap().Fired());
    EXPECT_EQ(name, L"before");
    EXPECT_THAT(TakeLog(), HasSubstr("E CCluster::GetClusterName() returns error, code:"));
}

TEST_F(ClusterOpening, TheNameOfAClosedClusterIsAFailure) {
    CCluster cluster;
    std::wstring name = L"before";
    EXPECT_FALSE(cluster.GetClusterName(name));
    EXPECT_EQ(name, L"before");
    EXPECT_THAT(TakeLog(), StartsWith("E CCluster::GetClusterName() returns error, code:"));
    Cluster().ClearJournal(); // the null handle is no open one
}

// Name and resource of the cluster
// -----------------------------------------------------------------------------------------

TEST_F(ClusterOpening, GivesTheClusterNameAndItsResourceId) {
    std::wstring name;
    std::wstring id;
    EXPECT_TRUE(CCluster::GetClusterNameResourceGUID(name, id));
    EXPECT_EQ(name, L"EXCLUS");
    EXPECT_EQ(id, L"0a0b0c0d-0000-0000-0000-00000000c1c1");
    EXPECT_EQ(
        TakeLog(),
        Lines({"> CCluster::GetClusterNameResourceGUID()", "> CCluster::OpenByLPC()", "< CCluster::OpenByLPC()",
               "> CCluster::OpenNetworkNameResourceByNetworkName", "> CCluster::FindFirstResourceNameByNetworkName",
               "I Network name found: Cluster Name for res:", "< CClusterResource::FindFirstResourceNameByNetworkName",
               "< CCluster::OpenNetworkNameResourceByNetworkName", "< CCluster::GetClusterNameResourceGUID()"}));
    EXPECT_EQ(TakeJournal(), Lines({"OpenCluster()",
                                    "GetClusterInformation(16)",
                                    "ClusterOpenEnum(4)",
                                    "ClusterEnum(0,256)",
                                    "ClusterEnum(1,256)",
                                    "ClusterEnum(2,256)",
                                    "ClusterEnum(3,256)",
                                    "ClusterEnum(4,256)",
                                    "ClusterEnum(5,256)=259",
                                    "ClusterCloseEnum()",
                                    "OpenClusterResource(Cluster IP)",
                                    "ClusterResourceControl(Cluster IP,GET_RESOURCE_TYPE,128)",
                                    "CloseClusterResource(Cluster IP)",
                                    "OpenClusterResource(Cluster Name)",
                                    "ClusterResourceControl(Cluster Name,GET_RESOURCE_TYPE,128)",
                                    "ClusterResourceControl(Cluster Name,GET_NETWORK_NAME,128)",
                                    "CloseClusterResource(Cluster Name)",
                                    "OpenClusterResource(Cluster Name)",
                                    "ClusterResourceControl(Cluster Name,GET_ID,128)",
                                    "CloseClusterResource(Cluster Name)",
                                    "CloseCluster()"}));
}

struct FailingStep {
    const char* name;
    const char* call;
    const char* warning;

    friend void PrintTo(const FailingStep& row, std::ostream* out) {
        *out << row.name;
    }
};

class ClusterNameResource : public ClusterTest, public ::testing::WithParamInterface<FailingStep> {};

TEST_P(ClusterNameResource, WritesNeitherOutputWhenAStepFails) {
    Load(ExchangeCluster());
    Platform().FailCall(GetParam().call, ERROR_ACCESS_DENIED);
    std::wstring name = L"name";
    std::wstring id = L"id";
    EXPECT_FALSE(CCluster::GetClusterNameResourceGUID(name, id));
    EXPECT_EQ(name, L"name");
    EXPECT_EQ(id, L"id");
    const std::string log = TakeLog();
    EXPECT_THAT(log, StartsWith("> CCluster::GetClusterNameResourceGUID()\n"));
    EXPECT_THAT(log, ::testing::EndsWith(
                         Lines({std::string("W ") + GetParam().warning, "< CCluster::GetClusterNameResourceGUID()"})));
}

const FailingStep FailingSteps[] = {
    {"TheClusterIsNotOpened", "OpenCluster", "Cannot cluster.OpenByLPC()"},
    {"ItsNameIsNotRead", "GetClusterInformation", "cluster.GetClusterName"},
    {"ItsResourcesAreNotListed", "ClusterOpenEnum", "cannot cluster.OpenNetworkNameResourceByNetworkName()"},
    {"TheNetworkNameIsNotOpened", "OpenClusterResource(Cluster Name)",
     "cannot cluster.OpenNetworkNameResourceByNetworkName()"},
    {"TheIdIsNotRead", "ClusterResourceControl(Cluster Name,GET_ID,128)",
     "cannot resNetworkName.GetSystemStringProperty()"}};

INSTANTIATE_TEST_SUITE_P(Steps, ClusterNameResource, ::testing::ValuesIn(FailingSteps), RowName());

} // namespace
