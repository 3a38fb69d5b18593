// Nodes that are paused, lost and come back; failback, and the end of a cluster without its quorum.
#include "Engine.h"
#include "FailoverRules.h"

#include "common/Text.h"

#include <windows.h>

#include <algorithm>

namespace clussim {

using common::ToUtf8;

namespace {

// That it is paused is kept with the cluster's configuration, and holds when its service starts again.
void TakeAway(Node& node, Node::Status status) {
    node.isPaused = node.isPaused || node.status == Node::Status::Paused;
    node.status = status;
}

bool IsThisComputerDown(const Model& model) {
    return std::any_of(model.nodes.begin(), model.nodes.end(),
                       [](const Node& node) { return node.isThisComputer && node.status == Node::Status::Down; });
}

} // namespace

Code Engine::Pause(Node& node) {
    if (!HasQuorum(m_model)) {
        return ERROR_CLUSTER_NODE_DOWN;
    }
    if (node.status == Node::Status::Up) {
        node.status = Node::Status::Paused;
        m_model.isChanged = true;
        Tell("node", node.name, "is paused");
        return ERROR_SUCCESS;
    }
    return node.status == Node::Status::Paused ? static_cast<Code>(ERROR_SUCCESS)
                                               : static_cast<Code>(ERROR_CLUSTER_NODE_DOWN);
}

Code Engine::Resume(Node& node) {
    if (node.status != Node::Status::Paused) {
        return node.status == Node::Status::Up ? static_cast<Code>(ERROR_CLUSTER_NODE_NOT_PAUSED)
                                               : static_cast<Code>(ERROR_CLUSTER_NODE_DOWN);
    }
    node.status = Node::Status::Up;
    m_model.isChanged = true;
    Tell("node", node.name, "is resumed");
    for (Group& group : m_model.groups) {
        if (group.owner == &node && !group.movingTo) {
            ActOnFailuresOf(group);
            BringBack(group);
        }
        PlanFailback(group);
    }
    return ERROR_SUCCESS;
}

void Engine::NodeGoesDown(Node& node) {
    if (node.status == Node::Status::Down) {
        return;
    }
    const bool wasRunning = HasQuorum(m_model) || m_model.running;
    TakeAway(node, Node::Status::Down);
    m_model.isChanged = true;
    Tell("node", node.name, "goes down");
    if (node.isThisComputer) {
        m_model.running = false;
    }
    if (!HasQuorum(m_model)) {
        const std::size_t left = Members(m_model);
        if (wasRunning) {
            StopCluster(left == 0 ? "no node is left" : Votes(m_model, left) + " are no majority");
        }
        return;
    }
    const std::string why = ToUtf8(node.name) + " is down";
    for (Group& group : m_model.groups) {
        if (group.owner == &node) {
            TerminateAll(group, why);
            Node* const refuge = group.movingTo && IsUp(*group.movingTo) ? group.movingTo : Refuge(m_model, group);
            Tell("group", group.name, "fails over from " + ToUtf8(node.name) + " to " + ToUtf8(refuge->name), why);
            Arrive(group, *refuge);
        } else if (group.movingTo == &node) {
            group.movingTo = group.owner; // what has gone offline for the move comes back
            Tell("group", group.name, "stays on " + ToUtf8(group.owner->name), why);
        }
    }
}

void Engine::NodeComesUp(Node& node) {
    if (node.status != Node::Status::Down && node.status != Node::Status::Joining) {
        ServeHere(node);
        return;
    }
    if (HasQuorum(m_model)) {
        Join(node, "comes up");
        m_model.running = (m_model.running || node.isThisComputer) && !IsThisComputerDown(m_model);
        for (Group& group : m_model.groups) {
            PlanFailback(group);
        }
        return;
    }
    node.status = Node::Status::Joining;
    m_model.isChanged = true;
    if (CanStart(m_model)) {
        Join(node, "comes up");
        StartCluster();
    } else {
        Tell("node", node.name, "comes up");
        Tell("cluster", m_model.name, "does not start", Votes(m_model, Candidates(m_model)) + " are no majority");
    }
}

// It takes part from now on.
void Engine::Join(Node& node, const char* how) {
    Tell("node", node.name, std::string(how) + (node.isPaused ? ", and is paused as before" : ""));
    node.status = node.isPaused ? Node::Status::Paused : Node::Status::Up;
    node.isPaused = false;
    m_model.isChanged = true;
}

// The services that have tried to join until now find each other.
void Engine::StartCluster() {
    for (Node& node : m_model.nodes) {
        if (node.status == Node::Status::Joining) {
            Join(node, "joins");
        }
    }
    m_model.running = !IsThisComputerDown(m_model);
    const bool isCounted = m_model.quorum == Quorum::Majority;
    Tell("cluster", m_model.name, "starts", isCounted ? Votes(m_model, Members(m_model)) + " are a majority" : "");
    for (Group& group : m_model.groups) {
        Arrive(group, *FirstRefuge(m_model, group));
    }
}

// The service of this computer starts in a model that only says that it does not run.
void Engine::ServeHere(Node& node) {
    if (!node.isThisComputer || m_model.running || !HasQuorum(m_model)) {
        return;
    }
    m_model.running = true;
    m_model.isChanged = true;
    Tell("node", node.name, "comes up");
    for (Group& group : m_model.groups) {
        if (group.owner == &node && !group.movingTo) {
            BringBack(group);
        }
        PlanFailback(group);
    }
}

void Engine::SetNetwork(Network& network, NetworkState state) {
    if (network.state == state) {
        return;
    }
    network.state = state;
    m_model.isChanged = true;
    Tell("network", network.name, state == NetworkState::Up ? "comes up" : "goes down");
    for (Resource& resource : m_model.resources) {
        if (resource.state == StateOnline && LacksNetwork(m_model, resource)) {
            Fail(resource, NetworkMissing(resource));
        }
    }
}

void Engine::Vanish(Resource& resource) {
    Tell("resource", resource.name, "is deleted");
    while (!resource.dependants.empty()) {
        Model::Unlink(*resource.dependants.back(), resource);
    }
    m_model.SetState(resource, StateOffline);
    resource.isCore = resource.isQuorum = false; // no rule holds back what befalls the cluster
    Group& group = *resource.group;
    m_model.Delete(resource);
    ContinueMove(group);
}

Code Engine::Appear(Group& group, const std::wstring& resourceName) {
    std::wstring id;
    const Code code = m_model.Create(group, resourceName, L"Generic Service", id);
    if (code == ERROR_SUCCESS) {
        Tell("resource", resourceName, "is created");
    }
    return code;
}

void Engine::LoseQuorum() {
    StopCluster("the quorum is lost");
}

// The service ends on every node, and tries to join again: nobody owns anything until it runs.
void Engine::StopCluster(const std::string& why) {
    m_model.running = false;
    m_model.isChanged = true;
    Tell("cluster", m_model.name, "stops", why);
    for (Group& group : m_model.groups) {
        group.movingTo = nullptr;
        group.failbackAt = 0;
        TerminateAll(group, "the cluster stops");
    }
    for (Node& node : m_model.nodes) {
        if (node.status != Node::Status::Down) {
            TakeAway(node, Node::Status::Joining);
        }
    }
}

// The best of its preferred owners that is up takes the group back, at once or in the hours that are set for it.
void Engine::PlanFailback(Group& group) {
    if (NumberOf(group.common, L"AutoFailbackType", 0) == 0 || group.preferredOwners.empty()) {
        return;
    }
    m_model.isChanged = true;
    const std::int64_t plannedBefore = group.failbackAt;
    group.failbackAt = m_now;
    if (group.movingTo) { // it is seen to when the group has arrived
        Expect(group);
        return;
    }
    const auto best = std::find_if(group.preferredOwners.begin(), group.preferredOwners.end(),
                                   [&group](const Node* node) { return IsUp(*node) && MayHost(group, *node); });
    if (best == group.preferredOwners.end() || *best == group.owner) {
        group.failbackAt = 0;
        return;
    }
    const std::uint32_t start = NumberOf(group.common, L"FailbackWindowStart", Never);
    const std::uint32_t end = NumberOf(group.common, L"FailbackWindowEnd", Never);
    if (start < 24 && end < 24) {
        const std::int64_t hour = m_now / MsPerHour % 24;
        const std::int64_t sinceStart = (hour - start + 24) % 24;
        if (sinceStart >= (end - start + 24) % 24) {
            group.failbackAt = m_now - m_now % MsPerHour + (24 - sinceStart) % 24 * MsPerHour;
        }
    }
    if (group.failbackAt > m_now && group.failbackAt != plannedBefore) {
        Tell("group", group.name,
             "will fail back to " + ToUtf8((*best)->name) + " in " + Seconds(group.failbackAt - m_now),
             "its failback window begins at " + std::to_string(start) + " h of the cluster's time");
    }
    Expect(group);
}

void Engine::FailBack(Group& group) {
    group.failbackAt = 0;
    m_model.isChanged = true;
    for (Node* node : group.preferredOwners) {
        if (node == group.owner) {
            Tell("group", group.name, "does not fail back",
                 "of its preferred owners that are up " + ToUtf8(node->name) + " is the best");
            return;
        }
        if (IsUp(*node) && MayHost(group, *node)) {
            BeginMove(group, *node, "it fails back to a preferred owner");
            return;
        }
    }
    Tell("group", group.name, "does not fail back", "no preferred owner that is up can host it");
}

} // namespace clussim
