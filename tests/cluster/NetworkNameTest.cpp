// What finding by network name does not depend on, and what it does.
#include "ControlAnswer.h"

using namespace harness;

namespace {

using NetworkNameSearch = OpenClusterTest;

TEST_F(NetworkNameSearch, OpensTheGroupOfANameThatIsNotOnline) {
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").NetworkName("N", "EVS1").State("Offline"));
    CClusterGroup group;
    EXPECT_TRUE(cluster.OpenGroupByNetworkName(group, L"EVS1"));
    EXPECT_NE(group.GetGroupHandle(), nullptr);
}

TEST_F(NetworkNameSearch, OpensTheGroupWhateverTheLengthOfItsOwnersName) {
    const std::string node(16, 'N');
    cluster.Load(GivenCluster().Node(node).Group("G", node).NetworkName("N", "EVS1"));
    CClusterGroup group;
    EXPECT_TRUE(cluster.OpenGroupByNetworkName(group, L"EVS1"));
    EXPECT_NE(group.GetGroupHandle(), nullptr);
}

TEST_F(NetworkNameSearch, ComparesTheTypeExactly) {
    std::vector<DWORD> codes;
    const auto patch = PatchImport(clusapi, ClusterResourceControl,
                                   [&](HRESOURCE, HNODE, DWORD code, LPVOID, DWORD, LPVOID out, DWORD, LPDWORD cb) {
                                       codes.push_back(code);
                                       const bool type = code == CLUSCTL_RESOURCE_GET_RESOURCE_TYPE;
                                       const Bytes answer = TextBytes(type ? L"NETWORK NAME" : L"EVS1");
                                       std::memcpy(out, answer.data(), answer.size());
                                       *cb = static_cast<DWORD>(answer.size());
                                       return DWORD(ERROR_SUCCESS);
                                   });
    std::wstring name = L"before";
    EXPECT_FALSE(cluster.FindFirstResourceNameByNetworkName(name, L"EVS1"));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(codes, std::vector<DWORD>(5, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE));
}

TEST_F(NetworkNameSearch, NullMatchesNothing) {
    cluster.Load(GivenCluster().Node("NODE-A").Group("G", "NODE-A").NetworkName("N", ""));
    std::wstring name = L"before";
    EXPECT_FALSE(cluster.FindFirstResourceNameByNetworkName(name, nullptr));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(TakeLog(), Lines({"> CCluster::FindFirstResourceNameByNetworkName",
                                "< CClusterResource::FindFirstResourceNameByNetworkName"}));
    EXPECT_TRUE(cluster.FindFirstResourceNameByNetworkName(name, L"")) << "an empty text is a name";
}

TEST_F(NetworkNameSearch, NoResourceIsOfTheNullType) {
    NameList names{L"EVS1 IP"};
    EXPECT_TRUE(cluster.EnumResourceNamesByType(nullptr, names));
    EXPECT_TRUE(names.empty());
}

} // namespace
