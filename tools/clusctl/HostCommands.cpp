#include "HostCommands.h"

#include "CommandLine.h"
#include "Deployment.h"
#include "LogCapture.h"
#include "Text.h"
#include "ThisComputer.h"

#include <clus_VirtualServerUtil.h>

#include <memory>

namespace {

const Columns HostTitles = {
    {"computerName", "Computer name"},
    {"clustered", "Cluster deployment"},
    {"quorumMode", "Quorum mode"},
    {"quorumMeaning", "Quorum mode means"},
    {"homeDirectory", "Home directory"},
    {"dataRoot", "Data root"},
    {"iisSite", "IIS site"},
};

// The home directory is there for derived classes.
class HostSettings : public CVirtualServerUtil {
public:
    using CVirtualServerUtil::GetHomeDir;
};

const char* QuorumMeaning(int mode) {
    switch (mode) {
    case 0:
        return "not set";
    case CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY:
        return "single copy cluster (shared disk)";
    case CVirtualServerUtil::CLUSTER_QUORUM_CCR:
        return "cluster continuous replication (CCR)";
    default:
        return "unknown";
    }
}

Report Host(bool isExplained) {
    Json record;
    record["computerName"] = ComputerName();
    const bool isClustered = CVirtualServerUtil::CheckIsClusterByRegKey();
    record["clustered"] = isClustered;
    const int mode = isClustered ? CVirtualServerUtil::GetClusterQuorumModeByRegKey() : 0;
    record["quorumMode"] = isClustered ? Json(mode) : Json();
    record["quorumMeaning"] = isClustered ? Json(QuorumMeaning(mode)) : Json();
    std::wstring homeDirectory;
    record["homeDirectory"] = HostSettings::GetHomeDir(homeDirectory) ? Json(homeDirectory) : Json();
    record["dataRoot"] = TextOrNull(CVirtualServerUtil::GetDataRootPath());
    const int site = CVirtualServerUtil::QueryIISSiteID();
    record["iisSite"] = site < 0 ? Json() : Json(site);
    Report report;
    report.AddRecord("host", record, HostTitles);
    AddDeployment(ReadDeployment(), isExplained, report);
    return report;
}

} // namespace

void AddHostCommands(CommandLine& commandLine) {
    const auto isExplained = std::make_shared<bool>(false);
    CLI::App& host = commandLine.Add(headings::ThisComputer, "host", "Show the product's settings on this computer",
                                     [isExplained](const LogCapture&) { return Host(*isExplained); });
    AddExplain(host, *isExplained);
}
