#include "BareCalls.h"

#include "BareSupport.h"

#include <cwchar>

namespace bench {

namespace {

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

// Calls visit(name, resource, type) for every resource. Names are taken first: the list of resources may change while
// they are looked at.
template <typename Visit> void ForEachResource(Visit visit) {
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    for (std::wstring& name : ResourceNames(cluster)) {
        HRESOURCE resource = OpenResource(cluster, name);
        visit(name, resource, Reply(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE).Text());
        CloseClusterResource(resource);
    }
    CloseCluster(cluster);
}

} // namespace

void BareFillRecord(HRESOURCE resource, CClusterVirtualServerInfo& record) {
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

std::size_t BareEnumServers(const NextRecord& next) {
    wchar_t computer[16] = L"";
    DWORD cchComputer = 16;
    GetComputerNameW(computer, &cchComputer);
    std::size_t count = 0;
    ForEachResource([&](std::wstring&, HRESOURCE resource, const wchar_t* type) {
        if (std::wcscmp(type, L"clusRDLL") != 0 && std::wcscmp(type, L"clusRDLLCCR") != 0) {
            return;
        }
        wchar_t node[16];
        DWORD cchNode = 16;
        DWORD cchGroup = 0;
        const CLUSTER_RESOURCE_STATE state = GetClusterResourceState(resource, node, &cchNode, nullptr, &cchGroup);
        if (std::wcscmp(node, computer) == 0) {
            CClusterVirtualServerInfo& record = next();
            record.m_bIsOnline = state == ClusterResourceOnline;
            BareFillRecord(resource, record);
            ++count;
        }
    });
    return count;
}

std::size_t BareNamesOfType(const wchar_t* type) {
    NameList names;
    ForEachResource([&](std::wstring& name, HRESOURCE, const wchar_t* found) {
        if (std::wcscmp(found, type) == 0) {
            names.push_back(std::move(name));
        }
    });
    return names.size();
}

std::wstring BareDiskPath(HRESOURCE disk) {
    const Reply info(disk, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, 0);
    for (DWORD entry = 0; entry + 12 <= info.cb;) {
        const DWORD* header = reinterpret_cast<const DWORD*>(info.bytes + entry);
        if (header[0] == CLUSPROP_SYNTAX_PARTITION_INFO) {
            return std::wstring(reinterpret_cast<const wchar_t*>(info.bytes + entry + 12)) + L'\\';
        }
        entry += 8 + (header[1] + 3) / 4 * 4;
    }
    throw std::runtime_error("a disk without partitions");
}

} // namespace bench
