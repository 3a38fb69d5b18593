#include "VcsProduct.h"

#include "CommandLine.h"
#include "Password.h"
#include "Progress.h"
#include "Services.h"
#include "Text.h"
#include "VcsAttributes.h"
#include "VcsMode.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsTools.h"

#include "common/Text.h"
#include "core/VeritasNames.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>
#include <memory>

const Columns ProductColumns = {
    {"name", "RESOURCE"},
    {"service", "SERVICE"},
    {"result", "RESULT"},
};

using namespace clus::veritas;

namespace {

const size_t LongestPart = 255; // of a path
const wchar_t MountPathAttribute[] = L"MountPath";
const wchar_t DataFolder[] = L"GateData\\";

// Everything that is known before the first change.
struct Plan : PlannedProduct {
    Password password; // as an argument
    bool isAccountGiven = false;
};

// Why a data path will not do; empty when it will. Its folder gives the replication directory, which reaches VCS as a
// word of a command line; the library cannot split a path of longer parts.
std::string ReasonAgainstDataPath(const std::wstring& path) {
    const std::string quoted = Quoted(path);
    const size_t begin = path.size() > 1 && path[1] == L':' ? 2 : 0;
    const size_t slash = path.find_last_of(L"\\/");
    if (slash == std::wstring::npos || slash < begin) {
        return "the data path " + quoted + " names no folder";
    }
    if (path.find_first_of(L" \t\"", begin) < slash) {
        return "the folder of the data path " + quoted + " must not hold a blank or a double quote";
    }
    if (slash + 1 - begin > LongestPart || path.size() - slash - 1 > LongestPart) {
        return "the data path " + quoted + " is too long: its folder and its last part may have " +
               std::to_string(LongestPart) + " characters each";
    }
    return std::string();
}

void CheckOptions(const ProductCreateOptions& options) {
    if (options.accountGroup.empty() != options.accountUser.empty()) {
        throw WrongUsage("--account-group and --account-user go together");
    }
    if (!options.accountUser.empty() && !options.remoteConfig) {
        throw WrongUsage("--account-user has no meaning without --remote-config");
    }
    if (!options.dataPath.empty()) {
        const std::string reason = ReasonAgainstDataPath(options.dataPath);
        if (!reason.empty()) {
            throw WrongUsage(reason);
        }
    } else if (CVirtualServerUtil::GetDataRootPath().empty()) { // as of "resource create"
        throw WrongUsage("--data-path is required: the product's settings name no data root");
    }
}

std::wstring ChosenMount(const LogCapture& log, const ProductCreateOptions& options, const std::wstring& group) {
    if (!options.mount.empty()) {
        return options.mount;
    }
    const VcsNames mounts = TopMountResources(log, group);
    if (mounts.size() == 1) {
        return mounts.front();
    }
    throw Failure(Errors::NotPossible,
                  "the group " + Quoted(group) +
                      (mounts.empty() ? " has no MountV resource for the product's to depend on"
                                      : " has " + std::to_string(mounts.size()) +
                                            " top-most MountV resources, and --mount has to name one of them: " +
                                            ListText(mounts)));
}

std::wstring UsualRegRep(const std::wstring& group) {
    return group + L"-RegRep";
}

std::wstring ChosenRegRep(const LogCapture& log, const ProductCreateOptions& options, const PlannedProduct& plan) {
    const std::wstring existing = FindRegistryReplication(log, plan.info.sGroupName).resource;
    std::wstring name = !options.regRep.empty() ? options.regRep
                        : !existing.empty()     ? existing
                                                : UsualRegRep(plan.info.sGroupName);
    // Setting up another program's resource again would turn it into the product's.
    if (name != existing && Contains(plan.before, name)) {
        if (Contains(ListHalfMadeReplications(log, plan.info.sGroupName), name)) {
            throw Failure(Errors::AlreadyExists, "the registry replication " + Quoted(name) +
                                                     " is half made: it has no keys, as a creation that was "
                                                     "interrupted leaves it")
                .Hint("'clusctl vcs product delete " + Printable(plan.info.sGroupName) +
                      (options.opens ? " --rw" : "") + "' deletes it; then give this command again.");
        }
        throw Failure(Errors::AlreadyExists,
                      "the resource " + Quoted(name) +
                          " exists already and does not replicate the product's key; --regrep gives another name");
    }
    return name;
}

Plan MakePlan(const LogCapture& log, const ProductCreateOptions& options) {
    Plan plan;
    static_cast<PlannedProduct&>(plan) = RequireVcsCreatable(log, options);
    plan.info.nDelayAfterOnline = options.delayOnline;
    plan.info.nDelayAfterOffline = options.delayOffline;
    plan.isAccountGiven = !options.accountUser.empty();
    if (plan.isAccountGiven) {
        plan.password = AsArgument(ReadPassword());
        EncryptForVcs(log, plan.password); // else the library would go on with an empty password
    }
    return plan;
}

// Without switching it on: there the library waits for the host service, with the configuration open.
void CreateSet(const LogCapture& log, const ProductCreateOptions& options, Plan& plan) {
    const Progress progress(log, DescribeProgress(log));
    CVeritasVirtualServerInfo info = plan.info;
    info.bGroupOnline = false;
    const OpenConfiguration open(log, options.opens);
    CVeritasCluster().CreateKOVAResources(info, options.quarantine, options.remoteConfig,
                                          plan.isAccountGiven ? options.accountGroup.c_str() : nullptr,
                                          plan.isAccountGiven ? options.accountUser.c_str() : nullptr,
                                          plan.isAccountGiven ? plan.password.Text() : nullptr);
    plan.password.Forget();
}

// As the library does it in a group that is online.
void SwitchSetOn(const LogCapture& log, const ProductCreateOptions& options, const CVeritasVirtualServerInfo& info) {
    if (!info.bGroupOnline) {
        return;
    }
    for (const std::wstring& name :
         CVeritasCluster::KOVAResourcesInSwitchOnOrder(info, options.quarantine, options.remoteConfig)) {
        {
            const Progress progress(log, DescribeProgress(log));
            CVeritasCluster().TurnOnOrOffResource(name.c_str(), info.sOnlineNode.c_str(), true);
        }
        if (name == info.sHostServiceResName) {
            AwaitService(log, HostService, static_cast<std::uint32_t>(options.delayOnline));
        }
    }
}

std::vector<std::wstring> Words(const std::wstring& command) {
    std::vector<std::wstring> words;
    for (size_t begin = 0; begin < command.size();) {
        const size_t end = std::min(command.find(L' ', begin), command.size());
        words.push_back(command.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

// Whether VCS refused a step only because its result was there before: a resource, or a dependency.
bool IsThereAlready(const LogCapture& log, const ToolProblem& problem, const VcsNames& before,
                    const std::string& what) {
    const std::vector<std::wstring> words = Words(common::ToUtf16(problem.command));
    if (problem.kind != ToolProblem::Kind::Message || words.size() < 4) {
        return false;
    }
    if (words[1] == L"-add") {
        return Contains(before, words[2]);
    }
    return words[1] == L"-link" && Contains(before, words[2]) && ShowsDependency(log, words[2], words[3], what);
}

struct Member {
    std::wstring name;
    std::wstring service; // none of the registry replication
    VcsNames children;    // what it depends on
};

std::vector<Member> MembersOf(const ProductCreateOptions& options, const CVeritasVirtualServerInfo& info) {
    const std::wstring& regRep = info.sRegRepResName;
    const std::wstring& host = info.sHostServiceResName;
    std::vector<Member> members = {{regRep, std::wstring(), {info.sMountResName}},
                                   {host, HostService, {info.sExchangeResName, regRep}},
                                   {info.sSAServiceResName, SAService, {regRep}}};
    if (options.quarantine) {
        members.push_back({info.sQAVMonitorResName, QAVMonitorService, {regRep}});
    }
    if (options.remoteConfig) {
        members.push_back({info.sRemoteConfigResName, RemoteConfigService, {host}});
    }
    return members;
}

std::string NotComplete(const ProductCreateOptions& options) {
    return "the product's resources of " + Quoted(options.group) + " are not set up completely";
}

// Asks again what has become of the set: the library reports success whatever the tools printed.
Json ResultOf(const LogCapture& log, const ProductCreateOptions& options, const Plan& plan, const ToolWatch& watch) {
    const std::string what = NotComplete(options);
    std::vector<ToolProblem> problems;
    for (const ToolProblem& problem : watch.Problems()) {
        if (!IsThereAlready(log, problem, plan.before, what)) {
            problems.push_back(problem);
        }
    }
    if (!problems.empty()) {
        throw ToolFailure(what, problems);
    }
    const std::vector<ToolRun> runs = watch.Runs();
    const VcsNames after = ListVcsResources(log, plan.info.sGroupName);
    Json records = Json::array();
    for (const Member& member : MembersOf(options, plan.info)) {
        if (!Contains(after, member.name)) {
            throw Failure(Errors::Refused, what + ": " + Quoted(member.name) + " is missing");
        }
        NameValuePairList given = GivenAttributes(runs, member.name);
        given.emplace_back(TypeAttribute, member.service.empty() ? RegRepType : GenericServiceType);
        RequireAttributes(log, member.name, given, what);
        VcsNames parents;
        VcsNames children;
        ReadDependencies(log, member.name, parents, children, what);
        for (const std::wstring& child : member.children) {
            if (!Contains(children, child)) {
                throw Failure(Errors::Refused,
                              what + ": " + Quoted(member.name) + " does not depend on " + Quoted(child));
            }
        }
        records.push_back(ProductRecord(member.name, member.service, Contains(plan.before, member.name)));
    }
    if (!Contains(ListRegistryReplications(log, plan.info.sGroupName), plan.info.sRegRepResName)) {
        throw Failure(Errors::Refused,
                      what + ": " + Quoted(plan.info.sRegRepResName) + " does not replicate the product's key");
    }
    return records;
}

// What has become of a resource. It is linked last of all; then it has all that it was given, unless a tool did
// nothing.
const char* WordOf(const LogCapture& log, const Member& member, const Plan& plan, const std::vector<ToolRun>& runs,
                   const std::string& what) {
    if (!Contains(ListVcsResources(log, plan.info.sGroupName), member.name)) {
        return "not created";
    }
    if (Contains(plan.before, member.name)) {
        return "existed already";
    }
    VcsNames parents;
    VcsNames children;
    ReadDependencies(log, member.name, parents, children, what);
    const bool isLinked = std::all_of(member.children.begin(), member.children.end(),
                                      [&](const std::wstring& child) { return Contains(children, child); });
    return isLinked && AttributesNotAsGiven(log, member.name, GivenAttributes(runs, member.name), what).empty()
               ? "created"
               : "half created";
}

// Of a set whose creation was interrupted or failed.
Json WhatThereIs(const LogCapture& log, const ProductCreateOptions& options, const Plan& plan, const ToolWatch& watch) {
    const std::vector<ToolRun> runs = watch.Runs();
    Json records = Json::array();
    for (const Member& member : MembersOf(options, plan.info)) {
        std::string result = "unknown";
        try {
            result = WordOf(log, member, plan, runs, NotComplete(options));
        } catch (const Failure&) {
            // VCS no longer answers.
        }
        records.push_back({{"name", member.name}, {"service", TextOrNull(member.service)}, {"result", result}});
    }
    return records;
}

// In a group that is online they were switched on.
void WarnOfWhatIsNotOn(const LogCapture& log, const ProductCreateOptions& options,
                       const CVeritasVirtualServerInfo& info, Report& report) {
    if (!info.bGroupOnline) {
        return;
    }
    const bool isAwaited = options.delayOnline > 0;
    const ServiceState host = isAwaited ? ServiceStateHere(HostService) : ServiceState();
    const bool isRunning = host.IsRunning();
    for (const Member& member : MembersOf(options, info)) {
        if (!member.service.empty()) {
            const bool isShownSoon = isRunning && member.service == HostService;
            WarnUnlessOnline(log, member.name, info.sOnlineNode, Deadline(isShownSoon ? SettleTime : 0), report);
        }
    }
    if (isAwaited && !isRunning) {
        report.AddWarning("the service " + Quoted(HostService) + " is " + host.Text());
    }
}

} // namespace

Json ProductRecord(const std::wstring& name, const std::wstring& service, bool existed) {
    return {{"name", name}, {"service", TextOrNull(service)}, {"result", existed ? "existed already" : "created"}};
}

PlannedProduct RequireVcsCreatable(const LogCapture& log, const ProductCreateOptions& options) {
    CheckOptions(options);
    PlannedProduct plan;
    plan.info = FindVcsServer(log, options.group);
    plan.before = ListVcsResources(log);
    plan.info.sMountResName = ChosenMount(log, options, plan.info.sGroupName);
    plan.info.sRegRepResName = ChosenRegRep(log, options, plan);
    plan.info.sDataPath = options.dataPath.empty() ? CVirtualServerUtil::GetDataRootPath() : options.dataPath;
    const std::string reason = ReasonAgainstDataPath(plan.info.sDataPath);
    if (!reason.empty()) {
        throw Failure(reason + "; it comes from the product's settings, and --data-path gives another one");
    }
    return plan;
}

ProductCreateOptions NeededOptions(const LogCapture& log, const std::wstring& group) {
    ProductCreateOptions options;
    options.group = group;
    options.opens = true;
    const VcsNames mounts = TopMountResources(log, group);
    if (mounts.size() > 1) {
        options.mount = mounts.front();
    }
    const VcsNames resources = ListVcsResources(log);
    if (Contains(resources, UsualRegRep(group)) && FindRegistryReplication(log, group).resource.empty() &&
        !Contains(ListHalfMadeReplications(log, group), UsualRegRep(group))) {
        const std::wstring other = group + L"-GateRegRep";
        options.regRep = other;
        for (int number = 2; Contains(resources, options.regRep); ++number) {
            options.regRep = other + std::to_wstring(number);
        }
    }
    if (!mounts.empty() && !ReasonAgainstDataPath(CVirtualServerUtil::GetDataRootPath()).empty()) {
        const Json folder = ReadVcsAttribute(mounts.front(), MountPathAttribute);
        std::wstring path = folder.is_string() ? common::ToUtf16(folder.get<std::string>()) : std::wstring();
        if (!path.empty()) {
            path += path.back() == L'\\' ? DataFolder : std::wstring(L"\\") + DataFolder;
            options.dataPath = ReasonAgainstDataPath(path).empty() ? path : std::wstring();
        }
    }
    return options;
}

Report CreateVcsProduct(const LogCapture& log, const ProductCreateOptions& options) {
    Plan plan = MakePlan(log, options);
    const ToolWatch watch(log);
    Report report;
    try {
        CreateSet(log, options, plan);
        SwitchSetOn(log, options, plan.info);
        report = OpenConfiguration::Tell(
            log, watch, options.opens, "the product's resources of " + Quoted(options.group) + " are set up", [&]() {
                Report told;
                told.AddTable("resources", ResultOf(log, options, plan, watch), ProductColumns, std::string());
                return told;
            });
        WarnOfWhatIsNotOn(log, options, plan.info, report);
    } catch (const Failure& failure) {
        // Only now: what the tools did last belongs to it.
        report = Report();
        report.AddTable("resources", WhatThereIs(log, options, plan, watch), ProductColumns, std::string());
        throw FailureWithReport(failure, report);
    }
    return report;
}
