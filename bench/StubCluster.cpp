#include "StubCluster.h"

#include "ImportPatch.h"

#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace bench {

namespace {

struct Kind {
    std::wstring name;
    std::wstring type;
};

const Kind Kinds[StubTypes] = {{L"Exchange IP Address", L"IP Address"},
                               {L"Exchange Network Name", L"Network Name"},
                               {L"Disk", L"Physical Disk"},
                               {L"Exchange System Attendant", L"Microsoft Exchange System Attendant"},
                               {L"Exchange Information Store", StubStoreType},
                               {L"Exchange SMTP Server", L"Microsoft Exchange SMTP Server Instance"},
                               {L"Exchange Routing Service", L"Generic Service"},
                               {L"Exchange Message Transfer", L"Generic Service"},
                               {L"Exchange Full Text Search", L"Generic Service"},
                               {L"Product", L"clusRDLL"}};
const std::wstring OtherNode = L"OTHERNODE";

std::size_t TheResources = 0;
std::size_t TheCalls = 0;
std::size_t TheNextResource = 0; // resources are opened in their order

template <typename Handle> Handle HandleOf(std::size_t number) {
    return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(number));
}

void Copy(const std::wstring& text, void* out) {
    std::memcpy(out, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

HCLUSTER WINAPI StubOpenCluster(LPCWSTR) {
    ++TheCalls;
    TheNextResource = 0;
    return HandleOf<HCLUSTER>(1);
}

BOOL WINAPI StubCloseCluster(HCLUSTER) {
    ++TheCalls;
    return TRUE;
}

HCLUSENUM WINAPI StubOpenEnum(HCLUSTER, DWORD) {
    ++TheCalls;
    return HandleOf<HCLUSENUM>(1);
}

// Put together at each call: a list of prepared names would push what is measured out of the caches.
DWORD WINAPI StubEnum(HCLUSENUM, DWORD index, LPDWORD type, LPWSTR text, LPDWORD cch) {
    ++TheCalls;
    if (index >= TheResources) {
        return ERROR_NO_MORE_ITEMS;
    }
    const DWORD size = StubName(index, text, *cch);
    const bool isStored = size < *cch;
    *cch = size;
    *type = CLUSTER_ENUM_RESOURCE;
    return isStored ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

DWORD WINAPI StubCloseEnum(HCLUSENUM) {
    ++TheCalls;
    return ERROR_SUCCESS;
}

HRESOURCE WINAPI StubOpenResource(HCLUSTER, LPCWSTR) {
    ++TheCalls;
    return HandleOf<HRESOURCE>(++TheNextResource);
}

BOOL WINAPI StubCloseResource(HRESOURCE) {
    ++TheCalls;
    return TRUE;
}

DWORD WINAPI StubResourceControl(HRESOURCE resource, HNODE, DWORD, LPVOID, DWORD, LPVOID out, DWORD cbOut, LPDWORD cb) {
    ++TheCalls;
    const std::wstring& type = Kinds[(reinterpret_cast<std::uintptr_t>(resource) - 1) % StubTypes].type;
    *cb = static_cast<DWORD>((type.size() + 1) * sizeof(wchar_t));
    if (cbOut < *cb) {
        return ERROR_MORE_DATA;
    }
    Copy(type, out);
    return ERROR_SUCCESS;
}

CLUSTER_RESOURCE_STATE WINAPI StubResourceState(HRESOURCE, LPWSTR node, LPDWORD cchNode, LPWSTR, LPDWORD) {
    ++TheCalls;
    Copy(OtherNode, node);
    *cchNode = static_cast<DWORD>(OtherNode.size());
    return ClusterResourceOnline;
}

struct Stub {
    const char* name;
    void* function;
};

const Stub Stubs[] = {{"OpenCluster", reinterpret_cast<void*>(&StubOpenCluster)},
                      {"CloseCluster", reinterpret_cast<void*>(&StubCloseCluster)},
                      {"ClusterOpenEnum", reinterpret_cast<void*>(&StubOpenEnum)},
                      {"ClusterEnum", reinterpret_cast<void*>(&StubEnum)},
                      {"ClusterCloseEnum", reinterpret_cast<void*>(&StubCloseEnum)},
                      {"OpenClusterResource", reinterpret_cast<void*>(&StubOpenResource)},
                      {"CloseClusterResource", reinterpret_cast<void*>(&StubCloseResource)},
                      {"ClusterResourceControl", reinterpret_cast<void*>(&StubResourceControl)},
                      {"GetClusterResourceState", reinterpret_cast<void*>(&StubResourceState)}};

} // namespace

// "KIND NUMBER".
DWORD StubName(DWORD index, wchar_t* text, DWORD capacity) {
    const std::wstring& kind = Kinds[index % StubTypes].name;
    DWORD number = index / StubTypes;
    DWORD digits = 1;
    for (DWORD rest = number; rest >= 10; rest /= 10) {
        ++digits;
    }
    const DWORD size = static_cast<DWORD>(kind.size()) + 1 + digits;
    if (size >= capacity) {
        return size;
    }
    std::memcpy(text, kind.data(), kind.size() * sizeof(wchar_t));
    text[kind.size()] = L' ';
    text[size] = L'\0';
    for (wchar_t* digit = text + size; digits != 0; --digits, number /= 10) {
        *--digit = static_cast<wchar_t>(L'0' + number % 10);
    }
    return size;
}

struct StubCluster::Patches {
    std::vector<std::unique_ptr<harness::ImportEntryPatch>> patches;
};

StubCluster::StubCluster(std::size_t resources) : m_patches(std::make_unique<Patches>()) {
    TheResources = resources;
    for (const HMODULE module : {harness::LibraryModule(), GetModuleHandleW(nullptr)}) {
        for (const Stub& stub : Stubs) {
            m_patches->patches.push_back(std::make_unique<harness::ImportEntryPatch>(
                harness::FindImports(module, "clusapi.dll", stub.name), stub.function));
        }
    }
}

StubCluster::~StubCluster() = default;

std::size_t StubCluster::CallsOf(const std::function<void()>& run) const {
    TheCalls = 0;
    run();
    return TheCalls;
}

} // namespace bench
