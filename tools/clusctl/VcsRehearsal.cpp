#include "VcsRehearsal.h"

#include "CommandLine.h"
#include "RehearsalText.h"
#include "RehearsedVcs.h"
#include "Secrets.h"
#include "Text.h"
#include "TextDifference.h"

#include "common/FaultGrammar.h"

#include <ControlEvents.h>

#include <algorithm>
#include <iterator>

namespace {

const Columns SystemColumns = {{"name", "SYSTEM"}, {"stateBefore", "BEFORE"}, {"stateAfter", "AFTER"}};
const Columns ServerColumns = {{"name", "SERVER"},
                               {"group", "GROUP"},
                               {"nodeBefore", "SYSTEM BEFORE"},
                               {"stateBefore", "STATE"},
                               {"nodeAfter", "SYSTEM AFTER"},
                               {"stateAfter", "STATE"}};
const Columns StateColumns = {
    {"kind", "KIND"}, {"name", "NAME"}, {"system", "SYSTEM"}, {"before", "BEFORE"}, {"after", "AFTER"}};
const Columns DownColumns = {{"name", "STAYS DOWN"}, {"group", "GROUP"}, {"state", "STATE"}, {"reason", "WHY"}};

const Words AskForServers = {L"vcs", L"servers"};

// What "vcs servers" answered; null when it could not.
Json ServersIn(const ProgramResult& result, const char* when, Report& report) {
    const Json document = Json::parse(result.output, nullptr, false);
    if (!document.is_object() || !document.contains("virtualServers")) {
        const bool isTold = document.is_object() && document.contains("error");
        report.MarkIncomplete(std::string("the servers ") + when + " are not known: " +
                              (isTold ? document.at("error").at("message").get<std::string>()
                                      : "exit code " + std::to_string(result.exitCode)));
        return Json();
    }
    return document.at("virtualServers");
}

Json ServerRows(const Json& before, const Json& after) {
    Json rows = Json::array();
    const auto take = [&rows](const Json& servers, const char* node, const char* online, const char* state) {
        for (const Json& server : servers) {
            auto row = std::find_if(rows.begin(), rows.end(),
                                    [&server](const Json& known) { return known.at("group") == server.at("group"); });
            if (row == rows.end()) {
                rows.push_back({{"name", server.at("networkName")},
                                {"group", server.at("group")},
                                {"address", nullptr},
                                {"nodeBefore", nullptr},
                                {"onlineBefore", nullptr},
                                {"stateBefore", nullptr},
                                {"nodeAfter", nullptr},
                                {"onlineAfter", nullptr},
                                {"stateAfter", nullptr}});
                row = std::prev(rows.end());
            }
            (*row)[node] = server.at("onlineNode");
            (*row)[online] = server.at("online");
            (*row)[state] = server.at("state");
        }
    };
    take(before, "nodeBefore", "onlineBefore", "stateBefore");
    take(after, "nodeAfter", "onlineAfter", "stateAfter");
    return rows;
}

// Those that are online on a system; null when none are known.
Json ServersOn(const Json& servers, const Json& system) {
    if (servers.is_null()) {
        return Json();
    }
    Json there = Json::array();
    std::copy_if(servers.begin(), servers.end(), std::back_inserter(there),
                 [&system](const Json& server) { return server.at("onlineNode") == system; });
    return there;
}

// All by which two ends of a command differ.
Json End(const VcsCopy& copy) {
    return {{"configuration", copy.Configuration()}, {"states", copy.States()}};
}

class SweptVcs : public SweptRehearsal {
public:
    SweptVcs(const VcsCopy& before, const Json& wanted, const Words& command, const std::string& fault,
             const std::wstring& rehearsed)
        : m_copy(before.MainCf()), m_before(End(m_copy)), m_wanted(wanted),
          m_program(m_copy.Start(command, {fault}, true, rehearsed)) {
    }
    const ChildProgram& Program() const override {
        return *m_program;
    }
    SweepRun Finish() override {
        const ProgramResult result = m_program->Finish();
        m_copy.Settle();
        const Json end = End(m_copy);
        return SweepRunOf(result, end == m_before, end == m_wanted);
    }

private:
    const VcsCopy m_copy;
    const Json m_before;
    const Json m_wanted;
    const std::unique_ptr<ChildProgram> m_program;
};

std::vector<std::string> Masked(const VcsCopy& copy) {
    return MaskedConfiguration(SplitLines(copy.Configuration()));
}

} // namespace

VcsRehearsal::VcsRehearsal(const std::wstring& mainCf, const std::wstring& rehearsed)
    : m_rehearsed(rehearsed), m_first(std::make_unique<VcsCopy>(mainCf)),
      m_copy(std::make_unique<VcsCopy>(m_first->MainCf())), m_statesBefore(m_first->States()) {
    const Json state = m_copy->State();
    m_start = ClockOfVcs(state);
    m_taken = state.value("timeline", Json::array()).size();
}

void VcsRehearsal::Tell(const char* kind, const std::string& name, const std::string& what) {
    m_timeline.push_back(TimelineEntry(static_cast<double>(ClockOfVcs(m_copy->State()) - m_start), kind, name, what));
}

void VcsRehearsal::TakeEvents() {
    for (const Json& entry : TimelineOfVcs(m_copy->State(), m_taken, m_start)) {
        m_timeline.push_back(entry);
        ++m_taken;
    }
}

void VcsRehearsal::Happen(const RehearsalEvent& event) {
    Tell("event", event.Text(), "");
    m_copy->Happen(event);
    TakeEvents();
}

RehearsedCommand VcsRehearsal::Run(const Words& command, const FaultTexts& faults, bool asJson) {
    const std::string line = LineOf(command);
    Tell("command", line, "begins");
    m_beforeCommand = std::move(m_copy);
    m_copy = std::make_unique<VcsCopy>(m_beforeCommand->MainCf());
    const ProgramResult result = m_copy->Start(command, faults, asJson, m_rehearsed)->Finish();
    TakeEvents();
    Tell("command", line, "ends with exit code " + std::to_string(result.exitCode));
    return {result, m_copy->Calls(), m_copy->MatchedByFaults()};
}

std::unique_ptr<SweptRehearsal> VcsRehearsal::RunAgain(const Words& command, const std::string& fault) {
    return std::make_unique<SweptVcs>(*m_beforeCommand, End(*m_copy), command, fault, m_rehearsed);
}

bool VcsRehearsal::Settle() {
    const bool hasEnded = m_copy->Settle();
    TakeEvents();
    return hasEnded;
}

void VcsRehearsal::TellCluster(Report& report) {
    const std::unique_ptr<ChildProgram> askedBefore = m_first->Ask(AskForServers); // both at once
    const std::unique_ptr<ChildProgram> askedAfter = m_copy->Ask(AskForServers);
    const Json after = m_copy->States();
    const Json serversBefore = ServersIn(askedBefore->Finish(), "at first", report);
    const Json serversAfter = ServersIn(askedAfter->Finish(), "in the end", report);
    Json systems = Json::array();
    for (const Json& row : m_statesBefore) {
        if (row.at("kind") == "system") {
            systems.push_back({{"name", row.at("name")},
                               {"stateBefore", row.at("state")},
                               {"stateAfter", StateIn(after, "system", row.at("name").get<std::string>(), "")},
                               {"serversBefore", ServersOn(serversBefore, row.at("name"))},
                               {"serversAfter", ServersOn(serversAfter, row.at("name"))}});
        }
    }
    report.AddTable("nodes", systems, SystemColumns, "The cluster has no systems.");
    report.AddTable("servers", ServerRows(serversBefore, serversAfter), ServerColumns,
                    "The cluster holds no Exchange virtual server.");
    report.AddTable("down",
                    StaysDownOnVcs(m_statesBefore, after, vcssim::CfDocument(m_copy->Configuration()), m_timeline),
                    DownColumns, "Nothing stays down that was online.");
}

void VcsRehearsal::TellDifference(Report& report) const {
    report.AddTable("states", StateChanges(m_statesBefore, m_copy->States()), StateColumns,
                    "No state is another one than before.");
    Json lines = Json::array();
    for (const std::string& line : UnifiedDifference(Masked(*m_first), Masked(*m_copy))) {
        lines.push_back(line);
    }
    if (!lines.empty()) {
        lines.insert(lines.begin(), {"--- main.cf", "+++ main.cf (after)"});
    }
    report.AddSentence("difference", lines, TitledBlock("Change of the configuration:", lines, "none"));
}

void VcsRehearsal::Save(const std::wstring& path) const {
    m_copy->Save(path);
}

std::string VcsRehearsal::CompletedFault(const std::string& fault) const {
    static const char* const tools[] = {"haclus", "haconf", "hagrp", "hares", "hasys", "vcsencrypt"};
    for (const std::string& text : {fault, fault + "=1"}) {
        try {
            const common::Fault parsed = common::ParseFault(text);
            const bool isTool = (parsed.call.empty() && StartsWith(fault, "*")) ||
                                std::find(std::begin(tools), std::end(tools), parsed.call) != std::end(tools);
            const bool isHappening = !parsed.event || vcssim::IsControlEvent(*parsed.event);
            if (isTool && !parsed.state && isHappening && !parsed.hangs) {
                return text;
            }
        } catch (const common::FaultError&) {
            // perhaps with a code
        }
    }
    throw WrongUsage("--fail: " + Quoted(fault) +
                     " is no fault like TOOL, TOOL#N or TOOL#N=CODE of a VCS tool that the simulator has");
}
