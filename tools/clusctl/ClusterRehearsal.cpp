#include "ClusterRehearsal.h"

#include "CommandLine.h"
#include "CopyRun.h"
#include "RehearsalText.h"
#include "RehearsedModel.h"
#include "ServerCommands.h"
#include "SnapshotCommand.h"
#include "Text.h"
#include "ThisComputer.h"

#include <winsock2.h>
#include <windows.h>

#include <clus_VirtualServerUtil.h>

#include <utility>

namespace {

const Columns NodeColumns = {{"name", "NODE"}, {"stateBefore", "BEFORE"}, {"stateAfter", "AFTER"}};
const Columns ServerColumns = {{"name", "SERVER"},         {"address", "ADDRESS"},      {"nodeBefore", "NODE BEFORE"},
                               {"onlineBefore", "ONLINE"}, {"nodeAfter", "NODE AFTER"}, {"onlineAfter", "ONLINE"}};
const Columns DownColumns = {{"name", "STAYS DOWN"}, {"group", "GROUP"}, {"state", "STATE"}, {"reason", "WHY"}};

const std::int64_t LongestSettling = 3600000; // milliseconds

// The loaded model.
WrittenModelPointer ReadModel() {
    return std::make_shared<const WrittenModel>(ClusterSimulator::Read());
}

// Advances the clock of the loaded model until nothing goes on. False when something does after an hour.
bool LetEnd(WrittenModelPointer& model) {
    const std::int64_t start = ClockOf(model->json);
    for (std::int64_t next = NextEnd(model->json); next > ClockOf(model->json); next = NextEnd(model->json)) {
        if (next - start > LongestSettling) {
            return false;
        }
        ClusterSimulator::AdvanceClock(static_cast<unsigned>(next - ClockOf(model->json)));
        model = ReadModel();
    }
    return true;
}

// What goes on in the model is let end; nothing is told of it.
WrittenModelPointer Settled(const std::string& model) {
    auto settled = std::make_shared<const WrittenModel>(model);
    if (NextEnd(settled->json) != 0) {
        ClusterSimulator::Load(model);
        settled = ReadModel();
        LetEnd(settled);
    }
    return settled;
}

bool HasFaults(const Json& model) {
    return model.contains("faults") && !model.at("faults").empty();
}

class SweptCopy : public SweptRehearsal {
public:
    SweptCopy(const WrittenModel& before, const SweptEnds& ends, const Words& command, const std::string& fault,
              const std::wstring& rehearsed)
        : m_before(before), m_ends(ends), m_run(before.text, command, {fault}, rehearsed, true) {
    }
    const ChildProgram& Program() const override {
        return m_run.Program();
    }
    SweepRun Finish() override {
        const CopyResult result = m_run.Finish();
        const Json end = ComparableEnd(m_before.json, Settled(result.model)->json);
        return SweepRunOf(result.command.program, end == m_ends.asBefore, end == m_ends.asWanted);
    }

private:
    const WrittenModel& m_before;
    const SweptEnds& m_ends;
    CopyRun m_run;
};

// Which servers are where, before and after.
Json ServerRows(const Json& nodes) {
    Json rows = Json::array();
    const auto rowOf = [&rows](const Json& server) -> Json& {
        for (Json& row : rows) {
            if (row.at("name") == server.at("name")) {
                return row;
            }
        }
        rows.push_back({{"name", server.at("name")},
                        {"address", server.at("address")},
                        {"nodeBefore", nullptr},
                        {"onlineBefore", nullptr},
                        {"nodeAfter", nullptr},
                        {"onlineAfter", nullptr}});
        return rows.back();
    };
    for (const Json& node : nodes) {
        for (const Json& server : node.at("serversBefore")) {
            Json& row = rowOf(server);
            row["nodeBefore"] = node.at("name");
            row["onlineBefore"] = server.at("online");
        }
    }
    for (const Json& node : nodes) {
        for (const Json& server : node.at("serversAfter")) {
            Json& row = rowOf(server);
            row["nodeAfter"] = node.at("name");
            row["onlineAfter"] = server.at("online");
        }
    }
    return rows;
}

Json DifferenceLines(const Json& before, const Json& after) {
    Json lines = Json::array();
    for (const std::string& line : ModelDifference(before, after)) {
        lines.push_back(line);
    }
    if (!lines.empty()) {
        lines.insert(lines.begin(), {"--- before", "+++ after"});
    }
    return lines;
}

} // namespace

ClusterRehearsal::ClusterRehearsal(Json model, const std::wstring& rehearsed)
    : m_rehearsed(rehearsed), m_thisComputer(common::ToUtf8(ComputerName())) {
    ClusterSimulator::RecordEvents();
    ClusterSimulator::Load(common::DumpJson(PrivateCopy(std::move(model))));
    m_before = m_model = ReadModel();
    m_start = ClockOf(m_before->json);
    TakeEvents(ClusterSimulator::TakeEvents());
}

double ClusterRehearsal::SecondsAt(std::int64_t time) const {
    return static_cast<double>(time - m_start) / 1000;
}

void ClusterRehearsal::TakeEvents(const ClusterEvents& events) {
    for (Json event : events) {
        event["at"] = SecondsAt(event.at("at").get<std::int64_t>());
        event["what"] = WordsOfState(event.at("what").get<std::string>());
        if (event.at("why").get<std::string>().empty()) {
            event["why"] = nullptr;
        }
        m_timeline.push_back(event);
    }
}

void ClusterRehearsal::Tell(const char* kind, const std::string& name, const std::string& what) {
    m_timeline.push_back(TimelineEntry(SecondsAt(ClockOf(m_model->json)), kind, name, what));
}

void ClusterRehearsal::NoteServers() {
    Report earlier; // what is not as it should be at first is no matter of the rehearsal
    for (const std::string& node : NodesOf(m_before->json, m_thisComputer)) {
        m_serversBefore[node] = ServersOn(*m_before, node, earlier);
    }
    ClusterSimulator::SeeFrom("");
    if (HasFaults(m_before->json)) { // which may have made something happen
        ClusterSimulator::Load(m_before->text);
        ClusterSimulator::TakeEvents();
    }
}

void ClusterRehearsal::Happen(const RehearsalEvent& event) {
    Tell("event", event.Text(), "");
    const std::vector<std::string>& names = event.names;
    const unsigned long code =
        ClusterSimulator::Happen(event.word, names.empty() ? "" : names[0], names.size() < 2 ? "" : names[1]);
    m_model = ReadModel();
    TakeEvents(ClusterSimulator::TakeEvents());
    if (code != ERROR_SUCCESS && code != ERROR_IO_PENDING) {
        throw Failure::OfCode("the cluster refuses the event " + event.Text(), code).As(Errors::Refused);
    }
}

RehearsedCommand ClusterRehearsal::Run(const Words& command, const FaultTexts& faults, bool asJson) {
    const std::string line = LineOf(command);
    Tell("command", line, "begins");
    m_beforeCommand = m_model;
    const CopyResult result = CopyRun(m_model->text, command, faults, m_rehearsed, asJson).Finish();
    TakeEvents(result.events);
    if (result.model != m_model->text) { // a command that only asks leaves it as it is
        m_model = std::make_shared<const WrittenModel>(result.model);
        m_isLoaded = false;
    }
    Tell("command", line, "ends with exit code " + std::to_string(result.command.program.exitCode));
    return result.command;
}

std::unique_ptr<SweptRehearsal> ClusterRehearsal::RunAgain(const Words& command, const std::string& fault) {
    if (m_ends.asBefore.empty()) {
        const Json& before = m_beforeCommand->json;
        m_ends = {ComparableEnd(before, before), ComparableEnd(before, m_model->json)};
    }
    return std::make_unique<SweptCopy>(*m_beforeCommand, m_ends, command, fault, m_rehearsed);
}

// Loading takes long for a large model: only what is asked is loaded.
void ClusterRehearsal::Load() {
    if (!m_isLoaded) {
        ClusterSimulator::Load(m_model->text);
        m_isLoaded = true;
    }
}

bool ClusterRehearsal::Settle() {
    if (NextEnd(m_model->json) == 0) {
        return true;
    }
    Load();
    const bool hasEnded = LetEnd(m_model);
    TakeEvents(ClusterSimulator::TakeEvents());
    return hasEnded;
}

// Of the loaded model, which is this one.
Json ClusterRehearsal::ServersOn(const WrittenModel& model, const std::string& node, Report& report) const {
    const std::string state = NodeState(model.json, node, m_thisComputer);
    if (state != "up" && state != "paused") {
        return Json();
    }
    if (!CVirtualServerUtil::CheckIsClusterByRegKey() && node != m_thisComputer) {
        return Json::array(); // the library would tell of this computer
    }
    if (HasFaults(model.json)) {
        ClusterSimulator::Load(model.text); // they count anew for each node
    }
    ClusterSimulator::SeeFrom(node);
    Report told;
    Json servers;
    try {
        servers = ReadServers(told);
    } catch (const Failure& failure) {
        told.MarkIncomplete(failure.what());
    }
    for (const std::string& warning : told.Warnings()) {
        report.AddWarning("on " + Printable(node) + ": " + warning);
    }
    return servers;
}

Json ClusterRehearsal::Nodes(Report& report) {
    Json nodes = Json::array();
    Load();
    for (const std::string& node : NodesOf(m_before->json, m_thisComputer)) {
        nodes.push_back({{"name", node},
                         {"stateBefore", NodeState(m_before->json, node, m_thisComputer)},
                         {"stateAfter", NodeState(m_model->json, node, m_thisComputer)},
                         {"serversBefore", m_serversBefore.at(node)},
                         {"serversAfter", ServersOn(*m_model, node, report)}});
    }
    return nodes;
}

void ClusterRehearsal::TellCluster(Report& report) {
    const Json nodes = Nodes(report);
    if (!CVirtualServerUtil::CheckIsClusterByRegKey()) {
        report.AddWarning("the product's settings make this computer a plain server: which servers the nodes would "
                          "serve in a cluster deployment is not known");
    }
    report.AddTable("nodes", nodes, NodeColumns, "The cluster has no nodes.");
    report.AddTable("servers", ServerRows(nodes), ServerColumns, "No node serves a server, before or after.");
    report.AddTable("down", StaysDown(m_before->json, m_model->json, m_timeline), DownColumns,
                    "Nothing stays down that was online or is to be.");
}

void ClusterRehearsal::TellDifference(Report& report) const {
    report.AddMember("states", nullptr); // they are part of the model
    const Json lines = DifferenceLines(m_before->json, m_model->json);
    report.AddSentence("difference", lines, TitledBlock("Change of the configuration:", lines, "none"));
}

void ClusterRehearsal::Save(const std::wstring& path) const {
    WriteModel(path, m_model->json);
}

std::string ClusterRehearsal::CompletedFault(const std::string& fault) const {
    const std::string coded = fault + "=" + std::to_string(UsualCodeOf(fault.substr(0, fault.find_first_of("@#="))));
    if (!ClusterSimulator::IsFault(fault) && !ClusterSimulator::IsFault(coded)) {
        throw WrongUsage("--fail: " + Quoted(fault) +
                         " is no fault like CALL, CALL#N or CALL#N=CODE of a call of the cluster that the simulator "
                         "knows");
    }
    return ClusterSimulator::IsFault(fault) ? fault : coded;
}
