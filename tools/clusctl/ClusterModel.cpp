#include "ClusterModel.h"

#include "ClusterNetworks.h"
#include "ClusterObjects.h"
#include "ModelNodes.h"
#include "ModelSettings.h"
#include "Progress.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/ValueList.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

typedef std::vector<unsigned char> Bytes;

const char UnknownType[] = "Unknown"; // of a resource whose type is not told

// Since Windows Server 2008 clusters follow other rules; `behaviour.protocol` of the model.
const DWORD MajorVersionOf2008 = 6;

// Reads the open cluster, object by object, in the cluster's order.
class ModelReader {
public:
    ModelReader(const CCluster& cluster, Report& report) : m_cluster(cluster), m_report(report) {
    }

    Json Read(const LogCapture& log) {
        Json model;
        model["cluster"] = {{"name", ReadClusterName(m_cluster)}};
        const Json settings = ReadProductSettings();
        if (!settings.empty()) {
            model["settings"] = settings;
        }
        Json resources = Json::array();
        const Names names = ListNames(m_cluster, CCluster::CCLUSTER_OBJ_RESOURCE);
        CountedProgress progress(log, "resources", names.size());
        for (const std::wstring& name : names) {
            progress.Next();
            Json resource = ReadResourceModel(name);
            if (!resource.is_null()) {
                resources.push_back(std::move(resource));
            }
        }
        AddTypesWithoutClass();
        model["resourceTypes"] = m_types;
        model["nodes"] = Json::array();
        for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_NODE)) {
            model["nodes"].push_back(ReadNodeModel(name));
        }
        model["groups"] = Json::array();
        for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
            model["groups"].push_back(ReadGroupModel(name, model["nodes"]));
        }
        if (!m_hasCore) {
            model["cluster"]["coreGroup"] = "none"; // what there is stands in the model
        }
        AddNetworks(m_cluster, model, m_report);
        ReadVersion(model);
        AddQuorum(m_cluster, model, resources, m_report);
        if (m_downNodeOwns) {
            model["cluster"]["behaviour"]["downOwners"] = "accepted";
        }
        model["resources"] = std::move(resources);
        NameThisComputer(model, common::ToUtf8(ComputerName()));
        return model;
    }

private:
    // Types of which no resource told its class. A disk stays one.
    void AddTypesWithoutClass() {
        for (const std::string& type : m_classless) {
            if (m_classes.count(type) == 0) {
                const bool isDisk = type == "Physical Disk";
                const DWORD typeClass = isDisk ? CLUS_RESCLASS_STORAGE : CLUS_RESCLASS_UNKNOWN;
                const DWORD subclass = isDisk ? static_cast<DWORD>(CLUS_RESSUBCLASS_SHARED) : 0;
                m_types.push_back({{"name", type}, {"class", typeClass}, {"subclass", subclass}});
            }
        }
    }

    void ReadVersion(Json& model) {
        CLUSTERVERSIONINFO version = {};
        version.dwVersionInfoSize = sizeof(version);
        wchar_t name[256] = {};
        DWORD length = 256;
        const DWORD code = GetClusterInformation(m_cluster.GetHandle(), name, &length, &version);
        if (code != ERROR_SUCCESS && code != ERROR_MORE_DATA) {
            MarkUnread(m_report, "cannot read the cluster's version: it counts as one of Windows Server 2003", code);
            model["cluster"]["unread"]["version"] = code;
        } else if (version.MajorVersion >= MajorVersionOf2008) {
            model["cluster"]["behaviour"]["protocol"] = 2008;
        }
    }

    // A part that the cluster refuses is left out of the object, and marked. A lost cluster is no refusal.
    void Refused(Json& model, const char* part, const char* what, const std::wstring& name, DWORD code) {
        Mark(model, part, Failure::OfReading(what, name, code));
    }
    void RefusedList(Json& model, const char* part, const char* what, const std::wstring& name, DWORD code) {
        Mark(model, part,
             FailureOfList(std::string("cannot read ") + what + " of " + Quoted(name), code, Errors::Failed));
    }
    void NotOpened(Json& model, const char* what, const std::wstring& name, DWORD code) {
        Mark(model, "open", Failure::OfCode(std::string("cannot open ") + what + " " + Quoted(name), code));
    }
    void Mark(Json& model, const char* part, const Failure& failure) {
        if (IsOfLostCluster(failure)) {
            throw failure;
        }
        model["unread"][part] = failure.Win32();
        m_report.MarkIncomplete(failure.what());
    }

    Json ReadNodeModel(const std::wstring& name) {
        Json model = {{"name", name}};
        const NodeHandle node = OpenNode(m_cluster, name);
        if (!node) {
            NotOpened(model, "the node", name, GetLastError());
            return model;
        }
        const CLUSTER_NODE_STATE state = GetClusterNodeState(node.get());
        if (state == ClusterNodeStateUnknown) {
            Refused(model, "state", "the state", name, GetLastError());
        } else if (state != ClusterNodeUp) {
            model["state"] = ModelState(state);
        }
        if (state == ClusterNodeDown || state == ClusterNodeJoining) {
            m_downNodes.insert(common::Folded(name));
        }
        return model;
    }

    // The owner of a group that does not tell it: that of its resources, or a node that can be one.
    Json OtherOwner(const std::wstring& group, const Json& nodes) const {
        const auto known = m_owners.find(common::Folded(group));
        if (known != m_owners.end()) {
            return known->second;
        }
        const auto up = std::find_if(nodes.begin(), nodes.end(), [](const Json& node) {
            return !node.contains("state") || node["state"] == ModelState(ClusterNodePaused);
        });
        return up == nodes.end() ? nodes.at(0).at("name") : up->at("name");
    }

    Json ReadGroupModel(const std::wstring& name, const Json& nodes) {
        Json model = {{"name", name}, {"owner", nullptr}};
        const GroupHandle group = OpenGroup(m_cluster, name);
        if (!group) {
            const DWORD code = GetLastError();
            model["owner"] = OtherOwner(name, nodes);
            NotOpened(model, "the group", name, code);
            return model;
        }
        std::wstring owner;
        if (ReadGroupState(group.get(), owner) == ClusterGroupStateUnknown) {
            const DWORD code = GetLastError();
            model["owner"] = OtherOwner(name, nodes);
            Refused(model, "owner", "the owner", name, code);
        } else {
            m_downNodeOwns = m_downNodeOwns || m_downNodes.count(common::Folded(owner)) != 0;
            model["owner"] = owner;
        }
        Names preferred;
        const DWORD code = ListInGroup(group.get(), CLUSTER_GROUP_ENUM_NODES, preferred);
        if (code != ERROR_SUCCESS) {
            RefusedList(model, "preferredOwners", "the preferred owners", name, code);
        } else if (!preferred.empty()) {
            model["preferredOwners"] = Json(preferred);
        }
        AddProperties(model, "common", "the common properties", name, [&group](Bytes& answer, DWORD& reason) {
            return QueryGroup(group.get(), CLUSCTL_GROUP_GET_COMMON_PROPERTIES, answer, reason);
        });
        return model;
    }

    // Of a group that is not listed nothing is known; a lost cluster lists none.
    static void RequireGroupListed(const std::wstring& name, DWORD code) {
        const Failure failure =
            FailureOfList("cannot list the resources of the group " + Quoted(name), code, Errors::Failed);
        if (code != ERROR_SUCCESS && IsOfLostCluster(failure)) {
            throw failure;
        }
    }

    // The group that has the resource in its list; empty when none tells it.
    std::wstring GroupOf(const std::wstring& resource) {
        if (m_groups.empty()) {
            for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
                Names members;
                const GroupHandle group = OpenGroup(m_cluster, name);
                if (group) {
                    RequireGroupListed(name, ListInGroup(group.get(), CLUSTER_GROUP_ENUM_CONTAINS, members));
                }
                for (const std::wstring& member : members) {
                    m_groups[common::Folded(member)] = name;
                }
            }
        }
        return m_groups[common::Folded(resource)];
    }

    // Null when no group is known to have it: no model can have it then.
    Json ReadResourceModel(const std::wstring& name) {
        const ResourceHandle resource = OpenResource(m_cluster, name);
        DWORD stateCode = GetLastError();
        const HRESOURCE handle = resource.get();
        std::wstring owner;
        std::wstring group;
        CLUSTER_RESOURCE_STATE state = ClusterResourceStateUnknown;
        if (resource) {
            state = ReadResourceState(handle, owner, group);
            stateCode = GetLastError();
        }
        if (state == ClusterResourceStateUnknown) {
            group = GroupOf(name);
        } else {
            m_owners[common::Folded(group)] = owner;
        }
        Json model = Json::object();
        model.get_ref<Json::object_t&>().reserve(12); // an object that grows copies the names of its members
        model["name"] = name;
        model["type"] = UnknownType;
        model["id"] = ""; // in its place; made up below if need be
        model["group"] = group;
        model["state"] = ModelState(state == ClusterResourceStateUnknown ? ClusterResourceOffline : state);
        if (!resource) {
            NotOpened(model, "the resource", name, stateCode);
            m_classless.insert(UnknownType);
            model["id"] = "unread-" + std::to_string(++m_idsMadeUp);
        } else if (state == ClusterResourceStateUnknown) {
            Refused(model, "state", "the state", name, stateCode);
        }
        if (group.empty()) {
            m_report.MarkIncomplete("the cluster does not tell the group of " + Quoted(name) + ": it is left out");
            return Json();
        }
        if (!resource) {
            return model;
        }
        AddText(model, "type", "the type", CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, handle, name);
        AddText(model, "id", "the ID", CLUSCTL_RESOURCE_GET_ID, handle, name);
        if (model["id"].get<std::string>().empty()) {
            model["id"] = "unread-" + std::to_string(++m_idsMadeUp);
        }
        AddRelated(model, "dependsOn", CLUSTER_RESOURCE_ENUM_DEPENDS, handle, name);
        AddRelated(model, "possibleOwners", CLUSTER_RESOURCE_ENUM_NODES, handle, name);
        AddProperties(model, "common", "the common properties", name, [handle](Bytes& answer, DWORD& reason) {
            return QueryResource(handle, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES, answer, reason);
        });
        AddProperties(model, "private", "the private properties", name, [handle](Bytes& answer, DWORD& reason) {
            return QueryResource(handle, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, answer, reason);
        });
        AddDisk(model, handle, name);
        AddCore(model, handle, name);
        return model;
    }

    // Of the first resource of each type that tells, for the model's types.
    void AddClass(Json& model, HRESOURCE resource, const std::wstring& name) {
        const std::string type = model["type"].get<std::string>();
        if (m_classes.count(type) != 0) {
            return;
        }
        DWORD code = 0;
        if (!QueryResource(resource, CLUSCTL_RESOURCE_GET_CLASS_INFO, m_answer, code)) {
            Refused(model, "class", "the class", name, code);
            m_classless.insert(type);
            return;
        }
        DWORD numbers[2] = {}; // class, subclass
        std::memcpy(numbers, m_answer.data(), std::min(m_answer.size(), sizeof(numbers)));
        m_types.push_back({{"name", type}, {"class", numbers[0]}, {"subclass", numbers[1]}});
        m_classes.emplace(type, numbers[0]);
    }

    void AddDisk(Json& model, HRESOURCE resource, const std::wstring& name) {
        AddClass(model, resource, name);
        const auto known = m_classes.find(model["type"].get<std::string>());
        const bool isAsked = known == m_classes.end() || known->second == CLUS_RESCLASS_STORAGE;
        DWORD code = 0;
        if (!isAsked) {
            return;
        }
        if (!QueryResource(resource, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, m_answer, code)) {
            if (known != m_classes.end() || code != ERROR_INVALID_FUNCTION) { // of no storage, as far as is known
                Refused(model, "disk", "the disk information", name, code);
            }
            return;
        }
        try {
            model["disk"] = DiskJson(m_answer);
        } catch (const Failure& malformed) {
            Malformed(model, "disk", name, malformed);
        }
    }

    void AddCore(Json& model, HRESOURCE resource, const std::wstring& name) {
        DWORD code = 0;
        if (!QueryResource(resource, CLUSCTL_RESOURCE_GET_FLAGS, m_answer, code)) {
            Refused(model, "flags", "the flags", name, code);
        } else if (IsCore(m_answer)) {
            model["core"] = true;
            m_hasCore = true;
        }
    }

    void AddText(Json& model, const char* member, const char* what, DWORD controlCode, HRESOURCE resource,
                 const std::wstring& name) {
        DWORD code = 0;
        if (QueryResource(resource, controlCode, m_answer, code)) {
            model[member] = clus::TextInBuffer(m_answer.data(), m_answer.size(), 0);
        } else {
            Refused(model, member, what, name, code);
        }
    }

    void AddRelated(Json& model, const char* member, DWORD kind, HRESOURCE resource, const std::wstring& name) {
        Names names;
        const DWORD code = ListRelated(resource, kind, names);
        const bool isOfNodes = kind == CLUSTER_RESOURCE_ENUM_NODES;
        if (code == ERROR_SUCCESS && !(isOfNodes && names.empty())) { // a model has at least one, or says nothing
            model[member] = names;
        } else if (code != ERROR_SUCCESS) {
            RefusedList(model, member, isOfNodes ? "the possible owners" : "the dependencies", name, code);
        }
    }

    template <typename Query>
    void AddProperties(Json& model, const char* member, const char* what, const std::wstring& name,
                       const Query& query) {
        DWORD code = 0;
        if (!query(m_answer, code)) {
            Refused(model, member, what, name, code);
            return;
        }
        try {
            Json properties = PropertiesJson(m_answer);
            if (!properties.empty()) {
                model[member] = std::move(properties);
            }
        } catch (const Failure& malformed) {
            Malformed(model, member, name, malformed);
        }
    }

    void Malformed(Json& model, const char* part, const std::wstring& name, const Failure& malformed) {
        model["unread"][part] = ERROR_INVALID_DATA;
        m_report.MarkIncomplete("of " + Quoted(name) + ": " + malformed.what());
    }

    const CCluster& m_cluster;
    Report& m_report;
    std::set<std::wstring> m_downNodes;                      // folded
    std::unordered_map<std::wstring, std::wstring> m_owners; // by group, folded, as its resources tell them
    std::unordered_map<std::wstring, std::wstring> m_groups; // by resource, folded, where one did not tell it
    bool m_hasCore = false;
    bool m_downNodeOwns = false; // what the simulator accepts only when it is told to
    Bytes m_answer;              // of the control asked last
    Json m_types = Json::array();
    std::unordered_map<std::string, DWORD> m_classes; // by type
    std::set<std::string> m_classless;                // types whose class was refused
    int m_idsMadeUp = 0;
};

} // namespace

Json ReadClusterModel(const LogCapture& log, Report& report) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    return ModelReader(cluster, report).Read(log);
}
