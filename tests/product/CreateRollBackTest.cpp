// Creations with a failing cluster call or without memory: what was created goes again.
#include "CreationCalls.h"

#include <algorithm>

using namespace harness;

namespace {

bool Contains(const Texts& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::size_t Count(const Texts& texts, const std::string& text) {
    return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), text));
}

class CreateProductRollBack : public ClusterTest {
protected:
    struct Outcome {
        bool result;
        Texts messages;
        Texts journal;
        std::string model;
    };

    Outcome Create(const Creation& way) {
        Outcome outcome;
        outcome.result = way.Run();
        outcome.journal = Platform().Journal();
        outcome.messages = TakeMessages();
        outcome.model = Cluster().Model();
        TakeJournal();
        return outcome;
    }

    // The message of the step stands right before the roll-back, which is the end.
    static void ExpectRollBack(const Outcome& outcome, const std::string& message, bool created) {
        EXPECT_FALSE(outcome.result);
        const auto rollBack = std::find(outcome.messages.begin(), outcome.messages.end(), RollBackLine);
        ASSERT_NE(rollBack, outcome.messages.end());
        ASSERT_NE(rollBack, outcome.messages.begin());
        if (!message.empty()) {
            EXPECT_EQ(*(rollBack - 1), message);
        }
        const Texts rest(rollBack + 1, outcome.messages.end());
        EXPECT_EQ(Lines(rest), created ? "" : Lines({"E Resource handle is NULL"}));
        EXPECT_EQ(Count(outcome.journal, "DeleteClusterResource(KOVA)"), created ? 1u : 0u);
    }
};

TEST_F(CreateProductRollBack, FollowsEveryFailingCallThatMatters) {
    for (const Creation& way : EveryWay) {
        const CreationSteps steps = StepsOf(way);
        bool created = false;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const CreationCall& call = steps[i];
            SCOPED_TRACE("mode " + std::to_string(way.mode) + ", failing call " + std::to_string(i + 1) + ": " +
                         call.text);
            Load(ExchangeServer());
            Platform().sleeps.clear();
            const std::string before = Cluster().Model();
            Platform().FailNthCall(static_cast<unsigned>(i + 1), FaultMode::Once, ERROR_ACCESS_DENIED);
            const Outcome outcome = Create(way);
            ASSERT_TRUE(Platform().Fired());
            EXPECT_EQ(Platform().FiredCall(), call.text.substr(0, call.text.rfind(')') + 1));
            if (call.onFailure == OnFailure::Refuse) {
                ExpectRollBack(outcome, call.message, created);
                EXPECT_EQ(outcome.model, before);
            } else {
                EXPECT_TRUE(outcome.result);
                EXPECT_NE(ResourceInModel(Cluster(), "KOVA"), "");
                EXPECT_FALSE(Contains(outcome.messages, RollBackLine));
            }
            EXPECT_EQ(Platform().sleeps.size(), call.onFailure == OnFailure::Retry ? 1u : 0u);
            Audit();
            created = created || call.text.compare(0, 22, "CreateClusterResource(") == 0;
            if (HasFailure()) {
                return;
            }
        }
        Platform().FailNthCall(0, FaultMode::Once, 0);
    }
}

TEST_F(CreateProductRollBack, IsNotCausedByTheRestartAction) {
    Load(ExchangeServer());
    Platform().FailCall("ClusterResourceControl(KOVA,SET_COMMON_PROPERTIES,56)", 5);
    const Outcome outcome = Create(WithAttendantsDisk);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.messages.back(), "E Cannot set common property RestartAction to ClusterResourceDontRestart");
    const Json resource = Json::parse(ResourceInModel(Cluster(), "KOVA"));
    EXPECT_EQ(resource.count("common"), 0u);
    EXPECT_EQ(resource["private"]["KOVA_DATA_PATH"], "F:\\Kova");
}

TEST_F(CreateProductRollBack, IsNotCausedByAFailingCloseWhichIsLogged) {
    Load(ExchangeServer());
    Platform().FailCall("CloseClusterResource(KOVA)", 5);
    const Outcome outcome = Create(WithReplication);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.messages.back(), "E Warning, calling CloseClusterResource returns FALSE");
}

TEST_F(CreateProductRollBack, ThatFailsItselfLeavesTheResourceAndIsNotRepeated) {
    Load(ExchangeServer());
    Platform().FailCall("AddClusterResourceDependency(KOVA,EVS1 Store)", 5);
    Platform().FailCall("DeleteClusterResource", 5019);
    const Outcome outcome = Create(WithAttendantsDisk);
    EXPECT_FALSE(outcome.result);
    ASSERT_GE(outcome.messages.size(), 4u);
    EXPECT_EQ(
        Lines(Texts(outcome.messages.end() - 4, outcome.messages.end())),
        Lines({"E calling AddClusterResourceDependency returns error, code:5", "E Cannot add store dependency,abort",
               RollBackLine, "W Calling DeleteClusterResource error, code: 5019"}));
    EXPECT_EQ(Count(outcome.journal, "DeleteClusterResource(KOVA)=5019"), 1u);
    EXPECT_EQ(Json::parse(ResourceInModel(Cluster(), "KOVA"))["dependsOn"].dump(), "[\"EVS1 Disk\"]");
}

TEST_F(CreateProductRollBack, FollowsAMissingDataPathOrDataRoot) {
    for (const Creation& creation : {Creation{L"D:\\Data", L"KOVA", nullptr, L"EVS1", L"", 1},
                                     Creation{nullptr, L"KOVA", L"F:\\Kova", L"EVS1", nullptr, 2}}) {
        Load(ExchangeServer());
        ExpectRollBack(Create(creation), "E Cannot set private property KOVA_DATA_PATH to ", true);
        EXPECT_EQ(ResourceInModel(Cluster(), "KOVA"), "");
    }
}

TEST_F(CreateProductRollBack, FollowsADataPathThatFindsNoMemory) {
    // The blocks before it: enumerations and controls grow theirs as they need.
    bool seen = false;
    for (unsigned n = 1; n < 200 && !seen; ++n) {
        Load(ExchangeServer());
        const std::string before = Cluster().Model();
        Heap().FailLocalAlloc(n);
        const Outcome outcome = Create(WithReplication);
        for (const std::string& message : outcome.messages) {
            seen = seen || message.compare(0, 27, "E Error calling local alloc") == 0;
        }
        if (seen) {
            ExpectRollBack(outcome, "E Cannot set private property KOVA_DATA_PATH to D:\\Data\\CCRVSDB\\EVS1", true);
            EXPECT_EQ(outcome.model, before);
        }
        Audit();
    }
    EXPECT_TRUE(seen);
}

TEST_F(CreateProductRollBack, FollowsEveryAllocationThatFails) {
    for (const Creation& way : EveryWay) {
        for (const FaultMode mode : {FaultMode::Once, FaultMode::FromThenOn}) {
            unsigned thrownAfterCreation = 0;
            unsigned n = 1;
            for (bool fired = true; fired; ++n) {
                ASSERT_LT(n, 1000u);
                Load(ExchangeServer());
                const std::string before = Cluster().Model();
                bool result = false;
                bool threw = false;
                Heap().FailAllocation(n, mode);
                Heap().StartOperation();
                try {
                    result = way.Run();
                } catch (const std::bad_alloc&) {
                    threw = true;
                }
                Heap().EndOperation();
                fired = Heap().Fired();
                Heap().FailAllocation(0, FaultMode::Once);
                const Texts journal = Platform().Journal();
                const Texts messages = TakeMessages();
                SCOPED_TRACE("allocation " + std::to_string(n) + "\n" + Lines(messages));
                if (!result) {
                    const std::string type = way.mode == 2 ? "clusRDLLCCR" : "clusRDLL";
                    const bool created = Contains(journal, "CreateClusterResource(EVS1,KOVA," + type + ",0)");
                    EXPECT_TRUE(Contains(messages, RollBackLine));
                    EXPECT_EQ(Count(journal, "DeleteClusterResource(KOVA)"), created ? 1u : 0u);
                    EXPECT_EQ(Cluster().Model(), before);
                    thrownAfterCreation += threw && created;
                }
                EXPECT_TRUE(fired || result);
                EXPECT_EQ(Heap().LiveAllocations(), 0u);
                Audit();
                if (HasFailure()) {
                    return;
                }
            }
            EXPECT_GT(thrownAfterCreation, 0u);
        }
    }
}

} // namespace
