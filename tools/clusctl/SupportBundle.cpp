#include "SupportBundle.h"

#include "BundleFiles.h"
#include "BundleNames.h"
#include "BundleParts.h"
#include "ClusterInUse.h"
#include "ClusterModel.h"
#include "Deployment.h"
#include "Doctor.h"
#include "EventLog.h"
#include "FileVersion.h"
#include "LastLines.h"
#include "LoadedLibraries.h"
#include "ModelSettings.h"
#include "PictureJson.h"
#include "ReportPage.h"
#include "SnapshotCommand.h"
#include "Text.h"
#include "ThisComputer.h"
#include "VcsModel.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/UtcTime.h"

#include <clus_VirtualServerUtil.h>

#include <iterator>
#include <utility>

namespace {

const size_t MostLogLines = 2000; // of each log
const size_t MostEvents = 200;    // of each event log
const char StatesSuffix[] = ".state.json";
const wchar_t* const EventLogs[] = {L"System", L"Application"};
const wchar_t* const EventSources[] = {L"ClusSvc",      L"Microsoft-Windows-FailoverClustering",
                                       L"ClusDisk",     L"ClusNet",
                                       L"Had",          L"Llt",
                                       L"Gab",          L"Service Control Manager",
                                       L"MSExchangeSA", L"MSExchangeIS",
                                       L"clusutil"};

// A log of this computer that a cluster writes.
struct ClusterLog {
    const char* name;
    const char* what;
    Answering cluster;
    std::wstring path; // empty: nothing says where it is
};

std::wstring InFolder(const wchar_t* variable, const wchar_t* path) {
    const std::wstring folder = common::EnvironmentVariable(variable);
    return folder.empty() ? folder : folder + path;
}

std::vector<ClusterLog> ClusterLogs() {
    const std::wstring named = common::EnvironmentVariable(L"ClusterLog");
    return {{"cluster-log.txt", "the last lines of the cluster service's log", Answering::FailoverCluster,
             named.empty() ? InFolder(L"SystemRoot", L"\\Cluster\\cluster.log") : named},
            {"cluster-report.txt", "the last lines of the cluster's log as it was generated last",
             Answering::FailoverCluster, InFolder(L"SystemRoot", L"\\Cluster\\Reports\\Cluster.log")},
            {"engine-log.txt", "the last lines of the VCS engine's log", Answering::Vcs,
             InFolder(L"VCS_HOME", L"\\log\\engine_A.txt")}};
}

class Maker {
public:
    Maker(const LogCapture& log, const BundleRequest& request)
        : m_log(log), m_request(request), m_simulation(ClusterInUse()) {
    }

    SupportBundle Make() {
        AddVersions();
        m_parts.Try("settings", [this]() { AddSettings(); });
        m_parts.Try("status", [this]() { ReadWholeStatus(); });
        m_parts.Try("cluster", [this]() { AddModel(); });
        m_parts.Try("doctor", [this]() { AddDoctor(); });
        AddLogs();
        AddEvents();
        if (m_request.anonymises) {
            Rename();
        }
        AddStatus();
        return Packed();
    }

private:
    bool IsSimulated() const {
        return m_simulation.HasAnswered(m_log.Tools().Count() != 0);
    }
    bool IsInNone() const {
        return m_hasStatus && m_status.cluster.kind == picture::Kind::None;
    }

    void AddVersions() {
        Json libraries = Json::array();
        for (const LoadedLibrary& library : LoadedLibraries()) {
            libraries.push_back({{"name", library.name}, {"file", library.path}, {"version", library.version}});
        }
        m_parts.Add(BundleFiles::Versions, "versions of clusctl, of the libraries and of the system",
                    {{"clusctl", CLUSCTL_VERSION},
                     {"computer", ComputerName()},
                     {"system", FileVersion(InFolder(L"SystemRoot", L"\\system32\\kernel32.dll"))},
                     {"libraries", libraries}});
    }

    void AddSettings() {
        const Deployment deployment = ReadDeployment();
        m_parts.Add(BundleFiles::Settings, "the product's registry values that the library reads",
                    {{"key", ProductKey()},
                     {"access", ProductKeyAccess()},
                     {"deployment", {{"kind", deployment.kind}, {"reason", deployment.reason}}},
                     {"values", ReadProductSettings()},
                     {"types", ReadProductSettingTypes()},
                     {"odd", ReadOddSettings()}});
    }

    void ReadWholeStatus() {
        Report unread;
        m_status = ReadStatus(m_log, unread);
        m_hasStatus = true;
        m_isWhole = unread.IsComplete();
        m_warnings = unread.Warnings();
        m_parts.TellUnread("status", m_warnings);
        m_names.Learn(m_status.cluster);
    }

    void AddModel() {
        if (IsInNone()) {
            m_parts.TellMissing("cluster", "this computer is in none");
        } else if (ClusterInUse() == Answering::Vcs) {
            AddVcsModel();
        } else {
            AddFailoverModel();
        }
    }

    void AddFailoverModel() {
        Report unread;
        Json model = ReadClusterModel(m_log, unread);
        m_names.LearnModel(model);
        const std::vector<std::string> masked = MaskSecrets(model);
        m_parts.Add(BundleFiles::Model, "the cluster as a model of the cluster simulator", std::move(model));
        for (const std::string& what : masked) {
            m_parts.TellMasked(what, "the names of these private properties say password, secret, key or token");
        }
        m_parts.TellUnread("cluster", unread.Warnings());
    }

    void AddVcsModel() {
        const VcsModel model = ReadVcsModel(m_log, VcsModelSource());
        for (const NewFolderFile& file : model.files) {
            const std::string name = common::ToUtf8(file.name);
            m_parts.AddText(name, "the cluster as a model of the VCS simulator", file.bytes);
            if (name == BundleFiles::MainCf) {
                m_names.LearnMainCf(file.bytes);
                if (model.masked != 0) {
                    m_parts.TellMasked("passwords: " + std::to_string(model.masked),
                                       "the library takes the values of these attributes for secrets");
                }
            }
        }
        for (const std::string& warning : model.warnings) {
            m_parts.TellMissing("the cluster's own main.cf", warning);
        }
        m_parts.TellUnread("cluster", model.doubts);
    }

    void AddDoctor() {
        m_findings = Diagnose(m_log, {std::wstring(), m_request.allowsWritableTools});
        m_hasFindings = true;
        m_parts.Add(BundleFiles::Doctor, "what the doctor found",
                    {{"findings", m_findings.Records()}, {"worst", LevelWord(m_findings.Worst())}});
    }

    void AddLog(const char* name, const char* what, const std::wstring& path) {
        const std::string lines = LastLines(path, MostLogLines);
        m_parts.AddText(name, what, lines);
        m_logs += lines + "\n";
        m_parts.TellMasked("secrets on command lines of VCS tools", "what is one is told by the library's own rule");
    }

    void AddLogs() {
        if (DebugLogPath().empty()) {
            m_parts.TellMissing("debug log", "it goes to no file: CLUSUTIL_LOG_FILE or --log names one");
        } else {
            m_parts.Try("debug log", [this]() {
                AddLog("debug-log.txt", "the last lines of the library's debug log", DebugLogPath());
            });
        }
        std::string problems;
        for (const std::string& problem : m_log.Problems()) {
            problems.append(problem).append("\n");
        }
        if (!problems.empty()) {
            m_parts.AddText("library-problems.txt",
                            "what the library logged as errors and warnings while this was read", problems);
        }
        if (IsSimulated()) {
            m_parts.TellMissing("cluster logs", "the cluster is simulated: this computer's logs are not about it");
            return;
        }
        for (const ClusterLog& log : ClusterLogs()) {
            if (!log.path.empty() && common::FileExists(log.path)) {
                m_parts.Try(log.name, [&]() { AddLog(log.name, log.what, log.path); });
            } else if (log.cluster == ClusterInUse() && !IsInNone()) {
                m_parts.TellMissing(log.name, log.path.empty() ? "nothing says where it is"
                                                               : "there is no file " + QuotedPath(log.path));
            }
        }
    }

    void AddEvents() {
        if (IsSimulated()) {
            m_parts.TellMissing("events", "the cluster is simulated: this computer's events are not about it");
            return;
        }
        EventQuery query = {nullptr, {std::begin(EventSources), std::end(EventSources)}, MostEvents};
        Json logs = Json::array();
        for (const wchar_t* const name : EventLogs) {
            Json events = Json::array();
            query.log = name;
            const unsigned long code = ReadEvents(query, events);
            if (code != ERROR_SUCCESS) {
                m_parts.TellUnread("events", {"the log " + common::ToUtf8(name) + ": " + ErrorText(code)});
            }
            LearnTexts(events);
            logs.push_back({{"log", name}, {"events", std::move(events)}});
        }
        m_parts.Add("events.json", "the latest events of the cluster's services, of Exchange and of the product",
                    {{"sources", query.sources}, {"most", MostEvents}, {"logs", std::move(logs)}});
    }

    // Of events, what the log shows beside the texts is the system's.
    void LearnTexts(const Json& events) {
        for (const Json& event : events) {
            for (const Json& text : event.value("texts", Json::array())) {
                m_logs += text.is_string() ? text.get<std::string>() + "\n" : std::string();
            }
        }
    }

    // All that was read so far. The status, which the page is made of, too, is made of what was renamed.
    void Rename() {
        m_names.LearnLog(m_logs);
        for (const BundlePart& part : m_parts.All()) {
            if (part.name == BundleFiles::Settings) {
                m_names.LearnTexts(part.document);
            }
        }
        for (const std::string& name : m_names.Kept()) {
            m_parts.TellMissing("another name for " + Quoted(name), "its only word is in everybody's names, too");
        }
        for (BundlePart& part : m_parts.All()) {
            if (!part.document.is_null()) {
                m_names.Rename(part.document);
            } else if (part.name == std::string(BundleFiles::MainCf) + StatesSuffix) {
                Json states = common::ParseJson(part.text);
                Json settings = states.value("settings", Json());
                states.erase("settings"); // whose names are those of the registry
                m_names.RenameKeys(states);
                if (!settings.is_null()) {
                    m_names.Rename(settings);
                    states["settings"] = std::move(settings);
                }
                part.text = common::DumpJson(states);
            } else {
                part.text = m_names.Renamed(part.text);
            }
            m_names.Rename(part.masked);
            part.masked.push_back({{"what", "names and addresses"}, {"why", "--anonymise replaces them by others"}});
        }
        m_names.Rename(m_parts.Missing());
        m_names.Rename(m_status.cluster);
        m_status.health = HealthOf(m_status.cluster, m_isWhole);
    }

    void AddStatus() {
        if (!m_hasStatus) {
            return;
        }
        Json document = StatusJson(m_status);
        std::vector<const picture::Resource*> resources;
        for (const picture::Resource& resource : m_status.cluster.resources) {
            resources.push_back(&resource);
        }
        document["resources"] = ResourceRecords(m_status.cluster, resources);
        m_parts.Add("status.json", "how the cluster is: nodes, servers, groups and resources with their states",
                    std::move(document));
        TellRenamed();
        if (m_hasFindings) {
            picture::PageContent page =
                ReportPage(m_status, m_findings, m_warnings, IsSimulated() ? &m_simulation : nullptr);
            if (m_request.anonymises) {
                m_names.Rename(page);
            }
            m_parts.AddText("report.html", "status, findings and pictures as a page for a browser", HtmlPage(page));
            TellRenamed();
        }
    }

    void TellRenamed() {
        if (m_request.anonymises) {
            m_parts.TellMasked("names and addresses", "--anonymise replaces them by others");
        }
    }

    SupportBundle Packed() {
        SupportBundle bundle;
        const bool isVcs = ClusterInUse() == Answering::Vcs;
        bundle.manifest = {{"format", BundleFiles::Format},
                           {"created", common::UtcNow()},
                           {"clusctl", CLUSCTL_VERSION},
                           {"cluster", IsInNone() ? "none"
                                       : isVcs    ? "vcs"
                                                  : "failover"},
                           {"anonymised", m_request.anonymises}};
        bundle.archive = m_parts.Pack(bundle.manifest);
        bundle.unread = m_parts.Unread();
        return bundle;
    }

    const LogCapture& m_log;
    const BundleRequest& m_request;
    const Simulation m_simulation;
    BundleParts m_parts;
    BundleNames m_names;
    std::string m_logs; // of all logs and events
    Status m_status;
    bool m_hasStatus = false;
    bool m_isWhole = false;
    std::vector<std::string> m_warnings; // of the status
    Findings m_findings;
    bool m_hasFindings = false;
};

} // namespace

SupportBundle MakeSupportBundle(const LogCapture& log, const BundleRequest& request) {
    return Maker(log, request).Make();
}
