// Enumerations that answer ERROR_MORE_DATA with a count that no block can have.
#include "ClusterFixture.h"

using namespace harness;

namespace {

ModelBuilder ClusterWithTwoAddresses() {
    return GivenCluster()
        .Node("NODE-A")
        .Group("G", "NODE-A")
        .IpAddress("a", "10.0.0.1")
        .IpAddress("b", "10.0.0.2")
        .NetworkName("n", "N")
        .DependsOn("a")
        .DependsOn("b");
}

class AbsurdCount : public ClusterTest, public ::testing::WithParamInterface<DWORD> {
protected:
    // The first answer of an enumerator is the absurd one.
    bool Answers(LPDWORD cch) {
        if (++calls > 1) {
            return false;
        }
        *cch = GetParam();
        return true;
    }

    // So with the names of the cluster, while what is returned lives.
    auto AnswersOfTheCluster() {
        return PatchImport(clusapi, ClusterEnum,
                           [this](HCLUSENUM h, DWORD i, LPDWORD type, LPWSTR text, LPDWORD cch) -> DWORD {
                               return Answers(cch) ? ERROR_MORE_DATA : ::ClusterEnum(h, i, type, text, cch);
                           });
    }

    OpenedCluster cluster{*this, ClusterWithTwoAddresses()};
    int calls = 0;
    std::vector<SIZE_T> grown;

private:
    struct GrowTag;
    ImportPatch<HLOCAL(HLOCAL, SIZE_T, UINT), GrowTag> m_grow{
        FindImports(LibraryModule(), "kernel32.dll", "LocalReAlloc"), [this](HLOCAL, SIZE_T size, UINT) -> HLOCAL {
            grown.push_back(size);
            return nullptr;
        }};
};

TEST_P(AbsurdCount, IsABrokenEntryOfTheCluster) {
    const auto patch = AnswersOfTheCluster();
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(names, (NameList{L"b", L"n"}));
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for cluster enum"}));
    EXPECT_TRUE(grown.empty());
}

TEST_P(AbsurdCount, IsABrokenEntryOfAResource) {
    CClusterResource resource;
    cluster.Open(resource, L"n");
    const auto patch = PatchImport(
        clusapi, ClusterResourceEnum, [&](HRESENUM h, DWORD i, LPDWORD type, LPWSTR text, LPDWORD cch) -> DWORD {
            return Answers(cch) ? ERROR_MORE_DATA : ::ClusterResourceEnum(h, i, type, text, cch);
        });
    NameList names;
    EXPECT_FALSE(resource.EnumNames(CLUSTER_RESOURCE_ENUM_DEPENDS, names));
    EXPECT_EQ(names, NameList{L"b"});
    EXPECT_EQ(TakeLog(), Lines({"E Unexpected result for ClusterResourceEnum"}));
    EXPECT_TRUE(grown.empty());
}

TEST_P(AbsurdCount, EndsTheListOfAGroup) {
    CClusterGroup group;
    cluster.Open(group, L"G");
    const auto patch = PatchImport(
        clusapi, ClusterGroupEnum, [&](HGROUPENUM h, DWORD i, LPDWORD type, LPWSTR text, LPDWORD cch) -> DWORD {
            return Answers(cch) ? ERROR_MORE_DATA : ::ClusterGroupEnum(h, i, type, text, cch);
        });
    NameList names;
    EXPECT_FALSE(group.EnumResourceNamesInGroup(names));
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(TakeLog(), Lines({"> EnumResourceNamesInGroup", "E Invalid result for cluster enum, 234",
                                "< EnumResourceNamesInGroup"}));
    EXPECT_TRUE(grown.empty());
}

TEST_P(AbsurdCount, EndsTheWalkOfAGroup) {
    CClusterGroup group;
    cluster.Open(group, L"G");
    const auto patch = PatchImport(
        clusapi, ClusterGroupEnum, [&](HGROUPENUM h, DWORD i, LPDWORD type, LPWSTR text, LPDWORD cch) -> DWORD {
            SetLastError(4711);
            return Answers(cch) ? ERROR_MORE_DATA : ::ClusterGroupEnum(h, i, type, text, cch);
        });
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(TakeLog(), Lines({"> EnumResourceInGroup", "E [FIXREF-77888] EnumGroup Fail (error=4711)",
                                "< EnumResourceInGroup"}));
    EXPECT_TRUE(grown.empty());
}

TEST_P(AbsurdCount, OfTheClusterNameIsNotAskedForAgain) {
    const auto patch =
        PatchImport(clusapi, GetClusterInformation, [&](HCLUSTER, LPWSTR, LPDWORD cch, LPCLUSTERVERSIONINFO) -> DWORD {
            return Answers(cch) ? ERROR_MORE_DATA : ERROR_SUCCESS;
        });
    std::wstring name = L"before";
    EXPECT_FALSE(cluster.GetClusterName(name));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(grown.empty());
}

// 16 MB are the longest answer, the terminator included.
class LongestName : public AbsurdCount {};

TEST_P(LongestName, IsAskedForAgain) {
    const auto patch = AnswersOfTheCluster();
    NameList names;
    EXPECT_FALSE(cluster.EnumNames(CCluster::CCLUSTER_OBJ_RESOURCE, names));
    EXPECT_EQ(grown, std::vector<SIZE_T>(1, 16 * 1024 * 1024)); // for which there is no memory
}

INSTANTIATE_TEST_SUITE_P(Counts, LongestName, ::testing::Values(8u * 1024 * 1024 - 1),
                         ::testing::PrintToStringParamName());

INSTANTIATE_TEST_SUITE_P(Counts, AbsurdCount,
                         ::testing::Values(0x40000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu),
                         ::testing::PrintToStringParamName());

} // namespace
