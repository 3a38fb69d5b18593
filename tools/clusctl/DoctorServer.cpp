// The doctor's look at one group of a failover cluster: each step by which the library makes a server of it.
#include "DoctorParts.h"

#include "CreationChecks.h"
#include "DoctorMends.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/ResourceTypes.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>
#include <memory>

namespace {

const size_t LongestDataPath = sizeof(CClusterVirtualServerInfo::m_wsDataPath) / sizeof(wchar_t) - 1;

bool Contains(const Names& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool Lists(const Json& names, const std::wstring& name) {
    return names.is_array() && std::find(names.begin(), names.end(), Json(name)) != names.end();
}

class ServerRound {
public:
    ServerRound(CCluster& cluster, const ServerGroup& group, const ServersHere* here, const picture::Health& health,
                Findings& findings)
        : m_cluster(cluster), m_group(group), m_here(here), m_health(health), m_findings(findings) {
    }

    void Run() {
        const Json* const networkName = LookAtNetworkNames();
        LookAtExchange();
        const std::vector<const Json*> products = Products();
        if (products.empty()) {
            if (m_group.isWhole) { // otherwise it may be one that cannot be read
                TellProductMissing(networkName);
            }
            return;
        }
        if (products.size() > 1) {
            Add("product-resource-several", TextMember(*products[1], "name"),
                "The group holds " + std::to_string(products.size()) + " resources of the product.",
                InTurn({"clusctl resource delete " + m_serverName, CreationCommand()}));
        }
        for (const Json* product : products) {
            LookAtProduct(*product);
        }
        LookAtSmtpInstances();
    }

private:
    void Add(const char* code, const std::wstring& object, const std::string& seen,
             const std::string& mend = std::string(), const std::string& ask = std::string()) {
        m_findings.Add(code, Printable(object), seen, mend, ask);
    }
    void AddQuestion(const char* code, const std::wstring& object, const std::string& seen, const std::string& ask) {
        Add(code, object, seen, std::string(), ask);
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

    // The one of its type, or else a word in its place.
    std::string OnlyOf(const wchar_t* type, const char* otherwise) const {
        const std::vector<const Json*> found = OfType(type);
        return found.size() == 1 ? Quoted(TextMember(*found.front(), "name")) : otherwise;
    }

    std::vector<const Json*> Products() const {
        std::vector<const Json*> found = OfType(clus::SingleCopyType);
        const std::vector<const Json*> others = OfType(clus::CcrType);
        found.insert(found.end(), others.begin(), others.end());
        return found;
    }

    // That which the server goes by, or else the first whose name can be read, or null.
    const Json* LookAtNetworkNames() {
        const auto server = std::find_if(m_health.servers.begin(), m_health.servers.end(), [this](const auto& each) {
            return common::ToUtf16(each.group) == m_group.name;
        });
        const std::wstring known = server == m_health.servers.end() ? std::wstring() : common::ToUtf16(server->name);
        const std::vector<const Json*> all = OfType(clus::NetworkNameType);
        const Json* chosen = nullptr;
        for (const Json* resource : all) {
            const std::wstring name = TextMember(*resource, "name");
            std::wstring text;
            if (!ReadNetworkName(m_cluster, *resource, text)) {
                AddQuestion("network-name-unread", name, "The cluster does not tell its network name.",
                            "clusctl resources " + Quoted(name));
                continue;
            }
            if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'a' && c <= L'z'; })) {
                Add("network-name-lower-case", name, "Its network name " + Quoted(text) + " has small letters.",
                    OnResource("priv", name, " Name=NAME-IN-CAPITALS, while it is offline"));
            }
            if (chosen == nullptr || text == known) {
                chosen = resource;
                m_serverName = Quoted(text);
                m_networkName = text;
            }
        }
        if (all.empty() && m_group.isWhole) {
            Add("network-name-missing", m_group.name, "The group has no Network Name resource.", "add one to the group",
                "clusctl resources --group " + Quoted(m_group.name));
        }
        return chosen;
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
            if (found.empty() && m_group.isWhole) {
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

    std::wstring ProductName() const {
        return L"Zyntra Gate (" + m_group.name + L")";
    }

    std::string CreationCommand() const {
        return "clusctl resource create " + m_serverName + " --name " + Quoted(ProductName()) +
               (IsSingleCopy() ? " --data-path FOLDER" : "");
    }

    void TellProductMissing(const Json* networkName) {
        Add("product-resource-missing", m_group.name, "The group holds no resource of the product.", CreationCommand());
        if (networkName == nullptr) {
            return;
        }
        try {
            Report unchecked;
            RequireCreatable(m_cluster, {m_networkName, ProductName(), std::wstring(), IsSingleCopy(), std::wstring()},
                             unchecked);
            Add("creation-possible", m_group.name,
                "Nothing stands in the way of creating it on this node" +
                    (unchecked.Warnings().empty() ? "." : ", but " + unchecked.Warnings().front() + "."));
        } catch (const Failure& failure) {
            Add("creation-blocked", m_group.name, AsSentence(failure.what()), failure.Hint(),
                "clusctl groups " + Quoted(m_group.name));
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
            AddQuestion("product-detail-unread", name, AsSentence(unread.Warnings().front()),
                        "clusctl resources " + Quoted(name));
        }
        LookAtNames(resource, detail);
        LookAtDataPath(resource, detail);
        if (TextMember(line, "type") == clus::SingleCopyType) {
            DiagnoseStorage(m_cluster, resource, detail, m_dataPath, isHere, m_findings);
        }
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
                "set ClusterQuorumMode to what this cluster is, or create the resource again",
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
            AddQuestion("owner-unread", name, "The cluster does not tell its owner.",
                        "clusctl resources " + Quoted(name));
        } else if (common::IsSameName(owner, computer)) {
            Add("owner-case", name,
                "The cluster calls its owner " + Quoted(owner) + ", and this computer is " + Quoted(computer) + ".",
                "let the node leave the cluster and join it again under the name " + Printable(computer));
        } else {
            AddQuestion("owner-other-node", name, "The node " + Quoted(owner) + " owns it.",
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
            Add("product-pending", name, "It is " + state + ".", "wait", "clusctl resources " + Quoted(name));
        }
    }

    void TellUnread(const std::wstring& object, const Report& unread, const std::string& otherwise) {
        AddQuestion("product-detail-unread", object,
                    unread.IsComplete() ? otherwise : AsSentence(unread.Warnings().front()),
                    "clusctl resources " + Quoted(object));
    }

    // False also when a name cannot be looked up.
    bool LacksType(const Json& dependsOn, const wchar_t* type) const {
        return dependsOn.is_array() && std::none_of(dependsOn.begin(), dependsOn.end(), [&](const Json& name) {
                   const auto member = std::find_if(m_group.members.begin(), m_group.members.end(),
                                                    [&name](const Json& each) { return each["name"] == name; });
                   return member == m_group.members.end() || (*member)["type"].is_null() ||
                          TextMember(*member, "type") == type;
               });
    }

    // The dependencies through which the library finds name and address.
    void LookAtNames(CClusterResource& resource, const Json& detail) {
        const std::wstring name = TextMember(detail, "name");
        CClusterResource networkName;
        if (!resource.GetResourceDependencyByType(networkName, clus::NetworkNameType)) {
            if (LacksType(detail["dependsOn"], clus::NetworkNameType)) {
                Add("network-name-dependency-missing", name, "It depends on no Network Name.",
                    OnResource("adddep", name, ":" + OnlyOf(clus::NetworkNameType, "NETWORK-NAME-RESOURCE")));
            } else if (detail["dependsOn"].is_array()) { // otherwise that is told already
                TellUnread(name, Report(), "The Network Name that it depends on cannot be read.");
            }
            return;
        }
        if (networkName.GetSystemStringProperty(CClusterResource::RES_PROP_GUID, false) == nullptr) {
            AddQuestion("network-name-id-unread", name, "The cluster does not tell the ID of its Network Name.",
                        "clusctl resources --group " + Quoted(m_group.name));
        }
        LookAtAddress(networkName, name);
    }

    void LookAtAddress(CClusterResource& networkName, const std::wstring& name) {
        const wchar_t* const text = networkName.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false);
        const std::wstring nameResource = text == nullptr ? L"" : text;
        CClusterResource address;
        std::wstring value;
        Report unread;
        if (!networkName.GetResourceDependencyByType(address, clus::IpAddressType)) {
            const Json detail = ReadResource(m_cluster, nameResource, ResourceParts::Detail, unread);
            if (LacksType(detail["dependsOn"], clus::IpAddressType)) {
                Add("address-dependency-missing", name, "Its Network Name depends on no IP Address.",
                    OnResource("adddep", nameResource, ":" + OnlyOf(clus::IpAddressType, "ADDRESS-RESOURCE")));
            } else {
                TellUnread(nameResource, unread, "The IP Address that it depends on cannot be read.");
            }
        } else if (!address.GetPrivateStringProperty(L"Address", value)) {
            const wchar_t* const addressText = address.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false);
            const std::wstring addressResource = addressText == nullptr ? L"" : addressText;
            const Json detail = ReadResource(m_cluster, addressResource, ResourceParts::Detail, unread);
            if (detail["privateProperties"].is_object()) {
                Add("address-missing", name, "The IP Address that it rests on has no Address.",
                    OnResource("priv", addressResource, " Address=A.B.C.D"));
            } else {
                TellUnread(addressResource, unread, "Its private properties cannot be read.");
            }
        }
    }

    void LookAtDataPath(CClusterResource& resource, const Json& detail) {
        const std::wstring name = TextMember(detail, "name");
        const std::string mend = OnResource("priv", name, " KOVA_DATA_PATH=FOLDER");
        std::wstring path;
        if (!resource.GetPrivateStringProperty(clus::DataPathProperty, path)) {
            if (detail["privateProperties"].is_object()) { // otherwise that is told already
                Add("data-path-missing", name, "It has no KOVA_DATA_PATH.", mend);
            }
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

    // The product's resource has to go wherever the System Attendant goes.
    void LookAtOwners(const Json& detail) {
        const std::vector<const Json*> attendants = OfType(clus::SystemAttendantType);
        if (attendants.empty() || !detail["possibleOwners"].is_array()) {
            return;
        }
        const std::wstring name = TextMember(detail, "name");
        const ResourceHandle attendant = OpenResource(m_cluster, TextMember(*attendants.front(), "name"));
        Names owners;
        const DWORD code =
            attendant ? ListRelated(attendant.get(), CLUSTER_RESOURCE_ENUM_NODES, owners) : GetLastError();
        if (code != ERROR_SUCCESS) {
            TellUnread(TextMember(*attendants.front(), "name"), Report(),
                       "Its possible owners cannot be listed: " + ErrorText(code) + ".");
            return;
        }
        for (const std::wstring& node : owners) {
            if (!Lists(detail["possibleOwners"], node)) {
                Add("possible-owner-missing", name,
                    "The node " + Quoted(node) + " is a possible owner of the System Attendant, and not of it.",
                    OnResource("addowner", name, ":" + Printable(node)));
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
            AddQuestion("smtp-instances-unread", m_group.name, "The library cannot collect the SMTP instances.",
                        "clusctl smtp-instances " + m_serverName);
        }
    }

    void TellVerdict(CClusterResource& resource, const std::wstring& name, bool isHere) {
        const auto info = std::make_unique<CClusterVirtualServerInfo>();
        if (m_here == nullptr || Contains(m_here->leftOut, name)) {
            Add("server-left-out", name, "The library does not list its server.", "mend the errors that are told of it",
                "clusctl servers --explain");
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
    const picture::Health& m_health;
    Findings& m_findings;
    std::string m_serverName = "SERVER"; // quoted, of the Network Name
    std::wstring m_networkName;
    std::wstring m_dataPath; // of the resource that is looked at
};

} // namespace

void DiagnoseServer(CCluster& cluster, const ServerGroup& group, const ServersHere* here, const ClusterHealth& health,
                    Findings& findings) {
    findings.SetGroup(group.name);
    ServerRound(cluster, group, here, health.health, findings).Run();
    DiagnoseProblems(health, group.name, findings);
}
