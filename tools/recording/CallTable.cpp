#include "CallTable.h"

#include <clusapi.h>
#if defined(__MINGW32__)
typedef struct CLUSPROP_FILETIME* PCLUSPROP_FILETIME; // named by mingw-w64's resapi.h without a declaration
#endif
#include <resapi.h>

#include <cstring>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace recording {

namespace {

template <typename T> Slot ToSlot(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return static_cast<Slot>(reinterpret_cast<std::uintptr_t>(value));
    } else if constexpr (sizeof(T) == sizeof(Slot)) {
        return static_cast<Slot>(value);
    } else {
        return static_cast<Slot>(static_cast<std::uint32_t>(value));
    }
}

template <typename T> T FromSlot(Slot slot) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(static_cast<std::uintptr_t>(slot));
    } else {
        return static_cast<T>(slot);
    }
}

// The function in the place of the one that the tag stands for.
template <typename Function, typename Tag> struct Entry;

template <typename R, typename... A, typename Tag> struct Entry<R(WINAPI*)(A...), Tag> {
    static const Call*& Row() {
        static const Call* row = nullptr;
        return row;
    }
    static R WINAPI Function(A... arguments) {
        const Slot slots[] = {ToSlot(arguments)...};
        return FromSlot<R>(Intercept(*Row(), slots, &Invoke));
    }
    static Slot Invoke(void* original, const Slot* slots) {
        return InvokeWith(original, slots, std::index_sequence_for<A...>());
    }
    template <std::size_t... Index>
    static Slot InvokeWith(void* original, const Slot* slots, std::index_sequence<Index...>) {
        return ToSlot(reinterpret_cast<R(WINAPI*)(A...)>(original)(FromSlot<A>(slots[Index])...));
    }
};

typedef void (*SetRow)(const Call* row);

struct Line {
    Call call;
    SetRow setRow;
};

template <typename Function, typename Tag>
Line LineFor(const char* library, const char* name, Result result, Effect effect, std::vector<Argument> arguments) {
    typedef Entry<Function, Tag> Thunk;
    return {{library, name, result, effect, std::move(arguments), reinterpret_cast<void*>(&Thunk::Function), nullptr},
            [](const Call* row) { Thunk::Row() = row; }};
}

#define CLUSTER_CALL(dll, function, result, effect, ...)                                                          \
    lines.push_back(LineFor<decltype(&::function), struct function##_tag>(#dll ".dll", #function, Result::result, \
                                                                          Effect::effect, {__VA_ARGS__}))

const Argument Cluster = {Kind::Handle, "cluster"};
const Argument Resource = {Kind::Handle, "resource"};
const Argument Group = {Kind::Handle, "group"};
const Argument Node = {Kind::Handle, "node"};
const Argument Network = {Kind::Handle, "network"};
const Argument Interface_ = {Kind::Handle, "interface"};
const Argument Enumeration = {Kind::Handle, "enumeration"};
const Argument Port = {Kind::Handle, "port"};
const Argument Name = {Kind::Text, "name"};
const Argument NameOut = {Kind::NameOut, "name"};
const Argument Mask = {Kind::Number, "type"};
const Argument Index = {Kind::Number, "index"};
const Argument Type = {Kind::NumberOut, "type"};
const Argument Host = {Kind::Handle, "host"};
const Argument Control = {Kind::Control, "control"};
const Argument In = {Kind::BytesIn, "input"};
const Argument Out = {Kind::BytesOut, "output"};
const Argument Key = {Kind::Number, "key"};

void AddOpening(std::vector<Line>& lines) {
    CLUSTER_CALL(clusapi, OpenCluster, Handle, Asks, Name);
    CLUSTER_CALL(clusapi, CloseCluster, Truth, Closes, Cluster);
    CLUSTER_CALL(clusapi, GetClusterInformation, Code, Asks, Cluster, NameOut, {Kind::Version, "version"});
    CLUSTER_CALL(clusapi, GetClusterQuorumResource, Code, Asks, Cluster, NameOut, {Kind::NameOut, "device"},
                 {Kind::NumberOut, "logSize"});
    CLUSTER_CALL(clusapi, GetNodeClusterState, Code, Asks, Name, {Kind::NumberOut, "state"});
    CLUSTER_CALL(clusapi, OpenClusterResource, Handle, Asks, Cluster, Name);
    CLUSTER_CALL(clusapi, CloseClusterResource, Truth, Closes, Resource);
    CLUSTER_CALL(clusapi, OpenClusterGroup, Handle, Asks, Cluster, Name);
    CLUSTER_CALL(clusapi, CloseClusterGroup, Truth, Closes, Group);
    CLUSTER_CALL(clusapi, OpenClusterNode, Handle, Asks, Cluster, Name);
    CLUSTER_CALL(clusapi, CloseClusterNode, Truth, Closes, Node);
    CLUSTER_CALL(clusapi, OpenClusterNetwork, Handle, Asks, Cluster, Name);
    CLUSTER_CALL(clusapi, CloseClusterNetwork, Truth, Closes, Network);
    CLUSTER_CALL(clusapi, OpenClusterNetInterface, Handle, Asks, Cluster, Name);
    CLUSTER_CALL(clusapi, CloseClusterNetInterface, Truth, Closes, Interface_);
    CLUSTER_CALL(clusapi, GetClusterFromResource, Handle, Asks, Resource);
    CLUSTER_CALL(clusapi, GetClusterFromGroup, Handle, Asks, Group);
    CLUSTER_CALL(clusapi, GetClusterFromNode, Handle, Asks, Node);
}

void AddEnumerations(std::vector<Line>& lines) {
    CLUSTER_CALL(clusapi, ClusterOpenEnum, Handle, Asks, Cluster, Mask);
    CLUSTER_CALL(clusapi, ClusterEnum, Code, Asks, Enumeration, Index, Type, NameOut);
    CLUSTER_CALL(clusapi, ClusterCloseEnum, Code, Closes, Enumeration);
    CLUSTER_CALL(clusapi, ClusterGetEnumCount, Code, Asks, Enumeration);
    CLUSTER_CALL(clusapi, ClusterGroupOpenEnum, Handle, Asks, Group, Mask);
    CLUSTER_CALL(clusapi, ClusterGroupEnum, Code, Asks, Enumeration, Index, Type, NameOut);
    CLUSTER_CALL(clusapi, ClusterGroupCloseEnum, Code, Closes, Enumeration);
    CLUSTER_CALL(clusapi, ClusterGroupGetEnumCount, Code, Asks, Enumeration);
    CLUSTER_CALL(clusapi, ClusterResourceOpenEnum, Handle, Asks, Resource, Mask);
    CLUSTER_CALL(clusapi, ClusterResourceEnum, Code, Asks, Enumeration, Index, Type, NameOut);
    CLUSTER_CALL(clusapi, ClusterResourceCloseEnum, Code, Closes, Enumeration);
    CLUSTER_CALL(clusapi, ClusterResourceGetEnumCount, Code, Asks, Enumeration);
    CLUSTER_CALL(clusapi, ClusterNodeOpenEnum, Handle, Asks, Node, Mask);
    CLUSTER_CALL(clusapi, ClusterNodeEnum, Code, Asks, Enumeration, Index, Type, NameOut);
    CLUSTER_CALL(clusapi, ClusterNodeCloseEnum, Code, Closes, Enumeration);
    CLUSTER_CALL(clusapi, ClusterNetworkOpenEnum, Handle, Asks, Network, Mask);
    CLUSTER_CALL(clusapi, ClusterNetworkEnum, Code, Asks, Enumeration, Index, Type, NameOut);
    CLUSTER_CALL(clusapi, ClusterNetworkCloseEnum, Code, Closes, Enumeration);
}

void AddStates(std::vector<Line>& lines) {
    CLUSTER_CALL(clusapi, GetClusterResourceState, State, Asks, Resource, {Kind::NameOut, "node"},
                 {Kind::NameOut, "group"});
    CLUSTER_CALL(clusapi, GetClusterGroupState, State, Asks, Group, {Kind::NameOut, "node"});
    CLUSTER_CALL(clusapi, GetClusterNodeState, State, Asks, Node);
    CLUSTER_CALL(clusapi, GetClusterNodeId, Code, Asks, Node, {Kind::NameOut, "id"});
    CLUSTER_CALL(clusapi, GetClusterNetworkState, State, Asks, Network);
    CLUSTER_CALL(clusapi, GetClusterNetworkId, Code, Asks, Network, {Kind::NameOut, "id"});
    CLUSTER_CALL(clusapi, GetClusterNetInterfaceState, State, Asks, Interface_);
    CLUSTER_CALL(clusapi, GetClusterNetInterface, Code, Asks, Cluster, {Kind::Text, "node"}, {Kind::Text, "network"},
                 {Kind::NameOut, "interface"});
    CLUSTER_CALL(clusapi, GetClusterResourceNetworkName, Truth, Asks, Resource, NameOut);
    CLUSTER_CALL(clusapi, CanResourceBeDependent, Truth, Asks, Resource, {Kind::Handle, "other"});
    CLUSTER_CALL(clusapi, CreateClusterNotifyPort, Handle, Asks, Port, Cluster, {Kind::Number, "filter"}, Key);
    CLUSTER_CALL(clusapi, RegisterClusterNotify, Code, Asks, Port, {Kind::Number, "filter"}, {Kind::Handle, "object"},
                 Key);
    CLUSTER_CALL(clusapi, GetClusterNotify, Code, Asks, Port, {Kind::KeyOut, "key"}, {Kind::NumberOut, "filter"},
                 NameOut, {Kind::Number, "milliseconds"});
    CLUSTER_CALL(clusapi, CloseClusterNotifyPort, Truth, Closes, Port);
}

void AddControls(std::vector<Line>& lines) {
    CLUSTER_CALL(clusapi, ClusterResourceControl, Code, ByControl, Resource, Host, Control, In, Out);
    CLUSTER_CALL(clusapi, ClusterGroupControl, Code, ByControl, Group, Host, Control, In, Out);
    CLUSTER_CALL(clusapi, ClusterNodeControl, Code, ByControl, Node, Host, Control, In, Out);
    CLUSTER_CALL(clusapi, ClusterControl, Code, ByControl, Cluster, Host, Control, In, Out);
    CLUSTER_CALL(clusapi, ClusterNetworkControl, Code, ByControl, Network, Host, Control, In, Out);
    CLUSTER_CALL(clusapi, ClusterNetInterfaceControl, Code, ByControl, Interface_, Host, Control, In, Out);
    CLUSTER_CALL(clusapi, ClusterResourceTypeControl, Code, ByControl, Cluster, Name, Host, Control, In, Out);
}

void AddChanges(std::vector<Line>& lines) {
    CLUSTER_CALL(clusapi, CreateClusterResource, Handle, Changes, Group, Name, {Kind::Text, "type"},
                 {Kind::Number, "flags"});
    CLUSTER_CALL(clusapi, DeleteClusterResource, Code, Changes, Resource);
    CLUSTER_CALL(clusapi, OnlineClusterResource, Code, Changes, Resource);
    CLUSTER_CALL(clusapi, OfflineClusterResource, Code, Changes, Resource);
    CLUSTER_CALL(clusapi, FailClusterResource, Code, Changes, Resource);
    CLUSTER_CALL(clusapi, AddClusterResourceDependency, Code, Changes, Resource, {Kind::Handle, "other"});
    CLUSTER_CALL(clusapi, RemoveClusterResourceDependency, Code, Changes, Resource, {Kind::Handle, "other"});
    CLUSTER_CALL(clusapi, AddClusterResourceNode, Code, Changes, Resource, Node);
    CLUSTER_CALL(clusapi, RemoveClusterResourceNode, Code, Changes, Resource, Node);
    CLUSTER_CALL(clusapi, ChangeClusterResourceGroup, Code, Changes, Resource, Group);
    CLUSTER_CALL(clusapi, SetClusterResourceName, Code, Changes, Resource, Name);
    CLUSTER_CALL(clusapi, CreateClusterGroup, Handle, Changes, Cluster, Name);
    CLUSTER_CALL(clusapi, DeleteClusterGroup, Code, Changes, Group);
    CLUSTER_CALL(clusapi, SetClusterGroupName, Code, Changes, Group, Name);
    CLUSTER_CALL(clusapi, OnlineClusterGroup, Code, Changes, Group, Node);
    CLUSTER_CALL(clusapi, OfflineClusterGroup, Code, Changes, Group);
    CLUSTER_CALL(clusapi, MoveClusterGroup, Code, Changes, Group, Node);
    CLUSTER_CALL(clusapi, PauseClusterNode, Code, Changes, Node);
    CLUSTER_CALL(clusapi, ResumeClusterNode, Code, Changes, Node);
    CLUSTER_CALL(clusapi, EvictClusterNode, Code, Changes, Node);
    CLUSTER_CALL(clusapi, SetClusterName, Code, Changes, Cluster, Name);
    CLUSTER_CALL(clusapi, SetClusterNetworkName, Code, Changes, Network, Name);
    CLUSTER_CALL(clusapi, SetClusterQuorumResource, Code, Changes, Resource, {Kind::Text, "device"},
                 {Kind::Number, "logSize"});
}

void AddUtilities(std::vector<Line>& lines) {
    const Argument list = {Kind::Properties, "list"};
    const Argument property = {Kind::PropertyName, "property"};
    CLUSTER_CALL(resutils, ResUtilFindSzProperty, Code, Asks, list, property, {Kind::TextCopy, "value"});
    CLUSTER_CALL(resutils, ResUtilFindDwordProperty, Code, Asks, list, property, {Kind::NumberOut, "value"});
    CLUSTER_CALL(resutils, ResUtilGetResourceDependency, Handle, Asks, Resource, {Kind::Text, "type"});
    CLUSTER_CALL(resutils, ResUtilGetResourceDependencyByClass, Handle, Asks, Cluster, Resource, {Kind::Class, "class"},
                 {Kind::Number, "recurse"});
    CLUSTER_CALL(resutils, ResUtilResourceTypesEqual, Truth, Asks, {Kind::Text, "type"}, Resource);
}

std::vector<Call> MakeTable() {
    std::vector<Line> lines;
    AddOpening(lines);
    AddEnumerations(lines);
    AddStates(lines);
    AddControls(lines);
    AddChanges(lines);
    AddUtilities(lines);
    static std::vector<SetRow> setters; // the rows have their addresses only when all are there
    std::vector<Call> calls;
    for (const Line& line : lines) {
        calls.push_back(line.call);
        setters.push_back(line.setRow);
    }
    for (std::size_t i = 0; i < calls.size(); ++i) {
        setters[i](&calls[i]);
    }
    return calls; // moved: the rows stay where they are
}

} // namespace

std::vector<Call>& CallTable() {
    static std::vector<Call> table = MakeTable();
    return table;
}

Call* FindCall(const std::string& name) {
    static const std::unordered_map<std::string, Call*> byName = [] {
        std::unordered_map<std::string, Call*> map;
        for (Call& call : CallTable()) {
            map[call.name] = &call;
        }
        return map;
    }();
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : found->second;
}

std::size_t SlotsOf(Kind kind) {
    switch (kind) {
    case Kind::BytesOut:
        return 3;
    case Kind::NameOut:
    case Kind::BytesIn:
    case Kind::Properties:
        return 2;
    default:
        return 1;
    }
}

} // namespace recording
