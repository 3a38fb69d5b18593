#include "FailoverRules.h"

#include "common/Text.h"

#include <algorithm>

namespace clussim {

using common::Folded;

std::uint32_t NumberOf(const PropertySet& properties, const wchar_t* name, std::uint32_t otherwise) {
    const PropertyValue* const value = properties.Find(name);
    return value && value->kind == PropertyValue::Dword ? value->number : otherwise;
}

namespace {

bool MayHost(const Resource& resource, const Node& node) {
    return std::find(resource.possibleOwners.begin(), resource.possibleOwners.end(), &node) !=
           resource.possibleOwners.end();
}

} // namespace

bool MayHost(const Group& group, const Node& node) {
    return std::all_of(group.resources.begin(), group.resources.end(),
                       [&node](const Resource* resource) { return !resource->isWanted || MayHost(*resource, node); });
}

bool IsUp(const Node& node) {
    return node.status == Node::Status::Up;
}

namespace {

// What a built-in type requires its resources to depend on. Since 2008 a mailbox server may do without a shared disk.
struct Requirement {
    const wchar_t* type;
    const wchar_t* required;
    int until; // the last generation of the service for which it holds
};

const Requirement Requirements[] = {
    {L"Network Name", L"IP Address", 2008},
    {L"Microsoft Exchange System Attendant", L"Network Name", 2008},
    {L"Microsoft Exchange System Attendant", L"Physical Disk", 2003},
    {L"Microsoft Exchange Information Store", L"Microsoft Exchange System Attendant", 2008},
    {L"Microsoft Exchange SMTP Server Instance", L"Microsoft Exchange System Attendant", 2008},
};

} // namespace

std::vector<std::wstring> RequiredTypes(const Resource& resource, int protocol) {
    std::vector<std::wstring> types;
    for (const Requirement& requirement : Requirements) {
        if (protocol <= requirement.until && Folded(resource.type->name) == Folded(requirement.type)) {
            types.emplace_back(requirement.required);
        }
    }
    return types;
}

bool LacksRequired(const Model& model, const Resource& resource) {
    const std::vector<std::wstring> required = RequiredTypes(resource, model.behaviour.protocol);
    return std::any_of(required.begin(), required.end(), [&resource](const std::wstring& type) {
        return std::none_of(resource.dependsOn.begin(), resource.dependsOn.end(),
                            [&type](const Resource* provider) { return Folded(provider->type->name) == Folded(type); });
    });
}

bool LacksNetwork(const Model& model, const Resource& resource) {
    const PropertyValue* const bound = resource.privateProperties.Find(L"Network");
    if (model.networks.empty() || !bound || bound->text.empty() || Folded(resource.type->name) != L"IP ADDRESS") {
        return false;
    }
    const std::wstring wanted = Folded(bound->text);
    return std::none_of(model.interfaces.begin(), model.interfaces.end(), [&](const NetworkInterface& card) {
        return card.node == resource.group->owner && card.state == InterfaceState::Up &&
               card.network->state == NetworkState::Up && Folded(card.network->name) == wanted;
    });
}

namespace {

std::vector<Node*> NodesInOrder(Model& model, const Group& group) {
    std::vector<Node*> nodes = group.preferredOwners;
    for (Node& node : model.nodes) {
        if (std::find(nodes.begin(), nodes.end(), &node) == nodes.end()) {
            nodes.push_back(&node);
        }
    }
    return nodes;
}

} // namespace

Node* NextNode(Model& model, const Group& group) {
    std::vector<Node*> nodes = NodesInOrder(model, group);
    std::rotate(nodes.begin(), std::find(nodes.begin(), nodes.end(), group.owner), nodes.end());
    for (Node* node : nodes) {
        if (node != group.owner && IsUp(*node) && MayHost(group, *node)) {
            return node;
        }
    }
    return nullptr;
}

Node* Refuge(Model& model, const Group& group) {
    const std::vector<Node*> nodes = NodesInOrder(model, group);
    const auto first = [&nodes](const auto& fits) -> Node* {
        const auto found = std::find_if(nodes.begin(), nodes.end(), fits);
        return found == nodes.end() ? nullptr : *found;
    };
    Node* node = first([&group](const Node* item) { return IsUp(*item) && MayHost(group, *item); });
    node = node ? node : first([](const Node* item) { return IsUp(*item); });
    return node ? node : first([](const Node* item) { return item->status == Node::Status::Paused; });
}

} // namespace clussim
