// "vcs product ...": the product's resources on VCS: creating, listing and switching them.
#include "CommandLine.h"
#include "Password.h"
#include "Progress.h"
#include "Services.h"
#include "Text.h"
#include "ThisComputer.h"
#include "VcsAttributes.h"
#include "VcsCommands.h"
#include "VcsMode.h"
#include "VcsProduct.h"
#include "VcsProductDeletion.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsTools.h"

#include "core/VeritasNames.h"

#include <clus_VirtualServerUtil.h>

#include <cstdint>
#include <memory>

using namespace clus::veritas;

namespace {

const std::uint32_t UsualTimeout = 120; // seconds
const std::uint32_t LongestTimeout = 2147483;
const int NoWait = 0; // in the library, which would keep the configuration open meanwhile

struct WaitOptions {
    std::uint32_t timeout = 0;
    bool isTimeoutGiven = false;
    bool opens = false;
};

struct AddOptions {
    std::wstring networkName;
    std::wstring accountGroup;
    std::wstring accountUser;
    WaitOptions wait;
};

struct SwitchOptions {
    std::wstring group;
    std::wstring service;
    std::wstring node;
    WaitOptions wait;
};

// The library looks for the service on this computer only.
std::uint32_t TimeoutOf(const WaitOptions& wait, const std::wstring& system) {
    return wait.isTimeoutGiven ? wait.timeout : IsThisComputer(system) ? UsualTimeout : 0;
}

// One that is not installed here, or whose state cannot be read, is no time-out.
void RequireStarted(const LogCapture& log, const std::wstring& service, std::uint32_t timeout) {
    if (timeout == 0) {
        return;
    }
    const ServiceState state = AwaitService(log, service, timeout);
    if (state.code != 0) {
        throw Failure::OfCode("the resource was switched on, but the state of the service " + Quoted(service) +
                                  " cannot be read",
                              state.code, Errors::Incomplete);
    }
    if (!state.IsRunning()) {
        throw Failure(state.IsInstalled() ? Errors::TimedOut : Errors::NotFound,
                      "the resource was switched on, but the service " + Quoted(service) + " is " + state.word);
    }
}

// That a new resource is set up as the library told VCS to. Throws Failure, with `done` and how it is removed.
void RequireAsGiven(const LogCapture& log, const ToolWatch& watch, const std::wstring& name, const std::wstring& child,
                    const std::string& done, bool opens) {
    const std::string what = done + ", but is not set up completely";
    try {
        RequireAttributes(log, name, GivenAttributes(watch.Runs(), name), what);
        if (!ShowsDependency(log, name, child, what)) {
            throw Failure(Errors::Refused, what + ": " + Quoted(name) + " does not depend on " + Quoted(child));
        }
    } catch (Failure& failure) {
        failure.Hint("It stays: 'clusctl vcs resource delete " + Printable(name) + (opens ? " --rw" : "") +
                     "' removes it.");
        throw;
    }
}

// Runs one of the members that add a service's resource above `child` and switch it on, and asks what became of it.
Report AddService(const LogCapture& log, const CVeritasVirtualServerInfo& info, const wchar_t* service,
                  const std::wstring& child, const WaitOptions& wait, const std::function<bool()>& add) {
    const std::wstring& group = info.sGroupName;
    const bool existed = !ListResourcesOfService(log, group, service).empty();
    const std::string what = "cannot add the resource of the service " + Quoted(service) + " to " + Quoted(group);
    const ToolWatch watch(log);
    bool isAdded = false;
    {
        const Progress progress(log, DescribeProgress(log));
        const OpenConfiguration open(log, wait.opens);
        isAdded = add();
    }
    VcsNames names;
    const std::string done = "the resource of the service " + Quoted(service) + " is in " + Quoted(group);
    Report report = OpenConfiguration::Tell(log, watch, wait.opens, done, [&]() {
        watch.Require(isAdded, what);
        names = ListResourcesOfService(log, group, service);
        if (names.empty()) {
            throw Failure(Errors::Refused, what + ": VCS shows none");
        }
        if (!existed) {
            RequireAsGiven(log, watch, names.front(), child, done, wait.opens);
        }
        Report told;
        told.AddTable("resources", Json::array({ProductRecord(names.front(), service, existed)}), ProductColumns,
                      std::string());
        return told;
    });
    const std::uint32_t timeout = TimeoutOf(wait, info.sOnlineNode);
    RequireStarted(log, service, timeout);
    if (!info.sOnlineNode.empty()) { // else it was not switched on
        WarnUnlessOnline(log, names.front(), info.sOnlineNode, Deadline(timeout > 0 ? SettleTime : 0), report);
    }
    return report;
}

Report AddQuarantine(const LogCapture& log, const AddOptions& options) {
    const CVeritasVirtualServerInfo info = FindVcsServerByName(log, options.networkName);
    const std::wstring& group = info.sGroupName;
    const std::wstring regRep = FindRegistryReplication(log, group).resource;
    if (regRep.empty()) {
        throw Failure(Errors::NotPossible, "the group " + Quoted(group) +
                                               " has no RegRep resource of the product to depend on: " +
                                               "'clusctl vcs product create' makes it");
    }
    return AddService(log, info, QAVMonitorService, regRep, options.wait, [&options]() {
        return CVeritasCluster().CreateQAVResourceAndTurnItOn(options.networkName.c_str(), NoWait);
    });
}

Report AddRemoteConfig(const LogCapture& log, const AddOptions& options) {
    const CVeritasVirtualServerInfo info = FindVcsServerByName(log, options.networkName);
    const VcsNames hosts = ListResourcesOfService(log, info.sGroupName, HostService);
    if (hosts.empty()) {
        throw Failure(Errors::NotPossible, "the group " + Quoted(info.sGroupName) +
                                               " has no resource of the host service to depend on: " +
                                               "'clusctl vcs product create' makes it");
    }
    Password password = AsArgument(ReadPassword());
    EncryptForVcs(log, password); // else the library would go on with an empty password
    return AddService(log, info, RemoteConfigService, hosts.front(), options.wait, [&options, &password]() {
        const bool isAdded = CVeritasCluster().CreateRemoteConfigResourceAndTurnItOn(
            options.networkName.c_str(), options.accountGroup.c_str(), options.accountUser.c_str(), password.Text(),
            NoWait);
        password.Forget();
        return isAdded;
    });
}

Report List(const LogCapture& log, const std::wstring& group) {
    const CVeritasCluster cluster;
    VcsNames names;
    const ToolWatch watch(log);
    const bool isListed =
        group.empty() ? cluster.CollectKOVAResNames(names) : cluster.CollectKOVAResNames(group.c_str(), names);
    const std::string what = "cannot list the product's resources";
    watch.Require(isListed, what);
    watch.RequireNames(names, what);
    if (names.empty() && !group.empty()) {
        RequireVcsGroup(log, group, what);
    }
    Report report;
    if (CVirtualServerUtil::GetDataRootPath().empty()) {
        report.MarkIncomplete("the product's settings name no data root: which RegRep resources are the product's is "
                              "not known");
    }
    report.AddTable("resources", NameRecords(names), {{"name", "RESOURCE"}}, "There are none.");
    return report;
}

// The resource that the library switches.
std::wstring ResourceToSwitch(const LogCapture& log, const SwitchOptions& options, const std::string& what) {
    const VcsNames names = ListResourcesOfService(log, options.group, options.service);
    if (!names.empty()) {
        return names.front();
    }
    if (!Contains(ListVcsGroups(log), options.group)) {
        throw Failure(Errors::GroupNotFound, what + ": there is no group " + Quoted(options.group));
    }
    throw Failure(Errors::ResourceNotFound, what + ": the group has no resource for it");
}

// With the state that VCS shows by then.
Report SwitchReport(const SwitchOptions& options, const std::wstring& resource, bool isOnline,
                    const std::wstring& state, const std::string& sentence) {
    Report report;
    report.AddSentence("switched",
                       {{"group", options.group},
                        {"service", options.service},
                        {"system", options.node},
                        {"resource", resource},
                        {"online", isOnline},
                        {"state", TextOrNull(state)}},
                       sentence + " VCS shows " + ShownState(state) + ".");
    return report;
}

// That VCS took the switch; of a system that there is not that is said.
void RequireTold(const LogCapture& log, const ToolWatch& watch, bool isDone, const std::wstring& system,
                 const std::string& what) {
    const std::vector<ToolProblem> problems = watch.Problems();
    if (watch.IsRefused()) {
        RequireVcsSystem(log, system, what);
        throw ToolFailure(what, problems);
    }
    watch.Require(isDone, what);
}

Report SwitchOn(const LogCapture& log, const SwitchOptions& options) {
    const std::string what =
        "cannot switch the service " + Quoted(options.service) + " of " + Quoted(options.group) + " on";
    const std::wstring resource = ResourceToSwitch(log, options, what);
    const ToolWatch watch(log);
    bool isThere = false;
    {
        const Progress progress(log, DescribeProgress(log));
        isThere = CVeritasCluster().CheckIfGenericServiceResourceExistsAndTurnItOn(
            options.group.c_str(), options.service.c_str(), options.node.c_str(), NoWait);
    }
    RequireTold(log, watch, isThere, options.node, what);
    const std::uint32_t timeout = TimeoutOf(options.wait, options.node);
    RequireStarted(log, options.service, timeout);
    const std::wstring state = AwaitOnline(log, resource, options.node, Deadline(timeout > 0 ? SettleTime : 0));
    Report report = SwitchReport(options, resource, true, state,
                                 "VCS switches " + Quoted(options.service) + " of " + Quoted(options.group) +
                                     " on at " + Quoted(options.node) +
                                     (timeout > 0 ? "; the service is running." : "; it was not waited for."));
    JudgeSwitched({resource, options.node, true}, state, what, report);
    return report;
}

Report SwitchOff(const LogCapture& log, const SwitchOptions& options) {
    const std::string what =
        "cannot switch the service " + Quoted(options.service) + " of " + Quoted(options.group) + " off";
    const std::wstring resource = ResourceToSwitch(log, options, what);
    const std::uint32_t timeout = options.wait.isTimeoutGiven ? options.wait.timeout : UsualTimeout;
    const ToolWatch watch(log);
    {
        const Progress progress(log, DescribeProgress(log));
        const bool isDone = CVeritasCluster().TurnOnOrOffResource(resource.c_str(), options.node.c_str(), false);
        RequireTold(log, watch, isDone, options.node, what);
        if (timeout > 0 && !AwaitOffline(log, resource, options.node, Deadline(timeout))) {
            throw Failure(Errors::TimedOut, what + ": " + Quoted(resource) + " is still online on " +
                                                Quoted(options.node) + " after " + std::to_string(timeout) + " s");
        }
    }
    const std::wstring state = StateOn(ReadResourceStates(log, resource), options.node);
    const std::string subject = Quoted(options.service) + " of " + Quoted(options.group);
    Report report = SwitchReport(options, resource, false, state,
                                 timeout > 0 ? subject + " is off at " + Quoted(options.node) + "."
                                             : "VCS switches " + subject + " off at " + Quoted(options.node) +
                                                   "; it was not waited for.");
    JudgeSwitched({resource, options.node, false}, state, what, report);
    return report;
}

void AddTimeout(CLI::App& command, WaitOptions& wait,
                const char* description =
                    "How long to wait for the service on this computer, in whole seconds, 0 not at all. "
                    "Without it 120, and 0 when the service is switched on at another system. A service that "
                    "does not start in time is a failure; once it runs VCS is given ten seconds more to show the "
                    "resource online, else a warning says what it shows") {
    command
        .add_option_function<std::uint32_t>(
            "--timeout",
            [&wait](const std::uint32_t& seconds) {
                wait.timeout = seconds;
                wait.isTimeoutGiven = true;
            },
            description)
        ->type_name("SECONDS")
        ->check(CLI::Range(0U, LongestTimeout).description(""));
}

void AddCreate(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<ProductCreateOptions>();
    CLI::App& command =
        commandLine.AddTo(family, "create", "Create the product's resources of a group, and switch them on",
                          [options](const LogCapture& log) { return CreateVcsProduct(log, *options); });
    CommandLine::AddVcsName(command, "GROUP", options->group, "GROUP", "The virtual server's service group").required();
    CommandLine::AddVcsName(command, "--mount", options->mount, "RESOURCE",
                            "The MountV resource below the RegRep resource; without it the top-most one. It has to be "
                            "given when there are several of those");
    CommandLine::AddVcsName(command, "--regrep", options->regRep, "NAME",
                            "The RegRep resource; without it the one that replicates the product's key already, or "
                            "else the group's name with `-RegRep`");
    CommandLine::AddText(
        command, "--data-path", options->dataPath, "PATH",
        "A path on the shared disk; its folder, which must not hold a blank and must not be longer than 255 "
        "characters, gives the replication directory. The data root of the product's settings without it");
    command.add_flag("--quarantine", options->quarantine, "With the quarantine monitor");
    command.add_flag("--remote-config", options->remoteConfig, "With the remote configuration service");
    CommandLine::AddText(command, "--account-group", options->accountGroup, "DOMAIN", "The domain of the account");
    CommandLine::AddText(command, "--account-user", options->accountUser, "USER",
                         "The account that the remote configuration service runs as; LocalSystem without it. Both go "
                         "together, and the password is asked for; see [secrets](#secrets)");
    command
        .add_option(
            "--delay-online", options->delayOnline,
            "The resources' delay after online in seconds, and how long the host service is waited for; 600 without it")
        ->type_name("SECONDS")
        ->check(CLI::Range(0, static_cast<int>(LongestTimeout)).description(""));
    command
        .add_option("--delay-offline", options->delayOffline,
                    "The resources' delay after offline in seconds; 600 without it")
        ->type_name("SECONDS")
        ->check(CLI::Range(0, static_cast<int>(LongestTimeout)).description(""));
    OpenConfiguration::AddOption(command, options->opens);
}

void AddAdding(CommandLine& commandLine, CLI::App& family) {
    const auto quarantine = std::make_shared<AddOptions>();
    CLI::App& monitor =
        commandLine.AddTo(family, "add-quarantine", "Add the quarantine monitor, and switch it on",
                          [quarantine](const LogCapture& log) { return AddQuarantine(log, *quarantine); });
    CommandLine::AddText(monitor, "NETWORK-NAME", quarantine->networkName, "NETWORK-NAME",
                         "The virtual server's network name")
        .required();
    AddTimeout(monitor, quarantine->wait);
    OpenConfiguration::AddOption(monitor, quarantine->wait.opens);

    const auto remote = std::make_shared<AddOptions>();
    CLI::App& service = commandLine.AddTo(family, "add-remote-config", "Add the remote configuration, switch it on",
                                          [remote](const LogCapture& log) { return AddRemoteConfig(log, *remote); });
    CommandLine::AddText(service, "NETWORK-NAME", remote->networkName, "NETWORK-NAME",
                         "The virtual server's network name")
        .required();
    CommandLine::AddText(service, "--account-group", remote->accountGroup, "DOMAIN",
                         "The domain of the account that the service runs as")
        .required();
    CommandLine::AddText(service, "--account-user", remote->accountUser, "USER",
                         "Its name. The password is asked for; see [secrets](#secrets)")
        .required();
    AddTimeout(service, remote->wait);
    OpenConfiguration::AddOption(service, remote->wait.opens);
}

void AddDelete(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<ProductDeleteOptions>();
    CLI::App& command = commandLine.AddTo(family, "delete", "Delete the product's resources of a group",
                                          [options](const LogCapture& log) { return DeleteVcsProduct(log, *options); });
    CommandLine::AddVcsName(command, "GROUP", options->group, "GROUP", "The service group").required();
    command
        .add_option("--timeout", options->timeout,
                    "How long all of them together may take to go offline, in whole seconds; 120 without it. What is "
                    "still online then is a time-out, and nothing is deleted")
        ->type_name("SECONDS")
        ->check(CLI::Range(1U, LongestTimeout).description(""));
    OpenConfiguration::AddOption(command, options->opens);
}

void AddSwitch(CommandLine& commandLine, CLI::App& family, bool isOnline) {
    const auto options = std::make_shared<SwitchOptions>();
    CLI::App& command = commandLine.AddTo(family, isOnline ? "switch-on" : "switch-off",
                                          isOnline ? "Switch the resource of a group's service on"
                                                   : "Switch the resource of a group's service off",
                                          [options, isOnline](const LogCapture& log) {
                                              return isOnline ? SwitchOn(log, *options) : SwitchOff(log, *options);
                                          });
    CommandLine::AddVcsName(command, "GROUP", options->group, "GROUP", "The service group").required();
    CommandLine::AddText(command, "SERVICE", options->service, "SERVICE", "The Windows service").required();
    CommandLine::AddVcsName(command, "NODE", options->node, "NODE", "The system").required();
    if (isOnline) {
        AddTimeout(command, options->wait);
    } else {
        AddTimeout(command, options->wait,
                   "How long to ask, in whole seconds, 0 not at all; 120 without it. What is still online then is a "
                   "time-out; VCS goes on by itself");
    }
}

} // namespace

void AddVcsProductCommands(CommandLine& commandLine, CLI::App& family) {
    CLI::App& product =
        CommandLine::AddFamilyTo(family, "product", "Create, list, switch and delete the product's resources");
    AddCreate(commandLine, product);
    AddDelete(commandLine, product);
    AddAdding(commandLine, product);

    const auto group = std::make_shared<std::wstring>();
    CLI::App& list = commandLine.AddTo(product, "list", "List the product's resources of all groups, or of one",
                                       [group](const LogCapture& log) { return List(log, *group); });
    CommandLine::AddVcsName(list, "GROUP", *group, "GROUP", "The service group");

    AddSwitch(commandLine, product, true);
    AddSwitch(commandLine, product, false);
}
