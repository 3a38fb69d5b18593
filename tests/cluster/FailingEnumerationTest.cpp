// Enumerators that fail again and again: the library goes on past failed entries, but not for ever.
#include "ClusterFixture.h"

using namespace harness;

namespace {

const int MostFailures = 1000;
const char Ended[] = "E Enumeration ended, code:1722, answers without an entry:1000";

class FailingEnumeration : public OpenClusterTest {
protected:
    // The lines of so many failed entries, and what comes then.
    static std::string LinesOf(const std::string& failed, int count, const Texts& after) {
        std::string lines;
        for (int i = 0; i < count; ++i) {
            lines += Lines({failed});
        }
        return lines + Lines(after);
    }
};

TEST_F(FailingEnumeration, OfTheClusterEndsAfterAThousandFailuresInARow) {
    Platform().FailCall("ClusterEnum", RPC_S_SERVER_UNAVAILABLE, 3, FaultMode::FromThenOn);
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{L"Cluster IP", L"Cluster Name"}));
    EXPECT_EQ(Platform().CountCalls("ClusterEnum("), 2u + MostFailures);
    EXPECT_EQ(TakeLog(), LinesOf("E Unexpected result for cluster enum", MostFailures, {Ended}));
}

TEST_F(FailingEnumeration, OfAResourceEndsAfterAThousandFailuresInARow) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Name");
    Platform().FailCall("ClusterResourceEnum", RPC_S_SERVER_UNAVAILABLE, 1, FaultMode::FromThenOn);
    NameList names;
    EXPECT_FALSE(resource.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(TakeLog(), LinesOf("E Unexpected result for ClusterResourceEnum", MostFailures, {Ended}));
}

TEST_F(FailingEnumeration, GoesOnToTheEndWhenFewerFailInARow) {
    // Every entry is there but those between 10 and 1008: 999 of them.
    const auto patch =
        PatchImport(clusapi, ClusterEnum, [](HCLUSENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD) -> DWORD {
            if (index == 1020) {
                return ERROR_NO_MORE_ITEMS;
            }
            text[0] = L'a';
            text[1] = L'\0';
            return index >= 10 && index < 1009 ? RPC_S_SERVER_UNAVAILABLE : ERROR_SUCCESS;
        });
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names.size(), 21u);
    EXPECT_EQ(TakeLog(), LinesOf("E Unexpected result for cluster enum", MostFailures - 1, {}));
}

TEST_F(FailingEnumeration, CountsOnlyFailuresInARow) {
    const auto patch =
        PatchImport(clusapi, ClusterEnum, [](HCLUSENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD) -> DWORD {
            if (index == 2400) {
                return ERROR_NO_MORE_ITEMS;
            }
            text[0] = L'\0';
            return index % 2 == 0 ? RPC_S_SERVER_UNAVAILABLE : ERROR_SUCCESS;
        });
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names.size(), 1200u);
    EXPECT_EQ(TakeLog(), LinesOf("E Unexpected result for cluster enum", 1200, {}));
}

// What an enumerator says of an entry's length counts for that entry only
// ---------------------------------------------------------------------------------------------------------------------

class EnumerationRoom : public OpenClusterTest, public ::testing::WithParamInterface<DWORD> {
protected:
    // Three entries, each said to be longer than any block, whose middle one fails.
    DWORD Answer(DWORD index, LPWSTR text, LPDWORD cch) {
        if (index == 3) {
            return ERROR_NO_MORE_ITEMS;
        }
        room.push_back(*cch);
        *cch = 0x7FFFFFFF;
        text[0] = L'\0';
        return index == 1 ? GetParam() : ERROR_SUCCESS;
    }

    std::vector<DWORD> room; // given for each
};

TEST_P(EnumerationRoom, OfTheClusterStaysThatOfTheBlock) {
    const auto patch =
        PatchImport(clusapi, ClusterEnum, [&](HCLUSENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD {
            return Answer(index, text, cch);
        });
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(room, std::vector<DWORD>(3, 256));
}

TEST_P(EnumerationRoom, OfAResourceStaysThatOfTheBlock) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Name");
    const auto patch = PatchImport(
        clusapi, ClusterResourceEnum,
        [&](HRESENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD { return Answer(index, text, cch); });
    NameList names;
    EXPECT_FALSE(resource.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_EQ(names.size(), 2u);
    EXPECT_EQ(room, std::vector<DWORD>(3, 256));
}

TEST_P(EnumerationRoom, OfAGroupStaysThatOfTheBlockUpToTheFailure) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const auto patch = PatchImport(
        clusapi, ClusterGroupEnum,
        [&](HGROUPENUM, DWORD index, LPDWORD, LPWSTR text, LPDWORD cch) -> DWORD { return Answer(index, text, cch); });
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(names.size(), 1u);
    EXPECT_EQ(room, std::vector<DWORD>(2, 8));
}

INSTANTIATE_TEST_SUITE_P(Codes, EnumerationRoom,
                         ::testing::Values(DWORD(RPC_S_SERVER_UNAVAILABLE), DWORD(ERROR_MORE_DATA)),
                         ::testing::PrintToStringParamName());

// An entry that never fits
// ---------------------------------------------------------------------------------------------------------------------

TEST_F(FailingEnumeration, EndsWhenAnEntryThatFitsIsSaidNotToFit) {
    const auto patch = PatchImport(clusapi, ClusterEnum, [](HCLUSENUM, DWORD, LPDWORD, LPWSTR, LPDWORD cch) -> DWORD {
        *cch = 255; // in room for 256
        return ERROR_MORE_DATA;
    });
    NameList names{L"before"};
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, NameList{L"before"});
    EXPECT_EQ(TakeLog(), Lines({"E Enumeration ended, code:234, answers without an entry:1"}));
}

TEST_F(FailingEnumeration, EndsWhenAnEntryGrowsWithItsRoom) {
    int calls = 0;
    const auto patch = PatchImport(clusapi, ClusterEnum, [&](HCLUSENUM, DWORD, LPDWORD, LPWSTR, LPDWORD) -> DWORD {
        ++calls;
        return ERROR_MORE_DATA; // the count stays what it was given
    });
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(calls, MostFailures);
    EXPECT_EQ(TakeLog(), Lines({"E Enumeration ended, code:234, answers without an entry:1000"}));
}

TEST_F(FailingEnumeration, OfAGroupEndsWhenAnEntryThatFitsIsSaidNotToFit) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    DWORD calls = 0;
    const auto patch =
        PatchImport(clusapi, ClusterGroupEnum, [&](HGROUPENUM, DWORD, LPDWORD, LPWSTR, LPDWORD cch) -> DWORD {
            ++calls;
            *cch = 0;
            return ERROR_MORE_DATA;
        });
    const std::string line = "E Enumeration ended, code:234, answers without an entry:1";
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(calls, 1u);
    EXPECT_EQ(TakeLog(), Lines({"> EnumResourceNamesInGroup", line, "< EnumResourceNamesInGroup"}));
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    EXPECT_EQ(calls, 2u);
    EXPECT_EQ(TakeLog(), Lines({"> EnumResourceInGroup", line, "< EnumResourceInGroup"}));
}

TEST_F(FailingEnumeration, OfAGroupEndsWhenAnEntryGrowsWithItsRoom) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    int calls = 0;
    const auto patch =
        PatchImport(clusapi, ClusterGroupEnum, [&](HGROUPENUM, DWORD, LPDWORD, LPWSTR, LPDWORD) -> DWORD {
            ++calls;
            SetLastError(4711);
            return ERROR_MORE_DATA;
        });
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(calls, MostFailures);
    calls = 0;
    Forget();
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    EXPECT_LT(calls, 20); // each time more than twice the room, up to that of the longest answer
    EXPECT_EQ(TakeLog(), Lines({"> EnumResourceInGroup", "E [FIXREF-77888] EnumGroup Fail (error=4711)",
                                "< EnumResourceInGroup"}));
}

} // namespace
