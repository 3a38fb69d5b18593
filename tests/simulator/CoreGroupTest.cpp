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
        {R"(, "quorum": "majority", "witness": "share")", L"Majority Node Set"},
        {R"(, "quorum": "majority", "witness": "share", "behaviour": {"protocol": 2008})", L"File Share Witness"},
        {R"(, "quorum": "majority", "witness": "disk", "behaviour": {"protocol": 2008})", L"Cluster Disk 1"},
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

TEST_F(CoreGroup, TheClusterTellsWhatHoldsTheQuorum) {
    const DWORD legacy = 4194304;
    const DWORD hybrid = 1024;
    const struct {
        const char* cluster;
        const wchar_t* resource;
        const wchar_t* device;
        DWORD number;
    } rows[] = {
        {"", L"Disk Q:", L"Q:\\MSCS\\", legacy},
        {R"(, "quorum": "majority")", L"Majority Node Set", L"", legacy},
        {R"(, "behaviour": {"protocol": 2008})", L"Cluster Disk 1", L"Q:\\MSCS\\", legacy},
        {R"(, "quorum": "majority", "behaviour": {"protocol": 2008})", L"", L"", 0},
        {R"(, "quorum": "majority", "witness": "share", "behaviour": {"protocol": 2008})", L"File Share Witness", L"",
         hybrid},
        {R"(, "quorum": "majority", "witness": "disk", "behaviour": {"protocol": 2008})", L"Cluster Disk 1",
         L"Q:\\MSCS\\", hybrid},
    };
    for (const auto& row : rows) {
        Load(Model(row.cluster));
        wchar_t name[40] = L"";
        wchar_t device[40] = L"";
        DWORD nameLength = 40;
        DWORD deviceLength = 40;
        DWORD number = 1;
        EXPECT_EQ(GetClusterQuorumResource(m_cluster, name, &nameLength, device, &deviceLength, &number), 0u);
        EXPECT_STREQ(name, row.resource) << row.cluster;
        EXPECT_STREQ(device, row.device) << row.cluster;
        EXPECT_EQ(number, row.number) << row.cluster;
    }
}

TEST_F(CoreGroup, TheRoomForWhatHoldsTheQuorumIsToldWhereItIsShort) {
    Load(Model(""));
    wchar_t name[3] = L"";
    wchar_t device[40] = L"";
    DWORD nameLength = 3;
    DWORD deviceLength = 40;
    DWORD number = 0;
    EXPECT_EQ(GetClusterQuorumResource(m_cluster, name, &nameLength, device, &deviceLength, &number),
              static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(nameLength, 7u);
    EXPECT_EQ(deviceLength, 8u);
    EXPECT_EQ(GetClusterQuorumResource(m_cluster, nullptr, &nameLength, device, &deviceLength, &number),
              static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST_F(CoreGroup, AWitnessIsWhereAMajorityGoesOn) {
    EXPECT_EQ(LoadError(Model(R"(, "witness": "share")")),
              "cluster.witness: there is one only where the majority goes on");
    EXPECT_EQ(LoadError(Model(R"(, "quorum": "majority", "witness": "disk")")),
              "cluster.witness: a disk is one since 2008 only");
    EXPECT_EQ(LoadError(Model(R"(, "quorum": "majority", "witness": "all")")),
              "cluster.witness: \"none\", \"share\" or \"disk\" is expected");
    Load(Model(R"(, "quorum": "majority", "witness": "share")"));
    EXPECT_THAT(ReadModel(), HasSubstr("\"witness\": \"share\""));
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
    EXPECT_EQ(OfflineClusterResource(Resource(L"Disk Q:")), static_cast<DWORD>(ERROR_INVALID_OPERATION_ON_QUORUM));
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
