#include "Model.h"

#include "common/Text.h"

#include <algorithm>

namespace clussim {

using common::Folded;

namespace {

template <typename Map> auto Lookup(const Map& map, const std::wstring& name) -> typename Map::mapped_type {
    const auto found = map.find(Folded(name));
    return found == map.end() ? nullptr : found->second;
}

} // namespace

Node* Model::FindNode(const std::wstring& nodeName) const {
    return Lookup(m_nodesByName, nodeName);
}

Group* Model::FindGroup(const std::wstring& groupName) const {
    return Lookup(m_groupsByName, groupName);
}

const ResourceType* Model::FindType(const std::wstring& typeName) const {
    return Lookup(m_typesByName, typeName);
}

const Network* Model::FindNetwork(const std::wstring& networkName) const {
    const std::wstring key = Folded(networkName);
    const auto found = std::find_if(networks.begin(), networks.end(),
                                    [&key](const Network& network) { return Folded(network.name) == key; });
    return found == networks.end() ? nullptr : &*found;
}

Network* Model::FindNetwork(const std::wstring& networkName) {
    return const_cast<Network*>(static_cast<const Model*>(this)->FindNetwork(networkName));
}

const NetworkInterface* Model::FindInterface(const std::wstring& interfaceName) const {
    const std::wstring key = Folded(interfaceName);
    const auto found = std::find_if(interfaces.begin(), interfaces.end(),
                                    [&key](const NetworkInterface& card) { return Folded(card.name) == key; });
    return found == interfaces.end() ? nullptr : &*found;
}

bool Model::AnswersTo(const std::wstring& nameOrAddress) const {
    const std::wstring key = Folded(nameOrAddress);
    const auto isNamed = [&](const std::wstring& object) {
        return Folded(object) == key || (!domain.empty() && Folded(object + L"." + domain) == key);
    };
    const auto takesPart = [](const Node& node) {
        return node.status == Node::Status::Up || node.status == Node::Status::Paused;
    };
    return isNamed(name) ||
           std::any_of(nodes.begin(), nodes.end(), [&](const Node& node) { return isNamed(node.name); }) ||
           std::any_of(interfaces.begin(), interfaces.end(),
                       [&](const NetworkInterface& card) {
                           return takesPart(*card.node) && card.state == InterfaceState::Up && card.address == key;
                       }) ||
           std::any_of(resources.begin(), resources.end(), [&key](const Resource& resource) {
               const PropertyValue* const address = resource.privateProperties.Find(L"Address");
               return resource.isCore && resource.state == StateOnline && address && address->text == key;
           });
}

Resource* Model::ResourceNamed(const std::wstring& nameOrId) const {
    const std::wstring key = Folded(nameOrId);
    const auto named = m_resourcesByName.find(key);
    if (named != m_resourcesByName.end()) {
        return &*named->second;
    }
    const auto identified = m_resourcesById.find(key);
    return identified != m_resourcesById.end() ? &*identified->second : nullptr;
}

Resource* Model::ResourceWithId(const std::wstring& id) const {
    const auto found = m_resourcesById.find(Folded(id));
    return found != m_resourcesById.end() ? &*found->second : nullptr;
}

bool Model::AddNode(Node node) {
    const std::wstring key = Folded(node.name);
    if (m_nodesByName.count(key)) {
        return false;
    }
    nodes.push_back(std::move(node));
    m_nodesByName[key] = &nodes.back();
    return true;
}

void Model::Rename(Node& node, const std::wstring& nodeName) {
    Node* const holder = FindNode(nodeName);
    m_nodesByName.erase(Folded(node.name));
    if (holder) {
        m_nodesByName[Folded(node.name)] = holder;
        holder->name = node.name;
    }
    m_nodesByName[Folded(nodeName)] = &node;
    node.name = nodeName;
}

bool Model::AddType(ResourceType type) {
    const std::wstring key = Folded(type.name);
    if (m_typesByName.count(key)) {
        return false;
    }
    types.push_back(std::move(type));
    m_typesByName[key] = &types.back();
    return true;
}

bool Model::AddGroup(Group group) {
    const std::wstring key = Folded(group.name);
    if (m_groupsByName.count(key)) {
        return false;
    }
    groups.push_back(std::move(group));
    m_groupsByName[key] = &groups.back();
    return true;
}

Resource* Model::AddResource(const std::wstring& resourceName, const std::wstring& id, const ResourceType* type,
                             Group* group) {
    const std::wstring key = Folded(resourceName);
    const std::wstring idKey = Folded(id);
    if (m_resourcesByName.count(key) || m_resourcesById.count(key) || m_resourcesById.count(idKey) ||
        m_resourcesByName.count(idKey)) {
        return nullptr;
    }
    const auto resource = resources.emplace(resources.end());
    resource->name = resourceName;
    resource->id = id;
    resource->type = type;
    resource->group = group;
    resource->order = m_resourcesMade++;
    group->resources.push_back(&*resource);
    ++group->resourcesIn[resource->state];
    m_resourcesByName[key] = resource;
    m_resourcesById[idKey] = resource;
    return &*resource;
}

Code CodeOf(const Unread& unread, const char* part) {
    const auto found = unread.empty() ? unread.end() : unread.find(part);
    return found == unread.end() ? Code() : found->second;
}

void Model::AddBuiltInTypes() {
    const bool hasNetworkClass = behaviour.protocol >= 2008;
    const ResourceType builtIn[] = {
        {L"Physical Disk", 1, 0x80000000, {}},
        {L"IP Address", hasNetworkClass ? 2U : 0U, hasNetworkClass ? 0x80000000 : 0U, {}},
        {L"Network Name", 0, 0, {}},
        {L"Generic Service", 0, 0, {}},
        {L"Generic Application", 0, 0, {}},
        {L"Microsoft Exchange System Attendant", 0, 0, {}},
        {L"Microsoft Exchange Information Store", 0, 0, {}},
        {L"Microsoft Exchange SMTP Server Instance", 0, 0, {}},
        {L"clusRDLL", 0, 0, {}},
        {L"clusRDLLCCR", 0, 0, {}},
    };
    for (const ResourceType& type : builtIn) {
        AddType(type);
    }
    if (quorum == Quorum::Majority && !hasNetworkClass) {
        AddType({MajorityNodeSet, 0, 0, {}}); // since 2008 the nodes hold the quorum without a resource
    }
    if (witness == Witness::Share && hasNetworkClass) {
        AddType({FileShareWitness, 0, 0, {}});
    }
}

void Model::SetState(Resource& resource, State state) {
    if (state == resource.state) {
        return;
    }
    --resource.group->resourcesIn[resource.state];
    ++resource.group->resourcesIn[state];
    resource.state = state;
    isChanged = true;
}

void Model::Link(Resource& resource, Resource& dependsOn) {
    resource.dependsOn.push_back(&dependsOn);
    // As a model read from a file has them, so that it does not matter whether this one was.
    std::vector<Resource*>& dependants = dependsOn.dependants;
    dependants.insert(std::upper_bound(dependants.begin(), dependants.end(), &resource,
                                       [](const Resource* a, const Resource* b) { return a->order < b->order; }),
                      &resource);
}

void Model::Unlink(Resource& resource, Resource& dependsOn) {
    const auto erase = [](std::vector<Resource*>& items, const Resource* item) {
        items.erase(std::remove(items.begin(), items.end(), item), items.end());
    };
    erase(resource.dependsOn, &dependsOn);
    erase(dependsOn.dependants, &resource);
}

} // namespace clussim
