// What a failover cluster shows of its rules when it is only read.
#include "ClusterObjects.h"
#include "Failure.h"
#include "Probe.h"
#include "ProbeForms.h"
#include "ProbeLists.h"
#include "ProbeResource.h"

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

const DWORD Guard = 0x1234; // no code of the cluster
const wchar_t NoSuchObject[] = L"no such object 7f3c";

struct Item {
    DWORD kind;
    std::wstring name;
};

struct ClusterCloser {
    void operator()(HCLUSTER handle) const {
        CloseCluster(handle);
    }
};
typedef std::unique_ptr<std::remove_pointer<HCLUSTER>::type, ClusterCloser> ClusterHandle;

// Why there is no handle; ERROR_SUCCESS when there is one, which is closed again.
template <typename Handle, typename Raw> DWORD CodeOf(Raw raw) {
    const DWORD code = GetLastError();
    return Handle(raw) ? static_cast<DWORD>(ERROR_SUCCESS) : code;
}

DWORD OpenCode(HCLUSTER cluster, DWORD kind, const std::wstring& name) {
    SetLastError(ERROR_SUCCESS);
    return kind == CLUSTER_ENUM_NODE    ? CodeOf<NodeHandle>(OpenClusterNode(cluster, name.c_str()))
           : kind == CLUSTER_ENUM_GROUP ? CodeOf<GroupHandle>(OpenClusterGroup(cluster, name.c_str()))
                                        : CodeOf<ResourceHandle>(OpenClusterResource(cluster, name.c_str()));
}

DWORD OpenCode(const std::wstring& clusterName) {
    SetLastError(ERROR_SUCCESS);
    return CodeOf<ClusterHandle>(OpenCluster(clusterName.c_str()));
}

// Empty when this computer has no DNS domain.
std::wstring DnsDomain() {
    wchar_t domain[256] = L"";
    DWORD count = 256;
    return GetComputerNameExW(ComputerNameDnsDomain, domain, &count) ? domain : std::wstring();
}

// Empty when it is not told.
std::wstring ReadOwner(HGROUP group) {
    std::vector<wchar_t> owner(ProbeRoom + 1);
    DWORD count = ProbeRoom;
    return GetClusterGroupState(group, owner.data(), &count) == ClusterGroupStateUnknown ? std::wstring()
                                                                                         : std::wstring(owner.data());
}

class ClusterProbe {
public:
    explicit ClusterProbe(HCLUSTER cluster) : m_cluster(cluster) {
    }

    ProbeAnswers Run() {
        Enumerate();
        AskMasks();
        LookAtInformation(m_cluster, m_answers);
        OpenByNames();
        OpenUnknown();
        ResourceProbe resources(m_cluster, m_answers);
        for (const Item& item : m_items) {
            if (item.kind == CLUSTER_ENUM_GROUP) {
                LookAtGroup(item.name);
            } else if (item.kind == CLUSTER_ENUM_RESOURCE) {
                resources.LookAt(item.name);
            }
        }
        if (m_isWhole) {
            resources.Conclude();
        }
        LookAtDownNodes();
        for (const ResourceProbe::Owner& owner : resources.Owners()) {
            LookAtOwner(owner.node, owner.object);
        }
        OpenClusters(resources.ClusterAddress());
        OutliveCluster();
        RequireCluster();
        return m_answers;
    }

private:
    void Enumerate();
    void AskBehindLast(HCLUSENUM list);
    void AskFirstItem(HCLUSENUM list);
    void AskMasks();
    void OpenByNames();
    void OpenUnknown();
    void OpenClusters(const std::wstring& address);
    void OutliveCluster();
    void LookAtGroup(const std::wstring& name);
    void LookAtOwner(const std::wstring& owner, const std::wstring& object);
    void LookAtDownNodes();
    std::wstring OwnerOf(const std::wstring& group) const;
    bool IsDown(const std::wstring& node) const;
    void RequireCluster() const;
    const Item* FirstOf(DWORD kind) const;

    HCLUSTER m_cluster;
    ProbeAnswers m_answers{FailoverRules()};
    std::vector<Item> m_items;
    std::vector<ResourceProbe::Owner> m_owners; // of groups
    bool m_isWhole = false;                     // the list of them
};

const Item* ClusterProbe::FirstOf(DWORD kind) const {
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [kind](const Item& item) { return item.kind == kind; });
    return found == m_items.end() ? nullptr : &*found;
}

void ClusterProbe::Enumerate() {
    const HCLUSENUM list = ClusterOpenEnum(m_cluster, CLUSTER_ENUM_NODE | CLUSTER_ENUM_RESOURCE | CLUSTER_ENUM_GROUP);
    if (list == nullptr) {
        throw Failure::OfCode("cannot list the cluster's objects", GetLastError());
    }
    std::vector<wchar_t> name(ProbeRoom + 1);
    DWORD code = ERROR_SUCCESS;
    for (DWORD index = 0; code == ERROR_SUCCESS && index < MostProbedItems; ++index) {
        DWORD kind = 0;
        DWORD count = ProbeRoom;
        code = ClusterEnum(list, index, &kind, name.data(), &count);
        if (code == ERROR_SUCCESS) {
            const std::wstring text = name.data();
            m_answers.Saw("enum-count", count == text.size(),
                          count == text.size() ? "the length" : "the length and " + std::to_string(count - text.size()),
                          text);
            m_items.push_back({kind, text});
        }
    }
    m_isWhole = code == ERROR_NO_MORE_ITEMS;
    m_answers.SawCode("enum-end", code, ERROR_NO_MORE_ITEMS);
    const bool areInOrder =
        std::is_sorted(m_items.begin(), m_items.end(), [](const Item& a, const Item& b) { return a.kind < b.kind; });
    m_answers.Saw("enum-order", areInOrder, areInOrder ? "kind by kind" : "kinds are mixed, or in another order");
    AskBehindLast(list);
    if (!m_items.empty()) {
        AskFirstItem(list);
    }
    ClusterCloseEnum(list);
}

void ClusterProbe::AskBehindLast(HCLUSENUM list) {
    wchar_t name[2] = {};
    DWORD kind = 0;
    DWORD count = 1;
    SetLastError(Guard);
    const DWORD code = ClusterEnum(list, static_cast<DWORD>(m_items.size()), &kind, name, &count);
    const DWORD lastError = GetLastError();
    if (code != ERROR_SUCCESS && !IsRefusal(code)) {
        m_answers.Saw("last-error-kept", lastError == Guard,
                      lastError == Guard ? "left alone" : "set to " + std::to_string(lastError));
    }
}

void ClusterProbe::AskFirstItem(HCLUSENUM list) {
    const std::wstring& first = m_items.front().name;
    std::vector<wchar_t> name(first.size() + 1);
    DWORD kind = 0;
    auto count = static_cast<DWORD>(first.size());
    const DWORD code = ClusterEnum(list, 0, &kind, name.data(), &count);
    if (code == ERROR_MORE_DATA || !IsRefusal(code)) {
        m_answers.Saw("enum-short-room", code == ERROR_MORE_DATA && count == first.size(),
                      CodeText(code) + (count == first.size() ? ", the length" : ", another count"), first);
    }
    count = static_cast<DWORD>(name.size());
    const DWORD again = ClusterEnum(list, 0, &kind, name.data(), &count);
    if (again == ERROR_SUCCESS) {
        m_answers.Saw("enum-again", first == name.data(), first == name.data() ? "the same" : "another name", first);
    } else {
        m_answers.SawCode("enum-again", again, ERROR_SUCCESS, first);
    }
}

void ClusterProbe::AskMasks() {
    const std::pair<const char*, DWORD> masks[] = {{"enum-mask-zero", 0}, {"enum-mask-unknown", 0x40}};
    for (const auto& [rule, mask] : masks) {
        SetLastError(ERROR_SUCCESS);
        const HCLUSENUM list = ClusterOpenEnum(m_cluster, mask);
        if (list == nullptr) {
            m_answers.SawCode(rule, GetLastError(), ERROR_INVALID_PARAMETER);
        } else {
            m_answers.Saw(rule, false, "a list");
            ClusterCloseEnum(list);
        }
    }
}

void ClusterProbe::OpenByNames() {
    DWORD seen = 0;
    for (const Item& item : m_items) {
        const std::wstring name = InOtherCase(item.name);
        if ((seen & item.kind) != 0 || name == item.name) {
            continue;
        }
        seen |= item.kind;
        const DWORD code = OpenCode(m_cluster, item.kind, name);
        if (code == ERROR_SUCCESS) {
            m_answers.Saw("open-ignores-case", true, "opened", item.name);
        } else if (OpenCode(m_cluster, item.kind, item.name) == ERROR_SUCCESS) { // it is not gone
            m_answers.SawCode("open-ignores-case", code, ERROR_SUCCESS, item.name);
        }
    }
}

void ClusterProbe::OpenUnknown() {
    const std::pair<DWORD, DWORD> unknown[] = {{CLUSTER_ENUM_RESOURCE, ERROR_RESOURCE_NOT_FOUND},
                                               {CLUSTER_ENUM_GROUP, ERROR_GROUP_NOT_FOUND},
                                               {CLUSTER_ENUM_NODE, ERROR_CLUSTER_NODE_NOT_FOUND}};
    std::string codes;
    bool isAsSimulated = true;
    bool isRefused = false;
    for (const auto& [kind, expected] : unknown) {
        const DWORD code = OpenCode(m_cluster, kind, NoSuchObject);
        codes += (codes.empty() ? "codes " : ", ") + std::to_string(code);
        isAsSimulated = isAsSimulated && code == expected;
        isRefused = isRefused || IsRefusal(code);
    }
    if (!isRefused) {
        m_answers.Saw("open-unknown", isAsSimulated, codes);
    }
    m_answers.SawCode("open-empty", OpenCode(m_cluster, CLUSTER_ENUM_RESOURCE, L""), ERROR_RESOURCE_NOT_FOUND);
}

// A name that nothing resolves is refused like a cluster that does not answer: that tells nothing of the rules.
void ClusterProbe::OpenClusters(const std::wstring& address) {
    std::vector<wchar_t> name(ProbeRoom + 1);
    DWORD count = ProbeRoom;
    if (GetClusterInformation(m_cluster, name.data(), &count, nullptr) == ERROR_SUCCESS) {
        m_answers.SawCode("open-by-name", OpenCode(name.data()), ERROR_SUCCESS);
    }
    const std::wstring domain = DnsDomain();
    if (const Item* const node = FirstOf(CLUSTER_ENUM_NODE)) {
        m_answers.SawCode("open-by-name", OpenCode(node->name), ERROR_SUCCESS, node->name);
        const std::wstring dnsName = node->name + L"." + (domain.empty() ? L"localdomain" : domain);
        m_answers.SawCode("open-node-by-dns-name", OpenCode(m_cluster, CLUSTER_ENUM_NODE, dnsName),
                          ERROR_CLUSTER_NODE_NOT_FOUND, node->name);
        if (!domain.empty()) {
            m_answers.SawCode("open-by-dns-name", OpenCode(dnsName), ERROR_SUCCESS, node->name);
        }
    }
    if (!address.empty()) {
        m_answers.SawCode("open-by-address", OpenCode(address), ERROR_SUCCESS);
    }
}

void ClusterProbe::OutliveCluster() {
    const Item* const item = FirstOf(CLUSTER_ENUM_RESOURCE);
    ClusterHandle cluster(item == nullptr ? nullptr : OpenCluster(nullptr));
    if (!cluster) {
        return;
    }
    const ResourceHandle resource(OpenClusterResource(cluster.get(), item->name.c_str()));
    cluster.reset();
    if (!resource) {
        return;
    }
    SetLastError(ERROR_SUCCESS);
    if (GetClusterResourceState(resource.get(), nullptr, nullptr, nullptr, nullptr) != ClusterResourceStateUnknown) {
        m_answers.Saw("handle-outlives-cluster", true, "it answers", item->name);
        return;
    }
    if (GetLastError() == ERROR_INVALID_HANDLE) { // others are no matter of the handle
        m_answers.Saw("handle-outlives-cluster", false, CodeText(ERROR_INVALID_HANDLE), item->name);
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

std::wstring ClusterProbe::OwnerOf(const std::wstring& group) const {
    const GroupHandle opened(OpenClusterGroup(m_cluster, group.c_str()));
    return opened ? ReadOwner(opened.get()) : std::wstring();
}

bool ClusterProbe::IsDown(const std::wstring& node) const {
    const NodeHandle opened(OpenClusterNode(m_cluster, node.c_str()));
    const CLUSTER_NODE_STATE state = opened ? GetClusterNodeState(opened.get()) : ClusterNodeStateUnknown;
    return state == ClusterNodeDown || state == ClusterNodeJoining;
}

// A node may be lost meanwhile, and its groups be on their way: what it owns is asked for once more.
void ClusterProbe::LookAtDownNodes() {
    for (const Item& item : m_items) {
        if (item.kind != CLUSTER_ENUM_NODE || m_owners.empty() || !IsDown(item.name)) {
            continue;
        }
        const auto isItsOwn = [&item](const std::wstring& owner) {
            return _wcsicmp(item.name.c_str(), owner.c_str()) == 0;
        };
        const auto owned = std::find_if(m_owners.begin(), m_owners.end(), [&](const ResourceProbe::Owner& owner) {
            return isItsOwn(owner.node) && isItsOwn(OwnerOf(owner.object));
        });
        m_answers.Saw("down-owners", owned == m_owners.end(), owned == m_owners.end() ? "none there" : "a group there",
                      item.name);
    }
}

void ClusterProbe::LookAtGroup(const std::wstring& name) {
    const GroupHandle group(OpenClusterGroup(m_cluster, name.c_str()));
    if (!group) {
        return; // it is gone meanwhile
    }
    const std::wstring owner = ReadOwner(group.get());
    if (!owner.empty()) {
        LookAtOwner(owner, name);
        m_owners.push_back({owner, name});
    }
    LookAtGroupLists(group.get(), name, m_answers);
}

// What was not answered because the cluster went away is no matter of its rules.
void ClusterProbe::RequireCluster() const {
    std::vector<wchar_t> name(ProbeRoom + 1);
    DWORD count = ProbeRoom;
    const DWORD code = GetClusterInformation(m_cluster, name.data(), &count, nullptr);
    if (IsRefusal(code) && code != ERROR_ACCESS_DENIED) {
        throw Failure::OfCode("the cluster was lost while it was looked at", code).As(Errors::ClusterLost);
    }
}

} // namespace

ProbeAnswers ProbeFailoverCluster() {
    const ClusterHandle cluster(OpenCluster(nullptr));
    if (!cluster) {
        throw FailureToOpenCluster(GetLastError());
    }
    return ClusterProbe(cluster.get()).Run();
}
