// Online and offline: what goes first, what takes time, and what falls due.
#include "Engine.h"
#include "FailoverRules.h"

#include "ModelJson.h"

#include "common/Text.h"

#include <windows.h>

#include <algorithm>
#include <iterator>

namespace clussim {

using common::ToUtf8;

namespace {

// No cluster does more between two calls; a model whose times never move on must not hang its reader.
const int MostStepsAtOnce = 100000;

template <typename Item> bool Contains(const std::vector<Item*>& items, const Item& item) {
    return std::find(items.begin(), items.end(), &item) != items.end();
}

template <typename Item> void AddOnce(std::vector<Item*>& items, Item& item) {
    if (!Contains(items, item)) {
        items.push_back(&item);
    }
}

std::int64_t DueAt(const Resource& resource) {
    return resource.dueAt != 0 ? resource.dueAt : resource.actAt;
}

std::int64_t DueAt(const Group& group) {
    return group.movingTo ? 0 : group.failbackAt; // not before it has arrived
}

bool Waits(const Resource& resource) {
    return resource.state == StateOnlinePending || resource.state == StateOfflinePending || resource.actAt != 0;
}

bool Waits(const Group& group) {
    return group.failbackAt != 0;
}

// Whether it comes online once all that it depends on is.
bool MayStart(const Model& model, const Resource& resource, std::string& why) {
    if (resource.failsOnline) {
        why = "it does not come online";
        return false;
    }
    if (LacksNetwork(model, resource)) {
        why = NetworkMissing(resource);
        return false;
    }
    return true;
}

template <typename Item> void DropIdle(std::vector<Item*>& items) {
    items.erase(std::remove_if(items.begin(), items.end(), [](const Item* item) { return !Waits(*item); }),
                items.end());
}

// The one that is due first, of those that are: the earliest to be put on the agenda. Null when there is none.
template <typename Item> Item* FirstDue(const std::vector<Item*>& items) {
    Item* first = nullptr;
    for (Item* item : items) {
        if (DueAt(*item) != 0 && (!first || DueAt(*item) < DueAt(*first))) {
            first = item;
        }
    }
    return first;
}

} // namespace

void Engine::Expect(Resource& resource) {
    AddOnce(m_model.agenda.resources, resource);
    if (DueAt(resource) != 0) {
        m_model.agenda.nextDue = std::min(m_model.agenda.nextDue, DueAt(resource));
    }
}

void Engine::Expect(Group& group) {
    AddOnce(m_model.agenda.groups, group);
    if (DueAt(group) != 0) {
        m_model.agenda.nextDue = std::min(m_model.agenda.nextDue, DueAt(group));
    }
}

void Engine::SetState(Resource& resource, State state, const std::string& why) {
    if (state != resource.state) {
        m_model.SetState(resource, state);
        Tell("resource", resource.name, std::string("is ") + StateName(state), why);
    }
}

void Engine::SetPending(Resource& resource, State state, bool neverEnds, std::int64_t dueAt) {
    SetState(resource, state);
    resource.dueAt = neverEnds || resource.staysPending ? 0 : dueAt;
    Expect(resource);
}

Code Engine::Online(Resource& resource) {
    if (resource.group->movingTo) {
        return ERROR_INVALID_STATE;
    }
    const Code code = BringOnline(resource);
    if (code != ERROR_INVALID_STATE && code != ERROR_SHARING_PAUSED && code != ERROR_CLUSTER_NODE_DOWN) {
        resource.isWanted = true; // even when the attempt fails
    }
    return code;
}

// Why nothing is done to bring it online; 0 when it is tried.
Code Engine::Refusal(const Resource& resource, std::string& why) const {
    const Node& owner = *resource.group->owner;
    if (!RunsOn(m_model, owner)) {
        why = "the cluster does not run";
        return ERROR_CLUSTER_NODE_DOWN;
    }
    if (owner.status == Node::Status::Paused && !resource.isQuorum) {
        why = ToUtf8(owner.name) + " is paused";
        return ERROR_SHARING_PAUSED;
    }
    if (!Contains(resource.possibleOwners, owner)) {
        why = ToUtf8(owner.name) + " is none of its possible owners";
        return ERROR_HOST_NODE_NOT_RESOURCE_OWNER;
    }
    const wchar_t* const missing = m_model.behaviour.needsRequired ? MissingType(m_model, resource) : nullptr;
    if (missing) {
        why = "it depends on no " + ToUtf8(missing) + ", which its type requires";
        return ERROR_DEPENDENCY_NOT_FOUND;
    }
    return ERROR_SUCCESS;
}

Code Engine::BringOnline(Resource& resource) {
    if (resource.state == StateOnline) {
        return ERROR_SUCCESS;
    }
    if (resource.state != StateOffline && resource.state != StateFailed && resource.state != StateInitializing) {
        return ERROR_INVALID_STATE;
    }
    std::string why;
    const Code refusal = Refusal(resource, why);
    if (refusal != ERROR_SUCCESS) {
        return refusal;
    }
    // What it depends on comes first.
    std::int64_t start = m_now;
    bool waits = false;
    bool waitsForever = false;
    for (Resource* provider : resource.dependsOn) {
        const Code code = provider->state == StateOnlinePending ? ERROR_IO_PENDING : BringOnline(*provider);
        if (code == ERROR_IO_PENDING) {
            waits = true;
            waitsForever = waitsForever || provider->dueAt == 0;
            start = std::max(start, provider->dueAt);
        } else if (code != ERROR_SUCCESS) {
            return ProviderFailed;
        }
    }
    resource.actAt = 0;
    if (waits || resource.onlineMs > 0 || resource.staysPending) {
        SetPending(resource, StateOnlinePending, waitsForever, start + resource.onlineMs);
        return ERROR_IO_PENDING;
    }
    if (!MayStart(m_model, resource, why)) {
        HasFailed(resource, why);
        return ERROR_RESMON_ONLINE_FAILED;
    }
    SetState(resource, StateOnline);
    return ERROR_SUCCESS;
}

Code Engine::Offline(Resource& resource) {
    if (!RunsOn(m_model, *resource.group->owner)) {
        return ERROR_CLUSTER_NODE_DOWN;
    }
    if (resource.isQuorum && resource.state == StateOnline) {
        return ERROR_INVALID_OPERATION_ON_QUORUM;
    }
    const Code code = TakeOffline(resource);
    if (code != ERROR_INVALID_STATE) {
        resource.isWanted = false;
        resource.actAt = 0;
    }
    return code;
}

Code Engine::TakeOffline(Resource& resource) {
    if (resource.state == StateOffline) {
        return ERROR_SUCCESS;
    }
    if (resource.state == StateFailed) {
        if (m_model.behaviour.offlineFailed == ERROR_SUCCESS) {
            SetState(resource, StateOffline);
        }
        return m_model.behaviour.offlineFailed;
    }
    if (resource.state != StateOnline) {
        return ERROR_INVALID_STATE;
    }
    // What depends on it goes first.
    std::int64_t start = m_now;
    bool waits = false;
    bool waitsForever = false;
    for (Resource* dependant : resource.dependants) {
        const Code code = dependant->state == StateOfflinePending ? ERROR_IO_PENDING : TakeOffline(*dependant);
        if (code == ERROR_IO_PENDING) {
            waits = true;
            waitsForever = waitsForever || dependant->dueAt == 0;
            start = std::max(start, dependant->dueAt);
        } else if (code != ERROR_SUCCESS && dependant->state != StateFailed) {
            return code;
        }
    }
    if (waits || resource.offlineMs > 0 || resource.staysPending) {
        SetPending(resource, StateOfflinePending, waitsForever, start + resource.offlineMs);
        return ERROR_IO_PENDING;
    }
    SetState(resource, StateOffline);
    return ERROR_SUCCESS;
}

// Ends the transition of a resource whose time has come.
void Engine::Complete(Resource& resource) {
    const State state = resource.state;
    resource.dueAt = 0;
    if (state == StateOfflinePending) {
        SetState(resource, StateOffline);
        ContinueMove(*resource.group);
        return;
    }
    if (!RunsOn(m_model, *resource.group->owner)) {
        SetState(resource, StateOffline, "the cluster does not run");
        return;
    }
    const Resource* missing = nullptr;
    for (Resource* provider : resource.dependsOn) {
        if (provider->state == StateOnlinePending && provider->dueAt != 0 && provider->dueAt <= m_now) {
            Complete(*provider);
        }
        missing = provider->state == StateOnline ? missing : provider;
    }
    if (resource.state != state) { // what it depends on has failed, and took it down
        return;
    }
    std::string why = missing ? ToUtf8(missing->name) + ", on which it depends, is not online" : "";
    if (!missing && MayStart(m_model, resource, why)) {
        SetState(resource, StateOnline);
    } else {
        HasFailed(resource, why);
    }
}

void Engine::DoNext() {
    Agenda& agenda = m_model.agenda;
    Resource* const resource = FirstDue(agenda.resources);
    Group* const group = FirstDue(agenda.groups);
    if (group && (!resource || DueAt(*group) < DueAt(*resource))) {
        m_now = DueAt(*group);
        FailBack(*group);
    } else if (resource) {
        m_now = DueAt(*resource);
        if (resource->dueAt != 0) {
            Complete(*resource);
        } else {
            ActOn(*resource);
        }
    }
    DropIdle(agenda.resources);
    DropIdle(agenda.groups);
    const Resource* const nextResource = FirstDue(agenda.resources);
    const Group* const nextGroup = FirstDue(agenda.groups);
    agenda.nextDue =
        std::min(nextResource ? DueAt(*nextResource) : INT64_MAX, nextGroup ? DueAt(*nextGroup) : INT64_MAX);
}

void Engine::Settle() {
    const std::int64_t now = m_now;
    for (int step = 0; step < MostStepsAtOnce && m_model.agenda.nextDue <= now; ++step) {
        DoNext();
    }
    m_now = now;
}

} // namespace clussim
