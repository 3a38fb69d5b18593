// Writing a model as JSON text.
#include "CoreGroup.h"
#include "ModelJson.h"

#include "common/Json.h"
#include "common/Text.h"

#include <utility>

namespace clussim {

using common::Json;
using common::ToUtf8;

namespace {

// Of a resource. An object that grows copies the names of its members.
const std::size_t UsualMembers = 12;

std::string NodeText(const Node& node) {
    return node.isThisComputer ? "." : ToUtf8(node.name);
}

Json TimesJson(const std::vector<std::int64_t>& times) {
    Json json = Json::array();
    for (const std::int64_t time : times) {
        json.push_back(time);
    }
    return json;
}

Json PropertiesJson(const PropertySet& properties) {
    Json json = Json::object();
    for (const PropertySet::Item& item : properties.Items()) {
        Json value;
        switch (item.value.kind) {
        case PropertyValue::Sz:
            value = ToUtf8(item.value.text);
            break;
        case PropertyValue::Dword:
            value = item.value.number;
            break;
        case PropertyValue::MultiSz:
            value = Json::array();
            for (const std::wstring& text : item.value.texts) {
                value.push_back(ToUtf8(text));
            }
            break;
        case PropertyValue::ExpandSz:
            value = {{"expandSz", ToUtf8(item.value.text)}};
            break;
        case PropertyValue::Binary:
            value = {{"binary", common::HexDigits(item.value.bytes.data(), item.value.bytes.size())}};
            break;
        }
        json[ToUtf8(item.name)] = std::move(value);
    }
    return json;
}

Json ObjectOfResource() {
    Json json = Json::object();
    json.get_ref<Json::object_t&>().reserve(UsualMembers);
    return json;
}

Json ResourceJson(const Resource& resource) {
    Json json = ObjectOfResource();
    json["name"] = ToUtf8(resource.name);
    json["type"] = ToUtf8(resource.type->name);
    json["id"] = ToUtf8(resource.id);
    json["group"] = ToUtf8(resource.group->name);
    json["state"] = StateName(resource.state);
    if (resource.dueAt != 0) {
        json["dueAt"] = resource.dueAt;
    }
    if (resource.actAt != 0) {
        json["actAt"] = resource.actAt;
    }
    if (!resource.restarts.empty()) {
        json["restartsAt"] = TimesJson(resource.restarts);
    }
    json["dependsOn"] = Json::array();
    for (const Resource* provider : resource.dependsOn) {
        json["dependsOn"].push_back(ToUtf8(provider->name));
    }
    if (resource.ownersGiven) {
        json["possibleOwners"] = Json::array();
        for (const Node* node : resource.possibleOwners) {
            json["possibleOwners"].push_back(NodeText(*node));
        }
    }
    Json common = PropertiesJson(resource.common);
    if (resource.persistentGiven || resource.isWanted != IsWantedByState(resource.state)) {
        common["PersistentState"] = resource.isWanted ? 1 : 0;
    }
    if (!common.empty()) {
        json["common"] = std::move(common);
    }
    if (!resource.privateProperties.Items().empty()) {
        json["private"] = PropertiesJson(resource.privateProperties);
    }
    if (resource.disk) {
        Json disk;
        if (resource.disk->guid.empty()) {
            disk["signature"] = resource.disk->signature;
        } else {
            disk["guid"] = ToUtf8(resource.disk->guid);
        }
        disk["number"] = resource.disk->number;
        if (resource.disk->size != 0) {
            disk["size"] = resource.disk->size;
        }
        disk["partitions"] = Json::array();
        for (const Partition& partition : resource.disk->partitions) {
            Json item = {{"device", ToUtf8(partition.device)}};
            if (!partition.label.empty()) {
                item["label"] = ToUtf8(partition.label);
            }
            disk["partitions"].push_back(std::move(item));
        }
        json["disk"] = std::move(disk);
    }
    if (!resource.unread.empty()) {
        json["unread"] = resource.unread;
    }
    if (resource.onlineMs != 0) {
        json["onlineMs"] = resource.onlineMs;
    }
    if (resource.offlineMs != 0) {
        json["offlineMs"] = resource.offlineMs;
    }
    if (resource.failsOnline) {
        json["failsOnline"] = true;
    }
    if (resource.staysPending) {
        json["staysPending"] = true;
    }
    if (resource.isCore) {
        json["core"] = true;
    }
    if (resource.isQuorum) {
        json["quorum"] = true;
    }
    return json;
}

Json ClusterJson(const Model& model) {
    Json json = {{"name", ToUtf8(model.name)}};
    if (!model.domain.empty()) {
        json["domain"] = ToUtf8(model.domain);
    }
    if (!model.running) {
        json["running"] = false;
    }
    if (model.quorum == Quorum::Majority) {
        json["quorum"] = "majority";
    }
    if (model.witness != Witness::None) {
        json["witness"] = model.witness == Witness::Share ? "share" : "disk";
    }
    if (LacksCoreGroup(model)) {
        json["coreGroup"] = "none"; // that it is not added when this is read
    }
    if (model.clock != 0) {
        json["clock"] = model.clock;
    }
    const Behaviour standard;
    Json behaviour = Json::object();
    if (model.behaviour.emptyMaskIsEmptyList) {
        behaviour["enumMaskZero"] = "empty";
    }
    if (model.behaviour.deleteOnline != standard.deleteOnline) {
        behaviour["deleteOnline"] = model.behaviour.deleteOnline;
    }
    if (model.behaviour.offlineFailed != standard.offlineFailed) {
        behaviour["offlineFailed"] = model.behaviour.offlineFailed;
    }
    if (model.behaviour.protocol != standard.protocol) {
        behaviour["protocol"] = model.behaviour.protocol;
    }
    if (model.behaviour.downNodesOwnGroups) {
        behaviour["downOwners"] = "accepted";
    }
    if (model.behaviour.actsOnFailures) {
        behaviour["failures"] = "acted-on";
    }
    if (!model.behaviour.needsRequired) {
        behaviour["requiredDependencies"] = "ignored";
    }
    if (model.behaviour.lost != standard.lost) {
        behaviour["lost"] = model.behaviour.lost;
    }
    if (model.behaviour.handlesGoStale) {
        behaviour["handles"] = "go-stale";
    }
    if (!model.behaviour.leavesGroupOffline) {
        behaviour["failoversUsedUp"] = "resource-failed";
    }
    if (!behaviour.empty()) {
        json["behaviour"] = behaviour;
    }
    if (!model.unread.empty()) {
        json["unread"] = model.unread;
    }
    return json;
}

void WriteNetworks(const Model& model, Json& json) {
    for (const Network& network : model.networks) {
        Json item = {{"name", ToUtf8(network.name)}};
        if (network.state != NetworkState::Up) {
            item["state"] = StateName(network.state);
        }
        json["networks"].push_back(std::move(item));
    }
    for (const NetworkInterface& card : model.interfaces) {
        Json item = {
            {"name", ToUtf8(card.name)}, {"node", NodeText(*card.node)}, {"network", ToUtf8(card.network->name)}};
        if (!card.address.empty()) {
            item["address"] = ToUtf8(card.address);
        }
        if (card.state != InterfaceState::Up) {
            item["state"] = StateName(card.state);
        }
        json["networkInterfaces"].push_back(std::move(item));
    }
}

} // namespace

std::string WriteModel(const Model& model) {
    Json json;
    json["cluster"] = ClusterJson(model);
    if (!model.settings.empty()) {
        json["settings"] = common::ParseJson(model.settings);
    }
    if (model.typesGiven) {
        json["resourceTypes"] = Json::array();
        for (const ResourceType& type : model.types) {
            Json item = {{"name", ToUtf8(type.name)}, {"class", type.classCode}, {"subclass", type.subclass}};
            for (const Node* node : type.hosts) {
                item["nodes"].push_back(NodeText(*node));
            }
            json["resourceTypes"].push_back(std::move(item));
        }
    }
    json["nodes"] = Json::array();
    for (const Node& node : model.nodes) {
        Json item = {{"name", NodeText(node)}};
        if (node.status != Node::Status::Up) {
            item["state"] = StatusName(node.status);
        }
        if (node.isPaused) {
            item["paused"] = true;
        }
        if (!node.unread.empty()) {
            item["unread"] = node.unread;
        }
        json["nodes"].push_back(std::move(item));
    }
    WriteNetworks(model, json);
    json["groups"] = Json::array();
    for (const Group& group : model.groups) {
        Json item = {{"name", ToUtf8(group.name)},
                     {"owner", group.ownerAs.empty() ? NodeText(*group.owner) : ToUtf8(group.ownerAs)}};
        if (!group.preferredOwners.empty()) {
            item["preferredOwners"] = Json::array();
            for (const Node* node : group.preferredOwners) {
                item["preferredOwners"].push_back(NodeText(*node));
            }
        }
        if (!group.common.Items().empty()) {
            item["common"] = PropertiesJson(group.common);
        }
        if (!group.unread.empty()) {
            item["unread"] = group.unread;
        }
        if (!group.failovers.empty()) {
            item["failoversAt"] = TimesJson(group.failovers);
        }
        if (group.movingTo) {
            item["movingTo"] = NodeText(*group.movingTo);
        }
        if (group.failbackAt != 0) {
            item["failbackAt"] = group.failbackAt;
        }
        json["groups"].push_back(std::move(item));
    }
    json["resources"] = Json::array();
    for (const Resource& resource : model.resources) {
        json["resources"].push_back(ResourceJson(resource));
    }
    if (!model.faults.empty()) {
        json["faults"] = model.faults;
    }
    return common::DumpJson(json);
}

} // namespace clussim
