#include "VcsStates.h"

#include "Text.h"
#include "VcsServers.h"
#include "VcsTable.h"
#include "VcsTools.h"
#include "VcsValues.h"

#include "common/Text.h"

#include <algorithm>
#include <sstream>

namespace {

const wchar_t StateAttribute[] = L"State";
const char OnlineWord[] = "online";
const char PartlyOnlineWord[] = "partly online";
const char OfflineWord[] = "offline";

// The rows "name State system value" of a table that is about one object.
SystemStates StatesIn(const std::wstring& table, const std::wstring& name) {
    SystemStates states;
    for (const VcsRow& row : ReadVcsTable(table)) {
        if (row.object == name && row.attribute == StateAttribute) {
            states.push_back({row.system, row.value});
        }
    }
    return states;
}

const SystemState* FindFlag(const SystemStates& states, const wchar_t* flag) {
    const auto found =
        std::find_if(states.begin(), states.end(), [flag](const SystemState& row) { return HasFlag(row.state, flag); });
    return found == states.end() ? nullptr : &*found;
}

std::string CannotRead(const std::wstring& group) {
    return "cannot read the state of the group " + Quoted(group);
}

} // namespace

bool HasFlag(const std::wstring& state, const wchar_t* flag) {
    std::wistringstream flags(state);
    for (std::wstring each; std::getline(flags, each, L'|');) {
        if (each == flag) {
            return true;
        }
    }
    return false;
}

GroupState GroupStateOf(const SystemStates& states) {
    if (const SystemState* const online = FindFlag(states, L"ONLINE")) {
        return {OnlineWord, online->system, states};
    }
    if (const SystemState* const partial = FindFlag(states, L"PARTIAL")) {
        return {PartlyOnlineWord, partial->system, states};
    }
    return {OfflineWord, std::wstring(), states};
}

bool GroupState::IsOnline() const {
    return word == OnlineWord;
}

bool GroupState::IsPartlyOnline() const {
    return word == PartlyOnlineWord;
}

GroupState ReadGroupState(const LogCapture& log, const std::wstring& group) {
    bool isOnline = false;
    std::wstring system;
    const ToolWatch watch(log);
    const bool isRead = CVeritasCluster().GetGroupOnlineNode(group.c_str(), isOnline, system, true);
    if (watch.IsRefused()) {
        RequireVcsGroup(log, group, CannotRead(group));
    }
    watch.Require(isRead, CannotRead(group));
    return LastGroupState(log, group);
}

GroupState LastGroupState(const LogCapture& log, const std::wstring& group) {
    const std::vector<ToolRun> runs = log.Tools().Since(0);
    const std::string command = "hagrp -state " + common::ToUtf8(group);
    const auto last =
        std::find_if(runs.rbegin(), runs.rend(), [&command](const ToolRun& run) { return run.command == command; });
    const SystemStates states = last == runs.rend() ? SystemStates() : StatesIn(last->Output(), group);
    if (states.empty()) {
        throw Failure(CannotRead(group) + ": VCS shows none");
    }
    return GroupStateOf(states);
}

SystemStates ReadResourceStates(const LogCapture& log, const std::wstring& resource) {
    const ToolWatch watch(log);
    ReadVcsAttribute(resource, StateAttribute); // tells one system's state only; the tool showed all
    const std::string what = "cannot read the state of " + Quoted(resource);
    watch.Require(true, what);
    const std::vector<ToolRun> runs = watch.Runs();
    SystemStates states = runs.empty() ? SystemStates() : StatesIn(runs.back().Output(), resource);
    if (states.empty()) {
        throw Failure(what + ": VCS shows none");
    }
    return states;
}

std::wstring StateOn(const SystemStates& states, const std::wstring& system) {
    const auto found =
        std::find_if(states.begin(), states.end(), [&system](const SystemState& row) { return row.system == system; });
    return found == states.end() ? std::wstring() : found->state;
}

std::string ShownState(const std::wstring& state) {
    return state.empty() ? "no state" : Printable(state);
}

bool IsOnline(const std::wstring& state) {
    return HasFlag(state, L"ONLINE");
}

std::vector<std::wstring> OnlineSystems(const SystemStates& states) {
    std::vector<std::wstring> systems;
    for (const SystemState& row : states) {
        if (IsOnline(row.state)) {
            systems.push_back(row.system);
        }
    }
    return systems;
}

std::wstring AwaitOnline(const LogCapture& log, const std::wstring& resource, const std::wstring& system,
                         const Deadline& deadline) {
    std::wstring state = StateOn(ReadResourceStates(log, resource), system);
    while (!IsOnline(state) && !deadline.IsOver()) {
        Pause();
        state = StateOn(ReadResourceStates(log, resource), system);
    }
    return state;
}

void JudgeSwitched(const Switched& switched, const std::wstring& state, const std::string& what, Report& report) {
    if (switched.isOnline && HasFlag(state, L"FAULTED")) {
        throw Failure(what + ": VCS shows " + Quoted(switched.resource) + " as " + ShownState(state));
    }
    if (state.empty() || IsOnline(state) != switched.isOnline) {
        report.AddWarning(Quoted(switched.resource) + " is not " + (switched.isOnline ? "online" : "offline") + " on " +
                          Quoted(switched.system) + " yet: VCS shows " + ShownState(state));
    }
}

void WarnUnlessOnline(const LogCapture& log, const std::wstring& resource, const std::wstring& system,
                      const Deadline& deadline, Report& report) {
    const std::wstring state = AwaitOnline(log, resource, system, deadline);
    if (!IsOnline(state)) {
        report.AddWarning(Quoted(resource) + " was switched on at " + Quoted(system) + ", but VCS shows " +
                          ShownState(state));
    }
}

bool AwaitOffline(const LogCapture& log, const std::wstring& resource, const std::wstring& system,
                  const Deadline& deadline) {
    while (IsOnline(StateOn(ReadResourceStates(log, resource), system))) {
        if (deadline.IsOver()) {
            return false;
        }
        Pause();
    }
    return true;
}

Json StateRecords(const SystemStates& states) {
    Json records = Json::array();
    for (const SystemState& row : states) {
        records.push_back({{"system", row.system}, {"state", row.state}});
    }
    return records;
}
