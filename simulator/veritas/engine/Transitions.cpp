// Resources on their way: in the order of what requires what, and each for as long as it takes.
#include "VcsEngine.h"

#include <algorithm>

namespace vcssim {

namespace {

bool TakesTime(ResourceStatus::Transition transition) {
    return transition == ResourceStatus::GoesOnline || transition == ResourceStatus::GoesOffline ||
           transition == ResourceStatus::Restarts;
}

bool IsUnderWay(ResourceStatus::Transition transition) {
    return transition != ResourceStatus::Still && transition != ResourceStatus::Stuck;
}

} // namespace

std::string TimelineLine(const TimelineEntry& entry) {
    const std::string seconds = std::to_string(entry.at);
    return std::string(seconds.size() < 6 ? 6 - seconds.size() : 0, ' ') + seconds + "  " + entry.event +
           (entry.reason.empty() ? "" : ": " + entry.reason);
}

void Engine::Note(const std::string& event, const std::string& reason) {
    m_state.timeline.push_back({m_state.clock, event, reason});
}

void Engine::NoteResource(std::size_t group, std::size_t resource, std::size_t system, const char* what,
                          const std::string& reason) {
    Note("resource " + m_model.groups[group].resources[resource].name + " " + what + " on " + SystemName(system),
         reason);
}

void Engine::AdvanceTo(Seconds clock) {
    Settle();
    for (Seconds next = NextDue(); next <= clock; next = NextDue()) {
        m_state.clock = next;
        Settle();
    }
    m_state.clock = std::max(m_state.clock, clock);
}

// All that happens now.
void Engine::Settle() {
    while (BeginReady() || FinishDue() || ContinueMoves() || LeaveEmptySystems()) {
    }
}

// When the next transition ends. In the far future when there is none.
Seconds Engine::NextDue() const {
    Seconds next = INT64_MAX;
    for (const auto& resources : m_state.resources) {
        for (const auto& systems : resources) {
            for (const ResourceStatus& status : systems) {
                if (TakesTime(status.transition)) {
                    next = std::min(next, status.due);
                }
            }
        }
    }
    return next;
}

bool Engine::BeginReady() {
    bool any = false;
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        for (std::size_t resource = 0; resource < m_model.groups[group].resources.size(); ++resource) {
            for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
                const ResourceStatus::Transition before = Status(group, resource, system).transition;
                if ((before == ResourceStatus::WaitsOnline || before == ResourceStatus::WaitsOffline) &&
                    IsReady(group, resource, system)) {
                    Begin(group, resource, system);
                }
                any = any || Status(group, resource, system).transition != before;
            }
        }
    }
    return any;
}

// What waits for something that will not come waits no longer.
bool Engine::IsReady(std::size_t group, std::size_t resource, std::size_t system) {
    ResourceStatus& status = Status(group, resource, system);
    if (status.transition == ResourceStatus::WaitsOffline) {
        return MayGoOffline(group, resource, system);
    }
    bool ready = !WaitsForParents(group, system);
    for (const std::size_t child : m_model.groups[group].resources[resource].children) {
        const ResourceStatus& required = Status(group, child, system);
        if (!m_model.groups[group].resources[child].enabled[system] ||
            (required.condition == ResourceStatus::Online && required.transition == ResourceStatus::Still)) {
            continue;
        }
        ready = false;
        if (!GoesUp(required.transition) && required.transition != ResourceStatus::Restarts) {
            status = ResourceStatus{status.condition, ResourceStatus::Still, 0, 0, status.restarts, status.restarted};
            NoteResource(group, resource, system, "stays OFFLINE",
                         "it requires " + m_model.groups[group].resources[child].name);
            ToldStill(group, system);
            return false;
        }
    }
    return ready;
}

bool Engine::MayGoOffline(std::size_t group, std::size_t resource, std::size_t system) const {
    for (const std::size_t parent : m_model.groups[group].resources[resource].parents) {
        const ResourceStatus& status = Status(group, parent, system);
        if (GoesDown(status.transition) || status.transition == ResourceStatus::Stuck) {
            return false;
        }
    }
    return !WaitsForParents(group, system);
}

void Engine::Begin(std::size_t group, std::size_t resource, std::size_t system) {
    const ResourceModel& model = m_model.groups[group].resources[resource];
    ResourceStatus& status = Status(group, resource, system);
    const bool up = status.transition == ResourceStatus::WaitsOnline;
    const Seconds takes =
        up ? std::min(model.onlineTime, model.onlineTimeout) : std::min(model.offlineTime, model.offlineTimeout);
    status.transition = up ? ResourceStatus::GoesOnline : ResourceStatus::GoesOffline;
    status.due = m_state.clock + takes;
    if (takes != 0) {
        NoteResource(group, resource, system, up ? "goes online" : "goes offline");
    }
}

bool Engine::FinishDue() {
    for (std::size_t group = 0; group < m_model.groups.size(); ++group) {
        for (std::size_t resource = 0; resource < m_model.groups[group].resources.size(); ++resource) {
            for (std::size_t system = 0; system < m_model.systems.size(); ++system) {
                const ResourceStatus& status = Status(group, resource, system);
                if (TakesTime(status.transition) && status.due <= m_state.clock) {
                    Finish(group, resource, system);
                    return true;
                }
            }
        }
    }
    return false;
}

void Engine::Finish(std::size_t group, std::size_t resource, std::size_t system) {
    if (Status(group, resource, system).transition == ResourceStatus::GoesOffline) {
        FinishOffline(group, resource, system);
    } else {
        FinishOnline(group, resource, system);
    }
}

void Engine::FinishOnline(std::size_t group, std::size_t resource, std::size_t system) {
    const ResourceModel& model = m_model.groups[group].resources[resource];
    ResourceStatus& status = Status(group, resource, system);
    const bool inTime = model.onlineTime <= model.onlineTimeout;
    if (inTime && !model.failing[system]) {
        status.condition = ResourceStatus::Online;
        status.transition = ResourceStatus::Still;
        status.attempts = 0;
        NoteResource(group, resource, system, "is ONLINE");
        ToldStill(group, system);
        return;
    }
    const std::string why =
        inTime ? "it fails to go online" : "it is not online after " + std::to_string(model.onlineTimeout) + " s";
    if (status.attempts < model.onlineRetryLimit) {
        ++status.attempts;
        status.due = m_state.clock + std::min(model.onlineTime, model.onlineTimeout);
        NoteResource(group, resource, system, "is tried again",
                     why + "; attempt " + std::to_string(status.attempts) + " of " +
                         std::to_string(model.onlineRetryLimit));
        return;
    }
    ResourceFaulted(group, resource, system, why);
}

void Engine::FinishOffline(std::size_t group, std::size_t resource, std::size_t system) {
    const ResourceModel& model = m_model.groups[group].resources[resource];
    ResourceStatus& status = Status(group, resource, system);
    status.attempts = 0;
    const std::string late = "it is not offline after " + std::to_string(model.offlineTimeout) + " s";
    if (model.offlineTime > model.offlineTimeout && !m_model.faultsSlowOffline) {
        status.transition = ResourceStatus::Stuck;
        NoteResource(group, resource, system, "is UNABLE TO OFFLINE", late);
        return;
    }
    status.transition = ResourceStatus::Still;
    if (model.offlineTime > model.offlineTimeout) {
        status.condition = ResourceStatus::Faulted;
        NoteResource(group, resource, system, "is FAULTED", late);
    } else {
        status.condition = ResourceStatus::Offline;
        NoteResource(group, resource, system, "is OFFLINE");
    }
    ToldStill(group, system);
}

bool Engine::IsStill(std::size_t group, std::size_t system) const {
    for (const auto& systems : m_state.resources[group]) {
        if (IsUnderWay(systems[system].transition)) {
            return false;
        }
    }
    return true;
}

// Tells the group's new state when the last of its resources has come to rest.
void Engine::ToldStill(std::size_t group, std::size_t system) {
    if (!IsStill(group, system)) {
        return;
    }
    Note("group " + GroupName(group) + " is " + GroupStateOn(group, system) + " on " + SystemName(system));
    RetryStatus& retry = m_state.retries[group][system];
    if (retry.retries != 0 && !retry.succeeded && IsUp(group, system)) {
        retry = {0, true, m_state.clock};
    }
}

bool Engine::IsActive(std::size_t group, std::size_t system) const {
    for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
        const ResourceStatus& status = Status(group, i, system);
        if (!m_model.groups[group].resources[i].persistent &&
            (status.condition == ResourceStatus::Online || status.transition != ResourceStatus::Still)) {
            return true;
        }
    }
    return false;
}

bool Engine::IsUp(std::size_t group, std::size_t system) const {
    bool any = false;
    for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
        const ResourceModel& model = m_model.groups[group].resources[i];
        const ResourceStatus& status = Status(group, i, system);
        if (model.persistent || !model.enabled[system]) {
            continue;
        }
        if (IsUnderWay(status.transition) && status.transition != ResourceStatus::Restarts) {
            return false;
        }
        if (status.condition == ResourceStatus::Online) {
            any = true;
        } else if (model.autoStart[system] && model.critical) {
            return false;
        }
    }
    return any;
}

std::string Engine::GroupStateOn(std::size_t group, std::size_t system) const {
    std::size_t counted = 0;
    std::size_t online = 0;
    bool faulted = false;
    bool starts = false;
    bool stops = false;
    for (std::size_t i = 0; i < m_model.groups[group].resources.size(); ++i) {
        const ResourceModel& model = m_model.groups[group].resources[i];
        const ResourceStatus& status = Status(group, i, system);
        faulted = faulted || status.condition == ResourceStatus::Faulted;
        starts = starts || GoesUp(status.transition);
        stops = stops || GoesDown(status.transition);
        if (!model.persistent && model.enabled[system]) {
            ++counted;
            online += status.condition == ResourceStatus::Online ? 1 : 0;
        }
    }
    return GroupStateText(online, counted, starts, stops, faulted);
}

std::string GroupStateText(std::size_t online, std::size_t counted, bool starts, bool stops, bool faulted) {
    const bool partial = online != 0 && online < counted;
    std::string text = online == 0 ? "OFFLINE" : partial ? "PARTIAL" : "ONLINE";
    if (starts || stops) {
        const std::string way = stops ? "STOPPING" : "STARTING";
        text = partial ? way + "|" + text : text + "|" + way;
    }
    return text + (faulted ? "|FAULTED" : "");
}

// Marks the resource and what it requires; the marked are in the order in which they go online. False: it will not be
// online.
bool Engine::MarkOnline(std::size_t group, std::size_t resource, std::size_t system, std::vector<bool>& seen,
                        std::vector<std::size_t>& marked) const {
    const ResourceModel& model = m_model.groups[group].resources[resource];
    const ResourceStatus& status = Status(group, resource, system);
    const bool isUp = status.condition == ResourceStatus::Online && status.transition == ResourceStatus::Still;
    if (seen[resource]) {
        return isUp || std::find(marked.begin(), marked.end(), resource) != marked.end();
    }
    seen[resource] = true;
    bool ready = true;
    for (const std::size_t child : model.children) {
        const bool up = MarkOnline(group, child, system, seen, marked);
        ready = (up || !m_model.groups[group].resources[child].enabled[system]) && ready;
    }
    if (model.persistent || isUp) {
        return status.condition == ResourceStatus::Online;
    }
    if (!ready || !model.enabled[system] || status.condition == ResourceStatus::Faulted) {
        return false;
    }
    if (!GoesUp(status.transition)) {
        marked.push_back(resource);
    }
    return true;
}

void Engine::BringOnline(std::size_t group, const std::vector<std::size_t>& resources, std::size_t system) {
    for (const std::size_t resource : resources) {
        ResourceStatus& status = Status(group, resource, system);
        if (status.condition == ResourceStatus::Offline && !GoesUp(status.transition)) {
            status.transition = ResourceStatus::WaitsOnline;
            status.attempts = 0;
        }
    }
    Settle();
}

// Asks what is online, or on its way there, to go offline.
void Engine::AskOffline(std::size_t group, std::size_t resource, std::size_t system) {
    ResourceStatus& status = Status(group, resource, system);
    if (m_model.groups[group].resources[resource].persistent) {
        return;
    }
    if (status.transition == ResourceStatus::WaitsOnline) {
        status.transition = ResourceStatus::Still;
    } else if (status.transition == ResourceStatus::GoesOnline || status.transition == ResourceStatus::Restarts ||
               (status.transition == ResourceStatus::Still && status.condition == ResourceStatus::Online)) {
        status.transition = ResourceStatus::WaitsOffline;
        status.due = 0;
    }
}

// Alone, whatever requires it.
void Engine::TakeOffline(std::size_t group, std::size_t resource, std::size_t system) {
    AskOffline(group, resource, system);
    if (Status(group, resource, system).transition == ResourceStatus::WaitsOffline) {
        Begin(group, resource, system);
    }
    Settle();
}

} // namespace vcssim
