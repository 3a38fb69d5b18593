#include "ClusterCommands.h"

#include "ClusterObjects.h"
#include "CommandLine.h"
#include "Text.h"

#include "common/Text.h"

#include <memory>

namespace {

const char Heading[] = "The cluster";

const Columns ClusterTitles = {
    {"name", "Cluster"},
    {"nameResourceId", "Name resource ID"},
    {"nodes", "Nodes"},
};

const Columns GroupColumns = {{"name", "NAME"}, {"owner", "OWNER"}, {"state", "STATE"}, {"resources", "RESOURCES"}};

const Columns GroupTitles = {
    {"name", "Group"},        {"owner", "Owner"}, {"state", "State"}, {"resources", "Number of resources"},
    {"members", "Resources"}, {"disks", "Disks"},
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
};

Report Cluster() {
    CCluster cluster;
    OpenLocalCluster(cluster);
    std::wstring name;
    std::wstring id;
    if (!CCluster::GetClusterNameResourceGUID(name, id)) {
        throw Failure("cannot read the cluster's name and the ID of the resource that carries it");
    }
    Json record;
    record["name"] = name;
    record["nameResourceId"] = id;
    record["nodes"] = ListNames(cluster, CCluster::CCLUSTER_OBJ_NODE);
    Report report;
    report.AddRecord("cluster", record, ClusterTitles);
    return report;
}

void RequireGroup(const CCluster& cluster, CClusterGroup& group, const std::wstring& name) {
    if (!cluster.OpenGroupByName(group, name.c_str())) {
        throw Failure(KindOfCode(GetLastError(), Errors::GroupNotFound),
                      "there is no group " + Quoted(name) + " that can be opened");
    }
}

// The name as the cluster writes it; the caller's letter case may differ.
std::wstring StoredName(const Names& names, const std::wstring& wanted) {
    for (const std::wstring& name : names) {
        if (common::Folded(name) == common::Folded(wanted)) {
            return name;
        }
    }
    return wanted;
}

Report Groups(const GroupOptions& options) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    Names names;
    if (options.name.empty()) {
        names = ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP);
    } else {
        CClusterGroup group;
        RequireGroup(cluster, group, options.name);
        names.push_back(StoredName(ListNames(cluster, CCluster::CCLUSTER_OBJ_GROUP), options.name));
    }
    const bool detail = options.detail || !options.name.empty();
    Json records = Json::array();
    for (const std::wstring& name : names) {
        records.push_back(ReadGroup(cluster, name, detail));
    }
    Report report;
    if (detail) {
        report.AddRecords("groups", records, GroupTitles, "The cluster has no group.");
    } else {
        report.AddTable("groups", records, GroupColumns, "The cluster has no group.");
    }
    return report;
}

Names SelectResources(CCluster& cluster, const ResourceOptions& options) {
    Names names;
    const std::wstring& type = options.type;
    bool isDone = false;
    if (!options.name.empty()) {
        CClusterResource resource;
        RequireResource(cluster, resource, options.name);
        names.push_back(options.name);
        return names;
    }
    if (!options.group.empty()) {
        CClusterGroup group;
        RequireGroup(cluster, group, options.group);
        isDone = type.empty() ? group.EnumResourceNamesInGroup(names)
                              : group.EnumResourceNamesInGroupByType(cluster, names, type.c_str());
    } else if (!type.empty()) {
        isDone = cluster.EnumResourceNamesByType(type.c_str(), names);
    } else {
        return ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE);
    }
    if (!isDone) {
        throw Failure("cannot list the resources");
    }
    return names;
}

std::string NoResourceSentence(const ResourceOptions& options) {
    std::string sentence = options.group.empty() ? "The cluster has no resource"
                                                 : "The group " + Quoted(options.group) + " has no resource";
    return sentence + (options.type.empty() ? "." : " of the type " + Quoted(options.type) + ".");
}

Report Resources(const ResourceOptions& options) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    const bool detail = options.detail || !options.name.empty();
    Json records = Json::array();
    for (const std::wstring& name : SelectResources(cluster, options)) {
        records.push_back(ReadResource(cluster, name, detail));
    }
    Report report;
    if (detail) {
        report.AddRecords("resources", records, ResourceTitles(), NoResourceSentence(options));
    } else {
        report.AddTable("resources", records, ResourceColumns, NoResourceSentence(options));
    }
    return report;
}

} // namespace

void AddClusterCommands(CommandLine& commandLine) {
    commandLine.Add(Heading, "cluster", "Show the cluster's name and nodes",
                    [](const LogCapture&) { return Cluster(); });

    const auto groupOptions = std::make_shared<GroupOptions>();
    CLI::App& groups = commandLine.Add(Heading, "groups", "List the cluster's groups, or show one",
                                       [groupOptions](const LogCapture&) { return Groups(*groupOptions); });
    CommandLine::AddText(groups, "NAME", groupOptions->name, "NAME", "Show this group in detail");
    groups.add_flag("--detail", groupOptions->detail, "Show each group in detail");

    const auto options = std::make_shared<ResourceOptions>();
    CLI::App& resources = commandLine.Add(Heading, "resources", "List the cluster's resources, or show one",
                                          [options](const LogCapture&) { return Resources(*options); });
    CLI::Option& name = CommandLine::AddText(resources, "NAME", options->name, "NAME", "Show this resource in detail");
    CommandLine::AddText(resources, "--type", options->type, "TYPE", "Only resources of this type, letter for letter")
        .excludes(&name);
    CommandLine::AddText(resources, "--group", options->group, "GROUP", "Only resources of this group").excludes(&name);
    resources.add_flag("--detail", options->detail, "Show each resource in detail");
}
