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
                       [&node](const Resource* resource) { return MayHost(*resource, node); });
}

bool IsUp(const Node& node) {
    return node.status == Node::Status::Up;
}

std::size_t Members(const Model& model) {
    return static_cast<std::size_t>(std::count_if(model.nodes.begin(), model.nodes.end(), [](const Node& node) {
        return node.status == Node::Status::Up || node.status == Node::Status::Paused;
    }));
}

namespace {

bool AreEnough(const Model& model, std::size_t nodes) {
    const std::size_t ofWitness = model.witness == Witness::None ? 0 : 1;
    const bool isMajority = (nodes + ofWitness) * 2 > model.nodes.size() + ofWitness;
    return nodes > 0 && (model.quorum == Quorum::Shared || isMajority);
}

} // namespace

bool HasQuorum(const Model& model) {
    return AreEnough(model, Members(model));
}

std::size_t Candidates(const Model& model) {
    return static_cast<std::size_t>(std::count_if(model.nodes.begin(), model.nodes.end(),
                                                  [](const Node& node) { return node.status != Node::Status::Down; }));
}

bool CanStart(const Model& model) {
    return AreEnough(model, Candidates(model));
}

std::string Votes(const Model& model, std::size_t nodes) {
    return std::to_string(nodes) + " of " + std::to_string(model.nodes.size()) + " nodes" +
           (model.witness == Witness::None ? "" : " and the witness");
}

bool RunsOn(const Model& model, const Node& node) {
    return HasQuorum(model) && (model.running || !node.isThisComputer);
}

namespace {

// What a built-in type requires its resources to depend on. Since 2008, and with continuous replication, whose nodes
// share no disk that could hold the quorum, a mailbox server may do without a shared disk.
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

std::vector<const wchar_t*> RequiredTypes(const Resource& resource, const Model& model) {
    const int generation = model.quorum == Quorum::Majority ? 2008 : model.behaviour.protocol;
    std::vector<const wchar_t*> types;
    for (const Requirement& requirement : Requirements) {
        if (generation <= requirement.until && common::IsSameName(resource.type->name, requirement.type)) {
            types.push_back(requirement.required);
        }
    }
    return types;
}

const wchar_t* MissingType(const Model& model, const Resource& resource) {
    for (const wchar_t* type : RequiredTypes(resource, model)) {
        if (std::none_of(resource.dependsOn.begin(), resource.dependsOn.end(),
                         [type](const Resource* provider) { return common::IsSameName(provider->type->name, type); })) {
            return type;
        }
    }
    return nullptr;
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

std::string NetworkMissing(const Resource& resource) {
    const PropertyValue* const bound = resource.privateProperties.Find(L"Network");
    return common::ToUtf8(resource.group->owner->name) + " has no interface that is up on a network " +
           (bound ? common::ToUtf8(bound->text) + " " : "") + "that is up";
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

std::vector<Node*> NodesBehindOwner(Model& model, const Group& group) {
    std::vector<Node*> nodes = NodesInOrder(model, group);
    std::rotate(nodes.begin(), std::find(nodes.begin(), nodes.end(), group.owner), nodes.end());
    return nodes;
}

template <typename Fits> Node* First(const std::vector<Node*>& nodes, Fits fits) {
    const auto found = std::find_if(nodes.begin(), nodes.end(), fits);
    return found == nodes.end() ? nullptr : *found;
}

Node* FirstOther(const std::vector<Node*>& nodes, const Group& group) {
    return First(nodes,
                 [&group](const Node* node) { return node != group.owner && IsUp(*node) && MayHost(group, *node); });
}

Node* RefugeAmong(const std::vector<Node*>& nodes, const Group& group) {
    Node* node = First(nodes, [&group](const Node* item) { return IsUp(*item) && MayHost(group, *item); });
    node = node ? node : First(nodes, [](const Node* item) { return IsUp(*item); });
    return node ? node : First(nodes, [](const Node* item) { return item->status == Node::Status::Paused; });
}

} // namespace

Node* NextNode(Model& model, const Group& group) {
    return FirstOther(NodesBehindOwner(model, group), group);
}

Node* BestNode(Model& model, const Group& group) {
    return FirstOther(NodesInOrder(model, group), group);
}

Node* Refuge(Model& model, const Group& group) {
    return RefugeAmong(NodesBehindOwner(model, group), group);
}

Node* FirstRefuge(Model& model, const Group& group) {
    return RefugeAmong(NodesInOrder(model, group), group);
}

} // namespace clussim
