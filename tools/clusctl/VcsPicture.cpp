#include "VcsPicture.h"

#include "core/VeritasNames.h"

#include "common/Text.h"

using namespace picture;
using namespace clus::veritas;

namespace {

const struct {
    const wchar_t* state;
    const char* word;
} SystemWords[] = {{L"RUNNING", "running"},    {L"FAULTED", "faulted"},         {L"EXITED", "exited"},
                   {L"LEAVING", "leaving"},    {L"EXITING", "exiting"},         {L"UNKNOWN", "unknown"},
                   {L"INITING", "joining"},    {L"LOCAL_BUILD", "joining"},     {L"REMOTE_BUILD", "joining"},
                   {L"ADMIN_WAIT", "waiting"}, {L"STALE_ADMIN_WAIT", "waiting"}};

std::wstring ValueOf(const VcsAttributes& attributes, const wchar_t* name) {
    const auto found = attributes.find(name);
    return found == attributes.end() ? std::wstring() : found->second;
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

void SetRole(Resource& resource, const VcsAttributes& attributes) {
    const std::wstring type = ValueOf(attributes, TypeAttribute);
    const std::wstring service = ValueOf(attributes, type == ExchServiceType ? ServiceAttribute : ServiceNameAttribute);
    resource.isEnabled = ValueOf(attributes, EnabledAttribute) != L"0";
    if (type == LanmanType) {
        resource.role = Role::NetworkName;
        resource.networkName = common::ToUtf8(ValueOf(attributes, VirtualNameAttribute));
    } else if (type == ExchServiceType && service == InformationStoreService) {
        resource.role = Role::Store;
    } else if (type == ExchServiceType && service == SystemAttendantService) {
        resource.role = Role::Attendant;
    } else if (type == GenericServiceType && IsProductService(service)) {
        resource.role = Role::Product;
        resource.service = common::ToUtf8(service);
    }
}

} // namespace

std::vector<const wchar_t*> VcsSystemStates() {
    std::vector<const wchar_t*> states;
    for (const auto& known : SystemWords) {
        states.push_back(known.state);
    }
    return states;
}

Node VcsSystem(const std::wstring& name, const std::wstring& state) {
    std::string word = "not running";
    for (const auto& known : SystemWords) {
        word = state == known.state ? known.word : word;
    }
    return {common::ToUtf8(name), word, word == "running"};
}

Group VcsGroup(const std::wstring& name, const SystemStates& states) {
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

Resource VcsResource(const std::wstring& name, const VcsAttributes& attributes, const SystemStates& states,
                     const PictureIndex& index) {
    Resource resource;
    resource.name = common::ToUtf8(name);
    resource.type = common::ToUtf8(ValueOf(attributes, TypeAttribute));
    resource.group = common::ToUtf8(ValueOf(attributes, GroupAttribute));
    const Group* const group = index.GroupNamed(resource.group);
    SetState(resource, states, group == nullptr ? std::string() : group->node);
    SetRole(resource, attributes);
    return resource;
}
