// The exports of clusapi.dll that open and close the cluster and its objects, and tell about the cluster.
#include "ExportedApi.h"
#include "OpenObject.h"

#include <algorithm>

using namespace clussim;

namespace {

template <typename Object> Found FoundAs(const Object* object, const std::wstring Object::*id) {
    return object ? Found{object->*id, CodeOf(object->unread, "open")} : Found{std::wstring(), ERROR_SUCCESS};
}

// Up to 2003 the size of the quorum's log, since 2008 the kind of the quorum.
DWORD QuorumNumber(const Model& model) {
    const DWORD legacy = 4194304;
    const DWORD hybrid = 1024;
    const DWORD nodeMajority = 0;
    if (model.behaviour.protocol < 2008 || model.quorum == Quorum::Shared) {
        return legacy;
    }
    return model.witness == Witness::None ? nodeMajority : hybrid;
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
        const Code unread = CodeOf(model->unread, "version");
        if (unread != ERROR_SUCCESS) {
            return call.Return(unread);
        }
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

// A name is wanted in each buffer, and both lengths are told whichever is too short.
DWORD WINAPI GetClusterQuorumResource(HCLUSTER cluster, LPWSTR name, LPDWORD cchName, LPWSTR device, LPDWORD cchDevice,
                                      LPDWORD type) {
    Call call("GetClusterQuorumResource",
              {Arg("cluster", cluster), Arg("cch", cchName ? static_cast<long long>(*cchName) : 0)});
    if (const Fault* fault = call.Hit()) {
        return call.Return(fault->code);
    }
    if (!call.service().handles.Find(cluster, HandleKind::Cluster)) {
        return call.Return(ERROR_INVALID_HANDLE);
    }
    if (!name || !cchName || !device || !cchDevice || !type) {
        return call.Return(ERROR_INVALID_PARAMETER);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return call.Return(call.service().LostCode());
    }
    const Code unread = CodeOf(model->unread, "quorum");
    if (unread != ERROR_SUCCESS) {
        return call.Return(unread);
    }
    const auto holder = std::find_if(model->resources.begin(), model->resources.end(),
                                     [](const Resource& resource) { return resource.isQuorum; });
    const bool hasDisk = holder != model->resources.end() && holder->disk && !holder->disk->partitions.empty();
    *type = QuorumNumber(*model);
    const Code ofDevice =
        CopyName(hasDisk ? holder->disk->partitions.front().device + L"\\MSCS\\" : L"", device, cchDevice);
    const Code ofName = CopyName(holder != model->resources.end() ? holder->name : L"", name, cchName);
    return call.Return(ofName != ERROR_SUCCESS ? ofName : ofDevice);
}

HRESOURCE WINAPI OpenClusterResource(HCLUSTER cluster, LPCWSTR name) {
    return OpenObject<HRESOURCE>(
        "OpenClusterResource", cluster, name, HandleKind::Resource, ERROR_RESOURCE_NOT_FOUND,
        [name](const Model& model) { return FoundAs(model.ResourceNamed(name), &Resource::id); });
}

HGROUP WINAPI OpenClusterGroup(HCLUSTER cluster, LPCWSTR name) {
    return OpenObject<HGROUP>("OpenClusterGroup", cluster, name, HandleKind::Group, ERROR_GROUP_NOT_FOUND,
                              [name](const Model& model) { return FoundAs(model.FindGroup(name), &Group::name); });
}

HNODE WINAPI OpenClusterNode(HCLUSTER cluster, LPCWSTR name) {
    return OpenObject<HNODE>("OpenClusterNode", cluster, name, HandleKind::Node, ERROR_CLUSTER_NODE_NOT_FOUND,
                             [name](const Model& model) { return FoundAs(model.FindNode(name), &Node::name); });
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
