#include "ProductResourceCommands.h"

#include "CommandLine.h"
#include "CreationChecks.h"
#include "Deadline.h"
#include "Deployment.h"
#include "Interruption.h"
#include "Progress.h"
#include "ServerChecks.h"
#include "Text.h"

#include "common/Text.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>

namespace {

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
    bool isExplained = false;
};

struct SwitchOptions {
    std::wstring server;
    bool wait = false;
    std::uint32_t timeout = 120;
};

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
    const bool isSingleCopy = mode == CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY;
    const std::wstring& path = isSingleCopy ? options.dataPath : dataRoot;
    if (!IsAbsolutePath(path)) {
        throw WrongUsage(std::string(isSingleCopy ? "--data-path" : "--data-root") +
                         " has to begin with a drive, as in \"F:\\Zyntra Gate\": " + Quoted(path));
    }
    CreationRequest request = {options.server, options.name, path, isSingleCopy, options.disk};
    if (!isSingleCopy) {
        CVirtualServerUtil::ConcatCCRDataPath(dataRoot.c_str(), options.server.c_str(), request.dataPath);
    }
    CCluster cluster;
    OpenLocalCluster(cluster);
    Report report;
    const std::vector<std::wstring> dependencies = RequireCreatable(cluster, request, report);
    Interruption::RequireNone();
    LibraryCall last;
    bool isCreated = false;
    {
        const LibraryCalls calls;
        isCreated =
            CVirtualServerUtil::CreateKOVAResource(dataRoot.c_str(), options.name.c_str(), options.dataPath.c_str(),
                                                   options.server.c_str(), options.disk.c_str(), mode);
        last = calls.Last();
    }
    if (!isCreated) {
        FailToCreate(cluster, request, last, dependencies);
    }
    RequireResource(cluster, options.name); // it is there
    const Json record = ReadResource(cluster, options.name, ResourceParts::Detail, report);
    WarnOfMissingParts(cluster, request, record, report);
    report.AddRecords("resources", Json::array({record}), ResourceTitles(), std::string());
    AddDeployment({KindOfCluster(mode), options.mode.empty() ? ReadDeployment().reason : ModeReason},
                  options.isExplained, report);
    const std::string missing = MissingParts(request, record, dependencies);
    if (!missing.empty()) {
        throw FailureWithReport(Failure(Errors::Refused, "the resource " + Quoted(options.name) +
                                                             " is there, and the cluster did not take " + missing)
                                    .Hint("'clusctl resource delete " + Printable(options.server) + "' deletes it."),
                                report);
    }
    return report;
}

std::wstring NameOf(const Json& record) {
    return common::ToUtf16(record["name"].get<std::string>());
}

// The first that is not as wanted; null when all are.
Json FindOther(const Json& records, const char* wanted) {
    for (const Json& record : records) {
        if (record["state"] != Json(wanted)) {
            return record;
        }
    }
    return Json();
}

bool IsPending(const Json& record) {
    return record["state"] == "online pending" || record["state"] == "offline pending" || record["state"] == "pending";
}

bool IsOneOnItsWay(const Json& records) {
    return std::any_of(records.begin(), records.end(), &IsPending);
}

// What switches, and with what it is waited for.
class ServerSwitch {
public:
    ServerSwitch(const LogCapture& log, const SwitchOptions& options, bool isOnline)
        : m_log(log), m_options(options), m_isOnline(isOnline), m_place() {
        OpenLocalCluster(m_cluster);
    }

    Report Do() {
        m_place = FindServer(m_cluster, m_options.server);
        RequirePossible();
        Interruption::RequireNone();
        bool isDone = Turn();
        Json records = Read();
        if (!isDone && WasRefused(records) && !Interruption::IsPending()) {
            const DWORD code = AskAgain(m_cluster, NameOf(FindOther(records, Wanted())),
                                        m_isOnline ? &OnlineClusterResource : &OfflineClusterResource);
            if (code != ERROR_SUCCESS) {
                throw Failure::OfCode(Sentence(records), code, Errors::Refused);
            }
            isDone = Turn();
            records = Read();
        }
        if (m_options.wait) {
            records = Await(std::move(records));
        }
        Report report;
        report.AddTable("resources", records, ResourceColumns,
                        "The group of " + Quoted(m_options.server) + " has no product resource: nothing was done.");
        if (IsOneOnItsWay(records) && Interruption::IsPending()) {
            throw FailureWithReport(
                Failure(Errors::Interrupted, "interrupted: " + StateSentence(records) + ", and goes on by itself"),
                report);
        }
        RequireSwitched(isDone, records);
        return report;
    }

private:
    void RequirePossible() {
        const Json records = Read();
        if (m_isOnline && !FindOther(records, Wanted()).is_null()) {
            RequireNodeStarts(m_cluster, m_place.owner);
        } else if (!records.empty()) {
            RequireNodeRuns(m_cluster, m_place.owner);
        }
    }

    bool Turn() {
        const auto turn = m_isOnline ? &CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode
                                     : &CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode;
        const LibraryCalls calls;
        const bool isDone = turn(m_options.server.c_str(), false, 0);
        m_refusal = calls.RefusedChange();
        return isDone;
    }

    // Not left to the library, whose wait cannot be interrupted.
    Json Await(Json records) {
        Names names;
        std::transform(records.begin(), records.end(), std::back_inserter(names), &NameOf);
        const Progress progress(m_log, names);
        for (const Deadline deadline(m_options.timeout);
             IsOneOnItsWay(records) && !deadline.IsOver() && !Interruption::IsPending();) {
            Interruption::AwaitPending();
            records = Read(names);
        }
        return records;
    }

    Json Read() {
        return Read(FindProductResources(m_cluster, m_options.server, m_place));
    }

    Json Read(const Names& names) {
        Report unread;
        Json records = ReadResources(m_cluster, names, unread);
        if (!unread.IsComplete()) {
            throw Failure(Errors::Incomplete, "cannot tell the state of the product's resource of " +
                                                  Quoted(m_options.server) + ": " + unread.Warnings().front());
        }
        return records;
    }

    const char* Wanted() const {
        return m_isOnline ? "online" : "offline";
    }

    // One that failed on its way is not started once more only to learn a code.
    bool WasRefused(const Json& records) const {
        const Json other = FindOther(records, Wanted());
        return !other.is_null() && !IsPending(other) && (!m_isOnline || other["state"] != "failed");
    }

    // The library's word is not enough: the states are.
    void RequireSwitched(bool isDone, const Json& records) const {
        const Json other = FindOther(records, Wanted());
        const bool isOnItsWay = !other.is_null() && IsPending(other);
        if (!other.is_null() && (!isDone || !isOnItsWay || m_options.wait)) {
            if (isOnItsWay || m_refusal == ERROR_SUCCESS) {
                throw Failure(isOnItsWay ? Errors::TimedOut : Errors::Failed, Sentence(records));
            }
            throw Failure::OfCode(Sentence(records), m_refusal, WasRefused(records) ? Errors::Refused : Errors::Failed);
        }
    }

    std::string Sentence(const Json& records) const {
        return "cannot bring the product's resource of " + Quoted(m_options.server) +
               (m_isOnline ? " online: " : " offline: ") + StateSentence(records) + " now";
    }

    const LogCapture& m_log;
    const SwitchOptions& m_options;
    const bool m_isOnline;
    CCluster m_cluster;
    ServerPlace m_place;
    DWORD m_refusal = ERROR_SUCCESS; // of the library's last try
};

// Of resources that are there after the library's deletion: asks the cluster once more, for its code. Throws Failure
// unless it deletes them now, which is a warning. `refusal` is what the library got.
void RequireDeleted(const CCluster& cluster, const std::wstring& server, const Names& left, DWORD refusal,
                    Report& report) {
    for (const std::wstring& name : left) {
        Report unread;
        const Json record = ReadResource(cluster, name, ResourceParts::Line, unread);
        const std::string sentence =
            "the product's resource of " + Quoted(server) + " is still there: " + StateSentence(Json::array({record}));
        if (IsPending(record)) {
            throw Failure(Errors::TimedOut, sentence + ", and did not go offline within three minutes");
        }
        if (Interruption::IsPending() && refusal == ERROR_SUCCESS) {
            throw Failure(Errors::Refused, sentence);
        }
        const DWORD code = Interruption::IsPending() ? refusal : AskAgain(cluster, name, &DeleteClusterResource);
        if (code != ERROR_SUCCESS) {
            throw Failure::OfCode(sentence, code, Errors::Refused);
        }
        report.AddWarning("the cluster deleted " + Quoted(name) + " only when it was asked again");
    }
}

Report Delete(const LogCapture& log, const std::wstring& server) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const ServerPlace place = FindServer(cluster, server);
    const Names before = FindProductResources(cluster, server, place);
    if (!before.empty()) {
        RequireOwnedHere(place, server);
        RequireNodeRuns(cluster, place.owner);
        RequireNoOtherDependants(cluster, before, "cannot delete the product's resource of " + Quoted(server));
    }
    Interruption::RequireNone();
    const LibraryCalls calls;
    {
        const Progress progress(log, before);
        CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(server.c_str());
    }
    const DWORD refusal = calls.RefusedChange();
    // Its result is no answer: it is also true when a resource did not go offline in time.
    Report report;
    const Names left = FindProductResources(cluster, server, place);
    RequireDeleted(cluster, server, left, refusal, report);
    if (!left.empty()) { // deleted only now, or so the cluster says
        const Names still = FindProductResources(cluster, server, place);
        if (!still.empty()) {
            throw Failure(Errors::Refused, "the cluster says that it deleted the product's resource of " +
                                               Quoted(server) + ", and " + Quoted(still.front()) + " is still there");
        }
    }
    std::string sentence = "The group of " + Quoted(server) + " has no product resource: nothing was done.";
    if (!before.empty()) {
        sentence = "Deleted";
        for (const std::wstring& name : before) {
            sentence += (name == before.front() ? " " : ", ") + Quoted(name);
        }
        sentence += ".";
    }
    report.AddSentence("deleted", before, sentence);
    return report;
}

void AddServer(CLI::App& command, std::wstring& server) {
    CommandLine::AddText(command, "VIRTUAL-SERVER", server, "VIRTUAL-SERVER", "The virtual server's network name")
        .required();
}

void AddSwitch(CommandLine& commandLine, CLI::App& family, bool isOnline) {
    const auto options = std::make_shared<SwitchOptions>();
    CLI::App& command = commandLine.AddTo(
        family, isOnline ? "online" : "offline",
        isOnline ? "Bring the product's resource online" : "Take the product's resource offline",
        [options, isOnline](const LogCapture& log) { return ServerSwitch(log, *options, isOnline).Do(); });
    AddServer(command, options->server);
    CLI::Option* wait = command.add_flag(
        "--wait", options->wait,
        isOnline ? "Wait until it is online; a time-out is a failure, and the resource goes on by itself"
                 : "Wait until it is offline; a time-out is a failure, and the resource goes on by itself");
    command
        .add_option("--timeout", options->timeout,
                    "How long to wait, in whole seconds from 1 to 4294967; 120 without it")
        ->type_name("SECONDS")
        ->check(CLI::Range(1U, 4294967U).description(""))
        ->needs(wait);
}

} // namespace

void AddProductResourceCommands(CommandLine& commandLine) {
    CLI::App& family = commandLine.AddFamily(headings::ProductResource, "resource",
                                             "Create, switch or delete the product's resource of a server");

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

    AddExplain(command, create->isExplained);

    AddSwitch(commandLine, family, true);
    AddSwitch(commandLine, family, false);

    const auto server = std::make_shared<std::wstring>();
    CLI::App& remove = commandLine.AddTo(family, "delete", "Delete the product's resource of a virtual server",
                                         [server](const LogCapture& log) { return Delete(log, *server); });
    AddServer(remove, *server);
}
