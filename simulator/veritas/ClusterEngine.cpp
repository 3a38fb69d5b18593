#include "ClusterEngine.h"

#include "EngineInput.h"

#include <algorithm>
#include <ctime>

namespace vcssim {

namespace {

ResourceStatus::Condition ConditionOf(const std::string& state) {
    return state.compare(0, 6, "ONLINE") == 0    ? ResourceStatus::Online
           : state.compare(0, 7, "FAULTED") == 0 ? ResourceStatus::Faulted
                                                 : ResourceStatus::Offline;
}

std::string StateText(const ResourceStatus& status) {
    static const char* const Conditions[] = {"OFFLINE", "ONLINE", "FAULTED"};
    const char* const addition = status.transition == ResourceStatus::Stuck      ? "|UNABLE TO OFFLINE"
                                 : status.transition == ResourceStatus::Restarts ? "|RESTARTING"
                                                                                 : "";
    return std::string(Conditions[status.condition]) + addition;
}

template <typename Record>
const Record* RecordOf(const Progress::Table<Record>& table, const std::string& object, const std::string& system) {
    const auto found = table.find(object);
    if (found == table.end()) {
        return nullptr;
    }
    const auto there = found->second.find(system);
    return there == found->second.end() ? nullptr : &there->second;
}

template <typename List> std::size_t PlaceIn(const List& list, const std::string& name) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const auto& item) { return item.name == name; });
    return found == list.end() ? NoPlace : static_cast<std::size_t>(found - list.begin());
}

EngineModel ModelOf(const Cluster& cluster, const Options& options) {
    EngineModel model = MakeEngineModel(cluster);
    model.actsOnUnfreeze = options.actsOnUnfreeze;
    model.faultsSlowOffline = options.faultsSlowOffline;
    return model;
}

} // namespace

Seconds Progress::Now() const {
    return clock ? *clock : static_cast<Seconds>(std::time(nullptr));
}

ClusterEngine::ClusterEngine(Cluster& cluster, const Options& options)
    : m_cluster(cluster), m_model(ModelOf(cluster, options)), m_state(m_model), m_engine(m_model, m_state) {
    ReadStates();
    ReadProgress();
    m_before = m_state;
    if (cluster.state.progress.clock) {
        m_state.clock = *cluster.state.progress.clock;
        m_engine.NoticeLosses();
        return;
    }
    // What was due in between happens when it was due.
    const Seconds now = cluster.state.progress.Now();
    m_state.clock = now;
    for (const auto& resources : m_state.resources) {
        for (const auto& systems : resources) {
            for (const ResourceStatus& status : systems) {
                m_state.clock = status.due == 0 ? m_state.clock : std::min(m_state.clock, status.due);
            }
        }
    }
    m_engine.AdvanceTo(now);
}

std::size_t ClusterEngine::System(const std::string& name) const {
    return PlaceIn(m_model.systems, name);
}

std::size_t ClusterEngine::Group(const std::string& name) const {
    return PlaceIn(m_model.groups, name);
}

std::size_t ClusterEngine::Resource(std::size_t group, const std::string& name) const {
    return PlaceIn(m_model.groups[group].resources, name);
}

void ClusterEngine::ReadStates() {
    const vcssim::State& state = m_cluster.state;
    for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
        const std::string& name = m_model.systems[system].name;
        const auto found = state.systems.find(name);
        if (found != state.systems.end()) {
            m_state.systems[system].state = found->second;
        }
        m_state.systems[system].frozen = m_cluster.IsFrozen(m_cluster.configuration.Systems()[system]);
    }
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        const CfGroup& configured = m_cluster.configuration.Groups()[group];
        m_state.frozenGroups[group] = m_cluster.IsFrozen(configured);
        for (std::size_t i = 0; i < configured.resources.size(); ++i) {
            for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
                m_state.resources[group][i][system].condition =
                    ConditionOf(m_cluster.ResourceState(configured.resources[i], m_model.systems[system].name));
            }
        }
    }
}

void ClusterEngine::ReadProgress() {
    const Progress& progress = m_cluster.state.progress;
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
            const std::string& where = m_model.systems[system].name;
            if (const RetryStatus* const retry = RecordOf(progress.retries, m_model.groups[group].name, where)) {
                m_state.retries[group][system] = *retry;
            }
            for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
                ResourceStatus& status = m_state.resources[group][i][system];
                const std::string& name = m_model.groups[group].resources[i].name;
                if (const TransitionRecord* const record = RecordOf(progress.transitions, name, where)) {
                    status.transition = record->transition;
                    status.due = record->due;
                    status.attempts = record->attempts;
                }
                if (const RestartRecord* const record = RecordOf(progress.restarts, name, where)) {
                    status.restarts = record->restarts;
                    status.restarted = record->at;
                }
            }
        }
    }
    for (const MoveRecord& record : progress.moves) {
        const std::size_t from = System(record.from);
        const std::size_t group = Group(record.group);
        if (group != NoPlace && (from != NoPlace || record.phase == Move::Placing)) {
            m_state.moves.push_back({group, from, System(record.to), record.cause, record.phase, record.retries});
        }
    }
}

void ClusterEngine::Store() {
    StoreStates();
    StoreProgress();
    m_before = m_state;
}

void ClusterEngine::StoreStates() {
    vcssim::State& state = m_cluster.state;
    for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
        const std::string& name = m_model.systems[system].name;
        const SystemStatus& status = m_state.systems[system];
        if (status.state != m_before.systems[system].state) {
            state.systems[name] = status.state;
        }
        if (!status.frozen && m_before.systems[system].frozen) {
            state.progress.frozenSystems.erase(name);
        }
    }
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
            for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
                const std::string text = StateText(m_state.resources[group][i][system]);
                if (text == StateText(m_before.resources[group][i][system])) {
                    continue;
                }
                const std::string& where = m_model.systems[system].name;
                state.resources[m_model.groups[group].resources[i].name][where] = text;
                // From now on the group's state follows from the resources.
                const auto given = state.groups.find(m_model.groups[group].name);
                if (given != state.groups.end()) {
                    given->second.erase(where);
                }
            }
        }
    }
}

void ClusterEngine::StoreProgress() {
    Progress& progress = m_cluster.state.progress;
    progress.transitions.clear();
    progress.restarts.clear();
    progress.retries.clear();
    progress.moves.clear();
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        const GroupModel& model = m_model.groups[group];
        for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
            const std::string& where = m_model.systems[system].name;
            const RetryStatus& retry = m_state.retries[group][system];
            if (retry.retries != 0 || retry.succeeded) {
                progress.retries[model.name][where] = retry;
            }
            for (std::size_t i = 0; i < model.resources.size(); ++i) {
                const ResourceStatus& status = m_state.resources[group][i][system];
                if (status.transition != ResourceStatus::Still) {
                    progress.transitions[model.resources[i].name][where] = {status.transition, status.due,
                                                                            status.attempts};
                }
                if (status.restarts != 0) {
                    progress.restarts[model.resources[i].name][where] = {status.restarts, status.restarted};
                }
            }
        }
    }
    const auto nameOf = [&](std::size_t system) {
        return system == NoPlace ? std::string() : m_model.systems[system].name;
    };
    for (const Move& move : m_state.moves) {
        progress.moves.push_back({m_model.groups[move.group].name, nameOf(move.from), nameOf(move.to), move.cause,
                                  move.phase, move.retries});
    }
    if (progress.clock) {
        progress.clock = m_state.clock;
        const std::size_t known = m_before.timeline.size();
        progress.timeline.insert(progress.timeline.end(), m_state.timeline.begin() + static_cast<std::ptrdiff_t>(known),
                                 m_state.timeline.end());
    }
}

void LetTimePass(Cluster& cluster, const Options& options) {
    if (cluster.state.progress.clock || cluster.state.progress.IsUnderWay()) {
        ClusterEngine(cluster, options).Store();
    }
}

} // namespace vcssim
