#include "VcsServers.h"

#include "Suggestion.h"
#include "Text.h"
#include "VcsTable.h"
#include "VcsTools.h"

#include "core/VeritasNames.h"

#include "common/Text.h"

#include <algorithm>
#include <sstream>
#include <vector>

using namespace clus::veritas;

CVeritasVirtualServerInfo FindVcsServer(const LogCapture& log, const std::wstring& group) {
    const std::string what = "cannot find the virtual server of the group " + Quoted(group);
    CVeritasVirtualServerInfo info;
    const ToolWatch watch(log);
    const bool isFound = CVeritasCluster().CollectExchangeEVSInfo(group.c_str(), info);
    watch.Require(true, what);
    if (!isFound) {
        throw Failure(Errors::ServerNotFound, what + ": it holds no Exchange virtual server");
    }
    watch.RequireNames({info.sGroupName, info.sExchangeResName, info.sLanmanResName}, what);
    return info;
}

CVeritasVirtualServerInfo FindVcsServerByName(const LogCapture& log, const std::wstring& networkName) {
    const std::string what = "cannot find the virtual server " + Quoted(networkName);
    CVeritasVirtualServerInfo info;
    const ToolWatch watch(log);
    const bool isFound = CVeritasCluster().CollectEVSInfo(networkName.c_str(), info);
    watch.Require(true, what);
    if (!isFound) {
        throw Failure(Errors::ServerNotFound,
                      what + (info.sLanmanResName.empty()
                                  ? ": no Lanman resource carries it" + NetworkNameInOtherCase(log, networkName)
                                  : ": VCS tells no group of " + Quoted(info.sLanmanResName)));
    }
    watch.RequireNames({info.sGroupName, info.sLanmanResName}, what);
    return info;
}

VcsNames TopMountResources(const LogCapture& log, const std::wstring& group) {
    const std::string what = "cannot list the MountV resources of " + Quoted(group);
    VcsNames names;
    const ToolWatch watch(log);
    const bool isListed = CVeritasCluster().FindMostParentMountVResourceNameInGroup(group.c_str(), names);
    watch.Require(isListed, what);
    watch.RequireNames(names, what);
    return names;
}

void ReadDependencies(const LogCapture& log, const std::wstring& resource, VcsNames& parents, VcsNames& children,
                      const std::string& what) {
    const ToolWatch watch(log);
    const bool isRead = CVeritasCluster().EnumResDependencies(resource.c_str(), parents, children);
    watch.Require(isRead, what);
    const std::vector<ToolRun> runs = watch.Runs();
    if (runs.empty() || runs.back().firstLine.empty()) {
        throw Failure(what + ": VCS shows neither dependencies of " + Quoted(resource) + " nor that there are none");
    }
}

bool ShowsDependency(const LogCapture& log, const std::wstring& parent, const std::wstring& child,
                     const std::string& what) {
    VcsNames parents;
    VcsNames children;
    ReadDependencies(log, parent, parents, children, what);
    return Contains(children, child);
}

RegistryReplication FindRegistryReplication(const LogCapture& log, const std::wstring& group) {
    const std::string what = "cannot find the registry replication of " + Quoted(group);
    const CVeritasCluster cluster;
    RegistryReplication found;
    const ToolWatch watch(log);
    bool isFound = cluster.FindExistingKOVARegRepResName(group.c_str(), found.resource);
    if (isFound && !found.resource.empty()) {
        isFound = cluster.GetKOVAShareDiskResNameByRegRepName(group.c_str(), found.resource.c_str(), found.disk);
    }
    watch.Require(isFound, what);
    return found;
}

namespace {

// A list that is empty is asked for once more: that of a tool that was lost is no empty one.
VcsNames ListedTwice(const LogCapture& log, const NameValuePairList& filter) {
    const VcsNames names = ListVcsNames(log, &CVeritasCluster::EnumResourceNamesW, "resources", filter);
    return names.empty() ? ListVcsNames(log, &CVeritasCluster::EnumResourceNamesW, "resources", filter) : names;
}

VcsNames ListAllReplications(const LogCapture& log, const std::wstring& group) {
    return ListedTwice(log, {{GroupAttribute, group}, {TypeAttribute, RegRepType}});
}

// Null when VCS shows that it has none. Throws Failure when VCS shows nothing of them: an answer that was lost is not
// the one that there are none.
Json ReadKeys(const LogCapture& log, const std::wstring& replication) {
    const std::string what = "cannot read the keys of " + Quoted(replication);
    const ToolWatch watch(log);
    Json keys = ReadVcsAttribute(replication, KeysAttribute);
    watch.Require(true, what);
    if (keys.is_string() && !keys.get<std::string>().empty()) {
        return keys;
    }
    const std::vector<ToolRun> runs = watch.Runs();
    const std::vector<VcsRow> rows = runs.empty() ? std::vector<VcsRow>() : ReadVcsTable(runs.back().Output());
    if (std::none_of(rows.begin(), rows.end(), [&replication](const VcsRow& row) {
            return row.object == replication && row.attribute == KeysAttribute;
        })) {
        throw Failure(what + ": VCS shows nothing of them");
    }
    return Json();
}

} // namespace

VcsNames ListHalfMadeReplications(const LogCapture& log, const std::wstring& group) {
    VcsNames found;
    for (const std::wstring& name : ListAllReplications(log, group)) {
        if (ReadKeys(log, name).is_null()) {
            found.push_back(name);
        }
    }
    return found;
}

VcsNames ListRegistryReplications(const LogCapture& log, const std::wstring& group) {
    const std::wstring first = FindRegistryReplication(log, group).resource;
    if (first.empty()) {
        return VcsNames();
    }
    const Json keys = ReadKeys(log, first);
    VcsNames found;
    for (const std::wstring& name : ListAllReplications(log, group)) {
        if (name == first || (!keys.is_null() && ReadKeys(log, name) == keys)) {
            found.push_back(name);
        }
    }
    return found;
}

namespace {

const char SystemsKind[] = "systems";

// The first lines of what a tool listed, as words.
std::vector<VcsNames> ListedLines(const ToolWatch& watch, size_t most) {
    std::vector<VcsNames> lines;
    const std::vector<ToolRun> runs = watch.Runs();
    std::wistringstream output(runs.empty() ? std::wstring() : runs.back().Output());
    for (std::wstring line; lines.size() < most && std::getline(output, line);) {
        std::wistringstream words(line);
        VcsNames each;
        for (std::wstring word; words >> word;) {
            each.push_back(word);
        }
        if (!each.empty()) {
            lines.push_back(each);
        }
    }
    return lines;
}

[[noreturn]] void FailAsNoList(const std::string& what, const std::string& reason) {
    throw Failure(what + ": the answer of VCS is no list of names: " + reason);
}

// Two words that a tool prints look like an object and its system. Of a single line it is asked whether it is one:
// more lines than one are no sentence that somebody prints.
void RequireSystems(const LogCapture& log, const std::vector<VcsNames>& lines, const std::string& what) {
    if (lines.size() != 1 || lines.front().size() < 2) {
        return;
    }
    VcsNames systems;
    const ToolWatch watch(log);
    watch.Require(CVeritasCluster().EnumSystemNames(systems, nullptr), what);
    if (!Contains(systems, lines.front()[1])) {
        FailAsNoList(what, "there is no system " + Quoted(lines.front()[1]));
    }
}

// A system stands alone in its line.
void RequireOneEach(const std::vector<VcsNames>& lines, const std::string& what) {
    for (const VcsNames& line : lines) {
        if (line.size() > 1) {
            FailAsNoList(what, Quoted(line[0] + L" " + line[1]) + " is no system");
        }
    }
}

} // namespace

VcsNames ListVcsNames(const LogCapture& log, ListFunction list, const char* kind, const NameValuePairList& filter) {
    const std::string what = std::string("cannot list the ") + kind;
    VcsNames names;
    const ToolWatch watch(log);
    const bool isListed = (CVeritasCluster().*list)(names, filter.empty() ? nullptr : &filter);
    watch.Require(isListed, what);
    if (watch.HasMessage("50031")) { // no groups: its words were taken for names
        names.clear();
    }
    watch.RequireNames(names, what);
    if (std::string(kind) == SystemsKind) {
        RequireOneEach(ListedLines(watch, names.size()), what);
    } else if (!names.empty()) {
        RequireSystems(log, ListedLines(watch, 2), what);
    }
    if (names.empty() && filter.empty() && !watch.HasMessage("50031")) {
        RequireVcsAnswer(log, what);
    }
    return names;
}

void RequireVcsAnswer(const LogCapture& log, const std::string& what) {
    VcsNames systems;
    const ToolWatch watch(log);
    const bool isListed = CVeritasCluster().EnumSystemNames(systems, nullptr);
    watch.Require(isListed, what);
    if (systems.empty()) {
        throw Failure(Errors::EngineDown,
                      what + ": the VCS tools print nothing, not even that this computer is a system of the cluster");
    }
}

VcsNames ListVcsResources(const LogCapture& log) {
    return ListedTwice(log, {});
}

VcsNames ListVcsResources(const LogCapture& log, const std::wstring& group) {
    return ListedTwice(log, {{GroupAttribute, group}});
}

VcsNames ListResourcesOfService(const LogCapture& log, const std::wstring& group, const std::wstring& service) {
    return ListVcsNames(
        log, &CVeritasCluster::EnumResourceNamesW, "resources",
        {{GroupAttribute, group}, {TypeAttribute, GenericServiceType}, {ServiceNameAttribute, service}});
}

VcsNames ListVcsGroups(const LogCapture& log) {
    return ListVcsNames(log, &CVeritasCluster::EnumGroupNames, "groups");
}

namespace {

std::string InOtherCase(const std::wstring& name, const VcsNames& names) {
    for (const std::wstring& known : names) {
        if (common::IsSameName(known, name)) {
            return DidYouMean(common::ToUtf8(name), {common::ToUtf8(known)});
        }
    }
    return std::string();
}

void RequireListed(const VcsNames& names, const std::wstring& name, const ErrorKind& kind, const std::string& what) {
    if (!Contains(names, name)) {
        throw Failure(kind, what + " " + Quoted(name) + InOtherCase(name, names));
    }
}

} // namespace

std::string NetworkNameInOtherCase(const LogCapture& log, const std::wstring& networkName) {
    VcsNames known;
    for (const std::wstring& lanman :
         ListVcsNames(log, &CVeritasCluster::EnumResourceNamesW, "resources", {{TypeAttribute, LanmanType}})) {
        const Json name = ReadVcsAttribute(lanman, VirtualNameAttribute);
        known.push_back(name.is_string() ? common::ToUtf16(name.get<std::string>()) : std::wstring());
    }
    return InOtherCase(networkName, known);
}

void RequireVcsResource(const LogCapture& log, const std::wstring& name, const std::string& what) {
    RequireListed(ListVcsResources(log), name, Errors::ResourceNotFound, what + ": there is no resource");
}

void RequireVcsGroup(const LogCapture& log, const std::wstring& name, const std::string& what) {
    RequireListed(ListVcsGroups(log), name, Errors::GroupNotFound, what + ": there is no group");
}

void RequireVcsSystem(const LogCapture& log, const std::wstring& name, const std::string& what) {
    RequireListed(ListVcsNames(log, &CVeritasCluster::EnumSystemNames, SystemsKind), name, Errors::NodeNotFound,
                  what + ": there is no system");
}
