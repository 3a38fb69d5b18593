#include "ServerCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "LogCapture.h"
#include "Text.h"

#include <clus_VirtualServerUtil.h>

#include <memory>
#include <vector>

namespace {

const char Heading[] = "The servers of this node";

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

// Asks for the count first and again as long as the cluster grows in between.
std::vector<CClusterVirtualServerInfo> ListServers() {
    CVirtualServerUtil util;
    int count = 0;
    std::vector<CClusterVirtualServerInfo> servers;
    CVirtualServerUtil::ENUM_VS_RESULT result = util.EnumServersOnCurrentNode(nullptr, &count);
    while (result == CVirtualServerUtil::ENUM_VS_RESULT_MORE_DATA) {
        // One record at least: without servers there would be no buffer, and that asks for the count again.
        servers.resize(static_cast<size_t>(count > 0 ? count : 1));
        count = static_cast<int>(servers.size());
        result = util.EnumServersOnCurrentNode(servers.data(), &count);
    }
    if (result != CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS) {
        throw Failure("cannot list the servers of this node");
    }
    servers.resize(static_cast<size_t>(count));
    return servers;
}

Report Servers() {
    Json records = Json::array();
    for (const CClusterVirtualServerInfo& info : ListServers()) {
        records.push_back(ServerRecord(info));
    }
    Report report;
    report.AddTable("servers", records, ServerColumns, "This node serves no server at present.");
    return report;
}

// After a "not found": throws when the reason is that the cluster does not answer.
void RequireAnswer() {
    if (CVirtualServerUtil::CheckIsClusterByRegKey()) {
        CCluster cluster;
        OpenLocalCluster(cluster);
    }
}

Report Query(const std::wstring& nameOrAddress) {
    CClusterVirtualServerLookupRequest request;
    request.m_wsNameOrIP = nameOrAddress;
    CVirtualServerUtil util;
    const auto info = std::make_unique<CClusterVirtualServerInfo>();
    if (!util.QueryServerInfo(request, *info)) {
        RequireAnswer();
        throw Failure(Errors::ServerNotFound,
                      "this node serves no server with the name or address " + Quoted(nameOrAddress));
    }
    Report report;
    report.AddRecord("server", ServerRecord(*info), ServerTitles);
    return report;
}

Report SmtpInstances(const std::wstring& networkName) {
    const auto info = std::make_unique<CClusterVirtualServerInfo>();
    if (!CVirtualServerUtil::GetSMTPInstanceInfo(networkName.c_str(), *info)) {
        CCluster cluster;
        OpenLocalCluster(cluster);
        std::wstring resourceName;
        if (!cluster.FindFirstResourceNameByNetworkName(resourceName, networkName.c_str())) {
            throw Failure(Errors::ServerNotFound, "the cluster has no network name " + Quoted(networkName));
        }
        throw Failure("cannot collect the SMTP instances of " + Quoted(networkName) +
                      ": one cannot be read, or there are more than " +
                      std::to_string(CClusterVirtualServerInfo::MaxSmtpInstances));
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

Report StoreOnline(const LogCapture& log) {
    {
        CCluster cluster;
        OpenLocalCluster(cluster);
    }
    const bool isOnline = CVirtualServerUtil::AtLeastOneExchangeResourceDLLOnlineOnCurrentNode();
    if (!isOnline && !log.Problems().empty()) {
        throw Failure("cannot tell whether an Exchange store is online on this node");
    }
    Report report;
    report.AddSentence("storeOnline", isOnline,
                       isOnline ? "An Exchange store is online on this node."
                                : "No Exchange store is online on this node.");
    return report;
}

} // namespace

void AddServerCommands(CommandLine& commandLine) {
    commandLine.Add(Heading, "servers", "List the servers that this node serves",
                    [](const LogCapture&) { return Servers(); });

    const auto wanted = std::make_shared<std::wstring>();
    CLI::App& query = commandLine.Add(Heading, "query", "Show the server that a name or an IP address denotes",
                                      [wanted](const LogCapture&) { return Query(*wanted); });
    CommandLine::AddText(query, "NAME", *wanted, "NAME|ADDRESS",
                         "Network name, computer name, host name with domain, or IP address")
        .required();

    const auto networkName = std::make_shared<std::wstring>();
    CLI::App& instances =
        commandLine.Add(Heading, "smtp-instances", "List the SMTP instance numbers of a virtual server",
                        [networkName](const LogCapture&) { return SmtpInstances(*networkName); });
    CommandLine::AddText(instances, "NETWORK-NAME", *networkName, "NETWORK-NAME", "The virtual server's network name")
        .required();

    commandLine.Add(Heading, "store-online", "Tell whether an Exchange store is online on this node", StoreOnline);
}
