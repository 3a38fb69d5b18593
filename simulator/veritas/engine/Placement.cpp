// On which systems a group may come online, and which one is chosen.
#include "VcsEngine.h"

#include <algorithm>

namespace vcssim {

const GroupPlace* Engine::PlaceOf(std::size_t group, std::size_t system) const {
    for (const GroupPlace& place : m_model.groups[group].places) {
        if (place.system == system) {
            return &place;
        }
    }
    return nullptr;
}

// The first resource that is faulted there.
std::string Engine::FaultedOn(std::size_t group, std::size_t system) const {
    for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
        if (Status(group, i, system).condition == ResourceStatus::Faulted) {
            return m_model.groups[group].resources[i].name;
        }
    }
    return "";
}

std::string Engine::WhyNotPlaced(std::size_t group, std::size_t system, std::size_t from, Placement placement) const {
    const GroupPlace* const place = PlaceOf(group, system);
    const std::string& name = SystemName(system);
    if (!place || !place->enabled) {
        return "group " + GroupName(group) + (place ? " is disabled on " : " has not in its SystemList ") + name;
    }
    if (!m_state.systems[system].IsRunning()) {
        return "system " + name + " is " + m_state.systems[system].state;
    }
    if (m_state.systems[system].frozen) {
        return "system " + name + " is frozen";
    }
    const bool chosen = placement == Placement::Chosen;
    if (chosen && system != from && IsActive(group, system)) {
        return "group " + GroupName(group) + " is online on " + name;
    }
    const std::string faulted = FaultedOn(group, system);
    if (chosen && !faulted.empty()) {
        return "resource " + faulted + " is faulted on " + name;
    }
    for (std::size_t other = 0; other < m_model.systems.size(); ++other) {
        if (!m_model.groups[group].parallel && other != system && other != from && IsActive(group, other)) {
            return "group " + GroupName(group) + " is online on " + SystemName(other);
        }
    }
    if (chosen && !HasRoom(group, system)) {
        return "system " + name + " has no room for the Prerequisites of group " + GroupName(group);
    }
    const std::string unmet = Unmet(group, system);
    return !unmet.empty() || chosen ? unmet : WhyInTheWay(group, system);
}

// Why it can be brought online on no system.
std::string Engine::WhyNowhere(std::size_t group, std::size_t from) const {
    std::string text;
    for (const GroupPlace& place : m_model.groups[group].places) {
        std::string why = WhyNotPlaced(group, place.system, from, Placement::Chosen);
        if (why.empty()) {
            why = place.system == from ? "it comes from " + SystemName(from)
                                       : "system " + SystemName(place.system) + " is in another zone";
        }
        if (text.find(why) == std::string::npos) {
            text += (text.empty() ? "" : "; ") + why;
        }
    }
    return text.empty() ? "its SystemList is empty" : text;
}

// The system that the group's policy chooses, of its zone if there is one.
std::size_t Engine::Choose(std::size_t group, std::size_t from, bool excludesFrom) const {
    const GroupModel& model = m_model.groups[group];
    const GroupPlace* const left = from == NoPlace ? nullptr : PlaceOf(group, from);
    const int zone = left ? left->zone : -1;
    std::vector<GroupPlace> sameZone;
    std::vector<GroupPlace> others;
    for (const GroupPlace& place : model.places) {
        if ((excludesFrom && place.system == from) ||
            !WhyNotPlaced(group, place.system, from, Placement::Chosen).empty()) {
            continue;
        }
        (zone != -1 && place.zone == zone ? sameZone : others).push_back(place);
    }
    if (!sameZone.empty()) {
        return Preferred(group, sameZone);
    }
    const bool staysInZone = model.autoFailOver == 2 && zone != -1;
    return others.empty() || staysInZone ? NoPlace : Preferred(group, others);
}

std::size_t Engine::Preferred(std::size_t group, const std::vector<GroupPlace>& places) const {
    const GroupModel::Policy policy = m_model.groups[group].policy;
    const auto isBetter = [&](const GroupPlace& a, const GroupPlace& b) {
        if (policy == GroupModel::Load) {
            const int capacityOfA = AvailableCapacity(a.system);
            const int capacityOfB = AvailableCapacity(b.system);
            return capacityOfA != capacityOfB ? capacityOfA > capacityOfB : SystemName(a.system) < SystemName(b.system);
        }
        const std::size_t groupsOnA = policy == GroupModel::RoundRobin ? CountGroups(a.system) : 0;
        const std::size_t groupsOnB = policy == GroupModel::RoundRobin ? CountGroups(b.system) : 0;
        return groupsOnA != groupsOnB ? groupsOnA < groupsOnB : a.priority < b.priority;
    };
    return std::min_element(places.begin(), places.end(), isBetter)->system;
}

std::size_t Engine::CountGroups(std::size_t system) const {
    std::size_t count = 0;
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        count += IsActive(group, system) ? 1 : 0;
    }
    return count;
}

int Engine::AvailableCapacity(std::size_t system) const {
    int capacity = m_model.systems[system].capacity;
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        capacity -= IsActive(group, system) ? m_model.groups[group].load : 0;
    }
    return capacity;
}

// Whether the system's Limits, less what its groups take of them, hold the group's Prerequisites.
bool Engine::HasRoom(std::size_t group, std::size_t system) const {
    for (const auto& needed : m_model.groups[group].prerequisites) {
        const auto limit = m_model.systems[system].limits.find(needed.first);
        int left = limit == m_model.systems[system].limits.end() ? 0 : limit->second;
        for (std::size_t other = 0; other < m_model.groups.size(); ++other) {
            const auto taken = m_model.groups[other].prerequisites.find(needed.first);
            if (other != group && taken != m_model.groups[other].prerequisites.end() && IsActive(other, system)) {
                left -= taken->second;
            }
        }
        if (left < needed.second) {
            return false;
        }
    }
    return true;
}

} // namespace vcssim
