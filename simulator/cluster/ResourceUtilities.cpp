// The exports of resutils.dll. They work through clusapi.dll, so that both always agree.
#include "ExportedApi.h"
#include "PropertyLists.h"
#include "UtilityCall.h"

#include "common/AnswerRoom.h"
#include "common/Text.h"

#include <cstring>

using namespace clussim;
using common::Folded;

namespace {

class ResourceHandle {
public:
    explicit ResourceHandle(HRESOURCE handle) : m_handle(handle) {
    }
    ~ResourceHandle() {
        if (m_handle) {
            CloseClusterResource(m_handle);
        }
    }
    ResourceHandle(const ResourceHandle&) = delete;
    ResourceHandle& operator=(const ResourceHandle&) = delete;

    HRESOURCE get() const {
        return m_handle;
    }
    HRESOURCE Release() {
        const HRESOURCE handle = m_handle;
        m_handle = nullptr;
        return handle;
    }

private:
    HRESOURCE m_handle;
};

bool TypeOf(HRESOURCE resource, std::wstring& type) {
    DWORD cb = 0;
    std::vector<unsigned char> bytes(512);
    DWORD code = ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, nullptr, 0, bytes.data(),
                                        static_cast<DWORD>(bytes.size()), &cb);
    if (code == ERROR_MORE_DATA) {
        bytes.resize(cb);
        code = ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, nullptr, 0, bytes.data(),
                                      cb, &cb);
    }
    if (code != ERROR_SUCCESS || cb < sizeof(wchar_t)) {
        return false;
    }
    type.assign(reinterpret_cast<const wchar_t*>(bytes.data()), cb / sizeof(wchar_t) - 1);
    return true;
}

// The first direct dependency, or with `recurse` the first of the whole tree, that `matches(handle)`.
template <typename Matches> HRESOURCE FindDependency(HCLUSTER cluster, HRESOURCE self, bool recurse, Matches matches) {
    const HRESENUM list = ClusterResourceOpenEnum(self, CLUSTER_RESOURCE_ENUM_DEPENDS);
    if (!list) {
        return nullptr;
    }
    HRESOURCE found = nullptr;
    DWORD error = ERROR_RESOURCE_NOT_FOUND;
    std::vector<wchar_t> name(256);
    for (DWORD index = 0; !found;) {
        DWORD type = 0;
        DWORD cch = static_cast<DWORD>(name.size());
        const DWORD code = ClusterResourceEnum(list, index, &type, name.data(), &cch);
        if (code == ERROR_MORE_DATA && common::GrowForName(name, cch)) {
            continue;
        }
        if (code != ERROR_SUCCESS) {
            error = code == ERROR_NO_MORE_ITEMS ? error : code;
            break;
        }
        ++index;
        ResourceHandle dependency(OpenClusterResource(cluster, name.data()));
        if (!dependency.get()) {
            error = GetLastError();
            continue;
        }
        if (matches(dependency.get())) {
            found = dependency.Release();
        } else if (recurse) {
            found = FindDependency(cluster, dependency.get(), recurse, matches);
        }
    }
    ClusterResourceCloseEnum(list);
    if (!found) {
        SetLastError(error);
    }
    return found;
}

// The call as clusapi.dll sees it: counted, journalled, hit by faults.
class UtilityCall {
public:
    UtilityCall(UtilityCallName name, const void* resource, LPCWSTR text)
        : m_call(ClusSimBeginUtilityCall(name, resource, text, &m_fault)) {
    }
    UtilityCall(const UtilityCall&) = delete;
    UtilityCall& operator=(const UtilityCall&) = delete;

    // 0: there is none.
    DWORD Fault() const {
        return m_fault;
    }

    DWORD Return(DWORD code) {
        ClusSimEndUtilityCall(m_call, UtilityResultCode, nullptr, code);
        return code;
    }
    HRESOURCE ReturnHandle(HRESOURCE handle, DWORD code) {
        ClusSimEndUtilityCall(m_call, UtilityResultHandle, handle, code);
        return handle;
    }
    BOOL ReturnBool(bool isTrue) {
        ClusSimEndUtilityCall(m_call, UtilityResultBool, nullptr, isTrue);
        return isTrue;
    }

private:
    unsigned long m_fault = 0;
    void* m_call;
};

// The list is bounded by its count: what stands behind it in the buffer is not looked at.
DWORD FindProperty(PVOID list, DWORD cb, LPCWSTR name, PropertyValue::Kind kind, PropertyValue& value) {
    if (!list || !name) {
        return ERROR_INVALID_PARAMETER;
    }
    const Code code = FindListedProperty(list, cb, name, value);
    return code == ERROR_SUCCESS && value.kind != kind ? static_cast<Code>(ERROR_INVALID_DATA) : code;
}

} // namespace

HRESOURCE WINAPI ResUtilGetResourceDependency(HANDLE self, LPCWSTR type) {
    const HRESOURCE resource = static_cast<HRESOURCE>(self);
    UtilityCall call(UtilityGetResourceDependency, self, type);
    if (call.Fault() != ERROR_SUCCESS) {
        return call.ReturnHandle(nullptr, call.Fault());
    }
    if (!type) {
        return call.ReturnHandle(nullptr, ERROR_INVALID_PARAMETER);
    }
    const HCLUSTER cluster = GetClusterFromResource(resource);
    if (!cluster) {
        return call.ReturnHandle(nullptr, GetLastError());
    }
    const std::wstring wanted = Folded(type);
    const HRESOURCE found = FindDependency(cluster, resource, false, [&](HRESOURCE dependency) {
        std::wstring itsType;
        return TypeOf(dependency, itsType) && Folded(itsType) == wanted;
    });
    const DWORD error = GetLastError();
    CloseCluster(cluster);
    return call.ReturnHandle(found, error);
}

HRESOURCE WINAPI ResUtilGetResourceDependencyByClass(HCLUSTER cluster, HANDLE self, PCLUS_RESOURCE_CLASS_INFO info,
                                                     BOOL recurse) {
    UtilityCall call(UtilityGetResourceDependencyByClass, self, nullptr);
    if (call.Fault() != ERROR_SUCCESS) {
        return call.ReturnHandle(nullptr, call.Fault());
    }
    if (!info) {
        return call.ReturnHandle(nullptr, ERROR_INVALID_PARAMETER);
    }
    const HRESOURCE found =
        FindDependency(cluster, static_cast<HRESOURCE>(self), recurse != FALSE, [info](HRESOURCE dependency) {
            CLUS_RESOURCE_CLASS_INFO its = {};
            DWORD cb = 0;
            return ClusterResourceControl(dependency, nullptr, CLUSCTL_RESOURCE_GET_CLASS_INFO, nullptr, 0, &its,
                                          sizeof(its), &cb) == ERROR_SUCCESS &&
                   its.rc == info->rc; // the subclass does not matter
        });
    return call.ReturnHandle(found, GetLastError());
}

DWORD WINAPI ResUtilFindSzProperty(PVOID list, DWORD cb, LPCWSTR name, LPWSTR* text) {
    UtilityCall call(UtilityFindSzProperty, nullptr, name);
    if (call.Fault() != ERROR_SUCCESS) {
        return call.Return(call.Fault());
    }
    PropertyValue value;
    const DWORD code = FindProperty(list, cb, name, PropertyValue::Sz, value);
    if (code != ERROR_SUCCESS || !text) {
        return call.Return(code);
    }
    const std::size_t cbText = (value.text.size() + 1) * sizeof(wchar_t);
    *text = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, cbText));
    if (!*text) {
        return call.Return(ERROR_NOT_ENOUGH_MEMORY);
    }
    std::memcpy(*text, value.text.c_str(), cbText);
    return call.Return(ERROR_SUCCESS);
}

DWORD WINAPI ResUtilFindDwordProperty(PVOID list, DWORD cb, LPCWSTR name, LPDWORD number) {
    UtilityCall call(UtilityFindDwordProperty, nullptr, name);
    if (call.Fault() != ERROR_SUCCESS) {
        return call.Return(call.Fault());
    }
    PropertyValue value;
    const DWORD code = FindProperty(list, cb, name, PropertyValue::Dword, value);
    if (code == ERROR_SUCCESS && number) {
        *number = value.number;
    }
    return call.Return(code);
}

BOOL WINAPI ResUtilResourceTypesEqual(LPCWSTR type, HRESOURCE resource) {
    UtilityCall call(UtilityResourceTypesEqual, resource, type);
    if (call.Fault() != ERROR_SUCCESS) {
        return call.ReturnBool(false);
    }
    std::wstring itsType;
    return call.ReturnBool(type && resource && TypeOf(resource, itsType) && common::IsSameName(itsType, type));
}
