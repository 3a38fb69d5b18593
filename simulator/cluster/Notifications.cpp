#include "Notifications.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <clusapi.h>

namespace clussim {

using common::Folded;
using common::ToUtf8;

namespace {

// A fingerprint that differs when a property does.
std::string TextOf(const PropertySet& properties) {
    std::string text;
    for (const PropertySet::Item& item : properties.Items()) {
        text.append(ToUtf8(item.key)).append("=").append(ToUtf8(item.value.text));
        text.append(std::to_string(item.value.number));
        for (const std::wstring& one : item.value.texts) {
            text.append(";").append(ToUtf8(one));
        }
        text.append(common::HexDigits(item.value.bytes.data(), item.value.bytes.size())).append("\n");
    }
    return text;
}

std::string StateText(const Group& group) {
    std::string text = ToUtf8(group.owner->name);
    for (const auto& [state, count] : group.resourcesIn) {
        if (count != 0) {
            text.append(" ").append(std::to_string(state)).append(":").append(std::to_string(count));
        }
    }
    return text;
}

struct Changes {
    unsigned long state;
    unsigned long deleted;
    unsigned long added;
    unsigned long property;
};

// By the kind of the object.
const Changes ChangesOf[] = {
    {CLUSTER_CHANGE_NODE_STATE, CLUSTER_CHANGE_NODE_DELETED, CLUSTER_CHANGE_NODE_ADDED, CLUSTER_CHANGE_NODE_PROPERTY},
    {CLUSTER_CHANGE_RESOURCE_STATE, CLUSTER_CHANGE_RESOURCE_DELETED, CLUSTER_CHANGE_RESOURCE_ADDED,
     CLUSTER_CHANGE_RESOURCE_PROPERTY},
    {CLUSTER_CHANGE_GROUP_STATE, CLUSTER_CHANGE_GROUP_DELETED, CLUSTER_CHANGE_GROUP_ADDED,
     CLUSTER_CHANGE_GROUP_PROPERTY},
    {CLUSTER_CHANGE_NETWORK_STATE, CLUSTER_CHANGE_NETWORK_DELETED, CLUSTER_CHANGE_NETWORK_ADDED,
     CLUSTER_CHANGE_NETWORK_PROPERTY},
};

} // namespace

NotificationPort::Seen NotificationPort::SeenOf(const Model* model) {
    Seen seen;
    if (!model) {
        return seen;
    }
    seen.running = true;
    for (const Node& node : model->nodes) {
        seen.objects[{NodeKind, Folded(node.name)}] = {node.name, std::to_string(static_cast<int>(node.status)), ""};
    }
    for (const Resource& resource : model->resources) {
        seen.objects[{ResourceKind, Folded(resource.id)}] = {resource.name, std::to_string(resource.state),
                                                             TextOf(resource.common) + "\n" +
                                                                 TextOf(resource.privateProperties)};
    }
    for (const Group& group : model->groups) {
        seen.objects[{GroupKind, Folded(group.name)}] = {group.name, StateText(group), TextOf(group.common)};
    }
    for (const Network& network : model->networks) {
        seen.objects[{NetworkKind, Folded(network.name)}] = {network.name,
                                                             std::to_string(static_cast<int>(network.state)), ""};
    }
    return seen;
}

void NotificationPort::Look(const Model* model) {
    Seen now = SeenOf(model);
    if (now.running != m_seen.running) {
        Announce(now.running ? CLUSTER_CHANGE_CLUSTER_RECONNECT : CLUSTER_CHANGE_CLUSTER_STATE, L"");
    }
    if (!now.running) { // what it had is compared when it runs again
        m_seen.running = false;
        return;
    }
    for (const auto& [id, facts] : m_seen.objects) {
        const Changes& changes = ChangesOf[id.first];
        const auto found = now.objects.find(id);
        if (found == now.objects.end()) {
            Announce(changes.deleted, facts.name);
            continue;
        }
        if (found->second.state != facts.state) {
            Announce(changes.state, facts.name);
        }
        if (found->second.properties != facts.properties) {
            Announce(changes.property, facts.name);
        }
    }
    for (const auto& [id, facts] : now.objects) {
        if (m_seen.objects.count(id) == 0) {
            Announce(ChangesOf[id.first].added, facts.name);
        }
    }
    m_seen = std::move(now);
}

// One is told once for each interest in it.
void NotificationPort::Announce(unsigned long change, const std::wstring& name) {
    for (const Interest& interest : m_interests) {
        if ((interest.filter & change) != 0 && (interest.object.empty() || common::IsSameName(interest.object, name))) {
            m_waiting.push_back({change, name, interest.key});
        }
    }
}

} // namespace clussim
