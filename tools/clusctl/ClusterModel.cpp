#include "ClusterModel.h"

#include "ClusterNetworks.h"
#include "ClusterObjects.h"
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

Failure CannotRead(const char* what, const std::wstring& name, DWORD code) {
    return Failure::OfCode(std::string("cannot read ") + what + " of " + Quoted(name), code);
}

// Since Windows Server 2008 clusters follow other rules; `behaviour.protocol` of the model.
const DWORD MajorVersionOf2008 = 6;

// Reads the open cluster, object by object, in the cluster's order.
class ModelReader {
public:
    ModelReader(const CCluster& cluster, Report& report)
        : m_cluster(cluster), m_report(report), m_thisComputer(ComputerName()) {
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
            resources.push_back(ReadResourceModel(name));
        }
        AddTypesWithoutClass();
        model["resourceTypes"] = m_types;
        model["nodes"] = Json::array();
        for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_NODE)) {
            model["nodes"].push_back(ReadNodeModel(name));
        }
        model["groups"] = Json::array();
        for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
            model["groups"].push_back(ReadGroupModel(name));
        }
        if (!m_hasCore) {
            model["cluster"]["coreGroup"] = "none"; // what there is stands in the model
        }
        AddNetworks(
            m_cluster, [this](const std::wstring& node) { return NodeName(node); }, model, m_report);
        ReadVersion(model);
        AddQuorum(m_cluster, model, resources, m_report);
        if (m_downNodeOwns) {
            model["cluster"]["behaviour"]["downOwners"] = "accepted";
        }
        model["resources"] = std::move(resources);
        return model;
    }

private:
    // A node's name in the model. The library compares node and computer names letter by letter: so does this.
    std::wstring NodeName(const std::wstring& name) const {
        return name == m_thisComputer ? L"." : name;
    }

    Json NodeNames(const Names& names) const {
        Json list = Json::array();
        for (const std::wstring& name : names) {
            list.push_back(NodeName(name));
        }
        return list;
    }

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
        } else if (version.MajorVersion >= MajorVersionOf2008) {
            model["cluster"]["behaviour"]["protocol"] = 2008;
        }
    }

    // A part that the cluster refuses is left out of the object, and marked. A lost cluster is no refusal.
    void Refused(Json& model, const char* part, const char* what, const std::wstring& name, DWORD code) {
        const Failure failure = CannotRead(what, name, code);
        if (failure.Kind().exitCode == ExitNoAnswer) {
            throw failure;
        }
        model["unread"][part] = code;
        m_report.MarkIncomplete(failure.what());
    }

    Json ReadNodeModel(const std::wstring& name) {
        CClusterNode node;
        if (!m_cluster.OpenNodeByName(node, name.c_str())) {
            throw Failure::OfCode("cannot open the node " + Quoted(name), GetLastError());
        }
        Json model = {{"name", NodeName(name)}};
        const CLUSTER_NODE_STATE state = GetClusterNodeState(node.GetNodeHandle());
        if (state != ClusterNodeUp) {
            model["state"] = ModelState(state);
        }
        if (state == ClusterNodeDown || state == ClusterNodeJoining) {
            m_downNodes.insert(common::Folded(name));
        }
        return model;
    }

    Json ReadGroupModel(const std::wstring& name) {
        CClusterGroup group;
        if (!m_cluster.OpenGroupByName(group, name.c_str())) {
            throw Failure::OfCode("cannot open the group " + Quoted(name), GetLastError());
        }
        std::wstring owner;
        if (ReadGroupState(group.GetGroupHandle(), owner) == ClusterGroupStateUnknown) {
            throw CannotRead("the owner", name, GetLastError());
        }
        m_downNodeOwns = m_downNodeOwns || m_downNodes.count(common::Folded(owner)) != 0;
        Json model = {{"name", name}, {"owner", NodeName(owner)}};
        Names preferred;
        const DWORD code = ListInGroup(group.GetGroupHandle(), CLUSTER_GROUP_ENUM_NODES, preferred);
        if (code != ERROR_SUCCESS) {
            Refused(model, "preferredOwners", "the preferred owners", name, code);
        } else if (!preferred.empty()) {
            model["preferredOwners"] = NodeNames(preferred);
        }
        AddProperties(model, "common", "the common properties", name, [&group](Bytes& answer, DWORD& reason) {
            return QueryGroup(group.GetGroupHandle(), CLUSCTL_GROUP_GET_COMMON_PROPERTIES, answer, reason);
        });
        return model;
    }

    Json ReadResourceModel(const std::wstring& name) {
        CClusterResource resource;
        if (!m_cluster.OpenResourceByName(resource, name.c_str())) {
            throw Failure::OfCode("cannot open the resource " + Quoted(name), GetLastError());
        }
        const HRESOURCE handle = resource.GetResourceHandle();
        std::wstring owner;
        std::wstring group;
        const CLUSTER_RESOURCE_STATE state = ReadResourceState(handle, owner, group);
        if (state == ClusterResourceStateUnknown) {
            throw CannotRead("the state", name, GetLastError());
        }
        Json model = Json::object();
        model.get_ref<Json::object_t&>().reserve(12); // an object that grows copies the names of its members
        model["name"] = name;
        model["type"] = UnknownType;
        model["id"] = ""; // in its place; made up below if need be
        model["group"] = group;
        model["state"] = ModelState(state);
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
        if (code == ERROR_SUCCESS) {
            model[member] = kind == CLUSTER_RESOURCE_ENUM_NODES ? NodeNames(names) : Json(names);
        } else {
            Refused(model, member, kind == CLUSTER_RESOURCE_ENUM_NODES ? "the possible owners" : "the dependencies",
                    name, code);
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
    const std::wstring m_thisComputer;
    std::set<std::wstring> m_downNodes; // folded
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
