// What goes wrong, and what follows from it on the same system: faults of resources and groups, systems that leave and
// come back.
#include "VcsEngine.h"

#include <algorithm>

namespace vcssim {

std::string Engine::Fault(std::size_t group, std::size_t resource, std::size_t system) {
    const ResourceModel& model = m_model.groups[group].resources[resource];
    ResourceStatus& status = Status(group, resource, system);
    const bool isOnline = status.condition == ResourceStatus::Online;
    if (!m_state.systems[system].IsRunning()) {
        return "system " + SystemName(system) + " is " + m_state.systems[system].state;
    }
    if (!isOnline || status.transition == ResourceStatus::GoesOffline) {
        return "resource " + model.name + " is not online on system " + SystemName(system);
    }
    if (m_state.clock - status.restarted >= model.confInterval) {
        status.restarts = 0;
    }
    if (!model.persistent && !m_state.frozenGroups[group] && status.transition == ResourceStatus::Still &&
        status.restarts < model.restartLimit) {
        ++status.restarts;
        status.restarted = m_state.clock;
        status.transition = ResourceStatus::Restarts;
        status.due = m_state.clock + std::min(model.onlineTime, model.onlineTimeout);
        NoteResource(group, resource, system, "is restarted",
                     "fault; restart " + std::to_string(status.restarts) + " of " + std::to_string(model.restartLimit));
    } else {
        ResourceFaulted(group, resource, system, "fault");
    }
    Settle();
    return "";
}

void Engine::ResourceFaulted(std::size_t group, std::size_t resource, std::size_t system, const std::string& why) {
    ResourceStatus& status = Status(group, resource, system);
    status = ResourceStatus();
    status.condition = ResourceStatus::Faulted;
    NoteResource(group, resource, system, "is FAULTED", why);
    if (m_state.frozenGroups[group]) {
        Note("nothing is done about it", "group " + GroupName(group) + " is frozen");
    } else if (!m_model.groups[group].faultPropagation) {
        Note("nothing is done about it", "FaultPropagation of group " + GroupName(group) + " is 0");
    } else {
        Propagate(group, resource, system);
    }
}

// What requires the resource goes offline. When a critical one is among them, the group has a fault.
void Engine::Propagate(std::size_t group, std::size_t resource, std::size_t system) {
    const GroupModel& model = m_model.groups[group];
    std::size_t critical = model.resources[resource].critical ? resource : NoPlace;
    std::vector<bool> seen(model.resources.size(), false);
    std::vector<std::size_t> open = {resource};
    seen[resource] = true;
    while (!open.empty()) {
        const std::size_t next = open.back();
        open.pop_back();
        for (const std::size_t parent : model.resources[next].parents) {
            if (seen[parent]) {
                continue;
            }
            seen[parent] = true;
            open.push_back(parent);
            const ResourceStatus& status = Status(group, parent, system);
            const bool isActive =
                status.condition == ResourceStatus::Online || status.transition != ResourceStatus::Still;
            if (isActive && model.resources[parent].critical && critical == NoPlace) {
                critical = parent;
            }
            AskOffline(group, parent, system);
        }
    }
    const Move* const move = MoveFrom(group, system);
    if (move && move->phase == Move::Stopping) {
        return; // is going offline anyway, and what follows is settled
    }
    if (critical != NoPlace) {
        GroupFaulted(group, system, critical);
    } else {
        ToldStill(group, system);
    }
}

void Engine::GroupFaulted(std::size_t group, std::size_t system, std::size_t resource) {
    bool retries = true; // a fault of what is persistent stays where it is
    for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
        retries = retries && !(m_model.groups[group].resources[i].persistent &&
                               Status(group, i, system).condition == ResourceStatus::Faulted);
    }
    StopHardRelatives(group, system);
    Stop({group, system, NoPlace, Move::Fault, Move::Stopping, retries},
         "resource " + m_model.groups[group].resources[resource].name + " is critical");
}

std::string Engine::Clear(std::size_t group, std::size_t resource, std::size_t system) {
    ResourceStatus& status = Status(group, resource, system);
    if (status.condition != ResourceStatus::Faulted) {
        return "resource " + m_model.groups[group].resources[resource].name + " is not faulted on system " +
               SystemName(system);
    }
    status = ResourceStatus();
    NoteResource(group, resource, system, "is OFFLINE", "its fault is cleared");
    return "";
}

// A persistent resource comes back by itself. A group that is offline everywhere because of it starts again.
std::string Engine::Recover(std::size_t group, std::size_t resource, std::size_t system) {
    const ResourceModel& model = m_model.groups[group].resources[resource];
    ResourceStatus& status = Status(group, resource, system);
    if (!model.persistent || status.condition == ResourceStatus::Online) {
        return "resource " + model.name +
               (model.persistent ? " is online on system " + SystemName(system) : " is not persistent");
    }
    const bool wasFaulted = status.condition == ResourceStatus::Faulted;
    status = ResourceStatus();
    status.condition = ResourceStatus::Online;
    NoteResource(group, resource, system, "is ONLINE", "its fault is over");
    bool isActive = IsMoving(group);
    for (std::size_t i = 0; i < m_model.systems.size(); ++i) {
        isActive = isActive || IsActive(group, i);
    }
    if (wasFaulted && m_model.groups[group].autoRestart && !isActive && !m_state.frozenGroups[group] &&
        WhyNotPlaced(group, system, NoPlace, Placement::Chosen).empty()) {
        Start(group, system, "AutoRestart: resource " + model.name + " is back");
    }
    Settle();
    return "";
}

std::string Engine::SystemDown(std::size_t system) {
    SystemStatus& status = m_state.systems[system];
    if (!status.IsRunning() && status.state != "LEAVING") {
        return "system " + SystemName(system) + " is " + status.state;
    }
    status.state = "FAULTED";
    Note("system " + SystemName(system) + " is FAULTED", "it went down");
    Lose(system);
    Settle();
    return "";
}

void Engine::NoticeLosses() {
    for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
        const std::string& state = m_state.systems[system].state;
        if (m_state.systems[system].IsRunning() || state == "LEAVING") {
            continue;
        }
        bool any = false;
        for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
            any = any || IsActive(group, system);
        }
        if (any) {
            Note("system " + SystemName(system) + " is " + state, "set from outside");
            Lose(system);
        }
    }
    Settle();
}

// Nothing is online on the system any more. First all is lost, then it is asked what follows.
void Engine::Lose(std::size_t system) {
    std::vector<std::size_t> lost;
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        if (IsActive(group, system)) {
            lost.push_back(group);
        }
        for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
            const bool persistent = m_model.groups[group].resources[i].persistent;
            Status(group, i, system) = ResourceStatus();
            Status(group, i, system).condition = persistent ? ResourceStatus::Online : ResourceStatus::Offline;
        }
        m_state.retries[group][system] = RetryStatus();
    }
    for (const std::size_t group : lost) {
        Note("group " + GroupName(group) + " is OFFLINE on " + SystemName(system), "the system is gone");
        Move* const move = MoveFrom(group, system);
        if (m_state.frozenGroups[group]) {
            Note("nothing is done about it", "group " + GroupName(group) + " is frozen");
            if (move) {
                Forget(static_cast<std::size_t>(move - m_state.moves.data()));
            }
        } else if (!move) {
            m_state.moves.push_back({group, system, NoPlace, Move::Loss, Move::Stopping, false});
        } else {
            move->cause = move->cause == Move::Leaving || move->phase == Move::Following ? Move::Loss : move->cause;
            move->phase = Move::Stopping;
            move->retries = false;
        }
    }
}

// The system stops the cluster's engine in an orderly way.
std::string Engine::SystemExit(std::size_t system, bool evacuate) {
    if (!m_state.systems[system].IsRunning()) {
        return "system " + SystemName(system) + " is " + m_state.systems[system].state;
    }
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        if (IsActive(group, system) && m_state.frozenGroups[group]) {
            return "group " + GroupName(group) + ", which is online there, is frozen";
        }
    }
    m_state.systems[system].state = "LEAVING";
    Note("system " + SystemName(system) + " is LEAVING", evacuate ? "asked to, with its groups moved" : "asked to");
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        if (!IsActive(group, system)) {
            continue;
        }
        if (Move* const move = MoveFrom(group, system)) {
            if (move->phase == Move::Stopping) {
                continue;
            }
            Forget(static_cast<std::size_t>(move - m_state.moves.data()));
        }
        const bool moves = evacuate && !m_model.groups[group].parallel;
        Stop({group, system, NoPlace, moves ? Move::Switch : Move::Leaving, Move::Stopping, false},
             "system " + SystemName(system) + " leaves the cluster");
    }
    Settle();
    return "";
}

// Systems that wait for their groups to be offline are gone then.
bool Engine::LeaveEmptySystems() {
    bool any = false;
    for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
        if (m_state.systems[system].state != "LEAVING") {
            continue;
        }
        bool isEmpty = true;
        for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
            isEmpty = isEmpty && !IsActive(group, system);
        }
        if (isEmpty) {
            m_state.systems[system].state = "EXITED";
            Note("system " + SystemName(system) + " is EXITED", "nothing is online there");
            Lose(system);
            any = true;
        }
    }
    return any;
}

// Faults on the system are forgotten, as everything is probed anew.
std::string Engine::SystemUp(std::size_t system) {
    SystemStatus& status = m_state.systems[system];
    if (status.IsRunning()) {
        return "system " + SystemName(system) + " is RUNNING";
    }
    Lose(system);
    status.state = "RUNNING";
    status.frozen = false;
    Note("system " + SystemName(system) + " is RUNNING", "it came up");
    AutoStartOn(system);
    Settle();
    return "";
}

void Engine::AutoStartOn(std::size_t system) {
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        const GroupModel& model = m_model.groups[group];
        const auto listed = std::find(model.autoStartList.begin(), model.autoStartList.end(), system);
        if (!model.autoStart || listed == model.autoStartList.end() || m_state.frozenGroups[group] || IsMoving(group)) {
            continue;
        }
        bool isActive = false;
        for (std::size_t other = 0; other < m_model.systems.size(); ++other) {
            isActive = isActive || ((other == system || !model.parallel) && IsActive(group, other));
        }
        if (!isActive) {
            m_state.moves.push_back({group, NoPlace, system, Move::AutoStart, Move::Placing, false});
        }
    }
}

// Faults that came in the meantime are acted on when it ends.
void Engine::FreezeGroup(std::size_t group, bool frozen) {
    m_state.frozenGroups[group] = frozen;
    Note("group " + GroupName(group) + (frozen ? " is frozen" : " is no longer frozen"), "asked to");
    if (frozen || !m_model.actsOnUnfreeze || !m_model.groups[group].faultPropagation) {
        return;
    }
    for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
        for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
            if (Status(group, i, system).condition == ResourceStatus::Faulted && IsActive(group, system) &&
                IsStill(group, system)) {
                Propagate(group, i, system);
            }
        }
    }
    Settle();
}

std::string Engine::FreezeSystem(std::size_t system, bool frozen, bool evacuate) {
    if (evacuate) {
        for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
            if (IsActive(group, system) && !MoveFrom(group, system) && !m_model.groups[group].parallel &&
                !m_state.frozenGroups[group]) {
                Stop({group, system, NoPlace, Move::Switch, Move::Stopping, false},
                     "system " + SystemName(system) + " is evacuated");
            }
        }
    }
    m_state.systems[system].frozen = frozen;
    Note("system " + SystemName(system) + (frozen ? " is frozen" : " is no longer frozen"), "asked to");
    Settle();
    return "";
}

} // namespace vcssim
