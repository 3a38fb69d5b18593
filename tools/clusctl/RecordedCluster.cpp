#include "RecordedCluster.h"

#include "ClusterApi.h"
#include "Failure.h"
#include "HeardCall.h"

#include <CallTable.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace {

const std::size_t NoObject = static_cast<std::size_t>(-1); // the cluster itself

void AddOnce(Json& list, const std::string& name) {
    if (std::find(list.begin(), list.end(), name) == list.end()) {
        list.push_back(name);
    }
}

// Too little room, the end of a list, and a lost cluster tell nothing of the object.
bool IsRefusal(std::uint32_t code) {
    return code != ERROR_SUCCESS && code != ERROR_MORE_DATA && code != ERROR_NO_MORE_ITEMS &&
           code != ERROR_INVALID_HANDLE && !IsLost(code) && KindOfCode(code, Errors::Failed).exitCode != ExitNoAnswer;
}

// What stands for one item of a mask.
struct Item {
    std::uint64_t bit;
    const char* part;  // of the object that is asked; null for a list of members
    RecordedKind kind; // of the items
};

const Item ItemsOfCluster[] = {{CLUSTER_ENUM_NODE, nullptr, RecordedKind::Node},
                               {CLUSTER_ENUM_RESOURCE, nullptr, RecordedKind::Resource},
                               {CLUSTER_ENUM_GROUP, nullptr, RecordedKind::Group},
                               {CLUSTER_ENUM_NETWORK, nullptr, RecordedKind::Network},
                               {CLUSTER_ENUM_NETINTERFACE, nullptr, RecordedKind::Interface}};
const Item ItemsOfGroup[] = {{CLUSTER_GROUP_ENUM_CONTAINS, nullptr, RecordedKind::Resource},
                             {CLUSTER_GROUP_ENUM_NODES, "preferredOwners", RecordedKind::Node}};
const Item ItemsOfResource[] = {{CLUSTER_RESOURCE_ENUM_DEPENDS, "dependsOn", RecordedKind::Resource},
                                {CLUSTER_RESOURCE_ENUM_NODES, "possibleOwners", RecordedKind::Node}};

struct ObjectCalls {
    RecordedKind kind;
    const char* opens;
    const char* argument; // of calls on it
    const char* asksState;
    const char* controls;
};

const ObjectCalls Calls[] = {
    {RecordedKind::Node, "OpenClusterNode", "node", "GetClusterNodeState", "ClusterNodeControl"},
    {RecordedKind::Group, "OpenClusterGroup", "group", "GetClusterGroupState", "ClusterGroupControl"},
    {RecordedKind::Resource, "OpenClusterResource", "resource", "GetClusterResourceState", "ClusterResourceControl"},
    {RecordedKind::Network, "OpenClusterNetwork", "network", "GetClusterNetworkState", "ClusterNetworkControl"},
    {RecordedKind::Interface, "OpenClusterNetInterface", "interface", "GetClusterNetInterfaceState",
     "ClusterNetInterfaceControl"}};

// What a handle stands for: an object, or a list of what it has.
struct Handle {
    Handle() noexcept(false) {
    } // as its values, whose constructors may throw
    RecordedKind kind = RecordedKind::Node;
    std::size_t object = NoObject;
    std::uint64_t mask = 0;
    std::optional<std::uint64_t> count; // as the cluster says it
    std::set<std::uint64_t> read;       // indexes
    std::map<std::string, Json> lists;  // by part
};

class Listener {
public:
    RecordedCluster Hear(const recording::Recording& recording);

private:
    void HearCall(const HeardCall& call);
    bool HearObject(const HeardCall& call, const ObjectCalls& calls);
    void HearOpening(const HeardCall& call, const ObjectCalls& calls);
    void HearState(const HeardCall& call, RecordedKind kind, std::size_t index);
    void HearControl(const HeardCall& call, RecordedKind kind, std::size_t index);
    void HearChange(const HeardCall& call);
    void HearInformation(const HeardCall& call);
    void HearListOpening(const HeardCall& call);
    void HearItem(const HeardCall& call, Handle& list);
    void EndList(const Handle& list);
    void RefuseList(const Handle& list, std::uint32_t code);
    Handle HandleIn(const HeardCall& call, const char* argument) const;
    std::size_t There(RecordedKind kind, const std::string& name);
    RecordedObjects& Of(RecordedKind kind) {
        return m_objects[static_cast<std::size_t>(kind)];
    }
    template <typename Visit> static void ForEachItem(const Handle& list, const Visit& visit);
    static void Tell(RecordedPart& part, Json value);
    static void Refuse(RecordedPart& part, std::uint32_t code);

    RecordedCluster m_cluster;
    RecordedObjects m_objects[RecordedKinds];
    std::map<std::uint64_t, Handle> m_handles;
};

void Listener::Tell(RecordedPart& part, Json value) {
    part.value = std::move(value);
    part.code = 0;
    part.isCut = false;
}

void Listener::Refuse(RecordedPart& part, std::uint32_t code) {
    if (IsRefusal(code) && part.value.is_null()) {
        part.code = code;
    }
}

std::size_t Listener::There(RecordedKind kind, const std::string& name) {
    const std::size_t index = Of(kind).Named(name);
    Of(kind).At(index).isThere = true;
    return index;
}

Handle Listener::HandleIn(const HeardCall& call, const char* argument) const {
    const auto handle = m_handles.find(NumberIn(call.in, argument));
    return handle == m_handles.end() ? Handle() : handle->second;
}

template <typename Visit> void Listener::ForEachItem(const Handle& list, const Visit& visit) {
    const auto each = [&](const Item* begin, const Item* end) {
        for (const Item* item = begin; item != end; ++item) {
            if ((list.mask & item->bit) != 0) {
                visit(*item);
            }
        }
    };
    if (list.object == NoObject) {
        each(std::begin(ItemsOfCluster), std::end(ItemsOfCluster));
    } else if (list.kind == RecordedKind::Group) {
        each(std::begin(ItemsOfGroup), std::end(ItemsOfGroup));
    } else if (list.kind == RecordedKind::Resource) {
        each(std::begin(ItemsOfResource), std::end(ItemsOfResource));
    }
}

void Listener::HearCall(const HeardCall& call) {
    for (const ObjectCalls& calls : Calls) {
        if (HearObject(call, calls)) {
            return;
        }
    }
    const bool isOpening =
        call.name == "ClusterOpenEnum" || call.name == "ClusterGroupOpenEnum" || call.name == "ClusterResourceOpenEnum";
    const auto list = m_handles.find(NumberIn(call.in, "enumeration"));
    if (isOpening) {
        HearListOpening(call);
    } else if (list != m_handles.end()) {
        HearItem(call, list->second);
    } else if (call.name == "GetClusterInformation") {
        HearInformation(call);
    } else if (call.name == "GetClusterNetInterface" && call.result == ERROR_SUCCESS) {
        RecordedObject& card =
            Of(RecordedKind::Interface).At(There(RecordedKind::Interface, TextIn(call.out, "interface")));
        Tell(card.parts["node"], TextIn(call.in, "node"));
        Tell(card.parts["network"], TextIn(call.in, "network"));
    } else if (call.name == "ClusterResourceTypeControl" && call.result == ERROR_SUCCESS &&
               NumberIn(call.in, "control") == CLUSCTL_RESOURCE_TYPE_GET_CLASS_INFO) {
        const recording::Bytes bytes = BytesIn(call.out, "output");
        if (!bytes.empty()) {
            m_cluster.classes[TextIn(call.in, "name")] = ClassIn(bytes);
        }
    } else if (call.name == "ResUtilGetResourceDependency" || call.name == "ResUtilGetResourceDependencyByClass") {
        if (call.result != 0) {
            Handle& handle = m_handles[static_cast<std::uint64_t>(call.result)] = Handle();
            handle.kind = RecordedKind::Resource;
            handle.object = Of(handle.kind).Unnamed();
            Of(handle.kind).At(handle.object).isThere = true;
        }
    } else {
        HearChange(call);
    }
}

bool Listener::HearObject(const HeardCall& call, const ObjectCalls& calls) {
    if (call.name == calls.opens) {
        HearOpening(call, calls);
        return true;
    }
    const Handle handle = HandleIn(call, calls.argument);
    const bool isKnown = handle.object != NoObject && handle.kind == calls.kind;
    if (call.name == calls.asksState) {
        if (isKnown) {
            HearState(call, calls.kind, handle.object);
        }
        return true;
    }
    if (call.name == calls.controls) {
        if (isKnown) {
            HearControl(call, calls.kind, handle.object);
        }
        return true;
    }
    return false;
}

void Listener::HearOpening(const HeardCall& call, const ObjectCalls& calls) {
    const std::string name = TextIn(call.in, "name");
    const std::size_t index = Of(calls.kind).Named(name);
    if (call.result == 0) { // whether there is one is for others to say
        Refuse(Of(calls.kind).At(index).parts["open"], call.lastError);
        return;
    }
    RecordedObject& object = Of(calls.kind).At(index);
    object.isThere = true;
    object.parts["open"].code = 0;
    Handle& handle = m_handles[static_cast<std::uint64_t>(call.result)] = Handle();
    handle.kind = calls.kind;
    handle.object = index;
}

void Listener::HearState(const HeardCall& call, RecordedKind kind, std::size_t index) {
    std::map<std::string, RecordedPart>& parts = Of(kind).At(index).parts;
    const char* const part = kind == RecordedKind::Group ? "owner" : "state";
    if (call.result == -1) {
        Refuse(parts[part], call.lastError);
        return;
    }
    const std::string node = TextIn(call.out, "node");
    const std::string group = TextIn(call.out, "group");
    if (!node.empty()) {
        There(RecordedKind::Node, node);
    }
    if (kind != RecordedKind::Group) {
        Tell(parts[part], call.result);
    } else if (!node.empty()) {
        Tell(parts[part], node);
    }
    if (kind == RecordedKind::Resource && !group.empty()) {
        Tell(parts["group"], group);
        RecordedObject& owned = Of(RecordedKind::Group).At(There(RecordedKind::Group, group));
        if (!node.empty()) {
            Tell(owned.parts["ownerByResource"], node);
        }
    }
}

void Listener::HearControl(const HeardCall& call, RecordedKind kind, std::size_t index) {
    const auto control = static_cast<std::uint32_t>(NumberIn(call.in, "control"));
    const recording::Bytes bytes = BytesIn(call.out, "output");
    const bool isTold = call.result == ERROR_SUCCESS && !bytes.empty(); // else a size only
    const AskedPart* const asked = PartAsked(kind, control);
    if (AsksName(control) && isTold) {
        Of(kind).Spell(index, NameIn(bytes));
    }
    if (asked == nullptr) {
        HearChange(call);
        return;
    }
    RecordedPart& part = Of(kind).At(index).parts[asked->part];
    if (!isTold) {
        Refuse(part, static_cast<std::uint32_t>(call.result));
        return;
    }
    try {
        Tell(part, asked->read(bytes));
    } catch (const Failure&) { // malformed, and marked as a snapshot marks it
        Refuse(part, ERROR_INVALID_DATA);
    }
}

void Listener::HearInformation(const HeardCall& call) {
    const std::string name = TextIn(call.out, "name");
    if (!name.empty()) {
        Tell(m_cluster.name, name);
    }
    const recording::Bytes version = BytesIn(call.out, "version");
    if (version.size() >= sizeof(DWORD) + sizeof(WORD)) {
        WORD major = 0;
        std::memcpy(&major, version.data() + sizeof(DWORD), sizeof(major));
        Tell(m_cluster.version, major);
    } else if (!call.in.value("version", Json()).is_null()) {
        Refuse(m_cluster.version, static_cast<std::uint32_t>(call.result));
    }
}

void Listener::HearListOpening(const HeardCall& call) {
    Handle list;
    const Handle group = HandleIn(call, "group");
    const Handle resource = HandleIn(call, "resource");
    if (call.name == "ClusterGroupOpenEnum") {
        list = group;
    } else if (call.name == "ClusterResourceOpenEnum") {
        list = resource;
    }
    if (call.name != "ClusterOpenEnum" && list.object == NoObject) {
        return; // of an object that nothing is known of
    }
    list.mask = NumberIn(call.in, "type");
    if (call.result == 0) {
        RefuseList(list, call.lastError);
    } else {
        m_handles[static_cast<std::uint64_t>(call.result)] = list;
    }
}

void Listener::HearItem(const HeardCall& call, Handle& list) {
    const bool isItem =
        call.name == "ClusterEnum" || call.name == "ClusterGroupEnum" || call.name == "ClusterResourceEnum";
    if (call.name.find("GetEnumCount") != std::string::npos) {
        list.count = static_cast<std::uint64_t>(call.result);
        return;
    }
    if (!isItem) { // closed
        EndList(list);
        m_handles.erase(NumberIn(call.in, "enumeration"));
        return;
    }
    if (call.result == ERROR_NO_MORE_ITEMS) {
        list.count = NumberIn(call.in, "index");
        EndList(list);
        return;
    }
    if (call.result != ERROR_SUCCESS) {
        RefuseList(list, static_cast<std::uint32_t>(call.result));
        return;
    }
    const std::string name = TextIn(call.out, "name");
    const std::uint64_t type = NumberIn(call.out, "type");
    list.read.insert(NumberIn(call.in, "index"));
    ForEachItem(list, [&](const Item& item) {
        if (item.bit != type || name.empty()) {
            return;
        }
        if (item.part != nullptr) {
            AddOnce(list.lists.emplace(item.part, Json::array()).first->second, name);
        } else if (list.object == NoObject) {
            Of(item.kind).List(name);
        } else { // a member of the group
            RecordedObject& member = Of(item.kind).At(There(item.kind, name));
            Tell(member.parts["group"], Of(list.kind).At(list.object).name);
        }
        if (item.part != nullptr) {
            There(item.kind, name);
        }
    });
}

// Read to its end, or given up before.
void Listener::EndList(const Handle& list) {
    const bool isWhole = list.count == list.read.size();
    ForEachItem(list, [&](const Item& item) {
        if (item.part == nullptr) {
            bool& isListed = m_cluster.isListed[static_cast<std::size_t>(item.kind)];
            isListed = isListed || (isWhole && list.object == NoObject);
            return;
        }
        const auto heard = list.lists.find(item.part);
        RecordedPart& part = Of(list.kind).At(list.object).parts[item.part];
        if (isWhole || (heard != list.lists.end() && part.value.is_null())) {
            Tell(part, heard == list.lists.end() ? Json::array() : heard->second);
            part.isCut = !isWhole;
        }
    });
}

void Listener::RefuseList(const Handle& list, std::uint32_t code) {
    ForEachItem(list, [&](const Item& item) {
        if (item.part != nullptr) {
            Refuse(Of(list.kind).At(list.object).parts[item.part], code);
        }
    });
}

void Listener::HearChange(const HeardCall& call) {
    const recording::Call* const known = recording::FindCall(call.name);
    const bool isByControl = known != nullptr && known->effect == recording::Effect::ByControl;
    const bool isChange =
        known != nullptr &&
        (known->effect == recording::Effect::Changes ||
         (isByControl && recording::IsChangingControl(static_cast<unsigned long>(NumberIn(call.in, "control")))));
    const bool isHandle = known != nullptr && known->result == recording::Result::Handle;
    if (!isChange || (isHandle ? call.result == 0 : call.result != ERROR_SUCCESS)) {
        return;
    }
    m_cluster.hasChanged = true;
    const std::string name = TextIn(call.in, "name");
    const Handle group = HandleIn(call, "group");
    const Handle resource = HandleIn(call, "resource");
    if (call.name == "CreateClusterResource" || call.name == "CreateClusterGroup") {
        Handle made;
        made.kind = call.name == "CreateClusterGroup" ? RecordedKind::Group : RecordedKind::Resource;
        made.object = Of(made.kind).Spell(There(made.kind, name), name);
        RecordedObject& object = Of(made.kind).At(made.object);
        if (made.kind == RecordedKind::Resource) {
            Tell(object.parts["type"], TextIn(call.in, "type"));
            if (group.object != NoObject) {
                Tell(object.parts["group"], Of(RecordedKind::Group).At(group.object).name);
            }
        }
        m_handles[static_cast<std::uint64_t>(call.result)] = made;
    } else if (call.name == "DeleteClusterResource" && resource.object != NoObject) {
        Of(RecordedKind::Resource).At(resource.object) = RecordedObject();
    } else if (call.name == "DeleteClusterGroup" && group.object != NoObject) {
        Of(RecordedKind::Group).At(group.object) = RecordedObject();
    }
}

RecordedCluster Listener::Hear(const recording::Recording& recording) {
    for (const recording::RecordedCall& call : recording.calls) {
        if (!call.isRefused) {
            HearCall(HeardCall(call));
        }
    }
    for (const auto& handle : m_handles) { // lists that were never closed
        if (handle.second.mask != 0) {
            EndList(handle.second);
        }
    }
    Of(RecordedKind::Resource).JoinByIds();
    for (std::size_t kind = 0; kind < RecordedKinds; ++kind) {
        m_cluster.objects[kind] = m_objects[kind].Take();
    }
    return std::move(m_cluster);
}

} // namespace

RecordedCluster HearRecording(const recording::Recording& recording) {
    return Listener().Hear(recording);
}
