// Events by name: what a test or a rehearsal lets happen to the simulated cluster, and what then happened.
#ifndef CLUSSIM_EVENTS_H
#define CLUSSIM_EVENTS_H

#include "Service.h"

#include <stdexcept>

namespace clussim {

// There is no such event, or nothing that it could concern.
class EventError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// See ClusSimHappen. The code of the cluster API; throws EventError.
Code Happen(Service& service, const std::string& event, const std::string& name, const std::string& node);

// The same of an event in one line, as faults have it: the last word is the second name of what takes two
// ("move EVS1 NODE-B"). What is wrong goes to standard error.
void HappenAsWritten(Service& service, const std::string& event);

std::string EventLines(const std::vector<Event>& events);

} // namespace clussim

#endif
