#include "SmtpCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "ProductNames.h"
#include "Progress.h"
#include "Text.h"
#include "ThisComputer.h"

#include <clus_VirtualServerUtil.h>

#include <cwchar>

namespace {

const char Heading[] = "The servers of this node";

const Columns InstanceTitles = {
    {"name", "Resource"}, {"type", "Type"}, {"group", "Group"}, {"owner", "Owner"}, {"state", "State"},
};

// The instance that the library restarts, chosen as it chooses: the first that is online on this node. Empty when there
// is none.
std::wstring FindInstance(const CCluster& cluster) {
    for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE)) {
        CClusterResource resource;
        if (!cluster.OpenResourceByName(resource, name.c_str())) {
            continue;
        }
        const wchar_t* type = resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false);
        if (type == nullptr || _wcsicmp(type, SmtpInstanceType) != 0) {
            continue;
        }
        std::wstring owner;
        if (resource.GetResourceState(&owner, nullptr) == CClusterResource::RES_STATE_ONLINE && IsThisComputer(owner)) {
            return name;
        }
    }
    return std::wstring();
}

Report Restart(const LogCapture& log) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const std::wstring name = FindInstance(cluster);
    bool isRestarted = false;
    {
        const Progress progress(log, name.empty() ? Names() : Names(1, name));
        isRestarted = CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode();
    }
    if (name.empty()) {
        throw Failure(Errors::NotFound, "no Exchange SMTP instance is online on this node");
    }
    Report report;
    const Json record = ReadResource(cluster, name, ResourceParts::Line, report);
    if (!isRestarted) {
        throw Failure("cannot restart " + Quoted(name) + ": it is " + record["state"].get<std::string>() + " now");
    }
    report.AddRecord("restarted", record, InstanceTitles);
    return report;
}

} // namespace

void AddSmtpCommands(CommandLine& commandLine) {
    CLI::App& smtp = commandLine.AddFamily(Heading, "smtp", "Work with the Exchange SMTP instance of this node");
    commandLine.AddTo(smtp, "restart", "Restart the first SMTP instance that is online here", Restart);
}
