// Group and node objects, their handles, and the names of a group's resources.
#include "ClusterFixture.h"

using namespace harness;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

using Group = OpenClusterTest;

// Handles
// ------------------------------------------------------------------------------------------------------------------

TEST_F(Group, HoldsNoHandleWhateverItIsConstructedFrom) {
    {
        CClusterGroup group(Bogus<HGROUP>());
        EXPECT_EQ(group.GetGroupHandle(), nullptr);
        CClusterGroup empty;
        EXPECT_EQ(empty.GetGroupHandle(), nullptr);
        empty.Close();
    }
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(Group, DestructionClosesAndKeepsTheLastError) {
    Platform().FailCall("CloseClusterGroup", 6);
    {
        CClusterGroup group;
        cluster.Open(group, L"EVS1");
        SetLastError(ImpossibleCode);
    }
    EXPECT_EQ(GetLastError(), ImpossibleCode);
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterGroup(EVS1)=6"}));
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(Group, CloseKeepsTheHandleAndDestructionClosesItAgain) {
    ExpectBadHandleCalls(1);
    {
        CClusterGroup group;
        cluster.Open(group, L"EVS1");
        const HGROUP handle = group.GetGroupHandle();
        group.Close();
        EXPECT_EQ(group.GetGroupHandle(), handle);
    }
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterGroup(EVS1)", "CloseClusterGroup(EVS1)=6"}));
}

TEST_F(Group, AssignmentSharesTheHandle) {
    ExpectBadHandleCalls(1);
    {
        CClusterGroup target;
        {
            CClusterGroup source;
            cluster.Open(source, L"EVS1");
            EXPECT_EQ(&(target = source), &target);
            EXPECT_EQ(target.GetGroupHandle(), source.GetGroupHandle());
        }
    }
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterGroup(EVS1)", "CloseClusterGroup(EVS1)=6"}));
}

TEST_F(Group, NodeAssignmentSharesTheHandle) {
    ExpectBadHandleCalls(1);
    {
        CClusterNode target;
        CClusterNode source;
        ASSERT_TRUE(cluster.OpenNodeByName(source, L"NODE-A"));
        EXPECT_EQ(&(target = source), &target);
        EXPECT_EQ(target.GetNodeHandle(), source.GetNodeHandle());
    }
    EXPECT_EQ(TakeJournal(),
              Lines({"OpenClusterNode(NODE-A)", "CloseClusterNode(NODE-A)", "CloseClusterNode(NODE-A)=6"}));
}

TEST_F(Group, AssignmentDoesNotCloseWhatTheTargetHeld) {
    ExpectBadHandleCalls(1); // both objects close the source's handle
    HGROUP held = nullptr;
    {
        CClusterGroup target;
        CClusterGroup source;
        cluster.Open(target, L"Cluster Group");
        cluster.Open(source, L"EVS1");
        held = target.GetGroupHandle();
        target = source;
        EXPECT_EQ(TakeJournal(), "");
    }
    EXPECT_TRUE(CloseClusterGroup(held));
}

TEST_F(Group, NodeAssignmentDoesNotCloseWhatTheTargetHeld) {
    ExpectBadHandleCalls(1);
    HNODE held = nullptr;
    {
        CClusterNode target;
        CClusterNode source;
        ASSERT_TRUE(cluster.OpenNodeByName(target, L"NODE-B"));
        ASSERT_TRUE(cluster.OpenNodeByName(source, L"NODE-A"));
        held = target.GetNodeHandle();
        Forget();
        target = source;
        EXPECT_EQ(TakeJournal(), "");
    }
    EXPECT_TRUE(CloseClusterNode(held));
}

TEST_F(Group, NodeDestructionKeepsTheLastError) {
    Platform().FailCall("CloseClusterNode", 6);
    {
        CClusterNode node;
        ASSERT_TRUE(cluster.OpenNodeByName(node, L"NODE-A"));
        SetLastError(ImpossibleCode);
    }
    EXPECT_EQ(GetLastError(), ImpossibleCode);
}

// Names of the group's resources
// -------------------------------------------------------------------------------------------

const char NamesEntry[] = "> EnumResourceNamesInGroup";
const char NamesLeaving[] = "< EnumResourceNamesInGroup";

TEST_F(Group, ListsItsResourcesFromASmallBuffer) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names{L"before"};
    EXPECT_TRUE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names, (NameList{L"before", L"EVS1 Disk", L"EVS1 IP", L"EVS1 Name"}));
    EXPECT_EQ(TakeLog(), Lines({NamesEntry, NamesLeaving}));
    EXPECT_EQ(TakeJournal(), Lines({"ClusterGroupOpenEnum(EVS1,1)", "ClusterGroupEnum(0,8)=234",
                                    "ClusterGroupEnum(0,10)", "ClusterGroupEnum(1,10)", "ClusterGroupEnum(2,10)",
                                    "ClusterGroupEnum(3,10)=259", "ClusterGroupCloseEnum()"}));
}

TEST_F(Group, ListingWithoutAHandleIsLogged) {
    const CClusterGroup group;
    NameList names{L"before"};
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names, NameList{L"before"});
    EXPECT_EQ(TakeLog(), Lines({NamesEntry, "E NULL == m_hGroup", NamesLeaving}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(Group, AListThatDoesNotOpenIsLogged) {
    Platform().FailCall("ClusterGroupOpenEnum", 5);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(TakeLog(), Lines({NamesEntry, "E NULL == hEnum", NamesLeaving}));
}

TEST_F(Group, ABrokenEntryEndsTheList) {
    Platform().FailCall("ClusterGroupEnum(1,10)", 1726);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names, NameList{L"EVS1 Disk"});
    EXPECT_EQ(TakeLog(), Lines({NamesEntry, "E Invalid result for cluster enum, 1726", NamesLeaving}));
    EXPECT_EQ(TakeJournal(),
              Lines({"ClusterGroupOpenEnum(EVS1,1)", "ClusterGroupEnum(0,8)=234", "ClusterGroupEnum(0,10)",
                     "ClusterGroupEnum(1,10)=1726", "ClusterGroupCloseEnum()"}));
}

using GroupNames = OpenClusterTestWith<std::size_t>;

TEST_P(GroupNames, OfAnyLengthAreListed) {
    const std::string name(GetParam(), 'x');
    cluster.Load(
        GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress(name, "10.0.0.1").IpAddress("b", "10.0.0.2"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    NameList names;
    EXPECT_TRUE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names, (NameList{Utf16(name), L"b"}));
    const std::string grown = std::to_string(name.size() < 8 ? 8 : name.size() + 1);
    std::vector<std::string> journal = {"ClusterGroupOpenEnum(G,1)"};
    if (name.size() >= 8) {
        journal.push_back("ClusterGroupEnum(0,8)=234");
    }
    journal.insert(journal.end(), {"ClusterGroupEnum(0," + grown + ")", "ClusterGroupEnum(1," + grown + ")",
                                   "ClusterGroupEnum(2," + grown + ")=259", "ClusterGroupCloseEnum()"});
    EXPECT_EQ(TakeJournal(), Lines(journal));
}

TEST_P(GroupNames, OneThatTheBufferCannotGrowForEndsTheList) {
    const std::string name(GetParam(), 'x');
    cluster.Load(
        GivenCluster().Node("NODE-A").Group("G", "NODE-A").IpAddress("a", "10.0.0.1").IpAddress(name, "10.0.0.2"));
    CClusterGroup group;
    cluster.Open(group, L"G");
    Heap().FailLocalReAlloc(1);
    NameList names;
    const bool fits = name.size() < 8;
    EXPECT_EQ(group.EnumResourceNamesInGroup(names), fits);
    EXPECT_EQ(names.size(), fits ? 2u : 1u);
    EXPECT_EQ(TakeLog(), fits ? Lines({NamesEntry, NamesLeaving})
                              : Lines({NamesEntry, "E Invalid result for cluster enum, 234", NamesLeaving}));
}

INSTANTIATE_TEST_SUITE_P(Boundary, GroupNames, ::testing::Values(6u, 7u, 8u, 9u, 260u, 5000u),
                         ::testing::PrintToStringParamName());

TEST_F(Group, WithoutAFirstBufferNoNameIsInvented) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto noMemory = PatchImport(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_TRUE(names.empty());
    EXPECT_THAT(TakeLog(), HasSubstr("E Invalid result for cluster enum, "));
}

// By type
// ------------------------------------------------------------------------------------------------------------------

const char TypeEntry[] = "> EnumResourceNamesInGroupByType";
const char TypeLeaving[] = "< EnumResourceNamesInGroupByType";

TEST_F(Group, ByTypeKeepsTheResourcesOfThatTypeOnly) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names{L"Cluster IP", L"Cluster Name"};
    EXPECT_TRUE(group.EnumResourceNamesInGroupByType(cluster, names, L"IP Address"));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"EVS1 IP"})) << "older names are filtered too";
    EXPECT_EQ(TakeLog(), Lines({TypeEntry, NamesEntry, NamesLeaving, TypeLeaving}));
    EXPECT_THAT(TakeJournal(), EndsWith(Lines({"OpenClusterResource(EVS1 Name)",
                                               "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)",
                                               "CloseClusterResource(EVS1 Name)"})));
}

TEST_F(Group, ByTypeComparesTheTypeExactly) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_TRUE(group.EnumResourceNamesInGroupByType(cluster, names, L"ip address"));
    EXPECT_TRUE(names.empty());
}

TEST_F(Group, ByTypeNeedsAType) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroupByType(cluster, names, nullptr));
    EXPECT_EQ(TakeLog(), Lines({TypeEntry, TypeLeaving}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(Group, ByTypeFailsWithTheEnumeration) {
    const CClusterGroup group;
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroupByType(cluster, names, L"IP Address"));
    EXPECT_EQ(TakeLog(), Lines({TypeEntry, NamesEntry, "E NULL == m_hGroup", NamesLeaving, TypeLeaving}));
}

TEST_F(Group, ByTypeStopsAtAResourceThatDoesNotOpenWithAPartlyFilteredList) {
    Platform().FailCall("OpenClusterResource(EVS1 IP)", 5);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroupByType(cluster, names, L"Network Name"));
    EXPECT_EQ(names, (NameList{L"EVS1 IP", L"EVS1 Name"}));
    const std::string log = TakeLog();
    EXPECT_THAT(log, HasSubstr("E Open resource failed:EVS1 IP, err=5\n"));
    EXPECT_THAT(TakeJournal(), Not(HasSubstr("OpenClusterResource(EVS1 Name)")));
}

TEST_F(Group, ByTypeDropsAResourceWithoutAType) {
    Platform().FailCall("ClusterResourceControl(EVS1 IP,GET_RESOURCE_TYPE,128)", 1726);
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    NameList names;
    EXPECT_TRUE(group.EnumResourceNamesInGroupByType(cluster, names, L"IP Address"));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(TakeLog(),
              Lines({TypeEntry, NamesEntry, NamesLeaving, "E Calling ClusterResourceControl returns error, code:1726",
                     "E 0 == dwSize", "E Get cluster resource type failed, skip this resource.", TypeLeaving}));
}

// Disk by drive letter
// -------------------------------------------------------------------------------------------------------

class GroupDisk : public ClusterTest {
protected:
    GroupDisk() {
        AtEnd([this] { held.reset(); });
        cluster.Open(*held, L"EVS1");
    }

    OpenedCluster cluster{*this, ExchangeCluster().Disk("EVS1 Disk 2", "G:").Disk("EVS1 Disk 3", "G:")};
    std::unique_ptr<CClusterGroup> held = std::make_unique<CClusterGroup>();
    const CClusterGroup& group = *held;
};

TEST_F(GroupDisk, IsFoundByItsDriveLetterAndTheFirstWins) {
    std::wstring name;
    EXPECT_TRUE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'G', name));
    EXPECT_EQ(name, L"EVS1 Disk 2");
    const std::string log = TakeLog();
    EXPECT_THAT(log, ::testing::StartsWith(Lines({"> FindPhysicalDiskResourceNameByDriveLetter",
                                                  "> EnumStorageResourceNamesInGroup", "> EnumResourceInGroup"})));
    EXPECT_THAT(log, EndsWith(Lines({"< EnumResourceInGroup", "< EnumStorageResourceNamesInGroup",
                                     "< FindPhysicalDiskResourceNameByDriveLetter"})));
    EXPECT_THAT(TakeJournal(), Not(HasSubstr("(EVS1 Disk 3,STORAGE_GET_DISK_INFO")));
}

TEST_F(GroupDisk, LetterCaseMatters) {
    std::wstring name = L"before";
    EXPECT_FALSE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'f', name));
    EXPECT_EQ(name, L"before");
    EXPECT_TRUE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'F', name));
    EXPECT_EQ(name, L"EVS1 Disk");
}

TEST_F(GroupDisk, NoMatchLeavesTheNameAlone) {
    std::wstring name = L"before";
    EXPECT_FALSE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'Z', name));
    EXPECT_EQ(name, L"before");
    EXPECT_THAT(TakeLog(), EndsWith("< FindPhysicalDiskResourceNameByDriveLetter\n"));
}

TEST_F(GroupDisk, DisksThatCannotBeReadAreSkipped) {
    Platform().FailCall("OpenClusterResource(EVS1 Disk)", 5, 2); // the walk opens it first
    Platform().FailCall("ClusterResourceControl(EVS1 Disk 2,STORAGE_GET_DISK_INFO,128)", 1);
    std::wstring name;
    EXPECT_TRUE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'G', name));
    EXPECT_EQ(name, L"EVS1 Disk 3");
    Platform().FailCall("OpenClusterResource(EVS1 Disk)", 5, 2);
    EXPECT_FALSE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'F', name));
}

TEST_F(GroupDisk, ADiskThatCannotBeOpenedIsNotAskedForItsLetter) {
    Platform().FailCall("OpenClusterResource(EVS1 Disk)", 5, 2); // the walk opens it first
    std::wstring name;
    EXPECT_TRUE(group.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'G', name));
    EXPECT_EQ(name, L"EVS1 Disk 2");
    EXPECT_THAT(TakeLog(),
                EndsWith(Lines({"< EnumStorageResourceNamesInGroup", "E Open resource failed:EVS1 Disk, err=5",
                                "< FindPhysicalDiskResourceNameByDriveLetter"})));
}

TEST_F(GroupDisk, WithoutAGroupHandleIsAFailure) {
    const CClusterGroup none;
    std::wstring name = L"before";
    EXPECT_FALSE(none.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'F', name));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({"> FindPhysicalDiskResourceNameByDriveLetter", "> EnumStorageResourceNamesInGroup",
                                "> EnumResourceInGroup", "E [FIXREF-77888] NULL == m_hGroup",
                                "< [FIXREF-77888] EnumResourceNamesInGroup", "< EnumStorageResourceNamesInGroup",
                                "< FindPhysicalDiskResourceNameByDriveLetter"}));
}

TEST_F(Group, ADiskWithoutADeviceNameHasNoLetter) {
    CClusterGroup other;
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").Disk("D", ""));
    cluster.Open(other, L"G");
    std::wstring name = L"before";
    EXPECT_FALSE(other.FindPhysicalDiskResourceNameByDriveLetter(cluster, L'\0', name));
    EXPECT_EQ(name, L"before");
    EXPECT_THAT(TakeJournal(), HasSubstr("(D,STORAGE_GET_DISK_INFO,"));
}

} // namespace
