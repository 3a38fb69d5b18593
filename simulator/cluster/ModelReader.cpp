// Reading a model from its JSON text, and refusing one that cannot be.
#include "CoreGroup.h"
#include "Engine.h"
#include "Faults.h"
#include "ModelJson.h"
#include "ModelValues.h"

#include "common/Json.h"
#include "common/Text.h"

#include <algorithm>

namespace clussim {

using common::Json;
using common::JsonError;
using common::ObjectReader;
using common::TextItem;
using common::ToUtf16;
using common::ToUtf8;

namespace {

class ModelReader {
public:
    ModelReader(Model& model, const std::wstring& thisComputer) : m_model(model), m_thisComputer(thisComputer) {
    }

    void Read(const Json& json) {
        ObjectReader reader(json, "");
        for (const char* const name : {"complete", "warnings", "log", "simulated"}) {
            reader.Member(name); // of "clusctl snapshot --json": about the answer, not of the cluster
        }
        if (const Json* cluster = reader.Member("cluster")) {
            ReadCluster(*cluster);
        } else {
            Fail("cluster", "missing");
        }
        if (const Json* settings = reader.Member("settings")) {
            ReadSettings(*settings);
        }
        reader.Each("resourceTypes", [this](const Json& item, const std::string& place) { ReadType(item, place); });
        m_model.typesGiven = !m_model.types.empty();
        m_model.AddBuiltInTypes();
        reader.Each("nodes", [this](const Json& item, const std::string& place) { ReadNode(item, place); });
        if (m_model.nodes.empty()) {
            Fail("nodes", "at least one node is expected");
        }
        for (const Host& host : m_hosts) { // nodes stand behind the types
            host.type->hosts.push_back(NodeItem(host.node, host.place));
        }
        ReadNetworks(reader);
        reader.Each("groups", [this](const Json& item, const std::string& place) { ReadGroup(item, place); });
        std::vector<std::pair<Resource*, std::vector<std::pair<std::wstring, std::string>>>> dependencies;
        reader.Each("resources", [&](const Json& item, const std::string& place) {
            dependencies.emplace_back();
            dependencies.back().first = ReadResource(item, place, dependencies.back().second);
        });
        for (const auto& entry : dependencies) {
            for (const auto& [name, place] : entry.second) {
                Link(*entry.first, name, place);
            }
        }
        if (m_addsCoreGroup && LacksCoreGroup(m_model)) {
            AddCoreGroup(m_model);
        }
        reader.Each("faults", [this](const Json& item, const std::string& place) {
            const std::string fault = TextItem(item, place);
            try {
                ParseFault(fault);
            } catch (const common::FaultError&) {
                Fail(place, "a fault like call@object#n=code is expected");
            }
            m_model.faults.push_back(fault);
        });
        reader.Done();
    }

private:
    // A node that has a type installed.
    struct Host {
        ResourceType* type;
        std::wstring node;
        std::string place;
    };

    void ReadSettings(const Json& json) {
        if (!json.is_object()) {
            Fail("settings", "an object is expected");
        }
        for (const auto& member : json.items()) {
            if (!member.value().is_string() && !member.value().is_number_unsigned()) {
                Fail("settings." + member.key(), "a text or a number is expected");
            }
        }
        m_model.settings = json.dump();
    }

    std::wstring NodeName(const std::wstring& name) const {
        return name == L"." ? m_thisComputer : name;
    }

    Node* NodeItem(const std::wstring& name, const std::string& place) const {
        Node* node = m_model.FindNode(NodeName(name));
        if (!node) {
            Fail(place, "there is no node " + ToUtf8(name));
        }
        return node;
    }

    void ReadCluster(const Json& json) {
        ObjectReader reader(json, "cluster");
        m_model.name = Name(reader);
        m_model.domain = ToUtf16(reader.TextOr("domain", ""));
        m_model.running = reader.FlagOr("running", true);
        const std::string quorum = reader.TextOr("quorum", "shared");
        if (quorum != "shared" && quorum != "majority") {
            Fail("cluster.quorum", "\"shared\" or \"majority\" is expected");
        }
        m_model.quorum = quorum == "majority" ? Quorum::Majority : Quorum::Shared;
        const std::string witness = reader.TextOr("witness", "none");
        if (witness != "none" && witness != "share" && witness != "disk") {
            Fail("cluster.witness", "\"none\", \"share\" or \"disk\" is expected");
        }
        m_model.witness = witness == "share" ? Witness::Share : witness == "disk" ? Witness::Disk : Witness::None;
        m_model.clock = Time(reader, "clock");
        const std::string coreGroup = reader.TextOr("coreGroup", "standard");
        if (coreGroup != "standard" && coreGroup != "none") {
            Fail("cluster.coreGroup", "\"standard\" or \"none\" is expected");
        }
        m_addsCoreGroup = coreGroup == "standard";
        if (const Json* behaviour = reader.Member("behaviour")) {
            ObjectReader switches(*behaviour, "cluster.behaviour");
            const std::string mask = switches.TextOr("enumMaskZero", "error");
            if (mask != "error" && mask != "empty") {
                Fail("cluster.behaviour.enumMaskZero", "\"error\" or \"empty\" is expected");
            }
            m_model.behaviour.emptyMaskIsEmptyList = mask == "empty";
            m_model.behaviour.deleteOnline = DwordOr(switches, "deleteOnline", m_model.behaviour.deleteOnline);
            m_model.behaviour.offlineFailed = DwordOr(switches, "offlineFailed", m_model.behaviour.offlineFailed);
            m_model.behaviour.protocol = static_cast<int>(DwordOr(switches, "protocol", 2003));
            if (m_model.behaviour.protocol != 2003 && m_model.behaviour.protocol != 2008) {
                Fail("cluster.behaviour.protocol", "2003 or 2008 is expected");
            }
            const std::string downOwners = switches.TextOr("downOwners", "refused");
            if (downOwners != "refused" && downOwners != "accepted") {
                Fail("cluster.behaviour.downOwners", "\"refused\" or \"accepted\" is expected");
            }
            m_model.behaviour.downNodesOwnGroups = downOwners == "accepted";
            const std::string failures = switches.TextOr("failures", "left");
            if (failures != "left" && failures != "acted-on") {
                Fail("cluster.behaviour.failures", "\"left\" or \"acted-on\" is expected");
            }
            m_model.behaviour.actsOnFailures = failures == "acted-on";
            const std::string required = switches.TextOr("requiredDependencies", "enforced");
            if (required != "ignored" && required != "enforced") {
                Fail("cluster.behaviour.requiredDependencies", "\"ignored\" or \"enforced\" is expected");
            }
            m_model.behaviour.needsRequired = required == "enforced";
            m_model.behaviour.lost = DwordOr(switches, "lost", m_model.behaviour.lost);
            if (m_model.behaviour.lost == 0) {
                Fail("cluster.behaviour.lost", "a code other than 0 is expected");
            }
            const std::string handles = switches.TextOr("handles", "reconnect");
            if (handles != "reconnect" && handles != "go-stale") {
                Fail("cluster.behaviour.handles", "\"reconnect\" or \"go-stale\" is expected");
            }
            m_model.behaviour.handlesGoStale = handles == "go-stale";
            const std::string exhausted = switches.TextOr("failoversUsedUp", "group-offline");
            if (exhausted != "group-offline" && exhausted != "resource-failed") {
                Fail("cluster.behaviour.failoversUsedUp", "\"group-offline\" or \"resource-failed\" is expected");
            }
            m_model.behaviour.leavesGroupOffline = exhausted == "group-offline";
            switches.Done();
        }
        CheckWitness();
        ReadUnread(reader, {"networks", "quorum", "version"}, m_model.unread);
        reader.Done();
    }

    void CheckWitness() const {
        if (m_model.witness != Witness::None && m_model.quorum != Quorum::Majority) {
            Fail("cluster.witness", "there is one only where the majority goes on");
        }
        if (m_model.witness == Witness::Disk && m_model.behaviour.protocol < 2008) {
            Fail("cluster.witness", "a disk is one since 2008 only");
        }
    }

    void ReadType(const Json& json, const std::string& place) {
        ObjectReader reader(json, place);
        ResourceType type;
        type.name = Name(reader);
        type.classCode = DwordOr(reader, "class", 0);
        type.subclass = DwordOr(reader, "subclass", 0);
        std::vector<Host> hosts;
        reader.Each("nodes", [&](const Json& item, const std::string& itemPlace) {
            hosts.push_back({nullptr, WideItem(item, itemPlace), itemPlace});
        });
        reader.Done();
        if (!m_model.AddType(type)) {
            Fail(place + ".name", "the type stands twice");
        }
        for (Host& host : hosts) {
            host.type = &m_model.types.back();
            m_hosts.push_back(host);
        }
    }

    void ReadNode(const Json& json, const std::string& place) {
        ObjectReader reader(json, place);
        Node node;
        const std::wstring name = Name(reader);
        node.name = NodeName(name);
        node.isThisComputer = name == L".";
        if (!StatusByName(reader.TextOr("state", "up"), node.status)) {
            Fail(place + ".state", "up, down, paused or joining is expected");
        }
        node.isPaused = reader.FlagOr("paused", false);
        if (node.isPaused && !IsAway(node)) {
            Fail(place + ".paused", "so is a node only that is down or joining; else it is its state");
        }
        ReadUnread(reader, {"open", "state"}, node.unread);
        reader.Done();
        if (!m_model.AddNode(node)) {
            Fail(place + ".name", "the node stands twice");
        }
    }

    void ReadNetworks(ObjectReader& reader) {
        reader.Each("networks", [this](const Json& item, const std::string& place) {
            ObjectReader network(item, place);
            m_model.networks.push_back({Name(network), NetworkState::Up});
            if (!StateByName(network.TextOr("state", "up"), m_model.networks.back().state)) {
                Fail(place + ".state", "up, down, partitioned or unavailable is expected");
            }
            network.Done();
            if (m_model.FindNetwork(m_model.networks.back().name) != &m_model.networks.back()) {
                Fail(place + ".name", "the network stands twice");
            }
        });
        reader.Each("networkInterfaces", [this](const Json& item, const std::string& place) {
            ObjectReader card(item, place);
            NetworkInterface result;
            result.name = Name(card);
            result.node = NodeItem(WideText(card, "node"), place + ".node");
            const std::wstring network = WideText(card, "network");
            result.network = m_model.FindNetwork(network);
            if (!result.network) {
                Fail(place + ".network", "there is no network " + ToUtf8(network));
            }
            result.address = ToUtf16(card.TextOr("address", ""));
            if (!StateByName(card.TextOr("state", "up"), result.state)) {
                Fail(place + ".state", "up, failed, unreachable or unavailable is expected");
            }
            card.Done();
            if (m_model.FindInterface(result.name)) {
                Fail(place + ".name", "the interface stands twice");
            }
            m_model.interfaces.push_back(result);
        });
    }

    void ReadGroup(const Json& json, const std::string& place) {
        ObjectReader reader(json, place);
        Group group;
        group.name = Name(reader);
        const std::wstring owner = WideText(reader, "owner");
        group.owner = NodeItem(owner, place + ".owner");
        group.ownerAs = owner == L"." || owner == group.owner->name ? std::wstring() : owner;
        if (IsAway(*group.owner) && !m_model.behaviour.downNodesOwnGroups && m_model.running && IsAnyNodeUp()) {
            Fail(place + ".owner", "the node " + ToUtf8(group.owner->name) + " is " + StatusName(group.owner->status) +
                                       " and owns no group");
        }
        reader.Each("preferredOwners", [&](const Json& item, const std::string& itemPlace) {
            group.preferredOwners.push_back(NodeItem(WideItem(item, itemPlace), itemPlace));
        });
        ReadProperties(reader.Member("common"), place + ".common", group.common);
        ReadUnread(reader, {"common", "open", "owner", "preferredOwners"}, group.unread);
        group.failovers = Times(reader, "failoversAt");
        const std::string movingTo = reader.TextOr("movingTo", "");
        if (!movingTo.empty()) {
            group.movingTo = NodeItem(ToUtf16(movingTo), place + ".movingTo");
        }
        group.failbackAt = Time(reader, "failbackAt");
        reader.Done();
        if (!m_model.AddGroup(group)) {
            Fail(place + ".name", "the group stands twice");
        }
        if (group.failbackAt != 0) {
            Engine(m_model, 0).Expect(m_model.groups.back());
        }
    }

    bool IsAnyNodeUp() const {
        return std::any_of(m_model.nodes.begin(), m_model.nodes.end(), [](const Node& node) { return !IsAway(node); });
    }

    static bool IsAway(const Node& node) {
        return node.status == Node::Status::Down || node.status == Node::Status::Joining;
    }

    Resource* ReadResource(const Json& json, const std::string& place,
                           std::vector<std::pair<std::wstring, std::string>>& dependencies) {
        ObjectReader reader(json, place);
        const std::wstring name = Name(reader);
        const std::wstring typeName = WideText(reader, "type");
        const ResourceType* type = m_model.FindType(typeName);
        if (!type) {
            Fail(place + ".type", "there is no resource type " + ToUtf8(typeName));
        }
        const std::wstring groupName = WideText(reader, "group");
        Group* group = m_model.FindGroup(groupName);
        if (!group) {
            Fail(place + ".group", "there is no group " + ToUtf8(groupName));
        }
        Resource* resource = m_model.AddResource(name, Name(reader, "id"), type, group);
        if (!resource) {
            Fail(place + ".name", "the name or the id is taken by another resource");
        }
        ReadState(reader, place, *resource);
        reader.Each("dependsOn", [&](const Json& item, const std::string& itemPlace) {
            dependencies.emplace_back(WideItem(item, itemPlace), itemPlace);
        });
        resource->ownersGiven = reader.Member("possibleOwners") != nullptr;
        reader.Each("possibleOwners", [&](const Json& item, const std::string& itemPlace) {
            Node* node = NodeItem(WideItem(item, itemPlace), itemPlace);
            if (std::count(resource->possibleOwners.begin(), resource->possibleOwners.end(), node)) {
                Fail(itemPlace, "the node stands twice");
            }
            resource->possibleOwners.push_back(node);
        });
        if (!resource->ownersGiven) {
            for (Node& node : m_model.nodes) {
                resource->possibleOwners.push_back(&node);
            }
        } else if (resource->possibleOwners.empty()) {
            Fail(place + ".possibleOwners", "at least one node is expected");
        }
        ReadProperties(reader.Member("common"), place + ".common", resource->common);
        ReadPersistentState(*resource, place);
        ReadProperties(reader.Member("private"), place + ".private", resource->privateProperties);
        if (const Json* disk = reader.Member("disk")) {
            ReadDisk(*disk, place + ".disk", *resource);
        }
        ReadUnread(reader,
                   {"class", "common", "dependsOn", "disk", "flags", "id", "open", "possibleOwners", "private", "state",
                    "type"},
                   resource->unread);
        reader.Done();
        return resource;
    }

    // What a resource is without it is what it was asked to be.
    static void ReadPersistentState(Resource& resource, const std::string& place) {
        resource.isWanted = IsWantedByState(resource.state);
        const PropertyValue* const given = resource.common.Find(L"PersistentState");
        if (!given) {
            return;
        }
        if (given->kind != PropertyValue::Dword || given->number > 1) {
            Fail(place + ".common.PersistentState", "0 or 1 is expected");
        }
        resource.isWanted = given->number == 1;
        resource.persistentGiven = true;
        resource.common.Remove(L"PersistentState"); // kept as a flag from here on
    }

    void ReadState(ObjectReader& reader, const std::string& place, Resource& resource) {
        const std::string state = reader.TextOr("state", "Offline");
        State known = StateOffline;
        if (!StateByName(state, known)) {
            Fail(place + ".state", "there is no state " + state);
        }
        m_model.SetState(resource, known);
        resource.dueAt = Time(reader, "dueAt");
        resource.actAt = Time(reader, "actAt");
        resource.restarts = Times(reader, "restartsAt");
        resource.onlineMs = DwordOr(reader, "onlineMs", 0);
        resource.offlineMs = DwordOr(reader, "offlineMs", 0);
        resource.failsOnline = reader.FlagOr("failsOnline", false);
        resource.staysPending = reader.FlagOr("staysPending", false);
        resource.isCore = reader.FlagOr("core", false);
        resource.isQuorum = reader.FlagOr("quorum", false);
        if (resource.state == StateOnlinePending || resource.state == StateOfflinePending || resource.actAt != 0) {
            Engine(m_model, 0).Expect(resource);
        }
    }

    void ReadDisk(const Json& json, const std::string& place, Resource& resource) {
        ObjectReader reader(json, place);
        auto disk = std::make_unique<Disk>();
        if (reader.Member("signature") && reader.Member("guid")) {
            Fail(place, "a disk has a signature or a guid");
        }
        disk->signature = DwordOr(reader, "signature", 0);
        disk->guid = ToUtf16(reader.TextOr("guid", ""));
        disk->number = DwordOr(reader, "number", 0);
        disk->size = reader.NumberOr("size", 0, UINT64_MAX);
        reader.Each("partitions", [&](const Json& item, const std::string& itemPlace) {
            ObjectReader partition(item, itemPlace);
            disk->partitions.push_back({WideText(partition, "device"), ToUtf16(partition.TextOr("label", ""))});
            partition.Done();
            if (disk->partitions.back().device.size() > 259 || disk->partitions.back().label.size() > 259) {
                Fail(itemPlace, "at most 259 characters fit");
            }
        });
        reader.Done();
        resource.disk = std::move(disk);
    }

    void Link(Resource& resource, const std::wstring& name, const std::string& place) {
        Resource* provider = m_model.ResourceNamed(name);
        if (!provider) {
            Fail(place, "there is no resource " + ToUtf8(name));
        }
        if (provider->group != resource.group) {
            Fail(place, ToUtf8(name) + " is in another group");
        }
        if (std::count(resource.dependsOn.begin(), resource.dependsOn.end(), provider)) {
            Fail(place, "the dependency stands twice");
        }
        if (provider == &resource || Model::DependsOn(*provider, resource)) {
            Fail(place, "the dependency closes a cycle");
        }
        Model::Link(resource, *provider);
    }

    Model& m_model;
    std::wstring m_thisComputer;
    bool m_addsCoreGroup = true;
    std::vector<Host> m_hosts;
};

} // namespace

std::unique_ptr<Model> ReadModel(const std::string& json, const std::wstring& thisComputer) {
    auto model = std::make_unique<Model>();
    try {
        ModelReader(*model, thisComputer).Read(common::ParseJson(json));
    } catch (const JsonError& error) {
        throw ModelError(error.what());
    }
    return model;
}

} // namespace clussim
