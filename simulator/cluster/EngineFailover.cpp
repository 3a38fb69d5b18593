// Failures and moves. The order of nodes, the thresholds and what is brought back follow the platform's documentation
// of failover policies; docs/cluster-simulator.md says what is assumed beyond it.
#include "Engine.h"
#include "FailoverRules.h"

#include "common/Text.h"

#include <windows.h>

#include <algorithm>
#include <unordered_set>

namespace clussim {

using common::ToUtf8;

namespace {

const std::int64_t ShortestRetry = 1000; // milliseconds; a retry without delay would never end

enum RestartAction : std::uint32_t {
    DontRestart,
    RestartOnly,
    RestartAndFailOver
};

// Forgets the times that are further back than the period, and counts the others.
std::size_t CountSince(std::vector<std::int64_t>& times, std::int64_t start) {
    times.erase(std::remove_if(times.begin(), times.end(), [start](std::int64_t time) { return time < start; }),
                times.end());
    return times.size();
}

bool IsActive(const Resource& resource) {
    return resource.state == StateOnline || resource.state == StateOnlinePending ||
           resource.state == StateOfflinePending;
}

// What is reached from a resource that way, each once, and behind what is reached from it; the resource last. In a
// diamond of dependencies there are more ways than anybody can walk.
void Collect(Resource& resource, std::vector<Resource*> Resource::*next, std::unordered_set<const Resource*>& seen,
             std::vector<Resource*>& found) {
    if (!seen.insert(&resource).second) {
        return;
    }
    for (Resource* other : resource.*next) {
        Collect(*other, next, seen, found);
    }
    found.push_back(&resource);
}

std::vector<Resource*> Reached(Resource& resource, std::vector<Resource*> Resource::*next) {
    std::unordered_set<const Resource*> seen;
    std::vector<Resource*> found;
    Collect(resource, next, seen, found);
    return found;
}

// Whether something that it rests on stays failed.
bool IsBlocked(Resource& resource) {
    const std::vector<Resource*> providers = Reached(resource, &Resource::dependsOn);
    return std::any_of(providers.begin(), providers.end(), [&resource](const Resource* provider) {
        return provider != &resource && provider->state == StateFailed;
    });
}

// Why there is no more of it.
std::string UsedUp(std::size_t count, const char* what, std::uint32_t threshold, const char* property,
                   const std::string& period) {
    if (threshold == 0) {
        return std::string("its ") + property + " is 0";
    }
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s") + " within " + period;
}

} // namespace

std::string Engine::Seconds(std::int64_t milliseconds) {
    const std::string rest = std::to_string(1000 + milliseconds % 1000).substr(1);
    return std::to_string(milliseconds / 1000) + (milliseconds % 1000 == 0 ? "" : "." + rest) + " s";
}

void Engine::Tell(const char* kind, const std::wstring& name, const std::string& what, const std::string& why) {
    if (m_model.events.isOn) {
        m_model.events.entries.push_back({m_now, kind, name, what, why});
    }
}

void Engine::HasFailed(Resource& resource, const std::string& why) {
    resource.dueAt = 0;
    if (resource.state == StateFailed) {
        Tell("resource", resource.name, "has failed again", why);
    }
    SetState(resource, StateFailed, why);
    if (m_model.behaviour.actsOnFailures) {
        for (Resource* dependant : resource.dependants) {
            Terminate(*dependant, ToUtf8(resource.name) + " failed");
        }
    }
    if (resource.group->movingTo) {
        ContinueMove(*resource.group);
    } else if (m_model.behaviour.actsOnFailures) {
        resource.actAt = m_now;
        Expect(resource);
    }
}

void Engine::Terminate(Resource& resource, const std::string& why) {
    for (Resource* item : Reached(resource, &Resource::dependants)) {
        item->dueAt = 0;
        const bool isActedOn = item->state == StateFailed && item->actAt != 0;
        if (IsActive(*item) || isActedOn) { // what waits to be restarted comes back with what it rests on
            item->actAt = 0;
            SetState(*item, StateOffline, why);
        }
    }
}

void Engine::TerminateAll(Group& group, const std::string& why) {
    for (Resource* resource : group.resources) {
        Terminate(*resource, why);
        resource->actAt = 0;
        resource->restarts.clear();
        if (resource->state == StateFailed) {
            SetState(*resource, StateOffline, why);
        }
    }
}

void Engine::ActOn(Resource& failed) {
    failed.actAt = 0;
    m_model.isChanged = true;
    if (failed.state != StateFailed) {
        return;
    }
    if (!failed.isWanted) {
        Tell("resource", failed.name, "is left failed", "it was asked to be offline");
        return;
    }
    const std::uint32_t action = NumberOf(failed.common, L"RestartAction", RestartAndFailOver);
    if (action == DontRestart) {
        Tell("resource", failed.name, "is left failed", "its RestartAction is not to restart it");
        StopWithout(failed);
        return;
    }
    const std::uint32_t period = NumberOf(failed.common, L"RestartPeriod", 900000);
    const std::uint32_t threshold = NumberOf(failed.common, L"RestartThreshold", 3);
    const std::size_t restarts = CountSince(failed.restarts, m_now - period);
    if (restarts < threshold) {
        if (Restart(failed, restarts, threshold)) {
            return;
        }
    } else {
        Tell("resource", failed.name, "is not restarted",
             UsedUp(restarts, "restart", threshold, "RestartThreshold", std::to_string(period) + " ms"));
    }
    if ((action == RestartAndFailOver && FailOver(*failed.group, failed)) || StopWithout(failed)) {
        return;
    }
    const std::uint32_t retry =
        NumberOf(failed.common, L"RetryPeriodOnFailure", m_model.behaviour.protocol >= 2008 ? 3600000 : Never);
    if (retry != Never && threshold != 0) { // a series of no restarts is none
        const std::int64_t delay = std::max<std::int64_t>(retry, ShortestRetry);
        failed.restarts.clear(); // another series
        failed.actAt = m_now + delay;
        Tell("resource", failed.name, "will be tried again in " + Seconds(delay));
        Expect(failed);
    }
}

// True when it was the disk that holds the quorum: without it no node goes on.
bool Engine::StopWithout(const Resource& failed) {
    const bool isNeeded = failed.isQuorum && m_model.quorum == Quorum::Shared;
    if (isNeeded) {
        StopCluster(ToUtf8(failed.name) + ", which holds the quorum, has failed");
    }
    return isNeeded;
}

// False when the resource cannot be online here at all. On a paused node it waits until that is resumed.
bool Engine::Restart(Resource& failed, std::size_t restarts, std::uint32_t threshold) {
    std::string why;
    const Code refusal = Refusal(failed, why);
    if (refusal != ERROR_SUCCESS) {
        Tell("resource", failed.name, "is not restarted", why);
        return refusal == ERROR_SHARING_PAUSED;
    }
    failed.restarts.push_back(m_now);
    Tell("resource", failed.name, "is restarted",
         "attempt " + std::to_string(restarts + 1) + " of " + std::to_string(threshold));
    if (BringOnline(failed) == ProviderFailed) {
        SetState(failed, StateOffline, "what it depends on does not come online");
    }
    if (IsUp(*failed.group->owner)) {
        BringBack(*failed.group);
    }
    return true;
}

// What failed while its node was paused, and may be restarted.
void Engine::ActOnFailuresOf(Group& group) {
    for (Resource* resource : group.resources) {
        const std::uint32_t period = NumberOf(resource->common, L"RestartPeriod", 900000);
        const bool isLeft =
            resource->state != StateFailed || !resource->isWanted || resource->actAt != 0 ||
            NumberOf(resource->common, L"RestartAction", RestartAndFailOver) == DontRestart ||
            CountSince(resource->restarts, m_now - period) >= NumberOf(resource->common, L"RestartThreshold", 3);
        if (m_model.behaviour.actsOnFailures && !isLeft) {
            resource->actAt = m_now;
            Expect(*resource);
        }
    }
}

// False when the group stays where it is.
bool Engine::FailOver(Group& group, const Resource& failed) {
    const std::uint32_t period = NumberOf(group.common, L"FailoverPeriod", 6);
    // As many as there are other nodes, unless it is set; formerly ten.
    const std::uint32_t byNodes = static_cast<std::uint32_t>(m_model.nodes.size()) - 1;
    std::uint32_t threshold =
        NumberOf(group.common, L"FailoverThreshold", m_model.behaviour.protocol >= 2008 ? Never : 10);
    if (threshold == Never && byNodes == 0) {
        Tell("group", group.name, "does not fail over", "no other node can host it");
        return false;
    }
    threshold = threshold == Never ? byNodes : threshold;
    const std::size_t failovers = CountSince(group.failovers, m_now - period * MsPerHour);
    if (failovers >= threshold) {
        Tell("group", group.name, "does not fail over",
             UsedUp(failovers, "failover", threshold, "FailoverThreshold", std::to_string(period) + " h"));
        if (m_model.behaviour.leavesGroupOffline) {
            for (Resource* resource : group.resources) {
                Terminate(*resource, ToUtf8(group.name) + " is left offline");
            }
        }
        return false;
    }
    Node* const node = NextNode(m_model, group);
    if (!node) {
        Tell("group", group.name, "does not fail over", "no other node can host it");
        return false;
    }
    group.failovers.push_back(m_now);
    BeginMove(group, *node, ToUtf8(failed.name) + " failed");
    return true;
}

void Engine::BeginMove(Group& group, Node& destination, const std::string& why) {
    m_model.isChanged = true;
    group.movingTo = &destination;
    Tell("group", group.name, "moves from " + ToUtf8(group.owner->name) + " to " + ToUtf8(destination.name), why);
    for (Resource* resource : group.resources) {
        resource->actAt = 0;
        if (resource->state == StateOnlinePending) {
            Terminate(*resource, "");
        }
    }
    for (Resource* resource : group.resources) {
        TakeOffline(*resource);
    }
    ContinueMove(group);
}

// The group changes its owner as soon as nothing of it is left on the old one.
void Engine::ContinueMove(Group& group) {
    if (group.movingTo && std::none_of(group.resources.begin(), group.resources.end(),
                                       [](const Resource* resource) { return IsActive(*resource); })) {
        Arrive(group, *group.movingTo);
    }
}

void Engine::Arrive(Group& group, Node& node) {
    m_model.isChanged = true;
    group.owner = &node;
    group.ownerAs.clear();
    group.movingTo = nullptr;
    TerminateAll(group, ""); // a failure stays on the node where it was
    Tell("group", group.name, "is on " + ToUtf8(node.name));
    BringBack(group);
    if (group.failbackAt != 0) { // from here, if there is still a better node
        PlanFailback(group);
    }
}

// Brings online what was asked to be; on a paused node only what holds the quorum.
void Engine::BringBack(Group& group) {
    const bool isPaused = group.owner->status == Node::Status::Paused;
    if (isPaused) {
        const auto quorum = std::find_if(group.resources.begin(), group.resources.end(),
                                         [](const Resource* resource) { return resource->isQuorum; });
        Tell("group", group.name,
             "stays offline" + (quorum == group.resources.end() ? "" : " but for " + ToUtf8((*quorum)->name)),
             ToUtf8(group.owner->name) + " is paused");
    }
    for (Resource* resource : group.resources) {
        const bool isHeldBack = !IsUp(*group.owner) && !(isPaused && resource->isQuorum);
        if (isHeldBack || !resource->isWanted || resource->state != StateOffline || IsBlocked(*resource)) {
            continue;
        }
        std::string why;
        if (Refusal(*resource, why) != ERROR_SUCCESS) {
            Tell("resource", resource->name, "stays offline", why);
        } else {
            BringOnline(*resource);
        }
    }
}

Code Engine::Fail(Resource& resource, const std::string& why) {
    if (!IsActive(resource)) {
        return ERROR_RESMON_INVALID_STATE;
    }
    HasFailed(resource, why);
    return ERROR_SUCCESS;
}

Code Engine::Online(Group& group) {
    if (!RunsOn(m_model, *group.owner)) {
        return ERROR_CLUSTER_NODE_DOWN;
    }
    if (group.owner->status == Node::Status::Paused) {
        return ERROR_SHARING_PAUSED;
    }
    if (group.movingTo) {
        return ERROR_INVALID_STATE;
    }
    Code result = ERROR_SUCCESS;
    for (Resource* resource : group.resources) {
        const Code code = resource->state == StateOnlinePending ? ERROR_IO_PENDING : Online(*resource);
        if (code != ERROR_SUCCESS && (result == ERROR_SUCCESS || result == ERROR_IO_PENDING)) {
            result = code;
        }
    }
    return result;
}

Code Engine::Offline(Group& group) {
    if (!RunsOn(m_model, *group.owner)) {
        return ERROR_CLUSTER_NODE_DOWN;
    }
    if (group.movingTo) {
        return ERROR_INVALID_STATE;
    }
    Code result = ERROR_SUCCESS;
    for (Resource* resource : group.resources) {
        const Code code = resource->state == StateOfflinePending ? ERROR_IO_PENDING : Offline(*resource);
        if (code != ERROR_SUCCESS && resource->state != StateFailed &&
            (result == ERROR_SUCCESS || result == ERROR_IO_PENDING)) {
            result = code;
        }
    }
    return result;
}

Code Engine::Move(Group& group, Node* destination) {
    if (!HasQuorum(m_model)) {
        return ERROR_CLUSTER_NODE_DOWN;
    }
    if (group.movingTo || std::any_of(group.resources.begin(), group.resources.end(), [](const Resource* resource) {
            return resource->state == StateOfflinePending;
        })) {
        return ERROR_INVALID_STATE;
    }
    if (destination == group.owner) {
        return ERROR_SUCCESS;
    }
    if (!destination) {
        destination = BestNode(m_model, group);
        if (!destination) {
            return ERROR_HOST_NODE_NOT_AVAILABLE;
        }
    }
    if (destination->status != Node::Status::Up) {
        const bool isPaused = destination->status == Node::Status::Paused;
        return isPaused ? static_cast<Code>(ERROR_CLUSTER_NODE_PAUSED) : static_cast<Code>(ERROR_CLUSTER_NODE_DOWN);
    }
    if (!MayHost(group, *destination)) {
        return ERROR_HOST_NODE_NOT_GROUP_OWNER;
    }
    if (group.failbackAt != 0) {
        group.failbackAt = 0;
        Tell("group", group.name, "does not fail back", "it is moved by hand");
    }
    BeginMove(group, *destination, "asked for");
    return group.movingTo ? static_cast<Code>(ERROR_IO_PENDING) : static_cast<Code>(ERROR_SUCCESS);
}

} // namespace clussim
