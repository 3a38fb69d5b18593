// Walking a group's resources with a callback, and the list of its storage resources.
#include "ClusterFixture.h"
#include "Detour.h"

using namespace harness;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

const char WalkEntry[] = "> EnumResourceInGroup";
const char WalkLeaving[] = "< EnumResourceInGroup";

struct Visit {
    HCLUSTER cluster;
    HGROUP group;
    HRESOURCE resource;
    std::wstring name;
    std::string typeWhileOpen;
};

struct Visitor {
    std::vector<Visit> visits;
    DWORD answer = 0;

    static DWORD Callback(HCLUSTER cluster, HGROUP group, HRESOURCE resource, const wchar_t* name, void* context) {
        auto& self = *static_cast<Visitor*>(context);
        CClusterResource borrowed(resource, false);
        const wchar_t* const type = borrowed.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
        self.visits.push_back({cluster, group, resource, name, Utf8(type)});
        return self.answer;
    }
};

using GroupWalk = OpenClusterTest;

Names Visited(const Visitor& visitor) {
    Names names;
    for (const Visit& visit : visitor.visits) {
        names.push_back(visit.name);
    }
    return names;
}

TEST_F(GroupWalk, VisitsEachResourceOpen) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_EQ(Visited(visitor), (std::vector<std::wstring>{L"EVS1 Disk", L"EVS1 IP", L"EVS1 Name"}));
    for (const Visit& visit : visitor.visits) {
        EXPECT_EQ(visit.cluster, cluster.GetHandle());
        EXPECT_EQ(visit.group, group.GetGroupHandle());
        EXPECT_NE(visit.resource, nullptr);
    }
    EXPECT_EQ(visitor.visits.at(0).typeWhileOpen, "Physical Disk");
    EXPECT_EQ(TakeLog(), Lines({WalkEntry, "I [FIXREF-77888] Enumerated object = EVS1 Disk",
                                "I [FIXREF-77888] Enumerated object = EVS1 IP",
                                "I [FIXREF-77888] Enumerated object = EVS1 Name", WalkLeaving}));
}

TEST_F(GroupWalk, PassesTheBufferSizeInBytesAsTheCount) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterGroupOpenEnum(EVS1,1)", "ClusterGroupEnum(0,2048)", "OpenClusterResource(EVS1 Disk)",
                     "CloseClusterResource(EVS1 Disk)", "ClusterGroupEnum(1,2048)", "OpenClusterResource(EVS1 IP)",
                     "CloseClusterResource(EVS1 IP)", "ClusterGroupEnum(2,2048)", "OpenClusterResource(EVS1 Name)",
                     "CloseClusterResource(EVS1 Name)", "ClusterGroupEnum(3,2048)=259", "ClusterGroupCloseEnum()"}));
}

TEST_F(GroupWalk, StopsAfterTheResourceForWhichTheCallbackAnswersNonZero) {
    for (const DWORD answer : {1ul, 2ul, 0x80000000ul}) {
        CClusterGroup group;
        cluster.Open(group, L"EVS1");
        Visitor visitor;
        visitor.answer = answer;
        EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
        EXPECT_EQ(Visited(visitor), std::vector<std::wstring>{L"EVS1 Disk"}) << answer;
        EXPECT_THAT(TakeJournal(), EndsWith(Lines({"CloseClusterResource(EVS1 Disk)", "ClusterGroupCloseEnum()"})));
        EXPECT_THAT(TakeLog(), EndsWith("< EnumResourceInGroup\n"));
    }
}

TEST_F(GroupWalk, WithoutACallbackIsLoggedForEachResource) {
    CClusterGroup group;
    cluster.Open(group, L"Cluster Group");
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    EXPECT_EQ(TakeLog(),
              Lines({WalkEntry, "I [FIXREF-77888] Enumerated object = Cluster IP",
                     "E [FIXREF-77888] No Callback function ", "I [FIXREF-77888] Enumerated object = Cluster Name",
                     "E [FIXREF-77888] No Callback function ", WalkLeaving}));
}

TEST_F(GroupWalk, WithoutAHandleIsLogged) {
    const CClusterGroup group;
    Visitor visitor;
    EXPECT_FALSE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_EQ(TakeLog(),
              Lines({WalkEntry, "E [FIXREF-77888] NULL == m_hGroup", "< [FIXREF-77888] EnumResourceNamesInGroup"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(GroupWalk, AGroupThatCannotBeListedCountsAsEmpty) {
    Platform().FailCall("ClusterGroupOpenEnum", 5);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_TRUE(visitor.visits.empty());
    EXPECT_EQ(TakeLog(), Lines({WalkEntry, "E [FIXREF-77888] ClusterGroupOpenEnum failed (error=5)", WalkLeaving}));
}

TEST_F(GroupWalk, AResourceThatDoesNotOpenIsLoggedAndTheWalkGoesOn) {
    Platform().FailCall("OpenClusterResource(EVS1 IP)", 5);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_EQ(Visited(visitor), (std::vector<std::wstring>{L"EVS1 Disk", L"EVS1 Name"}));
    EXPECT_THAT(TakeLog(), HasSubstr(Lines({"I [FIXREF-77888] Enumerated object = EVS1 IP",
                                            "E [FIXREF-77888] OpenClusterResource Fail (error=5)",
                                            "I [FIXREF-77888] Enumerated object = EVS1 Name"})));
}

TEST_F(GroupWalk, ABrokenEntryEndsTheWalkWithSuccessAndLogsTheLastError) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto patch = PatchImport(clusapi, ClusterGroupEnum, [](HGROUPENUM, DWORD, LPDWORD, LPWSTR, LPDWORD) -> DWORD {
        SetLastError(4711);
        return 1726;
    });
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_TRUE(visitor.visits.empty());
    EXPECT_EQ(TakeLog(), Lines({WalkEntry, "E [FIXREF-77888] EnumGroup Fail (error=4711)", WalkLeaving}));
}

using WalkedNames = OpenClusterTestWith<std::size_t>;

TEST_P(WalkedNames, OfAnyLengthAreVisited) {
    const std::string name(GetParam(), 'x');
    cluster.Load(
        GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress(name, "10.0.0.1").IpAddress("b", "10.0.0.2"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    ASSERT_EQ(visitor.visits.size(), 2u);
    EXPECT_EQ(Utf8(visitor.visits[0].name), name);
    EXPECT_EQ(visitor.visits[1].name, L"b");
    EXPECT_EQ(Heap().BadFrees(), 0u);
}

// 1,023 is what 2,048 bytes hold; the count passed claims twice as many characters.
INSTANTIATE_TEST_SUITE_P(Boundary, WalkedNames,
                         ::testing::Values(1u, 260u, 1022u, 1023u, 1024u, 1025u, 2046u, 2047u, 2048u, 2049u, 2559u,
                                           2560u, 5000u),
                         ::testing::PrintToStringParamName());

TEST_F(GroupWalk, GrowsToTheNextMultipleOf512Characters) {
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress(std::string(2600, 'x'), "10.0.0.1"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    // 2,601 characters are needed: 3,072 of them are 6,144 bytes.
    EXPECT_THAT(TakeJournal(), ::testing::StartsWith(Lines({"ClusterGroupOpenEnum(G,1)", "ClusterGroupEnum(0,2048)=234",
                                                            "ClusterGroupEnum(0,6144)"})));
}

TEST_F(GroupWalk, GrowsAboveAMultipleOf512ThatTheNameFills) {
    cluster.Load(GivenCluster()
                     .Node("NODE-A")
                     .Group("G", "NODE-A")
                     .IpAddress(std::string(2559, 'x'), "10.0.0.1")
                     .IpAddress("b", "10.0.0.2"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    // 2,560 characters are needed; the next multiple is 3,072.
    const std::string journal = TakeJournal();
    EXPECT_THAT(journal, ::testing::StartsWith(Lines({"ClusterGroupOpenEnum(G,1)", "ClusterGroupEnum(0,2048)=234",
                                                      "ClusterGroupEnum(0,6144)"})));
    EXPECT_THAT(journal, HasSubstr(Lines({"ClusterGroupEnum(1,6144)", "OpenClusterResource(b)"})));
}

TEST_F(GroupWalk, ANameThatTheBufferCannotGrowForEndsTheWalk) {
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress(std::string(5000, 'x'), "10.0.0.1"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    Heap().FailLocalReAlloc(1);
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_TRUE(visitor.visits.empty());
    EXPECT_THAT(TakeLog(), HasSubstr("E [FIXREF-77888] EnumGroup Fail (error="));
}

TEST_F(GroupWalk, WithoutAFirstBufferNothingIsVisited) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto noMemory = PatchImport(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_TRUE(visitor.visits.empty());
    EXPECT_THAT(TakeLog(), HasSubstr("E [FIXREF-77888] EnumGroup Fail (error="));
}

TEST_F(GroupWalk, ABufferThatOnlyTheSecondAttemptGetsIsGivenWithItsOwnRoom) {
    const std::string longName(1500, 'x');
    cluster.Load(
        GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress("a", "10.0.0.1").IpAddress(longName, "10.0.0.2"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    Heap().FailLocalAlloc(1);
    std::vector<DWORD> room;
    const auto patch = PatchImport(clusapi, ClusterGroupEnum,
                                   [&](HGROUPENUM h, DWORD i, LPDWORD type, LPWSTR text, LPDWORD cch) -> DWORD {
                                       room.push_back(*cch);
                                       if (!text) {
                                           *cch = 1;
                                           return ERROR_MORE_DATA;
                                       }
                                       return ::ClusterGroupEnum(h, i, type, text, cch);
                                   });
    Visitor visitor;
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), &Visitor::Callback, &visitor));
    EXPECT_TRUE(Heap().Fired());
    EXPECT_EQ(Visited(visitor), (Names{L"a", Utf16(longName)}));
    // 512 characters in 1,024 bytes, then 1,536 in 3,072; each block holds as many characters as that.
    EXPECT_EQ(room, (std::vector<DWORD>{0, 1024, 1024, 3072, 3072}));
}

TEST_F(GroupWalk, AnExceptionOfTheCallbackLeavesNothingOpen) {
    {
        CClusterGroup group;
        cluster.Open(group, L"EVS1");
        const EnumResourceCallback throwing = [](HCLUSTER, HGROUP, HRESOURCE, const wchar_t*, void*) -> DWORD {
            throw std::runtime_error("callback");
        };
        EXPECT_THROW(group.EnumResourceInGroup(cluster.GetHandle(), throwing, nullptr), std::runtime_error);
    }
    EXPECT_EQ(Cluster().OpenHandles("resource"), 0u);
    EXPECT_EQ(Cluster().OpenHandles("enum"), 0u);
}

// Storage
// ------------------------------------------------------------------------------------------------------------------

TEST_F(GroupWalk, ListsStorageResources) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names{L"before"};
    EXPECT_TRUE(group.EnumStorageResourceNamesInGroup(cluster, names));
    EXPECT_EQ(names, (NameList{L"before", L"EVS1 Disk"}));
    EXPECT_EQ(
        TakeLog(),
        Lines({"> EnumStorageResourceNamesInGroup", WalkEntry, "I [FIXREF-77888] Enumerated object = EVS1 Disk",
               "I [FIXREF-77888] EVS1 Disk is CLUS_RESCLASS_STORAGE", "I [FIXREF-77888] Enumerated object = EVS1 IP",
               "I [FIXREF-77888] Enumerated object = EVS1 Name", WalkLeaving, "< EnumStorageResourceNamesInGroup"}));
    EXPECT_THAT(TakeJournal(),
                HasSubstr(Lines({"OpenClusterResource(EVS1 Disk)", "ClusterResourceControl(EVS1 Disk,GET_CLASS_INFO,8)",
                                 "CloseClusterResource(EVS1 Disk)"})));
}

TEST_F(GroupWalk, AResourceWhoseClassCannotBeReadIsLoggedAndSkipped) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [](HRESOURCE, HNODE, DWORD, LPVOID, DWORD, LPVOID, DWORD, LPDWORD) -> DWORD {
                                       SetLastError(4711);
                                       return 1726;
                                   });
    NameList names;
    EXPECT_TRUE(group.EnumStorageResourceNamesInGroup(cluster, names));
    EXPECT_TRUE(names.empty());
    const std::string error =
        "E [FIXREF-77888] ClusterResourceControl(CLUSCTL_RESOURCE_GET_CLASS_INFO Fail (error=4711)";
    EXPECT_EQ(
        TakeLog(),
        Lines({"> EnumStorageResourceNamesInGroup", WalkEntry, "I [FIXREF-77888] Enumerated object = EVS1 Disk", error,
               "I [FIXREF-77888] Enumerated object = EVS1 IP", error, "I [FIXREF-77888] Enumerated object = EVS1 Name",
               error, WalkLeaving, "< EnumStorageResourceNamesInGroup"}));
}

TEST_F(GroupWalk, StorageOfAGroupThatCannotBeListedIsAnEmptySuccess) {
    Platform().FailCall("ClusterGroupOpenEnum", 5);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_TRUE(group.EnumStorageResourceNamesInGroup(cluster, names));
    EXPECT_TRUE(names.empty());
}

// The list always is the context, but the callback is prepared for none.
TEST_F(GroupWalk, TheCallbackOfTheStorageListRefusesToGoWithoutAList) {
    static EnumResourceCallback collect = nullptr;
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    {
        const Detour walk(
            &CClusterGroup::EnumResourceInGroup,
            +[](const CClusterGroup*, HCLUSTER, EnumResourceCallback callback, void*) {
                collect = callback;
                return true;
            });
        NameList names;
        EXPECT_TRUE(group.EnumStorageResourceNamesInGroup(cluster, names));
    }
    ASSERT_NE(collect, nullptr);
    Forget();
    EXPECT_EQ(collect(nullptr, nullptr, nullptr, L"EVS1 Disk", nullptr), DWORD(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(TakeLog(), Lines({"E [FIXREF-77888] pParam == NULL"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(GroupWalk, StorageWithoutAGroupHandleIsAFailure) {
    const CClusterGroup group;
    NameList names;
    EXPECT_FALSE(group.EnumStorageResourceNamesInGroup(cluster, names));
    EXPECT_EQ(TakeLog(), Lines({"> EnumStorageResourceNamesInGroup", WalkEntry, "E [FIXREF-77888] NULL == m_hGroup",
                                "< [FIXREF-77888] EnumResourceNamesInGroup", "< EnumStorageResourceNamesInGroup"}));
}

} // namespace
