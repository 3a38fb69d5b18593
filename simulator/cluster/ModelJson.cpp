#include "ModelJson.h"

#include "Faults.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace clussim {

namespace {

typedef nlohmann::ordered_json Json;

const std::pair<const char*, State> StateNames[] = {
    {"Unknown", StateUnknown},
    {"Inherited", StateInherited},
    {"Initializing", StateInitializing},
    {"Online", StateOnline},
    {"Offline", StateOffline},
    {"Failed", StateFailed},
    {"Pending", StatePending},
    {"OnlinePending", StateOnlinePending},
    {"OfflinePending", StateOfflinePending},
};

const std::pair<const char*, Node::Status> NodeStates[] = {
    {"up", Node::Status::Up},
    {"down", Node::Status::Down},
    {"paused", Node::Status::Paused},
};

[[noreturn]] void Fail(const std::string& place, const std::string& what) {
    throw ModelError(place + ": " + what);
}

// Reads the members of one JSON object; members nobody asked for are an error when it is done.
class ObjectReader {
public:
    ObjectReader(const Json& json, const std::string& place) : m_json(json), m_place(place) {
        if (!json.is_object()) {
            Fail(place, "an object is expected");
        }
    }

    std::string Place(const std::string& member) const {
        return m_place.empty() ? member : m_place + "." + member;
    }

    const Json* Member(const char* name) {
        m_known.insert(name);
        const auto found = m_json.find(name);
        return found == m_json.end() ? nullptr : &*found;
    }

    std::wstring Text(const char* name) {
        const Json* value = Member(name);
        if (!value || !value->is_string()) {
            Fail(Place(name), "a text is expected");
        }
        return Wide(value->get<std::string>());
    }

    std::wstring TextOr(const char* name, const wchar_t* fallback) {
        return Member(name) ? Text(name) : std::wstring(fallback);
    }

    std::int64_t NumberOr(const char* name, std::int64_t fallback, std::int64_t most) {
        const Json* value = Member(name);
        if (!value) {
            return fallback;
        }
        if (!value->is_number_integer() || (!value->is_number_unsigned() && value->get<std::int64_t>() < 0) ||
            value->get<std::uint64_t>() > static_cast<std::uint64_t>(most)) {
            Fail(Place(name), "a whole number from 0 to " + std::to_string(most) + " is expected");
        }
        return value->get<std::int64_t>();
    }

    std::uint32_t DwordOr(const char* name, std::uint32_t fallback) {
        return static_cast<std::uint32_t>(NumberOr(name, fallback, 0xFFFFFFFF));
    }

    bool FlagOr(const char* name, bool fallback) {
        const Json* value = Member(name);
        if (value && !value->is_boolean()) {
            Fail(Place(name), "true or false is expected");
        }
        return value ? value->get<bool>() : fallback;
    }

    // Calls `read(item, place)` for each item of an array member, which may be absent.
    template <typename Read> void Each(const char* name, Read read) {
        const Json* value = Member(name);
        if (!value) {
            return;
        }
        if (!value->is_array()) {
            Fail(Place(name), "a list is expected");
        }
        for (std::size_t i = 0; i < value->size(); ++i) {
            read((*value)[i], Place(name) + "[" + std::to_string(i) + "]");
        }
    }

    void Done() const {
        for (const auto& member : m_json.items()) {
            if (!m_known.count(member.key())) {
                Fail(Place(member.key()), "unknown member");
            }
        }
    }

private:
    const Json& m_json;
    std::string m_place;
    std::set<std::string> m_known;
};

std::wstring TextItem(const Json& item, const std::string& place) {
    if (!item.is_string()) {
        Fail(place, "a text is expected");
    }
    return Wide(item.get<std::string>());
}

int HexDigit(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

PropertyValue ReadProperty(const Json& json, const std::string& place) {
    PropertyValue value;
    if (json.is_string()) {
        value.text = Wide(json.get<std::string>());
    } else if (json.is_number_unsigned() && json.get<std::uint64_t>() <= 0xFFFFFFFF) {
        value.kind = PropertyValue::Dword;
        value.number = json.get<std::uint32_t>();
    } else if (json.is_array()) {
        value.kind = PropertyValue::MultiSz;
        for (const Json& item : json) {
            value.texts.push_back(TextItem(item, place));
        }
    } else if (json.is_object() && json.size() == 1 && json.count("expandSz")) {
        value.kind = PropertyValue::ExpandSz;
        value.text = TextItem(json["expandSz"], place + ".expandSz");
    } else if (json.is_object() && json.size() == 1 && json.count("binary")) {
        value.kind = PropertyValue::Binary;
        const std::string hex = Utf8(TextItem(json["binary"], place + ".binary"));
        for (std::size_t i = 0; i < hex.size(); i += 2) {
            const int high = HexDigit(hex[i]);
            const int low = i + 1 < hex.size() ? HexDigit(hex[i + 1]) : -1;
            if (high < 0 || low < 0) {
                Fail(place + ".binary", "pairs of hexadecimal digits are expected");
            }
            value.bytes.push_back(static_cast<unsigned char>(high * 16 + low));
        }
    } else {
        Fail(place,
             "a text, a number of 32 bits, a list of texts, {\"expandSz\": text} or {\"binary\": hex} is expected");
    }
    return value;
}

void ReadProperties(const Json* json, const std::string& place, PropertySet& properties) {
    if (!json) {
        return;
    }
    if (!json->is_object()) {
        Fail(place, "an object is expected");
    }
    for (const auto& member : json->items()) {
        const std::wstring name = Wide(member.key());
        if (properties.Find(name)) {
            Fail(place + "." + member.key(), "the property stands twice");
        }
        properties.Set(name, ReadProperty(member.value(), place + "." + member.key()));
    }
}

class ModelReader {
public:
    ModelReader(Model& model, const std::wstring& thisComputer) : m_model(model), m_thisComputer(thisComputer) {
    }

    void Read(const Json& json) {
        ObjectReader reader(json, "");
        if (const Json* cluster = reader.Member("cluster")) {
            ReadCluster(*cluster);
        } else {
            Fail("cluster", "missing");
        }
        reader.Each("resourceTypes", [this](const Json& item, const std::string& place) { ReadType(item, place); });
        m_model.typesGiven = !m_model.types.empty();
        m_model.AddBuiltInTypes();
        reader.Each("nodes", [this](const Json& item, const std::string& place) { ReadNode(item, place); });
        if (m_model.nodes.empty()) {
            Fail("nodes", "at least one node is expected");
        }
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
        reader.Each("faults", [this](const Json& item, const std::string& place) {
            const std::string fault = Utf8(TextItem(item, place));
            Fault parsed;
            if (!ParseFault(fault, parsed)) {
                Fail(place, "a fault like call@object#n=code is expected");
            }
            m_model.faults.push_back(fault);
        });
        reader.Done();
    }

private:
    std::wstring NodeName(const std::wstring& name) const {
        return name == L"." ? m_thisComputer : name;
    }

    Node* NodeItem(const std::wstring& name, const std::string& place) const {
        Node* node = m_model.FindNode(NodeName(name));
        if (!node) {
            Fail(place, "there is no node " + Utf8(name));
        }
        return node;
    }

    void ReadCluster(const Json& json) {
        ObjectReader reader(json, "cluster");
        m_model.name = reader.Text("name");
        m_model.running = reader.FlagOr("running", true);
        if (const Json* behaviour = reader.Member("behaviour")) {
            ObjectReader switches(*behaviour, "cluster.behaviour");
            const std::wstring mask = switches.TextOr("enumMaskZero", L"error");
            if (mask != L"error" && mask != L"empty") {
                Fail("cluster.behaviour.enumMaskZero", "\"error\" or \"empty\" is expected");
            }
            m_model.behaviour.emptyMaskIsEmptyList = mask == L"empty";
            m_model.behaviour.deleteOnline = switches.DwordOr("deleteOnline", m_model.behaviour.deleteOnline);
            m_model.behaviour.offlineFailed = switches.DwordOr("offlineFailed", m_model.behaviour.offlineFailed);
            m_model.behaviour.protocol = static_cast<int>(switches.DwordOr("protocol", 2003));
            switches.Done();
        }
        reader.Done();
    }

    void ReadType(const Json& json, const std::string& place) {
        ObjectReader reader(json, place);
        ResourceType type;
        type.name = reader.Text("name");
        type.classCode = reader.DwordOr("class", 0);
        type.subclass = reader.DwordOr("subclass", 0);
        reader.Done();
        if (!m_model.AddType(type)) {
            Fail(place + ".name", "the type stands twice");
        }
    }

    void ReadNode(const Json& json, const std::string& place) {
        ObjectReader reader(json, place);
        Node node;
        const std::wstring name = reader.Text("name");
        node.name = NodeName(name);
        node.isThisComputer = name == L".";
        const std::string state = Utf8(reader.TextOr("state", L"up"));
        const auto found = std::find_if(std::begin(NodeStates), std::end(NodeStates),
                                        [&](const auto& entry) { return state == entry.first; });
        if (found == std::end(NodeStates)) {
            Fail(place + ".state", "up, down or paused is expected");
        }
        node.status = found->second;
        reader.Done();
        if (!m_model.AddNode(node)) {
            Fail(place + ".name", "the node stands twice");
        }
    }

    void ReadGroup(const Json& json, const std::string& place) {
        ObjectReader reader(json, place);
        Group group;
        group.name = reader.Text("name");
        group.owner = NodeItem(reader.Text("owner"), place + ".owner");
        reader.Each("preferredOwners", [&](const Json& item, const std::string& itemPlace) {
            group.preferredOwners.push_back(NodeItem(TextItem(item, itemPlace), itemPlace));
        });
        reader.Done();
        if (!m_model.AddGroup(group)) {
            Fail(place + ".name", "the group stands twice");
        }
    }

    Resource* ReadResource(const Json& json, const std::string& place,
                           std::vector<std::pair<std::wstring, std::string>>& dependencies) {
        ObjectReader reader(json, place);
        const std::wstring name = reader.Text("name");
        const std::wstring typeName = reader.Text("type");
        const ResourceType* type = m_model.FindType(typeName);
        if (!type) {
            Fail(place + ".type", "there is no resource type " + Utf8(typeName));
        }
        const std::wstring groupName = reader.Text("group");
        Group* group = m_model.FindGroup(groupName);
        if (!group) {
            Fail(place + ".group", "there is no group " + Utf8(groupName));
        }
        Resource* resource = m_model.AddResource(name, reader.Text("id"), type, group);
        if (!resource) {
            Fail(place + ".name", "the name or the id is taken by another resource");
        }
        ReadState(reader, place, *resource);
        reader.Each("dependsOn", [&](const Json& item, const std::string& itemPlace) {
            dependencies.emplace_back(TextItem(item, itemPlace), itemPlace);
        });
        resource->ownersGiven = reader.Member("possibleOwners") != nullptr;
        reader.Each("possibleOwners", [&](const Json& item, const std::string& itemPlace) {
            Node* node = NodeItem(TextItem(item, itemPlace), itemPlace);
            if (std::count(resource->possibleOwners.begin(), resource->possibleOwners.end(), node)) {
                Fail(itemPlace, "the node stands twice");
            }
            resource->possibleOwners.push_back(node);
        });
        if (!resource->ownersGiven) {
            for (Node& node : m_model.nodes) {
                resource->possibleOwners.push_back(&node);
            }
        }
        ReadProperties(reader.Member("common"), place + ".common", resource->common);
        ReadProperties(reader.Member("private"), place + ".private", resource->privateProperties);
        if (const Json* disk = reader.Member("disk")) {
            ReadDisk(*disk, place + ".disk", *resource);
        }
        reader.Done();
        return resource;
    }

    void ReadState(ObjectReader& reader, const std::string& place, Resource& resource) {
        const std::string state = Utf8(reader.TextOr("state", L"Offline"));
        const auto found = std::find_if(std::begin(StateNames), std::end(StateNames),
                                        [&](const auto& entry) { return state == entry.first; });
        if (found == std::end(StateNames)) {
            Fail(place + ".state", "there is no state " + state);
        }
        resource.state = found->second;
        resource.dueAt = reader.NumberOr("dueAt", 0, INT64_MAX);
        resource.onlineMs = reader.DwordOr("onlineMs", 0);
        resource.offlineMs = reader.DwordOr("offlineMs", 0);
        resource.failsOnline = reader.FlagOr("failsOnline", false);
        resource.staysPending = reader.FlagOr("staysPending", false);
        if (resource.state == StateOnlinePending || resource.state == StateOfflinePending) {
            m_model.TrackPending(resource);
        }
    }

    void ReadDisk(const Json& json, const std::string& place, Resource& resource) {
        ObjectReader reader(json, place);
        auto disk = std::make_unique<Disk>();
        disk->signature = reader.DwordOr("signature", 0);
        disk->guid = reader.TextOr("guid", L"");
        disk->number = reader.DwordOr("number", 0);
        reader.Each("partitions", [&](const Json& item, const std::string& itemPlace) {
            ObjectReader partition(item, itemPlace);
            disk->partitions.push_back({partition.Text("device"), partition.TextOr("label", L"")});
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
            Fail(place, "there is no resource " + Utf8(name));
        }
        if (provider->group != resource.group) {
            Fail(place, Utf8(name) + " is in another group");
        }
        if (std::count(resource.dependsOn.begin(), resource.dependsOn.end(), provider)) {
            Fail(place, "the dependency stands twice");
        }
        if (provider == &resource || Model::DependsOn(*provider, resource)) {
            Fail(place, "the dependency closes a cycle");
        }
        resource.dependsOn.push_back(provider);
    }

    Model& m_model;
    std::wstring m_thisComputer;
};

std::string NodeText(const Node& node) {
    return node.isThisComputer ? "." : Utf8(node.name);
}

Json PropertiesJson(const PropertySet& properties) {
    Json json = Json::object();
    for (const PropertySet::Item& item : properties.Items()) {
        Json value;
        switch (item.value.kind) {
        case PropertyValue::Sz:
            value = Utf8(item.value.text);
            break;
        case PropertyValue::Dword:
            value = item.value.number;
            break;
        case PropertyValue::MultiSz:
            value = Json::array();
            for (const std::wstring& text : item.value.texts) {
                value.push_back(Utf8(text));
            }
            break;
        case PropertyValue::ExpandSz:
            value = {{"expandSz", Utf8(item.value.text)}};
            break;
        case PropertyValue::Binary: {
            std::string hex;
            for (const unsigned char byte : item.value.bytes) {
                hex += "0123456789abcdef"[byte >> 4];
                hex += "0123456789abcdef"[byte & 15];
            }
            value = {{"binary", hex}};
            break;
        }
        }
        json[Utf8(item.name)] = value;
    }
    return json;
}

Json ResourceJson(const Resource& resource) {
    Json json;
    json["name"] = Utf8(resource.name);
    json["type"] = Utf8(resource.type->name);
    json["id"] = Utf8(resource.id);
    json["group"] = Utf8(resource.group->name);
    for (const auto& entry : StateNames) {
        if (entry.second == resource.state) {
            json["state"] = entry.first;
        }
    }
    if (resource.dueAt != 0) {
        json["dueAt"] = resource.dueAt;
    }
    json["dependsOn"] = Json::array();
    for (const Resource* provider : resource.dependsOn) {
        json["dependsOn"].push_back(Utf8(provider->name));
    }
    if (resource.ownersGiven) {
        json["possibleOwners"] = Json::array();
        for (const Node* node : resource.possibleOwners) {
            json["possibleOwners"].push_back(NodeText(*node));
        }
    }
    if (!resource.common.Items().empty()) {
        json["common"] = PropertiesJson(resource.common);
    }
    if (!resource.privateProperties.Items().empty()) {
        json["private"] = PropertiesJson(resource.privateProperties);
    }
    if (resource.disk) {
        Json disk;
        if (resource.disk->guid.empty()) {
            disk["signature"] = resource.disk->signature;
        } else {
            disk["guid"] = Utf8(resource.disk->guid);
        }
        disk["number"] = resource.disk->number;
        disk["partitions"] = Json::array();
        for (const Partition& partition : resource.disk->partitions) {
            Json item = {{"device", Utf8(partition.device)}};
            if (!partition.label.empty()) {
                item["label"] = Utf8(partition.label);
            }
            disk["partitions"].push_back(item);
        }
        json["disk"] = disk;
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
    return json;
}

Json ClusterJson(const Model& model) {
    Json json = {{"name", Utf8(model.name)}};
    if (!model.running) {
        json["running"] = false;
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
    if (!behaviour.empty()) {
        json["behaviour"] = behaviour;
    }
    return json;
}

} // namespace

std::unique_ptr<Model> ReadModel(const std::string& json, const std::wstring& thisComputer) {
    auto model = std::make_unique<Model>();
    try {
        ModelReader(*model, thisComputer).Read(Json::parse(json));
    } catch (const Json::exception& error) {
        throw ModelError(error.what()); // names line and column
    }
    return model;
}

std::string WriteModel(const Model& model) {
    Json json;
    json["cluster"] = ClusterJson(model);
    if (model.typesGiven) {
        json["resourceTypes"] = Json::array();
        for (const ResourceType& type : model.types) {
            json["resourceTypes"].push_back(
                {{"name", Utf8(type.name)}, {"class", type.classCode}, {"subclass", type.subclass}});
        }
    }
    json["nodes"] = Json::array();
    for (const Node& node : model.nodes) {
        Json item = {{"name", NodeText(node)}};
        for (const auto& entry : NodeStates) {
            if (entry.second == node.status && node.status != Node::Status::Up) {
                item["state"] = entry.first;
            }
        }
        json["nodes"].push_back(item);
    }
    json["groups"] = Json::array();
    for (const Group& group : model.groups) {
        Json item = {{"name", Utf8(group.name)}, {"owner", NodeText(*group.owner)}};
        if (!group.preferredOwners.empty()) {
            item["preferredOwners"] = Json::array();
            for (const Node* node : group.preferredOwners) {
                item["preferredOwners"].push_back(NodeText(*node));
            }
        }
        json["groups"].push_back(item);
    }
    json["resources"] = Json::array();
    for (const Resource& resource : model.resources) {
        json["resources"].push_back(ResourceJson(resource));
    }
    if (!model.faults.empty()) {
        json["faults"] = model.faults;
    }
    return json.dump(2) + "\n";
}

} // namespace clussim
