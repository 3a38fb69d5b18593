// The exports of clusapi.dll that open, list, change and close things. Resource controls are in ResourceControl.cpp.
#include "Call.h"
#include "ExportedApi.h"

#include <algorithm>

using namespace clussim;

namespace {

const DWORD MaskResource = 4;
const DWORD MaskNode = 1;
const DWORD MaskGroup = 8;
const DWORD MaskKnown = 0x3F;

HandleEntry Entry(HandleKind kind, const std::wstring& object = std::wstring()) {
    HandleEntry entry;
    entry.kind = kind;
    entry.object = object;
    return entry;
}

// Opens an object of the cluster by name. `find(model)` gives what the handle stands for; empty when there is none.
template <typename Find>
void* OpenObject(const char* callName, HCLUSTER cluster, LPCWSTR name, HandleKind kind, Code notFound, Find find) {
    Call call(callName, {Arg("cluster", cluster), Arg("name", name)});
    if (const Fault* fault = call.Hit({name ? name : L""})) {
        return call.ReturnHandle(nullptr, fault->code);
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return call.ReturnHandle(nullptr, ERROR_INVALID_HANDLE);
    }
    if (!name) {
        return call.ReturnHandle(nullptr, ERROR_INVALID_PARAMETER);
    }
    Model* model = call.service().Current();
    if (!model) {
        return call.ReturnHandle(nullptr, RPC_S_SERVER_UNAVAILABLE);
    }
    const std::wstring object = find(*model);
    if (object.empty()) {
        return call.ReturnHandle(nullptr, notFound);
    }
    return call.ReturnHandle(call.service().handles.Open(Entry(kind, object)), ERROR_SUCCESS);
}

// A fault on a closing call reports failure, and closes all the same.
Code CloseHandleOf(Call& call, const void* handle, HandleKind kind) {
    const Fault* fault = call.Hit({});
    const bool closed = call.service().handles.Close(handle, kind);
    return fault ? fault->code : closed ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_INVALID_HANDLE);
}

BOOL CloseObject(const char* callName, const void* handle, HandleKind kind) {
    Call call(callName, {Arg("handle", handle)});
    return call.ReturnBool(CloseHandleOf(call, handle, kind));
}

DWORD CloseEnumeration(const char* callName, const void* handle) {
    Call call(callName, {Arg("handle", handle)});
    return call.Return(CloseHandleOf(call, handle, HandleKind::Enum));
}

// Writes the name and its terminator, nothing more: a caller may claim more room than it has.
Code CopyName(const std::wstring& text, LPWSTR buffer, LPDWORD cch) {
    if (!cch) {
        return buffer ? static_cast<Code>(ERROR_INVALID_PARAMETER) : static_cast<Code>(ERROR_SUCCESS);
    }
    const DWORD capacity = *cch;
    *cch = static_cast<DWORD>(text.size());
    if (!buffer) {
        return ERROR_SUCCESS;
    }
    if (capacity <= text.size()) {
        return ERROR_MORE_DATA;
    }
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return ERROR_SUCCESS;
}

DWORD EnumerationItem(const char* callName, const void* handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    Call call(callName,
              {Arg("handle", handle), Arg("index", index), Arg("cch", cch ? static_cast<long long>(*cch) : 0)});
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Enum);
    const bool exists = entry && index < entry->items.size();
    if (const Fault* fault = call.Hit({exists ? entry->items[index].second : std::wstring()})) {
        return call.Return(fault->code);
    }
    if (!entry) {
        return call.Return(ERROR_INVALID_HANDLE);
    }
    if (!exists) {
        return call.Return(ERROR_NO_MORE_ITEMS);
    }
    if (type) {
        *type = entry->items[index].first;
    }
    return call.Return(CopyName(entry->items[index].second, name, cch));
}

// A change to one resource.
template <typename Change> DWORD ChangeResource(Call& call, HRESOURCE handle, Change change) {
    if (const Fault* fault = call.HitResource(handle)) {
        return call.Return(fault->code);
    }
    return call.Return(call.service().Change([&](Model& model) {
        Resource* resource = nullptr;
        const Code code = call.ResourceOf(&model, handle, resource);
        return code != ERROR_SUCCESS ? code : change(model, *resource);
    }));
}

} // namespace

// Cluster
// ---------------------------------------------------------------------------------------------------------------

HCLUSTER WINAPI OpenCluster(LPCWSTR name) {
    Call call("OpenCluster", {Arg("name", name)});
    if (const Fault* fault = call.Hit({name ? name : L""})) {
        return static_cast<HCLUSTER>(call.ReturnHandle(nullptr, fault->code));
    }
    const Model* model = call.service().Current();
    const bool running = model && model->running;
    if (!name && !running) {
        return static_cast<HCLUSTER>(call.ReturnHandle(nullptr, EPT_S_NOT_REGISTERED));
    }
    if (name && (!running || (Folded(name) != Folded(model->name) && !model->FindNode(name)))) {
        return static_cast<HCLUSTER>(call.ReturnHandle(nullptr, RPC_S_SERVER_UNAVAILABLE));
    }
    return static_cast<HCLUSTER>(
        call.ReturnHandle(call.service().handles.Open(Entry(HandleKind::Cluster)), ERROR_SUCCESS));
}

BOOL WINAPI CloseCluster(HCLUSTER cluster) {
    return CloseObject("CloseCluster", cluster, HandleKind::Cluster);
}

HCLUSTER WINAPI GetClusterFromResource(HRESOURCE resource) {
    Call call("GetClusterFromResource", {Arg("resource", resource)});
    if (const Fault* fault = call.HitResource(resource)) {
        return static_cast<HCLUSTER>(call.ReturnHandle(nullptr, fault->code));
    }
    if (!call.service().handles.Find(resource, HandleKind::Resource)) {
        return static_cast<HCLUSTER>(call.ReturnHandle(nullptr, ERROR_INVALID_HANDLE));
    }
    return static_cast<HCLUSTER>(
        call.ReturnHandle(call.service().handles.Open(Entry(HandleKind::Cluster)), ERROR_SUCCESS));
}

DWORD WINAPI GetClusterInformation(HCLUSTER cluster, LPWSTR name, LPDWORD cch, LPCLUSTERVERSIONINFO info) {
    Call call("GetClusterInformation", {Arg("cluster", cluster), Arg("cch", cch ? static_cast<long long>(*cch) : 0)});
    if (const Fault* fault = call.Hit({})) {
        return call.Return(fault->code);
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return call.Return(ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Current();
    if (!model) {
        return call.Return(RPC_S_SERVER_UNAVAILABLE);
    }
    if (info) {
        if (info->dwVersionInfoSize < 268) { // the short form of Windows NT 4
            return call.Return(ERROR_INVALID_PARAMETER);
        }
        info->MajorVersion = model->behaviour.protocol >= 2008 ? 6 : 5;
        info->MinorVersion = model->behaviour.protocol >= 2008 ? 0 : 2;
        info->BuildNumber = 0;
        info->szVendorId[0] = L'\0';
        info->szCSDVersion[0] = L'\0';
    }
    return call.Return(CopyName(model->name, name, cch));
}

HCLUSENUM WINAPI ClusterOpenEnum(HCLUSTER cluster, DWORD mask) {
    Call call("ClusterOpenEnum", {Arg("cluster", cluster), Arg("type", mask)});
    if (const Fault* fault = call.Hit({})) {
        return static_cast<HCLUSENUM>(call.ReturnHandle(nullptr, fault->code));
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return static_cast<HCLUSENUM>(call.ReturnHandle(nullptr, ERROR_INVALID_HANDLE));
    }
    const Model* model = call.service().Current();
    if (!model) {
        return static_cast<HCLUSENUM>(call.ReturnHandle(nullptr, RPC_S_SERVER_UNAVAILABLE));
    }
    if ((mask & ~MaskKnown) != 0 || (mask == 0 && !model->behaviour.emptyMaskIsEmptyList)) {
        return static_cast<HCLUSENUM>(call.ReturnHandle(nullptr, ERROR_INVALID_PARAMETER));
    }
    HandleEntry entry = Entry(HandleKind::Enum);
    if (mask & MaskNode) {
        for (const Node& node : model->nodes) {
            entry.items.emplace_back(MaskNode, node.name);
        }
    }
    if (mask & MaskResource) {
        for (const Resource& resource : model->resources) {
            entry.items.emplace_back(MaskResource, resource.name);
        }
    }
    if (mask & MaskGroup) {
        for (const Group& group : model->groups) {
            entry.items.emplace_back(MaskGroup, group.name);
        }
    }
    return static_cast<HCLUSENUM>(call.ReturnHandle(call.service().handles.Open(std::move(entry)), ERROR_SUCCESS));
}

DWORD WINAPI ClusterEnum(HCLUSENUM handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    return EnumerationItem("ClusterEnum", handle, index, type, name, cch);
}

DWORD WINAPI ClusterCloseEnum(HCLUSENUM handle) {
    return CloseEnumeration("ClusterCloseEnum", handle);
}

// Objects
// ---------------------------------------------------------------------------------------------------------------

HRESOURCE WINAPI OpenClusterResource(HCLUSTER cluster, LPCWSTR name) {
    return static_cast<HRESOURCE>(OpenObject("OpenClusterResource", cluster, name, HandleKind::Resource,
                                             ERROR_RESOURCE_NOT_FOUND, [&](const Model& model) {
                                                 const Resource* found = model.ResourceNamed(name);
                                                 return found ? found->id : std::wstring();
                                             }));
}

HGROUP WINAPI OpenClusterGroup(HCLUSTER cluster, LPCWSTR name) {
    return static_cast<HGROUP>(OpenObject("OpenClusterGroup", cluster, name, HandleKind::Group, ERROR_GROUP_NOT_FOUND,
                                          [&](const Model& model) {
                                              const Group* found = model.FindGroup(name);
                                              return found ? found->name : std::wstring();
                                          }));
}

HNODE WINAPI OpenClusterNode(HCLUSTER cluster, LPCWSTR name) {
    return static_cast<HNODE>(OpenObject("OpenClusterNode", cluster, name, HandleKind::Node,
                                         ERROR_CLUSTER_NODE_NOT_FOUND, [&](const Model& model) {
                                             const Node* found = model.FindNode(name);
                                             return found ? found->name : std::wstring();
                                         }));
}

BOOL WINAPI CloseClusterResource(HRESOURCE resource) {
    return CloseObject("CloseClusterResource", resource, HandleKind::Resource);
}

BOOL WINAPI CloseClusterGroup(HGROUP group) {
    return CloseObject("CloseClusterGroup", group, HandleKind::Group);
}

BOOL WINAPI CloseClusterNode(HNODE node) {
    return CloseObject("CloseClusterNode", node, HandleKind::Node);
}

CLUSTER_NODE_STATE WINAPI GetClusterNodeState(HNODE handle) {
    Call call("GetClusterNodeState", {Arg("node", handle)});
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Node);
    const Model* model = call.service().Current();
    const Node* node = entry && model ? model->FindNode(entry->object) : nullptr;
    if (!node) {
        return static_cast<CLUSTER_NODE_STATE>(call.ReturnState(StateUnknown, ERROR_INVALID_HANDLE));
    }
    return static_cast<CLUSTER_NODE_STATE>(call.ReturnState(static_cast<int>(node->status), ERROR_SUCCESS));
}

CLUSTER_GROUP_STATE WINAPI GetClusterGroupState(HGROUP handle, LPWSTR nodeName, LPDWORD cch) {
    Call call("GetClusterGroupState", {Arg("group", handle)});
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Group);
    const Model* model = call.service().Current();
    const Group* group = entry && model ? model->FindGroup(entry->object) : nullptr;
    if (!group) {
        return static_cast<CLUSTER_GROUP_STATE>(call.ReturnState(StateUnknown, ERROR_INVALID_HANDLE));
    }
    if (const Fault* fault = call.Hit({group->name})) {
        return static_cast<CLUSTER_GROUP_STATE>(call.ReturnState(StateUnknown, fault->code));
    }
    const Code code = CopyName(group->owner->name, nodeName, cch);
    if (code != ERROR_SUCCESS) {
        return static_cast<CLUSTER_GROUP_STATE>(call.ReturnState(StateUnknown, code));
    }
    const auto count = [group](State state) {
        return std::count_if(group->resources.begin(), group->resources.end(),
                             [state](const Resource* resource) { return resource->state == state; });
    };
    const auto online = count(StateOnline);
    const int state = count(StateFailed) > 0                                           ? 2
                      : count(StateOnlinePending) + count(StateOfflinePending) > 0     ? 4
                      : online == 0                                                    ? 1
                      : online == static_cast<std::ptrdiff_t>(group->resources.size()) ? 0
                                                                                       : 3;
    return static_cast<CLUSTER_GROUP_STATE>(call.ReturnState(state, ERROR_SUCCESS));
}

HGROUPENUM WINAPI ClusterGroupOpenEnum(HGROUP handle, DWORD mask) {
    Call call("ClusterGroupOpenEnum", {Arg("group", handle), Arg("type", mask)});
    const HandleEntry* opened = call.service().handles.Find(handle, HandleKind::Group);
    if (const Fault* fault = call.Hit({opened ? opened->object : std::wstring()})) {
        return static_cast<HGROUPENUM>(call.ReturnHandle(nullptr, fault->code));
    }
    const Model* model = call.service().Current();
    const Group* group = opened && model ? model->FindGroup(opened->object) : nullptr;
    if (!group) {
        return static_cast<HGROUPENUM>(call.ReturnHandle(nullptr, ERROR_INVALID_HANDLE));
    }
    HandleEntry entry = Entry(HandleKind::Enum);
    if (mask & 1) {
        for (const Resource* resource : group->resources) {
            entry.items.emplace_back(1, resource->name);
        }
    }
    if (mask & 2) {
        for (const Node* node : group->preferredOwners) {
            entry.items.emplace_back(2, node->name);
        }
    }
    return static_cast<HGROUPENUM>(call.ReturnHandle(call.service().handles.Open(std::move(entry)), ERROR_SUCCESS));
}

DWORD WINAPI ClusterGroupEnum(HGROUPENUM handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    return EnumerationItem("ClusterGroupEnum", handle, index, type, name, cch);
}

DWORD WINAPI ClusterGroupCloseEnum(HGROUPENUM handle) {
    return CloseEnumeration("ClusterGroupCloseEnum", handle);
}

HRESENUM WINAPI ClusterResourceOpenEnum(HRESOURCE handle, DWORD mask) {
    Call call("ClusterResourceOpenEnum", {Arg("resource", handle), Arg("type", mask)});
    if (const Fault* fault = call.HitResource(handle)) {
        return static_cast<HRESENUM>(call.ReturnHandle(nullptr, fault->code));
    }
    Resource* resource = nullptr;
    const Code code = call.ResourceOf(call.service().Current(), handle, resource);
    if (code != ERROR_SUCCESS) {
        return static_cast<HRESENUM>(call.ReturnHandle(nullptr, code));
    }
    if (mask == 0 || (mask & ~7UL) != 0) {
        return static_cast<HRESENUM>(call.ReturnHandle(nullptr, ERROR_INVALID_PARAMETER));
    }
    HandleEntry entry = Entry(HandleKind::Enum);
    if (mask & 1) {
        for (const Resource* provider : resource->dependsOn) {
            entry.items.emplace_back(1, provider->name);
        }
    }
    if (mask & 2) {
        for (const Resource* other : resource->group->resources) {
            if (std::count(other->dependsOn.begin(), other->dependsOn.end(), resource)) {
                entry.items.emplace_back(2, other->name);
            }
        }
    }
    if (mask & 4) {
        for (const Node* node : resource->possibleOwners) {
            entry.items.emplace_back(4, node->name);
        }
    }
    return static_cast<HRESENUM>(call.ReturnHandle(call.service().handles.Open(std::move(entry)), ERROR_SUCCESS));
}

DWORD WINAPI ClusterResourceEnum(HRESENUM handle, DWORD index, LPDWORD type, LPWSTR name, LPDWORD cch) {
    return EnumerationItem("ClusterResourceEnum", handle, index, type, name, cch);
}

DWORD WINAPI ClusterResourceCloseEnum(HRESENUM handle) {
    return CloseEnumeration("ClusterResourceCloseEnum", handle);
}

// Resources
// -------------------------------------------------------------------------------------------------------------

HRESOURCE WINAPI CreateClusterResource(HGROUP handle, LPCWSTR name, LPCWSTR type, DWORD flags) {
    Call call("CreateClusterResource",
              {Arg("group", handle), Arg("name", name), Arg("type", type), Arg("flags", flags)});
    if (const Fault* fault = call.Hit({name ? name : L""})) {
        return static_cast<HRESOURCE>(call.ReturnHandle(nullptr, fault->code));
    }
    const HandleEntry* entry = call.service().handles.Find(handle, HandleKind::Group);
    if (!entry) {
        return static_cast<HRESOURCE>(call.ReturnHandle(nullptr, ERROR_INVALID_HANDLE));
    }
    if (!name || !type || flags > 1) {
        return static_cast<HRESOURCE>(call.ReturnHandle(nullptr, ERROR_INVALID_PARAMETER));
    }
    std::wstring id;
    const Code code = call.service().Change([&](Model& model) {
        Group* group = model.FindGroup(entry->object);
        return group ? model.Create(*group, name, type, id) : static_cast<Code>(ERROR_GROUP_NOT_FOUND);
    });
    if (code != ERROR_SUCCESS) {
        return static_cast<HRESOURCE>(call.ReturnHandle(nullptr, code));
    }
    return static_cast<HRESOURCE>(
        call.ReturnHandle(call.service().handles.Open(Entry(HandleKind::Resource, id)), ERROR_SUCCESS));
}

DWORD WINAPI DeleteClusterResource(HRESOURCE handle) {
    Call call("DeleteClusterResource", {Arg("resource", handle)});
    return ChangeResource(call, handle, [](Model& model, Resource& resource) { return model.Delete(resource); });
}

DWORD WINAPI OnlineClusterResource(HRESOURCE handle) {
    Call call("OnlineClusterResource", {Arg("resource", handle)});
    return ChangeResource(
        call, handle, [&](Model& model, Resource& resource) { return model.Online(resource, call.service().Now()); });
}

DWORD WINAPI OfflineClusterResource(HRESOURCE handle) {
    Call call("OfflineClusterResource", {Arg("resource", handle)});
    return ChangeResource(
        call, handle, [&](Model& model, Resource& resource) { return model.Offline(resource, call.service().Now()); });
}

CLUSTER_RESOURCE_STATE WINAPI GetClusterResourceState(HRESOURCE handle, LPWSTR node, LPDWORD cchNode, LPWSTR group,
                                                      LPDWORD cchGroup) {
    Call call("GetClusterResourceState", {Arg("resource", handle)});
    Resource* resource = nullptr;
    const Code code = call.ResourceOf(call.service().Current(), handle, resource);
    const Fault* fault = call.HitResource(handle);
    if (fault && !fault->forcesState) {
        return static_cast<CLUSTER_RESOURCE_STATE>(call.ReturnState(StateUnknown, fault->code));
    }
    if (code != ERROR_SUCCESS) {
        return static_cast<CLUSTER_RESOURCE_STATE>(call.ReturnState(StateUnknown, code));
    }
    // A count without a buffer is ignored.
    const Code nodeCode = node ? CopyName(resource->group->owner->name, node, cchNode) : ERROR_SUCCESS;
    const Code groupCode = group ? CopyName(resource->group->name, group, cchGroup) : ERROR_SUCCESS;
    if (nodeCode != ERROR_SUCCESS || groupCode != ERROR_SUCCESS) {
        return static_cast<CLUSTER_RESOURCE_STATE>(
            call.ReturnState(StateUnknown, nodeCode != ERROR_SUCCESS ? nodeCode : groupCode));
    }
    return static_cast<CLUSTER_RESOURCE_STATE>(
        call.ReturnState(fault ? fault->state : static_cast<int>(resource->state), ERROR_SUCCESS));
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
