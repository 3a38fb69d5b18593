// Networks, the names and addresses that the cluster answers to, and disk sizes.
#include "SimulatorTest.h"

#include <cstring>

using testing::HasSubstr;

namespace {

const char* const TwoNetworks = R"({"cluster": {"name": "MAIL", "coreGroup": "none", "domain": "corp.example"},
  "nodes": [{"name": "N1"}, {"name": "N2"}, {"name": "N3", "state": "down"}],
  "networks": [{"name": "Public"}, {"name": "Private", "state": "down"}],
  "networkInterfaces": [
    {"name": "N1 - Public", "node": "N1", "network": "Public", "address": "10.0.0.1"},
    {"name": "N2 - Public", "node": "N2", "network": "Public", "address": "10.0.0.2", "state": "failed"},
    {"name": "N3 - Public", "node": "N3", "network": "Public", "address": "10.0.0.3"},
    {"name": "N1 - Private", "node": "N1", "network": "Private", "address": "10.1.0.1"}],
  "groups": [{"name": "G", "owner": "N1"}, {"name": "Cluster Group", "owner": "n1"}],
  "resources": [
    {"name": "Address", "type": "IP Address", "id": "1", "group": "G", "private": {"Network": "public", "Address": "10.0.0.9"}},
    {"name": "Other", "type": "IP Address", "id": "2", "group": "G", "private": {"Network": "Private"}},
    {"name": "Missing", "type": "IP Address", "id": "3", "group": "G", "private": {"Network": "None"}},
    {"name": "Free", "type": "IP Address", "id": "4", "group": "G"},
    {"name": "Cluster IP", "type": "IP Address", "id": "5", "group": "Cluster Group", "core": true, "state": "Online",
     "private": {"Network": "Public", "Address": "10.0.0.8"}},
    {"name": "Disk", "type": "Physical Disk", "id": "6", "group": "G",
     "disk": {"signature": 5, "number": 1, "size": 5000000000, "partitions": [{"device": "F:"}]}}]})";

} // namespace

class ClusterNetwork : public SimulatorTest {
protected:
    DWORD OpenCode(const wchar_t* name) {
        const ClusterOwner cluster(OpenCluster(name));
        return cluster ? 0 : GetLastError();
    }
};

TEST_F(ClusterNetwork, NetworksAndInterfacesAreEnumerated) {
    Load(TwoNetworks);
    EXPECT_THAT(ListCluster(m_cluster, CLUSTER_ENUM_NETWORK | CLUSTER_ENUM_NETINTERFACE),
                testing::ElementsAre(ListedName{CLUSTER_ENUM_NETWORK, L"Public"},
                                     ListedName{CLUSTER_ENUM_NETWORK, L"Private"},
                                     ListedName{CLUSTER_ENUM_NETINTERFACE, L"N1 - Public"},
                                     ListedName{CLUSTER_ENUM_NETINTERFACE, L"N2 - Public"},
                                     ListedName{CLUSTER_ENUM_NETINTERFACE, L"N3 - Public"},
                                     ListedName{CLUSTER_ENUM_NETINTERFACE, L"N1 - Private"}));
}

TEST_F(ClusterNetwork, AnAddressNeedsAnInterfaceThatIsUpOnANetworkThatIsUp) {
    Load(TwoNetworks);
    EXPECT_EQ(OnlineClusterResource(Resource(L"Address")), 0u);
    EXPECT_EQ(OnlineClusterResource(Resource(L"Free")), 0u) << "bound to none";
    EXPECT_EQ(OnlineClusterResource(Resource(L"Other")), static_cast<DWORD>(ERROR_RESMON_ONLINE_FAILED));
    EXPECT_EQ(OnlineClusterResource(Resource(L"Missing")), static_cast<DWORD>(ERROR_RESMON_ONLINE_FAILED));
    EXPECT_EQ(StateOf(L"Other"), ClusterResourceFailed);
    EXPECT_EQ(MoveClusterGroup(Group(L"G"), Node(L"N2")), 0u);
    EXPECT_EQ(StateOf(L"Address"), ClusterResourceFailed) << "the interface of N2 has failed";
    EXPECT_EQ(StateOf(L"Free"), ClusterResourceOnline);
}

TEST_F(ClusterNetwork, AddressesFailWhenTheirNetworkGoesDown) {
    Load(TwoNetworks);
    EXPECT_EQ(OnlineClusterResource(Resource(L"Address")), 0u);
    EXPECT_EQ(ClusSimHappen("network-down", "Public", nullptr, nullptr, 0), 0u);
    EXPECT_EQ(StateOf(L"Address"), ClusterResourceFailed);
    EXPECT_EQ(StateOf(L"Cluster IP"), ClusterResourceFailed);
    EXPECT_THAT(ReadModel(), HasSubstr("\"name\": \"Public\",\n      \"state\": \"down\""));
    EXPECT_EQ(ClusSimHappen("network-up", "public", nullptr, nullptr, 0), 0u);
    EXPECT_EQ(OnlineClusterResource(Resource(L"Address")), 0u);
    char error[100] = "";
    EXPECT_EQ(ClusSimHappen("network-down", "NoSuch", nullptr, error, sizeof(error)),
              static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_STREQ(error, "network-down: there is no network NoSuch");
}

TEST_F(ClusterNetwork, AnAddressNeedsItsNetworkWhenItsTimeIsOver) {
    Load(Replaced(TwoNetworks, "{\"Network\": \"public\", \"Address\": \"10.0.0.9\"}",
                  "{\"Network\": \"public\", \"Address\": \"10.0.0.9\"}, \"onlineMs\": 2000"));
    ClusSimUseManualClock();
    EXPECT_EQ(OnlineClusterResource(Resource(L"Address")), static_cast<DWORD>(ERROR_IO_PENDING));
    EXPECT_EQ(ClusSimHappen("network-down", "Public", nullptr, nullptr, 0), 0u);
    EXPECT_EQ(StateOf(L"Address"), ClusterResourceOnlinePending);
    ClusSimAdvanceClock(2000);
    EXPECT_EQ(StateOf(L"Address"), ClusterResourceFailed);
}

TEST_F(ClusterNetwork, NetworksAreOpenedAndTellTheirStates) {
    Load(TwoNetworks);
    const HNETWORK network = OpenClusterNetwork(m_cluster, L"PUBLIC");
    EXPECT_EQ(GetClusterNetworkState(network), ClusterNetworkUp);
    EXPECT_TRUE(CloseClusterNetwork(network));
    const HNETWORK other = OpenClusterNetwork(m_cluster, L"Private");
    EXPECT_EQ(GetClusterNetworkState(other), ClusterNetworkDown);
    EXPECT_TRUE(ClusSimAddFault("GetClusterNetworkState@Private=5"));
    EXPECT_EQ(GetClusterNetworkState(other), ClusterNetworkStateUnknown);
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_TRUE(CloseClusterNetwork(other));
    EXPECT_EQ(OpenClusterNetwork(m_cluster, L"None"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CLUSTER_NETWORK_NOT_FOUND));
}

TEST_F(ClusterNetwork, InterfacesAreOpenedAndTellStateNodeNetworkAndAddress) {
    Load(TwoNetworks);
    const HNETINTERFACE card = OpenClusterNetInterface(m_cluster, L"N2 - Public");
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(GetClusterNetInterfaceState(card), ClusterNetInterfaceFailed);
    const auto control = [card](DWORD code) {
        Bytes bytes(400);
        DWORD size = 0;
        EXPECT_EQ(ClusterNetInterfaceControl(card, nullptr, code, nullptr, 0, bytes.data(), 400, &size), 0u);
        bytes.resize(size);
        return bytes;
    };
    EXPECT_EQ(control(CLUSCTL_NETINTERFACE_GET_NAME), TextOf(L"N2 - Public"));
    EXPECT_EQ(control(CLUSCTL_NETINTERFACE_GET_NODE), TextOf(L"N2"));
    EXPECT_EQ(control(CLUSCTL_NETINTERFACE_GET_NETWORK), TextOf(L"Public"));
    const Bytes properties = control(CLUSCTL_NETINTERFACE_GET_RO_COMMON_PROPERTIES);
    LPWSTR address = nullptr;
    EXPECT_EQ(ResUtilFindSzProperty(const_cast<unsigned char*>(properties.data()),
                                    static_cast<DWORD>(properties.size()), L"Address", &address),
              0u);
    EXPECT_STREQ(address, L"10.0.0.2");
    LocalFree(address);
    DWORD size = 7;
    EXPECT_EQ(ClusterNetInterfaceControl(card, nullptr, CLUSCTL_NETINTERFACE_GET_NAME, nullptr, 0, nullptr, 0, &size),
              static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(size, 24u);
    EXPECT_EQ(ClusterNetInterfaceControl(card, nullptr, 0x06000011, nullptr, 0, nullptr, 0, &size),
              static_cast<DWORD>(ERROR_INVALID_FUNCTION));
    EXPECT_TRUE(CloseClusterNetInterface(card));
    EXPECT_EQ(OpenClusterNetInterface(m_cluster, L"None"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CLUSTER_NETINTERFACE_NOT_FOUND));
}

TEST_F(ClusterNetwork, TheClusterIsOpenedByNameDnsNameAndAddress) {
    Load(TwoNetworks);
    for (const wchar_t* const name :
         {L"mail", L"MAIL.corp.example", L"n2", L"N3.CORP.EXAMPLE", L"10.0.0.1", L"10.0.0.8"}) {
        EXPECT_EQ(OpenCode(name), 0u) << name;
    }
    for (const wchar_t* const name :
         {L"N4", L"10.0.0.3", L"10.0.0.2", L"10.0.0.9", L"mail.other", L"corp.example", L""}) {
        EXPECT_EQ(OpenCode(name), static_cast<DWORD>(RPC_S_SERVER_UNAVAILABLE)) << name;
    }
    EXPECT_EQ(OpenClusterNode(m_cluster, L"N1.corp.example"), nullptr) << "a node is opened by its plain name only";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_CLUSTER_NODE_NOT_FOUND));
}

TEST_F(ClusterNetwork, AnOwnerIsToldInTheLetterCaseOfTheModelUntilTheGroupMoves) {
    Load(TwoNetworks);
    const GroupOwner group = Group(L"Cluster Group");
    EXPECT_EQ(OwnerOf(group), L"n1");
    EXPECT_THAT(ReadModel(), HasSubstr("\"owner\": \"n1\""));
    EXPECT_EQ(MoveClusterGroup(group, Node(L"N2")), 0u);
    EXPECT_EQ(OwnerOf(group), L"N2");
}

TEST_F(ClusterNetwork, ADiskTellsItsSizeBehindItsNumber) {
    Load(TwoNetworks);
    const Bytes information = Control(Resource(L"Disk"), CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO);
    DWORD syntax = 0;
    std::uint64_t size = 0;
    ASSERT_GT(information.size(), 52u);
    std::memcpy(&syntax, &information[36], sizeof(syntax));
    std::memcpy(&size, &information[44], sizeof(size));
    EXPECT_EQ(syntax, 0x000C0006u);
    EXPECT_EQ(size, 5000000000u);
    EXPECT_THAT(ReadModel(), HasSubstr("\"size\": 5000000000"));
}

TEST_F(ClusterNetwork, AModelThatContradictsItselfIsRefused) {
    const std::string start = R"({"cluster": {"name": "C", "coreGroup": "none"}, "nodes": [{"name": "N1"}], )";
    EXPECT_EQ(LoadError(start + R"("networks": [{"name": "A"}, {"name": "a"}]})"),
              "networks[1].name: the network stands twice");
    EXPECT_EQ(LoadError(start + R"("networks": [{"name": "A", "state": "slow"}]})"),
              "networks[0].state: up, down, partitioned or unavailable is expected");
    EXPECT_EQ(LoadError(start + R"("networkInterfaces": [{"name": "I", "node": "N1", "network": "A"}]})"),
              "networkInterfaces[0].network: there is no network A");
    EXPECT_EQ(LoadError(start + R"("networks": [{"name": "A"}],
                  "networkInterfaces": [{"name": "I", "node": "N1", "network": "A"}, {"name": "i", "node": "N1", "network": "A"}]})"),
              "networkInterfaces[1].name: the interface stands twice");
    EXPECT_EQ(LoadError(start + R"("networks": [{"name": "A"}],
                                   "networkInterfaces": [{"name": "I", "node": "N2", "network": "A"}]})"),
              "networkInterfaces[0].node: there is no node N2");
}
