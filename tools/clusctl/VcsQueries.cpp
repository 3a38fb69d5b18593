// "vcs systems", "vcs deps", "vcs attribute" and the like: what VCS answers.
#include "CommandLine.h"
#include "Deployment.h"
#include "Text.h"
#include "VcsCommands.h"
#include "VcsConditions.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsSystems.h"
#include "VcsTable.h"
#include "VcsTools.h"
#include "VcsValues.h"

#include <clus_VeritasCluster.h>

#include <algorithm>
#include <memory>

namespace {

const wchar_t GlobalSystem[] = L"global"; // of a value that holds on all

const Columns DependencyTitles = {
    {"resource", "Resource"},
    {"dependsOn", "Depends on"},
    {"dependants", "Needed by"},
};

// The records of names, with what there is to tell of them besides.
typedef Json (*RecordFunction)(const LogCapture& log, const VcsNames& names, Report& report);

Json NamesOnly(const LogCapture&, const VcsNames& names, Report&) {
    return NameRecords(names);
}

// A state that cannot be read makes the report incomplete.
Json SystemRecords(const LogCapture& log, const VcsNames& names, Report& report) {
    Json records = Json::array();
    try {
        for (const picture::Node& system : ReadVcsSystems(log, names)) {
            records.push_back({{"name", system.name}, {"state", system.state}, {"up", system.isUp}});
        }
    } catch (const Failure& failure) {
        report.MarkIncomplete(std::string("cannot read the states of the systems: ") + failure.what());
        for (const std::wstring& name : names) {
            records.push_back({{"name", name}, {"state", "unknown"}, {"up", nullptr}});
        }
    }
    return records;
}

struct Kind {
    const char* name; // of the sub-command and in JSON
    const char* description;
    Columns columns;
    ListFunction list;
    ConditionedKind conditioned;
    RecordFunction records;
};

const Kind Kinds[] = {
    {"systems",
     "List the systems of the VCS cluster with their states",
     {{"name", "SYSTEM"}, {"state", "STATE"}},
     &CVeritasCluster::EnumSystemNames,
     {"system", L"hasys", TableForm::ObjectValue},
     SystemRecords},
    {"groups",
     "List the service groups",
     {{"name", "GROUP"}},
     &CVeritasCluster::EnumGroupNames,
     {"group", L"hagrp", TableForm::ObjectSystemValue},
     NamesOnly},
    {"resources",
     "List the resources",
     {{"name", "RESOURCE"}},
     &CVeritasCluster::EnumResourceNamesW,
     {"resource", L"hares", TableForm::ObjectSystemValue},
     NamesOnly},
};

struct AttributeName {
    std::wstring resource;
    std::wstring name;
};

struct GroupService {
    std::wstring group;
    std::wstring service;
};

Report List(const LogCapture& log, const Kind& kind, const NameValuePairList& conditions) {
    const VcsNames names = ListVcsNames(log, kind.list, kind.name, conditions);
    Report report;
    if (names.empty() && !conditions.empty()) {
        JudgeConditions(log, kind.conditioned, conditions, report);
    }
    report.AddTable(kind.name, kind.records(log, names, report), kind.columns,
                    conditions.empty() ? std::string("There are none.") : std::string("None matches."));
    return report;
}

Report Dependencies(const LogCapture& log, const std::wstring& resource) {
    VcsNames parents;
    VcsNames children;
    const ToolWatch watch(log);
    const bool isListed = CVeritasCluster().EnumResDependencies(resource.c_str(), parents, children);
    const std::string what = "cannot list the dependencies of " + Quoted(resource);
    if (watch.IsRefused()) {
        RequireVcsResource(log, resource, what);
    }
    watch.Require(isListed, what);
    watch.RequireNames(parents, what);
    watch.RequireNames(children, what);
    Report report;
    report.AddRecord("dependencies", {{"resource", resource}, {"dependsOn", children}, {"dependants", parents}},
                     DependencyTitles);
    return report;
}

// Of an attribute that is kept per system, as VCS showed them last; none of one that holds on all.
Json ValuesOfSystems(const ToolWatch& watch, const AttributeName& attribute) {
    Json records = Json::array();
    const std::vector<ToolRun> runs = watch.Runs();
    for (const VcsRow& row : ReadVcsTable(runs.empty() ? std::wstring() : runs.back().Output())) {
        if (row.object == attribute.resource && row.attribute == attribute.name && row.system != GlobalSystem) {
            records.push_back({{"system", row.system}, {"value", TextOrNull(row.value)}});
        }
    }
    return records;
}

// A line for each system of an attribute that is kept per system.
std::string ValueText(const Json& value, const Json& systems) {
    if (systems.empty()) {
        return Printable(value.get<std::string>());
    }
    std::string text;
    for (const Json& record : systems) {
        text += (text.empty() ? "" : "\n") + Printable(record["system"].get<std::string>()) + ": " +
                (record["value"].is_null() ? "-" : Printable(record["value"].get<std::string>()));
    }
    return text;
}

Report Attribute(const LogCapture& log, const AttributeName& attribute) {
    const ToolWatch watch(log);
    const Json value = ReadVcsAttribute(attribute.resource, attribute.name);
    const std::string what =
        "cannot read the attribute " + Quoted(attribute.name) + " of " + Quoted(attribute.resource);
    if (watch.IsRefused()) {
        const std::vector<ToolProblem> problems = watch.Problems();
        RequireVcsResource(log, attribute.resource, what);
        throw ToolFailure(what, problems).As(Errors::NotFound); // the attribute, then
    }
    const Json systems = ValuesOfSystems(watch, attribute);
    const bool hasValue = !value.is_null() || std::any_of(systems.begin(), systems.end(), [](const Json& record) {
        return !record["value"].is_null();
    });
    watch.Require(hasValue, what + (watch.Problems().empty() ? ": it has no value" : ""));
    Report report;
    report.AddSentence(
        "attribute",
        {{"resource", attribute.resource}, {"name", attribute.name}, {"value", value}, {"systems", systems}},
        ValueText(value, systems));
    return report;
}

Report OnlineNode(const LogCapture& log, const std::wstring& group, bool acceptsPartial) {
    const GroupState state = ReadGroupState(log, group);
    const bool isAccepted = state.IsOnline() || (acceptsPartial && state.IsPartlyOnline());
    Report report;
    const Json systemState = RunningSystems(log, report).StateUnder(group, state);
    const std::string place = std::string(state.word) + " on " + Printable(state.system) +
                              (systemState == "not running" ? " (not running)" : "");
    report.AddSentence("onlineNode",
                       {{"group", group},
                        {"online", state.IsOnline()},
                        {"system", isAccepted ? TextOrNull(state.system) : Json()},
                        {"systemState", isAccepted ? systemState : Json()},
                        {"state", state.word},
                        {"states", StateRecords(state.states)}},
                       Quoted(group) + (isAccepted               ? " is " + place + "."
                                        : state.IsPartlyOnline() ? " is online on no system; it is " + place + "."
                                                                 : " is online on no system."));
    return report;
}

Report FindGroup(const LogCapture& log, const std::wstring& networkName) {
    std::wstring group;
    const ToolWatch watch(log);
    const bool isFound = CVeritasCluster().FindGroupNameByVirtualServerName(networkName.c_str(), group);
    const std::string what = "cannot find the group of the network name " + Quoted(networkName);
    watch.Require(isFound, what);
    if (group.empty()) {
        throw Failure(Errors::ServerNotFound,
                      what + ": no Lanman resource carries it" + NetworkNameInOtherCase(log, networkName));
    }
    Report report;
    report.AddSentence("group", {{"networkName", networkName}, {"name", group}}, Printable(group));
    return report;
}

Report ResourceOfService(const LogCapture& log, const GroupService& wanted) {
    std::wstring resource;
    const ToolWatch watch(log);
    const bool isFound =
        CVeritasCluster().GetGenericServiceResNameByServiceName(wanted.group.c_str(), wanted.service.c_str(), resource);
    const std::string what =
        "cannot find the resource of the service " + Quoted(wanted.service) + " in the group " + Quoted(wanted.group);
    watch.Require(true, what);
    if (!isFound) {
        RequireVcsGroup(log, wanted.group, what);
        throw Failure(Errors::ResourceNotFound, what + ": there is none");
    }
    watch.RequireNames({resource}, what);
    Report report;
    report.AddSentence("resource", {{"group", wanted.group}, {"service", wanted.service}, {"name", resource}},
                       Printable(resource));
    return report;
}

Report ClusterType() {
    const int number = CVeritasCluster().GetThirdPartyClusterType();
    const char* const meaning = number == THIRD_PARTY_CLUSTER_TYPE_NONE
                                    ? "no third-party cluster is configured"
                                    : "a third-party cluster, as the product's set-up numbers them";
    Report report;
    report.AddSentence("clusterType", {{"number", number}, {"meaning", meaning}},
                       std::to_string(number) + ": " + meaning);
    return report;
}

void AddList(CommandLine& commandLine, CLI::App& family, const Kind& kind) {
    const auto conditions = std::make_shared<NameValuePairList>();
    CLI::App& command =
        commandLine.AddTo(family, kind.name, kind.description,
                          [&kind, conditions](const LogCapture& log) { return List(log, kind, *conditions); });
    CommandLine::AddPairs(
        command, "--where", *conditions,
        "Only those with this value of an attribute; may be given more than once, and then all have to hold");
}

void AddOnlineNode(CommandLine& commandLine, CLI::App& family) {
    const auto group = std::make_shared<std::wstring>();
    const auto acceptsPartial = std::make_shared<bool>(false);
    CLI::App& command = commandLine.AddTo(
        family, "online-node", "Tell on which system a group is online",
        [group, acceptsPartial](const LogCapture& log) { return OnlineNode(log, *group, *acceptsPartial); });
    CommandLine::AddVcsName(command, "GROUP", *group, "GROUP", "The service group").required();
    command.add_flag("--partial", *acceptsPartial, "A system on which the group is partly online will do");
    AddExplain(command);
}

} // namespace

void AddVcsQueries(CommandLine& commandLine, CLI::App& family) {
    for (const Kind& kind : Kinds) {
        AddList(commandLine, family, kind);
    }

    const auto resource = std::make_shared<std::wstring>();
    CLI::App& dependencies =
        commandLine.AddTo(family, "deps", "Show what a resource depends on, and what needs it",
                          [resource](const LogCapture& log) { return Dependencies(log, *resource); });
    CommandLine::AddVcsName(dependencies, "RESOURCE", *resource, "RESOURCE", "The resource").required();

    const auto wanted = std::make_shared<AttributeName>();
    CLI::App& attribute = commandLine.AddTo(family, "attribute", "Show an attribute of a resource",
                                            [wanted](const LogCapture& log) { return Attribute(log, *wanted); });
    CommandLine::AddVcsName(attribute, "RESOURCE", wanted->resource, "RESOURCE", "The resource").required();
    CommandLine::AddVcsName(attribute, "NAME", wanted->name, "NAME", "The attribute's name").required();

    AddOnlineNode(commandLine, family);

    const auto networkName = std::make_shared<std::wstring>();
    CLI::App& group = commandLine.AddTo(family, "find-group", "Find the group that carries a network name",
                                        [networkName](const LogCapture& log) { return FindGroup(log, *networkName); });
    CommandLine::AddText(group, "NETWORK-NAME", *networkName, "NETWORK-NAME", "The virtual server's network name")
        .required();

    const auto service = std::make_shared<GroupService>();
    CLI::App& ofService =
        commandLine.AddTo(family, "resource-of-service", "Find the resource of a group that runs a Windows service",
                          [service](const LogCapture& log) { return ResourceOfService(log, *service); });
    CommandLine::AddVcsName(ofService, "GROUP", service->group, "GROUP", "The service group").required();
    CommandLine::AddText(ofService, "SERVICE", service->service, "SERVICE", "The Windows service").required();

    commandLine.AddTo(family, "type", "Show which third-party cluster the product is configured for",
                      [](const LogCapture&) { return ClusterType(); });
}
