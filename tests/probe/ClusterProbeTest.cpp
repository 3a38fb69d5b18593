// The probe of a failover cluster: all as simulated on the simulator, exactly one rule different where one thing is
// otherwise, and none where an answer is only refused.
#include "ClusterTwists.h"
#include "ClusSimControl.h"
#include "ImportPatch.h"

#include "Failure.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <set>

using ::testing::IsEmpty;
using ::testing::IsSubsetOf;

namespace {

typedef std::set<std::string> Rules;

const Unreadable UnreadableRules[] = {
    {"delete-online", "deletes"},
    {"offline-failed", "takes offline"},
    {"failures", "a resource has to fail"},
    {"failovers-used-up", "a resource has to fail again and again"},
    {"required-dependencies", "brings online"},
    {"lost-code", "the service has to stop"},
    {"lost-handles", "the service has to stop and start"},
};

const char Model[] = R"({
  "cluster": {"name": "EXCLUS", "domain": "corp.example", "coreGroup": "standard", "behaviour": {"protocol": 2003}},
  "nodes": [{"name": "NODE1"}, {"name": "NODE-TWO"}, {"name": "NODE-LOST", "state": "down"}],
  "groups": [{"name": "EVS1", "owner": "NODE1"}],
  "resources": [
    {"name": "EVS1 IP", "type": "IP Address", "id": "27036a50-4c94-53d7-9803-4fb028669c48", "group": "EVS1",
     "state": "Online", "private": {"Address": "192.0.2.21"}},
    {"name": "EVS1 Name", "type": "Network Name", "id": "9523188b-1278-5124-a653-1adec67c573e", "group": "EVS1",
     "state": "Online", "dependsOn": ["EVS1 IP"], "private": {"Name": "EVS1"}},
    {"name": "EVS1 Disk", "type": "Physical Disk", "id": "1bd9e6c9-de86-56d1-9da7-8508e2d2a4b6", "group": "EVS1",
     "state": "Online", "disk": {"signature": 7, "number": 2, "partitions": [{"device": "F:", "label": "Mail"}]}},
    {"name": "EVS1 Task", "type": "Generic Application", "id": "e28807a9-2a13-5df9-b5e7-bf2a0fdace4e", "group": "EVS1",
     "private": {"Folder": {"expandSz": "%TEMP%"}}}
  ]
})";

Rules Answering(const ProbeAnswers& answers, const std::string& answer) {
    Rules rules;
    for (const ProbeRule& rule : FailoverRules()) {
        if (answers.AnswerTo(rule.id) == answer) {
            rules.insert(rule.id);
        }
    }
    return rules;
}

class ClusterProbe : public ::testing::Test {
protected:
    ~ClusterProbe() override {
        SetEnvironmentVariableW(L"CLUSSIM_FILE", nullptr);
        ClusSimReset();
    }

    // As clusctl meets the simulator: with a model file.
    ProbeAnswers OnFile(const std::string& model) const {
        ClusSimReset();
        common::WriteWholeFile(m_path, model);
        SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
        return ProbeFailoverCluster();
    }

    // Much faster; the simulator changes the last error then.
    static void Load(const std::string& model, const std::string& fault = std::string()) {
        ClusSimReset();
        char error[256] = "";
        ASSERT_TRUE(ClusSimLoadModel(model.c_str(), error, sizeof(error))) << error;
        ASSERT_TRUE(fault.empty() || ClusSimAddFault(fault.c_str())) << fault;
    }

    // With something that happens to the n-th call, or before it, for each n: no rule differs for that. `call`: of one
    // function, or "*".
    static void ExpectNothingDiffers(const std::string& call, const std::string& what) {
        for (std::size_t n = 1;; ++n) {
            Load(Model, call + "#" + std::to_string(n) + "=" + what);
            Rules differing;
            try {
                differing = Answering(ProbeFailoverCluster(), "differs");
            } catch (const Failure&) {
                // the cluster could not be opened, or listed, or was lost
            }
            ASSERT_THAT(differing, IsSubsetOf({"last-error-kept"})) << call << " " << n << ": " << what;
            ASSERT_EQ(ClusSimOpenHandles(nullptr), 0U) << call << " " << n << ": " << what;
            if (ClusSimCallCount(call == "*" ? nullptr : call.c_str()) < n) {
                ASSERT_GT(n, call == "*" ? 100U : 1U) << call << " is not called";
                return;
            }
        }
    }

private:
    // The domain in which the model's nodes are.
    harness::ImportPatch<BOOL(COMPUTER_NAME_FORMAT, LPWSTR, LPDWORD), struct DomainTag> m_domain{
        harness::FindImports(GetModuleHandleW(nullptr), "kernel32.dll", "GetComputerNameExW"),
        [](COMPUTER_NAME_FORMAT, LPWSTR text, LPDWORD) -> BOOL {
            lstrcpyW(text, L"corp.example");
            return TRUE;
        }};
    const common::TemporaryFolder m_folder{L"probe"};
    const std::wstring m_path = m_folder.File(L"model.json");
};

} // namespace

TEST_F(ClusterProbe, FindsEveryRuleThatCanBeReadAsSimulated) {
    const ProbeAnswers answers = OnFile(Model);
    Rules unanswered;
    for (const Unreadable& rule : UnreadableRules) {
        unanswered.insert(rule.rule);
    }
    EXPECT_THAT(Answering(answers, "differs"), IsEmpty());
    EXPECT_EQ(Answering(answers, "not answerable here"), unanswered);
}

TEST_F(ClusterProbe, SaysNothingOfNodesThatAreDownWhereNoneIs) {
    std::string model = Model;
    const std::string state = ", \"state\": \"down\"";
    model.erase(model.find(state), state.size());
    EXPECT_STREQ(OnFile(model).AnswerTo("down-owners"), "not answerable here");
}

TEST_F(ClusterProbe, FindsExactlyTheRuleThatDiffers) {
    for (const Twist& twist : ClusterTwists()) {
        const RunProbe run = [this](const std::string& model) { return OnFile(model); };
        EXPECT_EQ(Answering(twist.run(run, Model), "differs"), Rules{twist.rule});
    }
}

TEST_F(ClusterProbe, HasADifferenceOrAReasonForEveryRule) {
    Rules known;
    for (const Twist& twist : ClusterTwists()) {
        known.insert(twist.rule);
    }
    for (const Unreadable& rule : UnreadableRules) {
        EXPECT_STRNE(rule.reason, "");
        EXPECT_TRUE(known.insert(rule.rule).second) << rule.rule << " can be read";
    }
    Rules rules;
    for (const ProbeRule& rule : FailoverRules()) {
        rules.insert(rule.id);
    }
    EXPECT_EQ(known, rules);
}

TEST_F(ClusterProbe, TakesNoRefusedCallForADifference) {
    for (const char* call :
         {"ClusterOpenEnum", "ClusterEnum", "ClusterGroupOpenEnum", "ClusterGroupEnum", "ClusterResourceOpenEnum",
          "ClusterResourceEnum", "ClusterResourceControl", "GetClusterGroupState", "GetClusterInformation",
          "GetClusterNodeState", "GetClusterResourceState", "OpenCluster", "OpenClusterGroup", "OpenClusterNode",
          "OpenClusterResource", "ResUtilGetResourceDependency", "ResUtilResourceTypesEqual"}) {
        ExpectNothingDiffers(call, "5");
        ExpectNothingDiffers(call, "1722");
    }
}

TEST_F(ClusterProbe, TakesNothingThatHappensMeanwhileForADifference) {
    ExpectNothingDiffers("*", "event:\"vanish EVS1 Disk\"");
    ExpectNothingDiffers("*", "event:\"move EVS1 NODE-TWO\"");
}

TEST_F(ClusterProbe, SaysThatTheClusterWasLostMeanwhile) {
    for (const char* event : {"quorum-loss", "handles-stale"}) {
        ExpectNothingDiffers("*", std::string("event:\"") + event + "\"");
        Load(Model, std::string("*#100=event:\"") + event + "\"");
        try {
            ProbeFailoverCluster();
            ADD_FAILURE() << "it answers after " << event;
        } catch (const Failure& failure) {
            EXPECT_STREQ(failure.Kind().name, "cluster-lost");
        }
    }
}

TEST_F(ClusterProbe, TakesWhatASnapshotCouldNotReadForNoDifference) {
    std::string model = Model;
    const std::string disk = "\"disk\": {\"signature\"";
    for (const char* part : {"disk", "type", "id", "class", "private", "flags", "possibleOwners"}) {
        std::string refused = model;
        refused.insert(refused.find(disk), std::string("\"unread\": {\"") + part + "\": 5004}, ");
        EXPECT_THAT(Answering(OnFile(refused), "differs"), IsEmpty()) << part;
    }
}

TEST_F(ClusterProbe, LooksAtEachResourceWithAtMost40Calls) {
    const char* const kinds[] = {R"("type": "IP Address", "private": {"Address": "192.0.2.9"})",
                                 R"("type": "Network Name", "private": {"Name": "X"})",
                                 R"("type": "Physical Disk", "disk": {"signature": 7, "number": 2})",
                                 R"("type": "Generic Service")"};
    for (const char* kind : kinds) {
        std::size_t calls[2] = {};
        for (const std::size_t hundreds : {0U, 1U}) {
            std::string model =
                R"({"cluster": {"name": "C"}, "nodes": [{"name": "NODE1"}, {"name": "NODE2"}, {"name": "NODE3"},
                                   {"name": "NODE4"}, {"name": "NODE5"}, {"name": "NODE6"}, {"name": "NODE7"},
                                   {"name": "NODE8"}],
                                   "groups": [{"name": "G", "owner": "NODE1"}], "resources": [)";
            for (std::size_t i = 0; i < 1 + 250 * hundreds; ++i) {
                const std::string number = std::to_string(1000 + i);
                model += (i == 0 ? "" : ",") + ("{\"name\": \"R" + number) + "\", \"group\": \"G\", " + kind +
                         ", \"id\": \"27036a50-4c94-53d7-9803-4fb02866" + number + "\"}";
            }
            Load(model + "]}");
            ProbeFailoverCluster();
            calls[hundreds] = ClusSimCallCount(nullptr);
        }
        EXPECT_LE(calls[1] - calls[0], 40U * 250) << kind;
    }
}
