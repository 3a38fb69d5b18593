// The cluster interface.
#include "Bytes.h"
#include "Platform.h"

#include "core/ValueList.h"
#include "platform/ClusterApi.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

using harness::Bytes;
using harness::Concat;
using harness::Entry;
using harness::NumberBytes;
using harness::TextBytes;

namespace hostile {

namespace {

Chance& TheChance() {
    return TheAttack().chance;
}

// A new handle, or null.
template <typename Handle> Handle Opened(Kind kind) {
    return TheAttack().Fails() ? nullptr : static_cast<Handle>(TheAttack().Open(kind));
}

BOOL AnyTruth() {
    const BOOL truths[] = {TRUE, TRUE, FALSE, -1, 256};
    return TheChance().Of(truths);
}

HCLUSTER WINAPI HostileOpenCluster(LPCWSTR name) {
    const PlatformCall call;
    Touch(name);
    return Opened<HCLUSTER>(Kind::Cluster);
}

BOOL WINAPI HostileCloseCluster(HCLUSTER cluster) {
    const PlatformCall call;
    TheAttack().Close(cluster, Kind::Cluster);
    return AnyTruth();
}

HCLUSTER WINAPI HostileGetClusterFromResource(HRESOURCE resource) {
    const PlatformCall call;
    return TheAttack().Uses(resource, Kind::Resource) ? Opened<HCLUSTER>(Kind::Cluster) : nullptr;
}

// An answer with a text and the count of its characters, with which it is free to do as it likes.
DWORD AnswerText(LPWSTR text, LPDWORD cch, const wchar_t* content) {
    const DWORD given = *cch;
    if (TheChance().OneIn(40)) {
        *cch = SomeLength(TheChance(), given);
        return TheChance().OneIn(2) ? static_cast<DWORD>(ERROR_MORE_DATA) : TheAttack().Failure();
    }
    if (TheAttack().Fails()) {
        return TheAttack().Failure();
    }
    const DWORD length = static_cast<DWORD>(std::wcslen(content));
    if (length >= given && TheChance().OneIn(2)) {
        *cch = length;
        return ERROR_MORE_DATA;
    }
    WriteText(text, given, content);
    *cch = TheChance().OneIn(4) ? SomeLength(TheChance(), given) : length;
    return ERROR_SUCCESS;
}

DWORD WINAPI HostileGetClusterInformation(HCLUSTER cluster, LPWSTR name, LPDWORD cch, LPCLUSTERVERSIONINFO) {
    const PlatformCall call;
    TheAttack().Uses(cluster, Kind::Cluster);
    return AnswerText(name, cch, SomeName(TheChance()));
}

// All enumerators are alike: each has so many entries, and may answer with the same code ever after.
struct Enumerator {
    std::size_t entries;
    DWORD end;
};
std::map<const void*, Enumerator> enumerators;

template <typename Handle> Handle OpenEnumerator() {
    const auto handle = Opened<Handle>(Kind::Enumerator);
    if (handle) {
        const std::size_t most = TheChance().OneIn(100) ? 200 : 16;
        enumerators[handle] = {TheChance().Below(most),
                               TheChance().OneIn(40) ? TheAttack().Failure() : static_cast<DWORD>(ERROR_NO_MORE_ITEMS)};
    }
    return handle;
}

DWORD Enumerate(const void* handle, DWORD index, LPDWORD type, LPWSTR text, LPDWORD cch) {
    if (!TheAttack().Uses(handle, Kind::Enumerator)) {
        return ERROR_INVALID_HANDLE;
    }
    const Enumerator& enumerator = enumerators[handle];
    if (index >= enumerator.entries) {
        *cch = SomeLength(TheChance(), *cch);
        return enumerator.end;
    }
    *type = static_cast<DWORD>(TheChance().Next());
    return AnswerText(text, cch, SomeName(TheChance()));
}

DWORD CloseEnumerator(const void* handle) {
    TheAttack().Close(handle, Kind::Enumerator);
    enumerators.erase(handle);
    return TheAttack().Code();
}

HCLUSENUM WINAPI HostileClusterOpenEnum(HCLUSTER cluster, DWORD) {
    const PlatformCall call;
    TheAttack().Uses(cluster, Kind::Cluster);
    return OpenEnumerator<HCLUSENUM>();
}
DWORD WINAPI HostileClusterEnum(HCLUSENUM handle, DWORD index, LPDWORD type, LPWSTR text, LPDWORD cch) {
    const PlatformCall call;
    return Enumerate(handle, index, type, text, cch);
}
DWORD WINAPI HostileClusterCloseEnum(HCLUSENUM handle) {
    const PlatformCall call;
    return CloseEnumerator(handle);
}
HRESENUM WINAPI HostileClusterResourceOpenEnum(HRESOURCE resource, DWORD) {
    const PlatformCall call;
    TheAttack().Uses(resource, Kind::Resource);
    return OpenEnumerator<HRESENUM>();
}
DWORD WINAPI HostileClusterResourceEnum(HRESENUM handle, DWORD index, LPDWORD type, LPWSTR text, LPDWORD cch) {
    const PlatformCall call;
    return Enumerate(handle, index, type, text, cch);
}
DWORD WINAPI HostileClusterResourceCloseEnum(HRESENUM handle) {
    const PlatformCall call;
    return CloseEnumerator(handle);
}
HGROUPENUM WINAPI HostileClusterGroupOpenEnum(HGROUP group, DWORD) {
    const PlatformCall call;
    return TheAttack().Uses(group, Kind::Group) ? OpenEnumerator<HGROUPENUM>() : nullptr;
}
DWORD WINAPI HostileClusterGroupEnum(HGROUPENUM handle, DWORD index, LPDWORD type, LPWSTR text, LPDWORD cch) {
    const PlatformCall call;
    return Enumerate(handle, index, type, text, cch);
}
DWORD WINAPI HostileClusterGroupCloseEnum(HGROUPENUM handle) {
    const PlatformCall call;
    return CloseEnumerator(handle);
}

HRESOURCE WINAPI HostileOpenClusterResource(HCLUSTER cluster, LPCWSTR name) {
    const PlatformCall call;
    TheAttack().Uses(cluster, Kind::Cluster);
    Touch(name);
    return Opened<HRESOURCE>(Kind::Resource);
}
BOOL WINAPI HostileCloseClusterResource(HRESOURCE resource) {
    const PlatformCall call;
    TheAttack().Close(resource, Kind::Resource);
    return AnyTruth();
}
HGROUP WINAPI HostileOpenClusterGroup(HCLUSTER cluster, LPCWSTR name) {
    const PlatformCall call;
    TheAttack().Uses(cluster, Kind::Cluster);
    Touch(name);
    return Opened<HGROUP>(Kind::Group);
}
// A group is closed by each of its copies, and may be closed again.
BOOL WINAPI HostileCloseClusterGroup(HGROUP group) {
    const PlatformCall call;
    if (TheAttack().IsOpen(group, Kind::Group)) {
        TheAttack().Close(group, Kind::Group);
    }
    return AnyTruth();
}
HNODE WINAPI HostileOpenClusterNode(HCLUSTER cluster, LPCWSTR name) {
    const PlatformCall call;
    TheAttack().Uses(cluster, Kind::Cluster);
    Touch(name);
    return Opened<HNODE>(Kind::Node);
}
BOOL WINAPI HostileCloseClusterNode(HNODE node) {
    const PlatformCall call;
    TheAttack().Close(node, Kind::Node);
    return AnyTruth();
}

HRESOURCE WINAPI HostileCreateClusterResource(HGROUP group, LPCWSTR name, LPCWSTR type, DWORD) {
    const PlatformCall call;
    TheAttack().Uses(group, Kind::Group);
    Touch(name);
    Touch(type);
    return Opened<HRESOURCE>(Kind::Resource);
}
DWORD WINAPI HostileDeleteClusterResource(HRESOURCE resource) {
    const PlatformCall call;
    TheAttack().Uses(resource, Kind::Resource);
    return TheAttack().Code();
}
DWORD WINAPI HostileSwitch(HRESOURCE resource) {
    const PlatformCall call;
    TheAttack().Uses(resource, Kind::Resource);
    return TheChance().OneIn(3) ? static_cast<DWORD>(ERROR_IO_PENDING) : TheAttack().Code();
}
DWORD WINAPI HostileAddClusterResourceDependency(HRESOURCE resource, HRESOURCE other) {
    const PlatformCall call;
    TheAttack().Uses(resource, Kind::Resource);
    TheAttack().Uses(other, Kind::Resource);
    return TheAttack().Code();
}
DWORD WINAPI HostileAddClusterResourceNode(HRESOURCE resource, HNODE node) {
    const PlatformCall call;
    TheAttack().Uses(resource, Kind::Resource);
    TheAttack().Uses(node, Kind::Node);
    return TheAttack().Code();
}

CLUSTER_RESOURCE_STATE WINAPI HostileGetClusterResourceState(HRESOURCE resource, LPWSTR node, LPDWORD cchNode,
                                                             LPWSTR group, LPDWORD cchGroup) {
    const PlatformCall call;
    const int states[] = {0, 1, 2, 2, 2, 3, 4, 128, 129, 130, -1, 77, static_cast<int>(0x80000000)};
    if (!TheAttack().Uses(resource, Kind::Resource)) {
        return ClusterResourceStateUnknown;
    }
    if (node) {
        WriteText(node, *cchNode, TheChance().OneIn(3) ? SomeName(TheChance()) : L"NODE-A");
    }
    if (group) {
        WriteText(group, *cchGroup, SomeName(TheChance()));
    }
    for (DWORD* const count : {cchNode, cchGroup}) {
        if (count && TheChance().OneIn(4)) {
            *count = SomeLength(TheChance(), *count);
        }
    }
    return static_cast<CLUSTER_RESOURCE_STATE>(TheAttack().Fails() ? -1 : TheChance().Of(states));
}

// The value list of a disk, with a few partitions.
Bytes DiskInformation() {
    const wchar_t* const devices[] = {L"Disk1Partition2", L"F:", L"F:\\", L"disk0partition0", L"Disk12Partition1", L""};
    Bytes list = Entry(0x00000000 + 0x00120002, NumberBytes(7));
    for (std::size_t partitions = TheChance().Below(4); partitions > 0; --partitions) {
        Bytes device = TextBytes(TheChance().Of(devices));
        device.resize(TheChance().OneIn(8) ? device.size() : clus::PartitionTextSize, 'x');
        list = Concat({list, Entry(clus::SyntaxPartitionInfo, Concat({NumberBytes(1), device}))});
    }
    return TheChance().OneIn(8) ? list : Concat({list, NumberBytes(0)});
}

Bytes ControlAnswer(DWORD code) {
    switch (code) {
    case CLUSCTL_RESOURCE_GET_RESOURCE_TYPE:
        return TextBytes(SomeType(TheChance()));
    case CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO:
        return DiskInformation();
    case CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES:
        return harness::PropertyListOf(L"KOVA_DATA_PATH", 0x00010003, TextBytes(SomeName(TheChance())));
    case CLUSCTL_RESOURCE_GET_CLASS_INFO:
        return Concat({NumberBytes(static_cast<std::uint32_t>(TheChance().Below(3))), NumberBytes(0)});
    default:
        return TextBytes(SomeName(TheChance()));
    }
}

// Changes an answer so that it fits no format any more.
void Damage(Bytes& answer) {
    switch (TheChance().Below(4)) {
    case 0:
        answer.resize(TheChance().Below(answer.size() + 1));
        break;
    case 1:
        answer.resize(answer.size() + TheChance().Below(3000), 'x');
        break;
    case 2:
        if (answer.size() >= 8) { // a length within it
            const DWORD length = SomeLength(TheChance(), 8);
            std::memcpy(answer.data() + TheChance().Below(answer.size() / 4) * 4, &length, sizeof(length));
        }
        break;
    default:
        for (unsigned char& byte : answer) {
            byte = TheChance().OneIn(4) ? static_cast<unsigned char>(TheChance().Next()) : byte;
        }
        break;
    }
}

DWORD WINAPI HostileClusterResourceControl(HRESOURCE resource, HNODE, DWORD code, LPVOID in, DWORD cbIn, LPVOID out,
                                           DWORD cbOut, LPDWORD cbReturned) {
    const PlatformCall call;
    Touch(in, cbIn);
    if (!TheAttack().Uses(resource, Kind::Resource)) {
        return ERROR_INVALID_HANDLE;
    }
    Bytes answer = ControlAnswer(code);
    if (TheChance().OneIn(6)) {
        Damage(answer);
    }
    DWORD result = TheAttack().Code();
    const DWORD cb = static_cast<DWORD>(answer.size());
    if (result == ERROR_SUCCESS && cb > cbOut && in == nullptr) {
        result = ERROR_MORE_DATA;
    }
    if (out && cbOut > 0) {
        if (TheChance().OneIn(10)) {
            answer.resize(cbOut, 'x'); // to the last byte
        }
        std::copy_n(answer.begin(), std::min<std::size_t>(answer.size(), cbOut), static_cast<unsigned char*>(out));
    }
    if (cbReturned) {
        *cbReturned = TheChance().OneIn(8) ? SomeLength(TheChance(), cbOut) : cb;
    }
    return result;
}

GuardedHeaps* localHeap = nullptr;

DWORD WINAPI HostileResUtilFindSzProperty(const PVOID list, DWORD cb, LPCWSTR name, LPWSTR* text) {
    const PlatformCall call;
    Touch(list, cb);
    Touch(name);
    if (TheAttack().Fails()) {
        return TheAttack().Failure();
    }
    *text = nullptr;
    if (!TheChance().OneIn(20)) {
        const wchar_t* const content = SomeName(TheChance());
        const std::size_t cch = std::wcslen(content) + (TheChance().OneIn(4) ? 0 : 1); // without terminator: to its end
        *text = static_cast<wchar_t*>(localHeap->local.Allocate(cch * sizeof(wchar_t)));
        std::copy_n(content, cch, *text);
    }
    return ERROR_SUCCESS;
}

DWORD WINAPI HostileResUtilFindDwordProperty(const PVOID list, DWORD cb, LPCWSTR name, LPDWORD value) {
    const PlatformCall call;
    Touch(list, cb);
    Touch(name);
    *value = static_cast<DWORD>(TheChance().Next());
    return TheAttack().Code();
}

HRESOURCE WINAPI HostileResUtilGetResourceDependency(HANDLE self, LPCWSTR type) {
    const PlatformCall call;
    TheAttack().Uses(self, Kind::Resource);
    Touch(type);
    return Opened<HRESOURCE>(Kind::Resource);
}

HRESOURCE WINAPI HostileResUtilGetResourceDependencyByClass(HCLUSTER cluster, HANDLE self,
                                                            PCLUS_RESOURCE_CLASS_INFO info, BOOL) {
    const PlatformCall call;
    TheAttack().Uses(cluster, Kind::Cluster);
    TheAttack().Uses(self, Kind::Resource);
    Touch(info, sizeof(*info));
    return Opened<HRESOURCE>(Kind::Resource);
}

BOOL WINAPI HostileResUtilResourceTypesEqual(LPCWSTR type, HRESOURCE resource) {
    const PlatformCall call;
    TheAttack().Uses(resource, Kind::Resource);
    Touch(type);
    return AnyTruth();
}

} // namespace

#define HOSTILE(dll, function) replacements.Add(dll ".dll", #function, &Hostile##function)

void ReplaceCluster(Replacements& replacements) {
    HOSTILE("clusapi", OpenCluster);
    HOSTILE("clusapi", CloseCluster);
    HOSTILE("clusapi", GetClusterFromResource);
    HOSTILE("clusapi", GetClusterInformation);
    HOSTILE("clusapi", ClusterOpenEnum);
    HOSTILE("clusapi", ClusterEnum);
    HOSTILE("clusapi", ClusterCloseEnum);
    HOSTILE("clusapi", ClusterResourceOpenEnum);
    HOSTILE("clusapi", ClusterResourceEnum);
    HOSTILE("clusapi", ClusterResourceCloseEnum);
    HOSTILE("clusapi", ClusterGroupOpenEnum);
    HOSTILE("clusapi", ClusterGroupEnum);
    HOSTILE("clusapi", ClusterGroupCloseEnum);
    HOSTILE("clusapi", OpenClusterResource);
    HOSTILE("clusapi", CloseClusterResource);
    HOSTILE("clusapi", OpenClusterGroup);
    HOSTILE("clusapi", CloseClusterGroup);
    HOSTILE("clusapi", OpenClusterNode);
    HOSTILE("clusapi", CloseClusterNode);
    HOSTILE("clusapi", CreateClusterResource);
    HOSTILE("clusapi", DeleteClusterResource);
    replacements.Add("clusapi.dll", "OnlineClusterResource", &HostileSwitch);
    replacements.Add("clusapi.dll", "OfflineClusterResource", &HostileSwitch);
    HOSTILE("clusapi", AddClusterResourceDependency);
    HOSTILE("clusapi", AddClusterResourceNode);
    HOSTILE("clusapi", GetClusterResourceState);
    HOSTILE("clusapi", ClusterResourceControl);
}

void ReplaceResourceUtilities(Replacements& replacements, GuardedHeaps& heaps) {
    localHeap = &heaps;
    HOSTILE("resutils", ResUtilFindSzProperty);
    HOSTILE("resutils", ResUtilFindDwordProperty);
    HOSTILE("resutils", ResUtilGetResourceDependency);
    HOSTILE("resutils", ResUtilGetResourceDependencyByClass);
    HOSTILE("resutils", ResUtilResourceTypesEqual);
}

} // namespace hostile
