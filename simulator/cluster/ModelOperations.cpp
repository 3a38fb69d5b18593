// What the cluster does on request, with the codes of its API: creating, deleting, linking; and the state of a resource
// after online and offline.
#include "Model.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <ntsecapi.h>

#include <algorithm>
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

std::wstring NewId() {
    unsigned char bytes[16];
    RtlGenRandom(bytes, sizeof(bytes));
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
    id = NewId();
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
    while (!resource.dependsOn.empty()) {
        Unlink(resource, *resource.dependsOn.back());
    }
    Erase(resource.group->resources, resource);
    --resource.group->resourcesIn[resource.state];
    Erase(m_pending, resource);
    const auto position = m_resourcesById.at(Folded(resource.id));
    m_resourcesByName.erase(Folded(position->name));
    m_resourcesById.erase(Folded(position->id));
    resources.erase(position);
    isChanged = true;
    return ERROR_SUCCESS;
}

void Model::TrackPending(Resource& resource) {
    m_pending.push_back(&resource);
}

Code Model::Online(Resource& resource, std::int64_t now) {
    if (resource.state == StateOnline) {
        return ERROR_SUCCESS;
    }
    if (resource.state != StateOffline && resource.state != StateFailed && resource.state != StateInitializing) {
        return ERROR_INVALID_STATE;
    }
    if (resource.group->owner->status == Node::Status::Paused) {
        return ERROR_SHARING_PAUSED;
    }
    if (!Contains(resource.possibleOwners, *resource.group->owner)) {
        return ERROR_HOST_NODE_NOT_RESOURCE_OWNER;
    }
    // What it depends on comes first.
    std::int64_t start = now;
    bool waits = false;
    bool waitsForever = false;
    for (Resource* provider : resource.dependsOn) {
        const Code code = provider->state == StateOnlinePending ? ERROR_IO_PENDING : Online(*provider, now);
        if (code == ERROR_IO_PENDING) {
            waits = true;
            waitsForever = waitsForever || provider->dueAt == 0;
            start = std::max(start, provider->dueAt);
        } else if (code != ERROR_SUCCESS) {
            return 5942; // ERROR_CLUSTER_RESOURCE_PROVIDER_FAILED
        }
    }
    if (waits || resource.onlineMs > 0 || resource.staysPending) {
        SetState(resource, StateOnlinePending);
        resource.dueAt = waitsForever || resource.staysPending ? 0 : start + resource.onlineMs;
        TrackPending(resource);
        return ERROR_IO_PENDING;
    }
    SetState(resource, resource.failsOnline ? StateFailed : StateOnline);
    return resource.failsOnline ? static_cast<Code>(ERROR_RESMON_ONLINE_FAILED) : static_cast<Code>(ERROR_SUCCESS);
}

Code Model::Offline(Resource& resource, std::int64_t now) {
    if (resource.state == StateOffline) {
        return ERROR_SUCCESS;
    }
    if (resource.state == StateFailed) {
        if (behaviour.offlineFailed == ERROR_SUCCESS) {
            SetState(resource, StateOffline);
        }
        return behaviour.offlineFailed;
    }
    if (resource.state != StateOnline) {
        return ERROR_INVALID_STATE;
    }
    // What depends on it goes first.
    std::int64_t start = now;
    bool waits = false;
    bool waitsForever = false;
    for (Resource* dependant : resource.dependants) {
        const Code code = dependant->state == StateOfflinePending ? ERROR_IO_PENDING : Offline(*dependant, now);
        if (code == ERROR_IO_PENDING) {
            waits = true;
            waitsForever = waitsForever || dependant->dueAt == 0;
            start = std::max(start, dependant->dueAt);
        } else if (code != ERROR_SUCCESS && dependant->state != StateFailed) {
            return code;
        }
    }
    if (waits || resource.offlineMs > 0 || resource.staysPending) {
        SetState(resource, StateOfflinePending);
        resource.dueAt = waitsForever || resource.staysPending ? 0 : start + resource.offlineMs;
        TrackPending(resource);
        return ERROR_IO_PENDING;
    }
    SetState(resource, StateOffline);
    return ERROR_SUCCESS;
}

void Model::Complete(Resource& resource, std::int64_t now) {
    if (resource.state == StateOnlinePending) {
        bool providersOnline = true;
        for (Resource* provider : resource.dependsOn) {
            if (provider->state == StateOnlinePending && provider->dueAt != 0 && provider->dueAt <= now) {
                Complete(*provider, now);
            }
            providersOnline = providersOnline && provider->state == StateOnline;
        }
        SetState(resource, resource.failsOnline || !providersOnline ? StateFailed : StateOnline);
    } else if (resource.state == StateOfflinePending) {
        SetState(resource, StateOffline);
    }
    resource.dueAt = 0;
}

void Model::Settle(std::int64_t now) {
    if (m_pending.empty()) {
        return;
    }
    for (Resource* resource : m_pending) {
        if (resource->dueAt != 0 && resource->dueAt <= now) {
            Complete(*resource, now);
        }
    }
    m_pending.erase(std::remove_if(m_pending.begin(), m_pending.end(),
                                   [](const Resource* resource) {
                                       return resource->state != StateOnlinePending &&
                                              resource->state != StateOfflinePending;
                                   }),
                    m_pending.end());
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
    resource.possibleOwners.push_back(&node);
    resource.ownersGiven = true;
    isChanged = true;
    return ERROR_SUCCESS;
}

} // namespace clussim
