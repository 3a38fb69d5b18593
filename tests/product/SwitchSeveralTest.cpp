// Switching: which resources of a group are the product's, several of them, and none to be found.
#include "Directions.h"

using namespace harness;

namespace {

const char NoneOfSingleCopy[] = "E No clusRDLL(Non-CCRf) resource found in group:EVS1, try finding CCR resources";
const char SeveralFound[] = "I Warning, more than 1 KOVA resource is found at a group.\n";

using SwitchProducts = ClusterTest;

// Three product resources, from where this direction starts.
ModelBuilder ThreeFor(const Direction& direction) {
    return ProductServer()
        .State(direction.from)
        .Resource("Second", "clusRDLL")
        .State(direction.from)
        .Resource("Third", "clusRDLL")
        .State(direction.from);
}

TEST_F(SwitchProducts, OfAnEmptyGroupIsSuccess) {
    for (const Direction& direction : BothDirections) {
        Load(GivenCluster().Node("NODE-A").Group("EVS1", "NODE-A").NetworkName("EVS1 Name", "EVS1"));
        EXPECT_TRUE(direction.run(L"EVS1", true, 2500));
        EXPECT_EQ(Lines(TakeMessages()), Lines(Finding + Texts({NoneOfSingleCopy})));
        EXPECT_TRUE(Platform().sleeps.empty());
    }
}

TEST_F(SwitchProducts, FallBackToReplicatingOnes) {
    for (const Direction& direction : BothDirections) {
        Load(ProductServer("clusRDLLCCR").State(direction.from));
        EXPECT_TRUE(direction.run(L"EVS1", false, 0));
        EXPECT_EQ(Lines(TakeMessages()), Lines(Finding + Texts({NoneOfSingleCopy}) +
                                               Attempt(direction, "KOVA", {direction.reached, direction.success})));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
    }
}

TEST_F(SwitchProducts, OfTheSingleCopyTypeHideReplicatingOnes) {
    for (const Direction& direction : BothDirections) {
        Load(GivenCluster()
                 .Node("NODE-A")
                 .Group("EVS1", "NODE-A")
                 .NetworkName("EVS1 Name", "EVS1")
                 .Resource("Replicating", "clusRDLLCCR")
                 .State(direction.from)
                 .Resource("KOVA", "clusRDLL")
                 .State(direction.from));
        EXPECT_TRUE(direction.run(L"EVS1", false, 0));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
        EXPECT_EQ(StateInModel(Cluster(), "Replicating"), direction.from);
    }
}

TEST_F(SwitchProducts, OfOtherTypesAndGroupsAreLeftAlone) {
    for (const Direction& direction : BothDirections) {
        Load(GivenCluster()
                 .Node("NODE-A")
                 .Group("EVS1", "NODE-A")
                 .NetworkName("EVS1 Name", "EVS1")
                 .Resource("Service", "Generic Service")
                 .State(direction.from)
                 .Group("EVS2", "NODE-A")
                 .Resource("Other", "clusRDLL")
                 .State(direction.from));
        const std::string before = Cluster().Model();
        EXPECT_TRUE(direction.run(L"EVS1", true, 1000));
        EXPECT_EQ(Cluster().Model(), before);
    }
}

TEST_F(SwitchProducts, AreSwitchedWhereverTheClusterRunsThem) {
    SetComputerName(L"NODE-B");
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction));
        EXPECT_TRUE(direction.run(L"EVS1", false, 0));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
        EXPECT_EQ(TakeJournal().find("GetComputerNameW"), std::string::npos);
    }
}

TEST_F(SwitchProducts, AllHaveTheirTurnWithAWarningThatEndsInALineBreak) {
    for (const Direction& direction : BothDirections) {
        Load(ThreeFor(direction));
        EXPECT_TRUE(direction.run(L"EVS1", true, 1000));
        const Texts good = {direction.reached, direction.success};
        EXPECT_EQ(Lines(TakeMessages()), Lines(Finding + Texts({SeveralFound}) + Attempt(direction, "KOVA", good) +
                                               Attempt(direction, "Second", good) + Attempt(direction, "Third", good)));
        for (const char* name : {"KOVA", "Second", "Third"}) {
            EXPECT_EQ(StateInModel(Cluster(), name), direction.target);
        }
    }
}

TEST_F(SwitchProducts, AfterAFailingOneHaveTheirAttemptButCannotMendTheResult) {
    for (const Direction& direction : BothDirections) {
        Load(ThreeFor(direction));
        AddFault(std::string(direction.call) + "@Second=5");
        EXPECT_FALSE(direction.run(L"EVS1", false, 0));
        Texts messages = TakeMessages();
        for (std::string& message : messages) {
            message = message.substr(0, message.find("value: ")); // a stale last-error value
        }
        EXPECT_EQ(Lines(messages), Lines(Finding + Texts({SeveralFound}) +
                                         Attempt(direction, "KOVA", {direction.reached, direction.success}) +
                                         Attempt(direction, "Second", {"E Unexected return ", direction.failure}) +
                                         Attempt(direction, "Third", {direction.reached, direction.failure})));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
        EXPECT_EQ(StateInModel(Cluster(), "Second"), direction.from);
        EXPECT_EQ(StateInModel(Cluster(), "Third"), direction.target);
    }
}

TEST_F(SwitchProducts, HaveTheWholeTimeoutEach) {
    for (const Direction& direction : BothDirections) {
        Load(ProductServer()
                 .State(direction.from)
                 .Raw("staysPending", "true")
                 .Resource("Second", "clusRDLL")
                 .State(direction.from)
                 .Raw("onlineMs", "2000")
                 .Raw("offlineMs", "2000"));
        Platform().sleeps.clear();
        EXPECT_FALSE(direction.run(L"EVS1", true, 3000));
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(3 + 2, PollInterval));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.pending);
        EXPECT_EQ(StateInModel(Cluster(), "Second"), direction.target);
    }
}

TEST_F(SwitchProducts, AfterOneThatCannotBeOpenedAreNotTouched) {
    for (const Direction& direction : BothDirections) {
        Load(ThreeFor(direction));
        AddFault("OpenClusterResource@Second#2=5007"); // the listing opens it first
        EXPECT_FALSE(direction.run(L"EVS1", true, 2500));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Finding + Texts({SeveralFound}) +
                        Attempt(direction, "KOVA", {direction.reached, direction.success}) +
                        Texts({"I Open resource: Second", "E Open resource failed:Second, err=5007",
                               "E Cannot open KOVA resource:Second, abort"})));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
        EXPECT_EQ(StateInModel(Cluster(), "Second"), direction.from);
        EXPECT_EQ(StateInModel(Cluster(), "Third"), direction.from);
    }
}

// Failing to find them
// ------------------------------------------------------------------------------------------------------------------

using SwitchProductSearch = ClusterTest;

// A step of the search that fails: `known` messages, progress included, come before these.
struct FailingSearch {
    const char* name;
    const char* fault;
    std::size_t known;
    Texts messages;

    friend void PrintTo(const FailingSearch& row, std::ostream* out) {
        *out << row.name;
    }
};

const FailingSearch FailingSearches[] = {
    {"WithoutTheCluster", "OpenCluster=1722", 2, {"E Cannot open cluster"}},
    {"WithoutItsResources",
     "ClusterOpenEnum=5",
     3,
     {"E calling ClusterOpenEnum failed", "E EnumNames failed", "E cannot Find network name EVS1"}},
    {"AtANetworkNameThatIsNotOpened",
     "OpenClusterResource@EVS1 Name#2=5007",
     5,
     {"E Open resource failed:EVS1 Name, err=5007", "E Cannot open network name resource:EVS1 Name"}},
    {"WithoutTheGroupsNameWhenTheStateIsUnknown",
     "GetClusterResourceState@EVS1 Name=5",
     6,
     {"E ClusterResourceStateUnknown == 0", "I Opening group: ...", "E Open group failed, code:5013",
      "E Cannot open group:"}},
    {"AtAGroupThatIsNotOpened",
     "OpenClusterGroup=5013",
     7,
     {"E Open group failed, code:5013", "E Cannot open group:EVS1"}},
    {"WithoutTheGroupsResources",
     "ClusterGroupOpenEnum=5",
     8,
     {"E NULL == hEnum", "E Cannot enum clusRDLL resources for group:EVS1"}},
    {"AtAResourceThatIsNotOpened",
     "OpenClusterResource@KOVA#1=5007",
     8,
     {"E Open resource failed:KOVA, err=5007", "E Cannot enum clusRDLL resources for group:EVS1"}}};

class SwitchProductFailingSearch : public ClusterTest, public ::testing::WithParamInterface<FailingSearch> {};

TEST_P(SwitchProductFailingSearch, EndsTheSwitchAndLeavesTheState) {
    for (const Direction& direction : BothDirections) {
        SCOPED_TRACE(direction.name);
        Load(ServerFor(direction));
        AddFault(GetParam().fault);
        EXPECT_FALSE(direction.run(L"EVS1", true, 1000));
        const Texts known(Finding.begin(), Finding.begin() + static_cast<std::ptrdiff_t>(GetParam().known));
        EXPECT_EQ(Lines(TakeMessages()), Lines(known + GetParam().messages));
        EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.from);
    }
}

INSTANTIATE_TEST_SUITE_P(Failing, SwitchProductFailingSearch, ::testing::ValuesIn(FailingSearches), RowName());

TEST_F(SwitchProductSearch, OfReplicatingOnesMayFailToo) {
    for (const Direction& direction : BothDirections) {
        Load(ProductServer("clusRDLLCCR").State(direction.from));
        AddFault("ClusterGroupOpenEnum#2=5");
        EXPECT_FALSE(direction.run(L"EVS1", false, 0));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines(Finding + Texts({NoneOfSingleCopy, "E NULL == hEnum",
                                         "E Cannot enum clusRDLL(CCR) resources for group:EVS1"})));
    }
}

TEST_F(SwitchProductSearch, OfAnUnknownServerNamesIt) {
    for (const Direction& direction : BothDirections) {
        Load(ServerFor(direction));
        EXPECT_FALSE(direction.run(L"EVS9", false, 0));
        EXPECT_EQ(Lines(TakeMessages()),
                  Lines({"I Network name: EVS9", "I Opening cluster...",
                         "I Performing FindFirstResourceNameByNetworkName...", "E cannot Find network name EVS9"}));
    }
}

} // namespace
