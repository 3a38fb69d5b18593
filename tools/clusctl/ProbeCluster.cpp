// What a failover cluster shows of its rules when it is only read.
#include "ClusterApi.h"
#include "ClusterObjects.h"
#include "Probe.h"
#include "ProbeLists.h"
#include "Text.h"

#include "common/Text.h"
#include "core/ValueList.h"

#include <algorithm>
#include <cstring>
#include <cwctype>
#include <utility>

namespace {

const DWORD Guard = 0x1234; // no code of the cluster
const DWORD Room = 1024;    // characters; no name is longer

typedef std::vector<unsigned char> Bytes;

struct Item {
    DWORD kind;
    std::wstring name;
};

std::string Code(DWORD code) {
    return "code " + std::to_string(code);
}

std::wstring OtherCase(std::wstring text) {
    for (wchar_t& c : text) {
        c = std::iswupper(c) ? static_cast<wchar_t>(std::towlower(c)) : static_cast<wchar_t>(std::towupper(c));
    }
    return text;
}

DWORD NumberAt(const Bytes& bytes, size_t at) {
    DWORD number = 0;
    std::memcpy(&number, bytes.data() + at, sizeof(number));
    return number;
}

// Closes what it holds, each kind of handle in its way.
template <typename Handle, BOOL(WINAPI* Close)(Handle)> class Opened {
public:
    explicit Opened(Handle handle) : m_handle(handle) {
    }
    ~Opened() {
        if (m_handle != nullptr) {
            Close(m_handle);
        }
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    Handle get() const {
        return m_handle;
    }

private:
    Handle m_handle;
};
typedef Opened<HCLUSTER, CloseCluster> OpenedCluster;
typedef Opened<HRESOURCE, CloseClusterResource> OpenedResource;
typedef Opened<HGROUP, CloseClusterGroup> OpenedGroup;
typedef Opened<HNODE, CloseClusterNode> OpenedNode;

class ClusterProbe {
public:
    explicit ClusterProbe(HCLUSTER cluster) : m_cluster(cluster) {
    }

    ProbeAnswers Run() {
        Enumerate();
        AskMasks();
        OpenByNames();
        OpenUnknown();
        for (const Item& item : m_items) {
            if (item.kind == CLUSTER_ENUM_GROUP) {
                LookAtGroup(item.name);
            } else if (item.kind == CLUSTER_ENUM_RESOURCE) {
                LookAtResource(item.name);
            }
        }
        OutliveCluster();
        return m_answers;
    }

private:
    void Enumerate();
    void AskFirstItem(HCLUSENUM list);
    void AskMasks();
    void OpenByNames();
    void OpenUnknown();
    void OutliveCluster();
    void LookAtGroup(const std::wstring& name);
    void LookAtResource(const std::wstring& name);
    void LookAtState(HRESOURCE resource, const std::wstring& name);
    void LookAtSize(HRESOURCE resource, const std::wstring& name);
    void LookAtClass(HRESOURCE resource, const std::wstring& name, const std::wstring& type);
    void LookAtProperties(HRESOURCE resource, const std::wstring& name, const std::wstring& type);
    void LookAtDisk(HRESOURCE resource, const std::wstring& name, const std::wstring& type);
    void LookAtOwner(const std::wstring& owner, const std::wstring& object);

    // The code, and the whole answer.
    static DWORD Ask(HRESOURCE resource, DWORD control, Bytes& answer);
    static std::wstring TextOf(HRESOURCE resource, DWORD control);

    HCLUSTER m_cluster;
    ProbeAnswers m_answers{FailoverRules()};
    std::vector<Item> m_items;
};

DWORD ClusterProbe::Ask(HRESOURCE resource, DWORD control, Bytes& answer) {
    DWORD code = 0;
    QueryResource(resource, control, answer, code);
    return code;
}

std::wstring ClusterProbe::TextOf(HRESOURCE resource, DWORD control) {
    Bytes answer;
    return Ask(resource, control, answer) == ERROR_SUCCESS ? clus::TextInBuffer(answer.data(), answer.size(), 0)
                                                           : std::wstring();
}

void ClusterProbe::Enumerate() {
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE | CLUSTER_ENUM_RESOURCE | CLUSTER_ENUM_GROUP);
    if (list == nullptr) {
        throw Failure::OfCode("cannot list the cluster's objects", GetLastError());
    }
    std::vector<wchar_t> name(Room);
    DWORD code = ERROR_SUCCESS;
    for (DWORD index = 0; code == ERROR_SUCCESS; ++index) {
        DWORD kind = 0;
        DWORD count = Room;
        code = ClusterEnum(list, index, &kind, name.data(), &count);
        if (code == ERROR_SUCCESS) {
            const std::wstring text = name.data();
            m_answers.Saw("enum-count", count == text.size(),
                          count == text.size() ? "the length" : "the length and " + std::to_string(count - text.size()),
                          text);
            m_items.push_back({kind, text});
        }
    }
    m_answers.Saw("enum-end", code == ERROR_NO_MORE_ITEMS, Code(code));
    const bool areInOrder =
        std::is_sorted(m_items.begin(), m_items.end(), [](const Item& a, const Item& b) { return a.kind < b.kind; });
    m_answers.Saw("enum-order", areInOrder, areInOrder ? "kind by kind" : "kinds are mixed, or in another order");
    SetLastError(Guard);
    DWORD kind = 0;
    DWORD count = Room;
    ClusterEnum(list, static_cast<DWORD>(m_items.size()), &kind, name.data(), &count);
    const DWORD lastError = GetLastError();
    m_answers.Saw("last-error-kept", lastError == Guard,
                  lastError == Guard ? "left alone" : "set to " + std::to_string(lastError));
    if (!m_items.empty()) {
        AskFirstItem(list);
    }
    ClusterCloseEnum(list);
}

void ClusterProbe::AskFirstItem(HCLUSENUM list) {
    const std::wstring& first = m_items.front().name;
    std::vector<wchar_t> name(first.size() + 1);
    DWORD kind = 0;
    auto count = static_cast<DWORD>(first.size());
    const DWORD code = ClusterEnum(list, 0, &kind, name.data(), &count);
    m_answers.Saw("enum-short-room", code == ERROR_MORE_DATA && count == first.size(),
                  Code(code) + (count == first.size() ? ", the length" : ", another count"), first);
    count = static_cast<DWORD>(name.size());
    const DWORD again = ClusterEnum(list, 0, &kind, name.data(), &count);
    m_answers.Saw("enum-again", again == ERROR_SUCCESS && first == name.data(),
                  again != ERROR_SUCCESS ? Code(again)
                  : first == name.data() ? "the same"
                                         : "another name",
                  first);
}

void ClusterProbe::AskMasks() {
    const std::pair<const char*, DWORD> masks[] = {{"enum-mask-zero", 0}, {"enum-mask-unknown", 0x40}};
    for (const auto& [rule, mask] : masks) {
        SetLastError(ERROR_SUCCESS);
        const HCLUSENUM list = ClusterOpenEnum(m_cluster, mask);
        const DWORD code = list == nullptr ? GetLastError() : static_cast<DWORD>(ERROR_SUCCESS);
        m_answers.Saw(rule, code == ERROR_INVALID_PARAMETER, list == nullptr ? Code(code) : "a list");
        if (list != nullptr) {
            ClusterCloseEnum(list);
        }
    }
}

void ClusterProbe::OpenByNames() {
    DWORD seen = 0;
    for (const Item& item : m_items) {
        const std::wstring name = OtherCase(item.name);
        if ((seen & item.kind) != 0 || name == item.name) {
            continue;
        }
        seen |= item.kind;
        SetLastError(ERROR_SUCCESS);
        const bool isOpened = item.kind == CLUSTER_ENUM_NODE
                                  ? OpenedNode(OpenClusterNode(m_cluster, name.c_str())).get() != nullptr
                              : item.kind == CLUSTER_ENUM_GROUP
                                  ? OpenedGroup(OpenClusterGroup(m_cluster, name.c_str())).get() != nullptr
                                  : OpenedResource(OpenClusterResource(m_cluster, name.c_str())).get() != nullptr;
        m_answers.Saw("open-ignores-case", isOpened, isOpened ? "opened" : Code(GetLastError()), item.name);
    }
}

void ClusterProbe::OpenUnknown() {
    const wchar_t unknown[] = L"no such object 7f3c";
    SetLastError(ERROR_SUCCESS);
    DWORD codes[3] = {};
    codes[0] = OpenedResource(OpenClusterResource(m_cluster, unknown)).get() == nullptr ? GetLastError() : 0;
    codes[1] = OpenedGroup(OpenClusterGroup(m_cluster, unknown)).get() == nullptr ? GetLastError() : 0;
    codes[2] = OpenedNode(OpenClusterNode(m_cluster, unknown)).get() == nullptr ? GetLastError() : 0;
    const bool isAsSimulated = codes[0] == ERROR_RESOURCE_NOT_FOUND && codes[1] == ERROR_GROUP_NOT_FOUND &&
                               codes[2] == ERROR_CLUSTER_NODE_NOT_FOUND;
    m_answers.Saw("open-unknown", isAsSimulated,
                  "codes " + std::to_string(codes[0]) + ", " + std::to_string(codes[1]) + ", " +
                      std::to_string(codes[2]));
    const DWORD empty = OpenedResource(OpenClusterResource(m_cluster, L"")).get() == nullptr ? GetLastError() : 0;
    m_answers.Saw("open-empty", empty == ERROR_RESOURCE_NOT_FOUND, Code(empty));
}

void ClusterProbe::OutliveCluster() {
    const auto item = std::find_if(m_items.begin(), m_items.end(),
                                   [](const Item& other) { return other.kind == CLUSTER_ENUM_RESOURCE; });
    const HCLUSTER cluster = item == m_items.end() ? nullptr : OpenCluster(nullptr);
    if (cluster == nullptr) {
        return;
    }
    const OpenedResource resource(OpenClusterResource(cluster, item->name.c_str()));
    CloseCluster(cluster);
    if (resource.get() != nullptr) {
        SetLastError(ERROR_SUCCESS);
        const auto state = GetClusterResourceState(resource.get(), nullptr, nullptr, nullptr, nullptr);
        m_answers.Saw("handle-outlives-cluster", state != ClusterResourceStateUnknown,
                      state != ClusterResourceStateUnknown ? "it answers" : Code(GetLastError()), item->name);
    }
}

void ClusterProbe::LookAtOwner(const std::wstring& owner, const std::wstring& object) {
    for (const Item& item : m_items) {
        if (item.kind == CLUSTER_ENUM_NODE && _wcsicmp(item.name.c_str(), owner.c_str()) == 0) {
            m_answers.Saw("owner-letter-case", item.name == owner,
                          item.name == owner ? "as listed" : "in another letter case", object);
        }
    }
}

void ClusterProbe::LookAtGroup(const std::wstring& name) {
    const OpenedGroup group(OpenClusterGroup(m_cluster, name.c_str()));
    std::vector<wchar_t> owner(Room);
    DWORD count = Room;
    if (group.get() != nullptr && GetClusterGroupState(group.get(), owner.data(), &count) != ClusterGroupStateUnknown) {
        LookAtOwner(owner.data(), name);
    }
}

void ClusterProbe::LookAtResource(const std::wstring& name) {
    const OpenedResource resource(OpenClusterResource(m_cluster, name.c_str()));
    if (resource.get() == nullptr) {
        return; // it is gone meanwhile
    }
    const std::wstring told = TextOf(resource.get(), CLUSCTL_RESOURCE_GET_NAME);
    if (!told.empty()) {
        m_answers.Saw("name-as-listed", told == name, told == name ? "as listed" : "otherwise than listed", name);
    }
    const std::wstring type = TextOf(resource.get(), CLUSCTL_RESOURCE_GET_RESOURCE_TYPE);
    const std::wstring id = TextOf(resource.get(), CLUSCTL_RESOURCE_GET_ID);
    if (!id.empty()) {
        const bool isForm = id.size() == 36 && id.find_first_not_of(L"0123456789abcdef-") == std::wstring::npos;
        m_answers.Saw("id-form", isForm,
                      isForm ? "small letters, no braces" : "other characters, or another length than 36", name);
        const OpenedResource byId(OpenClusterResource(m_cluster, id.c_str()));
        m_answers.Saw("open-by-id", byId.get() != nullptr, byId.get() != nullptr ? "opened" : Code(GetLastError()),
                      name);
    }
    LookAtState(resource.get(), name);
    LookAtSize(resource.get(), name);
    LookAtClass(resource.get(), name, type);
    LookAtProperties(resource.get(), name, type);
    LookAtDisk(resource.get(), name, type);
}

void ClusterProbe::LookAtState(HRESOURCE resource, const std::wstring& name) {
    SetLastError(ERROR_SUCCESS);
    const auto alone = GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr);
    m_answers.Saw("state-without-room", alone != ClusterResourceStateUnknown,
                  alone != ClusterResourceStateUnknown ? "a state" : Code(GetLastError()), name);
    std::vector<wchar_t> node(Room);
    DWORD count = Room;
    if (GetClusterResourceState(resource, node.data(), &count, nullptr, nullptr) == ClusterResourceStateUnknown) {
        return;
    }
    const std::wstring owner = node.data();
    LookAtOwner(owner, name);
    wchar_t shortRoom[2] = {};
    DWORD shortCount = 1;
    SetLastError(ERROR_SUCCESS);
    const auto state = GetClusterResourceState(resource, shortRoom, &shortCount, nullptr, nullptr);
    const DWORD code = GetLastError();
    const bool isRefused = state == ClusterResourceStateUnknown && code == ERROR_MORE_DATA;
    m_answers.Saw("state-short-room", isRefused && shortCount == owner.size(),
                  state != ClusterResourceStateUnknown
                      ? "a state"
                      : Code(code) + (shortCount == owner.size() ? ", the length" : ", another count"),
                  name);
}

void ClusterProbe::LookAtSize(HRESOURCE resource, const std::wstring& name) {
    DWORD size = 0;
    const DWORD code =
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_NAME, nullptr, 0, nullptr, 0, &size);
    const bool isSize = size == (name.size() + 1) * sizeof(wchar_t);
    m_answers.Saw("control-size", code == ERROR_MORE_DATA && isSize,
                  Code(code) + (isSize ? ", the size with the terminator" : ", another size"), name);
}

void ClusterProbe::LookAtClass(HRESOURCE resource, const std::wstring& name, const std::wstring& type) {
    DWORD size = 0;
    const DWORD code =
        ClusterResourceControl(resource, nullptr, CLUSCTL_RESOURCE_GET_CLASS_INFO, nullptr, 0, nullptr, 0, &size);
    Bytes answer;
    const bool isRead = Ask(resource, CLUSCTL_RESOURCE_GET_CLASS_INFO, answer) == ERROR_SUCCESS && answer.size() >= 4;
    const DWORD number = isRead ? NumberAt(answer, 0) : 0;
    const bool isAddress = type == L"IP Address";
    m_answers.Saw("class-info", code == ERROR_MORE_DATA && (!isAddress || !isRead || number == 0),
                  isAddress && isRead ? "size: " + Code(code) + ", class of an IP Address: " + std::to_string(number)
                                      : "size: " + Code(code),
                  name);
}

void ClusterProbe::LookAtProperties(HRESOURCE resource, const std::wstring& name, const std::wstring& type) {
    Bytes list;
    if (Ask(resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, list) == ERROR_SUCCESS) {
        if (list.size() < sizeof(DWORD) || NumberAt(list, 0) == 0) {
            m_answers.Saw("property-list-empty", list.size() == sizeof(DWORD), std::to_string(list.size()) + " bytes",
                          name);
        } else {
            LookAtPropertyList(list, name, m_answers);
        }
    }
    Bytes answer;
    const DWORD code = Ask(resource, CLUSCTL_RESOURCE_GET_NETWORK_NAME, answer);
    if (type != L"Network Name") {
        m_answers.Saw("control-unsupported", code == ERROR_INVALID_FUNCTION, Code(code), name);
        return;
    }
    if (code != ERROR_SUCCESS) {
        return;
    }
    // The property as it lies in the list: its name, terminated, then its entry.
    const std::wstring told = clus::TextInBuffer(answer.data(), answer.size(), 0);
    const wchar_t property[] = L"Name";
    const auto* const key = reinterpret_cast<const unsigned char*>(property);
    const auto found = std::search(list.begin(), list.end(), key, key + sizeof(property));
    if (found != list.end()) {
        const auto at = static_cast<size_t>(found - list.begin()) + clus::PaddedLength(sizeof(property));
        const std::wstring value = clus::TextInBuffer(list.data(), list.size(), at + clus::EntryHeaderSize);
        m_answers.Saw("network-name", told == value, told == value ? "the property" : "not as the property has it",
                      name);
    }
}

void ClusterProbe::LookAtDisk(HRESOURCE resource, const std::wstring& name, const std::wstring& type) {
    Bytes list;
    const DWORD code = Ask(resource, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, list);
    if (type == L"Physical Disk" && code == ERROR_SUCCESS) {
        LookAtDiskList(list, name, m_answers);
    } else if (type == L"Network Name" || type == L"IP Address") {
        m_answers.Saw("control-unsupported", code == ERROR_INVALID_FUNCTION, Code(code), name);
    }
}

} // namespace

ProbeAnswers ProbeFailoverCluster() {
    const OpenedCluster cluster(OpenCluster(nullptr));
    if (cluster.get() == nullptr) {
        throw Failure::OfCode("cannot open this computer's cluster", GetLastError());
    }
    return ClusterProbe(cluster.get()).Run();
}
