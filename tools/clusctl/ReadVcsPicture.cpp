// Reading what a VCS cluster looks like. However many resources there are, it takes few runs of tools: an empty name
// means all of them.
#include "ReadPicture.h"

#include "Text.h"
#include "VcsPicture.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsSystems.h"
#include "VcsTable.h"
#include "VcsToolProcess.h"
#include "VcsTools.h"

#include "core/ToolOutput.h"
#include "core/VeritasNames.h"

#include <map>

using namespace picture;
using namespace clus::veritas;

namespace {

const wchar_t AllOfThem[] = L"";
const wchar_t StateAttribute[] = L"State";
const wchar_t FrozenForNowAttribute[] = L"TFrozen";
const wchar_t GroupTool[] = L"hagrp";
const wchar_t ClusterTool[] = L"haclus";
const wchar_t EverySystem[] = L"global";
const char NoDependencies[] = "50034";
const size_t DependencyColumns = 3; // group, parent, child

// The output of the tool that `ask` has the library run. Throws Failure when it went wrong.
template <typename Ask> std::wstring Answer(const LogCapture& log, const std::string& what, const Ask& ask) {
    const ToolWatch watch(log);
    ask(CVeritasCluster());
    watch.Require(true, what);
    const std::vector<ToolRun> runs = watch.Runs();
    return runs.empty() || watch.HasMessage(NoDependencies) ? std::wstring() : runs.back().Output();
}

std::vector<VcsRow> ReadGroupStates(const LogCapture& log) {
    return ReadVcsTable(Answer(log, "cannot read the states of the groups", [](const CVeritasCluster& cluster) {
        bool isOnline = false;
        std::wstring system;
        cluster.GetGroupOnlineNode(AllOfThem, isOnline, system, true);
    }));
}

std::vector<VcsRow> ReadAttributes(const LogCapture& log) {
    const std::wstring names = std::wstring(TypeAttribute) + L" " + GroupAttribute + L" " + StateAttribute + L" " +
                               ServiceAttribute + L" " + ServiceNameAttribute + L" " + VirtualNameAttribute + L" " +
                               EnabledAttribute;
    return ReadVcsTable(Answer(log, "cannot read the resources", [&names](const CVeritasCluster& cluster) {
        std::wstring ofFirst;
        cluster.GetResourceAttribute(AllOfThem, names.c_str(), ofFirst);
    }));
}

// The words of the table of all dependencies.
std::vector<std::wstring> ReadDependencies(const LogCapture& log) {
    std::vector<std::wstring> words;
    clus::SplitOutput(Answer(log, "cannot list the dependencies",
                             [](const CVeritasCluster& cluster) {
                                 VcsNames parents;
                                 VcsNames children;
                                 cluster.EnumResDependencies(AllOfThem, parents, children);
                             }),
                      words);
    return words;
}

// What somebody has switched off. An attribute that the tool does not show is as it is mostly.
void ReadSwitches(const LogCapture& log, std::vector<Group>& groups) {
    const ToolWatch watch(log);
    const std::string output = RunVcsTool(GroupTool, L"-display -attribute Frozen TFrozen Enabled").output;
    watch.Require(true, "cannot read which groups are frozen or disabled");
    std::map<std::string, Group*> byName;
    for (Group& group : groups) {
        byName.emplace(group.name, &group);
    }
    for (const VcsRow& row : ReadVcsTable(common::ToUtf16(output))) {
        const auto found = byName.find(common::ToUtf8(row.object));
        if (found == byName.end()) {
            continue;
        }
        Group& group = *found->second;
        if (row.attribute == FrozenForNowAttribute) {
            group.isFrozenForNow = row.value == L"1";
        } else if (row.attribute != EnabledAttribute) {
            group.isFrozenPersistently = row.value == L"1";
        } else if (row.value == L"0" && row.system != EverySystem) {
            group.disabledOn.push_back(common::ToUtf8(row.system));
        } else if (row.value == L"0") {
            for (const StateOnNode& state : group.states) {
                group.disabledOn.push_back(state.node);
            }
        }
    }
}

// Empty when the tool that tells it is missing, or tells something else.
std::string ReadVcsName(const LogCapture& log) {
    if (!HasVcsTool(ClusterTool)) {
        return std::string();
    }
    const ToolWatch watch(log);
    std::string name = RunVcsTool(ClusterTool, L"-value ClusterName").output;
    name.erase(name.find_last_not_of(" \t\n") + 1);
    return watch.Problems().empty() && name.find('\n') == std::string::npos ? name : std::string();
}

std::vector<Group> ReadGroups(const LogCapture& log) {
    const VcsNames names = ListVcsGroups(log);
    std::map<std::wstring, SystemStates> states;
    if (!names.empty()) {
        for (const VcsRow& row : ReadGroupStates(log)) {
            states[row.object].push_back({row.system, row.value});
        }
    }
    std::vector<Group> groups;
    for (const std::wstring& name : names) {
        groups.push_back(VcsGroup(name, states[name]));
    }
    if (!groups.empty()) {
        ReadSwitches(log, groups);
    }
    return groups;
}

std::vector<Resource> ReadResources(const LogCapture& log, const ClusterPicture& cluster) {
    const VcsNames names = ListVcsResources(log);
    if (names.empty()) {
        return {};
    }
    std::map<std::wstring, VcsAttributes> attributes;
    std::map<std::wstring, SystemStates> states;
    for (const VcsRow& row : ReadAttributes(log)) {
        if (row.attribute == StateAttribute) {
            states[row.object].push_back({row.system, row.value});
        } else {
            attributes[row.object].emplace(row.attribute, row.value);
        }
    }
    std::map<std::wstring, std::vector<std::string>> dependencies;
    const std::vector<std::wstring> words = ReadDependencies(log);
    for (size_t row = DependencyColumns; row + DependencyColumns <= words.size(); row += DependencyColumns) {
        dependencies[words[row + 1]].push_back(common::ToUtf8(words[row + 2]));
    }
    const PictureIndex index(cluster);
    std::vector<Resource> resources;
    for (const std::wstring& name : names) {
        if (attributes[name].count(GroupAttribute) == 0) {
            throw Failure(Errors::Incomplete, "cannot read the resources: VCS shows no group of " + Quoted(name));
        }
        Resource resource = VcsResource(name, attributes[name], states[name], index);
        resource.dependsOn = dependencies[name];
        resources.push_back(resource);
    }
    return resources;
}

} // namespace

ClusterPicture ReadVcsPicture(const LogCapture& log) {
    ClusterPicture result;
    result.kind = Kind::Vcs;
    result.name = ReadVcsName(log);
    result.productServices = {common::ToUtf8(HostService), common::ToUtf8(SAService)};
    result.nodes = ReadVcsSystems(log, ListVcsNames(log, &CVeritasCluster::EnumSystemNames, "systems"));
    result.groups = ReadGroups(log);
    result.resources = ReadResources(log, result);
    return result;
}
