// The group of the cluster's own resources, which a model has without listing it.
#include "SimulatorTest.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

std::string Model(const std::string& cluster,
                  const std::string& more = R"("nodes": [{"name": "N1"}, {"name": "N2"}])") {
    return R"({"cluster": {"name": "MAIL")" + cluster + "}, " + more + "}";
}

} // namespace

class CoreGroup : public SimulatorTest {
protected:
    std::vector<std::wstring> Names(DWORD kind) {
        std::vector<std::wstring> names;
        for (const ListedName& item : ListCluster(m_cluster, kind)) {
            names.push_back(item.name);
        }
        return names;
    }

    std::wstring Owner() {
        return OwnerOf(Group(L"Cluster Group"));
    }
};

TEST_F(CoreGroup, IsInAModelThatDoesNotSayOtherwise) {
    Load(Model("", R"("nodes": [{"name": "N1"}], "groups": [{"name": "EVS1", "owner": "N1"}],
                      "resources": [{"name": "EVS1 IP", "type": "IP Address", "id": "1", "group": "EVS1"}])"));
    EXPECT_THAT(Names(CLUSTER_ENUM_GROUP), ElementsAre(L"EVS1", L"Cluster Group"));
    EXPECT_THAT(Names(CLUSTER_ENUM_RESOURCE),
                ElementsAre(L"EVS1 IP", L"Cluster IP Address", L"Cluster Name", L"Disk Q:"));
    for (const wchar_t* const name : {L"Cluster IP Address", L"Cluster Name", L"Disk Q:"}) {
        EXPECT_EQ(StateOf(name), ClusterResourceOnline) << name;
    }
    EXPECT_THAT(ListResource(Resource(L"Cluster Name"), CLUSTER_RESOURCE_ENUM_DEPENDS),
                ElementsAre(ListedName{CLUSTER_RESOURCE_ENUM_DEPENDS, L"Cluster IP Address"}));
    EXPECT_EQ(Control(Resource(L"Cluster Name"), CLUSCTL_RESOURCE_GET_NETWORK_NAME), TextOf(L"MAIL"));
    EXPECT_TRUE(ClusterOwner(OpenCluster(L"192.0.2.1"))) << "the address is in use";
}

TEST_F(CoreGroup, HasWhatHoldsTheQuorum) {
    const struct {
        const char* cluster;
        const wchar_t* quorum; // null: the nodes alone
    } rows[] = {
        {"", L"Disk Q:"},
        {R"(, "quorum": "majority")", L"Majority Node Set"},
        {R"(, "behaviour": {"protocol": 2008})", L"Cluster Disk 1"},
        {R"(, "quorum": "majority", "behaviour": {"protocol": 2008})", nullptr},
    };
    for (const auto& row : rows) {
        Load(Model(row.cluster));
        std::vector<std::wstring> expected = {L"Cluster IP Address", L"Cluster Name"};
        if (row.quorum) {
            expected.emplace_back(row.quorum);
            EXPECT_EQ(AddClusterResourceDependency(Resource(row.quorum), Resource(L"Cluster Name")), 5069u);
        }
        EXPECT_EQ(Names(CLUSTER_ENUM_RESOURCE), expected) << row.cluster;
    }
}

TEST_F(CoreGroup, AMajorityNodeSetMayHoldTheQuorum) {
    Load(Model(R"(, "quorum": "majority")"));
    EXPECT_EQ(Control(Resource(L"Majority Node Set"), CLUSCTL_RESOURCE_GET_CHARACTERISTICS), (Bytes{1, 0, 0, 0}));
}

TEST_F(CoreGroup, ItsResourcesAreNotDeleted) {
    Load(Model(""));
    for (const wchar_t* const name : {L"Cluster Name", L"Cluster IP Address", L"Disk Q:"}) {
        EXPECT_EQ(Control(Resource(name), CLUSCTL_RESOURCE_GET_FLAGS), (Bytes{1, 0, 0, 0})) << name;
    }
    EXPECT_EQ(OfflineClusterResource(Resource(L"Cluster Name")), 0u);
    EXPECT_EQ(DeleteClusterResource(Resource(L"Cluster Name")), static_cast<DWORD>(ERROR_CORE_RESOURCE));
}

TEST_F(CoreGroup, IsOnTheFirstNodeThatIsUp) {
    Load(Model("", R"("nodes": [{"name": "N1", "state": "down"}, {"name": "N2", "state": "paused"}, {"name": "N3"}])"));
    EXPECT_EQ(Owner(), L"N3");
    Load(Model("", R"("nodes": [{"name": "N1", "state": "down"}, {"name": "N2", "state": "paused"}])"));
    EXPECT_EQ(Owner(), L"N2");
    EXPECT_EQ(StateOf(L"Cluster Name"), ClusterResourceOnline);
}

TEST_F(CoreGroup, IsOfflineWhileNoNodeIsUpAndComesOnlineWithTheFirst) {
    Load(Model("", R"("nodes": [{"name": "N1", "state": "down"}, {"name": "N2", "state": "down"}])"));
    EXPECT_EQ(StateOf(L"Cluster Name"), ClusterResourceOffline);
    EXPECT_EQ(ClusSimHappen("node-up", "N2", nullptr, nullptr, 0), 0u);
    EXPECT_EQ(Owner(), L"N2");
    EXPECT_EQ(StateOf(L"Cluster Name"), ClusterResourceOnline);
}

TEST_F(CoreGroup, IsNotAddedToAModelThatSaysOtherwise) {
    const std::string node = R"("nodes": [{"name": "N"}], )";
    Load(Model(R"(, "coreGroup": "none")"));
    EXPECT_THAT(Names(CLUSTER_ENUM_GROUP | CLUSTER_ENUM_RESOURCE), ElementsAre());
    EXPECT_THAT(ReadModel(), HasSubstr("\"coreGroup\": \"none\""));
    Load(Model("", node + R"("groups": [{"name": "cluster group", "owner": "N"}])"));
    EXPECT_THAT(Names(CLUSTER_ENUM_GROUP | CLUSTER_ENUM_RESOURCE), ElementsAre(L"cluster group"));
    Load(Model("", node + R"("groups": [{"name": "Own", "owner": "N"}],
        "resources": [{"name": "Name", "type": "Network Name", "id": "1", "group": "Own", "core": true}])"));
    EXPECT_THAT(Names(CLUSTER_ENUM_GROUP | CLUSTER_ENUM_RESOURCE), ElementsAre(L"Name", L"Own"));
    Load(Model("", node + R"("groups": [{"name": "Own", "owner": "N"}],
        "resources": [{"name": "DISK Q:", "type": "Physical Disk", "id": "1", "group": "Own"}])"));
    EXPECT_THAT(Names(CLUSTER_ENUM_GROUP | CLUSTER_ENUM_RESOURCE), ElementsAre(L"DISK Q:", L"Own"));
    EXPECT_EQ(LoadError(Model(R"(, "coreGroup": "all")")), "cluster.coreGroup: \"standard\" or \"none\" is expected");
}

TEST_F(CoreGroup, IsWrittenOutAndReadBackTheSame) {
    for (const char* const cluster : {"", R"(, "coreGroup": "standard")", R"(, "quorum": "majority")"}) {
        Load(Model(cluster));
        const std::string written = ReadModel();
        EXPECT_THAT(written, HasSubstr("\"core\": true"));
        EXPECT_THAT(written, Not(HasSubstr("coreGroup")));
        Load(written);
        EXPECT_EQ(ReadModel(), written);
    }
}

TEST_F(CoreGroup, ItsDiskHasANumberOfItsOwn) {
    Load(Model("", R"("nodes": [{"name": "N1"}], "groups": [{"name": "EVS1", "owner": "N1"}],
        "resources": [{"name": "Disk F:", "type": "Physical Disk", "id": "1", "group": "EVS1", "disk": {"number": 4}}])"));
    EXPECT_THAT(ReadModel(), HasSubstr("\"number\": 5,\n        \"partitions\""));
}
