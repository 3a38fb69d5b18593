#include "ClusterRehearsal.h"

#include "RehearsedModel.h"
#include "ServerCommands.h"
#include "Text.h"
#include "ThisComputer.h"

#include <winsock2.h>
#include <windows.h>

namespace {

const std::int64_t LongestSettling = 3600000; // milliseconds

// Advances the clock of the loaded model until nothing goes on. False when something does after an hour.
bool LetEnd(Json& model) {
    const std::int64_t start = ClockOf(model);
    for (std::int64_t next = NextEnd(model); next > ClockOf(model); next = NextEnd(model)) {
        if (next - start > LongestSettling) {
            return false;
        }
        ClusterSimulator::AdvanceClock(static_cast<unsigned>(next - ClockOf(model)));
        model = ClusterSimulator::Read();
    }
    return true;
}

} // namespace

ClusterRehearsal::ClusterRehearsal(const Json& model, const std::wstring& rehearsed)
    : m_rehearsed(rehearsed), m_thisComputer(common::ToUtf8(ComputerName())) {
    ClusterSimulator::RecordEvents();
    ClusterSimulator::Load(PrivateCopy(model));
    m_before = m_model = ClusterSimulator::Read();
    m_start = ClockOf(m_before);
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
    m_timeline.push_back(
        {{"at", SecondsAt(ClockOf(m_model))}, {"kind", kind}, {"name", name}, {"what", what}, {"why", nullptr}});
}

void ClusterRehearsal::Happen(const RehearsalEvent& event) {
    Tell("event", event.Text(), "");
    const std::vector<std::string>& names = event.names;
    const unsigned long code =
        ClusterSimulator::Happen(event.word, names.empty() ? "" : names[0], names.size() < 2 ? "" : names[1]);
    m_model = ClusterSimulator::Read();
    TakeEvents(ClusterSimulator::TakeEvents());
    if (code != ERROR_SUCCESS && code != ERROR_IO_PENDING) {
        throw Failure::OfCode("the cluster refuses the event " + event.Text(), code).As(Errors::Refused);
    }
}

const CopyResult& ClusterRehearsal::Run(const Words& command, const FaultTexts& faults, bool asJson) {
    std::string line;
    for (const std::wstring& word : command) {
        const bool isPlain = !word.empty() && word.find(L' ') == std::wstring::npos;
        line += (line.empty() ? "" : " ") + (isPlain ? Printable(word) : Quoted(word));
    }
    Tell("command", line, "begins");
    m_result = CopyRun(m_model, command, faults, m_rehearsed, asJson).Finish();
    TakeEvents(m_result.events);
    m_model = m_result.model;
    ClusterSimulator::Load(m_model);
    Tell("command", line, "ends with exit code " + std::to_string(m_result.program.exitCode));
    return m_result;
}

bool ClusterRehearsal::Settle() {
    const bool hasEnded = LetEnd(m_model);
    TakeEvents(ClusterSimulator::TakeEvents());
    return hasEnded;
}

Json ClusterRehearsal::ServersOn(const Json& model, const std::string& node, Report& report) const {
    const std::string state = NodeState(model, node, m_thisComputer);
    if (state != "up" && state != "paused") {
        return Json();
    }
    ClusterSimulator::Load(SeenFrom(model, node, m_thisComputer));
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
    Report earlier; // what is not as it should be at first is no matter of the rehearsal
    for (const std::string& node : NodesOf(m_before, m_thisComputer)) {
        nodes.push_back({{"name", node},
                         {"stateBefore", NodeState(m_before, node, m_thisComputer)},
                         {"stateAfter", NodeState(m_model, node, m_thisComputer)},
                         {"serversBefore", ServersOn(m_before, node, earlier)},
                         {"serversAfter", ServersOn(m_model, node, report)}});
    }
    ClusterSimulator::Load(m_model);
    return nodes;
}

Json Settled(const Json& model) {
    if (NextEnd(model) == 0) {
        return model;
    }
    ClusterSimulator::Load(model);
    Json settled = ClusterSimulator::Read();
    LetEnd(settled);
    return settled;
}
