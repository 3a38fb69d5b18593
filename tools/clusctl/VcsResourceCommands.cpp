#include "CommandLine.h"
#include "Password.h"
#include "Text.h"
#include "VcsCommands.h"
#include "VcsMode.h"
#include "VcsTools.h"
#include "VcsValues.h"

#include <clus_VeritasCluster.h>

#include <memory>

namespace {

const Columns ResourceTitles = {
    {"name", "Resource"},         {"type", "Type"}, {"group", "Group"}, {"dependsOn", "Depends on"},
    {"attributes", "Attributes"},
};

struct AddOptions {
    std::string name;
    std::string type;
    std::string group;
    std::string child;
    std::vector<std::string> attributes;
    bool opens = false;
};

struct Two {
    std::string first;
    std::string second;
    bool opens = false;
};

Report Add(const LogCapture& log, const AddOptions& options) {
    const CVeritasCluster cluster;
    const std::wstring name = ToUtf16(options.name);
    const std::string what = "cannot add the resource " + Quoted(options.name);
    const ToolWatch watch(log);
    {
        const OpenConfiguration open(options.opens);
        cluster.CreateResource(name.c_str(), ToUtf16(options.type).c_str(), ToUtf16(options.group).c_str(),
                               options.child.empty() ? nullptr : ToUtf16(options.child).c_str(),
                               Pairs(options.attributes));
    }
    watch.Require(true, what);
    // As VCS then holds it.
    Json record;
    record["name"] = options.name;
    record["type"] = ReadVcsAttribute(name, "Type");
    record["group"] = ReadVcsAttribute(name, "Group");
    VcsNames parents;
    VcsNames children;
    cluster.EnumResDependencies(name.c_str(), parents, children);
    record["dependsOn"] = NamesJson(children);
    record["attributes"] = Json::object();
    for (const auto& pair : Pairs(options.attributes)) {
        record["attributes"][ToUtf8(pair.first)] = ReadVcsAttribute(name, ToUtf8(pair.first));
    }
    watch.Require(!record["type"].is_null(), what);
    Report report;
    report.AddRecord("resource", record, ResourceTitles);
    return report;
}

Report Link(const LogCapture& log, const Two& names) {
    const ToolWatch watch(log);
    bool isDone = false;
    {
        const OpenConfiguration open(names.opens);
        isDone = CVeritasCluster().LinkResource(ToUtf16(names.first).c_str(), ToUtf16(names.second).c_str());
    }
    watch.Require(isDone, "cannot let " + Quoted(names.first) + " depend on " + Quoted(names.second));
    Report report;
    report.AddSentence("linked", {{"parent", names.first}, {"child", names.second}},
                       Quoted(names.first) + " depends on " + Quoted(names.second) + ".");
    return report;
}

Report Delete(const LogCapture& log, const std::string& name, bool opens) {
    const ToolWatch watch(log);
    {
        const OpenConfiguration open(opens);
        CVeritasCluster().DeleteResource(ToUtf16(name).c_str());
    }
    watch.Require(true, "cannot delete the resource " + Quoted(name));
    Report report;
    report.AddSentence("deleted", Json::array({name}), "Deleted " + Quoted(name) + ".");
    return report;
}

Report Switch(const LogCapture& log, const Two& names, bool isOnline) {
    const ToolWatch watch(log);
    const bool isDone =
        CVeritasCluster().TurnOnOrOffResource(ToUtf16(names.first).c_str(), ToUtf16(names.second).c_str(), isOnline);
    const std::string direction = isOnline ? "online" : "offline";
    watch.Require(isDone, "cannot switch " + Quoted(names.first) + " " + direction + " on " + Quoted(names.second));
    Report report;
    report.AddSentence("switched", {{"resource", names.first}, {"system", names.second}, {"online", isOnline}},
                       "VCS switches " + Quoted(names.first) + " " + direction + " on " + Quoted(names.second) +
                           "; the new state is not awaited.");
    return report;
}

Report Encrypt(const LogCapture& log) {
    std::wstring password = ReadPassword();
    std::wstring argument = AsArgument(password);
    std::wstring encrypted;
    const ToolWatch watch(log);
    const bool isDone = CVeritasCluster().EncryptVeritasPassword(argument.c_str(), encrypted);
    Forget(password);
    Forget(argument);
    const std::string what = "cannot encrypt the password";
    watch.Require(isDone, what);
    // What the tool printed is no part of the log, so its words are all there is to go by.
    if (encrypted.empty() || _wcsicmp(encrypted.c_str(), L"VCS") == 0) {
        throw Failure(what + (encrypted.empty() ? ": the tool printed nothing" : ": VCS answered with a message"));
    }
    Report report;
    report.AddSentence("encrypted", ToUtf8(encrypted), Printable(ToUtf8(encrypted)));
    return report;
}

Report Mode(const LogCapture& log, const std::string& mode) {
    const bool opens = mode == "rw";
    const ToolWatch watch(log);
    const CVeritasCluster cluster;
    const bool isDone = opens ? cluster.SwitchToReadWriteMode() : cluster.SwitchToReadOnlyMode();
    watch.Require(isDone, opens ? "cannot open the configuration" : "cannot write and close the configuration");
    const bool wasThere = watch.HasMessage(opens ? "10364" : "10369");
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
    CommandLine::AddText(command, "NAME", options->name, "NAME", "The new resource").required();
    CommandLine::AddText(command, "TYPE", options->type, "TYPE", "Its type, such as GenericService").required();
    CommandLine::AddText(command, "GROUP", options->group, "GROUP", "Its service group").required();
    CommandLine::AddText(command, "--child", options->child, "RESOURCE", "A resource that it depends on");
    CommandLine::AddPairs(command, "--set", options->attributes,
                          "An attribute, as VCS takes it, quotes included; may be given more than once");
    OpenConfiguration::AddOption(command, options->opens);
}

void AddLink(CommandLine& commandLine, CLI::App& family) {
    const auto names = std::make_shared<Two>();
    CLI::App& command = commandLine.AddTo(family, "link", "Let a resource depend on another one",
                                          [names](const LogCapture& log) { return Link(log, *names); });
    CommandLine::AddText(command, "PARENT", names->first, "PARENT", "The resource that depends").required();
    CommandLine::AddText(command, "CHILD", names->second, "CHILD", "The resource that it depends on").required();
    OpenConfiguration::AddOption(command, names->opens);
}

void AddDelete(CommandLine& commandLine, CLI::App& family) {
    const auto names = std::make_shared<Two>();
    CLI::App& command = commandLine.AddTo(family, "delete", "Delete a resource", [names](const LogCapture& log) {
        return Delete(log, names->first, names->opens);
    });
    CommandLine::AddText(command, "NAME", names->first, "NAME", "The resource").required();
    OpenConfiguration::AddOption(command, names->opens);
}

void AddSwitch(CommandLine& commandLine, CLI::App& family, bool isOnline) {
    const auto names = std::make_shared<Two>();
    CLI::App& command = commandLine.AddTo(
        family, isOnline ? "online" : "offline", isOnline ? "Bring a resource online" : "Take a resource offline",
        [names, isOnline](const LogCapture& log) { return Switch(log, *names, isOnline); });
    CommandLine::AddText(command, "NAME", names->first, "NAME", "The resource").required();
    CommandLine::AddText(command, "SYSTEM", names->second, "SYSTEM", "The system").required();
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

    const auto mode = std::make_shared<std::string>();
    CLI::App& command = commandLine.AddTo(family, "mode", "Open the configuration, or write it and close it",
                                          [mode](const LogCapture& log) { return Mode(log, *mode); });
    CommandLine::AddText(command, "MODE", *mode, "rw|ro", "rw: open for writing; ro: write to disk and make read-only")
        .required()
        ->check(CLI::IsMember({"rw", "ro"}).description(""));
}
