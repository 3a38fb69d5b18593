// "vcs servers", "vcs storage": the Exchange virtual servers on VCS and their storage.
#include "CommandLine.h"
#include "Deployment.h"
#include "Text.h"
#include "VcsCommands.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsSystems.h"
#include "VcsTools.h"

#include "core/VeritasNames.h"

#include <memory>

using namespace clus::veritas;

namespace {

const Columns ServerColumns = {
    {"networkName", "NETWORK NAME"}, {"group", "GROUP"},         {"state", "STATE"},
    {"onlineNode", "NODE"},          {"storeResource", "STORE"}, {"lanmanResource", "LANMAN"},
};

const Columns ServerTitles = {
    {"networkName", "Network name"},
    {"group", "Group"},
    {"state", "State"},
    {"onlineNode", "Node"},
    {"onlineNodeState", "Node is"},
    {"storeResource", "Store resource"},
    {"lanmanResource", "Lanman resource"},
    {"productResources", "Product's resources"},
    {"missingProductResources", "Not there"},
};

const Columns StorageTitles = {
    {"group", "Group"},
    {"topMountResources", "Top-most MountV"},
    {"registryReplication", "Product's RegRep"},
    {"registryReplicationDisk", "Its disk"},
};

struct Wanted {
    std::wstring group;
    std::wstring networkName;
};

// Null when it cannot be read, which makes the report incomplete.
Json NetworkName(const LogCapture& log, const CVeritasVirtualServerInfo& info, Report& report) {
    if (info.sLanmanResName.empty()) {
        return Json();
    }
    const std::string what = "cannot read the network name of " + Quoted(info.sGroupName);
    const ToolWatch watch(log);
    Json name = ReadVcsAttribute(info.sLanmanResName, VirtualNameAttribute);
    try {
        watch.Require(!name.is_null(), what + (watch.Problems().empty() ? ": VCS shows none" : ""));
    } catch (const Failure& failure) {
        report.MarkIncomplete(failure.what());
    }
    return name;
}

Json ServerRecord(const LogCapture& log, const CVeritasVirtualServerInfo& info, RunningSystems& systems,
                  Report& report) {
    const GroupState state = LastGroupState(log, info.sGroupName);
    Json record;
    record["networkName"] = NetworkName(log, info, report);
    record["group"] = info.sGroupName;
    record["online"] = state.IsOnline();
    record["onlineNode"] = TextOrNull(state.system);
    record["onlineNodeState"] = systems.StateUnder(info.sGroupName, state);
    record["state"] = state.word;
    record["storeResource"] = TextOrNull(info.sExchangeResName);
    record["lanmanResource"] = TextOrNull(info.sLanmanResName);
    return record;
}

// With the product's resources: those that are there, and the names that the others would have.
Report OneServer(const LogCapture& log, const CVeritasVirtualServerInfo& info) {
    Report report;
    RunningSystems systems(log, report);
    Json record = ServerRecord(log, info, systems, report);
    const VcsNames all = ListVcsResources(log, info.sGroupName);
    record["productResources"] = Json::array();
    record["missingProductResources"] = Json::array();
    for (const std::wstring& name :
         {info.sHostServiceResName, info.sSAServiceResName, info.sRemoteConfigResName, info.sQAVMonitorResName}) {
        record[Contains(all, name) ? "productResources" : "missingProductResources"].push_back(name);
    }
    report.AddRecords("virtualServers", Json::array({record}), ServerTitles, std::string());
    return report;
}

Report AllServers(const LogCapture& log) {
    const std::string what = "cannot list the virtual servers";
    std::vector<CVeritasVirtualServerInfo> infos;
    const ToolWatch watch(log);
    const bool isListed = CVeritasCluster().CollectExchangeEVSInfo(infos);
    watch.Require(isListed, what);
    if (infos.empty()) {
        RequireVcsAnswer(log, what);
    }
    Json records = Json::array();
    VcsNames names;
    for (const CVeritasVirtualServerInfo& info : infos) {
        names.insert(names.end(), {info.sGroupName, info.sExchangeResName, info.sLanmanResName});
    }
    watch.RequireNames(names, what);
    Report report;
    RunningSystems systems(log, report);
    for (const CVeritasVirtualServerInfo& info : infos) {
        records.push_back(ServerRecord(log, info, systems, report));
    }
    report.AddTable("virtualServers", records, ServerColumns, "The cluster holds no Exchange virtual server.");
    return report;
}

Report Servers(const LogCapture& log, const Wanted& wanted) {
    return !wanted.group.empty()         ? OneServer(log, FindVcsServer(log, wanted.group))
           : !wanted.networkName.empty() ? OneServer(log, FindVcsServerByName(log, wanted.networkName))
                                         : AllServers(log);
}

Report Storage(const LogCapture& log, const std::wstring& group) {
    const VcsNames mounts = TopMountResources(log, group);
    const RegistryReplication replication = FindRegistryReplication(log, group);
    if (mounts.empty() && replication.resource.empty()) {
        RequireVcsGroup(log, group, "cannot show the storage of the group " + Quoted(group));
    }
    Report report;
    report.AddRecord("storage",
                     {{"group", group},
                      {"topMountResources", mounts},
                      {"registryReplication", TextOrNull(replication.resource)},
                      {"registryReplicationDisk", TextOrNull(replication.disk)}},
                     StorageTitles);
    return report;
}

} // namespace

void AddVcsServerCommands(CommandLine& commandLine, CLI::App& family) {
    const auto wanted = std::make_shared<Wanted>();
    CLI::App& servers = commandLine.AddTo(family, "servers", "List the Exchange virtual servers, or show one",
                                          [wanted](const LogCapture& log) { return Servers(log, *wanted); });
    CLI::Option& group =
        CommandLine::AddVcsName(servers, "GROUP", wanted->group, "GROUP", "The virtual server's service group");
    CommandLine::AddText(servers, "--name", wanted->networkName, "NETWORK-NAME",
                         "The virtual server with this network name, in place of a group")
        .excludes(&group);
    AddExplain(servers);

    const auto owner = std::make_shared<std::wstring>();
    CLI::App& storage =
        commandLine.AddTo(family, "storage", "Show the storage that the product's resources of a group depend on",
                          [owner](const LogCapture& log) { return Storage(log, *owner); });
    CommandLine::AddVcsName(storage, "GROUP", *owner, "GROUP", "The service group").required();
}
