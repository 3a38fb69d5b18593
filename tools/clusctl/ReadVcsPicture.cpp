// Reading what a VCS cluster looks like. However many resources there are, it takes few runs of tools: an empty name
// means all of them.
#include "ReadPicture.h"

#include "Text.h"
#include "VcsServers.h"
#include "VcsStates.h"
#include "VcsTable.h"
#include "VcsTools.h"

#include "core/ToolOutput.h"
#include "core/VeritasNames.h"

#include <map>

using namespace picture;
using namespace clus::veritas;

namespace {

const wchar_t AllOfThem[] = L"";
const wchar_t StateAttribute[] = L"State";
const wchar_t SystemStateAttribute[] = L"SysState";
const char NoDependencies[] = "50034";
const size_t DependencyColumns = 3; // group, parent, child

// The output of the tool that `ask` has the library run. Throws Failure when it went wrong.
template <typename Ask> std::wstring Answer(const LogCapture& log, const std::string& what, const Ask& ask) {
    const ToolWatch watch(log);
    ask(CVeritasCluster());
    watch.Require(true, what);
    const std::vector<ToolRun> runs = watch.Runs();
    return runs.empty() || watch.HasMessage(NoDependencies) ? std::wstring() : runs.back().output;
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
                               ServiceAttribute + L" " + ServiceNameAttribute + L" " + VirtualNameAttribute;
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

// Asks for the systems of each state until there is one for each: mostly the first question is the last.
std::vector<Node> ReadSystems(const LogCapture& log) {
    static const struct {
        const wchar_t* state;
        const char* word;
    } states[] = {{L"RUNNING", "running"},    {L"FAULTED", "faulted"},         {L"EXITED", "exited"},
                  {L"LEAVING", "leaving"},    {L"EXITING", "exiting"},         {L"UNKNOWN", "unknown"},
                  {L"INITING", "joining"},    {L"LOCAL_BUILD", "joining"},     {L"REMOTE_BUILD", "joining"},
                  {L"ADMIN_WAIT", "waiting"}, {L"STALE_ADMIN_WAIT", "waiting"}};
    const VcsNames names = ListVcsNames(log, &CVeritasCluster::EnumSystemNames, "systems");
    std::map<std::wstring, const char*> found;
    for (const auto& known : states) {
        if (found.size() >= names.size()) {
            break;
        }
        for (const std::wstring& name :
             ListVcsNames(log, &CVeritasCluster::EnumSystemNames, "systems", {{SystemStateAttribute, known.state}})) {
            found.emplace(name, known.word);
        }
    }
    std::vector<Node> nodes;
    for (const std::wstring& name : names) {
        const auto state = found.find(name);
        const std::string word = state == found.end() ? "not running" : state->second;
        nodes.push_back({common::ToUtf8(name), word, word == "running"});
    }
    return nodes;
}

bool HasAny(const SystemStates& states, const wchar_t* flag, std::wstring* system = nullptr) {
    for (const SystemState& row : states) {
        if (HasFlag(row.state, flag)) {
            if (system != nullptr) {
                *system = row.system;
            }
            return true;
        }
    }
    return false;
}

std::vector<StateOnNode> StatesOf(const SystemStates& states) {
    std::vector<StateOnNode> result;
    for (const SystemState& row : states) {
        result.push_back({common::ToUtf8(row.system), common::ToUtf8(row.state)});
    }
    return result;
}

Group GroupOf(const std::wstring& name, const SystemStates& states) {
    const GroupState state = GroupStateOf(states);
    Group group;
    group.name = common::ToUtf8(name);
    group.node = common::ToUtf8(state.system);
    group.states = StatesOf(states);
    if (states.empty()) {
        group.state = "unknown";
    } else if (HasAny(states, L"STARTING") || HasAny(states, L"STOPPING")) {
        group.state = "pending";
        group.condition = Condition::Pending;
    } else if (!state.IsOnline() && !state.IsPartlyOnline() && HasAny(states, L"FAULTED")) {
        group.state = "faulted";
        group.condition = Condition::Failed;
    } else {
        group.state = state.word;
        group.condition = state.IsOnline()         ? Condition::Online
                          : state.IsPartlyOnline() ? Condition::Partly
                                                   : Condition::Offline;
    }
    return group;
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
        groups.push_back(GroupOf(name, states[name]));
    }
    return groups;
}

// Of the system where the group is, or else the one that says most.
void SetState(Resource& resource, const SystemStates& states, const std::string& groupNode) {
    std::wstring system = common::ToUtf16(groupNode);
    std::wstring state = StateOn(states, system);
    if (state.empty()) {
        for (const wchar_t* const flag : {L"ONLINE", L"FAULTED", L"STATE UNKNOWN", L"OFFLINE"}) {
            if (HasAny(states, flag, &system)) {
                state = StateOn(states, system);
                break;
            }
        }
    }
    resource.states = StatesOf(states);
    if (HasFlag(state, L"STATE UNKNOWN") || state.empty()) {
        resource.state = "unknown";
    } else if (HasFlag(state, L"FAULTED") || HasFlag(state, L"UNABLE TO OFFLINE")) {
        resource.state = HasFlag(state, L"FAULTED") ? "faulted" : "unable to go offline";
        resource.condition = Condition::Failed;
    } else if (IsOnline(state)) {
        resource.state = "online";
        resource.condition = Condition::Online;
    } else {
        resource.state = "offline";
        resource.condition = Condition::Offline;
    }
    resource.node = IsOnline(state) ? common::ToUtf8(system) : std::string();
}

bool IsProductService(const std::wstring& service) {
    for (const wchar_t* const known : {HostService, SAService, QAVMonitorService, RemoteConfigService}) {
        if (service == known) {
            return true;
        }
    }
    return false;
}

typedef std::map<std::wstring, std::wstring> Attributes; // the first value of each

void SetRole(Resource& resource, Attributes& attributes) {
    const std::wstring& type = attributes[TypeAttribute];
    const std::wstring& service = attributes[type == ExchServiceType ? ServiceAttribute : ServiceNameAttribute];
    if (type == LanmanType) {
        resource.role = Role::NetworkName;
        resource.networkName = common::ToUtf8(attributes[VirtualNameAttribute]);
    } else if (type == ExchServiceType && service == InformationStoreService) {
        resource.role = Role::Store;
    } else if (type == ExchServiceType && service == SystemAttendantService) {
        resource.role = Role::Attendant;
    } else if (type == GenericServiceType && IsProductService(service)) {
        resource.role = Role::Product;
        resource.service = common::ToUtf8(service);
    }
}

std::vector<Resource> ReadResources(const LogCapture& log, const ClusterPicture& cluster) {
    const VcsNames names = ListVcsResources(log);
    if (names.empty()) {
        return {};
    }
    std::map<std::wstring, Attributes> attributes;
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
    std::vector<Resource> resources;
    for (const std::wstring& name : names) {
        Attributes& values = attributes[name];
        Resource resource;
        resource.name = common::ToUtf8(name);
        resource.type = common::ToUtf8(values[TypeAttribute]);
        resource.group = common::ToUtf8(values[GroupAttribute]);
        const Group* const group = GroupNamed(cluster, resource.group);
        SetState(resource, states[name], group == nullptr ? std::string() : group->node);
        SetRole(resource, values);
        resource.dependsOn = dependencies[name];
        resources.push_back(resource);
    }
    return resources;
}

} // namespace

ClusterPicture ReadVcsPicture(const LogCapture& log) {
    ClusterPicture result;
    result.kind = Kind::Vcs;
    result.productServices = {common::ToUtf8(HostService), common::ToUtf8(SAService)};
    result.nodes = ReadSystems(log);
    result.groups = ReadGroups(log);
    result.resources = ReadResources(log, result);
    return result;
}
