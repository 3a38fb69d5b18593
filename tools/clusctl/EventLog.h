// The system's event logs: what the cluster's services, Exchange and the product told.
#ifndef CLUSCTL_EVENTLOG_H
#define CLUSCTL_EVENTLOG_H

#include "Json.h"

#include <cstddef>
#include <string>
#include <vector>

struct EventQuery {
    const wchar_t* log; // "System"
    std::vector<std::wstring> sources;
    std::size_t most; // the latest ones
};

// Adds the events to a list, the latest first: time (UTC), source, id, level, texts. The Win32 code; what was read
// before a failure is added.
unsigned long ReadEvents(const EventQuery& query, Json& events);

#endif
