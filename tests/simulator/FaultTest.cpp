// Faults on demand, and the journal.
#include "SimulatorTest.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <sstream>
#include <thread>

using testing::ElementsAre;

namespace {

const DWORD TickOfClock = 16; // milliseconds

std::vector<nlohmann::json> JournalLines() {
    std::vector<nlohmann::json> lines;
    std::istringstream text(ReadJournal());
    for (std::string line; std::getline(text, line);) {
        lines.push_back(nlohmann::json::parse(line));
    }
    return lines;
}

} // namespace

class Fault : public SimulatorTest {
protected:
    DWORD OpenError(const wchar_t* name) {
        const ResourceOwner resource(OpenClusterResource(m_cluster, name));
        return static_cast<HRESOURCE>(resource) ? 0 : GetLastError();
    }
};

TEST_F(Fault, HowManyCallsItMatchedIsTold) {
    Load();
    ASSERT_TRUE(Accepts("OpenClusterResource@EVS1 IP#2=5007"));
    ASSERT_TRUE(Accepts("OpenClusterGroup=5"));
    const auto counts = [] {
        char text[40] = "";
        ClusSimReadFaultCounts(text, sizeof(text));
        return std::string(text);
    };
    EXPECT_EQ(counts(), "0\n0\n");
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0u);
    EXPECT_EQ(OpenError(L"EVS1 Disk"), 0u);
    EXPECT_EQ(counts(), "1\n0\n");
}

TEST_F(Fault, EveryCallWithoutAnOccurrence) {
    Load();
    ASSERT_TRUE(Accepts("OpenClusterResource=5007"));
    EXPECT_EQ(OpenError(L"EVS1 IP"), 5007u);
    EXPECT_EQ(OpenError(L"EVS1 Disk"), 5007u);
    ClusSimClearFaults();
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0u);
}

TEST_F(Fault, TheNamedObjectOnlyAndItsOccurrence) {
    Load();
    ASSERT_TRUE(Accepts("OpenClusterResource@evs1 disk#2=5"));
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0u);
    EXPECT_EQ(OpenError(L"EVS1 Disk"), 0u);
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0u);
    EXPECT_EQ(OpenError(L"EVS1 Disk"), 5u);
    EXPECT_EQ(OpenError(L"EVS1 Disk"), 0u);
}

TEST_F(Fault, FromAnOccurrenceOn) {
    Load();
    ASSERT_TRUE(Accepts("OpenClusterResource#2+=0x1234"));
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0u);
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0x1234u);
    EXPECT_EQ(OpenError(L"EVS1 IP"), 0x1234u);
}

TEST_F(Fault, CodesAreReturnedByCallsThatReturnCodes) {
    Load();
    ASSERT_TRUE(Accepts("OfflineClusterResource@EVS1 Disk=1450"));
    EXPECT_EQ(OfflineClusterResource(Resource(L"EVS1 Disk")), 1450u);
    EXPECT_EQ(StateOf(L"EVS1 Disk"), ClusterResourceOnline) << "a failed call changes nothing";
    ASSERT_TRUE(Accepts("ClusterEnum@NODE-B=8"));
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE);
    DWORD cch = 0;
    EXPECT_EQ(ClusterEnum(list, 0, nullptr, nullptr, &cch), 0u);
    EXPECT_EQ(ClusterEnum(list, 1, nullptr, nullptr, &cch), 8u);
    EXPECT_EQ(ClusterCloseEnum(list), 0u);
}

TEST_F(Fault, AControlIsNamedByItsCodeOrItsResource) {
    Load();
    ASSERT_TRUE(Accepts("ClusterResourceControl@0x01000039=1"));
    const ResourceOwner resource = Resource(L"EVS1 IP");
    DWORD cb = 5;
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_ID, nullptr, 0, nullptr, 0, &cb), 1u);
    EXPECT_EQ(cb, 0u);
    EXPECT_EQ(Control(resource, CLUSCTL_RESOURCE_GET_NAME), TextOf(L"EVS1 IP"));
    ASSERT_TRUE(Accepts("ClusterResourceControl@EVS1 IP=2"));
    EXPECT_EQ(ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, nullptr, 0, &cb), 2u);
}

TEST_F(Fault, StateFailsOrIsForced) {
    Load();
    ASSERT_TRUE(Accepts("GetClusterResourceState@EVS1 IP=state:130"));
    EXPECT_EQ(StateOf(L"EVS1 IP"), ClusterResourceOfflinePending);
    EXPECT_EQ(StateOf(L"EVS1 Disk"), ClusterResourceOnline);
    ClusSimClearFaults();
    ASSERT_TRUE(Accepts("GetClusterResourceState=5"));
    const ResourceOwner resource = Resource(L"EVS1 IP");
    EXPECT_EQ(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr), ClusterResourceStateUnknown);
    EXPECT_EQ(GetLastError(), 5u);
}

TEST_F(Fault, AFailingCloseClosesAllTheSame) {
    Load();
    ASSERT_TRUE(Accepts("CloseClusterResource@EVS1 IP=5"));
    ASSERT_TRUE(Accepts("ClusterCloseEnum=6"));
    HRESOURCE resource = OpenClusterResource(m_cluster, L"EVS1 IP");
    EXPECT_FALSE(CloseClusterResource(resource));
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_EQ(ClusSimOpenHandles("resource"), 0u);
    EXPECT_EQ(ClusterCloseEnum(ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE)), 6u);
    EXPECT_EQ(ClusSimOpenHandles("enum"), 0u);
}

TEST_F(Fault, ResourceUtilitiesAreHitToo) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 SA");
    WCHAR type[] = L"Physical Disk";
    ASSERT_TRUE(Accepts("ResUtilGetResourceDependency@EVS1 SA=5"));
    EXPECT_EQ(ResUtilGetResourceDependency(static_cast<HRESOURCE>(resource), type), nullptr);
    EXPECT_EQ(GetLastError(), 5u);
    ASSERT_TRUE(Accepts("ResUtilFindDwordProperty@A=8"));
    Bytes list(4);
    DWORD number = 0;
    EXPECT_EQ(ResUtilFindDwordProperty(list.data(), 4, L"a", &number), 8u);
    EXPECT_EQ(ResUtilFindDwordProperty(list.data(), 4, L"B", &number), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(Fault, ADependencyWhoseNameFitsNoRoomEndsTheSearch) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 SA");
    WCHAR type[] = L"Physical Disk";
    ASSERT_TRUE(Accepts("ClusterResourceEnum#1+=234"));
    EXPECT_EQ(ResUtilGetResourceDependency(static_cast<HRESOURCE>(resource), type), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MORE_DATA));
}

TEST_F(Fault, ADelayedCallDoesItsWorkLater) {
    Load();
    ASSERT_TRUE(Accepts("OfflineClusterResource@EVS1 Disk#1=delay_ms:200"));
    const ResourceOwner disk = Resource(L"EVS1 Disk");
    const DWORD begin = GetTickCount();
    EXPECT_EQ(OfflineClusterResource(disk), 0u);
    EXPECT_GE(GetTickCount() - begin, 200u - TickOfClock);
    EXPECT_EQ(StateOf(L"EVS1 Disk"), ClusterResourceOffline);
}

TEST_F(Fault, CallsOfOtherThreadsDoNotWaitForADelayedOne) {
    Load();
    ASSERT_TRUE(Accepts("GetClusterResourceState@EVS1 Disk=delay_ms:2000"));
    const ResourceOwner disk = Resource(L"EVS1 Disk");
    const int waiting = -2; // no state
    std::atomic<int> state(waiting);
    std::thread delayed([&]() { state = GetClusterResourceState(disk, nullptr, nullptr, nullptr, nullptr); });
    while (ClusSimCallCount("GetClusterResourceState") == 0) {
        Sleep(1);
    }
    EXPECT_EQ(OfflineClusterResource(disk), 0u);
    EXPECT_EQ(state, waiting);
    delayed.join();
    EXPECT_EQ(state, ClusterResourceOffline) << "it tells the state at the time of its work";
}

TEST_F(Fault, AnEntryOfAnEnumerationIsDelayedByItsName) {
    Load();
    ASSERT_TRUE(Accepts("ClusterEnum@NODE-B=delay_ms:200"));
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE);
    wchar_t name[16];
    DWORD cch = 16;
    const DWORD begin = GetTickCount();
    EXPECT_EQ(ClusterEnum(list, 1, nullptr, name, &cch), 0u);
    EXPECT_GE(GetTickCount() - begin, 200u - TickOfClock);
    EXPECT_STREQ(name, L"NODE-B");
    EXPECT_EQ(ClusterCloseEnum(list), 0u);
}

TEST_F(Fault, ThoseOfAModelGoWithIt) {
    ASSERT_TRUE(Accepts("CloseClusterNode=5"));
    const std::string faulty =
        Replaced(MailCluster, "\"nodes\":", "\"faults\": [\"OpenClusterGroup=5013\"], \"nodes\":");
    Load(faulty);
    EXPECT_EQ(OpenClusterGroup(m_cluster, L"EVS1"), nullptr);
    ASSERT_EQ(LoadError(MailCluster), "");
    Group(L"EVS1");
    EXPECT_FALSE(CloseClusterNode(OpenClusterNode(m_cluster, L"NODE-A"))) << "an added fault stays";
}

TEST_F(Fault, MalformedTextsAreRefused) {
    for (const char* text : {"", "OpenCluster", "OpenCluster=", "OpenCluster=x", "=5", "OpenCluster@=5",
                             "OpenCluster#0=5", "OpenCluster#x=5", "OpenCluster#=5", "NoSuchCall=5",
                             "OpenCluster=state:2", "GetClusterResourceState=state:"}) {
        EXPECT_FALSE(Accepts(text)) << text;
    }
    EXPECT_EQ(ClusSimAddFault(nullptr), 0);
    EXPECT_TRUE(Accepts("OpenClusterResource@a=b#c#3+=5")) << "names may hold the separators";
}

TEST_F(Fault, EffectsThatNoCallHasAreRefused) {
    for (const char* text : {"OpenCluster=-5", "OpenCluster=hang", "OpenCluster=5,kill:1", "OpenCluster=5,delay_ms:1",
                             "OpenCluster=output:\"x\"", "GetClusterResourceState=5,state:2", "OpenCluster=delay_ms:0",
                             "*=5", "OpenCluster=5x"}) {
        EXPECT_FALSE(Accepts(text)) << text;
    }
}

class Journal : public Fault {};

TEST_F(Journal, EachCallIsALineWithArgumentsAndResult) {
    Load();
    ClusSimClearJournal();
    OpenError(L"No \"such\"");
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, 8);
    DWORD cch = 4;
    wchar_t name[5];
    EXPECT_EQ(ClusterEnum(list, 0, nullptr, name, &cch), static_cast<DWORD>(ERROR_MORE_DATA));
    ClusterCloseEnum(list);

    const std::vector<nlohmann::json> lines = JournalLines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0]["seq"], 1);
    EXPECT_EQ(lines[0]["call"], "OpenClusterResource");
    EXPECT_EQ(lines[0]["args"]["name"], "No \"such\"");
    EXPECT_EQ(lines[0]["result"], nullptr);
    EXPECT_EQ(lines[0]["error"], 5007);
    EXPECT_EQ(lines[1]["call"], "ClusterOpenEnum");
    EXPECT_EQ(lines[1]["args"]["type"], 8);
    EXPECT_EQ(lines[2]["args"]["handle"], lines[1]["result"]) << "handles can be followed";
    EXPECT_EQ(lines[2]["args"]["index"], 0);
    EXPECT_EQ(lines[2]["args"]["cch"], 4);
    EXPECT_EQ(lines[2]["result"], 234);
    EXPECT_EQ(lines[3]["seq"], 4);
    EXPECT_EQ(lines[3]["call"], "ClusterCloseEnum");
}

TEST_F(Journal, SentPropertyListsAppearAsHexadecimal) {
    Load();
    const ResourceOwner resource = Resource(L"EVS2 IP");
    ClusSimClearJournal();
    EXPECT_EQ(SetControl(resource, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, {0, 0, 0, 0, 0xAB}), 0u);
    ASSERT_EQ(JournalLines().size(), 1u);
    EXPECT_EQ(JournalLines()[0]["args"]["in"], "00000000ab");
    EXPECT_EQ(JournalLines()[0]["args"]["code"], 0x01400086);
}

TEST_F(Journal, CallsOfResourceUtilitiesFollowTheCallsTheyMake) {
    Load();
    const ResourceOwner resource = Resource(L"EVS1 Name");
    ClusSimClearJournal();
    WCHAR type[] = L"Network Name";
    EXPECT_TRUE(ResUtilResourceTypesEqual(type, resource));
    std::vector<std::string> calls;
    for (const nlohmann::json& line : JournalLines()) {
        calls.push_back(line["call"]);
    }
    EXPECT_THAT(calls, ElementsAre("ClusterResourceControl", "ResUtilResourceTypesEqual"));
    EXPECT_EQ(JournalLines()[1]["result"], true);
}

TEST_F(Journal, ADelayedCallHasALineWhenItBeginsToWait) {
    Load();
    ASSERT_TRUE(Accepts("OpenClusterResource=delay_ms:1"));
    ClusSimClearJournal();
    OpenError(L"EVS1 IP");
    ASSERT_GE(JournalLines().size(), 2u);
    EXPECT_EQ(JournalLines()[0], (nlohmann::json{{"seq", 1}, {"call", "OpenClusterResource"}, {"delayMs", 1}}));
    EXPECT_EQ(JournalLines()[1]["seq"], 2);
    EXPECT_EQ(JournalLines()[1]["args"]["name"], "EVS1 IP");
}

TEST_F(Journal, CallsAreCountedWhetherRecordedOrNot) {
    Load();
    ClusSimClearJournal();
    ClusSimRecordJournal(0);
    OpenError(L"EVS1 IP");
    OpenError(L"EVS1 Disk");
    EXPECT_EQ(ClusSimCallCount("OpenClusterResource"), 2u);
    EXPECT_EQ(ClusSimCallCount(nullptr), 4u);
    EXPECT_EQ(ClusSimCallCount("OpenCluster"), 0u);
    EXPECT_EQ(ReadJournal(), "");
    ClusSimRecordJournal(1);
    OpenError(L"EVS1 IP");
    EXPECT_EQ(JournalLines().size(), 2u);
}
