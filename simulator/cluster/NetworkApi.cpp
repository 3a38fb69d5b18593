// The exports of clusapi.dll about networks and the interfaces of nodes on them. Reading only.
#include "ControlAnswer.h"
#include "ExportedApi.h"
#include "OpenObject.h"

using namespace clussim;

namespace {

enum ControlCode : DWORD {
    ControlGetName = 0x06000029,
    ControlGetNode = 0x06000031,
    ControlGetNetwork = 0x06000035,
    ControlGetReadOnlyCommon = 0x06000055
};

// `find(model, name)` gives the object; null when there is none.
template <typename Handle, typename Find>
Handle Open(const char* callName, HCLUSTER cluster, LPCWSTR name, HandleKind kind, Code notFound, Find find) {
    return OpenObject<Handle>(callName, cluster, name, kind, notFound, [&](const Model& model) {
        const auto* const object = find(model, name);
        return object ? Found{object->name, ERROR_SUCCESS} : Found{std::wstring(), ERROR_SUCCESS};
    });
}

BOOL Close(const char* callName, const void* handle, HandleKind kind) {
    Call call(callName, {Arg("handle", handle)});
    return call.ReturnBool(call.Close(handle, kind));
}

// The state's number in the API is that of the model.
template <typename Find>
int StateOfObject(const char* callName, const char* argument, const void* handle, HandleKind kind, Code gone,
                  Find find) {
    Call call(callName, {Arg(argument, handle)});
    if (const Fault* fault = call.HitHandle(handle)) {
        return call.ReturnState(StateUnknown, fault->code);
    }
    const HandleEntry* entry = call.service().handles.Find(handle, kind);
    if (!entry) {
        return call.ReturnState(StateUnknown, ERROR_INVALID_HANDLE);
    }
    const Model* model = call.service().Running();
    if (!model) {
        return call.ReturnState(StateUnknown, call.service().LostCode());
    }
    const auto* const object = find(*model, entry->object);
    return object ? call.ReturnState(static_cast<int>(object->state)) : call.ReturnState(StateUnknown, gone);
}

const Network* NetworkNamed(const Model& model, const std::wstring& name) {
    return model.FindNetwork(name);
}

const NetworkInterface* InterfaceNamed(const Model& model, const std::wstring& name) {
    return model.FindInterface(name);
}

Code Read(const NetworkInterface& card, DWORD code, Bytes& bytes) {
    PropertySet properties;
    switch (code) {
    case ControlGetName:
        bytes = TextBytes(card.name);
        return ERROR_SUCCESS;
    case ControlGetNode:
        bytes = TextBytes(card.node->name);
        return ERROR_SUCCESS;
    case ControlGetNetwork:
        bytes = TextBytes(card.network->name);
        return ERROR_SUCCESS;
    case ControlGetReadOnlyCommon:
        properties.Set(L"Name", PropertyValue::OfText(card.name));
        properties.Set(L"Node", PropertyValue::OfText(card.node->name));
        properties.Set(L"Network", PropertyValue::OfText(card.network->name));
        properties.Set(L"Adapter", PropertyValue::OfText(L""));
        properties.Set(L"Address", PropertyValue::OfText(card.address));
        bytes = PropertyList(properties);
        return ERROR_SUCCESS;
    default:
        return ERROR_INVALID_FUNCTION;
    }
}

} // namespace

HNETWORK WINAPI OpenClusterNetwork(HCLUSTER cluster, LPCWSTR name) {
    return Open<HNETWORK>("OpenClusterNetwork", cluster, name, HandleKind::Network, ERROR_CLUSTER_NETWORK_NOT_FOUND,
                          NetworkNamed);
}

BOOL WINAPI CloseClusterNetwork(HNETWORK network) {
    return Close("CloseClusterNetwork", network, HandleKind::Network);
}

CLUSTER_NETWORK_STATE WINAPI GetClusterNetworkState(HNETWORK network) {
    return static_cast<CLUSTER_NETWORK_STATE>(StateOfObject("GetClusterNetworkState", "network", network,
                                                            HandleKind::Network, ERROR_CLUSTER_NETWORK_NOT_FOUND,
                                                            NetworkNamed));
}

HNETINTERFACE WINAPI OpenClusterNetInterface(HCLUSTER cluster, LPCWSTR name) {
    return Open<HNETINTERFACE>("OpenClusterNetInterface", cluster, name, HandleKind::NetInterface,
                               ERROR_CLUSTER_NETINTERFACE_NOT_FOUND, InterfaceNamed);
}

BOOL WINAPI CloseClusterNetInterface(HNETINTERFACE card) {
    return Close("CloseClusterNetInterface", card, HandleKind::NetInterface);
}

CLUSTER_NETINTERFACE_STATE WINAPI GetClusterNetInterfaceState(HNETINTERFACE card) {
    return static_cast<CLUSTER_NETINTERFACE_STATE>(StateOfObject("GetClusterNetInterfaceState", "interface", card,
                                                                 HandleKind::NetInterface,
                                                                 ERROR_CLUSTER_NETINTERFACE_NOT_FOUND, InterfaceNamed));
}

DWORD WINAPI ClusterNetInterfaceControl(HNETINTERFACE handle, HNODE node, DWORD code, LPVOID in, DWORD cbIn, LPVOID out,
                                        DWORD cbOut, LPDWORD cbReturned) {
    Call call("ClusterNetInterfaceControl", {Arg("interface", handle), Arg("node", node), Arg("code", code),
                                             JournalValue::Of("in", in, cbIn), Arg("cbOut", cbOut)});
    const ControlAnswer answer(call, out, cbOut, cbReturned);
    if (const Fault* fault = call.HitHandle(handle, ControlText(code).c_str())) {
        return answer.Fail(fault->code);
    }
    Service& service = call.service();
    const HandleEntry* const entry = service.handles.Find(handle, HandleKind::NetInterface);
    if (!entry || (node && !service.handles.Find(node, HandleKind::Node))) {
        return answer.Fail(ERROR_INVALID_HANDLE);
    }
    const Model* const model = service.Running();
    if (!model) {
        return answer.Fail(service.LostCode());
    }
    const NetworkInterface* const card = model->FindInterface(entry->object);
    Bytes bytes;
    const Code read = card ? Read(*card, code, bytes) : static_cast<Code>(ERROR_CLUSTER_NETINTERFACE_NOT_FOUND);
    return read != ERROR_SUCCESS ? answer.Fail(read) : answer.Give(bytes);
}
