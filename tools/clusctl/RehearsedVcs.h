// Copies of VCS clusters, as a rehearsal looks at them: what the simulator keeps and shows in, JSON out.
#ifndef CLUSCTL_REHEARSEDVCS_H
#define CLUSCTL_REHEARSEDVCS_H

#include "Json.h"

#include <CfDocument.h>

#include <cstdint>
#include <string>

// Of the simulator's state file (docs/vcs-simulator.md), which times are in seconds.

// Gives it a simulated clock when it has none.
void SetClock(Json& state);

std::int64_t ClockOfVcs(const Json& state);

// When the next of what is under way ends; 0 when nothing is.
std::int64_t NextEndOfVcs(const Json& state);

// Lets its clock go on. False, and nothing is changed, when something is under way, which only the simulator knows to
// go on with.
bool PassIdly(Json& state, std::int64_t seconds);

// What the cluster did from the `first` entry on, as a rehearsal's time line has it: "at" since `start`.
Json TimelineOfVcs(const Json& state, std::size_t first, std::int64_t start);

// What "vcssim state" prints, and the configuration's mode, as records: "kind" ("system", "group", "resource",
// "configuration"), "name", "system" (null for the first and last kind), "state".
Json StateRows(const std::string& shown, const Json& state);

// Of one of the records; empty when there is none.
std::string StateIn(const Json& rows, const std::string& kind, const std::string& name, const std::string& system);

// What is not the same: "kind", "name", "system", "before", "after"; null for what is not there.
Json StateChanges(const Json& before, const Json& after);

// The resources that were online and are nowhere now: "name", "group", "state", "reason", which may be null.
Json StaysDownOnVcs(const Json& before, const Json& after, const vcssim::CfDocument& configuration,
                    const Json& timeline);

#endif
