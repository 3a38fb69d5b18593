#include "ClusterModel.h"

#include "ClusterObjects.h"
#include "ModelSettings.h"
#include "Progress.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"

#include <cstring>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

namespace {

Failure CannotRead(const char* what, const std::wstring& name, DWORD code) {
    return Failure::OfCode(std::string("cannot read ") + what + " of " + Quoted(name), code);
}

struct Placement {
    CLUSTER_RESOURCE_STATE state;
    std::wstring node;
    std::wstring group;
};

// Where a resource is. Unlike the library's class, without a limit to the names.
Placement ReadPlacement(HRESOURCE resource, const std::wstring& name) {
    std::vector<wchar_t> node(64);
    std::vector<wchar_t> group(256);
    for (;;) {
        auto nodeLength = static_cast<DWORD>(node.size());
        auto groupLength = static_cast<DWORD>(group.size());
        const CLUSTER_RESOURCE_STATE state =
            GetClusterResourceState(resource, node.data(), &nodeLength, group.data(), &groupLength);
        if (state != ClusterResourceStateUnknown) {
            return {state, node.data(), group.data()};
        }
        const DWORD code = GetLastError();
        if (code != ERROR_MORE_DATA || (nodeLength < node.size() && groupLength < group.size())) {
            throw CannotRead("the state", name, code);
        }
        node.resize(nodeLength + 1);
        group.resize(groupLength + 1);
    }
}

// Reads the open cluster, object by object, in the cluster's order.
class ModelReader {
public:
    explicit ModelReader(const CCluster& cluster) : m_cluster(cluster), m_thisComputer(ComputerName()) {
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
        model["resourceTypes"] = m_types;
        model["nodes"] = Json::array();
        for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_NODE)) {
            model["nodes"].push_back(ReadNodeModel(name));
        }
        model["groups"] = Json::array();
        for (const std::wstring& name : ListNames(m_cluster, CCluster::CCLUSTER_OBJ_GROUP)) {
            model["groups"].push_back(ReadGroupModel(name));
        }
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
        if (!ListPreferredOwners(group.GetGroupHandle(), preferred)) {
            throw Failure("cannot list the preferred owners of " + Quoted(name));
        }
        if (!preferred.empty()) {
            model["preferredOwners"] = NodeNames(preferred);
        }
        return model;
    }

    Json ReadResourceModel(const std::wstring& name) {
        CClusterResource resource;
        if (!m_cluster.OpenResourceByName(resource, name.c_str())) {
            throw Failure::OfCode("cannot open the resource " + Quoted(name), GetLastError());
        }
        const HRESOURCE handle = resource.GetResourceHandle();
        const Placement placement = ReadPlacement(handle, name);
        const Json type = SystemText(resource, CClusterResource::RES_PROP_TYPE, name);
        Json model;
        model["name"] = name;
        model["type"] = type;
        model["id"] = SystemText(resource, CClusterResource::RES_PROP_GUID, name);
        model["group"] = placement.group;
        model["state"] = ModelState(placement.state);
        model["dependsOn"] = Related(resource, CLUSTER_RESOURCE_ENUM_DEPENDS, name);
        model["possibleOwners"] = NodeNames(Related(resource, CLUSTER_RESOURCE_ENUM_NODES, name));
        AddProperties(model, "common", handle, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES, name);
        AddProperties(model, "private", handle, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, name);
        if (ClassOf(type, handle, name) == CLUS_RESCLASS_STORAGE) {
            model["disk"] =
                DiskJson(Query(handle, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, "the disk information", name));
        }
        return model;
    }

    // Asks the first resource of each type, and adds the type to the model.
    DWORD ClassOf(const Json& type, HRESOURCE resource, const std::wstring& name) {
        const auto known = m_classes.find(type.get<std::string>());
        if (known != m_classes.end()) {
            return known->second;
        }
        const std::vector<unsigned char> answer = Query(resource, CLUSCTL_RESOURCE_GET_CLASS_INFO, "the class", name);
        DWORD numbers[2] = {}; // class, subclass
        std::memcpy(numbers, answer.data(), answer.size() < sizeof(numbers) ? answer.size() : sizeof(numbers));
        m_types.push_back({{"name", type}, {"class", numbers[0]}, {"subclass", numbers[1]}});
        m_classes.emplace(type.get<std::string>(), numbers[0]);
        return numbers[0];
    }

    static void AddProperties(Json& model, const char* member, HRESOURCE resource, DWORD controlCode,
                              const std::wstring& name) {
        Json properties = PropertiesJson(Query(resource, controlCode, "the properties", name));
        if (!properties.empty()) {
            model[member] = std::move(properties);
        }
    }

    static std::vector<unsigned char> Query(HRESOURCE resource, DWORD controlCode, const char* what,
                                            const std::wstring& name) {
        std::vector<unsigned char> answer;
        DWORD code = 0;
        if (!QueryResource(resource, controlCode, answer, code)) {
            throw CannotRead(what, name, code);
        }
        return answer;
    }

    static Names Related(const CClusterResource& resource, DWORD enumType, const std::wstring& name) {
        Names names;
        if (!resource.EnumNames(enumType, names)) {
            throw Failure::OfCode("cannot list the related objects of " + Quoted(name), GetLastError());
        }
        return names;
    }

    static std::wstring SystemText(CClusterResource& resource, CClusterResource::RES_PROPERTY_ID id,
                                   const std::wstring& name) {
        const wchar_t* text = resource.GetSystemStringProperty(id, false);
        if (text == nullptr) {
            throw Failure("cannot read type and ID of " + Quoted(name));
        }
        return text;
    }

    const CCluster& m_cluster;
    const std::wstring m_thisComputer;
    std::set<std::wstring> m_downNodes; // folded
    bool m_downNodeOwns = false;        // what the simulator accepts only when it is told to
    Json m_types = Json::array();
    std::unordered_map<std::string, DWORD> m_classes; // by type
};

} // namespace

Json ReadClusterModel(const LogCapture& log) {
    CCluster cluster;
    OpenLocalCluster(cluster);
    return ModelReader(cluster).Read(log);
}
