#include "BareCalls.h"

#include "clus_Platform.h"

#include <cwchar>
#include <stdexcept>

namespace bench {

namespace {

const DWORD ReplyBytes = 128; // the size the library starts with, so that both need a second call for the same replies
const std::size_t LargeReplyBytes = 4096;

void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

// A control call's reply in a buffer on the stack.
struct Reply {
    alignas(8) unsigned char bytes[LargeReplyBytes];
    DWORD cb = 0;

    Reply(HRESOURCE resource, DWORD code) {
        DWORD result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, bytes, ReplyBytes, &cb);
        if (result == ERROR_MORE_DATA && cb <= LargeReplyBytes) {
            result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, bytes, cb, &cb);
        }
        Require(result == ERROR_SUCCESS, "ClusterResourceControl");
    }
    const wchar_t* Text() const {
        return reinterpret_cast<const wchar_t*>(bytes);
    }
};

template <std::size_t Size> void Store(wchar_t (&member)[Size], const wchar_t* text) {
    std::wcsncpy(member, text, Size - 1);
}

template <std::size_t Size> void StoreProperty(HRESOURCE resource, const wchar_t* name, wchar_t (&member)[Size]) {
    Reply reply(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES);
    wchar_t* text = nullptr;
    Require(ResUtilFindSzProperty(reply.bytes, reply.cb, name, &text) == ERROR_SUCCESS, "ResUtilFindSzProperty");
    Store(member, text);
    LocalFree(text);
}

void FillRecord(HRESOURCE resource, CClusterVirtualServerInfo& record) {
    const Reply type(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
    HRESOURCE networkName = ResUtilGetResourceDependency(resource, L"Network Name");
    Require(networkName != nullptr, "no Network Name");
    HRESOURCE address = ResUtilGetResourceDependency(networkName, L"IP Address");
    Require(address != nullptr, "no IP Address");
    Store(record.m_wsServerName, Reply(networkName, CLUSCTL_RESOURCE_GET_NETWORK_NAME).Text());
    StoreProperty(resource, L"KOVA_DATA_PATH", record.m_wsDataPath);
    Require(ResUtilResourceTypesEqual(L"clusRDLL", resource) != FALSE, "not the product's type");
    StoreProperty(resource, L"KOVA_DATA_PATH", record.m_wsDataPath); // required twice
    Store(record.m_wsServerGUID, Reply(networkName, CLUSCTL_RESOURCE_GET_ID).Text());
    StoreProperty(address, L"Address", record.m_wsServerIP);
    CloseClusterResource(address);
    CloseClusterResource(networkName);
}

// Calls visit(resource, type) for every resource.
template <typename Visit> void ForEachResource(Visit visit) {
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    HCLUSENUM hEnum = ClusterOpenEnum(cluster, CLUSTER_ENUM_RESOURCE);
    Require(hEnum != nullptr, "ClusterOpenEnum");
    for (DWORD index = 0;; ++index) {
        wchar_t name[256];
        DWORD type = 0;
        DWORD cch = 256;
        const DWORD code = ClusterEnum(hEnum, index, &type, name, &cch);
        if (code == ERROR_NO_MORE_ITEMS) {
            break;
        }
        Require(code == ERROR_SUCCESS, "ClusterEnum");
        HRESOURCE resource = OpenClusterResource(cluster, name);
        Require(resource != nullptr, "OpenClusterResource");
        visit(resource, Reply(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE).Text());
        CloseClusterResource(resource);
    }
    ClusterCloseEnum(hEnum);
    CloseCluster(cluster);
}

} // namespace

std::size_t BareEnumServers(CClusterVirtualServerInfo* records, std::size_t capacity) {
    wchar_t computer[16] = L"";
    DWORD cchComputer = 16;
    GetComputerNameW(computer, &cchComputer);
    std::size_t count = 0;
    ForEachResource([&](HRESOURCE resource, const wchar_t* type) {
        if (std::wcscmp(type, L"clusRDLL") != 0 && std::wcscmp(type, L"clusRDLLCCR") != 0) {
            return;
        }
        wchar_t node[16];
        DWORD cchNode = 16;
        DWORD cchGroup = 0;
        const CLUSTER_RESOURCE_STATE state = GetClusterResourceState(resource, node, &cchNode, nullptr, &cchGroup);
        if (std::wcscmp(node, computer) == 0 && count < capacity) {
            records[count].m_bIsOnline = state == ClusterResourceOnline;
            FillRecord(resource, records[count++]);
        }
    });
    return count;
}

std::size_t BareCountResourcesOfType(const wchar_t* type) {
    std::size_t count = 0;
    ForEachResource([&](HRESOURCE, const wchar_t* found) { count += std::wcscmp(found, type) == 0 ? 1 : 0; });
    return count;
}

} // namespace bench
