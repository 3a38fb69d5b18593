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

// Asks, before the library goes on, whether an instance that the cluster says to have taken offline at once is so.
class RestartCalls : public LibraryCalls {
public:
    // As the cluster shows it then; ClusterResourceOffline when it did not say that.
    CLUSTER_RESOURCE_STATE StateWhenOffline() const {
        return m_state;
    }

private:
    void Done(const recording::Call& call, const recording::Slot* slots, DWORD code) override {
        if (std::string(call.name) == "OfflineClusterResource" && code == ERROR_SUCCESS) {
            const auto instance = reinterpret_cast<HRESOURCE>(static_cast<std::uintptr_t>(slots[0]));
            m_state = GetClusterResourceState(instance, nullptr, nullptr, nullptr, nullptr);
        }
    }

    CLUSTER_RESOURCE_STATE m_state = ClusterResourceOffline;
};

[[noreturn]] void FailOnline(const std::wstring& name) {
    throw Failure(Errors::Refused, "the cluster did not take " + Quoted(name) + " offline");
}

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
Json RequireRestarted(const CCluster& cluster, const std::wstring& name, bool isRestarted, const RestartCalls& calls,
                      Report& report) {
    Json record = ReadResource(cluster, name, ResourceParts::Line, report);
    if (isRestarted && calls.StateWhenOffline() == ClusterResourceOnline) {
        FailOnline(name);
    }
    if (isRestarted && calls.StateWhenOffline() == ClusterResourceStateUnknown) {
        report.MarkIncomplete("cannot tell whether the cluster took " + Quoted(name) +
                              " offline: its state could not be read");
    }
    if (!isRestarted && record["state"] == "offline pending") {
        throw Failure(Errors::TimedOut, "cannot restart " + Quoted(name) + ": it is still offline pending")
            .Hint("Once it is offline, bring its group online.");
    }
    if (!isRestarted && record["state"] == "online") {
        if (Interruption::IsPending() && calls.RefusedChange() == ERROR_SUCCESS) {
            FailOnline(name);
        }
        const DWORD code =
            Interruption::IsPending() ? calls.RefusedChange() : AskAgain(cluster, name, &OfflineClusterResource);
        if (code != ERROR_SUCCESS) {
            throw Failure::OfCode("cannot restart " + Quoted(name) + ": " +
                                      UnlessLost("the cluster does not take it offline", code),
                                  code, Errors::Refused);
        }
        record = AwaitOffline(cluster, name, report);
        if (record["state"] == "online") {
            FailOnline(name);
        }
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
    const RestartCalls calls;
    {
        const Progress progress(log, Names(1, name));
        isRestarted = CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode();
    }
    Report report;
    report.AddRecord("restarted", RequireRestarted(cluster, name, isRestarted, calls, report), InstanceTitles);
    return report;
}

} // namespace

void AddSmtpCommands(CommandLine& commandLine) {
    CLI::App& smtp =
        commandLine.AddFamily(headings::ServersHere, "smtp", "Work with the Exchange SMTP instance of this node");
    commandLine.AddTo(smtp, "restart", "Restart the first SMTP instance that is online here", Restart);
}
