// The doctor's look at one group of a failover cluster: each step by which the library makes a server of it.
#include "DoctorParts.h"

#include "CreationChecks.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/ResourceTypes.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>
#include <memory>

namespace {

const size_t LongestDataPath = 511; // of the library's record

bool Contains(const Names& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool Lists(const Json& names, const std::wstring& name) {
    return names.is_array() && std::find(names.begin(), names.end(), Json(name)) != names.end();
}

std::string OnResource(const std::string& verb, const std::wstring& resource, const std::string& rest) {
    return "cluster res " + Quoted(resource) + " /" + verb + rest;
}

class ServerRound {
public:
    ServerRound(CCluster& cluster, const ServerGroup& group, const ServersHere* here, Findings& findings)
        : m_cluster(cluster), m_group(group), m_here(here), m_findings(findings) {
    }

    void Run() {
        const Json* const networkName = LookAtNetworkNames();
        LookAtExchange();
        const std::vector<const Json*> products = Products();
        if (products.empty()) {
            TellProductMissing(networkName);
            return;
        }
        if (products.size() > 1) {
            Add("product-resource-several", TextMember(*products[1], "name"),
                "The group holds " + std::to_string(products.size()) + " resources of the product.",
                "clusctl resource delete " + m_serverName + ", then clusctl resource create");
        }
        for (const Json* product : products) {
            LookAtProduct(*product);
        }
        LookAtSmtpInstances();
    }

private:
    void Add(const char* code, const std::wstring& object, const std::string& seen,
             const std::string& mend = std::string()) {
        m_findings.Add(code, Printable(object), seen, mend);
    }

    std::vector<const Json*> OfType(const wchar_t* type) const {
        std::vector<const Json*> found;
        for (const Json& member : m_group.members) {
            if (TextMember(member, "type") == type) {
                found.push_back(&member);
            }
        }
        return found;
    }

    std::vector<const Json*> Products() const {
        std::vector<const Json*> found = OfType(clus::SingleCopyType);
        const std::vector<const Json*> others = OfType(clus::CcrType);
        found.insert(found.end(), others.begin(), others.end());
        return found;
    }

    // The first whose name can be read, or null.
    const Json* LookAtNetworkNames() {
        const Json* first = nullptr;
        for (const Json* resource : OfType(clus::NetworkNameType)) {
            const std::wstring name = TextMember(*resource, "name");
            std::wstring text;
            if (!ReadNetworkName(m_cluster, *resource, text)) {
                Add("network-name-unread", name, "The cluster does not tell its network name.",
                    "clusctl resources " + Quoted(name));
                continue;
            }
            if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'a' && c <= L'z'; })) {
                Add("network-name-lower-case", name, "Its network name " + Quoted(text) + " has small letters.",
                    OnResource("priv", name, " Name=NAME-IN-CAPITALS, while it is offline"));
            }
            if (first == nullptr) {
                first = resource;
                m_serverName = Quoted(text);
                m_networkName = text;
            }
        }
        if (first == nullptr) {
            Add("network-name-missing", m_group.name, "The group has no Network Name resource that can be read.",
                "clusctl resources --group " + Quoted(m_group.name));
        }
        return first;
    }

    void LookAtExchange() {
        const struct {
            const wchar_t* type;
            const char* missing;
            const char* several;
        } parts[] = {{clus::SystemAttendantType, "attendant-missing", "attendant-several"},
                     {clus::InformationStoreType, "store-missing", "store-several"}};
        for (const auto& part : parts) {
            const std::vector<const Json*> found = OfType(part.type);
            if (found.empty()) {
                Add(part.missing, m_group.name,
                    "The group has no resource of the type " + Quoted(std::wstring(part.type)) + ".",
                    "install Exchange in the group, or bring its resources there");
            } else if (found.size() > 1) {
                Add(part.several, TextMember(*found.front(), "name"),
                    "It is the first of " + std::to_string(found.size()) + " of its type.");
            }
        }
    }

    bool IsSingleCopy() const {
        return CVirtualServerUtil::GetClusterQuorumModeByRegKey() != CVirtualServerUtil::CLUSTER_QUORUM_CCR;
    }

    void TellProductMissing(const Json* networkName) {
        const std::wstring name = L"Zyntra Gate (" + m_group.name + L")";
        const std::string path = IsSingleCopy() ? " --data-path FOLDER" : "";
        Add("product-resource-missing", m_group.name, "The group holds no resource of the product.",
            "clusctl resource create " + (networkName == nullptr ? "SERVER" : m_serverName) + " --name " +
                Quoted(name) + path);
        if (networkName == nullptr) {
            return;
        }
        try {
            Report unchecked;
            RequireCreatable(m_cluster, {m_networkName, name, std::wstring(), IsSingleCopy(), std::wstring()},
                             unchecked);
            Add("creation-possible", m_group.name,
                "Nothing stands in the way of creating it on this node" +
                    (unchecked.Warnings().empty() ? "." : ", but " + unchecked.Warnings().front() + "."));
        } catch (const Failure& failure) {
            Add("creation-blocked", m_group.name, AsSentence(failure.what()),
                failure.Hint().empty() ? "clusctl groups " + Quoted(m_group.name) : failure.Hint());
        }
    }

    void LookAtProduct(const Json& line) {
        const std::wstring name = TextMember(line, "name");
        CClusterResource resource(OpenClusterResource(m_cluster.GetHandle(), name.c_str()));
        if (resource.GetResourceHandle() == nullptr) {
            return; // told where it was read
        }
        LookAtType(line);
        const bool isHere = LookAtOwner(resource, name);
        LookAtState(line);
        Report unread;
        const Json detail = ReadResource(m_cluster, name, ResourceParts::Detail, unread);
        if (!unread.IsComplete()) {
            Add("product-detail-unread", name, AsSentence(unread.Warnings().front()),
                "clusctl resources " + Quoted(name));
        }
        LookAtNames(resource, name);
        LookAtDataPath(resource, name);
        LookAtStorage(resource, detail, isHere);
        LookAtOwners(detail);
        if (detail["restartAction"].is_number() && detail["restartAction"] != Json(ClusterResourceRestartNoNotify)) {
            Add("restart-action", name,
                "Its restart action is " + detail["restartAction"].dump() + ": " +
                    detail["restartMeaning"].get<std::string>() + ".",
                OnResource("prop", name, " RestartAction=1"));
        }
        TellVerdict(resource, name, isHere);
    }

    void LookAtType(const Json& line) {
        const std::wstring name = TextMember(line, "name");
        const std::wstring type = TextMember(line, "type");
        Add("product-resource", name, "It is of the type " + Printable(type) + ".");
        const bool isSingleCopy = type == clus::SingleCopyType;
        if (CVirtualServerUtil::CheckIsClusterByRegKey() && isSingleCopy != IsSingleCopy()) {
            Add("type-not-of-deployment", name,
                std::string("It is made for a ") + (isSingleCopy ? "shared disk" : "cluster with replication") +
                    ", and the registry says otherwise.",
                "clusctl host --explain");
        }
    }

    // Whether the library takes it for this node's.
    bool LookAtOwner(CClusterResource& resource, const std::wstring& name) {
        std::wstring owner;
        resource.GetResourceState(&owner, nullptr);
        const std::wstring computer = ComputerName();
        if (owner == computer) {
            Add("owner-here", name, "This node owns it.");
            return true;
        }
        if (owner.empty()) {
            Add("owner-unread", name, "The cluster does not tell its owner.", "clusctl resources " + Quoted(name));
        } else if (IsSameName(owner, computer)) {
            Add("owner-case", name,
                "The cluster calls its owner " + Quoted(owner) + ", and this computer is " + Quoted(computer) + ".",
                "let the node leave the cluster and join it again under the name " + Printable(computer));
        } else {
            Add("owner-other-node", name, "The node " + Quoted(owner) + " owns it.",
                "clusctl doctor, on " + Printable(owner));
        }
        return false;
    }

    void LookAtState(const Json& line) {
        const std::wstring name = TextMember(line, "name");
        const std::string state = line["state"].get<std::string>();
        const std::string switchOn = "clusctl resource online " + m_serverName + " --wait";
        if (state == "online") {
            Add("product-online", name, "It is online.");
        } else if (state == "offline") {
            Add("product-offline", name, "It is offline.", switchOn);
        } else if (state == "failed") {
            Add("product-failed", name, "It has failed.", switchOn);
        } else if (state != "unknown") {
            Add("product-pending", name, "It is " + state + ".", "clusctl resources " + Quoted(name));
        }
    }

    // The dependencies through which the library finds name and address.
    void LookAtNames(CClusterResource& resource, const std::wstring& name) {
        CClusterResource networkName;
        CClusterResource address;
        if (!resource.GetResourceDependencyByType(networkName, clus::NetworkNameType)) {
            Add("network-name-dependency-missing", name, "It depends on no Network Name that can be read.",
                OnResource("adddep", name, ":NETWORK-NAME-RESOURCE"));
            return;
        }
        if (networkName.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false) == nullptr) {
            Add("network-name-id-unread", name, "The cluster does not tell the ID of its Network Name.",
                "clusctl resources --group " + Quoted(m_group.name));
        }
        std::wstring text;
        if (!networkName.GetResourceDependencyByType(address, clus::IpAddressType)) {
            Add("address-dependency-missing", name, "Its Network Name depends on no IP Address that can be read.",
                OnResource("adddep", L"NETWORK-NAME-RESOURCE", ":ADDRESS-RESOURCE"));
        } else if (!address.GetPrivateStringProperty(L"Address", text)) {
            Add("address-missing", name, "The IP Address that it rests on has no Address.",
                OnResource("priv", L"ADDRESS-RESOURCE", " Address=A.B.C.D"));
        }
    }

    void LookAtDataPath(CClusterResource& resource, const std::wstring& name) {
        const std::string mend = OnResource("priv", name, " KOVA_DATA_PATH=FOLDER");
        std::wstring path;
        if (!resource.GetPrivateStringProperty(clus::DataPathProperty, path)) {
            Add("data-path-missing", name, "It has no KOVA_DATA_PATH.", mend);
        } else if (path.empty()) {
            Add("data-path-empty", name, "Its KOVA_DATA_PATH is empty.", mend);
        } else if (!IsAbsolutePath(path)) {
            Add("data-path-relative", name, "Its KOVA_DATA_PATH " + Quoted(path) + " does not begin with a drive.",
                mend);
        } else {
            Add("data-path", name, "Its data is in " + Quoted(path) + ".");
        }
        if (path.size() > LongestDataPath) {
            Add("data-path-long", name, "Its KOVA_DATA_PATH has " + std::to_string(path.size()) + " characters.", mend);
        }
        m_dataPath = path;
    }

    void LookAtStorage(CClusterResource& resource, const Json& detail, bool isHere) {
        const std::wstring name = TextMember(detail, "name");
        const std::vector<const Json*> stores = OfType(clus::InformationStoreType);
        const auto isNeeded = [&detail](const Json* store) {
            return Lists(detail["dependsOn"], TextMember(*store, "name"));
        };
        if (!stores.empty() && detail["dependsOn"].is_array() && std::none_of(stores.begin(), stores.end(), isNeeded)) {
            Add("store-dependency-missing", name, "It does not depend on the group's Information Store.",
                OnResource("adddep", name, ":" + Quoted(TextMember(*stores.front(), "name"))));
        }
        if (TextMember(detail, "type") != clus::SingleCopyType) {
            return;
        }
        CClusterResource disk;
        if (!resource.GetResourceStorageDependency(disk)) {
            Add("disk-dependency-missing", name, "It depends on no disk.", OnResource("adddep", name, ":DISK"));
            return;
        }
        if (isHere) { // only there its paths can be told
            LookAtDisk(disk);
        }
    }

    void LookAtDisk(CClusterResource& disk) {
        const wchar_t* const text = disk.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false);
        const std::wstring name = text == nullptr ? L"" : text;
        std::vector<std::wstring> paths;
        if (!GetDiskLettersFromResource(disk.GetResourceHandle(), paths) || paths.empty()) {
            Add("disk-path-unknown", name, "None of its partitions has a path that can be told.",
                "clusctl disk " + Quoted(name));
            return;
        }
        try {
            if (IsAbsolutePath(m_dataPath)) {
                RequirePathOnDisk(disk.GetResourceHandle(), name, m_dataPath);
            }
        } catch (const Failure& failure) {
            Add("data-path-off-disk", name, AsSentence(failure.what()),
                "let the product's resource depend on the disk of its data path");
        }
    }

    // The product's resource has to go wherever the System Attendant goes.
    void LookAtOwners(const Json& detail) {
        const std::vector<const Json*> attendants = OfType(clus::SystemAttendantType);
        if (attendants.empty() || !detail["possibleOwners"].is_array()) {
            return;
        }
        const std::wstring name = TextMember(detail, "name");
        const ResourceHandle attendant = OpenResource(m_cluster, TextMember(*attendants.front(), "name"));
        Names owners;
        if (attendant && ListRelated(attendant.get(), CLUSTER_RESOURCE_ENUM_NODES, owners) == ERROR_SUCCESS) {
            for (const std::wstring& node : owners) {
                if (!Lists(detail["possibleOwners"], node)) {
                    Add("possible-owner-missing", name,
                        "The node " + Quoted(node) + " is a possible owner of the System Attendant, and not of it.",
                        OnResource("addowner", name, ":" + Printable(node)));
                }
            }
        }
    }

    void LookAtSmtpInstances() {
        const auto info = std::make_unique<CClusterVirtualServerInfo>();
        const std::vector<const Json*> instances = OfType(clus::SmtpInstanceType);
        if (m_networkName.empty() || !CVirtualServerUtil::CheckIsClusterByRegKey()) {
            return;
        }
        if (CVirtualServerUtil::GetSMTPInstanceInfo(m_networkName.c_str(), *info)) {
            if (info->m_nSmtpInstanceCount == 0) {
                Add("smtp-instances-none", m_group.name, "The group has no SMTP instance.");
            }
        } else if (instances.size() > CClusterVirtualServerInfo::MaxSmtpInstances) {
            Add("smtp-instances-many", m_group.name,
                "The group has " + std::to_string(instances.size()) + " SMTP instances.",
                "leave " + std::to_string(CClusterVirtualServerInfo::MaxSmtpInstances) + " in the group at most");
        } else {
            Add("smtp-instances-unread", m_group.name, "The library cannot collect the SMTP instances.",
                "clusctl smtp-instances " + m_serverName);
        }
    }

    void TellVerdict(CClusterResource& resource, const std::wstring& name, bool isHere) {
        const auto info = std::make_unique<CClusterVirtualServerInfo>();
        if (m_here == nullptr || Contains(m_here->leftOut, name)) {
            Add("server-left-out", name, "The library does not list its server.",
                "mend the errors that are told of it, then clusctl servers");
            return;
        }
        const bool isDescribed =
            CVirtualServerUtil::GetVirtualServerInfo(resource.GetResourceHandle(), *info, true, false);
        const bool isListed = std::any_of(m_here->servers.begin(), m_here->servers.end(), [&](const auto& server) {
            return std::wstring(server.m_wsServerName) == info->m_wsServerName;
        });
        if (isHere && isDescribed && isListed) {
            Add("server-served", name,
                "The library lists its server " + Quoted(std::wstring(info->m_wsServerName)) + ", at " +
                    Printable(std::wstring(info->m_wsServerIP)) + ".");
        }
    }

    CCluster& m_cluster;
    const ServerGroup& m_group;
    const ServersHere* m_here;
    Findings& m_findings;
    std::string m_serverName; // quoted, of the first Network Name
    std::wstring m_networkName;
    std::wstring m_dataPath;
};

} // namespace

void DiagnoseServer(CCluster& cluster, const ServerGroup& group, const ServersHere* here, Findings& findings) {
    findings.SetGroup(group.name);
    ServerRound(cluster, group, here, findings).Run();
}
