#include "ClusterFixture.h"

using namespace harness;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

using NameEnumeration = OpenClusterTest;

ModelBuilder ClusterWithResources(const std::vector<std::string>& names) {
    ModelBuilder model = GivenCluster().Node("NODE-A").Group("G", "NODE-A");
    for (const std::string& name : names) {
        model.IpAddress(name, "192.168.1.1");
    }
    return model;
}

// Kinds
// ------------------------------------------------------------------------------------------------------------------

TEST_F(NameEnumeration, ListsResourcesInTheClustersOrder) {
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"Cluster Name", L"EVS1 Disk", L"EVS1 IP", L"EVS1 Name"}));
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterOpenEnum(4)", "ClusterEnum(0,256)", "ClusterEnum(1,256)", "ClusterEnum(2,256)",
                     "ClusterEnum(3,256)", "ClusterEnum(4,256)", "ClusterEnum(5,256)=259", "ClusterCloseEnum()"}));
}

TEST_F(NameEnumeration, ListsNodes) {
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_NODE, names));
    EXPECT_EQ(names, (NameList{L"NODE-A", L"NODE-B"}));
    EXPECT_EQ(TakeLog(), "");
    EXPECT_THAT(TakeJournal(), HasSubstr("ClusterOpenEnum(1)\n"));
}

TEST_F(NameEnumeration, ListsGroups) {
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_GROUP, names));
    EXPECT_EQ(names, (NameList{L"Cluster Group", L"EVS1"}));
    EXPECT_EQ(TakeLog(), "");
    EXPECT_THAT(TakeJournal(), HasSubstr("ClusterOpenEnum(8)\n"));
}

using UnknownKind = OpenClusterTestWith<int>;

TEST_P(UnknownKind, IsLoggedAndAsksWithAnEmptyMask) {
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(static_cast<CCluster::CCLUSTER_OBJ_ENUM>(GetParam()), names));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(TakeLog(), Lines({"E Warning, unexpected type_enum value:" + std::to_string(GetParam()),
                                "E calling ClusterOpenEnum failed"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterOpenEnum(0)=87"}));
}

INSTANTIATE_TEST_SUITE_P(Kinds, UnknownKind, ::testing::Values(0, 1, 3, 6, 7), ::testing::PrintToStringParamName());

TEST_F(NameEnumeration, AnUnknownKindSucceedsWhenTheClusterAnswersTheEmptyMask) {
    const auto open = PatchImport(clusapi, ClusterOpenEnum, [](HCLUSTER h, DWORD mask) -> HCLUSENUM {
        EXPECT_EQ(mask, 0u);
        return ::ClusterOpenEnum(h, CLUSTER_ENUM_GROUP);
    });
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(static_cast<CCluster::CCLUSTER_OBJ_ENUM>(3), names));
    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(TakeLog(), Lines({"E Warning, unexpected type_enum value:3"}));
}

TEST_F(NameEnumeration, AClosedClusterFailsSilently) {
    CCluster closed;
    NameList names{L"before"};
    EXPECT_FALSE(closed.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_FALSE(closed.EnumResourceNamesByType(L"clusRDLL", names));
    EXPECT_FALSE(closed.EnumNames(static_cast<CCluster::CCLUSTER_OBJ_ENUM>(7), names));
    EXPECT_EQ(names, NameList{L"before"});
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(NameEnumeration, AppendsToWhatIsThere) {
    NameList names{L"before"};
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_NODE, names));
    EXPECT_EQ(names, (NameList{L"before", L"NODE-A", L"NODE-B"}));
}

TEST_F(NameEnumeration, AnEnumeratorThatDoesNotOpenIsLogged) {
    Platform().FailCall("ClusterOpenEnum", 5);
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(TakeLog(), Lines({"E calling ClusterOpenEnum failed"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterOpenEnum(4)=5"}));
}

TEST_F(NameEnumeration, ABrokenEntryIsLoggedAndTheOthersAreListed) {
    Platform().FailCall("ClusterEnum", 1726, 2);
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"EVS1 Disk", L"EVS1 IP", L"EVS1 Name"}));
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for cluster enum"}));
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterOpenEnum(4)", "ClusterEnum(0,256)", "ClusterEnum(1,256)=1726", "ClusterEnum(2,256)",
                     "ClusterEnum(3,256)", "ClusterEnum(4,256)", "ClusterEnum(5,256)=259", "ClusterCloseEnum()"}));
}

TEST_F(NameEnumeration, ABrokenFirstAndLastEntryAreLoggedEach) {
    Platform().FailCall("ClusterEnum(0,256)", 5);
    Platform().FailCall("ClusterEnum(4,256)", 5);
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{L"Cluster Name", L"EVS1 Disk", L"EVS1 IP"}));
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for cluster enum", "E Unexpected result for cluster enum"}));
}

// The growing buffer
// -----------------------------------------------------------------------------------------------------

using NameLength = OpenClusterTestWith<std::size_t>;

TEST_P(NameLength, NamesOfAnyLengthAreListed) {
    const std::string name(GetParam(), 'x');
    cluster.Load(ClusterWithResources({name, "short"}));
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{Utf16(name), L"short"}));
    EXPECT_EQ(TakeLog(), "");
    if (name.size() < 256) {
        EXPECT_EQ(TakeJournal(), Lines({"ClusterOpenEnum(4)", "ClusterEnum(0,256)", "ClusterEnum(1,256)",
                                        "ClusterEnum(2,256)=259", "ClusterCloseEnum()"}));
    } else {
        const std::string grown = std::to_string(name.size() + 1);
        EXPECT_EQ(TakeJournal(),
                  Lines({"ClusterOpenEnum(4)", "ClusterEnum(0,256)=234", "ClusterEnum(0," + grown + ")",
                         "ClusterEnum(1," + grown + ")", "ClusterEnum(2," + grown + ")=259", "ClusterCloseEnum()"}));
    }
}

INSTANTIATE_TEST_SUITE_P(Boundary, NameLength, ::testing::Values(1u, 254u, 255u, 256u, 257u, 260u, 5000u),
                         ::testing::PrintToStringParamName());

TEST_F(NameEnumeration, TheBufferGrowsOncePerLongerName) {
    cluster.Load(ClusterWithResources({std::string(300, 'a'), std::string(280, 'b'), std::string(400, 'c')}));
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{std::wstring(300, L'a'), std::wstring(280, L'b'), std::wstring(400, L'c')}));
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterOpenEnum(4)", "ClusterEnum(0,256)=234", "ClusterEnum(0,301)", "ClusterEnum(1,301)",
                     "ClusterEnum(2,301)=234", "ClusterEnum(2,401)", "ClusterEnum(3,401)=259", "ClusterCloseEnum()"}));
}

TEST_F(NameEnumeration, ANameThatGrowsBetweenTwoCallsIsAskedForAgain) {
    cluster.Load(ClusterWithResources({std::string(300, 'a')}));
    int calls = 0;
    const auto patch =
        PatchImport(clusapi, ClusterEnum, [&](HCLUSENUM h, DWORD i, LPDWORD type, LPWSTR text, LPDWORD cch) -> DWORD {
            if (++calls == 1) {
                *cch = 270; // the name was shorter then
                return ERROR_MORE_DATA;
            }
            return ::ClusterEnum(h, i, type, text, cch);
        });
    NameList names;
    EXPECT_TRUE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, NameList{std::wstring(300, L'a')});
    EXPECT_EQ(calls, 4);
}

TEST_F(NameEnumeration, ANameThatTheBufferCannotGrowForIsABrokenEntry) {
    cluster.Load(ClusterWithResources({"a", std::string(300, 'b'), "c"}));
    Heap().FailLocalReAlloc(1);
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_TRUE(Heap().Fired());
    EXPECT_EQ(names, (NameList{L"a", L"c"}));
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for cluster enum"}));
}

TEST_F(NameEnumeration, WithoutAFirstBufferNoNameIsInvented) {
    cluster.Load(ClusterWithResources({"a", "b"}));
    const auto noMemory = PatchImport(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for cluster enum", "E Unexpected result for cluster enum"}));
}

// By type
// ----------------------------------------------------------------------------------------------------------------

TEST_F(NameEnumeration, ByTypeKeepsTheResourcesOfThatTypeOnly) {
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"Network Name", names));
    EXPECT_EQ(names, (NameList{L"Cluster Name", L"EVS1 Name"}));
    EXPECT_EQ(TakeLog(), Lines({"< CCluster::EnumResourceNamesByType()"}));
    EXPECT_THAT(TakeJournal(),
                ::testing::EndsWith(Lines(
                    {"ClusterCloseEnum()", "OpenClusterResource(Cluster IP)",
                     "ClusterResourceControl(Cluster IP,GET_RESOURCE_TYPE,128)", "CloseClusterResource(Cluster IP)",
                     "OpenClusterResource(Cluster Name)", "ClusterResourceControl(Cluster Name,GET_RESOURCE_TYPE,128)",
                     "CloseClusterResource(Cluster Name)", "OpenClusterResource(EVS1 Disk)",
                     "ClusterResourceControl(EVS1 Disk,GET_RESOURCE_TYPE,128)", "CloseClusterResource(EVS1 Disk)",
                     "OpenClusterResource(EVS1 IP)", "ClusterResourceControl(EVS1 IP,GET_RESOURCE_TYPE,128)",
                     "CloseClusterResource(EVS1 IP)", "OpenClusterResource(EVS1 Name)",
                     "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)", "CloseClusterResource(EVS1 Name)"})));
}

TEST_F(NameEnumeration, ByTypeComparesTheTypeExactly) {
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"network name", names));
    EXPECT_TRUE(names.empty());
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"Network", names));
    EXPECT_TRUE(names.empty());
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"Network Name ", names));
    EXPECT_TRUE(names.empty());
}

TEST_F(NameEnumeration, ByTypeFiltersOlderNamesToo) {
    NameList names{L"gone", L"EVS1 IP", L"evs1 name"};
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"Network Name", names));
    EXPECT_EQ(names, (NameList{L"evs1 name", L"Cluster Name", L"EVS1 Name"}));
    EXPECT_EQ(TakeLog(), Lines({"E Open resource failed:gone, err=5007", "< CCluster::EnumResourceNamesByType()"}));
}

TEST_F(NameEnumeration, ByTypeDropsResourcesThatDoNotOpenOrHaveNoType) {
    Platform().FailCall("OpenClusterResource(Cluster Name)", 5);
    Platform().FailCall("ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)", 1726);
    NameList names;
    EXPECT_TRUE(cluster.EnumResourceNamesByType(L"Network Name", names));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(TakeLog(), Lines({"E Open resource failed:Cluster Name, err=5",
                                "E Calling ClusterResourceControl returns error, code:1726", "E 0 == dwSize",
                                "< CCluster::EnumResourceNamesByType()"}));
}

TEST_F(NameEnumeration, ByTypeFailsWithTheEnumerationAndFiltersNothing) {
    Platform().FailCall("ClusterEnum(1,256)", 5);
    NameList names;
    EXPECT_FALSE(cluster.EnumResourceNamesByType(L"Network Name", names));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"EVS1 Disk", L"EVS1 IP", L"EVS1 Name"}));
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for cluster enum"}));
    EXPECT_THAT(TakeJournal(), Not(HasSubstr("OpenClusterResource")));
}

// By network name
// --------------------------------------------------------------------------------------------------------

const char FindEntry[] = "> CCluster::FindFirstResourceNameByNetworkName";
const char FindLeaving[] = "< CClusterResource::FindFirstResourceNameByNetworkName";

TEST_F(NameEnumeration, FindsANetworkNameInLowerCase) {
    std::wstring name;
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"evs1"));
    EXPECT_EQ(name, L"EVS1 Name");
    EXPECT_EQ(TakeLog(), Lines({FindEntry, "I Network name found: EVS1 Name for res:", FindLeaving}));
}

TEST_F(NameEnumeration, ANetworkNameStoredInMixedCaseIsNeverFound) {
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").NetworkName("N", "Evs1"));
    std::wstring name = L"before";
    EXPECT_FALSE(cluster.FindFirstResourceNameByNetworkName(name, L"evs1"));
    EXPECT_FALSE(cluster.FindFirstResourceNameByNetworkName(name, L"Evs1"));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({FindEntry, FindLeaving, FindEntry, FindLeaving}));
}

TEST_F(NameEnumeration, OnlyAsciiLettersAreUpperCased) {
    cluster.Load(GivenCluster()
                     .Node("NODE-A")
                     .Group("G", "NODE-A")
                     .NetworkName("Upper", "M\xc3\x9cNCHEN")
                     .NetworkName("Lower", "M\xc3\xbcNCHEN"));
    std::wstring name;
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"m\u00fcnchen"));
    EXPECT_EQ(name, L"Lower");
}

TEST_F(NameEnumeration, EveryAsciiLetterIsUpperCasedAndNothingBesideThem) {
    cluster.Load(GivenCluster()
                     .Node("NODE-A")
                     .Group("G", "NODE-A")
                     .NetworkName("Letters", "ABCDEFGHIJKLMNOPQRSTUVWXYZ")
                     .NetworkName("Neighbours", "@[`{"));
    std::wstring name;
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"abcdefghijklmnopqrstuvwxyz"));
    EXPECT_EQ(name, L"Letters");
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"ABCDEFGHIJKLMNOPQRSTUVWXYZ"));
    EXPECT_EQ(name, L"Letters");
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"@[`{"));
    EXPECT_EQ(name, L"Neighbours");
}

TEST_F(NameEnumeration, TheFirstOfSeveralMatchesWins) {
    cluster.Load(GivenCluster()
                     .Node("NODE-A")
                     .Group("G", "NODE-A")
                     .IpAddress("IP", "10.0.0.1")
                     .NetworkName("One", "EVS1")
                     .NetworkName("Two", "EVS1"));
    std::wstring name;
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"EVS1"));
    EXPECT_EQ(name, L"One");
    EXPECT_THAT(TakeJournal(), Not(HasSubstr("OpenClusterResource(Two)")));
}

TEST_F(NameEnumeration, OtherTypesAreNotAskedForTheirNetworkName) {
    std::wstring name;
    EXPECT_FALSE(cluster.FindFirstResourceNameByNetworkName(name, L"192.168.1.10"));
    const std::string journal = TakeJournal();
    EXPECT_THAT(journal, Not(HasSubstr("(EVS1 IP,GET_NETWORK_NAME")));
    EXPECT_THAT(journal, HasSubstr("(EVS1 Name,GET_NETWORK_NAME"));
}

TEST_F(NameEnumeration, FindingOnAClosedClusterIsLogged) {
    CCluster closed;
    std::wstring name = L"before";
    EXPECT_FALSE(closed.FindFirstResourceNameByNetworkName(name, L"EVS1"));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({FindEntry, "E Cluster handle is NULL", FindLeaving}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(NameEnumeration, FindingFailsWithTheEnumeration) {
    Platform().FailCall("ClusterEnum(0,256)", 5);
    std::wstring name = L"before";
    EXPECT_FALSE(cluster.FindFirstResourceNameByNetworkName(name, L"EVS1"));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({FindEntry, "E Unexpected result for cluster enum", "E EnumNames failed", FindLeaving}));
}

TEST_F(NameEnumeration, FindingSkipsWhatCannotBeReadAndGoesOn) {
    Platform().FailCall("OpenClusterResource(Cluster IP)", 5);
    Platform().FailCall("ClusterResourceControl(EVS1 Disk,GET_RESOURCE_TYPE,128)", 1726);
    Platform().FailCall("ClusterResourceControl(Cluster Name,GET_NETWORK_NAME,128)", 1);
    std::wstring name;
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"EVS1"));
    EXPECT_EQ(name, L"EVS1 Name");
    EXPECT_EQ(TakeLog(),
              Lines({FindEntry, "E Open resource failed:Cluster IP, err=5", "E Unable to open resource: Cluster IP",
                     "E Calling ClusterResourceControl returns error, code:1", "E 0 == dwSize",
                     "E Unable to get resource property NETWORK NAME for res: Cluster Name",
                     "E Calling ClusterResourceControl returns error, code:1726", "E 0 == dwSize",
                     "E Unable to get resource type for res: EVS1 Disk",
                     "I Network name found: EVS1 Name for res:", FindLeaving}));
}

TEST_F(NameEnumeration, OpensTheResourceThatCarriesANetworkName) {
    CClusterResource resource;
    EXPECT_TRUE(cluster.OpenNetworkNameResourceByNetworkName(resource, L"evs1"));
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 Name");
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::OpenNetworkNameResourceByNetworkName", FindEntry,
                                "I Network name found: EVS1 Name for res:", FindLeaving,
                                "< CCluster::OpenNetworkNameResourceByNetworkName"}));
}

TEST_F(NameEnumeration, AnUnknownNetworkNameOpensNothing) {
    CClusterResource resource;
    EXPECT_FALSE(cluster.OpenNetworkNameResourceByNetworkName(resource, L"EVS9"));
    EXPECT_EQ(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::OpenNetworkNameResourceByNetworkName", FindEntry, FindLeaving,
                                "< CCluster::OpenNetworkNameResourceByNetworkName"}));
}

TEST_F(NameEnumeration, OpeningByNetworkNameIntoAHeldResourceKeepsIt) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const HRESOURCE handle = resource.GetResourceHandle();
    EXPECT_FALSE(cluster.OpenNetworkNameResourceByNetworkName(resource, L"EVS1"));
    EXPECT_EQ(resource.GetResourceHandle(), handle);
    EXPECT_THAT(TakeLog(), HasSubstr("E resource has alreay been opened.\n"));
}

TEST_F(NameEnumeration, OpensTheGroupOfANetworkName) {
    CClusterGroup group;
    EXPECT_TRUE(cluster.OpenGroupByNetworkName(group, L"evs1"));
    EXPECT_NE(group.GetGroupHandle(), nullptr);
    EXPECT_THAT(TakeJournal(),
                ::testing::EndsWith(Lines({"OpenClusterResource(EVS1 Name)", "GetClusterResourceState(EVS1 Name)=2",
                                           "OpenClusterGroup(EVS1)", "CloseClusterResource(EVS1 Name)"})));
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::OpenNetworkNameResourceByNetworkName", FindEntry,
                                "I Network name found: EVS1 Name for res:", FindLeaving,
                                "< CCluster::OpenNetworkNameResourceByNetworkName"}));
}

TEST_F(NameEnumeration, TheGroupOfAnUnknownNetworkNameDoesNotOpen) {
    CClusterGroup group;
    EXPECT_FALSE(cluster.OpenGroupByNetworkName(group, L"EVS9"));
    EXPECT_EQ(group.GetGroupHandle(), nullptr);
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("< CCluster::OpenNetworkNameResourceByNetworkName\n"));
    EXPECT_THAT(TakeJournal(), Not(HasSubstr("GetClusterResourceState")));
}

TEST_F(NameEnumeration, TheGroupDoesNotOpenWithoutTheResourceState) {
    Platform().FailCall("GetClusterResourceState", 5006);
    CClusterGroup group;
    EXPECT_FALSE(cluster.OpenGroupByNetworkName(group, L"EVS1"));
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("E ClusterResourceStateUnknown == 0\n"));
    EXPECT_THAT(TakeJournal(), Not(HasSubstr("OpenClusterGroup")));
}

TEST_F(NameEnumeration, AGroupThatDoesNotOpenIsLoggedByNameLookUpToo) {
    Platform().FailCall("OpenClusterGroup", 70);
    CClusterGroup group;
    EXPECT_FALSE(cluster.OpenGroupByNetworkName(group, L"EVS1"));
    EXPECT_THAT(TakeLog(), ::testing::EndsWith("E Open group failed, code:70\n"));
}

} // namespace
