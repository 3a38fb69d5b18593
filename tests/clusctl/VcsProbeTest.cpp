// The probe of VCS: all as simulated on the simulator, exactly one rule different where one thing is otherwise, and
// none where an answer is only refused.
#include "Probe.h"
#include "SimulatedTool.h"

#include "Options.h"
#include "Process.h"

#include "common/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <sstream>

namespace {

typedef std::set<std::string> Rules;

const wchar_t MainCf[] = L"main.cf";
const wchar_t StateFile[] = L"main.cf.state.json";

const char Configuration[] = R"(cluster C1 (
	)
system NODE1 (
	)
system NODE2 (
	)
system NODE3 (
	)
group G (
	SystemList = { NODE1 = 0, NODE3 = 2, NODE2 = 1 }
	)
	IP G-IP (
		Address = "10.1.2.3"
		)
	Lanman G-Lanman (
		VirtualName = VSERVER
		)
	NIC G-NIC (
		)
	G-IP requires G-NIC
	G-Lanman requires G-IP
)";

const char States[] = R"({"mode": "ro", "resources": {"G-Lanman": {"NODE1": "ONLINE"}},
  "systems": {"NODE3": "EXITED"}})";

// Rules that reading does not show, and why.
const struct {
    const char* rule;
    const char* reason;
} UnreadableRules[] = {
    {"vcs-summary", "a resource has to be on its way, or a group frozen"},
    {"vcs-encrypt", "a password has to be encrypted"},
    {"vcs-unfreeze", "a frozen group has to have a fault"},
    {"vcs-slow-offline", "a resource has to be taken offline"},
    {"vcs-scope", "modifies"},
    {"vcs-registration", "a resource has to be added"},
    {"vcs-node-state", "the node has to leave"},
    {"vcs-engine", "the engine has to stop"},
};

typedef std::function<void(const std::string& arguments, ToolOutput& answer)> Change;

struct ToolTwist {
    const char* rule;
    const char* options; // of the simulator
    const char* command; // what the changed command lines begin with
    Change change;
};

Change Text(const std::string& from, const std::string& to) {
    return [=](const std::string&, ToolOutput& answer) {
        for (std::string* text : {&answer.output, &answer.errors}) {
            for (std::size_t place = text->find(from); place != std::string::npos;
                 place = text->find(from, place + to.size())) {
                text->replace(place, from.size(), to);
            }
        }
    };
}

Change Instead(const std::string& output) {
    return [=](const std::string&, ToolOutput& answer) { answer.output = output; };
}

void SwapSystems(const std::string&, ToolOutput& answer) {
    Text("NODE1", "NODE0")("", answer);
    Text("NODE2", "NODE1")("", answer);
    Text("NODE0", "NODE2")("", answer);
}

void ReverseRows(const std::string&, ToolOutput& answer) {
    std::istringstream stream(answer.output);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    std::reverse(lines.begin() + 1, lines.end());
    answer.output.clear();
    for (const std::string& line : lines) {
        answer.output += line + "\n";
    }
}

// Of the command line as it is, not of longer ones.
Change Only(const std::string& arguments, const Change& change) {
    return [=](const std::string& given, ToolOutput& answer) {
        if (given == arguments) {
            change(given, answer);
        }
    };
}

const std::string Unknown = "NoSuchName7f3c";

Change OtherNumber(const std::string& command) {
    return [=](const std::string& given, ToolOutput& answer) {
        if (given == command + " " + Unknown) {
            Text("V-16-1-", "V-16-1-9")("", answer);
        }
    };
}

const std::vector<ToolTwist>& ToolTwists() {
    static const std::vector<ToolTwist> twists = {
        {"vcs-list-header", "", "hares -list",
         Only("-list",
              [](const std::string&, ToolOutput& answer) { answer.output.insert(0, "#Resource\t\tSystem\n"); })},
        {"vcs-list-separator", "separator=blanks", "", nullptr},
        {"vcs-system-list", "", "hasys -list", Text("\n", "\t\t1\n")},
        {"vcs-condition", "", "hares -list Type=IP", Instead("Other\t\tNODE1\n")},
        {"vcs-condition-unequal", "", "hares -list Type!=", Instead("G-IP\t\tNODE1\n")},
        {"vcs-condition-prefix", "", "hares -list Type=~", Instead("")},
        {"vcs-no-match", "no-match=warning", "", nullptr},
        {"vcs-line-end", "lineend=lf", "", nullptr},
        {"vcs-line-end", "lineend=cr", "", nullptr},
        {"vcs-display-header", "", "hares -display G-IP -attribute", Text("#Resource", "Resource ")},
        {"vcs-display-widths", "", "hares -display G-IP -attribute", Text("Attribute  ", "Attribute ")},
        {"vcs-group-display", "", "hagrp -display G -attribute", Text("#Group", "Group ")},
        {"vcs-system-display", "", "hasys -display NODE1 -attribute", Text("Value", "Values")},
        {"vcs-global", "", "hares -display G-IP", Only("-display G-IP", Text("global", "NODE1 "))},
        {"vcs-local", "", "hares -display G-IP -attribute", SwapSystems},
        {"vcs-parts", "", "hagrp -display G -attribute", Text("\t", " ")},
        {"vcs-empty-value", "empty=bare", "", nullptr},
        {"vcs-group-states", "", "hagrp -state G", Only("-state G", Text("|", ""))},
        {"vcs-one-state", "", "hagrp -state G -sys", Instead("|PARTIAL|\n")},
        {"vcs-resource-states", "", "hares -display G-IP -attribute", Text(" OFFLINE", " |OFFLINE|")},
        {"vcs-value", "", "hares -value G-IP Group", Instead("#Value\nG\n")},
        {"vcs-group-value", "", "hagrp -value", Instead("#Value\n0\n")},
        {"vcs-system-value", "", "hasys -value", Instead("NODE1 RUNNING\n")},
        {"vcs-dependencies", "", "hares -dep", Only("-dep", Text("#Group", "Group "))},
        {"vcs-dependency-order", "", "hares -dep G-IP", ReverseRows},
        {"vcs-group-dependencies", "", "hagrp -dep",
         [](const std::string&, ToolOutput& answer) {
             answer = ToolOutput();
             answer.output = "Parent Child\n";
         }},
        {"vcs-unknown-group", "", "hagrp", OtherNumber("-state")},
        {"vcs-unknown-group-display", "", "hagrp", OtherNumber("-display")},
        {"vcs-unknown-resource", "", "hares", OtherNumber("-display")},
        {"vcs-unknown-parent", "", "hares", OtherNumber("-dep")},
        {"vcs-unknown-system", "", "hasys", OtherNumber("-display")},
        {"vcs-message-stream", "", "ha",
         [](const std::string& arguments, ToolOutput& answer) {
             if (arguments.find(Unknown) != std::string::npos) {
                 answer.output.swap(answer.errors);
             }
         }},
        {"vcs-cluster-state", "cluster-state=bare", "", nullptr},
        {"vcs-read-only", "", "haclus -value", Instead("READONLY\n")},
        {"vcs-down-systems", "", "hagrp -state", Only("-state", Text("NODE3      |OFFLINE|", "NODE3      |PARTIAL|"))},
        {"vcs-usage", "", "haconf -help", [](const std::string&, ToolOutput& answer) { answer.exitCode = 1; }},
    };
    return twists;
}

Rules Answering(const ProbeAnswers& answers, const std::string& answer) {
    Rules rules;
    for (const ProbeRule& rule : VcsRules()) {
        if (answers.AnswerTo(rule.id) == answer) {
            rules.insert(rule.id);
        }
    }
    return rules;
}

class VcsProbe : public ::testing::Test {
protected:
    VcsProbe() {
        platform::ThisProcess() = platform::Process();
        Files()[MainCf] = Configuration;
        Files()[StateFile] = States;
    }

    static std::map<std::wstring, std::string>& Files() {
        return platform::ThisProcess().files;
    }

    static ProbeAnswers Probe(const char* options, const std::string& command, const Change& change) {
        const vcssim::Options switches = vcssim::ParseOptions(options);
        return ProbeVcs([&](const std::wstring& tool, const std::wstring& arguments) {
            const std::string given = common::ToUtf8(arguments);
            ToolOutput answer = RunSimulatedTool(MainCf, switches, common::ToUtf8(tool), given);
            if (change && (common::ToUtf8(tool) + " " + given).compare(0, command.size(), command) == 0) {
                change(given, answer);
            }
            return answer;
        });
    }
};

} // namespace

TEST_F(VcsProbe, FindsEveryRuleThatCanBeReadAsSimulated) {
    const ProbeAnswers answers = Probe("", "", nullptr);
    Rules unanswered;
    for (const auto& rule : UnreadableRules) {
        unanswered.insert(rule.rule);
    }
    EXPECT_EQ(Answering(answers, "differs"), Rules());
    EXPECT_EQ(Answering(answers, "not answerable here"), unanswered);
}

TEST_F(VcsProbe, FindsExactlyTheRuleThatDiffers) {
    for (const ToolTwist& twist : ToolTwists()) {
        EXPECT_EQ(Answering(Probe(twist.options, twist.command, twist.change), "differs"), Rules{twist.rule})
            << twist.options;
    }
}

TEST_F(VcsProbe, SeesWhatTheStateFileAcceptsOfSystemsThatAreDown) {
    Files()[StateFile] = R"({"downSystems": "accepted", "resources": {"G-Lanman": {"NODE3": "ONLINE"}},
                             "systems": {"NODE3": "EXITED"}})";
    EXPECT_EQ(Answering(Probe("", "", nullptr), "differs"), Rules{"vcs-down-systems"});
    Files()[StateFile] = R"({"resources": {"G-Lanman": {"NODE3": "ONLINE"}}})";
    EXPECT_STREQ(Probe("", "", nullptr).AnswerTo("vcs-down-systems"), "not answerable here");
}

TEST_F(VcsProbe, HasADifferenceOrAReasonForEveryRule) {
    Rules known;
    for (const ToolTwist& twist : ToolTwists()) {
        known.insert(twist.rule);
    }
    for (const auto& rule : UnreadableRules) {
        EXPECT_STRNE(rule.reason, "");
        EXPECT_TRUE(known.insert(rule.rule).second) << rule.rule << " can be read";
    }
    Rules rules;
    for (const ProbeRule& rule : VcsRules()) {
        rules.insert(rule.id);
    }
    EXPECT_EQ(known, rules);
}

TEST_F(VcsProbe, TakesNoRefusalForADifference) {
    for (const bool isOnce : {true, false}) {
        for (int n = 1;; ++n) {
            int asked = 0;
            const ProbeAnswers answers = Probe("", "ha", [&](const std::string&, ToolOutput& answer) {
                ++asked;
                if (isOnce ? asked == n : asked >= n) {
                    answer = ToolOutput();
                    answer.errors = "VCS WARNING V-16-1-10013 User is not allowed to do this\n";
                    answer.exitCode = 1;
                }
            });
            ASSERT_EQ(Answering(answers, "differs"), Rules()) << "run " << n << (isOnce ? "" : " and those after");
            if (asked < n) {
                ASSERT_GT(n, 20);
                break;
            }
        }
    }
}

TEST_F(VcsProbe, ChangesNothing) {
    const auto before = Files();
    Probe("", "", nullptr);
    EXPECT_EQ(Files()[MainCf], before.at(MainCf));
    EXPECT_EQ(Files()[StateFile], before.at(StateFile));
    EXPECT_EQ(Files().size(), before.size());
}
