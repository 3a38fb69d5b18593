// What the cluster does on request and at once, with the codes of its API: creating, deleting, linking.
#include "Model.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <ntsecapi.h>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace clussim {

using common::Folded;

namespace {

template <typename Item> bool Contains(const std::vector<Item*>& items, const Item& item) {
    return std::find(items.begin(), items.end(), &item) != items.end();
}

template <typename Item> void Erase(std::vector<Item*>& items, const Item& item) {
    items.erase(std::remove(items.begin(), items.end(), &item), items.end());
}

// By chance; of a model with a clock of its own by what there is, so that the same steps give the same model.
void FillId(const Model& model, const std::wstring& name, unsigned char (&bytes)[16]) {
    if (model.clock == 0) {
        RtlGenRandom(bytes, sizeof(bytes));
        return;
    }
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    const auto mix = [&hash](std::uint64_t value) { hash = (hash ^ value) * 1099511628211U; };
    mix(static_cast<std::uint64_t>(model.clock));
    mix(model.resources.size());
    for (const wchar_t c : name) {
        mix(c);
    }
    for (unsigned char& byte : bytes) {
        mix(1);
        byte = static_cast<unsigned char>(hash >> 56);
    }
}

std::wstring NewId(const Model& model, const std::wstring& name) {
    unsigned char bytes[16];
    FillId(model, name, bytes);
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    std::wstring id;
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            id += L'-';
        }
        const wchar_t digits[] = L"0123456789abcdef";
        id += digits[bytes[i] >> 4];
        id += digits[bytes[i] & 15];
    }
    return id;
}

const std::size_t MostLevels = 100; // of a tree of dependencies, since 2008

// The resources of the longest chain from this one on; there are no cycles. Each is looked at once.
std::size_t LongestChain(const Resource& resource, std::vector<Resource*> Resource::*next,
                         std::unordered_map<const Resource*, std::size_t>& known) {
    const auto found = known.find(&resource);
    if (found != known.end()) {
        return found->second;
    }
    std::size_t longest = 0;
    for (const Resource* other : resource.*next) {
        longest = std::max(longest, LongestChain(*other, next, known));
    }
    return known[&resource] = longest + 1;
}

std::size_t DepthBelow(const Resource& resource) {
    std::unordered_map<const Resource*, std::size_t> known;
    return LongestChain(resource, &Resource::dependsOn, known);
}

std::size_t HeightAbove(const Resource& resource) {
    std::unordered_map<const Resource*, std::size_t> known;
    return LongestChain(resource, &Resource::dependants, known);
}

} // namespace

Code Model::Create(Group& group, const std::wstring& resourceName, const std::wstring& typeName, std::wstring& id) {
    if (resourceName.find_first_not_of(L' ') == std::wstring::npos) {
        return ERROR_INVALID_NAME;
    }
    const ResourceType* type = FindType(typeName);
    if (!type) {
        return 5078; // ERROR_CLUSTER_RESOURCE_TYPE_NOT_FOUND
    }
    if (ResourceNamed(resourceName)) {
        return ERROR_OBJECT_ALREADY_EXISTS;
    }
    id = NewId(*this, resourceName);
    Resource* resource = AddResource(resourceName, id, type, &group);
    for (Node& node : nodes) {
        resource->possibleOwners.push_back(&node);
    }
    isChanged = true;
    return ERROR_SUCCESS;
}

Code Model::Delete(Resource& resource) {
    if (resource.state != StateOffline && resource.state != StateFailed) {
        return behaviour.deleteOnline;
    }
    if (!resource.dependants.empty()) {
        return ERROR_DEPENDENT_RESOURCE_EXISTS;
    }
    if (resource.isCore || resource.isQuorum) {
        return ERROR_CORE_RESOURCE;
    }
    while (!resource.dependsOn.empty()) {
        Unlink(resource, *resource.dependsOn.back());
    }
    Erase(resource.group->resources, resource);
    --resource.group->resourcesIn[resource.state];
    Erase(agenda.resources, resource);
    const auto position = m_resourcesById.at(Folded(resource.id));
    m_resourcesByName.erase(Folded(position->name));
    m_resourcesById.erase(Folded(position->id));
    resources.erase(position);
    isChanged = true;
    return ERROR_SUCCESS;
}

bool Model::DependsOn(const Resource& resource, const Resource& other) {
    if (other.dependants.empty()) {
        return false;
    }
    // Each resource is looked at once: a diamond of dependencies must not multiply the work.
    std::vector<const Resource*> found(1, &resource);
    std::unordered_set<const Resource*> seen;
    for (std::size_t i = 0; i < found.size(); ++i) {
        for (const Resource* provider : found[i]->dependsOn) {
            if (provider == &other) {
                return true;
            }
            if (seen.insert(provider).second) {
                found.push_back(provider);
            }
        }
    }
    return false;
}

Code Model::AddDependency(Resource& resource, Resource& dependsOn) {
    if (&resource == &dependsOn || resource.group != dependsOn.group) {
        return ERROR_INVALID_PARAMETER;
    }
    if (resource.isQuorum) {
        return 5069; // ERROR_DEPENDENCY_NOT_ALLOWED
    }
    if (Contains(resource.dependsOn, dependsOn)) {
        return ERROR_DEPENDENCY_ALREADY_EXISTS;
    }
    if (DependsOn(dependsOn, resource)) {
        return ERROR_CIRCULAR_DEPENDENCY;
    }
    const bool refused =
        behaviour.protocol >= 2008
            ? resource.state == StateOnlinePending || (resource.state == StateOnline && dependsOn.state != StateOnline)
            : resource.state != StateOffline && resource.state != StateFailed && resource.state != StateInitializing;
    if (refused) {
        return ERROR_RESOURCE_ONLINE;
    }
    if (behaviour.protocol >= 2008 && HeightAbove(resource) + DepthBelow(dependsOn) > MostLevels) {
        return 5929; // ERROR_CLUSTER_RESOURCE_DEPENDENCY_TOO_DEEP
    }
    Link(resource, dependsOn);
    isChanged = true;
    return ERROR_SUCCESS;
}

Code Model::RemoveDependency(Resource& resource, Resource& dependsOn) {
    if (!Contains(resource.dependsOn, dependsOn)) {
        return ERROR_DEPENDENCY_NOT_FOUND;
    }
    Unlink(resource, dependsOn);
    isChanged = true;
    return ERROR_SUCCESS;
}

Code Model::AddOwner(Resource& resource, Node& node) {
    if (Contains(resource.possibleOwners, node)) {
        return ERROR_OBJECT_ALREADY_EXISTS;
    }
    if (!resource.type->hosts.empty() && !Contains(resource.type->hosts, node)) {
        return 5079; // ERROR_CLUSTER_RESTYPE_NOT_SUPPORTED
    }
    resource.possibleOwners.push_back(&node);
    resource.ownersGiven = true;
    isChanged = true;
    return ERROR_SUCCESS;
}

} // namespace clussim
