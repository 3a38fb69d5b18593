#include "BareCalls.h"
#include "BareSupport.h"

#include <cstring>
#include <cwchar>

namespace bench {

namespace {

const DWORD GroupNameStart = 8; // characters the library offers first for the names in a group

// The Network Name resource that carries this name.
std::wstring FindNetworkName(HCLUSTER cluster, const wchar_t* server) {
    for (const std::wstring& name : ResourceNames(cluster)) {
        HRESOURCE resource = OpenResource(cluster, name);
        const bool found =
            std::wcscmp(Reply(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE).Text(), L"Network Name") == 0 &&
            std::wcscmp(Reply(resource, CLUSCTL_RESOURCE_GET_NETWORK_NAME).Text(), server) == 0;
        CloseClusterResource(resource);
        if (found) {
            return name;
        }
    }
    throw std::runtime_error("no such network name");
}

NameList NamesOfTypeInGroup(HCLUSTER cluster, HGROUP group, const wchar_t* type) {
    HGROUPENUM hEnum = ClusterGroupOpenEnum(group, CLUSTER_GROUP_ENUM_CONTAINS);
    Require(hEnum != nullptr, "ClusterGroupOpenEnum");
    DWORD kind = 0;
    NameList all = CollectNames(GroupNameStart, [&](DWORD index, wchar_t* text, DWORD* cch) {
        return ClusterGroupEnum(hEnum, index, &kind, text, cch);
    });
    ClusterGroupCloseEnum(hEnum);
    NameList names;
    for (std::wstring& name : all) {
        HRESOURCE resource = OpenResource(cluster, name);
        if (std::wcscmp(Reply(resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE).Text(), type) == 0) {
            names.push_back(std::move(name));
        }
        CloseClusterResource(resource);
    }
    return names;
}

NameList OwnersOf(HRESOURCE resource) {
    HRESENUM hEnum = ClusterResourceOpenEnum(resource, CLUSTER_RESOURCE_ENUM_NODES);
    Require(hEnum != nullptr, "ClusterResourceOpenEnum");
    DWORD kind = 0;
    NameList names = CollectNames(LongestName, [&](DWORD index, wchar_t* text, DWORD* cch) {
        return ClusterResourceEnum(hEnum, index, &kind, text, cch);
    });
    ClusterResourceCloseEnum(hEnum);
    return names;
}

void RequireOnThisNode(HRESOURCE resource, CLUSTER_RESOURCE_STATE wanted, std::wstring* groupName) {
    wchar_t computer[16] = L"";
    wchar_t node[16] = L"";
    wchar_t group[LongestName] = L"";
    DWORD cchComputer = 16;
    DWORD cchNode = 16;
    DWORD cchGroup = groupName ? LongestName : 0;
    Require(GetComputerNameW(computer, &cchComputer), "GetComputerNameW");
    const CLUSTER_RESOURCE_STATE state =
        GetClusterResourceState(resource, node, &cchNode, groupName ? group : nullptr, &cchGroup);
    Require(state == wanted && std::wcscmp(node, computer) == 0, "a resource in another state or on another node");
    if (groupName) {
        *groupName = group;
    }
}

// A property list with one property.
class PropertyList {
public:
    explicit PropertyList(const wchar_t* name) {
        Number(1);
        Text(CLUSPROP_SYNTAX_NAME, name);
    }
    PropertyList& Text(DWORD syntax, const wchar_t* text) {
        const DWORD cbText = static_cast<DWORD>((std::wcslen(text) + 1) * sizeof(wchar_t));
        Number(syntax);
        Number(cbText);
        std::memcpy(m_bytes + m_cb, text, cbText);
        m_cb += (cbText + 3) / 4 * 4;
        return *this;
    }
    PropertyList& Number(DWORD number) {
        std::memcpy(m_bytes + m_cb, &number, sizeof(number));
        m_cb += sizeof(number);
        return *this;
    }
    void Set(HRESOURCE resource, DWORD code) {
        Number(CLUSPROP_SYNTAX_ENDMARK);
        Require(ClusterResourceControl(resource, nullptr, code, m_bytes, m_cb, nullptr, 0, nullptr) == ERROR_SUCCESS,
                "a property is refused");
    }

private:
    unsigned char m_bytes[512] = {};
    DWORD m_cb = 0;
};

// The only resource of a type, opened.
HRESOURCE OpenOnly(HCLUSTER cluster, HGROUP group, const wchar_t* type) {
    const NameList names = NamesOfTypeInGroup(cluster, group, type);
    Require(names.size() == 1, "not one resource of a type in the group");
    return OpenResource(cluster, names.front());
}

} // namespace

void TakeOffline(const wchar_t* name) {
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    HRESOURCE resource = OpenResource(cluster, name);
    DWORD code = OfflineClusterResource(resource);
    DWORD cchNode = 0;
    DWORD cchGroup = 0;
    for (int polls = 0; code == ERROR_IO_PENDING && polls < 600; ++polls) {
        Sleep(100);
        if (GetClusterResourceState(resource, nullptr, &cchNode, nullptr, &cchGroup) == ClusterResourceOffline) {
            code = ERROR_SUCCESS;
        }
    }
    Require(code == ERROR_SUCCESS, "OfflineClusterResource");
    CloseClusterResource(resource);
    CloseCluster(cluster);
}

void BareDeleteProductResource(const wchar_t* server) {
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    HRESOURCE networkName = OpenResource(cluster, FindNetworkName(cluster, server));
    wchar_t groupName[LongestName] = L"";
    DWORD cchNode = 0;
    DWORD cchGroup = LongestName;
    GetClusterResourceState(networkName, nullptr, &cchNode, groupName, &cchGroup);
    HGROUP group = OpenClusterGroup(cluster, groupName);
    Require(group != nullptr, "OpenClusterGroup");
    const NameList products = NamesOfTypeInGroup(cluster, group, L"clusRDLL");
    CloseClusterGroup(group);
    CloseClusterResource(networkName);
    Require(products.size() == 1, "not one product resource");
    HRESOURCE product = OpenResource(cluster, products.front());
    RequireOnThisNode(product, ClusterResourceOffline, nullptr);
    Require(DeleteClusterResource(product) == ERROR_SUCCESS, "DeleteClusterResource");
    CloseClusterResource(product);
    CloseCluster(cluster);
}

void BareCreateProductResource(const wchar_t* server, const wchar_t* name, const wchar_t* dataPath,
                               const wchar_t* diskName) {
    HCLUSTER cluster = OpenCluster(nullptr);
    Require(cluster != nullptr, "OpenCluster");
    HRESOURCE networkName = OpenResource(cluster, FindNetworkName(cluster, server));
    std::wstring groupName;
    RequireOnThisNode(networkName, ClusterResourceOnline, &groupName);
    HGROUP group = OpenClusterGroup(cluster, groupName.c_str());
    Require(group != nullptr, "OpenClusterGroup");
    Require(NamesOfTypeInGroup(cluster, group, L"clusRDLL").empty(), "there is a product resource");
    Require(NamesOfTypeInGroup(cluster, group, L"clusRDLLCCR").empty(), "there is a product resource");
    HRESOURCE attendant = OpenOnly(cluster, group, L"Microsoft Exchange System Attendant");
    HRESOURCE store = OpenOnly(cluster, group, L"Microsoft Exchange Information Store");
    HRESOURCE disk = OpenResource(cluster, diskName);
    RequireOnThisNode(disk, ClusterResourceOnline, nullptr);

    HRESOURCE product = CreateClusterResource(group, name, L"clusRDLL", 0);
    Require(product != nullptr, "CreateClusterResource");
    for (HRESOURCE provider : {disk, store, networkName}) {
        Require(AddClusterResourceDependency(product, provider) == ERROR_SUCCESS, "AddClusterResourceDependency");
    }
    for (const std::wstring& nodeName : OwnersOf(attendant)) {
        HNODE node = OpenClusterNode(cluster, nodeName.c_str());
        Require(node != nullptr, "OpenClusterNode");
        const DWORD code = AddClusterResourceNode(product, node);
        Require(code == ERROR_SUCCESS || code == ERROR_OBJECT_ALREADY_EXISTS, "AddClusterResourceNode");
        CloseClusterNode(node);
    }
    PropertyList(L"KOVA_DATA_PATH")
        .Text(CLUSPROP_SYNTAX_LIST_VALUE_SZ, dataPath)
        .Set(product, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES);
    PropertyList(L"RestartAction")
        .Number(CLUSPROP_SYNTAX_LIST_VALUE_DWORD)
        .Number(sizeof(DWORD))
        .Number(1)
        .Set(product, CLUSCTL_RESOURCE_SET_COMMON_PROPERTIES);

    CloseClusterResource(disk);
    CloseClusterResource(store);
    CloseClusterResource(attendant);
    CloseClusterGroup(group);
    CloseClusterResource(networkName);
    CloseClusterResource(product);
    CloseCluster(cluster);
}

} // namespace bench
