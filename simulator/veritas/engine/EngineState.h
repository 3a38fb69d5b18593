// What the engine changes: states, transitions, and what is under way.
#ifndef VCSSIM_ENGINESTATE_H
#define VCSSIM_ENGINESTATE_H

#include "EngineModel.h"

namespace vcssim {

// A resource on a system.
struct ResourceStatus {
    enum Condition {
        Offline,
        Online,
        Faulted
    };
    enum Transition {
        Still,
        WaitsOnline, // for what it requires
        GoesOnline,
        Restarts,
        WaitsOffline, // for what requires it
        GoesOffline,
        Stuck // did not go offline in time, and is left alone
    };

    Condition condition = Offline;
    Transition transition = Still;
    Seconds due = 0;  // of GoesOnline, Restarts and GoesOffline
    int attempts = 0; // to go online
    int restarts = 0;
    Seconds restarted = 0; // the last time
};

inline bool GoesUp(ResourceStatus::Transition transition) {
    return transition == ResourceStatus::WaitsOnline || transition == ResourceStatus::GoesOnline;
}

inline bool GoesDown(ResourceStatus::Transition transition) {
    return transition == ResourceStatus::WaitsOffline || transition == ResourceStatus::GoesOffline;
}

// A group on a system.
struct RetryStatus {
    int retries = 0;        // of bringing it online again after a fault
    bool succeeded = false; // the last one did
    Seconds restarted = 0;  // when
};

struct SystemStatus {
    std::string state = "RUNNING"; // as hasys shows it
    bool frozen = false;

    bool IsRunning() const {
        return state == "RUNNING";
    }
};

// A group on its way.
struct Move {
    enum Cause {
        Offline,   // asked for; nothing follows
        Leaving,   // its system leaves the cluster; nothing follows
        Switch,    // asked for
        Fault,     // of the group
        Loss,      // of its system
        Child,     // because of a group that it depends on
        AutoStart, // of a group that is offline everywhere
    };
    enum Phase {
        Following, // online still, until the group it depends on is online elsewhere
        Stopping,
        Placing
    };

    std::size_t group = 0;
    std::size_t from = NoPlace;
    std::size_t to = NoPlace; // NoPlace: to be chosen
    Cause cause = Offline;
    Phase phase = Stopping;
    bool retries = false; // a fault that may be answered by bringing it online on the same system
};

struct TimelineEntry {
    Seconds at = 0;
    std::string event;
    std::string reason; // may be empty
};

// "    60  group G is ONLINE on NODE1", without a line end; the reason stands behind a colon.
std::string TimelineLine(const TimelineEntry& entry);

struct EngineState {
    Seconds clock = 0;
    std::vector<SystemStatus> systems;
    std::vector<bool> frozenGroups;
    std::vector<std::vector<std::vector<ResourceStatus>>> resources; // by group, resource, system
    std::vector<std::vector<RetryStatus>> retries;                   // by group, system
    std::vector<Move> moves;
    std::vector<TimelineEntry> timeline;

    EngineState() = default;
    // Everything offline, except what is persistent; all systems are running.
    explicit EngineState(const EngineModel& model);
};

} // namespace vcssim

#endif
