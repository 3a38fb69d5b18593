// The states of groups and resources of VCS, system by system.
#ifndef CLUSCTL_VCSSTATES_H
#define CLUSCTL_VCSSTATES_H

#include "Deadline.h"
#include "Json.h"
#include "LogCapture.h"
#include "Report.h"

#include <string>
#include <vector>

struct SystemState {
    std::wstring system;
    std::wstring state; // as VCS shows it: "ONLINE", "PARTIAL|FAULTED", "OFFLINE|STATE UNKNOWN"
};

typedef std::vector<SystemState> SystemStates;

// Where a group is online, or else where it is partly online; whatever else VCS says of it there, such as FAULTED.
struct GroupState {
    const char* word;    // "online", "partly online" or "offline"
    std::wstring system; // empty when it is offline
    SystemStates states;

    bool IsOnline() const;
    bool IsPartlyOnline() const;
};

// Whether one of the parts between the bars of a state is `flag`.
bool HasFlag(const std::wstring& state, const wchar_t* flag);

// What the states of a group on all systems make together.
GroupState GroupStateOf(const SystemStates& states);

// All throw Failure when VCS does not tell.
GroupState ReadGroupState(const LogCapture& log, const std::wstring& group);
SystemStates ReadResourceStates(const LogCapture& log, const std::wstring& resource);

// The answer that the library had from VCS when it asked last for the state of the group.
GroupState LastGroupState(const LogCapture& log, const std::wstring& group);

// On one system; empty when there is none for it. Letter case counts.
std::wstring StateOn(const SystemStates& states, const std::wstring& system);

// For people: "no state" when it is empty.
std::string ShownState(const std::wstring& state);

// Whether a state says ONLINE, perhaps among others.
bool IsOnline(const std::wstring& state);

// The systems on which it is online.
std::vector<std::wstring> OnlineSystems(const SystemStates& states);

// Asks until a resource that was switched on is online, or the deadline. Its state on the system then.
std::wstring AwaitOnline(const LogCapture& log, const std::wstring& resource, const std::wstring& system,
                         const Deadline& deadline);

// What VCS was told to do.
struct Switched {
    std::wstring resource;
    std::wstring system;
    bool isOnline;
};

// Of the state that VCS shows afterwards: throws Failure when the resource is faulted instead of online, and adds a
// warning to the report when it is not, or not yet, as it was told to be.
void JudgeSwitched(const Switched& switched, const std::wstring& state, const std::string& what, Report& report);

// Asks until a resource that was switched on is online, and adds a warning to the report when it is not so at the
// deadline.
void WarnUnlessOnline(const LogCapture& log, const std::wstring& resource, const std::wstring& system,
                      const Deadline& deadline, Report& report);

// Asks until a resource is no longer online on a system. False when it is so at the deadline.
bool AwaitOffline(const LogCapture& log, const std::wstring& resource, const std::wstring& system,
                  const Deadline& deadline);

// A list of {"system", "state"}.
Json StateRecords(const SystemStates& states);

#endif
