#include "FailoverRules.h"

#include <algorithm>

namespace clussim {

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
