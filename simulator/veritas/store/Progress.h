// What the engine remembers from one tool to the next: time, what is under way, what it did. Part of the state.
#ifndef VCSSIM_PROGRESS_H
#define VCSSIM_PROGRESS_H

#include "EngineState.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vcssim {

// How long a resource takes to go online and offline.
struct TransitionTimes {
    Seconds online = 0;
    Seconds offline = 0;
};

// Records by object and system. Their members that do not apply are 0.
struct TransitionRecord {
    ResourceStatus::Transition transition = ResourceStatus::Still;
    Seconds due = 0;
    int attempts = 0;
};

struct RestartRecord {
    int restarts = 0;
    Seconds at = 0;
};

struct MoveRecord {
    std::string group;
    std::string from; // empty: from nowhere
    std::string to;   // empty: to be chosen
    Move::Cause cause = Move::Offline;
    Move::Phase phase = Move::Stopping;
    bool retries = false;
};

struct Progress {
    template <typename Record> using Table = std::map<std::string, std::map<std::string, Record>>;

    std::optional<Seconds> clock;                 // without it the time is the real one
    std::map<std::string, TransitionTimes> times; // by resource, type, or "*"
    std::set<std::string> frozenGroups;           // until they are unfrozen
    std::set<std::string> frozenSystems;
    Table<TransitionRecord> transitions;
    Table<RestartRecord> restarts;
    Table<RetryStatus> retries; // of groups
    std::vector<MoveRecord> moves;
    std::vector<TimelineEntry> timeline; // kept while there is a clock

    bool IsUnderWay() const {
        return !transitions.empty() || !moves.empty();
    }
    ResourceStatus::Transition TransitionOf(const std::string& resource, const std::string& system) const {
        const auto found = transitions.find(resource);
        if (found == transitions.end() || found->second.count(system) == 0) {
            return ResourceStatus::Still;
        }
        return found->second.at(system).transition;
    }
    // Seconds since 1970 where there is no clock.
    Seconds Now() const;
};

} // namespace vcssim

#endif
