#include "ServerCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "Deployment.h"
#include "OwnerSpelling.h"
#include "Progress.h"
#include "PropertyJson.h"
#include "ResourcesHere.h"
#include "ServerChecks.h"
#include "ServersLeftOut.h"
#include "Text.h"

#include "core/ResourceTypes.h"

#include <clus_VirtualServerUtil.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

const Columns ServerColumns = {
    {"name", "NAME"}, {"address", "ADDRESS"}, {"online", "ONLINE"}, {"dataPath", "DATA PATH"}, {"guid", "GUID"},
};

const Columns ServerTitles = {
    {"name", "Name"}, {"address", "Address"}, {"online", "Online"}, {"dataPath", "Data path"}, {"guid", "GUID"},
};

Json ServerRecord(const CClusterVirtualServerInfo& info) {
    Json record;
    record["name"] = info.m_wsServerName;
    record["address"] = info.m_wsServerIP;
    record["online"] = info.m_bIsOnline;
    record["dataPath"] = info.m_wsDataPath;
    record["guid"] = info.m_wsServerGUID;
    return record;
}

// What the list lacks is told to the report.
std::vector<CClusterVirtualServerInfo> ListServers(Report& report) {
    ServersHere here;
    if (!ListServersHere(here)) {
        FailToListServers();
    }
    TellServersLeftOut(here.leftOut, report);
    // A node that the cluster spells in another letter case serves nothing; of others the groups need not be asked.
    if (here.servers.empty() && CVirtualServerUtil::CheckIsClusterByRegKey()) {
        CCluster cluster;
        OpenLocalCluster(cluster);
        WarnOfOwnerSpellings(cluster, report);
    }
    return here.servers;
}

Report Servers(const LogCapture& log, bool isExplained) {
    const Progress progress(log,
                            []() { return std::string("reading servers"); }); // the library does not tell of how many
    Report report;
    Json records = ReadServers(report); // first: it may mark the report incomplete
    report.AddTable("servers", std::move(records), ServerColumns,
                    report.IsComplete() ? "This node serves no server at present."
                                        : "No server of this node can be described.");
    AddDeployment(ReadDeployment(), isExplained, report);
    return report;
}

Report Query(const std::wstring& nameOrAddress, bool isExplained) {
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = nameOrAddress;
    CVirtualServerUtil util;
    const auto info = std::make_unique<CClusterVirtualServerInfo>();
    if (!util.QueryServerInfo(request, *info)) {
        Report unread;
        ListServers(unread);
        if (unread.IsLost()) {
            throw Failure::OfCode("cannot tell whether this node serves " + Quoted(nameOrAddress), unread.LostCode(),
                                  Errors::ClusterLost);
        }
        if (!unread.IsComplete()) {
            throw Failure(Errors::Incomplete, "cannot tell whether this node serves " + Quoted(nameOrAddress) + ": " +
                                                  unread.Warnings().front());
        }
        throw Failure(Errors::ServerNotFound, "this node serves no server with the name or address " +
                                                  Quoted(nameOrAddress) +
                                                  (unread.Warnings().empty() ? "" : ": " + unread.Warnings().front()));
    }
    Report report;
    report.AddRecord("server", ServerRecord(*info), ServerTitles);
    AddDeployment(ReadDeployment(), isExplained, report);
    return report;
}

// Why the library could not collect the instances: it only says that it could not.
[[noreturn]] void FailToCollect(const std::wstring& networkName) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const std::string what = "cannot collect the SMTP instances of " + Quoted(networkName) + ": ";
    const NamesByType members = ReadMembers(cluster, FindServer(cluster, networkName).group);
    const auto instances = members.find(clus::SmtpInstanceType);
    if (instances == members.end()) {
        throw Failure(Errors::Incomplete, what + "the cluster could not be read, and can be now").Hint("Ask again.");
    }
    if (instances->second.size() > CClusterVirtualServerInfo::MaxSmtpInstances) {
        throw Failure(Errors::Incomplete,
                      what + "there are more than " + std::to_string(CClusterVirtualServerInfo::MaxSmtpInstances));
    }
    for (const std::wstring& name : instances->second) {
        const ResourceHandle resource = RequireResource(cluster, name);
        std::vector<unsigned char> list;
        DWORD code = 0;
        if (!QueryResource(resource.get(), CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, list, code)) {
            throw Failure::OfCode(what + "cannot read the private properties of " + Quoted(name), code,
                                  Errors::Incomplete);
        }
        if (!PropertiesJson(list).contains("ProtocolInstanceId")) {
            throw Failure(Errors::Incomplete, what + Quoted(name) + " has no ProtocolInstanceId");
        }
    }
    throw Failure(Errors::Incomplete, what + "an instance could not be read, and can be now").Hint("Ask again.");
}

Report CollectedInstances(const std::wstring& networkName) {
    const auto info = std::make_unique<CClusterVirtualServerInfo>();
    if (!CVirtualServerUtil::GetSMTPInstanceInfo(networkName.c_str(), *info)) {
        FailToCollect(networkName);
    }
    Report report;
    if (info->m_nSmtpInstanceCount < 0) {
        report.AddSentence("smtpInstances", nullptr,
                           "This is not a cluster deployment: there are no instances to collect.");
        return report;
    }
    Json instances = Json::array();
    for (int i = 0; i < info->m_nSmtpInstanceCount; ++i) {
        instances.push_back({{"id", info->m_dwSmtpInstanceIds[i]}});
    }
    report.AddTable("smtpInstances", instances, {{"id", "SMTP INSTANCE"}},
                    "The group of " + Quoted(networkName) + " has no SMTP instance.");
    return report;
}

Report SmtpInstances(const std::wstring& networkName, bool isExplained) {
    Report report = CollectedInstances(networkName);
    AddDeployment(ReadDeployment(), isExplained, report);
    return report;
}

Report StoreOnline() {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const bool isOnline = CVirtualServerUtil::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode();
    if (!isOnline) {
        Report unread;
        ReadResourcesHere(cluster, clus::InformationStoreType, unread); // the library skips what it cannot read
        if (!unread.IsComplete()) {
            throw Failure(Errors::Incomplete,
                          "cannot tell whether an Exchange store is online on this node: " + unread.Warnings().front());
        }
    }
    Report report;
    report.AddSentence("storeOnline", isOnline,
                       isOnline ? "An Exchange store is online on this node."
                                : "No Exchange store is online on this node.");
    return report;
}

} // namespace

Json ReadServers(Report& report) {
    Json records = Json::array();
    for (const CClusterVirtualServerInfo& info : ListServers(report)) {
        records.push_back(ServerRecord(info));
    }
    return records;
}

void AddServerCommands(CommandLine& commandLine) {
    const auto isListExplained = std::make_shared<bool>(false);
    CLI::App& servers =
        commandLine.Add(headings::ServersHere, "servers", "List the servers that this node serves",
                        [isListExplained](const LogCapture& log) { return Servers(log, *isListExplained); });
    AddExplain(servers, *isListExplained);

    const auto wanted = std::make_shared<std::wstring>();
    const auto isQueryExplained = std::make_shared<bool>(false);
    CLI::App& query =
        commandLine.Add(headings::ServersHere, "query", "Show the server that a name or an IP address denotes",
                        [wanted, isQueryExplained](const LogCapture&) { return Query(*wanted, *isQueryExplained); });
    CommandLine::AddText(query, "NAME|ADDRESS", *wanted, "NAME|ADDRESS",
                         "Network name, computer name, host name with domain, or IP address")
        .required();
    AddExplain(query, *isQueryExplained);

    const auto networkName = std::make_shared<std::wstring>();
    const auto areExplained = std::make_shared<bool>(false);
    CLI::App& instances = commandLine.Add(
        headings::ServersHere, "smtp-instances", "List the SMTP instance numbers of a virtual server",
        [networkName, areExplained](const LogCapture&) { return SmtpInstances(*networkName, *areExplained); });
    CommandLine::AddText(instances, "NETWORK-NAME", *networkName, "NETWORK-NAME", "The virtual server's network name")
        .required();
    AddExplain(instances, *areExplained);

    AddExplain(commandLine.Add(headings::ServersHere, "store-online",
                               "Tell whether an Exchange store is online on this node",
                               [](const LogCapture&) { return StoreOnline(); }));
}
