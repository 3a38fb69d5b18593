#include "VcsProductDeletion.h"

#include "Progress.h"
#include "Text.h"
#include "VcsMode.h"
#include "VcsProduct.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsTools.h"

#include "core/VeritasNames.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>

using namespace clus::veritas;

namespace {

// Those that depend on others of the set first.
const wchar_t* const ServicesInOrder[] = {RemoteConfigService, QAVMonitorService, SAService, HostService};

struct Member {
    std::wstring name;
    std::wstring service; // none of a registry replication
    VcsNames parents;
    VcsNames children;
};

typedef std::vector<Member> Members;

bool IsMember(const Members& members, const std::wstring& name) {
    return std::any_of(members.begin(), members.end(), [&name](const Member& member) { return member.name == name; });
}

Members FindMembers(const LogCapture& log, const std::wstring& group) {
    Members members;
    for (const wchar_t* const service : ServicesInOrder) {
        for (const std::wstring& name : ListResourcesOfService(log, group, service)) {
            members.push_back({name, service, {}, {}});
        }
    }
    for (const auto list : {&ListRegistryReplications, &ListHalfMadeReplications}) {
        for (const std::wstring& name : list(log, group)) {
            members.push_back({name, std::wstring(), {}, {}});
        }
    }
    for (Member& member : members) {
        ReadDependencies(log, member.name, member.parents, member.children,
                         "cannot list the dependencies of the product's resources");
    }
    return members;
}

void RequireNoOtherDependants(const Members& members, const std::string& what) {
    std::string reasons;
    for (const Member& member : members) {
        VcsNames others;
        std::copy_if(member.parents.begin(), member.parents.end(), std::back_inserter(others),
                     [&members](const std::wstring& parent) { return !IsMember(members, parent); });
        if (!others.empty()) {
            reasons += (reasons.empty() ? "" : "; ") + ListText(others) + " depends on " + Quoted(member.name);
        }
    }
    if (!reasons.empty()) {
        throw Failure(Errors::NotPossible, what + ": " + reasons)
            .Hint("Delete these resources, or their dependencies, first.");
    }
}

// Before the services are switched off. VCS looks at the mode first, so it refuses in a read-only configuration even a
// dependency that is there already, which in an open one changes nothing.
void RequireWritable(const LogCapture& log, const Members& members, const std::string& what) {
    const auto linked =
        std::find_if(members.begin(), members.end(), [](const Member& member) { return !member.children.empty(); });
    if (linked == members.end()) {
        return;
    }
    const ToolWatch watch(log);
    CVeritasCluster().LinkResource(linked->name.c_str(), linked->children.front().c_str());
    for (const ToolProblem& problem : watch.Problems()) {
        if (problem.kind != ToolProblem::Kind::Message) {
            throw ToolFailure(what, {problem});
        }
    }
}

void TakeOffline(const LogCapture& log, const Members& members, std::uint32_t seconds, const std::string& what) {
    const Deadline deadline(seconds);
    for (const Member& member : members) {
        for (const std::wstring& system : OnlineSystems(ReadResourceStates(log, member.name))) {
            const ToolWatch watch(log);
            CVeritasCluster().TurnOnOrOffResource(member.name.c_str(), system.c_str(), false);
            watch.Require(true, what);
            if (!AwaitOffline(log, member.name, system, deadline)) {
                throw Failure(Errors::TimedOut, what + ": " + Quoted(member.name) + " is still online on " +
                                                    Quoted(system) + " after " + std::to_string(seconds) + " s");
            }
        }
    }
}

// Whatever the tool said, VCS is asked.
void DeleteOne(const LogCapture& log, const std::wstring& group, const std::wstring& name, const std::string& what) {
    const ToolWatch watch(log);
    CVeritasCluster().DeleteResource(name.c_str());
    const std::vector<ToolProblem> problems = watch.Problems();
    if (Contains(ListVcsResources(log, group), name)) {
        if (!problems.empty()) {
            throw ToolFailure(what, problems);
        }
        throw Failure(Errors::Refused, what + ": VCS shows " + Quoted(name) + " still");
    }
}

// What remains may have been switched off.
const char* WordOfRemaining(const LogCapture& log, const std::wstring& name) {
    return OnlineSystems(ReadResourceStates(log, name)).empty() ? "remains offline" : "remains online";
}

// What has become of each, as VCS shows it.
Json Results(const LogCapture& log, const std::wstring& group, const Members& members) {
    std::vector<std::string> results(members.size(), "unknown");
    try {
        const VcsNames left = ListVcsResources(log, group);
        std::transform(members.begin(), members.end(), results.begin(), [&](const Member& member) {
            return Contains(left, member.name) ? WordOfRemaining(log, member.name) : "deleted";
        });
    } catch (const Failure&) {
        // VCS no longer answers, which is told already.
    }
    Json records = Json::array();
    for (size_t i = 0; i < members.size(); ++i) {
        records.push_back(
            {{"name", members[i].name}, {"service", TextOrNull(members[i].service)}, {"result", results[i]}});
    }
    return records;
}

} // namespace

Report DeleteVcsProduct(const LogCapture& log, const ProductDeleteOptions& options) {
    const std::wstring& group = options.group;
    const std::string what = "cannot delete the product's resources of " + Quoted(group);
    RequireVcsGroup(log, group, what);
    const Members members = FindMembers(log, group);
    RequireNoOtherDependants(members, what);
    if (!options.opens) {
        RequireWritable(log, members, what);
    }
    const ToolWatch watch(log);
    const auto report = [&]() {
        Report told;
        told.AddTable("resources", Results(log, group, members), ProductColumns,
                      "The group holds none of the product's resources; nothing was deleted.");
        return told;
    };
    if (members.empty()) {
        return report();
    }
    try {
        {
            const Progress progress(log, DescribeProgress(log));
            const OpenConfiguration open(log, options.opens);
            watch.Require(true, what);
            TakeOffline(log, members, options.timeout, what);
            for (const Member& member : members) {
                DeleteOne(log, group, member.name, what);
            }
        }
        watch.Require(true, "the product's resources of " + Quoted(group) + " are deleted, but not all went well");
    } catch (const Failure& failure) {
        throw FailureWithReport(failure, report());
    }
    return OpenConfiguration::Tell(log, watch, options.opens,
                                   "the product's resources of " + Quoted(group) + " are deleted", report);
}
