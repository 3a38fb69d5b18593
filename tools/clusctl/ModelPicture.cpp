#include "ModelPicture.h"

#include "FailoverPicture.h"
#include "Failure.h"
#include "ModelFindings.h"
#include "ModelInUse.h"
#include "StateNames.h"
#include "Text.h"
#include "ThisComputer.h"
#include "VcsPicture.h"

#include "common/Files.h"
#include "core/VeritasNames.h"
#include "picture/PictureIndex.h"
#include "simulator/cluster/ModelStates.h"

#include <ClusterFiles.h>
#include <Store.h>

#include <algorithm>
#include <iterator>
#include <map>

using namespace picture;

namespace {

std::string TextOr(const Json& object, const char* member, const char* otherwise) {
    return object.value(member, std::string(otherwise));
}

// The reverse of clussim::NameOf.
template <std::size_t Size>
int NumberOf(const clussim::ModelState (&states)[Size], const std::string& name, int otherwise) {
    const auto* const found = std::find_if(std::begin(states), std::end(states),
                                           [&name](const clussim::ModelState& known) { return known.name == name; });
    return found == std::end(states) ? otherwise : found->number;
}

// What the states of its resources make of a group.
CLUSTER_GROUP_STATE StateOfGroup(const std::vector<const Resource*>& members) {
    const auto count = [&members](Condition condition) {
        return std::count_if(members.begin(), members.end(),
                             [condition](const Resource* member) { return member->condition == condition; });
    };
    const auto online = count(Condition::Online);
    return count(Condition::Failed) != 0                        ? ClusterGroupFailed
           : count(Condition::Pending) != 0                     ? ClusterGroupPending
           : online == 0                                        ? ClusterGroupOffline
           : static_cast<std::size_t>(online) == members.size() ? ClusterGroupOnline
                                                                : ClusterGroupPartialOnline;
}

Json SettingRecords(const Json& settings) {
    Json records = Json::array();
    for (const auto& setting : settings.items()) {
        records.push_back({{"name", setting.key()}, {"value", setting.value()}});
    }
    return records;
}

class FailoverModel {
public:
    explicit FailoverModel(const Json& json) : m_json(json), m_thisComputer(common::ToUtf8(ComputerName())) {
    }

    ModelPicture Read() {
        m_result.cluster.kind = Kind::Failover;
        ReadCluster(m_json["cluster"]);
        NoteUnread(m_json["cluster"]);
        for (const Json& node : Items("nodes")) {
            const auto state = static_cast<CLUSTER_NODE_STATE>(
                NumberOf(clussim::NodeStates, TextOr(node, "state", "up"), ClusterNodeStateUnknown));
            m_result.cluster.nodes.push_back({NodeName(node["name"]), StateWord(state), state == ClusterNodeUp});
            NoteUnread(node);
        }
        std::map<std::wstring, std::string> owners;
        for (const Json& group : Items("groups")) {
            owners[Key(group["name"])] = NodeName(group["owner"]);
            m_groupNames[Key(group["name"])] = group["name"].get<std::string>();
            NoteUnread(group);
        }
        for (const Json& resource : Items("resources")) {
            m_resourceNames[Key(resource["name"])] = resource["name"].get<std::string>();
            m_resourceNames[Key(resource["id"])] = resource["name"].get<std::string>();
        }
        for (const Json& resource : Items("resources")) {
            m_result.cluster.resources.push_back(ResourceOf(resource, owners));
            NoteDisk(resource);
            NoteUnread(resource);
        }
        const PictureIndex index(m_result.cluster); // of its resources: the groups are to come
        for (const Json& group : Items("groups")) {
            Group result;
            result.name = group["name"].get<std::string>();
            result.node = owners[Key(group["name"])];
            SetGroupState(result, StateOfGroup(index.MembersOf(result.name)));
            m_result.cluster.groups.push_back(result);
        }
        m_result.settings = SettingRecords(m_json.value("settings", Json::object()));
        return std::move(m_result);
    }

private:
    // Names compare without case.
    static std::wstring Key(const Json& name) {
        return common::Folded(common::ToUtf16(name.get<std::string>()));
    }

    Json Items(const char* list) const {
        return m_json.value(list, Json::array());
    }

    std::string NodeName(const Json& name) const {
        return name == "." ? m_thisComputer : name.get<std::string>();
    }

    void ReadCluster(const Json& cluster) {
        m_result.cluster.name = cluster["name"].get<std::string>();
        m_result.model = {{"running", cluster.value("running", true)},
                          {"quorum", TextOr(cluster, "quorum", "shared")},
                          {"clock", cluster.contains("clock") ? cluster["clock"] : Json()},
                          {"behaviour", cluster.value("behaviour", Json::object())},
                          {"faults", Items("faults")}};
    }

    Resource ResourceOf(const Json& json, const std::map<std::wstring, std::string>& owners) const {
        Resource resource;
        resource.name = json["name"].get<std::string>();
        resource.type = json["type"].get<std::string>();
        resource.role = RoleOfType(common::ToUtf16(resource.type));
        resource.group = m_groupNames.at(Key(json["group"]));
        resource.node = owners.at(Key(json["group"]));
        SetResourceState(resource,
                         static_cast<CLUSTER_RESOURCE_STATE>(NumberOf(
                             clussim::ResourceStates, TextOr(json, "state", "Offline"), ClusterResourceStateUnknown)));
        for (const Json& provider : json.value("dependsOn", Json::array())) {
            resource.dependsOn.push_back(m_resourceNames.at(Key(provider)));
        }
        return resource;
    }

    void NoteDisk(const Json& resource) {
        const auto disk = resource.find("disk");
        if (disk == resource.end()) {
            return;
        }
        Json partitions = Json::array();
        for (const Json& partition : disk->value("partitions", Json::array())) {
            const std::string label = TextOr(partition, "label", "");
            partitions.push_back(TextOr(partition, "device", "") + (label.empty() ? "" : " (" + label + ")"));
        }
        m_result.disks.push_back({{"resource", resource["name"]},
                                  {"number", disk->value("number", 0U)},
                                  {"id", disk->contains("guid") ? (*disk)["guid"] : disk->value("signature", Json(0))},
                                  {"partitions", std::move(partitions)}});
    }

    void NoteUnread(const Json& object) {
        const Json unread = object.value("unread", Json::object());
        for (const auto& part : unread.items()) {
            m_result.unread.push_back({{"object", object["name"]}, {"part", part.key()}, {"code", part.value()}});
        }
    }

    const Json& m_json;
    const std::string m_thisComputer;
    std::map<std::wstring, std::string> m_groupNames;
    std::map<std::wstring, std::string> m_resourceNames;
    ModelPicture m_result;
};

std::wstring FirstPart(const std::vector<vcssim::AttributeRow>& rows) {
    return rows.empty() || rows.front().parts.empty() ? std::wstring() : common::ToUtf16(rows.front().parts.front());
}

class VcsModelPicture {
public:
    explicit VcsModelPicture(const vcssim::Cluster& cluster) : m_cluster(cluster) {
    }

    ModelPicture Read() {
        m_result.cluster.kind = Kind::Vcs;
        const std::vector<vcssim::CfBlock>& clusters = m_cluster.configuration.Clusters();
        m_result.cluster.name = clusters.empty() ? std::string() : clusters.front().name;
        const std::optional<vcssim::Seconds>& clock = m_cluster.state.progress.clock;
        m_result.model = {{"configuration", m_cluster.state.writable ? "read-write" : "read-only"},
                          {"clock", clock ? Json(*clock) : Json()}};
        if (!m_cluster.state.settings.empty()) {
            m_result.settings = SettingRecords(common::ParseJson(m_cluster.state.settings));
        }
        for (const vcssim::CfBlock& system : m_cluster.configuration.Systems()) {
            m_result.cluster.nodes.push_back(
                VcsSystem(common::ToUtf16(system.name), FirstPart(m_cluster.SystemAttribute(system, "SysState"))));
        }
        for (const vcssim::CfGroup& group : m_cluster.configuration.Groups()) {
            const auto stateOn = [&](const std::string& system) { return m_cluster.GroupState(group, system); };
            m_result.cluster.groups.push_back(VcsGroup(common::ToUtf16(group.block.name), States(group, stateOn)));
            for (std::size_t i = 0; i < group.requires_.size(); ++i) {
                m_result.groupDependencies.push_back({{"group", group.block.name},
                                                      {"requires", group.requires_[i].child},
                                                      {"relationship", group.relationships[i]}});
            }
        }
        const PictureIndex index(m_result.cluster); // of its groups: the resources are to come
        for (const vcssim::CfGroup& group : m_cluster.configuration.Groups()) {
            for (const vcssim::CfBlock& resource : group.resources) {
                AddResource(group, resource, index);
            }
        }
        return std::move(m_result);
    }

private:
    template <typename StateOn> SystemStates States(const vcssim::CfGroup& group, const StateOn& stateOn) const {
        SystemStates states;
        for (const std::string& system : m_cluster.SystemsOf(group)) {
            states.push_back({common::ToUtf16(system), common::ToUtf16(stateOn(system))});
        }
        return states;
    }

    void AddResource(const vcssim::CfGroup& group, const vcssim::CfBlock& resource, const PictureIndex& index) {
        using namespace clus::veritas;
        VcsAttributes attributes;
        for (const wchar_t* const name :
             {TypeAttribute, GroupAttribute, ServiceAttribute, ServiceNameAttribute, VirtualNameAttribute}) {
            attributes[name] = FirstPart(m_cluster.ResourceAttribute(group, resource, common::ToUtf8(name)));
        }
        const auto stateOn = [&](const std::string& system) { return m_cluster.ResourceState(resource, system); };
        Resource result = VcsResource(common::ToUtf16(resource.name), attributes, States(group, stateOn), index);
        for (const vcssim::CfLink& link : group.links) {
            if (link.parent == resource.name) {
                result.dependsOn.push_back(link.child);
            }
        }
        m_result.cluster.resources.push_back(result);
        if (attributes[TypeAttribute] == MountVType) {
            m_result.disks.push_back(
                {{"resource", resource.name},
                 {"number", nullptr},
                 {"id", TextOrNull(FirstPart(m_cluster.ResourceAttribute(group, resource, "VolumeName")))},
                 {"partitions", {FirstPart(m_cluster.ResourceAttribute(group, resource, "MountPath"))}}});
        }
    }

    const vcssim::Cluster& m_cluster;
    ModelPicture m_result;
};

} // namespace

ModelPicture PictureOfModel(const std::wstring& model) {
    for (const ModelFinding& finding : CheckModel(model)) {
        if (!finding.isNote) {
            throw Failure("the model " + Quoted(model) + " is not in order: " + Printable(finding.message))
                .Hint("\"clusctl model check\" tells all that is wrong with it.");
        }
    }
    const std::wstring file = ModelFile(model);
    try {
        return IsModelOfVcs(model) ? VcsModelPicture(vcssim::Store(vcssim::ClusterFiles(file)).Load()).Read()
                                   : FailoverModel(common::ParseJson(common::ReadWholeFile(file))).Read();
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read " + Quoted(file), error.Code());
    }
}
