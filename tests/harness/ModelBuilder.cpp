#include "ModelBuilder.h"

#include <cstdio>
#include <stdexcept>

namespace harness {

namespace {

std::string Quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(c));
            result += escape;
        } else {
            result += c;
        }
    }
    return result + "\"";
}

template <typename Items, typename Write> std::string Joined(const Items& items, Write write) {
    std::string result;
    for (const auto& item : items) {
        result += (result.empty() ? "" : ", ") + write(item);
    }
    return result;
}

std::string Member(const std::pair<std::string, std::string>& member) {
    return Quoted(member.first) + ": " + member.second;
}

} // namespace

ModelBuilder& ModelBuilder::Node(const std::string& name) {
    m_nodes.push_back(name);
    return *this;
}

ModelBuilder& ModelBuilder::Group(const std::string& name, const std::string& ownerNode) {
    m_groups.emplace_back(name, ownerNode);
    return *this;
}

ModelBuilder& ModelBuilder::Resource(const std::string& name, const std::string& type) {
    ResourceModel resource;
    resource.name = name;
    resource.type = type;
    resource.group = m_groups.at(m_groups.size() - 1).first;
    char id[64];
    std::snprintf(id, sizeof(id), "00000000-0000-0000-0000-%012u", static_cast<unsigned>(m_resources.size() + 1));
    resource.id = id;
    m_resources.push_back(resource);
    return *this;
}

ModelBuilder& ModelBuilder::Disk(const std::string& name, const std::vector<std::string>& devices) {
    Resource(name, "Physical Disk");
    return Raw("disk",
               "{\"signature\": 1, \"number\": 1, \"partitions\": [" + Joined(devices, [](const std::string& device) {
                   return "{\"device\": " + Quoted(device) + "}";
               }) + "]}");
}

ModelBuilder& ModelBuilder::IpAddress(const std::string& name, const std::string& address) {
    return Resource(name, "IP Address").Private("Address", address);
}

ModelBuilder& ModelBuilder::NetworkName(const std::string& name, const std::string& networkName) {
    return Resource(name, "Network Name").Private("Name", networkName);
}

ModelBuilder& ModelBuilder::Id(const std::string& id) {
    Last().id = id;
    return *this;
}

ModelBuilder& ModelBuilder::State(const std::string& state) {
    Last().state = state;
    return *this;
}

ModelBuilder& ModelBuilder::DependsOn(const std::string& resource) {
    Last().dependsOn.push_back(resource);
    return *this;
}

ModelBuilder& ModelBuilder::PossibleOwner(const std::string& node) {
    Last().possibleOwners.push_back(node);
    return *this;
}

ModelBuilder& ModelBuilder::Private(const std::string& name, const std::string& text) {
    Last().privateProperties.emplace_back(name, Quoted(text));
    return *this;
}

ModelBuilder& ModelBuilder::Private(const std::string& name, unsigned number) {
    Last().privateProperties.emplace_back(name, std::to_string(number));
    return *this;
}

ModelBuilder& ModelBuilder::Raw(const std::string& member, const std::string& json) {
    Last().raw.emplace_back(member, json);
    return *this;
}

ModelBuilder& ModelBuilder::ClusterRaw(const std::string& member, const std::string& json) {
    m_raw.emplace_back(member, json);
    return *this;
}

ModelBuilder::ResourceModel& ModelBuilder::Last() {
    if (m_resources.empty()) {
        throw std::logic_error("no resource yet");
    }
    return m_resources.back();
}

std::string ModelBuilder::Json() const {
    // Of a test's cluster there is what the test needs, be it without what its type requires.
    std::string json = "{\n  \"cluster\": {\"name\": " + Quoted(m_clusterName) +
                       R"(, "coreGroup": "none", "behaviour": {"requiredDependencies": "ignored"})";
    for (const auto& member : m_raw) {
        json += ", " + Member(member);
    }
    json += "},\n  \"nodes\": [" +
            Joined(m_nodes, [](const std::string& node) { return "{\"name\": " + Quoted(node) + "}"; });
    json += "],\n  \"groups\": [" + Joined(m_groups, [](const auto& group) {
                return "{\"name\": " + Quoted(group.first) + ", \"owner\": " + Quoted(group.second) + "}";
            });
    json += "],\n  \"resources\": [" + Joined(m_resources, [](const ResourceModel& resource) {
                std::string text = "\n    {\"name\": " + Quoted(resource.name) +
                                   ", \"type\": " + Quoted(resource.type) + ", \"id\": " + Quoted(resource.id) +
                                   ", \"group\": " + Quoted(resource.group) + ", \"state\": " + Quoted(resource.state);
                text += ", \"dependsOn\": [" + Joined(resource.dependsOn, Quoted) + "]";
                if (!resource.possibleOwners.empty()) {
                    text += ", \"possibleOwners\": [" + Joined(resource.possibleOwners, Quoted) + "]";
                }
                text += ", \"private\": {" + Joined(resource.privateProperties, Member) + "}";
                for (const auto& member : resource.raw) {
                    text += ", " + Member(member);
                }
                return text + "}";
            });
    return json + "\n  ]\n}\n";
}

} // namespace harness
