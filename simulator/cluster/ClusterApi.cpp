// The exports of clusapi.dll that open and close the cluster and its objects, and tell about the cluster.
#include "Call.h"
#include "ExportedApi.h"

using namespace clussim;

namespace {

// Opens an object of the cluster by name. `find(model)` gives what the handle stands for; empty when there is none.
template <typename Handle, typename Find>
Handle OpenObject(const char* callName, HCLUSTER cluster, LPCWSTR name, HandleKind kind, Code notFound, Find find) {
    Call call(callName, {Arg("cluster", cluster), Arg("name", name)});
    if (const Fault* fault = call.Hit(name)) {
        return call.NotOpened<Handle>(fault->code);
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return call.NotOpened<Handle>(ERROR_INVALID_HANDLE);
    }
    if (!name) {
        return call.NotOpened<Handle>(ERROR_INVALID_PARAMETER);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return call.NotOpened<Handle>(call.service().LostCode());
    }
    const std::wstring object = find(*model);
    return object.empty() ? call.NotOpened<Handle>(notFound) : call.Opened<Handle>(HandleEntry(kind, object));
}

BOOL CloseObject(const char* callName, const void* handle, HandleKind kind) {
    Call call(callName, {Arg("handle", handle)});
    return call.ReturnBool(call.Close(handle, kind));
}

} // namespace

HCLUSTER WINAPI OpenCluster(LPCWSTR name) {
    Call call("OpenCluster", {Arg("name", name)});
    if (const Fault* fault = call.Hit(name)) {
        return call.NotOpened<HCLUSTER>(fault->code);
    }
    const Model* model = call.service().Running();
    if (!name && !model) {
        return call.NotOpened<HCLUSTER>(EPT_S_NOT_REGISTERED);
    }
    if (name && (!model || !model->AnswersTo(name))) {
        return call.NotOpened<HCLUSTER>(RPC_S_SERVER_UNAVAILABLE); // nothing answers to it
    }
    return call.Opened<HCLUSTER>(HandleEntry(HandleKind::Cluster));
}

BOOL WINAPI CloseCluster(HCLUSTER cluster) {
    return CloseObject("CloseCluster", cluster, HandleKind::Cluster);
}

HCLUSTER WINAPI GetClusterFromResource(HRESOURCE resource) {
    Call call("GetClusterFromResource", {Arg("resource", resource)});
    if (const Fault* fault = call.HitHandle(resource)) {
        return call.NotOpened<HCLUSTER>(fault->code);
    }
    if (!call.service().handles.Find(resource, HandleKind::Resource)) {
        return call.NotOpened<HCLUSTER>(ERROR_INVALID_HANDLE);
    }
    return call.Opened<HCLUSTER>(HandleEntry(HandleKind::Cluster));
}

DWORD WINAPI GetClusterInformation(HCLUSTER cluster, LPWSTR name, LPDWORD cch, LPCLUSTERVERSIONINFO info) {
    Call call("GetClusterInformation", {Arg("cluster", cluster), Arg("cch", cch ? static_cast<long long>(*cch) : 0)});
    if (const Fault* fault = call.Hit()) {
        return call.Return(fault->code);
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return call.Return(ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return call.Return(call.service().LostCode());
    }
    if (info) {
        // The short form, of Windows NT 4, ends before dwClusterHighestVersion.
        if (info->dwVersionInfoSize < offsetof(CLUSTERVERSIONINFO, dwClusterHighestVersion)) {
            return call.Return(ERROR_INVALID_PARAMETER);
        }
        const bool is2008 = model->behaviour.protocol >= 2008;
        info->MajorVersion = is2008 ? 6 : 5;
        info->MinorVersion = is2008 ? 0 : 2;
        info->BuildNumber = is2008 ? 6001 : 3790;
        info->szVendorId[0] = L'\0';
        info->szCSDVersion[0] = L'\0';
        if (info->dwVersionInfoSize >= sizeof(CLUSTERVERSIONINFO)) {
            info->dwClusterHighestVersion = info->dwClusterLowestVersion = is2008 ? 0x00060000 : 0x00050000;
            info->dwFlags = 0;
            info->dwReserved = 0;
        }
    }
    return call.Return(CopyName(model->name, name, cch));
}

HRESOURCE WINAPI OpenClusterResource(HCLUSTER cluster, LPCWSTR name) {
    return OpenObject<HRESOURCE>("OpenClusterResource", cluster, name, HandleKind::Resource, ERROR_RESOURCE_NOT_FOUND,
                                 [name](const Model& model) {
                                     const Resource* found = model.ResourceNamed(name);
                                     return found ? found->id : std::wstring();
                                 });
}

HGROUP WINAPI OpenClusterGroup(HCLUSTER cluster, LPCWSTR name) {
    return OpenObject<HGROUP>("OpenClusterGroup", cluster, name, HandleKind::Group, ERROR_GROUP_NOT_FOUND,
                              [name](const Model& model) {
                                  const Group* found = model.FindGroup(name);
                                  return found ? found->name : std::wstring();
                              });
}

HNODE WINAPI OpenClusterNode(HCLUSTER cluster, LPCWSTR name) {
    return OpenObject<HNODE>("OpenClusterNode", cluster, name, HandleKind::Node, ERROR_CLUSTER_NODE_NOT_FOUND,
                             [name](const Model& model) {
                                 const Node* found = model.FindNode(name);
                                 return found ? found->name : std::wstring();
                             });
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
