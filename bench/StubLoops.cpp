#include "StubLoops.h"

#include "BareSupport.h"
#include "StubCluster.h"

#include "DebugLog.h"

#include <cwchar>
#include <vector>

namespace bench {

namespace {

const wchar_t ProductType[] = L"clusRDLL";
const DWORD NodeCharacters = 16;

// Calls visit(index, text) for every name.
template <typename Visit> void ForEachName(HCLUSTER cluster, Visit visit) {
    HCLUSENUM list = ClusterOpenEnum(cluster, CLUSTER_ENUM_RESOURCE);
    wchar_t text[LongestName];
    DWORD type = 0;
    DWORD index = 0;
    for (DWORD cch = LongestName; ClusterEnum(list, index, &type, text, &cch) == ERROR_SUCCESS; cch = LongestName) {
        visit(index++, text);
    }
    ClusterCloseEnum(list);
}

// Calls visit(name, resource, type) for every name of a block of such.
template <typename Visit> void ForEachResource(HCLUSTER cluster, Visit visit) {
    std::vector<wchar_t> names;
    ForEachName(cluster, [&names](DWORD, const wchar_t* text) {
        names.insert(names.end(), text, text + std::wcslen(text) + 1);
    });
    alignas(8) unsigned char reply[ReplyBytes];
    const wchar_t* const end = names.data() + names.size();
    for (const wchar_t* name = names.data(); name != end; name += std::wcslen(name) + 1) {
        HRESOURCE resource = OpenClusterResource(cluster, name);
        DWORD cb = 0;
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, nullptr, 0, reply, sizeof(reply),
                               &cb);
        visit(name, resource, reinterpret_cast<const wchar_t*>(reply));
        CloseClusterResource(resource);
    }
}

template <typename Visit> void CallForEach(std::size_t resources, Visit visit) {
    HCLUSTER cluster = OpenCluster(nullptr);
    ForEachName(cluster, [](DWORD, const wchar_t*) {});
    alignas(8) unsigned char reply[ReplyBytes];
    for (std::size_t i = 0; i < resources; ++i) {
        HRESOURCE resource = OpenClusterResource(cluster, L"Disk");
        DWORD cb = 0;
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, nullptr, 0, reply, sizeof(reply),
                               &cb);
        visit(i, resource);
        CloseClusterResource(resource);
    }
    CloseCluster(cluster);
}

template <typename... A> void Log(const wchar_t* format, A... arguments) {
    DBG::DebugLogEx(nullptr, 0x102, "bench", 1, format, arguments...);
}

} // namespace

void CallsOfEnumServers(std::size_t resources) {
    CallForEach(resources, [](std::size_t i, HRESOURCE resource) {
        if (i % StubTypes == StubTypes - 1) {
            wchar_t node[NodeCharacters];
            DWORD cchNode = NodeCharacters;
            DWORD cchGroup = 0;
            GetClusterResourceState(resource, node, &cchNode, nullptr, &cchGroup);
        }
    });
}

void CallsOfNamesByType(std::size_t resources) {
    CallForEach(resources, [](std::size_t, HRESOURCE) {});
}

std::size_t BestEnumServers(const FoundServer& found) {
    std::size_t count = 0;
    wchar_t computer[NodeCharacters];
    DWORD cchComputer = NodeCharacters;
    GetComputerNameW(computer, &cchComputer);
    HCLUSTER cluster = OpenCluster(nullptr);
    ForEachResource(cluster, [&](const wchar_t* name, HRESOURCE resource, const wchar_t* type) {
        Log(L"Opening resource:");
        Log(L"%s", name);
        if (std::wcscmp(type, ProductType) != 0 && std::wcscmp(type, L"clusRDLLCCR") != 0) {
            Log(L"Skip resource %s:%s", name, type);
            return;
        }
        Log(L"Process resource %s:%s...", name, type);
        wchar_t node[NodeCharacters];
        DWORD cchNode = NodeCharacters;
        DWORD cchGroup = 0;
        const CLUSTER_RESOURCE_STATE state = GetClusterResourceState(resource, node, &cchNode, nullptr, &cchGroup);
        if (std::wcscmp(node, computer) != 0) {
            Log(L"This resource: %s is online on node:%s, skip.", name, static_cast<const wchar_t*>(node));
            return;
        }
        found(resource, state == ClusterResourceOnline);
        ++count;
    });
    CloseCluster(cluster);
    return count;
}

std::list<std::wstring> BestNamesByType(const wchar_t* type) {
    std::list<std::wstring> names;
    HCLUSTER cluster = OpenCluster(nullptr);
    ForEachResource(cluster, [&](const wchar_t* name, HRESOURCE, const wchar_t* found) {
        if (std::wcscmp(found, type) == 0) {
            names.emplace_back(name);
        }
    });
    CloseCluster(cluster);
    return names;
}

} // namespace bench
