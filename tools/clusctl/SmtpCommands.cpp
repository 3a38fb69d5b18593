#include "SmtpCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "Progress.h"
#include "Text.h"

#include <clus_VirtualServerUtil.h>

namespace {

const char Heading[] = "The servers of this node";

const Columns InstanceTitles = {
    {"name", "Resource"}, {"type", "Type"}, {"group", "Group"}, {"owner", "Owner"}, {"state", "State"},
};

Report Restart(const LogCapture& log) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    std::wstring name;
    if (!CVirtualServerUtil::FindSmtpVirtualServerInstanceResourceOnCurrentNode(name)) {
        ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE); // throws with the code that the library does not give
        throw Failure(Errors::Incomplete, "cannot list the cluster's resources");
    }
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
