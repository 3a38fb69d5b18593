#include "RehearsedVcs.h"

#include "Text.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <utility>

namespace {

const char ConfigurationKind[] = "configuration";

std::int64_t NumberOf(const Json& object, const char* member) {
    const auto found = object.find(member);
    return found != object.end() && found->is_number() ? found->get<std::int64_t>() : 0;
}

// The earliest time at which a transition ends that ends after `now`; 0 when there is none.
std::int64_t EarliestEnd(const Json& state, std::int64_t now) {
    std::int64_t earliest = 0;
    const auto transitions = state.find("transitions");
    for (const Json& systems : transitions == state.end() ? Json::object() : *transitions) {
        for (const Json& record : systems) {
            const std::int64_t due = NumberOf(record, "due");
            earliest = due > now && (earliest == 0 || due < earliest) ? due : earliest;
        }
    }
    return earliest;
}

bool IsOnlineState(const std::string& state) {
    return StartsWith(state, "ONLINE");
}

bool IsOnlineAnywhere(const Json& rows, const std::string& resource) {
    return std::any_of(rows.begin(), rows.end(), [&resource](const Json& row) {
        return row.at("kind") == "resource" && row.at("name") == resource &&
               IsOnlineState(row.at("state").get<std::string>());
    });
}

const Json* FindRow(const Json& rows, const Json& like) {
    const auto found = std::find_if(rows.begin(), rows.end(), [&like](const Json& row) {
        return row.at("kind") == like.at("kind") && row.at("name") == like.at("name") &&
               row.at("system") == like.at("system");
    });
    return found == rows.end() ? nullptr : &*found;
}

// The last thing that the time line gives a reason for, since the object went online last.
std::string LastReason(const Json& timeline, const char* kind, const std::string& name) {
    std::string reason;
    for (const Json& entry : timeline) {
        if (entry.at("kind") != kind || entry.at("name") != name) {
            continue;
        }
        const auto what = entry.at("what").get<std::string>();
        if (StartsWith(what, "goes online") || StartsWith(what, "is ONLINE")) {
            reason.clear();
        } else if (entry.at("why").is_string()) {
            reason = what + ": " + entry.at("why").get<std::string>();
        }
    }
    return reason;
}

Json WhyDown(const vcssim::CfGroup& group, const std::string& resource, const Json& after, const Json& timeline) {
    for (const vcssim::CfLink& link : group.links) {
        if (link.parent == resource && !IsOnlineAnywhere(after, link.child)) {
            return "it depends on " + link.child + ", which is not online either";
        }
    }
    const std::string own = LastReason(timeline, "resource", resource);
    const std::string ofGroup = LastReason(timeline, "group", group.block.name);
    return !own.empty() ? Json(own) : ofGroup.empty() ? Json() : Json("the group " + ofGroup);
}

} // namespace

void SetClock(Json& state) {
    if (!state.contains("clock")) {
        state["clock"] = std::max<std::int64_t>(EarliestEnd(state, 0) - 1, 0);
    }
}

std::int64_t ClockOfVcs(const Json& state) {
    return NumberOf(state, "clock");
}

std::int64_t NextEndOfVcs(const Json& state) {
    return EarliestEnd(state, ClockOfVcs(state));
}

bool PassIdly(Json& state, std::int64_t seconds) {
    if (state.contains("transitions") || state.contains("moves")) {
        return false;
    }
    state["clock"] = ClockOfVcs(state) + seconds;
    return true;
}

Json TimelineOfVcs(const Json& state, std::size_t first, std::int64_t start) {
    Json timeline = Json::array();
    const Json entries = state.value("timeline", Json::array());
    for (std::size_t i = first; i < entries.size(); ++i) {
        std::istringstream event(entries[i].at("event").get<std::string>());
        std::string kind;
        std::string name;
        std::string what;
        std::getline(event >> kind >> name >> std::ws, what);
        const std::string reason = entries[i].value("reason", "");
        timeline.push_back({{"at", static_cast<double>(NumberOf(entries[i], "at") - start)},
                            {"kind", kind},
                            {"name", name},
                            {"what", what},
                            {"why", reason.empty() ? Json() : Json(reason)}});
    }
    return timeline;
}

Json StateRows(const std::string& shown, const Json& state) {
    Json rows = Json::array();
    std::istringstream lines(shown);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string kind;
        std::string name;
        std::string system;
        std::string rest;
        words >> kind >> name;
        if (kind == "group" || kind == "resource") {
            words >> system;
        }
        std::getline(words >> std::ws, rest);
        rest.erase(rest.find_last_not_of(" \r") + 1);
        if (kind == "system" || !system.empty()) {
            rows.push_back(
                {{"kind", kind}, {"name", name}, {"system", system.empty() ? Json() : Json(system)}, {"state", rest}});
        }
    }
    const bool isOpen = state.value("mode", "ro") == std::string("rw");
    rows.push_back({{"kind", ConfigurationKind},
                    {"name", "main.cf"},
                    {"system", nullptr},
                    {"state", isOpen ? "open for writing" : "read-only"}});
    return rows;
}

std::string StateIn(const Json& rows, const std::string& kind, const std::string& name, const std::string& system) {
    const Json* const row =
        FindRow(rows, {{"kind", kind}, {"name", name}, {"system", system.empty() ? Json() : Json(system)}});
    return row == nullptr ? std::string() : row->at("state").get<std::string>();
}

Json StateChanges(const Json& before, const Json& after) {
    Json changes = Json::array();
    const auto add = [&changes](const Json& row, const Json& was, const Json& is) {
        if (was != is) {
            changes.push_back({{"kind", row.at("kind")},
                               {"name", row.at("name")},
                               {"system", row.at("system")},
                               {"before", was},
                               {"after", is}});
        }
    };
    for (const Json& row : before) {
        const Json* const now = FindRow(after, row);
        add(row, row.at("state"), now == nullptr ? Json() : now->at("state"));
    }
    for (const Json& row : after) {
        if (FindRow(before, row) == nullptr) {
            add(row, Json(), row.at("state"));
        }
    }
    return changes;
}

Json StaysDownOnVcs(const Json& before, const Json& after, const vcssim::CfDocument& configuration,
                    const Json& timeline) {
    Json down = Json::array();
    std::string last;
    for (const Json& row : before) {
        const auto name = row.at("name").get<std::string>();
        const bool wasOnline = row.at("kind") == "resource" && IsOnlineState(row.at("state").get<std::string>());
        const vcssim::CfGroup* const group = configuration.GroupOf(name);
        if (!wasOnline || name == last || group == nullptr || IsOnlineAnywhere(after, name)) {
            continue;
        }
        last = name; // of a parallel group it was online on several systems
        const Json* const now = FindRow(after, row);
        down.push_back({{"name", name},
                        {"group", group->block.name},
                        {"state", now == nullptr ? Json("not there") : now->at("state")},
                        {"reason", WhyDown(*group, name, after, timeline)}});
    }
    return down;
}
