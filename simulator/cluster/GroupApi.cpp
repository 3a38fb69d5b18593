// The exports of clusapi.dll that tell the states of groups and nodes and change them.
#include "Call.h"
#include "Engine.h"
#include "ExportedApi.h"

using namespace clussim;

namespace {

CLUSTER_GROUP_STATE StateOf(const Group& group) {
    const auto count = [&group](State state) -> std::size_t {
        const auto found = group.resourcesIn.find(state);
        return found == group.resourcesIn.end() ? 0 : found->second;
    };
    const auto online = count(StateOnline);
    if (count(StateFailed) > 0) {
        return ClusterGroupFailed;
    }
    if (count(StateOnlinePending) + count(StateOfflinePending) + count(StatePending) > 0) {
        return ClusterGroupPending;
    }
    if (online == 0) {
        return ClusterGroupOffline;
    }
    return online == group.resources.size() ? ClusterGroupOnline : ClusterGroupPartialOnline;
}

CLUSTER_NODE_STATE StateOf(const Node& node) {
    switch (node.status) {
    case Node::Status::Down:
        return ClusterNodeDown;
    case Node::Status::Paused:
        return ClusterNodePaused;
    case Node::Status::Joining:
        return ClusterNodeJoining;
    default:
        return ClusterNodeUp;
    }
}

// The group that a handle stands for, or the code that says why there is none.
Code GroupOf(Service& service, Model& model, HGROUP handle, Group*& group) {
    const HandleEntry* entry = service.handles.Find(handle, HandleKind::Group);
    if (!entry) {
        return ERROR_INVALID_HANDLE;
    }
    group = model.FindGroup(entry->object);
    return group ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_GROUP_NOT_AVAILABLE);
}

Code NodeOf(Service& service, Model& model, HNODE handle, Node*& node) {
    const HandleEntry* entry = service.handles.Find(handle, HandleKind::Node);
    if (!entry) {
        return ERROR_INVALID_HANDLE;
    }
    node = model.FindNode(entry->object);
    return node ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_CLUSTER_NODE_NOT_FOUND);
}

// `change(engine, group)` gives the code.
template <typename Change> DWORD ChangeGroup(Call& call, HGROUP handle, Change change) {
    if (const Fault* fault = call.HitHandle(handle)) {
        return call.Return(fault->code);
    }
    Service& service = call.service();
    return call.Return(service.Change([&](Model& model) {
        Group* group = nullptr;
        const Code code = GroupOf(service, model, handle, group);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        Engine engine(model, service.Now());
        return change(model, engine, *group);
    }));
}

// A group goes first to the node that it shall be on, where one is named.
Code MoveTo(Call& call, Model& model, Engine& engine, Group& group, HNODE destination) {
    Node* node = nullptr;
    const Code code = destination ? NodeOf(call.service(), model, destination, node) : ERROR_SUCCESS;
    return code != ERROR_SUCCESS ? code : engine.Move(group, node);
}

template <typename Change> DWORD ChangeNode(Call& call, HNODE handle, Change change) {
    if (const Fault* fault = call.HitHandle(handle)) {
        return call.Return(fault->code);
    }
    Service& service = call.service();
    return call.Return(service.Change([&](Model& model) {
        Node* node = nullptr;
        const Code code = NodeOf(service, model, handle, node);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        Engine engine(model, service.Now());
        return change(engine, *node);
    }));
}

} // namespace

CLUSTER_NODE_STATE WINAPI GetClusterNodeState(HNODE handle) {
    Call call("GetClusterNodeState", {Arg("node", handle)});
    const auto failed = [&call](Code code) {
        return static_cast<CLUSTER_NODE_STATE>(call.ReturnState(ClusterNodeStateUnknown, code));
    };
    if (const Fault* fault = call.HitHandle(handle)) {
        return failed(fault->code);
    }
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Node);
    if (!entry) {
        return failed(ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return failed(call.service().LostCode());
    }
    const Node* node = model->FindNode(entry->object);
    if (!node) {
        return failed(ERROR_CLUSTER_NODE_NOT_FOUND);
    }
    const Code unread = CodeOf(node->unread, "state");
    return unread != ERROR_SUCCESS ? failed(unread) : static_cast<CLUSTER_NODE_STATE>(call.ReturnState(StateOf(*node)));
}

CLUSTER_GROUP_STATE WINAPI GetClusterGroupState(HGROUP handle, LPWSTR nodeName, LPDWORD cch) {
    Call call("GetClusterGroupState", {Arg("group", handle)});
    const auto failed = [&call](Code code) {
        return static_cast<CLUSTER_GROUP_STATE>(call.ReturnState(ClusterGroupStateUnknown, code));
    };
    if (const Fault* fault = call.HitHandle(handle)) {
        return failed(fault->code);
    }
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Group);
    if (!entry) {
        return failed(ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return failed(call.service().LostCode());
    }
    const Group* group = model->FindGroup(entry->object);
    if (!group) {
        return failed(ERROR_GROUP_NOT_FOUND);
    }
    const Code unread = CodeOf(group->unread, "owner");
    if (unread != ERROR_SUCCESS) {
        return failed(unread);
    }
    const Code code = nodeName ? CopyName(OwnerName(*group), nodeName, cch) : ERROR_SUCCESS;
    return code != ERROR_SUCCESS ? failed(code) : static_cast<CLUSTER_GROUP_STATE>(call.ReturnState(StateOf(*group)));
}

DWORD WINAPI MoveClusterGroup(HGROUP handle, HNODE destination) {
    Call call("MoveClusterGroup", {Arg("group", handle), Arg("node", destination)});
    return ChangeGroup(call, handle, [&](Model& model, Engine& engine, Group& group) {
        return MoveTo(call, model, engine, group, destination);
    });
}

DWORD WINAPI OnlineClusterGroup(HGROUP handle, HNODE destination) {
    Call call("OnlineClusterGroup", {Arg("group", handle), Arg("node", destination)});
    return ChangeGroup(call, handle, [&](Model& model, Engine& engine, Group& group) {
        const Code moved = destination ? MoveTo(call, model, engine, group, destination) : ERROR_SUCCESS;
        return moved != ERROR_SUCCESS ? moved : engine.Online(group);
    });
}

DWORD WINAPI OfflineClusterGroup(HGROUP handle) {
    Call call("OfflineClusterGroup", {Arg("group", handle)});
    return ChangeGroup(call, handle, [](Model&, Engine& engine, Group& group) { return engine.Offline(group); });
}

DWORD WINAPI PauseClusterNode(HNODE handle) {
    Call call("PauseClusterNode", {Arg("node", handle)});
    return ChangeNode(call, handle, [](Engine& engine, Node& node) { return engine.Pause(node); });
}

DWORD WINAPI ResumeClusterNode(HNODE handle) {
    Call call("ResumeClusterNode", {Arg("node", handle)});
    return ChangeNode(call, handle, [](Engine& engine, Node& node) { return engine.Resume(node); });
}
