// How the cluster's objects are opened, all alike.
#ifndef CLUSSIM_OPENOBJECT_H
#define CLUSSIM_OPENOBJECT_H

#include "Call.h"

namespace clussim {

// What a handle shall stand for.
struct Found {
    std::wstring object; // empty when there is none
    Code code;           // with which it is refused
};

// Opens an object of the cluster by name. `find(model)` gives what was found.
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
    const Found found = find(*model);
    const Code code = found.object.empty() ? notFound : found.code;
    return code != ERROR_SUCCESS ? call.NotOpened<Handle>(code) : call.Opened<Handle>(HandleEntry(kind, found.object));
}

} // namespace clussim

#endif
