#include "TappedCall.h"

#include "platform/ClusterApi.h"

namespace harness {

namespace {

// void functions have no result to fail with: Sleep is the only one and stands alone.
class TappedSleep : public TappedCallBase {
public:
    explicit TappedSleep(PlatformTap& tap)
        : m_patch(FindImports(LibraryModule(), "kernel32.dll", "Sleep"), [&tap](DWORD milliseconds) {
              const HarnessScope scope;
              tap.sleeps.push_back(milliseconds);
              tap.Record("Sleep(" + std::to_string(milliseconds) + ")");
              if (tap.onSleep) {
                  tap.onSleep(milliseconds);
              }
          }) {
    }

private:
    ImportPatch<void(DWORD), TappedSleep> m_patch;
};

std::string ControlName(DWORD code) {
    switch (code) {
    case CLUSCTL_RESOURCE_GET_NAME:
        return "GET_NAME";
    case CLUSCTL_RESOURCE_GET_RESOURCE_TYPE:
        return "GET_RESOURCE_TYPE";
    case CLUSCTL_RESOURCE_GET_NETWORK_NAME:
        return "GET_NETWORK_NAME";
    case CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO:
        return "STORAGE_GET_DISK_INFO";
    case CLUSCTL_RESOURCE_GET_ID:
        return "GET_ID";
    case CLUSCTL_RESOURCE_GET_CLASS_INFO:
        return "GET_CLASS_INFO";
    case CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES:
        return "GET_PRIVATE_PROPERTIES";
    case CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES:
        return "SET_PRIVATE_PROPERTIES";
    case CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES:
        return "SET_COMMON_PROPERTIES";
    default:
        return std::to_string(code);
    }
}

void TapClusterCalls(PlatformTap& tap) {
    const auto of = [&tap](const void* handle) { return tap.LabelOf(handle); };
    const auto nothing = [](auto) { return std::string(); };
    const auto handleOnly = [of](auto handle) { return of(handle); };

    TAP(
        "clusapi", OpenCluster, Null, [](LPCWSTR name) { return name ? Utf8(name) : std::string(); },
        [&tap](HCLUSTER result, LPCWSTR) { tap.Label(result, "cluster"); });
    TAP("clusapi", CloseCluster, CloseFalse, nothing, nullptr);
    TAP("clusapi", GetClusterFromResource, Null, handleOnly,
        [&tap](HCLUSTER result, HRESOURCE) { tap.Label(result, "cluster"); });
    TAP(
        "clusapi", GetClusterInformation, Code,
        [](HCLUSTER, LPWSTR, LPDWORD cch, LPCLUSTERVERSIONINFO) { return Count(cch); }, nullptr);
    TAP(
        "clusapi", ClusterOpenEnum, Null, [](HCLUSTER, DWORD mask) { return Number(mask); }, nullptr);
    TAP(
        "clusapi", ClusterEnum, Code,
        [](HCLUSENUM, DWORD index, LPDWORD, LPWSTR, LPDWORD cch) {
            return Joined({Number(index), Count(cch)});
        },
        nullptr);
    TAP("clusapi", ClusterCloseEnum, CloseCode, nothing, nullptr);

    TAP(
        "clusapi", OpenClusterResource, Null, [](HCLUSTER, LPCWSTR name) { return Utf8(name); },
        [&tap](HRESOURCE result, HCLUSTER, LPCWSTR name) { tap.Label(result, Utf8(name)); });
    TAP("clusapi", CloseClusterResource, CloseFalse, handleOnly, nullptr);
    TAP(
        "clusapi", OpenClusterGroup, Null, [](HCLUSTER, LPCWSTR name) { return Utf8(name); },
        [&tap](HGROUP result, HCLUSTER, LPCWSTR name) { tap.Label(result, Utf8(name)); });
    TAP("clusapi", CloseClusterGroup, CloseFalse, handleOnly, nullptr);
    TAP(
        "clusapi", OpenClusterNode, Null, [](HCLUSTER, LPCWSTR name) { return Utf8(name); },
        [&tap](HNODE result, HCLUSTER, LPCWSTR name) { tap.Label(result, Utf8(name)); });
    TAP("clusapi", CloseClusterNode, CloseFalse, handleOnly, nullptr);

    TAP("clusapi", CreateClusterResource, Null, ([of](HGROUP group, LPCWSTR name, LPCWSTR type, DWORD flags) {
            return Joined({of(group), Utf8(name), Utf8(type), Number(flags)});
        }),
        ([&tap](HRESOURCE result, HGROUP, LPCWSTR name, LPCWSTR, DWORD) { tap.Label(result, Utf8(name)); }));
    TAP("clusapi", DeleteClusterResource, Code, handleOnly, nullptr);
    TAP("clusapi", OnlineClusterResource, Code, handleOnly, nullptr);
    TAP("clusapi", OfflineClusterResource, Code, handleOnly, nullptr);
    TAP(
        "clusapi", GetClusterResourceState, MinusOne,
        [of](HRESOURCE resource, LPWSTR, LPDWORD, LPWSTR, LPDWORD) { return of(resource); }, nullptr);
    TAP("clusapi", ClusterResourceControl, Code,
        ([of](HRESOURCE resource, HNODE, DWORD code, LPVOID, DWORD cbIn, LPVOID, DWORD cbOut, LPDWORD) {
            return Joined({of(resource), ControlName(code), Number(cbIn ? cbIn : cbOut)});
        }),
        nullptr);
    TAP("clusapi", AddClusterResourceDependency, Code, ([of](HRESOURCE resource, HRESOURCE other) {
            return Joined({of(resource), of(other)});
        }),
        nullptr);
    TAP("clusapi", AddClusterResourceNode, Code, ([of](HRESOURCE resource, HNODE node) {
            return Joined({of(resource), of(node)});
        }),
        nullptr);
    TAP("clusapi", ClusterResourceOpenEnum, Null, ([of](HRESOURCE resource, DWORD mask) {
            return Joined({of(resource), Number(mask)});
        }),
        nullptr);
    TAP(
        "clusapi", ClusterResourceEnum, Code,
        [](HRESENUM, DWORD index, LPDWORD, LPWSTR, LPDWORD cch) {
            return Joined({Number(index), Count(cch)});
        },
        nullptr);
    TAP("clusapi", ClusterResourceCloseEnum, CloseCode, nothing, nullptr);
    TAP("clusapi", ClusterGroupOpenEnum, Null, ([of](HGROUP group, DWORD mask) {
            return Joined({of(group), Number(mask)});
        }),
        nullptr);
    TAP(
        "clusapi", ClusterGroupEnum, Code,
        [](HGROUPENUM, DWORD index, LPDWORD, LPWSTR, LPDWORD cch) {
            return Joined({Number(index), Count(cch)});
        },
        nullptr);
    TAP("clusapi", ClusterGroupCloseEnum, CloseCode, nothing, nullptr);
}

void TapResourceUtilities(PlatformTap& tap) {
    const auto of = [&tap](const void* handle) { return tap.LabelOf(handle); };

    TAP("resutils", ResUtilGetResourceDependency, Null, ([of](HANDLE self, LPCWSTR type) {
            return Joined({of(self), Utf8(type)});
        }),
        ([&tap](HRESOURCE result, HANDLE self, LPCWSTR type) {
            tap.Label(result, Utf8(type) + " of " + tap.LabelOf(self));
        }));
    TAP("resutils", ResUtilGetResourceDependencyByClass, Null,
        ([of](HCLUSTER, HANDLE self, PCLUS_RESOURCE_CLASS_INFO info, BOOL recurse) {
            return Joined({of(self), "class " + Number(info->dw), recurse ? "recurse" : "direct"});
        }),
        ([&tap](HRESOURCE result, HCLUSTER, HANDLE self, PCLUS_RESOURCE_CLASS_INFO info, BOOL) {
            tap.Label(result, "class " + Number(info->dw) + " of " + tap.LabelOf(self));
        }));
    TAP("resutils", ResUtilFindSzProperty, Code, ([](const PVOID, DWORD, LPCWSTR name, LPWSTR*) { return Utf8(name); }),
        ([](DWORD result, const PVOID, DWORD, LPCWSTR, LPWSTR* text) {
            if (result == ERROR_SUCCESS && text) {
                HeapTap::AdoptBlock(*text); // the caller frees the copy
            }
        }));
    TAP("resutils", ResUtilFindDwordProperty, Code,
        ([](const PVOID, DWORD, LPCWSTR name, LPDWORD) { return Utf8(name); }), nullptr);
    TAP("resutils", ResUtilResourceTypesEqual, Answer, ([of](LPCWSTR type, HRESOURCE resource) {
            return Joined({Utf8(type), of(resource)});
        }),
        nullptr);
}

// The registry of this computer is nobody's business: a test without one of its own finds no key.
LSTATUS OpenRedirected(PlatformTap& tap, HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
    if (key == HKEY_LOCAL_MACHINE && tap.localMachine == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    return RegOpenKeyExW(key == HKEY_LOCAL_MACHINE ? tap.localMachine : key, path, options, access, result);
}

void TapOperatingSystem(PlatformTap& tap) {
    TAP_INSTEAD("advapi32", RegOpenKeyExW, Code, ([](HKEY, LPCWSTR path, DWORD, REGSAM, PHKEY) { return Utf8(path); }),
                ([&tap](LSTATUS result, HKEY, LPCWSTR path, DWORD, REGSAM, PHKEY key) {
                    if (result == ERROR_SUCCESS) {
                        tap.CountKey(1);
                        tap.Label(*key, Utf8(path));
                    }
                }),
                ([&tap](HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
                    return OpenRedirected(tap, key, path, options, access, result);
                }));
    TAP(
        "advapi32", RegQueryValueExW, Code,
        [](HKEY, LPCWSTR name, LPDWORD, LPDWORD, LPBYTE, LPDWORD) { return Utf8(name); }, nullptr);
    TAP(
        "advapi32", RegCloseKey, CloseCode, [](HKEY) { return std::string(); },
        ([&tap](LSTATUS result, HKEY) { tap.CountKey(result == ERROR_SUCCESS ? -1 : 0); }));
    TAP("kernel32", GetComputerNameW, Null, ([](LPWSTR, LPDWORD) { return std::string(); }), nullptr);
    TAP("kernel32", GetModuleFileNameW, Null, ([](HMODULE, LPWSTR, DWORD) { return std::string(); }), nullptr);
    TAP("kernel32", GetVolumeNameForVolumeMountPointW, Null, ([](LPCWSTR path, LPWSTR, DWORD) { return Utf8(path); }),
        nullptr);
    // The library does not look at the results: after a start that failed it stops what is not started.
    TAP("ws2_32", WSAStartup, Code, ([](WORD, LPWSADATA) { return std::string(); }),
        ([&tap](int result, WORD, LPWSADATA) { tap.CountWinsock(result == 0 ? 1 : 0); }));
    TAP(
        "ws2_32", WSACleanup, CloseInvalid, []() { return std::string(); },
        ([&tap](int result) { tap.CountWinsock(result == 0 ? -1 : 0); }));
    TAP("ws2_32", gethostbyaddr, Null, ([](const char*, int, int) { return std::string(); }), nullptr);
    if (!FindImports(LibraryModule(), "kernel32.dll", "Sleep").empty()) {
        tap.Install(std::make_unique<TappedSleep>(tap));
    }
}

} // namespace

void InstallTapTable(PlatformTap& tap) {
    TapClusterCalls(tap);
    TapResourceUtilities(tap);
    TapOperatingSystem(tap);
    InstallProcessTapTable(tap);
}

} // namespace harness
