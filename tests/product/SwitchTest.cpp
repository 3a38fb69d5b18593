// Bringing the product's resource online and taking it offline.
#include "Detour.h"
#include "Directions.h"
#include "clus_Cluster.h"

using namespace harness;

namespace {

using SwitchProduct = ClusterTest;

// Looks at the state, one per poll.
const char Poll[] = "GetClusterResourceState(KOVA)";

TEST_F(SwitchProduct, ReachesTheStateAtOnce) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction));
        EXPECT_TRUE(direction.run(L"EVS1", false, 0));
        EXPECT_EQ(TakeLog(), Lines({std::string("> ") + direction.name,
                                    "I Network name: EVS1",
                                    "I Opening cluster...",
                                    "> CCluster::OpenByLPC()",
                                    "< CCluster::OpenByLPC()",
                                    "I Performing FindFirstResourceNameByNetworkName...",
                                    "> CCluster::FindFirstResourceNameByNetworkName",
                                    "I Network name found: EVS1 Name for res:",
                                    "< CClusterResource::FindFirstResourceNameByNetworkName",
                                    "I Opening resource by name:EVS1 Name...",
                                    "I Getting resource state...",
                                    "I Opening group: EVS1...",
                                    "I Performing EnumResourceNamesInGroupByType...",
                                    "> EnumResourceNamesInGroupByType",
                                    "> EnumResourceNamesInGroup",
                                    "< EnumResourceNamesInGroup",
                                    "< EnumResourceNamesInGroupByType",
                                    "I Open resource: KOVA",
                                    direction.progress,
                                    std::string("> ") + direction.innerLog,
                                    std::string("< ") + direction.innerLog,
                                    direction.reached,
                                    direction.success,
                                    std::string("< ") + direction.name}));
        EXPECT_EQ(TakeJournal(), Lines(FindingProduct + Texts({std::string(direction.call) + "(KOVA)",
                                                               "CloseClusterResource(KOVA)", "CloseCluster()"})));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
    }
}

TEST_F(SwitchProduct, CountsAPendingStateAsSuccessWithoutAWait) {
    for (const Direction& direction : BothDirections) {
        const struct {
            bool wait;
            DWORD timeout;
        } cases[] = {{false, 0}, {false, 5000}, {true, 0}};
        for (const auto& item : cases) {
            Load(ServerFor(direction).Raw("staysPending", "true"));
            EXPECT_TRUE(direction.run(L"EVS1", item.wait, item.timeout));
            EXPECT_EQ(Lines(TakeMessages()),
                      Lines(Finding + Attempt(direction, "KOVA", {direction.pendingLine, direction.success})));
            EXPECT_EQ(Platform().CountCalls(Poll), 0u);
            EXPECT_TRUE(Platform().sleeps.empty());
            EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.pending);
        }
    }
}

TEST_F(SwitchProduct, FailsWithTheCallAndPollsOnlyWhenAskedTo) {
    for (const Direction& direction : BothDirections) {
        for (const bool wait : {false, true}) {
            Load(ServerFor(direction));
            Platform().sleeps.clear();
            AddFault(std::string(direction.call) + "@KOVA=5");
            EXPECT_FALSE(direction.run(L"EVS1", wait, 2000));
            const Texts messages = TakeMessages();
            ASSERT_EQ(messages.size(), Finding.size() + 4);
            EXPECT_EQ(messages[Finding.size() + 1], direction.progress);
            EXPECT_EQ(messages[Finding.size() + 2].substr(0, 26), "E Unexected return value: ");
            EXPECT_EQ(messages.back(), direction.failure);
            EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(wait ? 2 : 0, PollInterval));
            EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.from);
        }
    }
}

// Neither call gives such a state, but switching is prepared for it.
TEST_F(SwitchProduct, FailsWithAnyOtherStateUnderTheSameTextForBothDirections) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction));
        const auto failed = +[](CClusterResource*) { return CClusterResource::RES_STATE_FAILED; };
        const Detour online(&CClusterResource::OnlineResource, failed);
        const Detour offline(&CClusterResource::OfflineResource, failed);
        EXPECT_FALSE(direction.run(L"EVS1", false, 0));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Finding + Attempt(direction, "KOVA",
                                          {"E Unexpected OfflineResource Result, abort.", direction.failure})));
    }
}

TEST_F(SwitchProduct, StaysFailedWhenTheStateIsReachedAfterAFailingCall) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction));
        AddFault(std::string(direction.call) + "@KOVA=5");
        AddFault("GetClusterResourceState@KOVA=state:" + std::to_string(direction.targetState));
        Platform().sleeps.clear();
        EXPECT_FALSE(direction.run(L"EVS1", true, 5000));
        EXPECT_EQ(TakeMessages().back(), direction.failure);
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(1, PollInterval));
    }
}

TEST_F(SwitchProduct, WaitsUntilTheStateIsReached) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction).Raw("onlineMs", "1500").Raw("offlineMs", "1500"));
        Platform().sleeps.clear();
        EXPECT_TRUE(direction.run(L"EVS1", true, 3000));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Finding + Attempt(direction, "KOVA", {direction.pendingLine, direction.success})));
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(2, PollInterval));
        EXPECT_EQ(Platform().CountCalls(Poll), 2u);
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
    }
}

TEST_F(SwitchProduct, ReachedWithTheLastPollIsStillReached) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction).Raw("onlineMs", "3000").Raw("offlineMs", "3000"));
        Platform().sleeps.clear();
        EXPECT_TRUE(direction.run(L"EVS1", true, 3000));
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(3, PollInterval));
    }
}

TEST_F(SwitchProduct, GivesUpAtTheEndOfTheTimeout) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction).Raw("staysPending", "true"));
        Platform().sleeps.clear();
        EXPECT_FALSE(direction.run(L"EVS1", true, 3000));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Finding + Attempt(direction, "KOVA", {direction.pendingLine, direction.failure})));
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(3, PollInterval));
        EXPECT_EQ(Platform().CountCalls(Poll), 3u);
    }
}

TEST_F(SwitchProduct, DoesNotPollWhenTheStateIsReachedAtOnce) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction));
        EXPECT_TRUE(direction.run(L"EVS1", true, 3000));
        EXPECT_EQ(Platform().CountCalls(Poll), 0u);
        EXPECT_TRUE(Platform().sleeps.empty());
    }
}

TEST_F(SwitchProduct, WaitsPastATimeoutThatIsNoMultipleOfTheInterval) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction).Raw("onlineMs", "10000").Raw("offlineMs", "10000"));
        Platform().sleeps.clear();
        EXPECT_TRUE(direction.run(L"EVS1", true, 2500));
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(10, PollInterval));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Finding + Attempt(direction, "KOVA", {direction.pendingLine, direction.success})));
    }
}

TEST_F(SwitchProduct, TakesEveryOtherPolledStateForNotReachedYet) {
    for (const Direction& direction : BothDirections) {
        for (const int state : {-1, 0, 1, 2, 3, 4, 128, 129, 130, 77}) {
            if (state == direction.targetState) {
                continue;
            }
            Load(ServerFor(direction).Raw("staysPending", "true"));
            Platform().sleeps.clear();
            AddFault("GetClusterResourceState@KOVA#1=state:" + std::to_string(state));
            AddFault("GetClusterResourceState@KOVA#2=state:" + std::to_string(direction.targetState));
            EXPECT_TRUE(direction.run(L"EVS1", true, 5000)) << state;
            EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(2, PollInterval)) << state;
            EXPECT_EQ(TakeMessages().back(), direction.success);
        }
    }
}

} // namespace
