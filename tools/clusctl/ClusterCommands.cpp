#include "ClusterCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "OwnerSpelling.h"
#include "Progress.h"
#include "Suggestion.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

const Columns ClusterTitles = {
    {"name", "Cluster"},
    {"nameResourceId", "Name resource ID"},
    {"nodes", "Nodes"},
};

const Columns NodeColumns = {{"name", "NAME"}, {"state", "STATE"}};

const Columns GroupColumns = {{"name", "NAME"}, {"owner", "OWNER"}, {"state", "STATE"}, {"resources", "RESOURCES"}};

const Columns GroupTitles = {
    {"name", "Group"},
    {"owner", "Owner"},
    {"ownerState", "Owner is"},
    {"state", "State"},
    {"resources", "Number of resources"},
    {"members", "Resources"},
    {"disks", "Disks"},
};

const Columns ResourceColumns = {
    {"name", "NAME"}, {"type", "TYPE"}, {"group", "GROUP"}, {"owner", "OWNER"}, {"state", "STATE"},
};

struct GroupOptions {
    std::wstring name;
    bool detail = false;
};

struct ResourceOptions {
    std::wstring name;
    std::wstring type;
    std::wstring group;
    bool detail = false;
    bool showSecrets = false;
};

// Why the resource that carries the cluster's name was not found.
void TellNameResourceMissing(const CCluster& cluster, const std::wstring& clusterName, Report& report) {
    const size_t before = report.Warnings().size();
    for (const std::wstring& name : ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE)) {
        ReadResource(cluster, name, ResourceParts::Line, report);
    }
    if (report.Warnings().size() == before) {
        report.MarkIncomplete("no network name resource that can be read carries the cluster's name " +
                              Quoted(clusterName));
    }
}

Report Cluster() {
    CCluster cluster;
    OpenLocalCluster(cluster);
    Report report;
    Json record;
    const std::wstring name = ReadClusterName(cluster);
    record["name"] = name;
    CClusterResource nameResource;
    const wchar_t* id = cluster.OpenNetworkNameResourceByNetworkName(nameResource, name.c_str())
                            ? nameResource.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false)
                            : nullptr;
    record["nameResourceId"] = id == nullptr ? Json() : Json(id);
    if (id == nullptr) {
        TellNameResourceMissing(cluster, name, report);
    }
    record["nodes"] = ListNames(cluster, CCluster::CCLUSTER_OBJ_NODE);
    report.AddRecord("cluster", record, ClusterTitles);
    return report;
}

Report Nodes() {
    CCluster cluster;
    OpenLocalCluster(cluster);
    Report report;
    report.AddTable("nodes", ReadNodes(cluster, report), NodeColumns, "The cluster has no node.");
    return report;
}

// Marks objects that belong to a node which is down, or joins only: that is what the cluster remembers, not what is. A
// paused node owns its groups. Warns, too, of an owner that the library does not take for this computer.
class OwnerStates {
public:
    OwnerStates(const CCluster& cluster, Report& report) : m_nodes(ReadNodes(cluster, report)), m_report(report) {
    }

    // `groupMember` is the member of the record that holds the name of its group.
    void Mark(Json& record, const char* groupMember) {
        const Json& state = JudgedState(record["owner"]);
        record["ownerState"] = state; // moves the other members: no reference to one from before is good after this
        if (state != "down" && state != "joining") {
            return;
        }
        const std::string group = record[groupMember].get<std::string>();
        if (m_told.insert(group).second) {
            m_report.AddWarning("the group " + Quoted(group) + " is said to be on the node " +
                                Quoted(record["owner"].get<std::string>()) + ", which is " + state.get<std::string>());
        }
    }

private:
    // Each owner is judged once: there are as many as nodes, and many that they own.
    const Json& JudgedState(const Json& owner) {
        if (!owner.is_string()) {
            return m_nobodys;
        }
        const auto& name = owner.get_ref<const std::string&>();
        const auto known = m_states.find(name);
        if (known != m_states.end()) {
            return known->second;
        }
        WarnOfOwnerSpelling(common::ToUtf16(name), m_report);
        return m_states.emplace(name, StateOf(name)).first->second;
    }

    Json StateOf(const std::string& owner) const {
        for (const Json& node : m_nodes) {
            if (common::IsSameName(node["name"].get<std::string>(), owner)) {
                return node["state"];
            }
        }
        return Json();
    }

    const Json m_nodes;
    const Json m_nobodys;
    std::unordered_map<std::string, Json> m_states;
    std::unordered_set<std::string> m_told; // groups
    Report& m_report;
};

// The name as the cluster writes it; the caller's letter case may differ.
std::wstring StoredName(const Names& names, const std::wstring& wanted) {
    const std::wstring key = common::Folded(wanted);
    for (const std::wstring& name : names) {
        if (common::Folded(name) == key) {
            return name;
        }
    }
    return wanted;
}

Report Groups(const LogCapture& log, const GroupOptions& options) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    Names names;
    if (options.name.empty()) {
        names = ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP);
    } else {
        RequireGroup(cluster, options.name);
        names.push_back(StoredName(ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP), options.name));
    }
    const bool detail = options.detail || !options.name.empty();
    Report report;
    OwnerStates owners(cluster, report);
    Json records = Json::array();
    CountedProgress progress(log, "groups", names.size());
    for (const std::wstring& name : names) {
        progress.Next();
        Json record = ReadGroup(cluster, name, detail, report);
        owners.Mark(record, "name");
        records.push_back(std::move(record));
    }
    if (detail) {
        report.AddRecords("groups", std::move(records), GroupTitles, "The cluster has no group.");
    } else {
        report.AddTable("groups", std::move(records), GroupColumns, "The cluster has no group.");
    }
    return report;
}

Names SelectResources(const CCluster& cluster, const ResourceOptions& options) {
    if (!options.name.empty()) {
        RequireResource(cluster, options.name);
        return Names(1, options.name);
    }
    return options.group.empty() ? ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE)
                                 : ListMembers(cluster, options.group);
}

std::string NoResourceSentence(const ResourceOptions& options) {
    std::string sentence = options.group.empty() ? "The cluster has no resource"
                                                 : "The group " + Quoted(options.group) + " has no resource";
    return sentence + (options.type.empty() ? "." : " of the type " + Quoted(options.type) + ".");
}

// Whether a resource is of the wanted type. One whose type cannot be read may be: the report tells of it, the list does
// not show it.
bool IsWanted(const CCluster& cluster, const std::wstring& name, const std::wstring& type, Report& report) {
    return type.empty() || ReadResourceType(cluster, name, report) == Json(type);
}

// That no resource has a type is an answer, but not of one that the cluster does not know.
void RequireKnownType(const CCluster& cluster, const std::wstring& type) {
    const Names types = ListResourceTypes(cluster);
    if (std::find(types.begin(), types.end(), type) == types.end()) {
        std::vector<std::string> known(types.size());
        std::transform(types.begin(), types.end(), known.begin(), &common::ToUtf8);
        throw Failure(Errors::NotFound,
                      "the cluster has no resource type " + Quoted(type) + DidYouMean(common::ToUtf8(type), known));
    }
}

Report Resources(const LogCapture& log, const ResourceOptions& options) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const bool detail = options.detail || !options.name.empty();
    const ResourceParts parts = !detail               ? ResourceParts::Line
                                : options.showSecrets ? ResourceParts::DetailWithSecrets
                                                      : ResourceParts::Detail;
    Report report;
    OwnerStates owners(cluster, report);
    Json records = Json::array();
    const Names names = SelectResources(cluster, options);
    CountedProgress progress(log, "resources", names.size());
    for (const std::wstring& name : names) {
        progress.Next();
        if (IsWanted(cluster, name, options.type, report)) {
            Json record = ReadResource(cluster, name, parts, report);
            owners.Mark(record, "group");
            records.push_back(std::move(record));
        }
    }
    if (records.empty() && !options.type.empty()) {
        RequireKnownType(cluster, options.type);
    }
    if (detail) {
        report.AddRecords("resources", std::move(records), ResourceTitles(), NoResourceSentence(options));
    } else {
        report.AddTable("resources", std::move(records), ResourceColumns, NoResourceSentence(options));
    }
    return report;
}

} // namespace

void AddClusterCommands(CommandLine& commandLine) {
    commandLine.Add(headings::TheCluster, "cluster", "Show the cluster's name and nodes",
                    [](const LogCapture&) { return Cluster(); });

    commandLine.Add(headings::TheCluster, "nodes", "List the cluster's nodes with their states",
                    [](const LogCapture&) { return Nodes(); });

    const auto groupOptions = std::make_shared<GroupOptions>();
    CLI::App& groups = commandLine.Add(headings::TheCluster, "groups", "List the cluster's groups, or show one",
                                       [groupOptions](const LogCapture& log) { return Groups(log, *groupOptions); });
    CommandLine::AddText(groups, "NAME", groupOptions->name, "NAME", "Show this group in detail");
    groups.add_flag("--detail", groupOptions->detail, "Show each group with its resources and disks");

    const auto options = std::make_shared<ResourceOptions>();
    CLI::App& resources =
        commandLine.Add(headings::TheCluster, "resources", "List the cluster's resources, or show one",
                        [options](const LogCapture& log) { return Resources(log, *options); });
    CLI::Option& name = CommandLine::AddText(resources, "NAME", options->name, "NAME", "Show this resource in detail");
    CommandLine::AddText(resources, "--type", options->type, "TYPE",
                         "Only resources of this type, letter for letter as the cluster writes it")
        .excludes(&name);
    CommandLine::AddText(resources, "--group", options->group, "GROUP", "Only resources of this group").excludes(&name);
    resources.add_flag("--detail", options->detail,
                       "Show each resource with ID, dependencies, possible owners, network name and disk device");
    resources.add_flag("--show-secrets", options->showSecrets,
                       "Show private properties that are secrets as they are; see [secrets](#secrets)");
}
