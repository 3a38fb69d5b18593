// The notification ports of clusapi.dll: what changes in the cluster is told to whoever waits for it.
#include "Call.h"
#include "ExportedApi.h"
#include "Notifications.h"

#include <algorithm>

using namespace clussim;

namespace {

const DWORD PollMs = 50; // how often a waiting call looks

// The kinds of change that a handle of a kind may be registered for.
DWORD ChangesOf(HandleKind kind) {
    switch (kind) {
    case HandleKind::Node:
        return CLUSTER_CHANGE_NODE_STATE | CLUSTER_CHANGE_NODE_DELETED | CLUSTER_CHANGE_NODE_PROPERTY;
    case HandleKind::Resource:
        return CLUSTER_CHANGE_RESOURCE_STATE | CLUSTER_CHANGE_RESOURCE_DELETED | CLUSTER_CHANGE_RESOURCE_PROPERTY;
    case HandleKind::Group:
        return CLUSTER_CHANGE_GROUP_STATE | CLUSTER_CHANGE_GROUP_DELETED | CLUSTER_CHANGE_GROUP_PROPERTY;
    default:
        return 0;
    }
}

// The port, or null: then the handle is none, or is stale.
NotificationPort* PortOf(Service& service, const void* handle) {
    const HandleEntry* const entry = service.handles.Find(handle, HandleKind::Port);
    return entry ? entry->port.get() : nullptr;
}

} // namespace

HCHANGE WINAPI CreateClusterNotifyPort(HCHANGE handle, HCLUSTER cluster, DWORD filter, DWORD_PTR key) {
    Call call("CreateClusterNotifyPort", {Arg("port", handle), Arg("cluster", cluster), Arg("filter", filter)});
    if (const Fault* fault = call.Hit()) {
        return call.NotOpened<HCHANGE>(fault->code);
    }
    Service& service = call.service();
    const bool isNew = handle == static_cast<void*>(INVALID_HANDLE_VALUE);
    const bool isEmpty = isNew && static_cast<void*>(cluster) == INVALID_HANDLE_VALUE;
    if (!isEmpty && !service.handles.Find(cluster, HandleKind::Cluster)) {
        return call.NotOpened<HCHANGE>(ERROR_INVALID_HANDLE);
    }
    const Model* const model = service.Running();
    if (!isEmpty && !model) {
        return call.NotOpened<HCHANGE>(service.LostCode());
    }
    if (!isNew) { // another interest of a port that is there
        NotificationPort* const port = PortOf(service, handle);
        if (!port) {
            return call.NotOpened<HCHANGE>(ERROR_INVALID_HANDLE);
        }
        port->Add({filter, L"", key}, model);
        return static_cast<HCHANGE>(call.ReturnHandle(handle, 0));
    }
    HandleEntry entry(HandleKind::Port);
    entry.port = std::make_shared<NotificationPort>(model);
    if (!isEmpty) {
        entry.port->Add({filter, L"", key}, model);
    }
    return call.Opened<HCHANGE>(std::move(entry));
}

DWORD WINAPI RegisterClusterNotify(HCHANGE handle, DWORD filter, HANDLE object, DWORD_PTR key) {
    Call call("RegisterClusterNotify", {Arg("port", handle), Arg("filter", filter), Arg("object", object)});
    if (const Fault* fault = call.Hit()) {
        return call.Return(fault->code);
    }
    Service& service = call.service();
    NotificationPort* const port = PortOf(service, handle);
    const HandleEntry* const entry = service.handles.Peek(object);
    if (!port || !entry || entry->isStale) {
        return call.Return(ERROR_INVALID_HANDLE);
    }
    if (filter == 0 || (filter & ~ChangesOf(entry->kind)) != 0) {
        return call.Return(ERROR_INVALID_PARAMETER);
    }
    const Model* const model = service.Running();
    if (!model) {
        return call.Return(service.LostCode());
    }
    const Resource* const resource =
        entry->kind == HandleKind::Resource ? model->ResourceWithId(entry->object) : nullptr;
    if (entry->kind == HandleKind::Resource && !resource) {
        return call.Return(ERROR_RESOURCE_NOT_AVAILABLE);
    }
    port->Add({filter, resource ? resource->name : entry->object, key}, model);
    return call.Return(ERROR_SUCCESS);
}

DWORD WINAPI GetClusterNotify(HCHANGE handle, DWORD_PTR* key, LPDWORD change, LPWSTR name, LPDWORD cch,
                              DWORD milliseconds) {
    Call call("GetClusterNotify", {Arg("port", handle), Arg("milliseconds", milliseconds)});
    if (const Fault* fault = call.Hit()) {
        return call.Return(fault->code);
    }
    const DWORD begun = GetTickCount();
    for (;;) {
        NotificationPort* const port = PortOf(call.service(), handle); // it may be closed meanwhile
        if (!port) {
            return call.Return(ERROR_INVALID_HANDLE);
        }
        port->Look(call.service().Running());
        if (const Notification* const first = port->First()) {
            const Code copied = CopyName(first->name, name, cch);
            if (key) {
                *key = first->key;
            }
            if (change) {
                *change = first->change;
            }
            if (copied == ERROR_SUCCESS) { // else it waits for a larger buffer
                port->TakeFirst();
            }
            return call.Return(copied);
        }
        const DWORD waited = GetTickCount() - begun; // however far the count was
        if (milliseconds != INFINITE && waited >= milliseconds) {
            return call.Return(WAIT_TIMEOUT);
        }
        call.Wait(milliseconds == INFINITE ? PollMs : std::min(PollMs, milliseconds - waited));
    }
}

BOOL WINAPI CloseClusterNotifyPort(HCHANGE handle) {
    Call call("CloseClusterNotifyPort", {Arg("port", handle)});
    return call.ReturnBool(call.Close(handle, HandleKind::Port));
}
