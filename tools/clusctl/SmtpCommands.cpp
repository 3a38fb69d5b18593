#include "SmtpCommands.h"

#include "CommandLine.h"
#include "Deadline.h"
#include "Interruption.h"
#include "LibraryCalls.h"
#include "Progress.h"
#include "ResourcesHere.h"
#include "ServerChecks.h"
#include "Text.h"
#include "ThisComputer.h"

#include "core/ResourceTypes.h"

#include <clus_VirtualServerUtil.h>

namespace {

const std::uint32_t OfflineTimeout = 120; // seconds

const Columns InstanceTitles = {
    {"name", "Resource"}, {"type", "Type"}, {"group", "Group"}, {"owner", "Owner"}, {"state", "State"},
};

// Throws Failure when an instance that is online may have been passed over.
[[noreturn]] void FailToFind(const CCluster& cluster) {
    Report unread;
    ReadResourcesHere(cluster, clus::SmtpInstanceType, unread);
    if (!unread.IsComplete()) {
        throw Failure(Errors::Incomplete, "cannot tell whether an Exchange SMTP instance is online on this node: " +
                                              unread.Warnings().front());
    }
    throw Failure(Errors::NotFound, "no Exchange SMTP instance is online on this node");
}

// As long as the library waits for it. The instance as the cluster then holds it.
Json AwaitOffline(const CCluster& cluster, const std::wstring& name, Report& report) {
    const Deadline deadline(OfflineTimeout);
    Json record = ReadResource(cluster, name, ResourceParts::Line, report);
    while (record["state"] == "offline pending" && !deadline.IsOver() && !Interruption::IsPending()) {
        Interruption::AwaitPending();
        record = ReadResource(cluster, name, ResourceParts::Line, report);
    }
    if (record["state"] == "offline pending") {
        throw Failure(Errors::TimedOut, "cannot restart " + Quoted(name) + ": it is still offline pending")
            .Hint("Once it is offline, bring its group online.");
    }
    return record;
}

// The instance as the cluster holds it after the library's work. Throws Failure unless it is online or on its way.
// `refusal` is the code that the library got of a change.
Json RequireRestarted(const CCluster& cluster, const std::wstring& name, bool isRestarted, DWORD refusal,
                      Report& report) {
    Json record = ReadResource(cluster, name, ResourceParts::Line, report);
    if (!isRestarted && record["state"] == "offline pending") {
        throw Failure(Errors::TimedOut, "cannot restart " + Quoted(name) + ": it is still offline pending")
            .Hint("Once it is offline, bring its group online.");
    }
    if (!isRestarted && record["state"] == "online") {
        if (Interruption::IsPending() && refusal == ERROR_SUCCESS) {
            throw Failure(Errors::Refused, "the cluster did not take " + Quoted(name) + " offline");
        }
        const DWORD code = Interruption::IsPending() ? refusal : AskAgain(cluster, name, &OfflineClusterResource);
        if (code != ERROR_SUCCESS) {
            throw Failure::OfCode("cannot restart " + Quoted(name) + ": " +
                                      UnlessLost("the cluster does not take it offline", code),
                                  code, Errors::Refused);
        }
        record = AwaitOffline(cluster, name, report);
    }
    if (record["state"] == "offline") { // the library does not look whether the cluster brings it online
        const DWORD code = AskAgain(cluster, name, &OnlineClusterResource);
        if (code != ERROR_SUCCESS) {
            throw Failure::OfCode(Quoted(name) + " went offline, and " +
                                      UnlessLost("the cluster does not bring it online again", code),
                                  code, Errors::Refused);
        }
        record = ReadResource(cluster, name, ResourceParts::Line, report);
    }
    if (record["state"] != "online" && record["state"] != "online pending") {
        throw Failure("cannot restart " + Quoted(name) + ": it is " + record["state"].get<std::string>() + " now");
    }
    return record;
}

Report Restart(const LogCapture& log) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    std::wstring name;
    if (!CVirtualServerUtil::FindSmtpVirtualServerInstanceResourceOnCurrentNode(name)) {
        ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE); // throws with the code that the library does not give
        throw Failure(Errors::Incomplete, "cannot list the cluster's resources");
    }
    if (name.empty()) {
        FailToFind(cluster);
    }
    RequireNodeStarts(cluster, ComputerName()); // or the instance would go offline and stay it
    Interruption::RequireNone();
    bool isRestarted = false;
    const LibraryCalls calls;
    {
        const Progress progress(log, Names(1, name));
        isRestarted = CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode();
    }
    Report report;
    report.AddRecord("restarted", RequireRestarted(cluster, name, isRestarted, calls.RefusedChange(), report),
                     InstanceTitles);
    return report;
}

} // namespace

void AddSmtpCommands(CommandLine& commandLine) {
    CLI::App& smtp =
        commandLine.AddFamily(headings::ServersHere, "smtp", "Work with the Exchange SMTP instance of this node");
    commandLine.AddTo(smtp, "restart", "Restart the first SMTP instance that is online here", Restart);
}
