#include "ProductResourceCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "Progress.h"
#include "Text.h"

#include <clus_VirtualServerUtil.h>

#include <cstdint>
#include <memory>

namespace {

const char Heading[] = "The product's resource";

const Columns ResourceColumns = {
    {"name", "NAME"}, {"type", "TYPE"}, {"group", "GROUP"}, {"owner", "OWNER"}, {"state", "STATE"},
};

struct CreateOptions {
    std::wstring server;
    std::wstring name;
    std::wstring mode;
    std::wstring dataPath;
    std::wstring disk;
    std::wstring dataRoot;
};

struct SwitchOptions {
    std::wstring server;
    bool wait = false;
    std::uint32_t timeout = 120;
};

// What a progress line watches; nothing when there is nobody to watch it.
Names WatchedResources(const LogCapture& log, const std::wstring& server) {
    Names names;
    if (Progress::IsWanted(log)) {
        CVirtualServerUtil::FindKOVAResources(server.c_str(), names);
    }
    return names;
}

Json ReadResources(const CCluster& cluster, const Names& names, Report& report) {
    Json records = Json::array();
    for (const std::wstring& name : names) {
        records.push_back(ReadResource(cluster, name, ResourceParts::Line, report));
    }
    return records;
}

// "\"Zyntra Gate\" is online pending on NODE1"
std::string StateSentence(const Json& records) {
    std::string sentence;
    for (const Json& record : records) {
        sentence += (sentence.empty() ? "" : ", ") + Quoted(record["name"].get<std::string>()) + " is " +
                    record["state"].get<std::string>();
        if (record["owner"].is_string()) {
            sentence += " on " + Printable(record["owner"].get<std::string>());
        }
    }
    return sentence;
}

int QuorumMode(const CreateOptions& options) {
    if (options.mode.empty()) {
        const int mode = CVirtualServerUtil::GetClusterQuorumModeByRegKey();
        if (mode != CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY && mode != CVirtualServerUtil::CLUSTER_QUORUM_CCR) {
            throw WrongUsage("--mode is required: the product's settings name no known quorum mode");
        }
        return mode;
    }
    return options.mode == L"ccr" ? CVirtualServerUtil::CLUSTER_QUORUM_CCR
                                  : CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY;
}

void RequireOnly(const char* mode, const char* foreignOption, const std::wstring& value) {
    if (!value.empty()) {
        throw WrongUsage(std::string(foreignOption) + " has no meaning in the mode " + mode);
    }
}

Report Create(const CreateOptions& options) {
    const int mode = QuorumMode(options);
    std::wstring dataRoot;
    if (mode == CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY) {
        RequireOnly("single-copy", "--data-root", options.dataRoot);
        if (options.dataPath.empty()) {
            throw WrongUsage("--data-path is required in the mode single-copy");
        }
    } else {
        RequireOnly("ccr", "--data-path", options.dataPath);
        RequireOnly("ccr", "--disk", options.disk);
        dataRoot = options.dataRoot.empty() ? CVirtualServerUtil::GetDataRootPath() : options.dataRoot;
        if (dataRoot.empty()) {
            throw WrongUsage("--data-root is required: the product's settings name none");
        }
    }
    CCluster cluster;
    OpenLocalCluster(cluster);
    if (!CVirtualServerUtil::CreateKOVAResource(dataRoot.c_str(), options.name.c_str(), options.dataPath.c_str(),
                                                options.server.c_str(), options.disk.c_str(), mode)) {
        throw Failure("cannot create the resource " + Quoted(options.name) + " for " + Quoted(options.server));
    }
    Report report;
    const Json record = ReadResource(cluster, options.name, ResourceParts::Detail, report);
    report.AddRecords("resources", Json::array({record}), ResourceTitles(), std::string());
    return report;
}

Report Switch(const LogCapture& log, const SwitchOptions& options, bool isOnline) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const auto turn = isOnline ? &CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode
                               : &CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode;
    bool isDone = false;
    {
        const Progress progress(log, options.wait ? WatchedResources(log, options.server) : Names());
        // Whole seconds only: the library never gives up on any other time-out.
        isDone = turn(options.server.c_str(), options.wait, options.timeout * 1000);
    }
    Names names;
    const bool isListed = CVirtualServerUtil::FindKOVAResources(options.server.c_str(), names);
    Report report;
    const Json records = ReadResources(cluster, names, report);
    if (!isDone || !isListed) {
        const std::string states = StateSentence(records);
        throw Failure(std::string("cannot bring the product's resource of ") + Quoted(options.server) +
                      (isOnline ? " online" : " offline") + (states.empty() ? "" : ": " + states + " now"));
    }
    report.AddTable("resources", records, ResourceColumns,
                    "The group of " + Quoted(options.server) + " has no product resource: nothing was done.");
    return report;
}

Report Delete(const LogCapture& log, const std::wstring& server) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    Names before;
    CVirtualServerUtil::FindKOVAResources(server.c_str(), before);
    bool isDone = false;
    {
        const Progress progress(log, before);
        isDone = CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(server.c_str());
    }
    if (!isDone) {
        throw Failure("cannot delete the product's resource of " + Quoted(server));
    }
    // The library reports success also when a resource did not go offline in time, or belongs to another node.
    Names after;
    if (!CVirtualServerUtil::FindKOVAResources(server.c_str(), after)) {
        throw Failure("cannot tell whether the product's resource of " + Quoted(server) + " is gone");
    }
    if (!after.empty()) {
        Report unread;
        throw Failure("the product's resource of " + Quoted(server) +
                      " is still there: " + StateSentence(ReadResources(cluster, after, unread)) +
                      ". A node deletes only what it owns, and only what goes offline within three minutes");
    }
    std::string sentence = "The group of " + Quoted(server) + " has no product resource: nothing was done.";
    if (!before.empty()) {
        sentence = "Deleted";
        for (const std::wstring& name : before) {
            sentence += (name == before.front() ? " " : ", ") + Quoted(name);
        }
        sentence += ".";
    }
    Report report;
    report.AddSentence("deleted", before, sentence);
    return report;
}

void AddServer(CLI::App& command, std::wstring& server) {
    CommandLine::AddText(command, "VIRTUAL-SERVER", server, "VIRTUAL-SERVER", "The virtual server's network name")
        .required();
}

void AddSwitch(CommandLine& commandLine, CLI::App& family, bool isOnline) {
    const auto options = std::make_shared<SwitchOptions>();
    CLI::App& command =
        commandLine.AddTo(family, isOnline ? "online" : "offline",
                          isOnline ? "Bring the product's resource online" : "Take the product's resource offline",
                          [options, isOnline](const LogCapture& log) { return Switch(log, *options, isOnline); });
    AddServer(command, options->server);
    CLI::Option* wait = command.add_flag(
        "--wait", options->wait,
        isOnline ? "Wait until it is online; a time-out is a failure, and the resource goes on by itself"
                 : "Wait until it is offline; a time-out is a failure, and the resource goes on by itself");
    command
        .add_option("--timeout", options->timeout,
                    "How long to wait, in whole seconds from 1 to 4294967; 120 without it. Fractions are refused: the "
                    "library never ends its wait for such a time-out")
        ->type_name("SECONDS")
        ->check(CLI::Range(1U, 4294967U).description("")) // its milliseconds have to fit into 32 bits
        ->needs(wait);
}

} // namespace

void AddProductResourceCommands(CommandLine& commandLine) {
    CLI::App& family =
        commandLine.AddFamily(Heading, "resource", "Create, switch or delete the product's resource of a server");

    const auto create = std::make_shared<CreateOptions>();
    CLI::App& command =
        commandLine.AddTo(family, "create", "Create the product's resource of a virtual server, offline",
                          [create](const LogCapture&) { return Create(*create); });
    AddServer(command, create->server);
    CommandLine::AddText(command, "--name", create->name, "NAME", "The new resource's name").required();
    CommandLine::AddChoice(
        command, "--mode", create->mode, {"single-copy", "ccr"},
        "Single copy or continuous replication; the quorum mode of the product's settings without it");
    CommandLine::AddText(command, "--data-path", create->dataPath, "PATH",
                         "Where the product keeps its data; required for single-copy, meaningless for ccr");
    CommandLine::AddText(
        command, "--disk", create->disk, "RESOURCE",
        "The disk that the resource depends on, for single-copy; the System Attendant's disk without it");
    CommandLine::AddText(command, "--data-root", create->dataRoot, "PATH",
                         "For ccr, the folder above `CCRVSDB` and the virtual server's name, which make up the data "
                         "path; the data root of the product's settings without it");

    AddSwitch(commandLine, family, true);
    AddSwitch(commandLine, family, false);

    const auto server = std::make_shared<std::wstring>();
    CLI::App& remove = commandLine.AddTo(family, "delete", "Delete the product's resource of a virtual server",
                                         [server](const LogCapture& log) { return Delete(log, *server); });
    AddServer(remove, *server);
}
