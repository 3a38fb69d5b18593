// Possible owners of a new product resource: the cluster may refuse one for a long time.
#include "CreationCalls.h"

#include <algorithm>

using namespace harness;

namespace {

const DWORD RetryInterval = 5000;

Texts Attempted(unsigned code) {
    Texts messages;
    if (code != 0) {
        messages.push_back("E CClusterResource::AddOwnder fail, code:" + std::to_string(code));
    }
    messages.push_back("I AddOwner returns: " + std::to_string(code) + " (5010 is Object already exist, not error)");
    return messages;
}

Texts Refused(const std::string& node, unsigned code) {
    return Attempted(code) + Texts({"I Retrying adding node " + node + " to possible owner list"});
}

Texts Added(unsigned code) {
    return Attempted(code) + Texts({"I AddOwner operation ok."});
}

Texts Adding(const std::string& node) {
    return {"I Adding node " + node + " as its possible owner"};
}

class CreateProductOwner : public ClusterTest {
protected:
    // The messages from the first node on.
    Texts TakeOwnerMessages() {
        const Texts messages = TakeMessages();
        return Texts(std::find(messages.begin(), messages.end(), "I Adding node NODE-B as its possible owner"),
                     messages.end());
    }
    std::size_t Attempts(const std::string& node) {
        return Platform().CountCalls("AddClusterResourceNode(KOVA," + node + ")");
    }
};

TEST_F(CreateProductOwner, IsAddedAtTheFirstAttemptWhenTheClusterAgreesOrHasItAlready) {
    for (const unsigned code : {5010u, 0u}) { // 5010 is what the simulated cluster answers
        Load(ExchangeServer());
        if (code == 0) {
            Platform().FailCall("AddClusterResourceNode", code, 1, FaultMode::FromThenOn);
        }
        EXPECT_TRUE(WithReplication.Run());
        EXPECT_EQ(Lines(TakeOwnerMessages()), Lines(Adding("NODE-B") + Added(code) + Adding("NODE-A") + Added(code)));
        EXPECT_TRUE(Platform().sleeps.empty());
    }
}

TEST_F(CreateProductOwner, IsAddedAsSoonAsTheClusterAgrees) {
    Load(ExchangeServer());
    Platform().FailCall("AddClusterResourceNode(KOVA,NODE-B)", 5, 1);
    Platform().FailCall("AddClusterResourceNode(KOVA,NODE-B)", 1722, 1); // the second attempt: the first one met 5
    EXPECT_TRUE(WithReplication.Run());
    EXPECT_EQ(Lines(TakeOwnerMessages()), Lines(Adding("NODE-B") + Refused("NODE-B", 5) + Refused("NODE-B", 1722) +
                                                Added(5010) + Adding("NODE-A") + Added(5010)));
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(2, RetryInterval));
}

TEST_F(CreateProductOwner, IsLeftOutAfter59AttemptsAndTheNextOneHasItsTurn) {
    for (const Creation& way : EveryWay) {
        Load(ExchangeServer());
        Platform().sleeps.clear();
        if (&way == &EveryWay[0]) {
            Platform().FailCall("AddClusterResourceNode(KOVA,NODE-B)", 5, 1, FaultMode::FromThenOn);
        }
        EXPECT_TRUE(way.Run());
        EXPECT_EQ(Attempts("NODE-B"), 59u);
        EXPECT_EQ(Attempts("NODE-A"), 1u);
        Texts expected = Adding("NODE-B");
        for (int i = 0; i < 59; ++i) {
            expected = expected + Refused("NODE-B", 5);
        }
        EXPECT_EQ(Lines(TakeOwnerMessages()), Lines(expected + Adding("NODE-A") + Added(5010)));
        EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(59, RetryInterval));
        EXPECT_NE(ResourceInModel(Cluster(), "KOVA"), "");
    }
}

TEST_F(CreateProductOwner, EveryNodeLeftOutIsNoFailure) {
    Load(ExchangeServer());
    Platform().FailCall("AddClusterResourceNode", 5, 1, FaultMode::FromThenOn);
    EXPECT_TRUE(WithAttendantsDisk.Run());
    EXPECT_EQ(Attempts("NODE-B"), 59u);
    EXPECT_EQ(Attempts("NODE-A"), 59u);
    EXPECT_EQ(Platform().sleeps, std::vector<DWORD>(118, RetryInterval));
    EXPECT_NE(ResourceInModel(Cluster(), "KOVA"), "");
}

TEST_F(CreateProductOwner, SleepsBetweenAttemptsAndAfterTheLast) {
    Load(ExchangeServer());
    Platform().FailCall("AddClusterResourceNode(KOVA,NODE-B)", 5, 1, FaultMode::FromThenOn);
    EXPECT_TRUE(WithReplication.Run());
    const Texts& journal = Platform().Journal();
    auto line = std::find(journal.begin(), journal.end(), "OpenClusterNode(NODE-B)");
    ASSERT_NE(line, journal.end());
    for (int i = 0; i < 59; ++i) {
        EXPECT_EQ(*++line, "AddClusterResourceNode(KOVA,NODE-B)=5");
        EXPECT_EQ(*++line, "Sleep(5000)");
    }
    EXPECT_EQ(*++line, "CloseClusterNode(NODE-B)");
    EXPECT_EQ(*++line, "OpenClusterNode(NODE-A)");
}

TEST_F(CreateProductOwner, ThatCannotBeOpenedEndsTheCreation) {
    Load(ExchangeServer());
    const std::string before = Cluster().Model();
    Platform().FailCall("OpenClusterNode(NODE-B)", 5042);
    EXPECT_FALSE(WithAttendantsDisk.Run());
    EXPECT_EQ(Lines(TakeOwnerMessages()),
              Lines(Adding("NODE-B") + Texts({"E Error Opening node:NODE-B", RollBackLine})));
    const std::string journal = TakeJournal();
    EXPECT_EQ(journal.find("OpenClusterNode(NODE-A)"), std::string::npos);
    EXPECT_EQ(journal.find("SET_"), std::string::npos);
    EXPECT_NE(journal.find("DeleteClusterResource(KOVA)"), std::string::npos);
    EXPECT_EQ(Cluster().Model(), before);
}

TEST_F(CreateProductOwner, AreTheAttendantsAndNoOthers) {
    Load(GivenCluster()
             .Node("NODE-A")
             .Node("NODE-B")
             .Node("NODE-C")
             .Group("EVS1", "NODE-A")
             .NetworkName("EVS1 Name", "EVS1")
             .Resource("EVS1 SA", AttendantType)
             .PossibleOwner("NODE-C")
             .PossibleOwner("NODE-A")
             .Resource("EVS1 Store", StoreType));
    EXPECT_TRUE(WithReplication.Run());
    EXPECT_EQ(Attempts("NODE-A"), 1u);
    EXPECT_EQ(Attempts("NODE-B"), 0u);
    EXPECT_EQ(Attempts("NODE-C"), 1u);
}

} // namespace
