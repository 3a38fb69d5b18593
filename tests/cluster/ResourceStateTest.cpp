#include "ClusterFixture.h"

#include <cwchar>

using namespace harness;

namespace {

typedef CClusterResource Res;

using ResourceState = OpenClusterTest;

// Texts
// ------------------------------------------------------------------------------------------------------------------

TEST(ResourceStateText, IsThatOfTheTable) {
    const wchar_t* const expected[] = {L"[INITIALIZING]", L"[ONLINE]",         L"[OFFLINE]",         L"[FAILED]",
                                       L"[PENDING]",      L"[ONLINE_PENDING]", L"[OFFLINE_PENDING]", L"RES_STATE_END"};
    for (int state = 0; state <= Res::RES_STATE_END; ++state) {
        EXPECT_STREQ(Res::GetStateString(state), expected[state]);
    }
}

// GetResourceState
// ---------------------------------------------------------------------------------------------------------

struct StateMapping {
    const char* name;
    int clusterState;
    Res::RES_STATE state;

    friend void PrintTo(const StateMapping& row, std::ostream* out) {
        *out << row.name;
    }
};

using StateMap = OpenClusterTestWith<StateMapping>;

TEST_P(StateMap, KnownStatesAreMappedAndOthersAreLogged) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto patch = PatchImport(clusapi, GetClusterResourceState, [](HRESOURCE, LPWSTR, LPDWORD, LPWSTR, LPDWORD) {
        return static_cast<CLUSTER_RESOURCE_STATE>(GetParam().clusterState);
    });
    EXPECT_EQ(resource.GetResourceState(nullptr, nullptr), GetParam().state);
    EXPECT_EQ(TakeLog(), GetParam().clusterState == -1                ? "E ClusterResourceStateUnknown == 0\n"
                         : GetParam().state == Res::RES_STATE_UNKNOWN ? "E Unknow resource state\n"
                                                                      : "");
}

const StateMapping StateMappings[] = {{"TheClustersUnknown", -1, Res::RES_STATE_UNKNOWN},
                                      {"BeforeInitializing", 0, Res::RES_STATE_UNKNOWN},
                                      {"Initializing", 1, Res::RES_STATE_INITIALIZING},
                                      {"Online", 2, Res::RES_STATE_ONLINE},
                                      {"Offline", 3, Res::RES_STATE_OFFLINE},
                                      {"Failed", 4, Res::RES_STATE_FAILED},
                                      {"BehindFailed", 5, Res::RES_STATE_UNKNOWN},
                                      {"BeforePending", 127, Res::RES_STATE_UNKNOWN},
                                      {"Pending", 128, Res::RES_STATE_PENDING},
                                      {"OnlinePending", 129, Res::RES_STATE_ONLINE_PENDING},
                                      {"OfflinePending", 130, Res::RES_STATE_OFFLINE_PENDING},
                                      {"BehindPending", 131, Res::RES_STATE_UNKNOWN}};

INSTANTIATE_TEST_SUITE_P(States, StateMap, ::testing::ValuesIn(StateMappings), RowName());

TEST(ResourceStateNumbers, ArePartOfTheInterface) {
    EXPECT_EQ(Res::RES_STATE_UNKNOWN, -1);
    EXPECT_EQ(Res::RES_STATE_INITIALIZING, 0);
    EXPECT_EQ(Res::RES_STATE_ONLINE, 1);
    EXPECT_EQ(Res::RES_STATE_OFFLINE, 2);
    EXPECT_EQ(Res::RES_STATE_FAILED, 3);
    EXPECT_EQ(Res::RES_STATE_PENDING, 4);
    EXPECT_EQ(Res::RES_STATE_ONLINE_PENDING, 5);
    EXPECT_EQ(Res::RES_STATE_OFFLINE_PENDING, 6);
    EXPECT_EQ(Res::RES_STATE_END, 7);
}

TEST_F(ResourceState, GivesOwnerNodeAndGroup) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    std::wstring node;
    std::wstring group;
    EXPECT_EQ(resource.GetResourceState(&node, &group), Res::RES_STATE_ONLINE);
    EXPECT_EQ(node, L"NODE-A");
    EXPECT_EQ(group, L"EVS1");
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(TakeJournal(), Lines({"GetClusterResourceState(EVS1 IP)=2"}));
}

TEST_F(ResourceState, BuffersArePreparedOnlyForWhatIsAsked) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    struct Call {
        bool node;
        DWORD cchNode;
        bool group;
        DWORD cchGroup;
    } call = {};
    const auto patch = PatchImport(clusapi, GetClusterResourceState,
                                   [&](HRESOURCE h, LPWSTR node, LPDWORD cchNode, LPWSTR group, LPDWORD cchGroup) {
                                       call = {node != nullptr, *cchNode, group != nullptr, *cchGroup};
                                       return ::GetClusterResourceState(h, node, cchNode, group, cchGroup);
                                   });
    std::wstring text;
    EXPECT_EQ(resource.GetResourceState(nullptr, nullptr), Res::RES_STATE_ONLINE);
    EXPECT_FALSE(call.node || call.group);
    EXPECT_EQ(call.cchNode, 0u);
    EXPECT_EQ(call.cchGroup, 0u);
    EXPECT_EQ(resource.GetResourceState(&text, nullptr), Res::RES_STATE_ONLINE);
    EXPECT_TRUE(call.node && !call.group);
    EXPECT_EQ(call.cchNode, 16u);
    EXPECT_EQ(resource.GetResourceState(nullptr, &text), Res::RES_STATE_ONLINE);
    EXPECT_TRUE(!call.node && call.group);
    EXPECT_EQ(call.cchNode, 0u);
    EXPECT_EQ(call.cchGroup, 256u);
}

TEST_F(ResourceState, WithoutAHandleIsLogged) {
    CClusterResource resource;
    std::wstring node = L"before";
    EXPECT_EQ(resource.GetResourceState(&node, nullptr), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(node, L"before");
    EXPECT_EQ(TakeLog(), Lines({"E NULL == m_hResource"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ResourceState, AFailureLeavesTheTextsAlone) {
    Platform().FailCall("GetClusterResourceState", 5006);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    std::wstring node = L"node";
    std::wstring group = L"group";
    EXPECT_EQ(resource.GetResourceState(&node, &group), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(node, L"node");
    EXPECT_EQ(group, L"group");
    EXPECT_EQ(TakeLog(), Lines({"E ClusterResourceStateUnknown == 0"}));
}

TEST_F(ResourceState, AnEmptyNodeNameIsAFailure) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto patch =
        PatchImport(clusapi, GetClusterResourceState, [](HRESOURCE, LPWSTR, LPDWORD cchNode, LPWSTR, LPDWORD) {
            *cchNode = 0;
            return ClusterResourceOnline;
        });
    std::wstring node = L"node";
    std::wstring group = L"group";
    EXPECT_EQ(resource.GetResourceState(&node, &group), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(node, L"node");
    EXPECT_EQ(group, L"group");
    EXPECT_EQ(TakeLog(), Lines({"E dwCChNode <= 0"}));
}

TEST_F(ResourceState, AnEmptyGroupNameIsAFailureButTheNodeIsWritten) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    const auto patch = PatchImport(clusapi, GetClusterResourceState,
                                   [](HRESOURCE, LPWSTR node, LPDWORD cchNode, LPWSTR, LPDWORD cchGroup) {
                                       node[0] = L'N';
                                       node[1] = L'\0';
                                       *cchNode = 1;
                                       *cchGroup = 0;
                                       return ClusterResourceOnline;
                                   });
    std::wstring node = L"node";
    std::wstring group = L"group";
    EXPECT_EQ(resource.GetResourceState(&node, &group), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(node, L"N");
    EXPECT_EQ(group, L"group");
    EXPECT_EQ(TakeLog(), Lines({"E dwCChGroup <= 0"}));
}

using NodeNameLength = OpenClusterTestWith<std::size_t>;

TEST_P(NodeNameLength, UpToFifteenCharactersFit) {
    const std::string name(GetParam(), 'N');
    cluster.Load(GivenCluster().Node(name).Group("G", name).IpAddress("IP", "10.0.0.1"));
    CClusterResource resource;
    cluster.Open(resource, L"IP");
    std::wstring node = L"before";
    if (name.size() <= 15) {
        EXPECT_EQ(resource.GetResourceState(&node, nullptr), Res::RES_STATE_ONLINE);
        EXPECT_EQ(Utf8(node), name);
    } else {
        EXPECT_EQ(resource.GetResourceState(&node, nullptr), Res::RES_STATE_UNKNOWN);
        EXPECT_EQ(node, L"before");
        EXPECT_EQ(TakeLog(), Lines({"E ClusterResourceStateUnknown == 0"}));
        EXPECT_EQ(TakeJournal(), Lines({"GetClusterResourceState(IP)=-1"})) << "there is no second try";
    }
    EXPECT_EQ(resource.GetResourceState(nullptr, nullptr), Res::RES_STATE_ONLINE) << "nobody asked for the name";
}

INSTANTIATE_TEST_SUITE_P(Boundary, NodeNameLength, ::testing::Values(1u, 14u, 15u, 16u, 17u),
                         ::testing::PrintToStringParamName());

using GroupNameLength = OpenClusterTestWith<std::size_t>;

TEST_P(GroupNameLength, UpTo255CharactersFit) {
    const std::string name(GetParam(), 'G');
    cluster.Load(GivenCluster().Node("NODE-A").Group(name, "NODE-A").IpAddress("IP", "10.0.0.1"));
    CClusterResource resource;
    cluster.Open(resource, L"IP");
    std::wstring group = L"before";
    const bool fits = name.size() <= 255;
    EXPECT_EQ(resource.GetResourceState(nullptr, &group), fits ? Res::RES_STATE_ONLINE : Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(Utf8(group), fits ? name : "before");
    EXPECT_EQ(TakeLog(), fits ? "" : "E ClusterResourceStateUnknown == 0\n");
}

INSTANTIATE_TEST_SUITE_P(Boundary, GroupNameLength, ::testing::Values(254u, 255u, 256u, 5000u),
                         ::testing::PrintToStringParamName());

// Online and offline
// -------------------------------------------------------------------------------------------------------

struct Switch {
    const char* name;
    Res::RES_STATE (Res::*run)();
    const wchar_t* resource; // which is in the other state
    const char* call;
    Res::RES_STATE reached;
    Res::RES_STATE pending;
    DWORD refusal; // a code of the call

    std::string Log(const std::string& message = "") const {
        const Texts middle = message.empty() ? Texts() : Texts{message};
        return Lines(Texts{std::string("> ") + name} + middle + Texts{std::string("< ") + name});
    }
    friend void PrintTo(const Switch& row, std::ostream* out) {
        *out << row.name;
    }
};

const Switch Switches[] = {{"OnlineResource", &Res::OnlineResource, L"Spare IP", "OnlineClusterResource",
                            Res::RES_STATE_ONLINE, Res::RES_STATE_ONLINE_PENDING, 5018},
                           {"OfflineResource", &Res::OfflineResource, L"EVS1 Name", "OfflineClusterResource",
                            Res::RES_STATE_OFFLINE, Res::RES_STATE_OFFLINE_PENDING, 5038}};

class ResourceSwitch : public ClusterTest, public ::testing::WithParamInterface<Switch> {
protected:
    OpenedCluster cluster{*this, ExchangeCluster().IpAddress("Spare IP", "10.0.0.9").State("Offline")};
};

INSTANTIATE_TEST_SUITE_P(Of, ResourceSwitch, ::testing::ValuesIn(Switches), RowName());

TEST_P(ResourceSwitch, GivesTheStateReached) {
    const Switch& row = GetParam();
    CClusterResource resource;
    cluster.Open(resource, row.resource);
    EXPECT_EQ((resource.*row.run)(), row.reached);
    EXPECT_EQ(TakeLog(), row.Log());
    EXPECT_EQ(TakeJournal(), Lines({std::string(row.call) + "(" + Utf8(row.resource) + ")"}));
    EXPECT_EQ(resource.GetResourceState(nullptr, nullptr), row.reached);
}

TEST_P(ResourceSwitch, DoesNotWaitForAPendingResource) {
    const Switch& row = GetParam();
    Platform().FailCall(row.call, ERROR_IO_PENDING);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_EQ((resource.*row.run)(), row.pending);
    EXPECT_EQ(TakeLog(), row.Log());
    EXPECT_TRUE(Platform().sleeps.empty());
}

TEST_P(ResourceSwitch, FailureIsLoggedWithTheLastErrorNotTheCode) {
    const Switch& row = GetParam();
    Platform().FailCall(row.call, row.refusal);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    SetLastError(4711);
    EXPECT_EQ((resource.*row.run)(), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(TakeLog(), row.Log("E Unexected return value: 4711"));
}

TEST_F(ResourceState, OnlineWithoutAHandleIsLogged) {
    CClusterResource resource;
    EXPECT_EQ(resource.OnlineResource(), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(TakeLog(), Lines({"> OnlineResource", "E Resource handle is NULL", "< OnlineResource"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ResourceState, OfflineWithoutAHandleHasNoMessageAndNoLeavingLine) {
    CClusterResource resource;
    EXPECT_EQ(resource.OfflineResource(), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(TakeLog(), Lines({"> OfflineResource"}));
    EXPECT_EQ(TakeJournal(), "");
}

// On this node
// -------------------------------------------------------------------------------------------------------------

TEST_F(ResourceState, OnlineOnThisNode) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    std::wstring group;
    EXPECT_TRUE(resource.IsOnlineOnCurrentNode(&group));
    EXPECT_EQ(group, L"EVS1");
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::IsOnlineOnCurrentNode", "I Local node name:NODE-A",
                                "I Local node name:NODE-A", "< CClusterResource::IsOnlineOnCurrentNode"}));
    EXPECT_EQ(TakeJournal(), Lines({"GetComputerNameW()", "GetClusterResourceState(EVS1 IP)=2"}));
}

TEST_F(ResourceState, OnlineElsewhereIsNotOnlineHere) {
    CClusterResource resource;
    cluster.Open(resource, L"Cluster IP");
    std::wstring group;
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(&group));
    EXPECT_EQ(group, L"Cluster Group");
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::IsOnlineOnCurrentNode", "I Local node name:NODE-A",
                                "I Local node name:NODE-B", "< CClusterResource::IsOnlineOnCurrentNode"}));
}

TEST_F(ResourceState, OfflineHereIsNotOnlineHere) {
    cluster.Load(ExchangeCluster().IpAddress("Spare IP", "10.0.0.9").State("Offline"));
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(nullptr));
    EXPECT_EQ(TakeLog(),
              Lines({"> CClusterResource::IsOnlineOnCurrentNode", "I Local node name:NODE-A",
                     "I Resource is not online, return false", "< CClusterResource::IsOnlineOnCurrentNode"}));
    EXPECT_TRUE(resource.IsOnCurrentNode(nullptr));
}

TEST_F(ResourceState, AnOwnerThatDiffersInLetterCaseOnlyIsAnotherNode) {
    SetComputerName(L"node-a");
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(nullptr));
    EXPECT_FALSE(resource.IsOnCurrentNode(nullptr));
}

TEST_F(ResourceState, WithoutAComputerNameNothingIsOnThisNode) {
    Platform().FailCall("GetComputerNameW", 8, 1, FaultMode::FromThenOn);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    std::wstring group = L"before";
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(&group));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::IsOnlineOnCurrentNode", "E Cannot get computer name, code:8",
                                "< CClusterResource::IsOnlineOnCurrentNode"}));
    EXPECT_FALSE(resource.IsOnCurrentNode(&group));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::IsOnCurrentNode", "E Cannot get computer name, code:8",
                                "< CClusterResource::IsOnCurrentNode"}));
    EXPECT_EQ(group, L"before");
    EXPECT_EQ(TakeJournal(), Lines({"GetComputerNameW()=8", "GetComputerNameW()=8"}));
}

TEST_F(ResourceState, AComputerNameOfFifteenCharactersFitsAndOneOfSixteenDoesNot) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    SetComputerName(L"NNNNNNNNNNNNNNN");
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(nullptr));
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("I Local node name:NNNNNNNNNNNNNNN\n"));
    SetComputerName(L"NNNNNNNNNNNNNNNN");
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(nullptr));
    EXPECT_THAT(TakeLog(), ::testing::HasSubstr("E Cannot get computer name, code:111\n"));
}

TEST_F(ResourceState, OnThisNodeWhateverTheState) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    std::wstring group;
    EXPECT_TRUE(resource.IsOnCurrentNode(&group));
    EXPECT_EQ(group, L"EVS1");
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::IsOnCurrentNode", "< CClusterResource::IsOnCurrentNode"}));
    EXPECT_EQ(TakeJournal(), Lines({"GetComputerNameW()", "GetClusterResourceState(EVS1 IP)=2"}));
    CClusterResource other;
    cluster.Open(other, L"Cluster IP");
    EXPECT_FALSE(other.IsOnCurrentNode(nullptr));
}

TEST_F(ResourceState, AnUnknownStateIsNotOnThisNode) {
    Platform().FailCall("GetClusterResourceState", 5006);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_FALSE(resource.IsOnCurrentNode(nullptr));
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::IsOnCurrentNode", "E ClusterResourceStateUnknown == 0",
                                "< CClusterResource::IsOnCurrentNode"}));
}

TEST_F(ResourceState, WithoutAHandleNothingIsOnThisNode) {
    CClusterResource resource;
    EXPECT_FALSE(resource.IsOnlineOnCurrentNode(nullptr));
    EXPECT_EQ(TakeLog(),
              Lines({"> CClusterResource::IsOnlineOnCurrentNode", "I Local node name:NODE-A", "E NULL == m_hResource",
                     "I Resource is not online, return false", "< CClusterResource::IsOnlineOnCurrentNode"}));
    EXPECT_FALSE(resource.IsOnCurrentNode(nullptr));
}

TEST_F(ResourceState, AnUnrecognisedStateStillHasItsNodeAndGroup) {
    CClusterResource resource;
    cluster.Open(resource, L"Cluster IP");
    const auto patch = PatchImport(clusapi, GetClusterResourceState,
                                   [](HRESOURCE, LPWSTR node, LPDWORD cchNode, LPWSTR group, LPDWORD cchGroup) {
                                       *cchNode = static_cast<DWORD>(std::wcslen(std::wcscpy(node, L"NODE-A")));
                                       *cchGroup = static_cast<DWORD>(std::wcslen(std::wcscpy(group, L"G")));
                                       return ClusterResourceInherited;
                                   });
    std::wstring node;
    std::wstring group;
    EXPECT_EQ(resource.GetResourceState(&node, &group), Res::RES_STATE_UNKNOWN);
    EXPECT_EQ(node, L"NODE-A");
    EXPECT_EQ(group, L"G");
    EXPECT_TRUE(resource.IsOnCurrentNode(&group));
}

} // namespace
