// Dependencies, possible owners, related objects.
#include "ClusterFixture.h"

using namespace harness;
using ::testing::EndsWith;

namespace {

ModelBuilder StoreCluster() {
    return ExchangeCluster()
        .Resource("EVS1 Store", "Generic Service")
        .State("Offline")
        .DependsOn("EVS1 Name")
        .DependsOn("EVS1 Disk")
        .PossibleOwner("NODE-A")
        .Resource("EVS1 Other", "Generic Service")
        .State("Offline");
}

class ResourceDependency : public ClusterTest {
protected:
    ResourceDependency() {
        AtEnd([this] {
            store.Close();
            other.Close();
        });
        cluster.Open(store, L"EVS1 Store");
        cluster.Open(other, L"EVS1 Other");
    }

    OpenedCluster cluster{*this, StoreCluster()};
    CClusterResource store;
    CClusterResource other;
};

// Adding
// -------------------------------------------------------------------------------------------------------------------

TEST_F(ResourceDependency, IsAdded) {
    EXPECT_TRUE(other.AddDependency(store.GetResourceHandle()));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::AddDependency"}));
    EXPECT_EQ(TakeJournal(), Lines({"AddClusterResourceDependency(EVS1 Other,EVS1 Store)"}));
    NameList names;
    EXPECT_TRUE(other.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_EQ(names, NameList{L"EVS1 Store"});
}

TEST_F(ResourceDependency, ThatIsRefusedIsLoggedWithItsCode) {
    EXPECT_TRUE(other.AddDependency(store.GetResourceHandle()));
    Forget();
    EXPECT_FALSE(other.AddDependency(store.GetResourceHandle()));
    EXPECT_FALSE(store.AddDependency(other.GetResourceHandle()));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::AddDependency",
                                "E calling AddClusterResourceDependency returns error, code:5003",
                                "> CClusterResource::AddDependency",
                                "E calling AddClusterResourceDependency returns error, code:1059"}));
}

TEST_F(ResourceDependency, OwnersAreAdded) {
    CClusterNode node;
    ASSERT_TRUE(cluster.OpenNodeByName(node, L"NODE-B"));
    Forget();
    EXPECT_EQ(store.AddOwner(node.GetNodeHandle()), DWORD(ERROR_SUCCESS));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::AddOwnder"}));
    EXPECT_EQ(TakeJournal(), Lines({"AddClusterResourceNode(EVS1 Store,NODE-B)"}));
    NameList names;
    EXPECT_TRUE(store.EnumNames(CLUSTER_RESOURCE_ENUM_NODES, names));
    EXPECT_THAT(names, ::testing::UnorderedElementsAre(L"NODE-A", L"NODE-B"));
}

TEST_F(ResourceDependency, AnOwnerThatIsOneAlreadyGivesTheClustersCode) {
    CClusterNode node;
    ASSERT_TRUE(cluster.OpenNodeByName(node, L"NODE-A"));
    Forget();
    EXPECT_EQ(store.AddOwner(node.GetNodeHandle()), DWORD(ERROR_OBJECT_ALREADY_EXISTS));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::AddOwnder", "E CClusterResource::AddOwnder fail, code:5010"}));
}

// Finding by type
// ------------------------------------------------------------------------------------------------------------

TEST_F(ResourceDependency, IsFoundByType) {
    {
        CClusterResource found;
        EXPECT_TRUE(store.GetResourceDependencyByType(found, L"Network Name"));
        EXPECT_EQ(TakeLog(), Lines({"> GetResourceDependencyByType"}));
        EXPECT_EQ(TakeJournal(), Lines({"ResUtilGetResourceDependency(EVS1 Store,Network Name)"}));
        EXPECT_STREQ(found.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 Name");
        Forget();
    }
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterResource(Network Name of EVS1 Store)"}));
}

TEST_F(ResourceDependency, ATypeItDoesNotDependOnIsLogged) {
    Platform().FailCall("ResUtilGetResourceDependency", 5002);
    CClusterResource found;
    EXPECT_FALSE(store.GetResourceDependencyByType(found, L"DHCP Service"));
    EXPECT_EQ(found.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"> GetResourceDependencyByType",
                                "E Calling ResUtilGetResourceDEpendency error, resname:DHCP Service code:5002"}));
}

TEST_F(ResourceDependency, IndirectOnesAreNotFoundByType) {
    CClusterResource found;
    EXPECT_FALSE(store.GetResourceDependencyByType(found, L"IP Address"));
}

TEST_F(ResourceDependency, FindingIntoAHeldResourceFailsWithoutACall) {
    const HRESOURCE handle = other.GetResourceHandle();
    EXPECT_FALSE(store.GetResourceDependencyByType(other, L"Network Name"));
    EXPECT_EQ(other.GetResourceHandle(), handle);
    EXPECT_EQ(TakeLog(), Lines({"> GetResourceDependencyByType", "E Resource handle is not NULL"}));
    EXPECT_EQ(TakeJournal(), "");
}

// Storage
// ----------------------------------------------------------------------------------------------------------------

TEST_F(ResourceDependency, StorageIsFoundByClass) {
    CClusterResource storage;
    EXPECT_TRUE(store.GetResourceStorageDependency(storage));
    EXPECT_EQ(TakeLog(), Lines({"> GetResourceStorageDependency", "< GetResourceStorageDependency"}));
    EXPECT_EQ(TakeJournal(),
              Lines({"GetClusterFromResource(EVS1 Store)",
                     "ResUtilGetResourceDependencyByClass(EVS1 Store,class 1,direct)", "CloseCluster()"}));
    EXPECT_STREQ(storage.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 Disk");
}

TEST_F(ResourceDependency, StorageIsAskedForByClassWithoutSubclass) {
    ULARGE_INTEGER wanted = {};
    const auto patch = PatchImport(resutils, ResUtilGetResourceDependencyByClass,
                                   [&](HCLUSTER, HANDLE, PCLUS_RESOURCE_CLASS_INFO info, BOOL) -> HRESOURCE {
                                       wanted.LowPart = info->dw;
                                       wanted.HighPart = info->SubClass;
                                       return nullptr;
                                   });
    CClusterResource storage;
    EXPECT_FALSE(store.GetResourceStorageDependency(storage));
    EXPECT_EQ(wanted.QuadPart, 1u);
}

TEST_F(ResourceDependency, AFoundStorageOverwritesAHeldHandleWithoutClosingIt) {
    CClusterResource storage;
    cluster.Open(storage, L"EVS1 IP");
    const HRESOURCE held = storage.GetResourceHandle();
    EXPECT_TRUE(store.GetResourceStorageDependency(storage));
    EXPECT_NE(storage.GetResourceHandle(), held);
    EXPECT_TRUE(CloseClusterResource(held));
}

TEST_F(ResourceDependency, AStorageFoundIntoAHeldResourceHasItsOwnName) {
    CClusterResource storage;
    cluster.Open(storage, L"EVS1 IP");
    const HRESOURCE held = storage.GetResourceHandle();
    EXPECT_STREQ(storage.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 IP");
    EXPECT_TRUE(store.GetResourceStorageDependency(storage));
    EXPECT_STREQ(storage.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 Disk");
    EXPECT_TRUE(CloseClusterResource(held));
}

TEST_F(ResourceDependency, MissingStorageAndAMissingClusterHandleLogTheSameText) {
    Platform().FailCall("GetClusterFromResource", 1722, 2);
    Platform().FailCall("ResUtilGetResourceDependencyByClass", 5002, 1);
    CClusterResource storage;
    EXPECT_FALSE(store.GetResourceStorageDependency(storage));
    EXPECT_EQ(TakeJournal(),
              Lines({"GetClusterFromResource(EVS1 Store)",
                     "ResUtilGetResourceDependencyByClass(EVS1 Store,class 1,direct)=5002", "CloseCluster()"}));
    EXPECT_FALSE(store.GetResourceStorageDependency(storage));
    EXPECT_EQ(TakeJournal(), Lines({"GetClusterFromResource(EVS1 Store)=1722"}));
    EXPECT_EQ(storage.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(),
              Lines({"> GetResourceStorageDependency", "E [FIXREF-77888] GetClusterFromResource Fail(5002)",
                     "< GetResourceStorageDependency", "> GetResourceStorageDependency",
                     "E [FIXREF-77888] GetClusterFromResource Fail(1722)", "< GetResourceStorageDependency"}));
}

// Network name
// -------------------------------------------------------------------------------------------------------------

TEST_F(ResourceDependency, TheNetworkNameDependedOnIsRead) {
    std::wstring name;
    EXPECT_TRUE(store.GetDependentNetworkName(name));
    EXPECT_EQ(name, L"EVS1");
    EXPECT_EQ(TakeLog(),
              Lines({"> GetDependentNetworkName", "> GetResourceDependencyByType", "< GetDependentNetworkName"}));
    EXPECT_EQ(TakeJournal(), Lines({"ResUtilGetResourceDependency(EVS1 Store,Network Name)",
                                    "ClusterResourceControl(Network Name of EVS1 Store,GET_NETWORK_NAME,128)",
                                    "CloseClusterResource(Network Name of EVS1 Store)"}));
}

TEST_F(ResourceDependency, WithoutANetworkNameTheTextIsLeftAlone) {
    std::wstring name = L"before";
    EXPECT_FALSE(other.GetDependentNetworkName(name));
    EXPECT_EQ(name, L"before");
    EXPECT_THAT(TakeLog(), EndsWith("< GetDependentNetworkName\n"));
}

TEST_F(ResourceDependency, ANetworkNameThatCannotBeReadLeavesTheTextAlone) {
    Platform().FailCall("ClusterResourceControl", 5);
    std::wstring name = L"before";
    EXPECT_FALSE(store.GetDependentNetworkName(name));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({"> GetDependentNetworkName", "> GetResourceDependencyByType",
                                "E Calling ClusterResourceControl returns error, code:5", "E 0 == dwSize",
                                "< GetDependentNetworkName"}));
}

// Listing
// ------------------------------------------------------------------------------------------------------------------

TEST_F(ResourceDependency, RelatedNamesAreListedByKind) {
    NameList names;
    EXPECT_TRUE(store.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_THAT(names, ::testing::UnorderedElementsAre(L"EVS1 Name", L"EVS1 Disk"));
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterResourceOpenEnum(EVS1 Store,1)", "ClusterResourceEnum(0,256)",
                     "ClusterResourceEnum(1,256)", "ClusterResourceEnum(2,256)=259", "ClusterResourceCloseEnum()"}));
    names.clear();
    EXPECT_TRUE(store.EnumNames(CLUSTER_RESOURCE_ENUM_NODES, names));
    EXPECT_EQ(names, NameList{L"NODE-A"});
    CClusterResource name;
    cluster.Open(name, L"EVS1 Name");
    EXPECT_TRUE(name.EnumNames(CLUSTER_RESOURCE_ENUM_PROVIDES, names));
    EXPECT_EQ(names, (NameList{L"NODE-A", L"EVS1 Store"})) << "appended";
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ResourceDependency, ListingWithoutAHandleFailsSilently) {
    const CClusterResource none;
    NameList names{L"before"};
    EXPECT_FALSE(none.EnumNames(CLUSTER_RESOURCE_ENUM_NODES, names));
    EXPECT_EQ(names, NameList{L"before"});
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ResourceDependency, AListThatDoesNotOpenIsLogged) {
    Platform().FailCall("ClusterResourceOpenEnum", 5);
    NameList names;
    EXPECT_FALSE(store.EnumNames(CLUSTER_RESOURCE_ENUM_NODES, names));
    EXPECT_EQ(TakeLog(), Lines({"E calling ClusterResourceOpenEnum failed"}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterResourceOpenEnum(EVS1 Store,4)=5"}));
}

TEST_F(ResourceDependency, ABrokenEntryIsLoggedAndTheOthersAreListed) {
    Platform().FailCall("ClusterResourceEnum", 1726);
    NameList names;
    EXPECT_FALSE(store.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_EQ(names.size(), 1u);
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for ClusterResourceEnum"}));
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterResourceOpenEnum(EVS1 Store,1)", "ClusterResourceEnum(0,256)=1726",
                     "ClusterResourceEnum(1,256)", "ClusterResourceEnum(2,256)=259", "ClusterResourceCloseEnum()"}));
}

using RelatedNameLength = OpenClusterTestWith<std::size_t>;

ModelBuilder ClusterWithAddress(const std::string& name) {
    return GivenCluster()
        .Node("NODE-A")
        .Group("G", "NODE-A")
        .IpAddress(name, "10.0.0.1")
        .IpAddress("short", "10.0.0.2")
        .NetworkName("N", "N")
        .DependsOn(name)
        .DependsOn("short");
}

TEST_P(RelatedNameLength, NamesOfAnyLengthAreListed) {
    const std::string name(GetParam(), 'x');
    cluster.Load(ClusterWithAddress(name));
    CClusterResource resource;
    cluster.Open(resource, L"N");
    NameList names;
    EXPECT_TRUE(resource.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_EQ(names, (NameList{Utf16(name), L"short"}));
    const std::string grown = std::to_string(name.size() < 256 ? 256 : name.size() + 1);
    std::vector<std::string> journal = {"ClusterResourceOpenEnum(N,1)"};
    if (name.size() >= 256) {
        journal.push_back("ClusterResourceEnum(0,256)=234");
    }
    journal.insert(journal.end(), {"ClusterResourceEnum(0," + grown + ")", "ClusterResourceEnum(1," + grown + ")",
                                   "ClusterResourceEnum(2," + grown + ")=259", "ClusterResourceCloseEnum()"});
    EXPECT_EQ(TakeJournal(), Lines(journal));
}

TEST_P(RelatedNameLength, ANameThatTheBufferCannotGrowForIsABrokenEntry) {
    const std::string name(GetParam(), 'x');
    cluster.Load(ClusterWithAddress(name));
    CClusterResource resource;
    cluster.Open(resource, L"N");
    Heap().FailLocalReAlloc(1);
    NameList names;
    const bool fits = name.size() < 256;
    EXPECT_EQ(resource.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names), fits);
    EXPECT_EQ(names.size(), fits ? 2u : 1u);
    EXPECT_EQ(TakeLog(), fits ? "" : "E Unexpected result for ClusterResourceEnum\n");
}

INSTANTIATE_TEST_SUITE_P(Boundary, RelatedNameLength, ::testing::Values(254u, 255u, 256u, 257u, 260u, 5000u),
                         ::testing::PrintToStringParamName());

TEST_F(ResourceDependency, WithoutAFirstBufferNoNameIsInvented) {
    const auto noMemory = PatchImport(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    NameList names;
    EXPECT_FALSE(store.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(TakeLog(),
              Lines({"E Unexpected result for ClusterResourceEnum", "E Unexpected result for ClusterResourceEnum"}));
}

} // namespace
