// The enumerations of clusapi.dll: of the cluster, of a group and of a resource. The whole list is taken when one is
// opened: what is deleted later is still listed.
#include "Call.h"
#include "ExportedApi.h"

using namespace clussim;

namespace {

const DWORD ClusterEnumKnown = CLUSTER_ENUM_ALL;
const DWORD ResourceEnumKnown = CLUSTER_RESOURCE_ENUM_ALL;

template <typename Objects> void List(HandleEntry& entry, DWORD type, const Objects& objects) {
    for (const auto* object : objects) {
        entry.items.emplace_back(type, object->name);
    }
}

template <typename Objects> void ListAll(HandleEntry& entry, DWORD type, const Objects& objects) {
    for (const auto& object : objects) {
        entry.items.emplace_back(type, object.name);
    }
}

DWORD Item(const char* callName, const void* handle, HandleKind kind, DWORD index, LPDWORD type, LPWSTR name,
           LPDWORD cch) {
    Call call(callName,
              {Arg("handle", handle), Arg("index", index), Arg("cch", cch ? static_cast<long long>(*cch) : 0)});
    const HandleEntry* entry = call.service().handles.Peek(handle);
    const bool isNamed = entry && entry->kind == kind && index < entry->items.size();
    if (const Fault* fault = call.HitHandle(handle, isNamed ? entry->items[index].second.c_str() : nullptr)) {
        return call.Return(fault->code);
    }
    entry = call.service().handles.Find(handle, kind);
    if (!entry) {
        return call.Return(ERROR_INVALID_HANDLE);
    }
    if (index >= entry->items.size()) {
        return call.Return(ERROR_NO_MORE_ITEMS);
    }
    if (type) {
        *type = entry->items[index].first;
    }
    return call.Return(CopyName(entry->items[index].second, name, cch));
}

DWORD CloseEnumeration(const char* callName, const void* handle, HandleKind kind) {
    Call call(callName, {Arg("handle", handle)});
    return call.Return(call.Close(handle, kind));
}

} // namespace

HCLUSENUM WINAPI ClusterOpenEnum(HCLUSTER cluster, DWORD mask) {
    Call call("ClusterOpenEnum", {Arg("cluster", cluster), Arg("type", mask)});
    if (const Fault* fault = call.Hit()) {
        return call.NotOpened<HCLUSENUM>(fault->code);
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return call.NotOpened<HCLUSENUM>(ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return call.NotOpened<HCLUSENUM>(call.service().LostCode());
    }
    if ((mask & ~ClusterEnumKnown) != 0 || (mask == 0 && !model->behaviour.emptyMaskIsEmptyList)) {
        return call.NotOpened<HCLUSENUM>(ERROR_INVALID_PARAMETER);
    }
    const bool asksNetworks = (mask & (CLUSTER_ENUM_NETWORK | CLUSTER_ENUM_NETINTERFACE)) != 0;
    const Code unread = asksNetworks ? CodeOf(model->unread, "networks") : static_cast<Code>(ERROR_SUCCESS);
    if (unread != ERROR_SUCCESS) {
        return call.NotOpened<HCLUSENUM>(unread);
    }
    HandleEntry entry(HandleKind::ClusterEnum);
    if (mask & CLUSTER_ENUM_NODE) {
        ListAll(entry, CLUSTER_ENUM_NODE, model->nodes);
    }
    if (mask & CLUSTER_ENUM_RESTYPE) {
        ListAll(entry, CLUSTER_ENUM_RESTYPE, model->types);
    }
    if (mask & CLUSTER_ENUM_RESOURCE) {
        ListAll(entry, CLUSTER_ENUM_RESOURCE, model->resources);
    }
    if (mask & CLUSTER_ENUM_GROUP) {
        ListAll(entry, CLUSTER_ENUM_GROUP, model->groups);
    }
    if (mask & CLUSTER_ENUM_NETWORK) {
        ListAll(entry, CLUSTER_ENUM_NETWORK, model->networks);
    }
    if (mask & CLUSTER_ENUM_NETINTERFACE) {
        ListAll(entry, CLUSTER_ENUM_NETINTERFACE, model->interfaces);
    }
    return call.Opened<HCLUSENUM>(std::move(entry));
}

DWORD WINAPI ClusterEnum(HCLUSENUM handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    return Item("ClusterEnum", handle, HandleKind::ClusterEnum, index, type, name, cch);
}

DWORD WINAPI ClusterCloseEnum(HCLUSENUM handle) {
    return CloseEnumeration("ClusterCloseEnum", handle, HandleKind::ClusterEnum);
}

HGROUPENUM WINAPI ClusterGroupOpenEnum(HGROUP handle, DWORD mask) {
    Call call("ClusterGroupOpenEnum", {Arg("group", handle), Arg("type", mask)});
    if (const Fault* fault = call.HitHandle(handle)) {
        return call.NotOpened<HGROUPENUM>(fault->code);
    }
    const HandleEntry* opened = call.service().handles.Find(handle, HandleKind::Group);
    if (!opened) {
        return call.NotOpened<HGROUPENUM>(ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return call.NotOpened<HGROUPENUM>(call.service().LostCode());
    }
    const Group* group = model->FindGroup(opened->object);
    if (!group) {
        return call.NotOpened<HGROUPENUM>(ERROR_GROUP_NOT_FOUND);
    }
    const auto unread = group->unread.find("preferredOwners");
    if ((mask & CLUSTER_GROUP_ENUM_NODES) && unread != group->unread.end()) {
        return call.NotOpened<HGROUPENUM>(unread->second);
    }
    HandleEntry entry(HandleKind::GroupEnum, opened->object);
    if (mask & CLUSTER_GROUP_ENUM_CONTAINS) {
        List(entry, CLUSTER_GROUP_ENUM_CONTAINS, group->resources);
    }
    if (mask & CLUSTER_GROUP_ENUM_NODES) {
        List(entry, CLUSTER_GROUP_ENUM_NODES, group->preferredOwners);
    }
    return call.Opened<HGROUPENUM>(std::move(entry));
}

DWORD WINAPI ClusterGroupEnum(HGROUPENUM handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    return Item("ClusterGroupEnum", handle, HandleKind::GroupEnum, index, type, name, cch);
}

DWORD WINAPI ClusterGroupCloseEnum(HGROUPENUM handle) {
    return CloseEnumeration("ClusterGroupCloseEnum", handle, HandleKind::GroupEnum);
}

HRESENUM WINAPI ClusterResourceOpenEnum(HRESOURCE handle, DWORD mask) {
    Call call("ClusterResourceOpenEnum", {Arg("resource", handle), Arg("type", mask)});
    if (const Fault* fault = call.HitHandle(handle)) {
        return call.NotOpened<HRESENUM>(fault->code);
    }
    Resource* resource = nullptr;
    const Code code = call.ResourceOf(call.service().Running(), handle, resource);
    if (code != ERROR_SUCCESS) {
        return call.NotOpened<HRESENUM>(code);
    }
    if (mask == 0 || (mask & ~ResourceEnumKnown) != 0) {
        return call.NotOpened<HRESENUM>(ERROR_INVALID_PARAMETER);
    }
    for (const auto& [kind, part] : {std::pair(CLUSTER_RESOURCE_ENUM_DEPENDS, "dependsOn"),
                                     std::pair(CLUSTER_RESOURCE_ENUM_NODES, "possibleOwners")}) {
        const auto unread = (mask & kind) != 0 ? resource->unread.find(part) : resource->unread.end();
        if (unread != resource->unread.end()) {
            return call.NotOpened<HRESENUM>(unread->second);
        }
    }
    HandleEntry entry(HandleKind::ResourceEnum, resource->id);
    if (mask & CLUSTER_RESOURCE_ENUM_DEPENDS) {
        List(entry, CLUSTER_RESOURCE_ENUM_DEPENDS, resource->dependsOn);
    }
    if (mask & CLUSTER_RESOURCE_ENUM_PROVIDES) {
        List(entry, CLUSTER_RESOURCE_ENUM_PROVIDES, resource->dependants);
    }
    if (mask & CLUSTER_RESOURCE_ENUM_NODES) {
        List(entry, CLUSTER_RESOURCE_ENUM_NODES, resource->possibleOwners);
    }
    return call.Opened<HRESENUM>(std::move(entry));
}

DWORD WINAPI ClusterResourceEnum(HRESENUM handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    return Item("ClusterResourceEnum", handle, HandleKind::ResourceEnum, index, type, name, cch);
}

DWORD WINAPI ClusterResourceCloseEnum(HRESENUM handle) {
    return CloseEnumeration("ClusterResourceCloseEnum", handle, HandleKind::ResourceEnum);
}
