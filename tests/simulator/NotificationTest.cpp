// Notification ports: what changes is told to whoever asked for it.
#include "SimulatorTest.h"

#include <thread>

using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

struct Told {
    DWORD change = 0;
    std::wstring name;
    DWORD_PTR key = 0;

    bool operator==(const Told& other) const {
        return change == other.change && name == other.name && key == other.key;
    }
};

std::ostream& operator<<(std::ostream& out, const Told& told) {
    return out << std::hex << told.change << " " << std::string(told.name.begin(), told.name.end()) << " " << told.key;
}

} // namespace

class Notifications : public SimulatorTest {
protected:
    void TearDown() override {
        if (m_port) {
            EXPECT_TRUE(CloseClusterNotifyPort(m_port));
        }
        SimulatorTest::TearDown();
    }

    void Open(DWORD filter, DWORD_PTR key = 0) {
        m_port = CreateClusterNotifyPort(static_cast<HCHANGE>(INVALID_HANDLE_VALUE), m_cluster, filter, key);
        ASSERT_NE(m_port, nullptr);
    }

    // All that waits.
    std::vector<Told> Take() const {
        std::vector<Told> all;
        for (;;) {
            Told told;
            wchar_t name[64] = L"";
            DWORD cch = 64;
            const DWORD code = GetClusterNotify(m_port, &told.key, &told.change, name, &cch, 0);
            if (code != ERROR_SUCCESS) {
                EXPECT_EQ(code, static_cast<DWORD>(WAIT_TIMEOUT));
                return all;
            }
            told.name = name;
            all.push_back(told);
        }
    }

    HCHANGE m_port = nullptr;
};

TEST_F(Notifications, TellStatesOfNodesGroupsAndResources) {
    Load();
    Open(CLUSTER_CHANGE_NODE_STATE | CLUSTER_CHANGE_GROUP_STATE | CLUSTER_CHANGE_RESOURCE_STATE);
    EXPECT_THAT(Take(), ElementsAre());
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), 0u);
    EXPECT_THAT(Take(), UnorderedElementsAre(Told{CLUSTER_CHANGE_RESOURCE_STATE, L"EVS1 SA"},
                                             Told{CLUSTER_CHANGE_GROUP_STATE, L"EVS1"}));
    ClusSimHappen("node-up", "NODE-B", nullptr, nullptr, 0);
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_NODE_STATE, L"NODE-B"}));
    EXPECT_EQ(MoveClusterGroup(Group(L"EVS2"), Node(L"NODE-B")), 0u);
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_GROUP_STATE, L"EVS2"})) << "all is as before, elsewhere";
}

TEST_F(Notifications, TellWhatIsAddedDeletedAndSet) {
    Load();
    Open(CLUSTER_CHANGE_RESOURCE_ADDED | CLUSTER_CHANGE_RESOURCE_DELETED | CLUSTER_CHANGE_RESOURCE_PROPERTY, 7);
    const ResourceOwner made(CreateClusterResource(Group(L"EVS1"), L"New", L"Generic Service", 0));
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_RESOURCE_ADDED, L"New", 7}));
    Bytes list;
    Append(list, 1);
    AppendEntry(list, CLUSPROP_SYNTAX_NAME, TextOf(L"ServiceName"));
    AppendEntry(list, CLUSPROP_SYNTAX_LIST_VALUE_SZ, TextOf(L"Spooler"));
    Append(list, CLUSPROP_SYNTAX_ENDMARK);
    EXPECT_EQ(SetControl(made, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, list), 0u);
    EXPECT_EQ(SetControl(made, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, list), 0u);
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_RESOURCE_PROPERTY, L"New", 7})) << "the second changed nothing";
    EXPECT_EQ(DeleteClusterResource(made), 0u);
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_RESOURCE_DELETED, L"New", 7}));
}

TEST_F(Notifications, AreToldOncePerInterestWithItsKey) {
    Load();
    Open(CLUSTER_CHANGE_RESOURCE_STATE, 1);
    EXPECT_EQ(CreateClusterNotifyPort(m_port, m_cluster, CLUSTER_CHANGE_GROUP_STATE, 2), m_port);
    EXPECT_EQ(RegisterClusterNotify(m_port, CLUSTER_CHANGE_RESOURCE_STATE, Resource(L"EVS1 SA"), 3), 0u);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), 0u);
    EXPECT_THAT(Take(), UnorderedElementsAre(Told{CLUSTER_CHANGE_RESOURCE_STATE, L"EVS1 SA", 1},
                                             Told{CLUSTER_CHANGE_RESOURCE_STATE, L"EVS1 SA", 3},
                                             Told{CLUSTER_CHANGE_GROUP_STATE, L"EVS1", 2}));
    EXPECT_EQ(ClusSimHappen("fail", "EVS1 Disk", nullptr, nullptr, 0), 0u);
    for (const Told& told : Take()) {
        EXPECT_NE(told.key, 3u) << "another resource";
    }
}

TEST_F(Notifications, TellThatTheClusterIsLostAndThatItIsThereAgain) {
    Load();
    Open(CLUSTER_CHANGE_CLUSTER_STATE | CLUSTER_CHANGE_CLUSTER_RECONNECT);
    ClusSimHappen("quorum-loss", nullptr, nullptr, nullptr, 0);
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_CLUSTER_STATE, L""}));
    ClusSimHappen("node-up", "NODE-A", nullptr, nullptr, 0);
    EXPECT_THAT(Take(), ElementsAre(Told{CLUSTER_CHANGE_CLUSTER_RECONNECT, L""}));
}

TEST_F(Notifications, WaitForABufferThatIsLargeEnough) {
    Load();
    Open(CLUSTER_CHANGE_RESOURCE_STATE);
    EXPECT_EQ(OnlineClusterResource(Resource(L"EVS1 SA")), 0u);
    DWORD_PTR key = 0;
    DWORD change = 0;
    wchar_t name[8] = L"";
    DWORD cch = 7;
    EXPECT_EQ(GetClusterNotify(m_port, &key, &change, name, &cch, 0), static_cast<DWORD>(ERROR_MORE_DATA));
    EXPECT_EQ(cch, 7u);
    cch = 8;
    EXPECT_EQ(GetClusterNotify(m_port, &key, &change, name, &cch, 0), 0u);
    EXPECT_STREQ(name, L"EVS1 SA");
}

TEST_F(Notifications, WakeWhoeverWaits) {
    Load();
    Open(CLUSTER_CHANGE_NODE_STATE);
    std::thread other([] {
        Sleep(20);
        ClusSimHappen("node-up", "NODE-B", nullptr, nullptr, 0);
    });
    DWORD_PTR key = 0;
    DWORD change = 0;
    wchar_t name[64] = L"";
    DWORD cch = 64;
    EXPECT_EQ(GetClusterNotify(m_port, &key, &change, name, &cch, 10000), 0u);
    EXPECT_STREQ(name, L"NODE-B");
    other.join();
    EXPECT_EQ(GetClusterNotify(m_port, &key, &change, name, &cch, 10), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(Notifications, RefuseWhatIsNoPortNoObjectOrNoChangeOfItsKind) {
    Load();
    Open(CLUSTER_CHANGE_NODE_STATE);
    ExpectBadHandleCalls(2);
    const ResourceOwner resource = Resource(L"EVS1 IP");
    EXPECT_EQ(RegisterClusterNotify(m_port, CLUSTER_CHANGE_GROUP_STATE, resource, 0),
              static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(RegisterClusterNotify(m_port, CLUSTER_CHANGE_RESOURCE_STATE, nullptr, 0),
              static_cast<DWORD>(ERROR_INVALID_HANDLE));
    DWORD_PTR key = 0;
    EXPECT_EQ(GetClusterNotify(nullptr, &key, nullptr, nullptr, nullptr, 0), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(CloseClusterNotifyPort(nullptr));
    EXPECT_TRUE(Accepts("GetClusterNotify#2=1722"));
    EXPECT_EQ(ClusSimOpenHandles("port"), 1u);
}
