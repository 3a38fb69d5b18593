// Groups on their way: off a system, and onto the next one.
#include "VcsEngine.h"

#include <algorithm>

namespace vcssim {

namespace {

// Groups that are moved because somebody wants it keep away from where they were.
bool LeavesForGood(const Move& move) {
    return move.cause == Move::Switch || move.cause == Move::Loss;
}

} // namespace

EngineState::EngineState(const EngineModel& model)
    : systems(model.systems.size()), frozenGroups(model.groups.size(), false),
      retries(model.groups.size(), std::vector<RetryStatus>(model.systems.size())) {
    for (const GroupModel& group : model.groups) {
        resources.emplace_back();
        for (const ResourceModel& resource : group.resources) {
            ResourceStatus status;
            status.condition = resource.persistent ? ResourceStatus::Online : ResourceStatus::Offline;
            resources.back().emplace_back(model.systems.size(), status);
        }
    }
}

std::string Engine::Online(std::size_t group, std::size_t system) {
    std::string why = WhyNotOnline(group, system);
    if (!why.empty()) {
        return why;
    }
    Start(group, system, "asked to");
    Settle();
    return "";
}

std::string Engine::WhyNotOnline(std::size_t group, std::size_t system) const {
    if (m_state.frozenGroups[group]) {
        return "group " + GroupName(group) + " is frozen";
    }
    if (IsMoving(group)) {
        return "group " + GroupName(group) + " is on its way";
    }
    return WhyNotPlaced(group, system, NoPlace, Placement::Asked);
}

std::string Engine::Offline(std::size_t group, std::size_t system) {
    std::string why = WhyNotOffline(group, system);
    if (!why.empty()) {
        return why;
    }
    // What was to follow does not.
    for (std::size_t i = m_state.moves.size(); i > 0; --i) {
        const Move& move = m_state.moves[i - 1];
        if (move.group == group && (move.from == system || move.phase == Move::Placing)) {
            Forget(i - 1);
        }
    }
    if (IsActive(group, system)) {
        Stop({group, system, NoPlace, Move::Offline, Move::Stopping, false}, "asked to");
    }
    Settle();
    return "";
}

std::string Engine::Switch(std::size_t group, std::size_t to) {
    if (m_model.groups[group].parallel) {
        return "group " + GroupName(group) + " is parallel";
    }
    if (m_state.frozenGroups[group]) {
        return "group " + GroupName(group) + " is frozen";
    }
    if (IsMoving(group)) {
        return "group " + GroupName(group) + " is on its way";
    }
    std::size_t from = 0;
    while (from < m_model.systems.size() && !IsActive(group, from)) {
        ++from;
    }
    if (from == m_model.systems.size()) {
        return "group " + GroupName(group) + " is not online";
    }
    if (from == to) {
        return "group " + GroupName(group) + " is online on system " + SystemName(to);
    }
    std::string why = WhyNotSwitched(group, from, to);
    if (why.empty() && to != NoPlace) {
        why = WhyNotPlaced(group, to, from, Placement::Chosen);
    } else if (why.empty() && Choose(group, from, true) == NoPlace) {
        why = WhyNowhere(group, from);
    }
    if (!why.empty()) {
        return why;
    }
    StopHardRelatives(group, from);
    Stop({group, from, to, Move::Switch, Move::Stopping, false},
         to == NoPlace ? "switch asked for" : "switch to " + SystemName(to) + " asked for");
    Settle();
    return "";
}

Move* Engine::MoveFrom(std::size_t group, std::size_t system) {
    for (Move& move : m_state.moves) {
        if (move.group == group && move.from == system) {
            return &move;
        }
    }
    return nullptr;
}

bool Engine::IsMoving(std::size_t group) const {
    return std::any_of(m_state.moves.begin(), m_state.moves.end(),
                       [group](const Move& move) { return move.group == group && move.phase != Move::Following; });
}

void Engine::Forget(std::size_t move) {
    m_state.moves.erase(m_state.moves.begin() + static_cast<std::ptrdiff_t>(move));
}

// Asks the group to go offline, and notes what follows then. Replaces what was to follow before.
void Engine::Stop(const Move& move, const std::string& reason) {
    Note("group " + GroupName(move.group) + " goes offline on " + SystemName(move.from), reason);
    for (std::size_t i = 0; i < m_model.groups[move.group].resources.size(); ++i) {
        AskOffline(move.group, i, move.from);
    }
    ToldStill(move.group, move.from); // there may be nothing left to wait for
    if (Move* const known = MoveFrom(move.group, move.from)) {
        *known = move;
    } else {
        m_state.moves.push_back(move);
    }
}

void Engine::Start(std::size_t group, std::size_t system, const std::string& reason) {
    Note("group " + GroupName(group) + " goes online on " + SystemName(system), reason);
    const GroupModel& model = m_model.groups[group];
    std::vector<bool> seen(model.resources.size(), false);
    std::vector<std::size_t> marked;
    for (std::size_t i = 0; i < model.resources.size(); ++i) {
        if (model.resources[i].autoStart[system] && !model.resources[i].persistent) {
            MarkOnline(group, i, system, seen, marked);
        }
    }
    for (const std::size_t resource : marked) {
        Status(group, resource, system).transition = ResourceStatus::WaitsOnline;
        Status(group, resource, system).attempts = 0;
    }
    DisplaceParents(group, system);
}

bool Engine::ContinueMoves() {
    for (std::size_t i = 0; i < m_state.moves.size(); ++i) {
        if (Continue(i)) {
            return true;
        }
    }
    return false;
}

// True: something changed; the list of moves may be another one.
bool Engine::Continue(std::size_t index) {
    const Move move = m_state.moves[index];
    if (move.phase == Move::Following) {
        return Follow(index);
    }
    if (move.phase == Move::Placing) {
        return Place(index);
    }
    if (IsActive(move.group, move.from) || WaitsForParents(move.group, move.from)) {
        return false;
    }
    Stopped(index);
    return true;
}

void Engine::Stopped(std::size_t index) {
    const Move move = m_state.moves[index];
    if (move.cause == Move::Offline || move.cause == Move::Leaving) {
        Forget(index);
        return;
    }
    m_state.moves[index].phase = Move::Placing;
    StopParents(move.group, move.from);
}

// The group stays where it is until what it depends on is online elsewhere. When that is not to be, it stays for good.
bool Engine::Follow(std::size_t index) {
    const Move move = m_state.moves[index];
    if (!IsActive(move.group, move.from) || m_state.frozenGroups[move.group] || Unmet(move.group, move.from).empty()) {
        Forget(index);
        return true;
    }
    if (Choose(move.group, move.from, true) != NoPlace) {
        Stop({move.group, move.from, NoPlace, Move::Child, Move::Stopping, false}, Unmet(move.group, move.from));
        return true;
    }
    if (MayStillBeMet(move.group)) {
        return false;
    }
    Forget(index);
    Note("group " + GroupName(move.group) + " stays online on " + SystemName(move.from),
         WhyNowhere(move.group, move.from));
    return true;
}

// On the same system once more, as often as OnlineRetryLimit says.
bool Engine::Retry(const Move& move) {
    const GroupModel& model = m_model.groups[move.group];
    RetryStatus& retry = m_state.retries[move.group][move.from];
    const bool tooSoon = retry.succeeded && m_state.clock - retry.restarted < model.onlineRetryInterval;
    if (!move.retries || tooSoon || retry.retries >= model.onlineRetryLimit ||
        !m_state.systems[move.from].IsRunning()) {
        return false;
    }
    const auto before = m_state.resources[move.group];
    for (auto& systems : m_state.resources[move.group]) {
        if (systems[move.from].condition == ResourceStatus::Faulted) {
            systems[move.from] = ResourceStatus();
        }
    }
    if (!WhyNotPlaced(move.group, move.from, move.from, Placement::Chosen).empty()) {
        m_state.resources[move.group] = before;
        return false;
    }
    ++retry.retries;
    retry.succeeded = false;
    Start(move.group, move.from,
          "OnlineRetryLimit: attempt " + std::to_string(retry.retries) + " of " +
              std::to_string(model.onlineRetryLimit));
    return true;
}

bool Engine::Place(std::size_t index) {
    const Move move = m_state.moves[index];
    if (move.cause == Move::Fault && Retry(move)) {
        Forget(index);
        return true;
    }
    const bool failsOver = move.cause == Move::Fault || move.cause == Move::Loss || move.cause == Move::Child;
    std::size_t target = NoPlace;
    std::string why;
    if (failsOver && m_model.groups[move.group].autoFailOver == 0) {
        why = "its AutoFailOver is 0";
    } else if (move.cause == Move::Child && WhyNotPlaced(move.group, move.from, move.from, Placement::Chosen).empty()) {
        target = move.from;
    } else if (move.to != NoPlace && WhyNotPlaced(move.group, move.to, move.from, Placement::Chosen).empty()) {
        target = move.to;
    } else if (move.cause != Move::AutoStart) {
        target = Choose(move.group, move.from, LeavesForGood(move));
    }
    if (target == NoPlace && why.empty()) {
        if (MayStillBeMet(move.group)) {
            return false;
        }
        why = move.cause == Move::AutoStart ? WhyNotPlaced(move.group, move.to, NoPlace, Placement::Chosen)
                                            : WhyNowhere(move.group, move.from);
    }
    m_state.moves.erase(m_state.moves.begin() + static_cast<std::ptrdiff_t>(index));
    if (target == NoPlace) {
        Note("group " + GroupName(move.group) + " stays offline", why);
        return true;
    }
    static const char* const Reasons[] = {
        "", "", "switch", "failover", "failover", "a group that it depends on has moved", "AutoStartList"};
    Start(move.group, target, Reasons[move.cause]);
    return true;
}

} // namespace vcssim
