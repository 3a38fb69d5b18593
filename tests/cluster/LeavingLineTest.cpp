// The leaving line of a member stands behind the closing of what the member opened itself.
#include "ClusterFixture.h"

using namespace harness;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

class LeavingLine : public ClusterTest {
protected:
    // To be called where something is closed.
    void ExpectNotYet(const char* line) {
        ++closes;
        log += TakeLog();
        EXPECT_THAT(log, Not(HasSubstr(line)));
    }
    void ExpectNow(const char* line) {
        log += TakeLog();
        EXPECT_THAT(log, HasSubstr(line));
    }

    OpenedCluster cluster{*this};
    int closes = 0;
    std::string log;
};

TEST_F(LeavingLine, FollowsTheCloseOfTheStorageSearchesCluster) {
    cluster.Load(ExchangeCluster().Resource("Store", "Generic Service").DependsOn("EVS1 Disk"));
    CClusterResource store;
    cluster.Open(store, L"Store");
    CClusterResource storage;
    const char* const line = "< GetResourceStorageDependency\n";
    {
        const auto patch = PatchImport(clusapi, CloseCluster, [&](HCLUSTER h) -> BOOL {
            ExpectNotYet(line);
            return ::CloseCluster(h);
        });
        EXPECT_TRUE(store.GetResourceStorageDependency(storage));
    }
    EXPECT_EQ(closes, 1);
    ExpectNow(line);
}

TEST_F(LeavingLine, FollowsTheCloseOfTheGroupsWalk) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const char* const line = "< EnumResourceInGroup\n";
    const auto patch = PatchImport(clusapi, ClusterGroupCloseEnum, [&](HGROUPENUM h) -> DWORD {
        ExpectNotYet(line);
        return ::ClusterGroupCloseEnum(h);
    });
    EXPECT_TRUE(group.EnumResourceInGroup(cluster.GetHandle(), nullptr, nullptr));
    EXPECT_EQ(closes, 1);
    ExpectNow(line);
}

TEST_F(LeavingLine, FollowsTheCloseOfTheGroupsList) {
    CClusterGroup group;
    cluster.Open(group, L"EVS1");
    const char* const line = "< EnumResourceNamesInGroup\n";
    const auto patch = PatchImport(clusapi, ClusterGroupCloseEnum, [&](HGROUPENUM h) -> DWORD {
        ExpectNotYet(line);
        return ::ClusterGroupCloseEnum(h);
    });
    NameList names;
    EXPECT_TRUE(group.EnumResourceNamesInGroup(names));
    EXPECT_EQ(closes, 1);
    ExpectNow(line);
}

TEST_F(LeavingLine, FollowsTheCloseOfTheResourceFoundByNetworkName) {
    const char* const line = "< CClusterResource::FindFirstResourceNameByNetworkName\n";
    const auto patch = PatchImport(clusapi, CloseClusterResource, [&](HRESOURCE h) -> BOOL {
        ExpectNotYet(line);
        return ::CloseClusterResource(h);
    });
    std::wstring name;
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"EVS1"));
    EXPECT_EQ(closes, 5);
    ExpectNow(line);
}

} // namespace
