// The exports of clusapi.dll that make, change and remove resources and tell their states.
#include "Call.h"
#include "Engine.h"
#include "ExportedApi.h"

using namespace clussim;

namespace {

// A change to one resource.
template <typename Change> DWORD ChangeResource(Call& call, HRESOURCE handle, Change change) {
    if (const Fault* fault = call.HitHandle(handle)) {
        return call.Return(fault->code);
    }
    return call.Return(call.service().Change([&](Model& model) {
        Resource* resource = nullptr;
        const Code code = call.ResourceOf(&model, handle, resource);
        return code != ERROR_SUCCESS ? code : change(model, *resource);
    }));
}

} // namespace

HRESOURCE WINAPI CreateClusterResource(HGROUP handle, LPCWSTR name, LPCWSTR type, DWORD flags) {
    Call call("CreateClusterResource",
              {Arg("group", handle), Arg("name", name), Arg("type", type), Arg("flags", flags)});
    if (const Fault* fault = call.Hit(name)) {
        return call.NotOpened<HRESOURCE>(fault->code);
    }
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Group);
    if (!entry) {
        return call.NotOpened<HRESOURCE>(ERROR_INVALID_HANDLE);
    }
    if (!name || !type || flags > CLUSTER_RESOURCE_SEPARATE_MONITOR) {
        return call.NotOpened<HRESOURCE>(ERROR_INVALID_PARAMETER);
    }
    std::wstring id;
    const Code code = call.service().Change([&](Model& model) {
        Group* group = model.FindGroup(entry->object);
        return group ? model.Create(*group, name, type, id) : static_cast<Code>(ERROR_GROUP_NOT_FOUND);
    });
    return code == ERROR_SUCCESS ? call.Opened<HRESOURCE>(HandleEntry(HandleKind::Resource, id))
                                 : call.NotOpened<HRESOURCE>(code);
}

DWORD WINAPI DeleteClusterResource(HRESOURCE handle) {
    Call call("DeleteClusterResource", {Arg("resource", handle)});
    return ChangeResource(call, handle, [](Model& model, Resource& resource) { return model.Delete(resource); });
}

DWORD WINAPI OnlineClusterResource(HRESOURCE handle) {
    Call call("OnlineClusterResource", {Arg("resource", handle)});
    return ChangeResource(call, handle, [&](Model& model, Resource& resource) {
        return Engine(model, call.service().Now()).Online(resource);
    });
}

DWORD WINAPI OfflineClusterResource(HRESOURCE handle) {
    Call call("OfflineClusterResource", {Arg("resource", handle)});
    return ChangeResource(call, handle, [&](Model& model, Resource& resource) {
        return Engine(model, call.service().Now()).Offline(resource);
    });
}

DWORD WINAPI FailClusterResource(HRESOURCE handle) {
    Call call("FailClusterResource", {Arg("resource", handle)});
    return ChangeResource(call, handle, [&](Model& model, Resource& resource) {
        // What comes online or goes offline may fail by itself, but not on request.
        return resource.state == StateOnline ? Engine(model, call.service().Now()).Fail(resource)
                                             : static_cast<Code>(ERROR_RESMON_INVALID_STATE);
    });
}

CLUSTER_RESOURCE_STATE WINAPI GetClusterResourceState(HRESOURCE handle, LPWSTR node, LPDWORD cchNode, LPWSTR group,
                                                      LPDWORD cchGroup) {
    Call call("GetClusterResourceState", {Arg("resource", handle)});
    const Fault* fault = call.HitHandle(handle);
    Resource* resource = nullptr;
    Code code = call.ResourceOf(call.service().Running(), handle, resource);
    if (code == ERROR_SUCCESS && !fault) {
        code = CodeOf(resource->unread, "state");
    }
    if (code != ERROR_SUCCESS || (fault && !fault->forcesState)) {
        const Code reason = fault && !fault->forcesState ? fault->code : code;
        return static_cast<CLUSTER_RESOURCE_STATE>(call.ReturnState(StateUnknown, reason));
    }
    // A count without a buffer is ignored.
    const Code nodeCode = node ? CopyName(OwnerName(*resource->group), node, cchNode) : ERROR_SUCCESS;
    const Code groupCode = group ? CopyName(resource->group->name, group, cchGroup) : ERROR_SUCCESS;
    if (nodeCode != ERROR_SUCCESS || groupCode != ERROR_SUCCESS) {
        const Code reason = nodeCode != ERROR_SUCCESS ? nodeCode : groupCode;
        return static_cast<CLUSTER_RESOURCE_STATE>(call.ReturnState(StateUnknown, reason));
    }
    return static_cast<CLUSTER_RESOURCE_STATE>(call.ReturnState(fault ? fault->state : resource->state));
}

DWORD WINAPI AddClusterResourceDependency(HRESOURCE handle, HRESOURCE dependsOn) {
    Call call("AddClusterResourceDependency", {Arg("resource", handle), Arg("dependsOn", dependsOn)});
    return ChangeResource(call, handle, [&](Model& model, Resource& resource) {
        Resource* provider = nullptr;
        const Code code = call.ResourceOf(&model, dependsOn, provider);
        return code != ERROR_SUCCESS ? code : model.AddDependency(resource, *provider);
    });
}

DWORD WINAPI RemoveClusterResourceDependency(HRESOURCE handle, HRESOURCE dependsOn) {
    Call call("RemoveClusterResourceDependency", {Arg("resource", handle), Arg("dependsOn", dependsOn)});
    return ChangeResource(call, handle, [&](Model& model, Resource& resource) {
        Resource* provider = nullptr;
        const Code code = call.ResourceOf(&model, dependsOn, provider);
        return code != ERROR_SUCCESS ? code : model.RemoveDependency(resource, *provider);
    });
}

DWORD WINAPI AddClusterResourceNode(HRESOURCE handle, HNODE nodeHandle) {
    Call call("AddClusterResourceNode", {Arg("resource", handle), Arg("node", nodeHandle)});
    return ChangeResource(call, handle, [&](Model& model, Resource& resource) {
        const HandleEntry* entry = call.service().handles.Find(nodeHandle, HandleKind::Node);
        Node* node = entry ? model.FindNode(entry->object) : nullptr;
        return node ? model.AddOwner(resource, *node) : static_cast<Code>(ERROR_INVALID_HANDLE);
    });
}
