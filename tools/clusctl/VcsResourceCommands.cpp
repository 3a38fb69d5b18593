// "vcs resource ...", "vcs encrypt", "vcs mode": changing VCS resource by resource.
#include "CommandLine.h"
#include "Interruption.h"
#include "Password.h"
#include "Text.h"
#include "VcsCommands.h"
#include "VcsMode.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsTable.h"
#include "VcsTools.h"
#include "VcsValues.h"

#include "common/Text.h"
#include "core/VeritasNames.h"

#include <clus_VeritasCluster.h>

#include <map>
#include <memory>

using namespace clus::veritas;

namespace {

const Columns ResourceTitles = {
    {"name", "Resource"},         {"type", "Type"}, {"group", "Group"}, {"dependsOn", "Depends on"},
    {"attributes", "Attributes"},
};

struct AddOptions {
    std::wstring name;
    std::wstring type;
    std::wstring group;
    std::wstring child;
    NameValuePairList attributes;
    bool opens = false;
};

struct LinkOptions {
    std::wstring parent;
    std::wstring child;
    bool opens = false;
};

struct DeleteOptions {
    std::wstring name;
    bool isForced = false;
    bool opens = false;
};

struct SwitchOptions {
    std::wstring name;
    std::wstring system;
};

bool IsSet(const std::string& name, const Json& shown, const std::wstring& value) {
    const std::wstring text = shown.is_null() ? std::wstring() : common::ToUtf16(shown.get<std::string>());
    return ShowsGiven({std::wstring(), common::ToUtf16(name), std::wstring(), text}, value);
}

VcsNames ListOfType(const LogCapture& log, const std::wstring& type) {
    return ListVcsNames(log, &CVeritasCluster::EnumResourceNamesW, "resources", {{TypeAttribute, type}});
}

void RequireAsAsked(const AddOptions& options, const VcsNames& children, const Json& record, const std::string& what) {
    if (record.at("type") != common::ToUtf8(options.type) || record.at("group") != common::ToUtf8(options.group)) {
        throw Failure(Errors::Refused, what + ": VCS shows no such resource");
    }
    if (!options.child.empty() && !Contains(children, options.child)) {
        throw Failure(Errors::Refused, what + ": it does not depend on " + Quoted(options.child));
    }
    // The last value of a name counts.
    std::map<std::string, std::wstring> last;
    for (const auto& pair : options.attributes) {
        last[common::ToUtf8(pair.first)] = pair.second;
    }
    for (const auto& pair : last) {
        if (!IsSet(pair.first, record.at("attributes").at(pair.first), pair.second)) {
            throw Failure(Errors::Refused, what + ": VCS does not show the value given of " + Quoted(pair.first));
        }
    }
}

// Adding takes several steps, and none is undone: what can be asked beforehand is.
void RequireAddable(const LogCapture& log, const AddOptions& options, const std::string& what) {
    if (Contains(ListVcsResources(log), options.name)) {
        throw Failure(Errors::AlreadyExists, what + ": there is one of that name already");
    }
    RequireVcsGroup(log, options.group, what);
    if (!options.child.empty()) {
        RequireVcsResource(log, options.child, what);
    }
    // No tool shows a type, but each resource of the type shows its attributes.
    const VcsNames examples = ListOfType(log, options.type);
    if (examples.empty()) {
        return;
    }
    for (const auto& pair : options.attributes) {
        const ToolWatch watch(log);
        ReadVcsAttribute(examples.front(), pair.first);
        if (watch.IsRefused()) {
            throw Failure(Errors::NotFound, what + ": the type " + Quoted(options.type) + " has no attribute " +
                                                Quoted(pair.first) + ", as " + Quoted(examples.front()) + " shows");
        }
    }
}

// As VCS then holds it.
Json ReadAdded(const ToolWatch& watch, const AddOptions& options, const std::string& what) {
    watch.Require(true, what);
    Json attributes = Json::object();
    for (const auto& pair : options.attributes) {
        attributes[common::ToUtf8(pair.first)] = ReadVcsAttribute(options.name, pair.first);
    }
    VcsNames parents;
    VcsNames children;
    CVeritasCluster().EnumResDependencies(options.name.c_str(), parents, children);
    Json record = {{"name", options.name},
                   {"type", ReadVcsAttribute(options.name, TypeAttribute)},
                   {"group", ReadVcsAttribute(options.name, GroupAttribute)},
                   {"dependsOn", children},
                   {"attributes", attributes}};
    watch.Require(true, what);
    RequireAsAsked(options, children, record, what);
    return record;
}

// Whether it is there, as far as VCS tells.
bool IsThere(const LogCapture& log, const std::wstring& name) {
    try {
        return Contains(ListVcsResources(log), name);
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure&) {
        return false;
    }
}

// What was added, or why not, and what is there all the same.
Report TellAdded(const LogCapture& log, const ToolWatch& watch, const AddOptions& options, const std::string& what) {
    const bool isThere = IsThere(log, options.name);
    Report report;
    try {
        const std::string halfway = "the resource " + Quoted(options.name) + " is added, but not all of it is as asked";
        report.AddRecord("resource", ReadAdded(watch, options, isThere ? halfway : what), ResourceTitles);
    } catch (Failure& failure) {
        if (isThere) {
            failure.Hint("It stays: 'clusctl vcs resource delete " + Printable(options.name) +
                         (options.opens ? " --rw" : "") + "' removes it.");
        } else if (watch.IsRefused() && ListOfType(log, options.type).empty()) {
            failure.As(Errors::NotFound)
                .Hint("No resource has the type " + Quoted(options.type) + ": VCS may not know it.");
        }
        throw;
    }
    return report;
}

Report Add(const LogCapture& log, const AddOptions& options) {
    const std::string what = "cannot add the resource " + Quoted(options.name);
    RequireAddable(log, options, what);
    const ToolWatch watch(log);
    {
        const OpenConfiguration open(log, options.opens);
        CVeritasCluster().CreateResource(options.name.c_str(), options.type.c_str(), options.group.c_str(),
                                         options.child.empty() ? nullptr : options.child.c_str(), options.attributes);
    }
    return OpenConfiguration::Tell(log, watch, options.opens, "the resource " + Quoted(options.name) + " is added",
                                   [&]() { return TellAdded(log, watch, options, what); });
}

void RequireLinkable(const LogCapture& log, const LinkOptions& options, const std::string& what) {
    const VcsNames all = ListVcsResources(log);
    for (const std::wstring& name : {options.parent, options.child}) {
        if (!Contains(all, name)) {
            throw Failure(Errors::ResourceNotFound, what + ": there is no resource " + Quoted(name));
        }
    }
    const ToolWatch watch(log);
    VcsNames parents;
    VcsNames children;
    watch.Require(CVeritasCluster().EnumResDependencies(options.parent.c_str(), parents, children), what);
    if (Contains(children, options.child)) {
        throw Failure(Errors::AlreadyExists, what + ": it does already");
    }
}

Report Link(const LogCapture& log, const LinkOptions& options) {
    const std::string what = "cannot let " + Quoted(options.parent) + " depend on " + Quoted(options.child);
    const std::string done = Quoted(options.parent) + " depends on " + Quoted(options.child);
    RequireLinkable(log, options, what);
    const ToolWatch watch(log);
    bool isDone = false;
    {
        const OpenConfiguration open(log, options.opens);
        isDone = CVeritasCluster().LinkResource(options.parent.c_str(), options.child.c_str());
    }
    return OpenConfiguration::Tell(log, watch, options.opens, done, [&]() {
        watch.Require(isDone, what);
        if (!ShowsDependency(log, options.parent, options.child, what)) {
            throw Failure(Errors::Refused, what + ": VCS shows no such dependency");
        }
        Report report;
        report.AddSentence("linked", {{"parent", options.parent}, {"child", options.child}}, done + ".");
        return report;
    });
}

Report Delete(const LogCapture& log, const DeleteOptions& options) {
    const std::string what = "cannot delete the resource " + Quoted(options.name);
    if (!Contains(ListVcsResources(log), options.name)) {
        throw Failure(Errors::ResourceNotFound, what + ": there is none of that name");
    }
    const ToolWatch watch(log);
    VcsNames parents;
    VcsNames children;
    ReadDependencies(log, options.name, parents, children, what);
    if (!parents.empty() && !options.isForced) {
        throw Failure(Errors::NotPossible, what + ": " + ListText(parents) + " depends on it")
            .Hint("--force deletes it all the same, with the dependencies.");
    }
    {
        const OpenConfiguration open(log, options.opens);
        CVeritasCluster().DeleteResource(options.name.c_str());
    }
    return OpenConfiguration::Tell(log, watch, options.opens, Quoted(options.name) + " is deleted", [&]() {
        watch.Require(true, what);
        if (Contains(ListVcsResources(log), options.name)) {
            throw Failure(Errors::Refused, what + ": VCS shows it still");
        }
        Report report;
        report.AddSentence("deleted", Json::array({options.name}), "Deleted " + Quoted(options.name) + ".");
        return report;
    });
}

Report Switch(const LogCapture& log, const SwitchOptions& options, bool isOnline) {
    const ToolWatch watch(log);
    const bool isDone = CVeritasCluster().TurnOnOrOffResource(options.name.c_str(), options.system.c_str(), isOnline);
    const std::string direction = isOnline ? "online" : "offline";
    const std::string what =
        "cannot switch " + Quoted(options.name) + " " + direction + " on " + Quoted(options.system);
    if (watch.IsRefused()) {
        RequireVcsResource(log, options.name, what);
        RequireVcsSystem(log, options.system, what);
    }
    watch.Require(isDone, what);
    const std::wstring state = StateOn(ReadResourceStates(log, options.name), options.system);
    Report report;
    report.AddSentence(
        "switched",
        {{"resource", options.name}, {"system", options.system}, {"online", isOnline}, {"state", TextOrNull(state)}},
        "VCS switches " + Quoted(options.name) + " " + direction + " on " + Quoted(options.system) +
            "; the new state is not awaited. VCS shows " + ShownState(state) + ".");
    JudgeSwitched({options.name, options.system, isOnline}, state, what, report);
    return report;
}

Report Encrypt(const LogCapture& log) {
    const std::wstring encrypted = EncryptForVcs(log, AsArgument(ReadPassword()));
    Report report;
    report.AddSentence("encrypted", encrypted, Printable(encrypted));
    return report;
}

Report Mode(const LogCapture& log, const std::wstring& mode) {
    const bool opens = mode == L"rw";
    const ToolWatch watch(log);
    const bool wasThere = opens ? OpenConfiguration::IsWritable(log) : OpenConfiguration::IsReadOnly(log);
    const std::string what = opens ? "cannot open the configuration" : "cannot write and close the configuration";
    const std::vector<ToolProblem> problems = opens ? watch.Problems() : watch.ClosingProblems();
    if (!problems.empty()) {
        throw ToolFailure(what, problems);
    }
    if (!wasThere && !(opens ? OpenConfiguration::IsWritable(log) : OpenConfiguration::IsReadOnly(log))) {
        throw Failure(Errors::Refused, what + ": VCS does not show the new mode");
    }
    const std::string state = opens ? "open for writing" : "read-only";
    Report report;
    report.AddSentence("mode", {{"mode", mode}, {"changed", !wasThere}},
                       wasThere ? "The configuration was " + state + " already."
                       : opens  ? "The configuration is " + state + "."
                                : "The configuration is written to disk and " + state + ".");
    return report;
}

void AddAdd(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<AddOptions>();
    CLI::App& command = commandLine.AddTo(family, "add", "Add a resource to a group",
                                          [options](const LogCapture& log) { return Add(log, *options); });
    CommandLine::AddVcsName(command, "NAME", options->name, "NAME", "The new resource").required();
    CommandLine::AddVcsName(command, "TYPE", options->type, "TYPE", "Its type, such as GenericService").required();
    CommandLine::AddVcsName(command, "GROUP", options->group, "GROUP", "Its service group").required();
    CommandLine::AddVcsName(command, "--child", options->child, "RESOURCE", "A resource that the new one depends on");
    CommandLine::AddPairs(
        command, "--set", options->attributes,
        "An attribute; may be given more than once. The value goes onto the tool's command line as it stands: one with "
        "a blank needs quotes of its own, `--set \"ServiceName=\\\"File Share\\\"\"`");
    OpenConfiguration::AddOption(command, options->opens);
}

void AddLink(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<LinkOptions>();
    CLI::App& command = commandLine.AddTo(family, "link", "Let a resource depend on another one",
                                          [options](const LogCapture& log) { return Link(log, *options); });
    CommandLine::AddVcsName(command, "PARENT", options->parent, "PARENT", "The resource that depends").required();
    CommandLine::AddVcsName(command, "CHILD", options->child, "CHILD", "The resource that it depends on").required();
    OpenConfiguration::AddOption(command, options->opens);
}

void AddDelete(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<DeleteOptions>();
    CLI::App& command = commandLine.AddTo(family, "delete", "Delete a resource",
                                          [options](const LogCapture& log) { return Delete(log, *options); });
    CommandLine::AddVcsName(command, "NAME", options->name, "NAME", "The resource").required();
    command.add_flag("--force", options->isForced,
                     "Delete it although other resources depend on it; without it that is refused, and they are named");
    OpenConfiguration::AddOption(command, options->opens);
}

void AddSwitch(CommandLine& commandLine, CLI::App& family, bool isOnline) {
    const auto options = std::make_shared<SwitchOptions>();
    CLI::App& command = commandLine.AddTo(
        family, isOnline ? "online" : "offline", isOnline ? "Bring a resource online" : "Take a resource offline",
        [options, isOnline](const LogCapture& log) { return Switch(log, *options, isOnline); });
    CommandLine::AddVcsName(command, "NAME", options->name, "NAME", "The resource").required();
    CommandLine::AddVcsName(command, "SYSTEM", options->system, "SYSTEM", "The system").required();
}

} // namespace

void AddVcsResourceCommands(CommandLine& commandLine, CLI::App& family) {
    CLI::App& resource = CommandLine::AddFamilyTo(family, "resource", "Add, link, delete or switch a resource");
    AddAdd(commandLine, resource);
    AddLink(commandLine, resource);
    AddDelete(commandLine, resource);
    AddSwitch(commandLine, resource, true);
    AddSwitch(commandLine, resource, false);

    commandLine.AddTo(family, "encrypt", "Encrypt a password for VCS; it is read from standard input", Encrypt);

    const auto mode = std::make_shared<std::wstring>();
    CLI::App& command = commandLine.AddTo(family, "mode", "Open the configuration, or write it and close it",
                                          [mode](const LogCapture& log) { return Mode(log, *mode); });
    CommandLine::AddChoice(command, "MODE", *mode, {"rw", "ro"},
                           "`rw`: open for writing; `ro`: write to disk and make read-only")
        .required();
}
