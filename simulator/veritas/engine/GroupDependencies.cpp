// What groups that depend on each other demand, and what a fault or a move of one means for the others.
#include "VcsEngine.h"

namespace vcssim {

namespace {

bool IsLocal(const GroupDependency& dependency) {
    return dependency.location == GroupDependency::Local;
}

bool IsSoft(const GroupDependency& dependency) {
    return dependency.rigidity == GroupDependency::Soft;
}

bool IsHard(const GroupDependency& dependency) {
    return dependency.rigidity == GroupDependency::Hard;
}

} // namespace

std::vector<Engine::Parent> Engine::ParentsOf(std::size_t group) const {
    std::vector<Parent> parents;
    for (std::size_t other = 0; other < m_model.groups.size(); ++other) {
        for (const GroupDependency& dependency : m_model.groups[other].dependencies) {
            if (dependency.child == group) {
                parents.push_back({other, dependency});
            }
        }
    }
    return parents;
}

// Whether the group that has the dependency may be online on the system.
bool Engine::Satisfies(const GroupDependency& dependency, std::size_t system) const {
    if (dependency.offline) {
        return !IsActive(dependency.child, system);
    }
    for (std::size_t other = 0; other < m_model.systems.size(); ++other) {
        const bool counts = dependency.location == GroupDependency::Global || (other == system) == IsLocal(dependency);
        if (counts && IsUp(dependency.child, other)) {
            return true;
        }
    }
    return false;
}

std::string Engine::Unmet(std::size_t group, std::size_t system) const {
    for (const GroupDependency& dependency : m_model.groups[group].dependencies) {
        if (Satisfies(dependency, system)) {
            continue;
        }
        const std::string child = "group " + GroupName(dependency.child);
        if (dependency.offline) {
            return child + " is online on " + SystemName(system);
        }
        if (dependency.location == GroupDependency::Global) {
            return child + " is not online";
        }
        return child + " is not online on " + (IsLocal(dependency) ? "" : "a system other than ") + SystemName(system);
    }
    return "";
}

// A parent that has to keep away from the group.
std::string Engine::WhyInTheWay(std::size_t group, std::size_t system) const {
    for (const Parent& parent : ParentsOf(group)) {
        const bool keepsAway = parent.dependency.offline || (parent.dependency.location == GroupDependency::Remote &&
                                                             !m_model.groups[group].parallel);
        if (keepsAway && IsActive(parent.group, system)) {
            return "group " + GroupName(parent.group) + " is online on " + SystemName(system);
        }
    }
    return "";
}

std::string Engine::WhyNotOffline(std::size_t group, std::size_t system) const {
    if (m_state.frozenGroups[group]) {
        return "group " + GroupName(group) + " is frozen";
    }
    if (!IsActive(group, system)) {
        return "";
    }
    for (const Parent& parent : ParentsOf(group)) {
        if (parent.dependency.offline || IsSoft(parent.dependency)) {
            continue;
        }
        for (std::size_t place = 0; place < m_model.systems.size(); ++place) {
            if (!IsActive(parent.group, place)) {
                continue;
            }
            bool without = false; // whether another instance is enough
            for (std::size_t other = 0; other < m_model.systems.size(); ++other) {
                const bool counts = parent.dependency.location == GroupDependency::Global ||
                                    (other == place) == IsLocal(parent.dependency);
                without = without || (other != system && counts && IsUp(group, other));
            }
            if (!without) {
                return "group " + GroupName(parent.group) + ", which depends on it, is online on " + SystemName(place);
            }
        }
    }
    return "";
}

std::string Engine::WhyNotSwitched(std::size_t group, std::size_t from, std::size_t to) const {
    for (const Parent& parent : ParentsOf(group)) {
        for (std::size_t place = 0; place < m_model.systems.size(); ++place) {
            const bool isLocal = !parent.dependency.offline && IsLocal(parent.dependency);
            const bool refuses = isLocal ? place == from && !IsHard(parent.dependency)
                                         : !parent.dependency.offline && !IsSoft(parent.dependency);
            if (refuses && IsActive(parent.group, place)) {
                return "group " + GroupName(parent.group) + ", which depends on it, is online on " + SystemName(place);
            }
        }
    }
    return to == NoPlace ? "" : WhyInTheWay(group, to);
}

// Whether a group that this one waits for may still come online.
bool Engine::MayStillBeMet(std::size_t group) const {
    for (const GroupDependency& dependency : m_model.groups[group].dependencies) {
        if (IsMoving(dependency.child)) {
            return true;
        }
        for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
            if (!IsStill(dependency.child, system)) {
                return true;
            }
        }
    }
    return false;
}

// Of "online local hard" neither stays without the other: the parent goes offline before the child, which follows a
// parent with a fault if there is another system for it.
void Engine::StopHardRelatives(std::size_t group, std::size_t system) {
    const auto isFree = [&](std::size_t other) {
        const Move* const move = MoveFrom(other, system);
        return IsActive(other, system) && !m_state.frozenGroups[other] && !(move && move->phase == Move::Stopping);
    };
    for (const Parent& parent : ParentsOf(group)) {
        if (!parent.dependency.offline && IsHard(parent.dependency) && isFree(parent.group)) {
            StopHardRelatives(parent.group, system);
            Stop({parent.group, system, NoPlace, Move::Child, Move::Stopping, false},
                 "it depends on group " + GroupName(group));
        }
    }
    for (const GroupDependency& dependency : m_model.groups[group].dependencies) {
        if (!dependency.offline && IsHard(dependency) && isFree(dependency.child) &&
            Choose(dependency.child, system, true) != NoPlace) {
            Stop({dependency.child, system, NoPlace, Move::Loss, Move::Stopping, false},
                 "group " + GroupName(group) + " depends on it");
        }
    }
}

// The group is offline on the system, and not because somebody asked for that.
void Engine::StopParents(std::size_t group, std::size_t system) {
    for (const Parent& parent : ParentsOf(group)) {
        if (parent.dependency.offline || m_state.frozenGroups[parent.group]) {
            continue;
        }
        for (std::size_t place = 0; place < m_model.systems.size(); ++place) {
            if (!IsActive(parent.group, place) || MoveFrom(parent.group, place) ||
                (IsLocal(parent.dependency) && place != system)) {
                continue;
            }
            if (!IsSoft(parent.dependency)) {
                Stop({parent.group, place, NoPlace, Move::Child, Move::Stopping, false},
                     "it depends on group " + GroupName(group));
            } else if (IsLocal(parent.dependency)) {
                m_state.moves.push_back({parent.group, place, NoPlace, Move::Child, Move::Following, false});
            }
        }
    }
}

// The group comes online on the system: those that have to keep away from it go elsewhere.
void Engine::DisplaceParents(std::size_t group, std::size_t system) {
    for (const Parent& parent : ParentsOf(group)) {
        const bool keepsAway = parent.dependency.offline || (parent.dependency.location == GroupDependency::Remote &&
                                                             !m_model.groups[group].parallel);
        const Move* const move = MoveFrom(parent.group, system);
        if (keepsAway && IsActive(parent.group, system) && !m_state.frozenGroups[parent.group] &&
            !(move && move->phase == Move::Stopping)) {
            Stop({parent.group, system, NoPlace, Move::Child, Move::Stopping, false},
                 "group " + GroupName(group) + " comes online there");
        }
    }
}

// Whether groups that go offline on the system have to be so first.
bool Engine::WaitsForParents(std::size_t group, std::size_t system) const {
    for (const Parent& parent : ParentsOf(group)) {
        const bool goesFirst = parent.dependency.offline || (IsLocal(parent.dependency) && !IsSoft(parent.dependency));
        if (!goesFirst || !IsActive(parent.group, system)) {
            continue;
        }
        for (const Move& move : m_state.moves) {
            if (move.group == parent.group && move.from == system && move.phase == Move::Stopping) {
                return true;
            }
        }
    }
    return false;
}

} // namespace vcssim
